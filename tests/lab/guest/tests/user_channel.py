# SPDX-License-Identifier: Apache-2.0
"""A controller for ourselves: beside a bluetoothd that switches on what it gets, under changing numbers, and dead."""

import pathlib
import re
import signal

from framework import expect, now, test, wait_for
from lab import sleep
from processes import Process

CONFIGURATION = pathlib.Path("/etc/bluetooth/main.conf")
FIRST, SECOND = "02:00:00:00:00:A1", "02:00:00:00:00:A2"


def auto_enable(lab, enable):
    """What bluetoothd is to do with the adapters that it gets; it reads that at its start."""
    before = CONFIGURATION.read_text()
    lab.undo.append(lambda: CONFIGURATION.write_text(before))
    after = re.sub("^#?AutoEnable=.*$", f"AutoEnable={str(enable).lower()}", before, flags=re.MULTILINE)
    expect(f"\nAutoEnable={str(enable).lower()}\n" in after, "Debian's configuration does not read as it did")
    CONFIGURATION.write_text(after)


def switched_off(lab):
    """A dongle, and bluetoothd that has the adapter off and would switch it on when it gets it."""
    auto_enable(lab, True)
    controller = lab.controller()
    controller.dongle(rate=10)
    lab.bluetoothd()
    lab.set_powered(False)
    return controller


def hears(lab, radio="hci:0"):
    listener = lab.listen(radio)
    listener.wait_state("PoweredOn")
    listener.wait_reports(5)
    return listener


def finish(listener):
    """Ends it as a program ends that is done."""
    began = now()
    listener.process.stdin.close()
    listener.process.wait(15)
    return now() - began


def expect_off(lab, what):
    """Off, and so it stays."""
    for _ in range(20):
        properties = lab.adapter()
        expect(properties is not None and not properties["Powered"], f"{what}: the adapter is {properties}")
        sleep(0.1)


@test("AControllerTakenFromBluetoothdIsGivenBackSwitchedOffAndTakenAgain")
def given_back(lab):
    switched_off(lab)
    for turn in (1, 2):
        took = finish(hears(lab))
        lab.figure(f"the end of a program that listens, {turn}", f"{took:.2f} s")
        expect_off(lab, f"after turn {turn}")
    log = lab.logs / "watch.log"
    command = [lab.config["programs"]["nearcast"], "watch", "--radio", "hci:0", "--json"]
    watch = Process(log, command)
    lab.processes.append(watch)
    wait_for("a report", 15, lambda: "didDiscoverPort" in log.read_text())
    began = now()
    watch.kill(signal.SIGTERM)
    lab.figure("nearcast watch, from SIGTERM to its end", f"{now() - began:.2f} s, status {watch.process.returncode}")
    expect(watch.process.returncode == 0, f"it ended with {watch.process.returncode}")
    expect_off(lab, "after SIGTERM")
    hears(lab)


@test("AControllerThatAKilledProgramLeavesToBluetoothdIsHadByTheAdviceThatIsGiven")
def advice(lab):
    switched_off(lab)
    listener = hears(lab)
    listener.kill()
    died = now()
    lab.wait_powered()
    lab.figure("AutoEnable=true: bluetoothd switches it on", f"{now() - died:.2f} s after a kill -9")
    refused = lab.listen("hci:0")
    why = refused.wait_state("Unauthorized")
    expect("AutoEnable=false below [Policy]" in why and "disable --now bluetooth" in why, f"it says {why}")
    auto_enable(lab, False)
    lab.bluetoothd_process.kill(signal.SIGTERM)
    lab.start_bluetoothd(adapters=())
    refused.wait_state("PoweredOn", within=15)
    refused.wait_reports(5)
    lab.figure("AutoEnable=false and a restart of bluetoothd", "taken without switching off by hand")
    lab.figure("AutoEnable=false: the end of a program that listens", f"{finish(refused):.2f} s")
    wait_for("the adapter on the bus", 10, lambda: lab.adapter() is not None)
    expect_off(lab, "AutoEnable=false")
    hears(lab).kill()
    hears(lab)


