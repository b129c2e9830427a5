# SPDX-License-Identifier: Apache-2.0
"""How much of what is on the air reaches the delegate."""

from framework import expect, test, wait_for
from lab import sleep

SECONDS = 30


def put_dongles(controller, reports_per_second, **settings):
    """So many advertisements a second, of a handful of dongles."""
    count = 10 if reports_per_second >= 100 else 2
    for number in range(count):
        controller.dongle(rate=reports_per_second / count, rssi=f"{-50 - number},{-51 - number}", **settings)
    return count


class Measure:
    """What is put on the air in some time, what of it the controller hands to the host (it hears nothing while the host
    renews its scan), and how much of it reaches each listener. Before and after it the air is silent, so that each
    advertisement is counted everywhere or nowhere."""

    def __init__(self, controller, listeners, seconds, senders):
        for listener in listeners:
            wait_for(f"reports of all {senders} dongles", 20, lambda one=listener: self.senders(one) == senders)
        controller.do("silence *")
        sleep(1)
        before = self.count(controller, listeners)
        controller.do("speak *")
        sleep(seconds)
        controller.do("silence *")
        sleep(1)
        self.aired, self.handed_over, *self.heard = [
            late - early for early, late in zip(before, self.count(controller, listeners))]

    @staticmethod
    def senders(listener):
        return len({rest.split(" ")[0] for _, rest in listener.reports()})

    @staticmethod
    def count(controller, listeners):
        tallies = controller.counters()["dongles"].values()
        return [sum(one["aired"] for one in tallies), sum(one["reported"] for one in tallies),
                *(len(listener.reports()) for listener in listeners)]


def expect_share(lab, name, got, of, least):
    share = 100 * got / of
    lab.figure(name, f"{got} of {of} ({share:.1f} %), at least {least} % wanted")
    expect(share >= least, f"{name}: {share:.1f} %")
    expect(got <= of, f"{name}: more than was sent")


def beside_bluetoothd(lab, reports_per_second, *words, seconds=SECONDS):
    """One run, two ways to hear it: through bluetoothd, and on the raw socket beside it."""
    controller = lab.controller(*words)
    count = put_dongles(controller, reports_per_second)
    lab.bluetoothd()
    bluez = lab.listen("bluez")
    bluez.wait_state("PoweredOn")
    beside = lab.listen("hci:0?beside")
    result = Measure(controller, [bluez, beside], seconds, count)
    expect_share(lab, f"bluez at {reports_per_second}/s, of all on the air", result.heard[0], result.aired, 97)
    expect_share(lab, f"hci:0?beside at {reports_per_second}/s, of all that the controller heard", result.heard[1],
                 result.handed_over, 100)


def on_the_user_channel(lab, reports_per_second, *words, seconds=SECONDS):
    controller = lab.controller(*words)
    count = put_dongles(controller, reports_per_second)
    listener = lab.listen("hci:0")
    listener.wait_state("PoweredOn")
    result = Measure(controller, [listener], seconds, count)
    expect_share(lab, f"hci:0 at {reports_per_second}/s, of all on the air", result.heard[0], result.aired, 100)


@test("AtAHundredReportsASecondAShortTimeLosesNothing", boot="quick")
def short(lab):
    beside_bluetoothd(lab, 100, seconds=12)


@test("AtTenReportsASecondAllButEdgesArriveThroughBluezAndBesideIt")
def ten(lab):
    beside_bluetoothd(lab, 10)


@test("AtAHundredReportsASecondAllButEdgesArriveThroughBluezAndBesideIt")
def hundred(lab):
    beside_bluetoothd(lab, 100)


@test("AnExtendedControllerIsHeardAsWellThroughBluezAndBesideIt")
def hundred_extended(lab):
    beside_bluetoothd(lab, 100, "extended")


@test("AtTenReportsASecondAllArriveOnTheUserChannel")
def ten_alone(lab):
    on_the_user_channel(lab, 10)


@test("AtAHundredReportsASecondAllArriveOnTheUserChannel")
def hundred_alone(lab):
    on_the_user_channel(lab, 100)


@test("AnExtendedControllerIsHeardAsWellOnTheUserChannel")
def extended_alone(lab):
    on_the_user_channel(lab, 100, "extended")


@test("TheUserChannelHearsADongleThatAnswersNoScanRequest")
def unanswered(lab):
    """It scans passively and asks for nothing; bluetoothd does not show such a dongle."""
    controller = lab.controller()
    controller.dongle(rate=10, type="connectable", answers="no")
    listener = lab.listen("hci:0")
    result = Measure(controller, [listener], 10, 1)
    expect_share(lab, "hci:0, connectable and mute", result.heard[0], result.aired, 100)


@test("AControllerThatFiltersStrictlyIsHeardThroughBluetoothdWithExperimentalInterfaces")
def strict(lab):
    controller = lab.controller("strict")
    count = put_dongles(controller, 10)
    lab.bluetoothd("-E")
    listener = lab.listen("bluez")
    listener.wait_state("PoweredOn")
    result = Measure(controller, [listener], SECONDS, count)
    lab.figure("the kernel asks for a duplicate filter", controller.counters()["filterDuplicates"])
    expect_share(lab, "bluez, strict filter, bluetoothd -E", result.heard[0], result.aired, 90)


@test("AControllerThatFiltersStrictlyIsAllButUnheardWithoutThem")
def strict_plain(lab):
    """What the monitor is registered for; without this one the test above could not fail."""
    controller = lab.controller("strict")
    put_dongles(controller, 10)
    lab.bluetoothd()
    listener = lab.listen("bluez")
    listener.wait_reports(1, within=20)
    controller_before, before = controller.aired(), len(listener.reports())
    sleep(12)
    aired, got = controller.aired() - controller_before, len(listener.reports()) - before
    lab.figure("bluez, strict filter, plain bluetoothd", f"{got} of {aired}")
    expect(got < aired / 4, "the controller does not filter")
