#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The memory of `nearcast watch --radio bluez` while 1,000 devices advertise, on a bus of its own.

    bench/program/memory_bench.py BUILD [--devices 1000] [--runs 5] [--quick]

What counts is VmRSS of /proc/PID/status, shared libraries included, once every device has filled its windows.
"""

import pathlib
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tests" / "integration"), str(ROOT / "bench")]
from idle_bench import on_terminal  # noqa: E402
from measured import options_of, print_line, resident, status, tell  # noqa: E402
from private_bus import Bluezd, PrivateBus  # noqa: E402

RATE = 4000
REPORTS = 16  # of each device: the first makes it known, 7 fill the window of readings, 7 the history


def one_run(bus, build, how, options):
    """@return MiB"""
    bluezd = Bluezd(bus, "--devices", options.devices, "--rate", RATE)
    command = [build / "apps" / "nearcast" / "nearcast", "watch", "--radio", "bluez"]
    if how == "on a terminal":
        process = on_terminal(command, bus.environment)
    else:
        process = subprocess.Popen(command, env=bus.environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    while int(bluezd.ask("count").split()[1]) < REPORTS * options.devices:
        time.sleep(0.05)
    time.sleep(0.2)  # for what is still on its way
    memory, own = resident(process.pid), status(f"/proc/{process.pid}", "RssAnon") / 1024
    tell(f"watch {how}: {memory:.2f} MiB, {own:.2f} of them its own data")
    process.terminate()
    process.wait()
    bluezd.close()
    return memory


def main():
    options = options_of(__doc__, quick={"runs": 1}, devices=1000)
    hows = ("into a file", "on a terminal")
    memories = {how: [] for how in hows}
    with tempfile.TemporaryDirectory() as folder:
        bus = PrivateBus(folder)
        for _ in range(options.runs):
            for how in hows:
                memories[how].append(one_run(bus, options.build, how, options))
        bus.stop()
    for how in hows:
        print_line(f"watch {how}, radio bluez, {options.devices} devices: resident memory", "MiB", memories[how],
                   budget=8)


if __name__ == "__main__":
    main()
