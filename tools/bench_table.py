#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the measuring programs of a build and prints what they measured as one table.

    tools/bench_table.py BUILD [--runs N] [--only REGEX] [--json FILE] [--quick]

bench/programs.json lists the programs, a line each: a name and a command, which is run in the root of the source tree;
in it {build} stands for BUILD. A program takes --runs N (how often it measures, in turns with its floor) and --quick
(less of everything, only to see that it works), tells its progress on standard error, and writes to standard output one
JSON object for each line of the table:

    what       what was measured, in words
    unit       of value and floor: "ns", "ms", ...
    value      ours, the median of the runs
    floor      the least that it could be, measured in the same runs; null where there is none
    ratio      value to floor, the median of the runs' ratios; null where there is no floor
    low, high  the smallest and the largest of the runs, of what the budget is of
    runs       how many
    budget     the most that it may be; null for a figure that is only told
    budget_of  what the budget is for: "ratio" or "value"

Exit status 1 when a line is over its budget, 2 when a program failed or wrote what cannot be understood.
"""

import argparse
import json
import math
import os
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
HEAD = ("what", "ours", "floor", "ratio", "spread", "budget", "")
FIELDS = {"what": str, "unit": str, "value": float, "floor": float, "ratio": float, "low": float, "high": float,
          "runs": int, "budget": float, "budget_of": str}
MAY_BE_NULL = ("floor", "ratio", "budget")


class Problem(Exception):
    """What a program did wrong, in words."""


def is_of(value, kind):
    if kind is float:
        return isinstance(value, (int, float)) and not isinstance(value, bool) and math.isfinite(value)
    return isinstance(value, kind) and not isinstance(value, bool)


def line_of(text):
    """One line of a program's output, checked."""
    try:
        line = json.loads(text)
    except ValueError as error:
        raise Problem(f"not JSON ({error}): {text}") from error
    if not isinstance(line, dict):
        raise Problem(f"not an object: {text}")
    for name, kind in FIELDS.items():
        if name not in line:
            raise Problem(f'the field "{name}" is missing: {text}')
        if not (is_of(line[name], kind) or (line[name] is None and name in MAY_BE_NULL)):
            raise Problem(f'the field "{name}" is not what it should be: {text}')
    for name in line:
        if name not in FIELDS:
            raise Problem(f'there is no field "{name}": {text}')
    if line["budget_of"] not in ("ratio", "value"):
        raise Problem(f'the field "budget_of" is neither "ratio" nor "value": {text}')
    if line[line["budget_of"]] is None:
        raise Problem(f'the budget is for the field "{line["budget_of"]}", which is null: {text}')
    return line


def is_over(line):
    return line["budget"] is not None and line[line["budget_of"]] > line["budget"]


def number(value):
    """Four digits are more than such figures are good for."""
    if value == 0 or abs(value) >= 1000:
        return f"{value:,.0f}"
    return f"{value:.{max(0, 2 - math.floor(math.log10(abs(value))))}f}"


def with_unit(value, unit):
    return "-" if value is None else f"{number(value)} {unit}".strip()


def cells_of(line, judged):
    of_ratio = line["budget_of"] == "ratio"
    budget = "-"
    if line["budget"] is not None:
        budget = f"{line['budget']:g} x floor" if of_ratio else f"{line['budget']:g} {line['unit']}".strip()
    verdict = "told" if line["budget"] is None else "OVER" if is_over(line) else "held"
    if not judged:
        verdict = "not judged"
    return (line["what"], with_unit(line["value"], line["unit"]), with_unit(line["floor"], line["unit"]),
            "-" if line["ratio"] is None else f"{line['ratio']:.2f}",
            f"{number(line['low'])} to {number(line['high'])} ({line['runs']})", budget, verdict)


def table_of(lines, judged):
    rows = [HEAD] + [cells_of(line, judged) for line in lines]
    widths = [max(len(row[column]) for row in rows) for column in range(len(HEAD))]
    text = ""
    for row in rows:
        cells = [row[0].ljust(widths[0])]
        cells += [cell.rjust(width) for cell, width in zip(row[1:-1], widths[1:-1])]
        text += "  ".join(cells + [row[-1]]).rstrip() + "\n"
    return text


def run(program, build, options):
    """The lines of one program."""
    command = [part.replace("{build}", str(build)) for part in program["run"]]
    command += ["--runs", str(options.runs)] + (["--quick"] if options.quick else [])
    print(f"--- {program['name']}", file=sys.stderr, flush=True)
    try:
        result = subprocess.run(command, cwd=ROOT, stdout=subprocess.PIPE, text=True, check=False)
    except OSError as error:
        raise Problem(str(error)) from error
    lines = [line_of(text) for text in result.stdout.splitlines()]
    if result.returncode != 0:
        raise Problem(f"exit status {result.returncode} of {' '.join(command)}")
    if not lines:
        raise Problem("it measured nothing")
    return lines


def positive(text):
    value = int(text)
    if value < 1:
        raise ValueError
    return value


def arguments():
    parser = argparse.ArgumentParser(prog="./dev bench", description="Measures what Nearcast costs.")
    parser.add_argument("build", type=Path, help=argparse.SUPPRESS)
    parser.add_argument("--runs", type=positive, default=5, metavar="N", help="measure each thing N times (5)")
    parser.add_argument("--only", type=re.compile, default="", metavar="REGEX", help="programs whose names fit")
    parser.add_argument("--json", type=Path, metavar="FILE", help="write the lines there too, as JSON Lines")
    parser.add_argument("--quick", action="store_true", help="less of everything, and without a verdict")
    parser.add_argument("--programs", type=Path, default=ROOT / "bench" / "programs.json", help=argparse.SUPPRESS)
    return parser.parse_args()


def main():
    options = arguments()
    programs = [program for program in json.loads(options.programs.read_text(encoding="utf-8"))
                if re.search(options.only, program["name"])]
    if not programs:
        print("bench_table.py: no program has such a name", file=sys.stderr)
        return 2
    lines, failed = [], False
    for program in programs:
        try:
            lines += run(program, options.build.resolve(), options)
        except Problem as problem:
            print(f"bench_table.py: {program['name']}: {problem}", file=sys.stderr)
            failed = True
    print(f"\nspread: the smallest and the largest of so many runs; load {os.getloadavg()[0]:.1f} on "
          f"{os.cpu_count()} cores\n\n{table_of(lines, not options.quick)}", flush=True)
    if options.json:
        options.json.write_text("".join(json.dumps(line) + "\n" for line in lines), encoding="utf-8")
    over = [line["what"] for line in lines if is_over(line) and not options.quick]
    for what in over:
        print(f"over its budget: {what}")
    return 2 if failed else 1 if over else 0


if __name__ == "__main__":
    sys.exit(main())
