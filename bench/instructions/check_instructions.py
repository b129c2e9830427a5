#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Counts instructions with callgrind and fails when a kind of work takes 5 % more than instructions.json says.

    check_instructions.py PROGRAM COMPILER [--update]

A count holds for one compiler and one machine's instruction set: with others the answer is "does not apply" (exit
status 77), never "passed". --update writes the file with what is counted now.
"""

import argparse
import json
import re
import shutil
import subprocess
import sys
from pathlib import Path

KEPT = Path(__file__).with_name("instructions.json")
WORK = ["handler-100", "handler-10000", "names-1000", "names-1000-crowded", "smoothing-7", "smoothing-4096",
        "sweep-1000"]
TIMES = 20_000
GROWTH = 1.05
DOES_NOT_APPLY = 77


def collected(program, work, times):
    """The instructions of one run of the program."""
    done = subprocess.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", program, work, str(times)],
                          capture_output=True, text=True, check=False)
    match = re.search(r"Collected\s*:\s*(\d+)", done.stderr)
    if done.returncode != 0 or match is None:
        sys.exit(f"{work}: callgrind failed\n{done.stderr}")
    return int(match.group(1))


def count(program, work):
    """Instructions for one time of the work: the difference of two runs leaves out what comes before it."""
    return (collected(program, work, 2 * TIMES) - collected(program, work, TIMES)) / TIMES


def judge(kept, counted):
    """One line for each kind of work, and whether none has grown too much."""
    good = True
    for work in WORK:
        was, now = kept[work], counted[work]
        grown = now > was * GROWTH
        good = good and not grown
        word = "GREW TOO MUCH" if grown else "less: --update keeps it" if now < was / GROWTH else "as kept"
        print(f"{work:16} {now:9.1f} instructions, kept {was:9.1f} ({now / was - 1:+.1%}): {word}")
    return good


def main(arguments):
    parser = argparse.ArgumentParser()
    parser.add_argument("program", help="instruction_count, as it was built")
    parser.add_argument("compiler", help="what it was built with, as in instructions.json: it does not apply to others")
    parser.add_argument("--update", action="store_true", help="keep what is counted now")
    options = parser.parse_args(arguments)
    kept = json.loads(KEPT.read_text(encoding="utf-8"))
    if shutil.which("valgrind") is None:
        print("DOES NOT APPLY: there is no valgrind to count with; nothing was checked")
        return DOES_NOT_APPLY
    if not options.update and options.compiler != kept["compiler"]:
        print(f"DOES NOT APPLY: counted with {kept['compiler']}, this is {options.compiler}; nothing was checked")
        return DOES_NOT_APPLY
    counted = {work: round(count(options.program, work), 1) for work in WORK}
    if options.update:
        KEPT.write_text(json.dumps({"compiler": options.compiler, "instructions": counted}, indent=2) + "\n",
                        encoding="utf-8")
    return 0 if judge(counted if options.update else kept["instructions"], counted) else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
