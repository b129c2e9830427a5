# SPDX-License-Identifier: Apache-2.0
"""The wish to scan outlives the radio: without the application doing anything it hears again."""

from framework import expect, now, test, wait_for
from lab import NOBODY, sleep
from raw_hci import send_command

WITHIN = 3  # seconds from the radio's return to the first report


def hearing(lab, radio="bluez", **options):
    """A radio that hears a dongle ten times a second."""
    controller = lab.controller()
    controller.dongle(rate=10)
    if radio != "hci:0":
        lab.bluetoothd()
    listener = lab.listen(radio, **options)
    listener.wait_state("PoweredOn")
    listener.wait_reports(5)
    return controller, listener


def expect_back(lab, listener, returned, what):
    """Heard again soon after the radio's return."""
    first = listener.wait_reports(1, within=30, since=returned)[0][0] - returned
    lab.figure(f"{what}: heard again", f"{first:.2f} s after the radio's return, at most {WITHIN} s wanted")
    expect(first <= WITHIN, f"only {first:.1f} s after the return")
    expect(len(listener.wait_reports(20, within=5, since=returned)) >= 20, "it hears no more")


def bluez_return(lab):
    """When bluetoothd has the adapter on again."""
    lab.wait_powered()
    return now()


@test("AnAdapterPluggedInAgainIsHeardThroughBluez", boot="quick")
def replugged(lab):
    controller, listener = hearing(lab)
    for turn in range(2):
        controller.do("unplug")
        listener.wait_state("Unsupported")
        sleep(1)
        controller.plug()
        expect_back(lab, listener, bluez_return(lab), f"replugged, {turn + 1}")


@test("AnAdapterSwitchedOffAndOnIsHeardAgainThroughBluez")
def off_and_on(lab):
    _, listener = hearing(lab)
    for turn in range(2):
        lab.set_powered(False)
        listener.wait_state("PoweredOff")
        sleep(1)
        lab.set_powered(True)
        expect_back(lab, listener, bluez_return(lab), f"power, {turn + 1}")


@test("ABlockedAdapterIsHeardAgainThroughBluezWhenUnblocked")
def blocked(lab):
    _, listener = hearing(lab)
    lab.block(True)
    listener.wait_state("PoweredOff")
    sleep(1)
    lab.block(False)
    expect_back(lab, listener, bluez_return(lab), "rfkill")


def kill_bluetoothd(lab, listener):
    lab.bluetoothd_process.kill()
    listener.wait_state("Unknown")


@test("AKilledBluetoothdIsHeardAgainWhenItIsBack", boot="quick")
def killed(lab):
    """The kernel goes on with the discovery of the dead one, ten seconds at most, and lets nobody else begin one; what
    comes back after that is heard at once."""
    controller, listener = hearing(lab)
    for turn in range(2):
        kill_bluetoothd(lab, listener)
        wait_for("the end of the orphaned scan", 15, lambda: not controller.counters()["scanning"])
        lab.start_bluetoothd()
        expect_back(lab, listener, bluez_return(lab), f"kill -9, {turn + 1}")


@test("ABluetoothdThatIsBackAtOnceIsHeardAsSoonAsTheKernelLetsGo")
def back_at_once(lab):
    """Without CAP_NET_ADMIN; with it the round is ended (dead_scan.py)."""
    controller, listener = hearing(lab, user=NOBODY)
    kill_bluetoothd(lab, listener)
    began = controller.counters()["scanEnables"]
    lab.start_bluetoothd()
    returned = bluez_return(lab)

    def released():
        counters = controller.counters()
        return not counters["scanning"] or counters["scanEnables"] > began

    wait_for("the end of the orphaned scan", 15, released)
    freed = now()
    lab.figure("the kernel lets go", f"{freed - returned:.2f} s after bluetoothd is back")
    expect_back(lab, listener, freed, "kill -9, back at once")


@test("ABusThatIsStartedAnewIsFoundAgain")
def new_bus(lab):
    controller, listener = hearing(lab)
    lab.bluetoothd_process.kill()
    lab.restart_bus()
    wait_for("the end of the orphaned scan", 15, lambda: not controller.counters()["scanning"])
    lab.start_bluetoothd()
    expect_back(lab, listener, bluez_return(lab), "dbus-daemon")


