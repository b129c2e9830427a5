# SPDX-License-Identifier: Apache-2.0
"""What an unprivileged user sends in bluetoothd's name has no effect."""

import pathlib
import subprocess
import sys

from framework import expect, now, test
from lab import NOBODY
from tests.clients import expect_goes_on, hearing

FORGER = pathlib.Path(__file__).resolve().parents[1] / "forger.py"


def forge(lab, listener, what, times=1):
    """As a user without rights and without groups."""
    result = subprocess.run([sys.executable, "-B", str(FORGER), str(listener.pid), what, str(times)],
                            capture_output=True, text=True, timeout=60, check=False, user=NOBODY, group=NOBODY,
                            extra_groups=[])
    expect(result.stdout == f"{times} sent\n", f"the forger failed: {result.stdout} {result.stderr}")


def expect_no_effect(lab, what, times=1):
    """The radio stays on and goes on hearing. @return what it said"""
    controller, listener = hearing(lab)
    listener.wait_state("PoweredOn")
    began = now()
    forge(lab, listener, what, times)
    # Whether it goes on, not how well: a busy host loses some, and a power that is believed to be off loses more.
    expect_goes_on(lab, controller, listener, f"after a forged {what}", seconds=5, least=70)
    states = [rest for _, rest in listener.entries("state", began)]
    expect(not states, f"after a forged {what} it is {states}")
    forged = listener.reports(began, payload="024e430000ee")
    expect(not forged, f"{len(forged)} forged reports were believed")
    return pathlib.Path(listener.log).read_text(encoding="utf-8", errors="replace")


@test("AForgedReportIsNotBelieved", boot="quick")
def report(lab):
    said = expect_no_effect(lab, "report", times=20)
    lines = [line for line in said.splitlines() if "speaks in bluetoothd's name" in line]
    lab.figure("said on the console", lines)
    expect(len(lines) == 1, f"said {len(lines)} times and not once")


@test("AForgedLossOfPowerIsNotBelieved")
def power(lab):
    expect_no_effect(lab, "power")


@test("AForgedRemovalOfTheAdapterIsNotBelieved")
def removal(lab):
    expect_no_effect(lab, "removal")


@test("AForgedEndOfBluetoothdIsNotBelieved")
def owner(lab):
    expect_no_effect(lab, "owner")
