#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What the program `nearcast` costs: to be started, and to run a scenario of a million lines.

    bench/program/program_bench.py BUILD [--runs 5] [--quick]

Being started is told by the wall, beside a program that does nothing, started in turns with it. A scenario is told by
the processor time of the process, which on a machine that has nothing else to do is the wall's too.
"""

import os
import statistics
import sys
import tempfile
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))
import make_scenario  # noqa: E402
from measured import options_of, print_line  # noqa: E402


def started(command, out):
    """Runs it; its seconds by the wall and by the processor."""
    begin = time.perf_counter()
    pid = os.posix_spawn(command[0], command, os.environ, file_actions=[(os.POSIX_SPAWN_DUP2, out.fileno(), 1)])
    _, status, usage = os.wait4(pid, 0)
    wall = time.perf_counter() - begin
    if status != 0:
        raise RuntimeError(f"{' '.join(command)} failed")
    return wall, usage.ru_utime + usage.ru_stime


def starts(program, options):
    """Milliseconds of a start, the median of many: the program's in each run, and those of /bin/true."""
    times = 2 if options.quick else 40
    ours, floors = [], []
    with open(os.devnull, "w", encoding="utf-8") as out:
        for _ in range(options.runs):
            pairs = [(started([program, "--version"], out)[0], started(["/bin/true"], out)[0]) for _ in range(times)]
            ours.append(1e3 * statistics.median(pair[0] for pair in pairs))
            floors.append(1e3 * statistics.median(pair[1] for pair in pairs))
    return ours, floors


def scenarios(program, folder, foreign, options):
    """Seconds of a run of so many lines."""
    lines = 10_000 if options.quick else 1_000_000
    scenario = folder / "scenario.jsonl"
    with open(scenario, "w", encoding="utf-8") as out:
        make_scenario.write(out, lines, 100, foreign)
    seconds = []
    for _ in range(options.runs):
        with open(folder / "events.jsonl", "w+b") as events:
            seconds.append(started([program, "run", str(scenario)], events)[1])
            events.seek(0)
            reports = sum(1 for _ in events)
        if reports < 0.9 * lines:  # each advertisement but a dongle's first ones gives a report
            raise RuntimeError(f"only {reports} reports of {lines} lines")
    return seconds


def main():
    options = options_of(__doc__, quick={})
    program = str(options.build.resolve() / "apps" / "nearcast" / "nearcast")
    ours, floors = starts(program, options)
    print_line("nearcast --version, beside /bin/true", "ms", ours, floors, 10)
    with tempfile.TemporaryDirectory() as folder:
        for foreign, words in ((False, "as recorded"), (True, "of another program's making")):
            print_line(f"nearcast run, a million lines {words}", "s",
                       scenarios(program, Path(folder), foreign, options), budget=2, scale=3)


if __name__ == "__main__":
    main()
