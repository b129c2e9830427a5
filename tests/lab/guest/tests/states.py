# SPDX-License-Identifier: Apache-2.0
"""Every state of the radio, as its delegate is told it."""

from framework import expect, test
from lab import NOBODY, sleep


@test("WithoutBluetoothdTheStateIsUnknown", boot="quick")
def no_bluetoothd(lab):
    lab.controller()
    listener = lab.listen("bluez")
    sleep(2)
    state, why = listener.state()
    expect(state == "Unknown", f"it is {state}")
    lab.figure("why", listener.why() or why)
    expect("bluetoothd" in listener.why(), f"it does not say what is missing: '{listener.why()}'")


@test("WithoutAnAdapterTheStateIsUnsupported", boot="quick")
def no_adapter(lab):
    lab.bluetoothd(adapters=())
    lab.figure("why", lab.listen("bluez").wait_state("Unsupported"))


@test("AnAdapterThatIsSwitchedOffIsPoweredOff", boot="quick")
def powered_off(lab):
    lab.controller()
    lab.bluetoothd()
    lab.set_powered(False)
    lab.figure("why", lab.listen("bluez").wait_state("PoweredOff"))


@test("ABlockedAdapterIsPoweredOffAndSaysThatItIsBlocked", boot="quick")
def blocked(lab):
    lab.controller()
    lab.bluetoothd()
    listener = lab.listen("bluez")
    listener.wait_state("PoweredOn")
    lab.block(True)
    listener.wait_state("PoweredOff")
    sleep(1)
    why = listener.why()
    lab.figure("why", why)
    expect("block" in why or "rfkill" in why, "it does not say that it is blocked")


@test("WhatTheBusForbidsIsUnauthorized", boot="quick")
def forbidden(lab):
    lab.controller()
    lab.bluetoothd()
    lab.forbid()
    lab.figure("why", lab.listen("bluez", user=NOBODY).wait_state("Unauthorized"))


@test("AnAdapterThatIsOnIsPoweredOnAndHears", boot="quick")
def powered_on(lab):
    controller = lab.controller()
    controller.dongle(payload="024e43000001", rssi=-61)
    lab.bluetoothd()
    listener = lab.listen("bluez")
    listener.wait_state("PoweredOn")
    reports = listener.wait_reports(5)
    expect({rest for _, rest in reports} == {"ffff024e43000001 -61"}, f"not what was sent: {reports}")


@test("TheStateFollowsBluetoothdAsItComesAndGoes")
def service_comes_and_goes(lab):
    lab.controller()
    listener = lab.listen("bluez")
    listener.wait_state("Unknown")
    bluetoothd = lab.bluetoothd()
    listener.wait_state("PoweredOn")
    bluetoothd.kill()
    listener.wait_state("Unknown")


@test("TheStateFollowsTheAdapterAsItComesAndGoes")
def adapter_comes_and_goes(lab):
    controller = lab.controller(plugged=False)
    lab.bluetoothd(adapters=())
    listener = lab.listen("bluez")
    listener.wait_state("Unsupported")
    controller.plug()
    listener.wait_state("PoweredOn")
    controller.do("unplug")
    listener.wait_state("Unsupported")


@test("TheAdapterThatIsAskedForIsTheOneThatHears")
def picked_adapter(lab):
    here = lab.controller()
    there = lab.controller("address=00:AA:01:00:00:02")
    here.dongle(payload="024e43000001")
    there.dongle(address="C0:00:00:00:01:02", payload="024e43000002")
    lab.bluetoothd(adapters=("hci0", "hci1"))
    listener = lab.listen("bluez:hci1")
    heard = {rest.split(" ")[0] for _, rest in listener.wait_reports(10)}
    expect(heard == {"ffff024e43000002"}, f"heard {heard}")


@test("WithoutAskingTheFirstAdapterThatIsOnHears")
def first_powered(lab):
    here = lab.controller()
    there = lab.controller("address=00:AA:01:00:00:02")
    here.dongle(payload="024e43000001")
    there.dongle(address="C0:00:00:00:01:02", payload="024e43000002")
    lab.bluetoothd(adapters=("hci0", "hci1"))
    lab.set_powered(False, "hci0")
    listener = lab.listen("bluez")
    listener.wait_state("PoweredOn")
    heard = {rest.split(" ")[0] for _, rest in listener.wait_reports(10)}
    expect(heard == {"ffff024e43000002"}, f"heard {heard}")
