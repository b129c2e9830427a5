# SPDX-License-Identifier: Apache-2.0
"""What the radios are built on: how this kernel and this bluetoothd behave. Where one of these changes, so must they."""

import pathlib

from framework import expect, test, wait_for
from lab import sleep

FILTER = {"Transport": "le", "DuplicateData": True}


def discovering(lab, controller, *options):
    lab.bluetoothd(*options)
    client = lab.other_client()
    client.filter(**FILTER)
    client.start()
    wait_for("a scan", 10, lambda: controller.counters()["scanning"])
    return client


@test("TheRealServiceTakesTheVirtualControllerForAnAdapter", boot="quick")
def adapter(lab):
    controller = lab.controller()
    lab.bluetoothd()
    properties = lab.adapter()
    expect(properties["Address"] == "00:AA:01:00:00:01", f"another address: {properties['Address']}")
    unknown = controller.counters()["unknown"]
    expect(not unknown, f"the kernel wants commands that the controller does not know: {unknown}")


@test("DiscoveryIsAnActiveScanWithADuplicateFilter", boot="quick")
def duplicate_filter(lab):
    controller = lab.controller()
    discovering(lab, controller)
    counters = controller.counters()
    expect(counters["active"] and counters["filterDuplicates"] and not counters["extended"], str(counters))


@test("AnExtendedControllerIsScannedWithExtendedCommands")
def extended(lab):
    controller = lab.controller("extended")
    discovering(lab, controller)
    expect(controller.counters()["extended"], "with the old commands")
    expect(not controller.counters()["unknown"], f"it does not know {controller.counters()['unknown']}")


@test("BluetoothdShowsADongleWithItsPayloadAndServiceAndName")
def shown(lab):
    controller = lab.controller()
    controller.dongle(address="C0:00:00:00:00:01", payload="024e43000001", rssi=-61)
    controller.dongle(address="C0:00:00:00:00:02", type="scannable", answers="yes", name="Front")
    discovering(lab, controller)
    wait_for("the name", 10, lambda: any("Name" in device for device in lab.devices().values()))
    devices = wait_for("both dongles", 10, lambda: len(lab.devices()) == 2 and lab.devices())
    first = devices["C0:00:00:00:00:01"]
    expect(bytes(first["ManufacturerData"][0xFFFF]).hex() == "024e43000001", str(first["ManufacturerData"]))
    expect(first["RSSI"] == -61, f"another signal: {first['RSSI']}")
    expect(first["UUIDs"] == ["4f37d906-3f43-440c-98e0-9e709971cadf"], str(first["UUIDs"]))
    expect(devices["C0:00:00:00:00:02"]["Name"] == "Front", "another name")


@test("ADongleThatTakesScanRequestsAndAnswersNoneStaysUnseen")
def unanswered(lab):
    """Why dongles have to advertise as non-connectable, or answer."""
    controller = lab.controller()
    controller.dongle("unseen", type="connectable", answers="no")
    discovering(lab, controller)
    sleep(12)
    lab.figure("bluetoothd shows", sorted(lab.devices()))
    reported = controller.counters()["dongles"]["unseen"]["reported"]
    expect(reported > 50, "the controller reported nothing")
    expect(not lab.devices(), "it is shown")


@test("ScansGoOnTenSecondsAtATimeWithAShortGap")
def rounds(lab):
    controller = lab.controller()
    controller.dongle("d", rate=20)
    discovering(lab, controller)
    enables = controller.counters()["scanEnables"]
    sleep(32)
    rounds_ = controller.counters()["scanEnables"] - enables
    lab.figure("scan enables in 32 s", rounds_)
    expect(2 <= rounds_ <= 4, "not every ten seconds")


@test("BluetoothdKeepsAFileForEachDeviceThatTellsAName")
def cache(lab):
    controller = lab.controller()
    controller.dongle(address="C0:00:00:00:00:01", name="unasked")
    controller.dongle(address="C0:00:00:00:00:02", type="scannable", answers="yes", name="Front")
    discovering(lab, controller)
    wait_for("both dongles", 10, lambda: len(lab.devices()) == 2)
    sleep(2)
    kept = sorted(path.name for path in pathlib.Path("/var/lib/bluetooth").glob("*/cache/*"))
    lab.figure("files in the cache", kept)
    expect(kept == ["C0:00:00:00:00:02"], f"other files: {kept}")
