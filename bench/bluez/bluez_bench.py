#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What a report costs through the radio `bluez`, beside the least that a client of BlueZ can do.

    bench/bluez/bluez_bench.py BUILD [--devices 400] [--rate 1000] [--seconds 5] [--runs 9] [--budget 1.3]

Both clients hear the same stand-in of bluetoothd on a bus of their own, one after the other, again and again; each
run gives the processor time of the client a report (user and system, from /proc). How much that is depends on what else
the machine does, for a client that is late takes several reports at one awakening. So each run of ours is compared with
the one of the minimal client just before it, and the median of these ratios with the budget: exit status 1 when it is
over, or when a client lost reports.
"""

import argparse
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "integration"))
from private_bus import Bluezd, PrivateBus  # noqa: E402


def processor_seconds(pid):
    """From schedstat, which counts nanoseconds where stat counts ticks."""
    total = 0
    for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
        total += int((task / "schedstat").read_text().split()[0])
    return total / 1e9


def resident(pid):
    """The most memory that it had at once, in MiB."""
    for line in pathlib.Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith("VmHWM:"):
            return int(line.split()[1]) / 1024
    raise RuntimeError("no VmHWM")


def count(bluezd):
    return int(bluezd.ask("count").split()[1])


def one_run(bus, program, options):
    """Microseconds a report, MiB, reports sent and heard."""
    bluezd = Bluezd(bus, "--devices", options.devices, "--rate", options.rate)
    client = subprocess.Popen([program], env=bus.environment, stdout=subprocess.PIPE, text=True)
    while count(bluezd) < 2 * options.devices:  # it knows every device
        time.sleep(0.05)
    begin, first = processor_seconds(client.pid), count(bluezd)
    time.sleep(options.seconds)
    used, sent = processor_seconds(client.pid) - begin, count(bluezd) - first
    memory = resident(client.pid)
    bluezd.ask("mute")
    time.sleep(0.5)
    total = count(bluezd)
    client.terminate()
    heard = int(client.communicate(timeout=30)[0])
    bluezd.close()
    return 1e6 * used / sent, memory, total, heard


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--devices", type=int, default=400)
    parser.add_argument("--rate", type=float, default=1000)
    parser.add_argument("--seconds", type=float, default=5)
    parser.add_argument("--runs", type=int, default=9)
    parser.add_argument("--budget", type=float, default=1.3)
    options = parser.parse_args()
    build = options.build.resolve()
    bluezd = next(build.glob("**/bluezd/bluezd"))
    os.environ["NEARCAST_BLUEZD"] = str(bluezd)
    costs, memories, lost = {"minimal": [], "ours": []}, {}, False
    with tempfile.TemporaryDirectory() as folder:
        bus = PrivateBus(folder)
        for _ in range(options.runs):
            for name, program in (("minimal", "minimal_client"), ("ours", "our_client")):
                cost, memories[name], sent, heard = one_run(bus, build / "bench" / program, options)
                # The first report of a device is in InterfacesAdded, which the minimal client leaves out.
                lost = lost or heard < sent - (options.devices if name == "minimal" else 0)
                costs[name].append(cost)
                print(f"{name:8} {cost:6.1f} us a report, {memories[name]:5.1f} MiB, {heard} of {sent} heard",
                      flush=True)
        bus.stop()
    floor, ours = (statistics.median(costs[name]) for name in ("minimal", "ours"))
    ratios = [ours / minimal for minimal, ours in zip(costs["minimal"], costs["ours"])]
    ratio = statistics.median(ratios)
    print(f"\nmedian of {options.runs}: minimal {floor:.1f} us, ours {ours:.1f} us, ratio of neighbours {ratio:.2f} "
          f"({min(ratios):.2f} to {max(ratios):.2f}, budget {options.budget}); "
          f"{memories['ours']:.1f} MiB beside {memories['minimal']:.1f}")
    if lost:
        print("reports were lost")
    return 1 if lost or ratio > options.budget else 0


if __name__ == "__main__":
    sys.exit(main())
