# SPDX-License-Identifier: Apache-2.0
"""Which adapter hears, where there are several, and where their numbers change."""

from framework import expect, now, test, wait_for
from lab import sleep
from tests.recovery import expect_back

OTHER = "00:AA:01:00:00:02"
HERE, THERE = "024e43000001", "024e43000002"


def payloads(listener, since):
    return {rest.split(" ")[0] for _, rest in listener.reports(since)}


@test("PlainBluezTakesTheAdapterWithLowEnergyBesideAClassicOne")
def classic_beside(lab):
    lab.controller("classic")
    lab.controller(f"address={OTHER}").dongle(rate=10)
    lab.bluetoothd(adapters=("hci0", "hci1"))
    lab.figure("the roles", {name: list(map(str, lab.adapter(name)["Roles"])) for name in ("hci0", "hci1")})
    began = now()
    listener = lab.listen("bluez")
    listener.wait_state("PoweredOn")
    lab.figure("heard", f"{listener.wait_reports(10)[0][0] - began:.2f} s after the listener's start")
    expect(listener.why() == "", f"it says {listener.why()}")
    named = lab.listen("bluez:hci0")
    lab.figure("bluez:hci0, the classic one", named.wait_state("Unsupported"))
    expect("no Bluetooth Low Energy" in named.why(), "it does not say what is wrong")
    said = lab.nearcast("doctor", "--radio", "bluez", "--for", "2").stdout
    choice = [line for line in said.splitlines() if line.startswith("choice")]
    lab.figure("the doctor", choice)
    expect(len(choice) == 1 and f"takes hci1 ({OTHER})" in choice[0] and "hci0 is of the classic kind" in choice[0],
           f"the doctor says {said}")


@test("AnAdapterNamedByItsAddressIsHeardOnWhenTheNumbersChange")
def renumbered(lab):
    first = lab.controller()
    second = lab.controller(f"address={OTHER}")
    first.dongle(payload=HERE, rate=10)
    second.dongle(address="C0:00:00:00:01:02", payload=THERE, rate=10)
    lab.bluetoothd(adapters=("hci0", "hci1"))
    listener = lab.listen("bluez:" + OTHER.lower())
    numbered = lab.listen("bluez:hci1")
    for one in (listener, numbered):
        one.wait_reports(5)
    first.do("unplug")
    second.do("unplug")
    for one in (listener, numbered):
        one.wait_state("Unsupported")
    sleep(1)
    expect(second.plug(f"address={OTHER}") == 0, "it has not become hci0")
    lab.wait_powered("hci0")
    returned = now()
    expect_back(lab, listener, returned, "hci1 that is hci0 now, by its address")
    expect(payloads(listener, returned) == {"ffff" + THERE}, f"it hears {payloads(listener, returned)}")
    wait_for("where hci1 is", 5, lambda: "it is hci0 now" in numbered.why())
    lab.figure("bluez:hci1, while there is none", numbered.why())
    expect(first.plug() == 1, "the other one has not become hci1")
    lab.wait_powered("hci1")
    numbered.wait_reports(5, since=returned)
    wait_for("which hci1 that is", 5, lambda: "another adapter than before, which is hci0 now" in numbered.why())
    lab.figure("bluez:hci1, while another has the number", numbered.why())
    expect(payloads(numbered, returned) == {"ffff" + HERE}, f"it hears {payloads(numbered, returned)}")
    expect(payloads(listener, returned) == {"ffff" + THERE}, f"it hears {payloads(listener, returned)}")


@test("TwoAdaptersWithTheSameAddressAreTold")
def same_address(lab):
    for number in (1, 2):
        lab.controller().dongle(address=f"C0:00:00:00:01:{number:02X}", rate=10)
    lab.bluetoothd(adapters=())

    def shown():
        return [name for name in ("hci0", "hci1") if lab.adapter(name)]

    wait_for("an adapter", 20, shown)
    sleep(2)
    lab.figure("bluetoothd shows", shown())
    listener = lab.listen("bluez:00:AA:01:00:00:01")
    lab.wait_powered(shown()[0])
    listener.wait_reports(5)
    lab.figure("by the address", sorted(payloads(listener, 0)))
    said = lab.nearcast("doctor", "--radio", "bluez", "--for", "2").stdout
    told = [line for line in said.splitlines() if "have the same address" in line]
    lab.figure("the doctor", told)
    expect(len(told) == 1, f"the doctor says {said}")
