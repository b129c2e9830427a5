# SPDX-License-Identifier: Apache-2.0
"""Several programs on one adapter, and users without rights."""

import json

from framework import expect, now, test
from lab import NOBODY, sleep


def hearing(lab, **options):
    controller = lab.controller()
    controller.dongle(rate=10)
    lab.bluetoothd()
    listener = lab.listen("bluez", **options)
    listener.wait_reports(5)
    return controller, listener


def expect_goes_on(lab, controller, listener, what, seconds=12, least=90):
    """It goes on hearing, longer than one round of bluetoothd's scan."""
    sleep(0.5)
    aired, before = controller.aired(), len(listener.reports())
    sleep(seconds)
    aired, got = controller.aired() - aired, len(listener.reports()) - before
    lab.figure(what, f"{got} of {aired} ({100 * got / aired:.0f} %), at least {least} % wanted")
    expect(got >= aired * least / 100, what)


@test("TwoProgramsHearEachForItself", boot="quick")
def two(lab):
    controller, first = hearing(lab)
    second = lab.listen("bluez")
    second.wait_reports(5)
    expect_goes_on(lab, controller, first, "the first, beside the second", seconds=5)
    second.close()
    expect_goes_on(lab, controller, first, "the first, alone again", seconds=5)


@test("AnotherProgramsDiscoveryAndItsEndChangeNothing")
def another_discovery(lab):
    controller, listener = hearing(lab)
    other = lab.other_client()
    other.start()
    expect_goes_on(lab, controller, listener, "while another discovers without a filter")
    other.stop()
    expect_goes_on(lab, controller, listener, "after it stopped")


@test("AnotherProgramsFilterChangesNothing")
def another_filter(lab):
    controller, listener = hearing(lab)
    other = lab.other_client()
    other.filter(Transport="le", DuplicateData=False, UUIDs=["0000180d-0000-1000-8000-00805f9b34fb"])
    other.start()
    expect_goes_on(lab, controller, listener, "beside another's filter for heart rates")
    other.close()
    expect_goes_on(lab, controller, listener, "after it died")


@test("ADiscoveryOfAllTransportsByAnotherLeavesMostOfIt")
def another_transport(lab):
    controller, listener = hearing(lab)
    other = lab.other_client()
    other.filter(Transport="auto")
    other.start()
    expect_goes_on(lab, controller, listener, "beside a discovery of all transports")


@test("AScanThatIsStoppedTellsNothingMoreAndStartsAgain", boot="quick")
def stop_and_scan(lab):
    _, listener = hearing(lab)
    for _ in range(3):
        listener.say("stop")
        sleep(0.5)
        stopped = now()
        sleep(1)
        expect(not listener.reports(stopped), "reports after the end of the scan")
        began = now()
        listener.say("scan")
        first = listener.wait_reports(1, since=began)[0][0]
        lab.figure("begun again, first report after", f"{first - began:.2f} s")


@test("ADongleThatIsNotAskedForIsNotTold")
def service_filter(lab):
    controller, listener = hearing(lab)
    controller.dongle(payload="024e43000099", service="no")
    everything = lab.listen("bluez", "everything")
    everything.wait_reports(20)
    heard = {rest.split(" ")[0] for _, rest in everything.reports()}
    expect("ffff024e43000099" in heard, f"the radio did not hear it: {heard}")
    expect(not listener.reports(payload="024e43000099"), "it was told though it has no such service")


@test("AUserWithoutRightsHearsThroughBluez", boot="quick")
def plain_user(lab):
    controller, listener = hearing(lab, user=NOBODY)
    expect_goes_on(lab, controller, listener, "as nobody", seconds=5)


@test("NearcastWatchWithoutAnythingElseShowsTheDonglesToAPlainUser", boot="quick")
def watch(lab):
    controller = lab.controller()
    for number in (1, 2, 3):
        controller.dongle(payload=f"024e430000{number:02x}", rate=10)
    lab.bluetoothd()
    result = lab.nearcast("watch", "--json", "--for", "6", user=NOBODY)
    expect(result.returncode == 0, f"exit status {result.returncode}: {result.stderr}")
    events = [json.loads(line) for line in result.stdout.splitlines()]
    told = [event for event in events if event["event"] == "didDiscoverPort"]
    seen = {event["MACAddr"] for event in told}
    lab.figure("nearcast watch --json --for 6", f"{len(told)} reports of {sorted(seen)}")
    expect(seen == {f"02:4E:43:00:00:0{number}" for number in (1, 2, 3)}, f"seen: {events[:5]} {result.stderr}")


@test("WithoutRightsTheSocketsSayWhatIsMissing", boot="quick")
def plain_user_hci(lab):
    lab.controller()
    expect_setcap(lab, "hci:0")
    lab.bluetoothd()
    expect_setcap(lab, "hci:0?beside")


def expect_setcap(lab, radio):
    why = lab.listen(radio, user=NOBODY).wait_state("Unauthorized")
    lab.figure(f"{radio} as nobody", why)
    expect("sudo setcap cap_net_raw,cap_net_admin+eip /" in why, "it does not say what to do")


@test("WithoutAControllerTheUserChannelIsUnsupported")
def no_controller(lab):
    lab.figure("why", lab.listen("hci:0").wait_state("Unsupported"))


@test("ABlockedControllerIsPoweredOffOnTheUserChannel")
def blocked(lab):
    lab.controller()
    lab.block(True)
    listener = lab.listen("hci:0")
    why = listener.wait_state("PoweredOff")
    lab.figure("why", why)
    expect("rfkill" in why, "it does not say what to do")


@test("AControllerThatBluetoothdUsesIsRefusedWithWhatToDo")
def busy(lab):
    controller = lab.controller()
    controller.dongle(rate=10)
    lab.bluetoothd()
    listener = lab.listen("hci:0")
    why = listener.wait_state("Unauthorized")
    lab.figure("hci:0 while bluetoothd has it", why)
    expect("systemctl disable --now bluetooth" in why and "AutoEnable=false" in why, "it does not say what to do")
    lab.set_powered(False)
    listener.wait_state("PoweredOn")
    listener.wait_reports(10)


@test("AControllerThatBluetoothdHasSwitchedOffIsHeardOnTheUserChannel")
def switched_off(lab):
    controller = lab.controller()
    controller.dongle(rate=10)
    lab.bluetoothd()
    lab.set_powered(False)
    listener = lab.listen("hci:0")
    listener.wait_state("PoweredOn")
    listener.wait_reports(10)
