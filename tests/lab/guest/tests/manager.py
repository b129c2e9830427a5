# SPDX-License-Identifier: Apache-2.0
"""The manager on real radios, through the public interface of the library as it is installed."""

from framework import expect, now, test
from lab import sleep

NEAR, FAR = "02:4E:43:00:00:01", "02:4E:43:00:00:02"
NEAR_SIGNALS, FAR_SIGNALS = "-50,-52,-51", "-80,-82,-81"


def shop(lab, radio):
    controller = lab.controller()
    controller.dongle("near", payload="024e43000001", rate=10, rssi=NEAR_SIGNALS)
    controller.dongle("far", payload="024e43000002", rate=10, rssi=FAR_SIGNALS)
    if radio == "bluez":
        lab.bluetoothd()
    application = lab.proximity(radio)
    application.ask(f"register BT:Near {NEAR}", "registered")
    return controller, application


def whole_way(lab, radio):
    """Calibration, scan, reports, silence, return, stop."""
    controller, application = shop(lab, radio)
    signal = int(application.ask(f"calibrate {NEAR}", "calibrated"))
    lab.figure("calibrateActionArea", f"{signal} dBm, put on the air at {NEAR_SIGNALS}")
    expect(signal in (-50, -51), "not the second strongest of what is on the air")
    expect(application.ask("start", "started") == "1", "the scan does not start")
    near = application.wait("discovered", 10, fits=lambda rest: rest.startswith(f"BT:Near {NEAR} "))
    application.wait("discovered", 10, fits=lambda rest: rest.startswith(f" {FAR} "))
    expect(-53 <= int(near[1].split(" ")[-1]) <= -49, f"another signal: {near[1]}")
    expect(-83 <= int(application.ask(f"rssi {FAR}", "rssi")) <= -79, "another signal of the far one")
    expect(application.ask("calibrate " + NEAR, "calibrated") == "127", "a calibration while a scan runs")
    silence(lab, controller, application)
    application.ask("stop", "stopped")
    sleep(0.5)
    stopped = now()
    sleep(1)
    expect(not application.entries("discovered", stopped), "reports after stopScan")


def silence(lab, controller, application):
    """A dongle falls silent, is told within ten seconds, and is told again when it speaks."""
    controller.do("silence near")
    began = now()
    told = application.wait("silent", 15, since=began)
    lab.figure("silence told", f"after {told[0] - began:.1f} s, from 5 to 10.5 s wanted")
    expect(told[1] == f"BT:Near {NEAR}", f"another one: {told[1]}")
    expect(4.5 <= told[0] - began <= 10.5, "at another time")
    controller.do("speak near")
    back = now()
    again = application.wait("discovered", 10, since=back, fits=lambda rest: rest.startswith("BT:Near"))
    lab.figure("told again", f"{again[0] - back:.1f} s after it spoke")


@test("ScanCalibrationAndSilenceGoTheirWayThroughBluez", boot="quick")
def through_bluez(lab):
    whole_way(lab, "bluez")


@test("ScanCalibrationAndSilenceGoTheirWayOnTheUserChannel")
def through_hci(lab):
    whole_way(lab, "hci:0")


@test("AStartRightAfterTheOpeningOfTheRadioSucceeds")
def at_once(lab):
    """The state is known within the second that startScan waits for it."""
    _, application = shop(lab, "bluez")
    began = now()
    expect(application.ask("start", "started") == "1", "refused")
    lab.figure("opened and started in", f"{now() - began:.2f} s")


@test("ADongleThatFallsSilentIsToldFromARadioThatGoesBlind")
def blind(lab):
    controller, application = shop(lab, "bluez")
    application.ask("start", "started")
    application.wait("discovered", 10)
    controller.do("silence near")
    application.wait("silent", 15)
    health = application.ask("health", "health")
    lab.figure("a silent dongle", health)
    expect(health.startswith("5 "), "the radio is well")
    controller.do("unplug")
    application.wait("silent", 15, since=now())
    health = application.ask("health", "health")
    lab.figure("a blind radio", health)
    expect(health.startswith("2 "), "the radio is gone")
