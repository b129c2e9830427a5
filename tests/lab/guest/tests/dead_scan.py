# SPDX-License-Identifier: Apache-2.0
"""A bluetoothd that was starved loses its scan for good: who sees it, who mends it, and who never has it."""

import signal

from framework import expect, now, test, wait_for
from lab import NOBODY, sleep

WITHIN = 3  # seconds from the end of the fault, or from bluetoothd's return, to the first report
RATE = 50  # reports a second, enough to fill bluetoothd's socket while it hangs
HANG = 12  # seconds, longer than a round of the kernel's discovery
GAP = 0.4  # seconds without a report, of a dongle that advertises fifty times a second
DEAD = "the scan is dead"


def hearing(lab, *options, user=None):
    controller = lab.controller()
    controller.dongle(rate=RATE)
    lab.bluetoothd(*options)
    listener = lab.listen("bluez", user=user)
    listener.wait_state("PoweredOn")
    listener.wait_reports(RATE)
    return controller, listener


def starve(lab):
    """bluetoothd hangs, and misses the end of the round."""
    lab.bluetoothd_process.signal(signal.SIGSTOP)
    sleep(HANG)
    lab.bluetoothd_process.signal(signal.SIGCONT)
    return now()


def recovery(listener, since, watched):
    """When the reports came for good, seconds after a moment: those that waited in a socket come in a burst before."""
    wait_for("", watched + 5, lambda: now() > since + watched)
    times = [time for time, _ in listener.reports(since)]
    expect(times and times[-1] > since + watched - 1, f"it hears no more; it says '{listener.why()}'")
    began = times[0] if times[0] > since + GAP else since
    for before, after in zip(times, times[1:]):
        if after - before > GAP:
            began = after
    return began - since


def said(listener, since):
    """All reasons that were told from a moment on."""
    return [rest.partition(" ")[2] for _, rest in listener.entries("health", since)]


@test("ADeadScanIsMendedAfterBluetoothdHung")
def mended(lab):
    _, listener = hearing(lab)
    for turn in range(2):
        began = now()
        ended = starve(lab)
        back = recovery(listener, ended, 8)
        lab.figure(f"hung for {HANG} s at {RATE}/s, {turn + 1}: heard again",
                   f"{back:.2f} s after the end of the hang, at most {WITHIN} s wanted")
        found = [time - ended for time, rest in listener.entries("health", began) if DEAD in rest]
        lab.figure("recognised", f"{[f'{time:.2f}' for time in found]} s after it")
        expect(back <= WITHIN, f"only after {back:.1f} s")
        expect(listener.why() == "", f"it says '{listener.why()}'")


@test("ADeadScanIsMendedAfterAFlood")
def flooded(lab):
    controller, listener = hearing(lab)
    for number in range(25):
        controller.dongle(f"flood{number}", rate=200, address=f"C0:00:00:00:01:{number:02X}")
    sleep(14)
    aired = controller.aired()
    controller.do("silence *")
    controller.do("speak d1")
    ended = now()
    sleep(5)  # what has piled up is taken first
    back = recovery(listener, ended, 20)
    lab.figure("a flood for 14 s", f"{aired / 14:.0f}/s; heard without a gap {back:.2f} s after its end")
    lab.figure("what was said", sorted(set(said(listener, ended - 14))))
    expect(listener.why() == "", f"it says '{listener.why()}'")


@test("ADeadScanIsToldWhereItMayNotBeMended")
def told(lab):
    _, listener = hearing(lab, user=NOBODY)
    ended = starve(lab)
    found = listener.wait("health", 45, since=ended, fits=lambda rest: DEAD in rest, what="the words")
    lab.figure("told", f"{found[0] - ended:.1f} s after the end of the hang: {found[1]}")
    expect("systemctl restart bluetooth" in found[1] and "CAP_NET_ADMIN" in found[1], "without what helps")
    expect(not listener.reports(now() - 10), "it hears, so that it was not dead")
    lab.set_powered(False)
    listener.wait_state("PoweredOff")
    lab.set_powered(True)
    sleep(15)
    lab.figure("after power off and on", sorted(set(said(listener, found[0]))))
    expect("" not in said(listener, found[0]), "it was called well though nothing was heard")
    lab.bluetoothd_process.kill()
    sleep(11)  # the round of the dead one
    lab.start_bluetoothd()
    back = now()
    first = listener.wait_reports(RATE, within=15, since=back)[0][0] - back
    lab.figure("bluetoothd restarted: heard again", f"after {first:.2f} s")
    expect(listener.why() == "", f"it says '{listener.why()}'")


@test("ADeadScanIsPreventedByMonitors")
def immune(lab):
    _, listener = hearing(lab, "-E", user=NOBODY)
    began = now()
    ended = starve(lab)
    back = recovery(listener, ended, 15)
    lab.figure(f"hung for {HANG} s at {RATE}/s under -E: heard again", f"{back:.2f} s after the end of the hang")
    expect(back <= WITHIN, f"only after {back:.1f} s")
    expect(not any(DEAD in why for why in said(listener, began)), "it is said to be dead")


@test("TheRoundOfADeadBluetoothdIsEnded")
def orphan(lab):
    _, listener = hearing(lab)
    for turn in range(2):
        lab.bluetoothd_process.kill()
        listener.wait_state("Unknown")
        lab.start_bluetoothd()
        back = now()
        first = listener.wait_reports(1, within=30, since=back)[0][0] - back
        lab.figure(f"kill -9, back at once, {turn + 1}: heard again", f"after {first:.2f} s, at most {WITHIN} s wanted")
        expect(first <= WITHIN, f"only after {first:.1f} s")
        listener.wait_reports(RATE, since=back)
