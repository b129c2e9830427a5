# SPDX-License-Identifier: Apache-2.0
"""For how long each radio is deaf after each fault: one cell of the table in docs/radios.md each."""

from dataclasses import dataclass

from faults import FAULTS, Scene
from framework import Failure, expect, now, test
from lab import NOBODY, sleep

MARKER = "024e430000ee"  # on the air from the end of the fault on: what was heard before it and told late does not count
WATCHED = 16.0  # seconds, longer than a round of bluetoothd's scan, at whose end a dead scan shows
PATIENCE = 60.0
QUIET = 1.0  # seconds without one of ten reports a second


@dataclass
class Radio:
    key: str
    words: str
    string: str
    capabilities: tuple = ()
    options: tuple = ()
    daemon: bool = True
    beside: bool = False  # it hears what another one's discovery brings in
    heals: bool = False  # it may do what the kernel keeps to those with CAP_NET_ADMIN


RADIOS = (
    Radio("Bluez", "`bluez`", "bluez"),
    Radio("BluezWithCapability", "`bluez`, `CAP_NET_ADMIN`", "bluez", ("net_admin",), heals=True),
    Radio("BluezExperimental", "`bluez`, `bluetoothd -E`", "bluez", options=("-E",)),
    Radio("Hci", "`hci:0`", "hci:0", ("net_admin", "net_raw"), daemon=False, heals=True),
    Radio("Beside", "`hci:0?beside`", "hci:0?beside", ("net_raw",), beside=True),
)


def reported(listener, since):
    return [time for time, _ in listener.reports(since, payload=MARKER)]


def deafness(listener, returned):
    """The longest time without a report from a moment on; nothing where there is no end to it."""
    sleep(max(0.0, returned + WATCHED - now()))
    while now() - (reported(listener, returned) or [returned])[-1] > QUIET:
        if now() - returned > PATIENCE:
            return None
        sleep(0.1)
    times = [returned, *reported(listener, returned)]
    return max(late - early for early, late in zip(times, times[1:]))


def open_radio(lab, radio):
    scene = Scene(lab, radio.options, radio.daemon)
    scene.controller.dongle(rate=10)
    if radio.beside:
        other = lab.listen("bluez", user=NOBODY, capabilities=("net_admin",))
        other.wait_reports(5)
    listener = lab.listen(radio.string, user=NOBODY, capabilities=radio.capabilities)
    listener.wait_reports(10)
    return scene, listener


def limit_of(fault, radio):
    """Beside another's discovery it hears as much as that one brings in, which has the capability."""
    return fault.limit if radio.heals or radio.beside else fault.without


def measure(lab, fault, radio):
    scene, listener = open_radio(lab, radio)
    returned = scene.strike(fault)
    scene.controller.dongle("marker", address="C0:00:00:00:00:EE", payload=MARKER, rate=10)
    deaf = deafness(listener, returned)
    lab.figure("deaf", {"row": FAULTS.index(fault), "fault": fault.words, "column": RADIOS.index(radio),
                        "radio": radio.words, "seconds": deaf})
    limit = limit_of(fault, radio)
    if limit is None:
        return
    if deaf is None:
        raise Failure(f"deaf for good: {listener.state()} {listener.why()}")
    expect(deaf <= limit, f"deaf for {deaf:.1f} s, at most {limit:g} s wanted: {listener.why()}")


for each in FAULTS:
    for one in RADIOS:
        if one.daemon or not each.needs:
            test(f"DeafWhen{each.key}Through{one.key}", boot="deaf")(
                lambda lab, fault=each, radio=one: measure(lab, fault, radio))
