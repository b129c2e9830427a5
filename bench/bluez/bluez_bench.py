#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What a report costs through the radio `bluez`, beside the least that a client of BlueZ can do.

    bench/bluez/bluez_bench.py BUILD [--devices 400] [--rate 1000] [--seconds 4] [--runs 5] [--quick]

Both clients hear the same stand-in of bluetoothd on a bus of their own, one after the other, again and again:

- at a steady rate. What counts is the processor time of the client a report (all its threads, user and system);
- flooded: the stand-in sends as fast as the bus takes it. What counts is the time that passes until a client has heard
  all of it, a report. That it is 1.11 times as long is a rate of 0.9. The client has one core, the bus and the
  stand-in have another: left to the scheduler, the three of them fare so differently from run to run that nothing
  could be seen. These runs are short and three times as many.

How much that is depends on what else the machine does, so each run of ours is compared with the one of the minimal
client just before it. Prints lines for the table; a budget that is not kept is for the table to say.
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tests" / "integration"), str(ROOT / "bench")]
from measured import options_of, print_line, processor_seconds, resident, tell, threads_of, wake_ups  # noqa: E402
from private_bus import Bluezd, PrivateBus  # noqa: E402

PROGRAMS = {"minimal": "minimal_client", "ours": "our_client"}
QUIET = 0.3  # seconds without work after which a client has heard all that there is


def count(bluezd):
    return int(bluezd.ask("count").split()[1])


class Run:
    """One client that hears the stand-in, until `end`."""

    def __init__(self, bus, name, options, *more):
        self.name, self.devices = name, options.devices
        self.bluezd = Bluezd(bus, "--devices", options.devices, "--rate", options.rate, *more)
        self.client = subprocess.Popen([options.build / "bench" / PROGRAMS[name]], env=bus.environment,
                                       stdout=subprocess.PIPE, text=True)
        while count(self.bluezd) < 2 * options.devices:  # it knows every device
            time.sleep(0.01)

    def settle(self):
        """Mutes the stand-in. @return when the client had heard everything, and how much that was"""
        self.bluezd.ask("mute")
        total, used, since = count(self.bluezd), -1.0, time.monotonic()
        while time.monotonic() - since < QUIET:
            now = processor_seconds(self.client.pid)
            if now != used:
                used, since = now, time.monotonic()
            time.sleep(0.005)
        return since, total

    def end(self, total):
        """@return how many reports it did not hear"""
        self.client.terminate()
        heard = int(self.client.communicate(timeout=30)[0])
        self.bluezd.close()
        # The first report of a device is in InterfacesAdded, which the minimal client leaves out.
        return total - heard - (self.devices if self.name == "minimal" else 0)


def steady(bus, name, options):
    """@return microseconds of processor time a report, wake-ups a report, MiB, reports lost"""
    run = Run(bus, name, options)
    pid = run.client.pid
    used, woken, first = processor_seconds(pid), wake_ups(pid), count(run.bluezd)
    time.sleep(options.seconds)
    used, woken, sent = processor_seconds(pid) - used, wake_ups(pid) - woken, count(run.bluezd) - first
    memory = resident(pid, "VmHWM")
    _, total = run.settle()
    lost = run.end(total)
    tell(f"{name:8} steady:  {1e6 * used / sent:6.1f} us and {woken / sent:4.2f} wake-ups a report, {memory:4.1f} MiB, "
         f"{lost} of {total} lost")
    return 1e6 * used / sent, woken / sent, memory, lost


def pin(run, bus):
    """The client to one core, the others to another, where there are two."""
    cores = sorted(os.sched_getaffinity(0))
    for process in (run.bluezd.process, bus.process):
        os.sched_setaffinity(process.pid, {cores[0]})
    for thread in threads_of(run.client.pid):
        os.sched_setaffinity(int(thread.name), {cores[-1]})


def unpin(bus):
    os.sched_setaffinity(bus.process.pid, os.sched_getaffinity(0))


def flooded(bus, name, options):
    """@return microseconds that pass a report, microseconds of processor time a report, reports lost"""
    run = Run(bus, name, options, "--flood")
    pin(run, bus)
    used, begin, first = processor_seconds(run.client.pid), time.monotonic(), count(run.bluezd)
    time.sleep(options.seconds / 2)
    end, total = run.settle()
    used = 1e6 * (processor_seconds(run.client.pid) - used) / (total - first)
    took = 1e6 * (end - begin) / (total - first)
    lost = run.end(total)
    unpin(bus)
    tell(f"{name:8} flooded: {took:6.1f} us a report ({1e6 / took:.0f}/s), {used:4.1f} us of processor time, "
         f"{lost} of {total} lost")
    return took, used, lost


def alternate(measure, runs, options):
    """So many times: the minimal client, ours. @return what each gave, by name"""
    results = {name: [] for name in PROGRAMS}
    with tempfile.TemporaryDirectory() as folder:
        bus = PrivateBus(folder)
        for _ in range(runs):
            for name in PROGRAMS:
                results[name].append(measure(bus, name, options))
        bus.stop()
    return {name: list(zip(*rows)) for name, rows in results.items()}


def main():
    options = options_of(__doc__, quick={"seconds": 0.5, "runs": 1}, devices=400, rate=1000.0, seconds=4.0)
    at_rate = alternate(steady, options.runs, options)
    flood = alternate(flooded, 3 * options.runs, options)
    ours, floor = at_rate["ours"], at_rate["minimal"]
    setting = f"{options.rate:.0f} reports/s of {options.devices} devices"
    print_line(f"bluez, {setting}: processor time a report", "us", ours[0], floor[0], 1.1, "ratio")
    print_line(f"bluez, {setting}: wake-ups a report", "", ours[1], floor[1])
    print_line(f"bluez, {setting}: memory at most", "MiB", ours[2], floor[2])
    print_line("bluez, flooded: time a report", "us", flood["ours"][0], flood["minimal"][0], round(1 / 0.9, 2), "ratio")
    print_line("bluez, flooded: processor time a report", "us", flood["ours"][1], flood["minimal"][1])
    # In the worst run, not in the median one.
    print_line("bluez, steady and flooded: reports lost", "", [max(ours[3] + flood["ours"][2])], budget=0)


if __name__ == "__main__":
    main()
