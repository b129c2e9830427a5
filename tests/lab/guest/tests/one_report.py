# SPDX-License-Identifier: Apache-2.0
"""One advertisement is one report, the same through every radio: the table of tests/contract/reports.json on the air of
the real kernel and bluetoothd, and what `nearcast record` writes of it."""

import json
import pathlib
import signal

from framework import expect, now, test, wait_for
from lab import sleep
from processes import Process

TABLE = pathlib.Path(__file__).resolve().parents[3] / "contract" / "reports.json"
DONGLE_SERVICE = "4F37D906-3F43-440C-98E0-9E709971CADF"
RATE = 1  # a second; all rows together stay below what an emulated machine keeps up with
SECONDS = 4  # in which each row is heard some times
LONGEST = 60  # until bluetoothd has made an object of each device and comes to tell of them


def read_table(extended):
    rows = json.loads(TABLE.read_text(encoding="utf-8"))
    return [row for row in rows if extended or not row.get("extended")]


def put(controller, number, row, answers=True):
    settings = {"address": row["address"], "rate": RATE, "rssi": row["RSSI"], "type": row["type"],
                "data": row["data"].replace(" ", "")}
    if "response" in row:
        settings.update(response=row["response"].replace(" ", ""), answers="yes" if answers else "no")
    for flag in ("random", "extended"):
        if row.get(flag):
            settings[flag] = "yes"
    controller.dongle(f"row{number}", payload="none", **settings)


class Recording:
    """`nearcast record` on one radio, until it is interrupted."""

    def __init__(self, lab, radio):
        self.file = lab.logs / (radio.replace(":", "_").replace("?", "_") + ".jsonl")
        command = [lab.config["programs"]["nearcast"], "record", "--radio", radio, "-o", str(self.file)]
        self.kept = None
        self.process = lab.add(Process, "record", command)

    def last_of_each(self):
        """What the last report of each reading says: each row has a reading of its own."""
        last = {}
        text = self.file.read_text(encoding="utf-8") if self.file.exists() else ""
        for line in text[:text.rfind("\n") + 1].split("\n")[:-1]:
            entry = json.loads(line)
            if entry["do"] == "advertise":
                last[entry["RSSI"]] = said(entry.get("name"), entry.get("manufacturerData"),
                                           entry.get("services", [DONGLE_SERVICE]))
        return last

    def await_rows(self, rows, radio):
        """Until each row has been heard that can be; what is missing then is told by the comparison."""
        wanted = {row["RSSI"] for row in rows if None not in expected(row, radio)}
        end = now() + LONGEST
        while now() < end and not wanted <= set(self.last_of_each()):
            sleep(1)

    def keep(self):
        """What comes from now on does not count."""
        self.kept = self.last_of_each()

    def stop(self):
        self.process.kill(signal.SIGINT)


def said(name, payload, services):
    return name, payload, sorted(set(services))


def expected(row, radio):
    """What may be heard of a row; None where no report may come."""
    exception = row.get("but", {}).get(radio)
    outcomes = [exception[key] for key in ("heard", "later") if key in exception] if exception else [row["heard"]]
    return [None if one is None else said(one.get("name"), one.get("manufacturerData"), one.get("services", []))
            for one in outcomes]


def compare(lab, rows, recording, radio, as_in_table):
    recording.stop()
    heard = recording.kept or recording.last_of_each()
    wrong = []
    for row in rows:
        outcomes, got = expected(row, as_in_table), heard.get(row["RSSI"])
        if got not in outcomes:
            wrong.append(f"{row['row']}: {got}, not {' or '.join(map(str, outcomes))}")
    strangers = set(heard) - {row["RSSI"] for row in rows}
    lab.figure(radio, f"{len(rows) - len(wrong)} of {len(rows)} rows as the table says, {len(heard)} heard")
    if strangers:
        wrong.append(f"readings of no row: {strangers}")
    return wrong


def air(controller, rows, recordings):
    """The rows on the air until all recordings have them. Of two with the same address the first one is heard first. At
    the end nobody answers scan requests any more, so that the last report of each is that of its advertisement; through
    bluetoothd they are one, and what was heard before that counts."""
    late = [row for row in rows if row.get("random")]
    for part in ([row for row in rows if row not in late], late):
        for row in part:
            put(controller, rows.index(row), row)
        for recording, radio in recordings:
            recording.await_rows(part, radio)
    sleep(SECONDS)
    for recording, radio in recordings:
        if radio == "bluez":
            recording.keep()
    for number, row in enumerate(rows):
        if "response" in row:
            put(controller, number, row, answers=False)
    sleep(SECONDS)


def through_bluetoothd(lab, *words):
    rows = read_table("extended" in words)
    controller = lab.controller(*words)
    lab.bluetoothd()
    bluez, beside = Recording(lab, "bluez"), Recording(lab, "hci:0?beside")
    wait_for("a scan", 20, lambda: controller.counters()["scanning"])
    air(controller, rows, [(bluez, "bluez"), (beside, "")])
    wrong = compare(lab, rows, bluez, "bluez", "bluez") + compare(lab, rows, beside, "hci:0?beside", "")
    expect(not wrong, "\n".join(wrong))


def alone(lab, *words):
    rows = read_table("extended" in words)
    controller = lab.controller(*words)
    recording = Recording(lab, "hci:0")
    wait_for("a scan", 20, lambda: controller.counters()["scanning"])
    air(controller, rows, [(recording, "hci")])
    wrong = compare(lab, rows, recording, "hci:0", "hci")
    expect(not wrong, "\n".join(wrong))


@test("OneReportIsTheSameThroughBluezAndBesideItWithALegacyController")
def legacy(lab):
    through_bluetoothd(lab)


@test("OneReportIsTheSameThroughBluezAndBesideItWithAnExtendedController")
def extended(lab):
    through_bluetoothd(lab, "extended")


@test("OneReportIsTheSameOnTheUserChannelWithALegacyController")
def alone_legacy(lab):
    alone(lab)


@test("OneReportIsTheSameOnTheUserChannelWithAnExtendedController")
def alone_extended(lab):
    alone(lab, "extended")
