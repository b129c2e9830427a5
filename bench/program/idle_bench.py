#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What a scan costs in which nobody advertises: wake-ups of all threads, and processor time.

    bench/program/idle_bench.py BUILD [--runs 5] [--seconds 12] [--quick]

A wake-up is a voluntary context switch of Linux's: a thread that has waited. All cases run beside each other, for so
many intervals of so many seconds; they include sweeps (every 5 s) and the watchdog's restart (after 30 s).
"""

import json
import os
import pathlib
import pty
import subprocess
import sys
import tempfile
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tests" / "integration"), str(ROOT / "bench")]
from measured import options_of, print_line, processor_seconds, tell, wake_ups  # noqa: E402
from private_bus import Bluezd, PrivateBus  # noqa: E402

EMPTY_SCENE = {"floor": {"width": 8, "depth": 6}, "user": {"path": [{"at": [1, 1]}]}, "dongles": []}
SETTLING = 2


def drain(descriptor):
    try:
        while os.read(descriptor, 65536):
            pass
    except OSError:  # the other side is closed
        pass


def on_terminal(command, environment):
    master, slave = pty.openpty()
    threading.Thread(target=drain, args=(master,), daemon=True).start()
    environment = {**(environment or os.environ), "TERM": "xterm"}
    process = subprocess.Popen(command, env=environment, stdin=slave, stdout=slave, stderr=slave)
    os.close(slave)
    return process


def start(build, folder, environment):
    """@return the processes, by what they do"""
    scene = pathlib.Path(folder) / "empty.json"
    scene.write_text(json.dumps(EMPTY_SCENE))
    nearcast = build / "apps" / "nearcast" / "nearcast"

    def quiet(*command):
        return subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)

    return {
        "the library, radio bluez": quiet(build / "bench" / "our_client"),
        "watch, radio bluez": quiet(nearcast, "watch", "--radio", "bluez"),
        "watch on a terminal, radio bluez": on_terminal([nearcast, "watch", "--radio", "bluez"], environment),
        "watch, an empty simulator": quiet(nearcast, "watch", "--radio", f"simulator:{scene}"),
    }


def measure(processes, seconds):
    """@return wake-ups a second and the share of a core in per cent, by what the processes do"""
    before = {name: (wake_ups(process.pid), processor_seconds(process.pid)) for name, process in processes.items()}
    begin = time.monotonic()
    time.sleep(seconds)
    took = time.monotonic() - begin
    result = {}
    for name, process in processes.items():
        woken, used = wake_ups(process.pid), processor_seconds(process.pid)
        result[name] = ((woken - before[name][0]) / took, 100 * (used - before[name][1]) / took)
        tell(f"{name:34} {result[name][0]:5.2f} wake-ups/s, {result[name][1]:.4f} % of a core")
    return result


def main():
    options = options_of(__doc__, quick={"runs": 1, "seconds": 1}, seconds=12.0)
    with tempfile.TemporaryDirectory() as folder:
        bus = PrivateBus(folder)
        bluezd = Bluezd(bus, "--devices", 0)
        processes = start(options.build, folder, bus.environment)
        time.sleep(SETTLING)
        runs = [measure(processes, options.seconds) for _ in range(options.runs)]
        ended = [name for name, process in processes.items() if process.poll() is not None]
        for process in processes.values():
            process.terminate()
            process.wait()
        bluezd.close()
        bus.stop()
    if ended:
        sys.exit(f"ended before its time: {', '.join(ended)}")
    for name in processes:
        print_line(f"idle, {name}: wake-ups", "1/s", [run[name][0] for run in runs], budget=1)
        print_line(f"idle, {name}: processor", "% of a core", [run[name][1] for run in runs], budget=0.1, scale=4)


if __name__ == "__main__":
    main()
