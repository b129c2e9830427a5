# SPDX-License-Identifier: Apache-2.0
"""What measuring scripts share: the lines that they print, and what Linux tells of a process."""

import argparse
import json
import os
import pathlib
import statistics
import sys


def tell(text):
    """Progress, which is not what was measured."""
    print(text, file=sys.stderr, flush=True)


def options_of(doc, quick, **others):
    """What a measuring script was called with: the build, the number of runs, and options of its own.

    @param quick  the values that --quick stands for
    @param others the script's own options and their defaults
    """
    parser = argparse.ArgumentParser(description=doc.splitlines()[0])
    parser.add_argument("build", type=lambda text: pathlib.Path(text).resolve())
    for name, default in {"runs": 5, **others}.items():
        parser.add_argument(f"--{name}", type=type(default), default=default)
    parser.add_argument("--quick", action="store_true")
    options = parser.parse_args()
    if options.quick:
        vars(options).update(quick)
    for bluezd in options.build.glob("**/bluezd/bluezd"):
        os.environ["NEARCAST_BLUEZD"] = str(bluezd)
    return options


def print_line(what, unit, values, floors=None, budget=None, budget_of="value", scale=2):
    """One line of the table, from what each run gave; a floor stands beside the value of the same run.

    @return whether it keeps its budget
    """
    ratios = [value / floor for value, floor in zip(values, floors)] if floors else None
    judged = ratios if budget_of == "ratio" else values
    line = {
        "what": what,
        "unit": unit,
        "value": round(statistics.median(values), scale),
        "floor": round(statistics.median(floors), scale) if floors else None,
        "ratio": round(statistics.median(ratios), 3) if ratios else None,
        "low": round(min(judged), 5),
        "high": round(max(judged), 5),
        "runs": len(values),
        "budget": budget,
        "budget_of": budget_of,
    }
    print(json.dumps(line), flush=True)
    return budget is None or statistics.median(judged) <= budget


def threads_of(pid):
    return list(pathlib.Path(f"/proc/{pid}/task").iterdir())


def processor_seconds(pid):
    """Of all threads, user and system, from schedstat, which counts nanoseconds where stat counts ticks."""
    return sum(int((thread / "schedstat").read_text().split()[0]) for thread in threads_of(pid)) / 1e9


def status(path, name):
    """A number in /proc/PID/status or /proc/PID/task/TID/status."""
    for line in (pathlib.Path(path) / "status").read_text().splitlines():
        if line.startswith(name + ":"):
            return int(line.split()[1])
    raise RuntimeError(f"{path} has no {name}")


def wake_ups(pid):
    """How often its threads have waited for something, each of which ends in a wake-up."""
    return sum(status(thread, "voluntary_ctxt_switches") for thread in threads_of(pid))


def resident(pid, name="VmRSS"):
    """MiB; VmHWM is the most that it had at once."""
    return status(f"/proc/{pid}", name) / 1024