@test("AShortLossOfTheAdapterIsNotLostOnTheRadio")
def short_losses(lab):
    """Unplugged and plugged in again faster than anybody follows."""
    controller, listener = hearing(lab)
    for _ in range(3):
        controller.do("unplug")
        controller.plug()
    expect_back(lab, listener, bluez_return(lab), "three quick replugs")


@test("AScanThatStopsWithoutAWordIsBegunAgain")
def stalled(lab):
    """Somebody turns the controller's scan off behind the back of bluetoothd, which goes on saying that it discovers."""
    controller, listener = hearing(lab)
    began = now()
    for _ in range(3):  # bluetoothd turns it on again by itself now and then
        send_command(0, 0x200C, b"\x00\x00")
        sleep(0.1)
    wait_for("the scan turned off", 5, lambda: not controller.counters()["scanning"])
    heard = listener.wait_reports(10, within=45, since=now() + 0.5)
    lab.figure("a stalled scan: heard again", f"after {heard[0][0] - began:.1f} s, at most 33 s wanted")
    expect(heard[0][0] - began <= 33, "too late")


@test("QuietAirIsToldFromADeadRadio")
def quiet(lab):
    """Thirty seconds without a report have the scan begun again, but the radio does not say that it is broken."""
    controller, listener = hearing(lab)
    controller.do("silence *")
    began = now()
    entry = listener.wait("health", 45, since=began, fits=lambda rest: int(rest.split(" ")[0]) > 0)
    lab.figure("a quiet radio: the scan is begun again", f"after {entry[0] - began:.1f} s")
    sleep(2)
    said = {rest.partition(" ")[2] for _, rest in listener.entries("health", began)}
    lab.figure("what it says meanwhile", sorted(said))
    expect(not any("does not scan" in why for why in said), "it says that the radio is blind, and it is not")
    expect(28 <= entry[0] - began <= 35, "not after thirty seconds")
    expect(listener.state()[0] == "PoweredOn", f"it is {listener.state()}")
    controller.do("speak *")
    back = now()
    first = listener.wait_reports(5, within=10, since=back)[0][0] - back
    lab.figure("the dongle speaks: heard again", f"after {first:.2f} s")


@test("AControllerPluggedInAgainIsHeardOnTheUserChannel", boot="quick")
def replugged_alone(lab):
    controller, listener = hearing(lab, "hci:0")
    for turn in range(2):
        controller.do("unplug")
        wait_for("the loss told", 5, lambda: listener.state()[0] != "PoweredOn")
        lab.figure("state without a controller", listener.state())
        sleep(1)
        controller.plug()
        expect_back(lab, listener, now(), f"replugged, {turn + 1}")


@test("ABlockedControllerIsHeardOnTheUserChannelWhenUnblocked")
def blocked_alone(lab):
    controller = lab.controller()
    controller.dongle(rate=10)
    lab.block(True)
    listener = lab.listen("hci:0")
    listener.wait_state("PoweredOff")
    sleep(1)
    lab.block(False)
    expect_back(lab, listener, now(), "rfkill")


@test("ABlockDoesNotReachAControllerThatIsOnTheUserChannel")
def block_refused(lab):
    """The kernel refuses it (hci_rfkill_set_block gives EBUSY), so there is nothing to come back from."""
    controller, listener = hearing(lab, "hci:0")
    lab.block(True)
    blocked_at = now()
    sleep(3)
    heard = len(listener.reports(blocked_at))
    lab.figure("reports in 3 s of block", heard)
    expect(heard > 20 and listener.state()[0] == "PoweredOn", f"it is {listener.state()}")
    expect(controller.counters()["scanning"], "the scan has ended")


@test("BesideBluetoothdIsHeardAgainAfterAReplugAndARestart")
def beside(lab):
    controller, other = hearing(lab)  # somebody has to discover
    listener = lab.listen("hci:0?beside")
    listener.wait_reports(5)
    controller.do("unplug")
    other.wait_state("Unsupported")
    controller.plug()
    expect_back(lab, listener, bluez_return(lab), "replugged")
    lab.bluetoothd_process.kill()
    other.wait_state("Unknown")
    lab.start_bluetoothd()
    expect_back(lab, listener, bluez_return(lab), "kill -9")
