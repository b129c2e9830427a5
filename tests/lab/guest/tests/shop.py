# SPDX-License-Identifier: Apache-2.0
"""A shop that is open for long: dongles come and go, something happens to the radio each minute, the manager goes on."""

import random

from faults import FAULTS, Fault, Scene
from framework import expect, now, test
from lab import sleep

RESTART = 120  # seconds between the manager's restarts of its scan
DONGLES = 12
PEACE = 10  # seconds at the start and at the end of each minute; the restarts fall into the former
SAMPLES = 5  # seconds that the smoothing may take before it tells the first report


def address(number):
    return f"02:4E:43:00:00:{number:02X}"


def open_shop(lab):
    scene = Scene(lab)
    for number in range(1, DONGLES + 1):
        scene.controller.dongle(f"d{number}", payload=f"024e430000{number:02x}", rate=2 + number % 7,
                                rssi=f"{-50 - number},{-53 - number},{-51 - number},{-56 - number}")
    application = lab.proximity("bluez")
    for number in range(1, DONGLES + 1):
        application.ask(f"register P{number} {address(number)}", "registered")
    expect(application.ask("start", "started") == "1", "the scan does not start")
    return scene, application


def one_falls_silent(scene):
    scene.controller.do("silence d1")
    sleep(12)
    scene.controller.do("speak d1")


def another_discovers(scene):
    other = scene.lab.other_client()
    other.start()
    sleep(2)
    other.stop()


EVENTS = [*FAULTS, Fault("Silent", "a dongle falls silent for 12 s", one_falls_silent, "", 0, 0),
          Fault("Other", "another program discovers for 2 s", another_discovers, "", 3, 3)]


def sequence(seed, minutes):
    """All of them in one order after another."""
    dice = random.Random(seed)
    chosen = []
    while len(chosen) < minutes:
        chosen += dice.sample(EVENTS, len(EVENTS))
    return chosen[:minutes]


def live_through(lab, scene, application, event):
    """One thing that happens, and the radio's return from it."""
    back = scene.strike(event)
    first = application.wait("discovered", event.limit + SAMPLES, since=back,
                             what=f"a report told after: {event.words}")[0] - back
    lab.figure(event.words, f"told again after {first:.1f} s")
    print(f"{now():.0f} s: {event.words}: told again after {first:.1f} s", flush=True)  # for who looks on


@test("OpenShopLosesNoRestartAndNoMemory", boot="long")
def open_for_long(lab):
    minutes, seed = lab.config["minutes"], lab.config["seed"]
    lab.figure("open for", f"{minutes} minutes, seed {seed}")
    scene, application = open_shop(lab)
    opened, memory = now(), {}
    for minute, event in enumerate(sequence(seed, minutes)):
        sleep(max(0.0, opened + 60 * minute + PEACE - now()))
        live_through(lab, scene, application, event)
        sleep(max(0.0, opened + 60 * (minute + 1) - now()))
        heard = {rest.rsplit(" ", 2)[1] for _, rest in application.entries("discovered", now() - PEACE)}
        expect(len(heard) == DONGLES, f"in minute {minute}, after '{event.words}', only {sorted(heard)} were told")
        memory[minute] = application.memory()
    expect_restarts(lab, application, opened)
    expect_memory(lab, memory)
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
        expect(told and told[0][0] - restart < PEACE, f"nothing told after the restart at {restart:.0f} s")


def expect_memory(lab, memory):
    """From when everything has happened once, and every table has its size."""
    first, last = len(EVENTS) - 1, max(memory)
    lab.figure("resident memory", f"{memory[first]} KiB in minute {first + 1}, {memory[last]} KiB at the end; at most "
                                  "256 KiB more wanted")
    expect(memory[last] - memory[first] <= 256, "it grows")
