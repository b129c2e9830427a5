#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Shows that memory does not grow: watches the simulated shop for a while and for ten times as long.

    soak.py PROGRAM [--for SECONDS] [--growth KIB]

The simulator goes as fast as it can: a hundred hours of shop take minutes. Both runs have to end well, and the peak of
the long one may be above that of the short one by no more than what a heap varies by.
"""

import argparse
import subprocess
import sys
import time

PAUSE = 0.02  # seconds between two looks


def peak_of(pid):
    """The process's peak of resident memory in KiB; None once it has ended."""
    try:
        with open(f"/proc/{pid}/status", encoding="ascii") as status:
            return next((int(line.split()[1]) for line in status if line.startswith("VmHWM:")), None)
    except FileNotFoundError:
        return None


def watch(program, seconds):
    """The peak of a run that goes on for so many seconds of the simulator's time."""
    command = [program, "watch", "--radio", "simulator?speed=max", "--for", str(seconds)]
    began, peak = time.monotonic(), None
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL) as process:
        while process.poll() is None:
            peak = peak_of(process.pid) or peak
            time.sleep(PAUSE)
    if process.returncode != 0:
        raise SystemExit(f"soak: {' '.join(command)} has ended with {process.returncode}")
    if peak is None:
        raise SystemExit(f"soak: {' '.join(command)} was over before it was looked at")
    print(f"{seconds} s of shop in {time.monotonic() - began:.0f} s: at most {peak} KiB", flush=True)
    return peak


def main(argv):
    parser = argparse.ArgumentParser(description="Shows that memory does not grow.")
    parser.add_argument("program")
    parser.add_argument("--for", dest="seconds", type=int, default=360_000)
    parser.add_argument("--growth", type=int, default=512, help="KiB that the peak may grow by")
    arguments = parser.parse_args(argv)
    early, late = (watch(arguments.program, seconds) for seconds in (arguments.seconds // 10, arguments.seconds))
    if late - early > arguments.growth:
        print(f"soak: memory grows by {late - early} KiB, more than {arguments.growth}")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
