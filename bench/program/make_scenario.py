#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes a long scenario for `nearcast run` to standard output: so many printers are registered, the delegate hears all,
a scan starts, and the dongles advertise a thousand times a second, in random order and the same on every run.

    bench/program/make_scenario.py [--lines 1000000] [--devices 100] [--foreign]

With --foreign the members of the advertisements come in another order than `nearcast record` writes them, as from a
program of somebody else's.
"""

import argparse
import json
import random
import sys


def setup(devices):
    """The lines before the first advertisement."""
    lines = [{"do": "addSettingForPrinterPortName", "portName": f"BT:Printer {device}", "portSettings": "mini",
              "withDrawer": device % 2 == 0, "dongleMACAddr": "02:4E:43:00:%02X:%02X" % divmod(device, 256),
              "RSSIthreshould": -60, "nickName": f"Counter {device}"} for device in range(devices)]
    lines.append({"do": "setDelegate", "implements": ["didDiscoverPort:deviceType:MACAddr:RSSI:",
                                                      "didUpdateState:MACAddr:"]})
    lines.append({"do": "startScan"})
    return [json.dumps(line) + "\n" for line in lines]


def advertisement(number, device, RSSI, foreign):
    at, data = f"{number / 1000:.3f}", f"FFFF024E4300{device:04X}"
    if foreign:
        return f'{{"do": "advertise", "at": {at}, "RSSI": {RSSI}, "manufacturerData": "{data}"}}\n'
    return f'{{"at": {at}, "do": "advertise", "name": null, "manufacturerData": "{data}", "RSSI": {RSSI}}}\n'


def write(out, lines, devices, foreign):
    generator = random.Random(1)
    begin = setup(devices)
    out.writelines(begin[:lines])
    for number in range(lines - len(begin)):
        out.write(advertisement(number, generator.randrange(devices), generator.randrange(-90, -40), foreign))


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("--lines", type=int, default=1_000_000)
    parser.add_argument("--devices", type=int, default=100)
    parser.add_argument("--foreign", action="store_true")
    options = parser.parse_args()
    write(sys.stdout, options.lines, options.devices, options.foreign)


if __name__ == "__main__":
    main()
