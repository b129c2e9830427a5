# SPDX-License-Identifier: Apache-2.0
"""A shop that is open for long: dongles come and go, the radio is disturbed, the manager goes on."""

from framework import expect, now, test
from lab import sleep

RESTART = 120  # seconds between the manager's restarts of its scan
DONGLES = 12


def address(number):
    return f"02:4E:43:00:00:{number:02X}"


def open_shop(lab):
    controller = lab.controller()
    for number in range(1, DONGLES + 1):
        controller.dongle(f"d{number}", payload=f"024e430000{number:02x}", rate=2 + number % 7,
                          rssi=f"{-50 - number},{-53 - number},{-51 - number},{-56 - number}")
    lab.bluetoothd()
    application = lab.proximity("bluez")
    for number in range(1, DONGLES + 1):
        application.ask(f"register P{number} {address(number)}", "registered")
    expect(application.ask("start", "started") == "1", "the scan does not start")
    return controller, application


def disturb(lab, controller, minute):
    """One thing a minute; gives the moment from which the radio is itself again."""
    what = minute % 6
    if what == 1:
        controller.do(f"silence d{1 + minute % DONGLES}")
        sleep(12)
        controller.do(f"speak d{1 + minute % DONGLES}")
    elif what == 2:
        lab.set_powered(False)
        sleep(1)
        lab.set_powered(True)
    elif what == 3:
        controller.do("unplug")
        sleep(1)
        controller.plug()
        lab.wait_powered()
    elif what == 4:
        lab.bluetoothd_process.kill()
        sleep(1)
        lab.start_bluetoothd()
    elif what == 5:
        other = lab.other_client()
        other.start()
        sleep(2)
        other.stop()
    return now()


@test("OpenShopLosesNoRestartAndNoMemory", boot="long")
def open_for_long(lab):
    minutes = lab.config["minutes"]
    lab.figure("open for", f"{minutes} minutes")
    controller, application = open_shop(lab)
    opened, memory, slowest = now(), {}, 0.0
    for minute in range(minutes):
        back = disturb(lab, controller, minute)
        first = application.wait("discovered", 20, since=back)[0]
        slowest = max(slowest, first - back)
        sleep(max(0.0, opened + 60 * (minute + 1) - now()))
        heard = {rest.rsplit(" ", 2)[1] for _, rest in application.entries("discovered", now() - 15)}
        expect(len(heard) == DONGLES, f"in minute {minute} only {sorted(heard)} were told")
        memory[minute] = application.memory()
    expect_restarts(lab, application, opened)
    expect_memory(lab, memory)
    # Where bluetoothd was killed, the kernel lets nobody scan for up to ten seconds; then the smoothing wants samples.
    lab.figure("slowest return to reports told", f"{slowest:.2f} s, at most 15 s wanted")
    expect(slowest <= 15, "a return took too long")
    lab.figure("reports told", len(application.entries("discovered")))
    lab.figure("health", application.ask("health", "health"))


def expect_restarts(lab, application, opened):
    """One at the start, and one every two minutes; after each the dongles are told again."""
    restarts = [time for time, _ in application.entries("restart")]
    wanted = 1 + int((now() - opened) // RESTART)
    lab.figure("restarts of the scan", f"{len(restarts)}, {wanted} wanted")
    expect(abs(len(restarts) - wanted) <= 1, "a restart is missing")
    for restart in restarts:
        told = application.entries("discovered", restart)
        expect(told and told[0][0] - restart < 10, f"nothing told after the restart at {restart:.0f} s")


def expect_memory(lab, memory):
    """From the fifth minute on, when every table has its size."""
    early, late = memory[5], memory[max(memory)]
    lab.figure("resident memory", f"{early} KiB in minute 5, {late} KiB at the end; at most 256 KiB more wanted")
    expect(late - early <= 256, "it grows")