@test("AControllerThatBluetoothdTookAfterAReplugIsTakenBack")
def taken_back(lab):
    controller = switched_off(lab)
    listener = hears(lab)
    for turn in (1, 2):
        controller.do("unplug")
        wait_for("the loss told", 5, lambda: listener.state()[0] != "PoweredOn")
        listener.process.send_signal(signal.SIGSTOP)  # otherwise it may be quicker than bluetoothd
        controller.plug()
        lab.wait_powered()
        listener.process.send_signal(signal.SIGCONT)
        returned = now()
        first = listener.wait_reports(5, within=20, since=returned)[0][0] - returned
        lab.figure(f"bluetoothd had it, {turn}: heard again", f"{first:.2f} s later, at most 3 s wanted")
        expect(first <= 3, "too late")
    finish(listener)
    expect_off(lab, "at the end")


@test("AControllerThatOthersDiscoverByIsNotTakenBack")
def left_alone(lab):
    controller = switched_off(lab)
    listener = hears(lab)
    controller.do("unplug")
    wait_for("the loss told", 5, lambda: listener.state()[0] != "PoweredOn")
    listener.process.send_signal(signal.SIGSTOP)
    controller.plug()
    lab.wait_powered()
    other = lab.other_client()
    other.start()
    wait_for("the discovery", 5, lambda: lab.adapter()["Discovering"])
    listener.process.send_signal(signal.SIGCONT)
    listener.wait_state("Unauthorized")
    sleep(3)
    expect(lab.adapter()["Powered"] and lab.adapter()["Discovering"], f"the other lost it: {lab.adapter()}")
    other.stop()
    listener.wait_state("PoweredOn", within=10)
    listener.wait_reports(5, since=now())


@test("AControllerNamedByItsAddressIsHeardUnderEveryNumber")
def by_address(lab):
    first, second = lab.controller(plugged=False), lab.controller(plugged=False)
    second.dongle(rate=10)
    expect(first.plug(f"address={FIRST}") == 0 and second.plug(f"address={SECOND}") == 1, "the numbers are others")
    by_number = hears(lab, "hci:1")
    first.do("unplug")
    second.do("unplug")
    wait_for("the loss told", 5, lambda: by_number.state()[0] == "Unsupported")
    expect(second.plug(f"address={SECOND}") == 0, "it did not come as hci0")
    wait_for("its new number told", 5, lambda: "that had this number is hci0 now" in by_number.why())
    lab.figure("hci:1 after renumbering", by_number.why())
    finish(by_number)
    listener = hears(lab, f"hci:{SECOND.lower()}")
    second.do("unplug")
    wait_for("the loss told", 5, lambda: listener.state()[0] == "Unsupported")
    lab.figure("while it is unplugged", listener.why())
    first.plug(f"address={FIRST}")
    expect(second.plug(f"address={SECOND}") == 1, "it did not come as hci1")
    returned = now()
    heard = listener.wait_reports(5, within=10, since=returned)[0][0] - returned
    lab.figure("by its address: heard again as hci1", f"{heard:.2f} s after the return")
    expect(heard <= 3, "too late")


@test("ADeadControllerOnTheUserChannelIsResetUntilItAnswers")
def dead(lab):
    controller = lab.controller()
    controller.dongle(rate=10)
    listener = hears(lab)
    controller.do("mute on")
    began = now()
    wait_for("the loss told", 60, lambda: listener.state()[0] != "PoweredOn")
    told = listener.entries("state", since=began)[0][0] - began
    lab.figure("a dead controller is told", f"after {told:.1f} s: {listener.state()}, at most 10 s wanted")
    expect(told <= 10, "too late")
    controller.do("mute off")
    returned = now()
    first = listener.wait_reports(5, within=30, since=returned)[0][0] - returned
    lab.figure("heard again", f"{first:.2f} s after it answers")


@test("QuietAirOnTheUserChannelDisturbsNothing")
def quiet(lab):
    controller = lab.controller()
    controller.dongle(rate=10)
    listener = hears(lab)
    controller.do("silence *")
    began, before = now(), controller.counters()
    sleep(25)
    after = controller.counters()
    lab.figure("questions whether it lives, in 25 s of quiet air", after["commands"] - before["commands"])
    expect(3 <= after["commands"] - before["commands"] <= 6, "not about every five seconds")
    expect(after["scanEnables"] == before["scanEnables"] and after["scanning"], "the scan was disturbed")
    told = listener.entries("health", since=began) + listener.entries("state", since=began)
    expect(not told, f"it said {told}")
    controller.do("speak *")
    listener.wait_reports(5, since=now())
