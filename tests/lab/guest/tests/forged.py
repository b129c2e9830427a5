# SPDX-License-Identifier: Apache-2.0
"""What an unprivileged user sends in bluetoothd's name has no effect."""

import pathlib
import subprocess
import sys

from framework import expect, now, test
from lab import NOBODY, sleep

FORGER = pathlib.Path(__file__).resolve().parents[1] / "forger.py"


def forge(lab, listener, what, times=1):
    """As a user without rights and without groups."""
    result = subprocess.run([sys.executable, "-B", str(FORGER), str(listener.pid), what, str(times)],
                            capture_output=True, text=True, timeout=60, check=False, user=NOBODY, group=NOBODY,
                            extra_groups=[])
    expect(result.stdout == f"{times} sent\n", f"the forger failed: {result.stdout} {result.stderr}")


def hearing(lab):
    controller = lab.controller()
    controller.dongle(rate=10)
    lab.bluetoothd()
    listener = lab.listen("bluez")
    listener.wait_state("PoweredOn")
    listener.wait_reports(5)
    return listener


def expect_no_effect(lab, listener, what, times=1):
    began = now()
    forge(lab, listener, what, times)
    sent = now()
    sleep(3)
    states = [rest for _, rest in listener.entries("state", began)]
    expect(not states, f"after a forged {what} it is {states}")
    heard = len(listener.reports(sent))
    lab.figure(f"in 3 s after a forged {what}", f"{heard} reports of the dongle, state {listener.state()[0]}")
    expect(heard >= 25, f"only {heard} reports in 3 s")
    forged = listener.reports(began, payload="024e430000ee")
    expect(not forged, f"{len(forged)} forged reports were believed")


@test("AForgedReportIsNotBelieved", boot="quick")
def report(lab):
    listener = hearing(lab)
    expect_no_effect(lab, listener, "report", times=20)
    said = pathlib.Path(listener.log).read_text(encoding="utf-8", errors="replace")
    lines = [line for line in said.splitlines() if "speaks in bluetoothd's name" in line]
    lab.figure("said on the console", lines)
    expect(len(lines) == 1, f"said {len(lines)} times and not once")


@test("AForgedLossOfPowerIsNotBelieved")
def power(lab):
    expect_no_effect(lab, hearing(lab), "power")


@test("AForgedRemovalOfTheAdapterIsNotBelieved")
def removal(lab):
    expect_no_effect(lab, hearing(lab), "removal")


@test("AForgedEndOfBluetoothdIsNotBelieved")
def owner(lab):
    expect_no_effect(lab, hearing(lab), "owner")
