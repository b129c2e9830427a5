# SPDX-License-Identifier: Apache-2.0
"""A recording gives the same reports, one by one, whether it is watched or run as a scenario."""

import collections
import json
import random

from nearcast_program import ProgramTest, main, nearcast, events, recording

BOTH = ["didDiscoverPort:deviceType:MACAddr:RSSI:", "didUpdateState:MACAddr:"]
SHOWN = ("at", "event", "portName", "deviceType", "MACAddr", "RSSI")


def addresses(lines):
    """The dongles of a recording, those heard most often first."""
    heard = collections.Counter(json.loads(line)["manufacturerData"] for line in lines.splitlines()
                                if '"advertise"' in line)
    payloads = [payload for payload, _ in heard.most_common() if payload and payload.startswith("FFFF")]
    return [":".join(payload[4:16][place:place + 2] for place in range(0, 12, 2)) for payload in payloads]


class Agreement(ProgramTest):
    def registration(self, dongles):
        lines = [{"do": "setDelegate", "implements": BOTH}]
        for number, address in enumerate(dongles[:3]):
            lines.append({"do": "addSettingForPrinterPortName", "portName": f"P{number}", "dongleMACAddr": address})
        lines += [{"do": "serializedSettings"}, {"do": "startScan"}]
        return self.write("set-up.jsonl", "".join(json.dumps(line) + "\n" for line in lines))

    def assert_agreement(self, path, as_dongles):
        options = ["--as", "dongles"] if as_dongles else []
        imported = nearcast("import", *options, path)
        self.assertEqual(imported.returncode, 0, imported.stderr)
        set_up = self.registration(addresses(imported.stdout))
        ran = nearcast("run", set_up, self.write("imported.jsonl", imported.stdout))
        self.assertEqual(ran.returncode, 0, ran.stderr)
        settings = self.write("settings.json", events(ran.stdout, "return")[0]["value"])
        radio = f"replay:{path}?speed=max" + ("&as=dongles" if as_dongles else "")
        watched = nearcast("watch", "--radio", radio, "--settings", settings, "--json")
        self.assertEqual(watched.returncode, 0, watched.stderr)
        shown = [[tuple(event.get(name) for name in SHOWN)
                  for event in events(output, "didDiscoverPort", "didUpdateState")]
                 for output in (ran.stdout, watched.stdout)]
        self.assertEqual(shown[0], shown[1])
        return [event for event in shown[1] if event[1] == "didDiscoverPort"]

    def test_a_recording_made_by_chance_agrees(self):
        chance = random.Random(4)
        lines, at = [], 0.0
        for _ in range(5000):
            at += chance.choice([0.001, 0.05, 0.3, 1.7])
            lines.append({"at": round(at, 3), "do": "advertise", "RSSI": chance.randint(-95, -40),
                          "manufacturerData": f"FFFF02000000{chance.randint(0, 7):04X}"})
        path = self.write("chance.jsonl", "".join(json.dumps(line) + "\n" for line in lines))
        self.assertGreater(len(self.assert_agreement(path, as_dongles=False)), 1000)

    def test_a_linux_capture_agrees_and_gives_hundreds_of_reports(self):
        path = recording("captures", "linux_monitor_93s.pcapng")
        self.assertGreater(len(self.assert_agreement(path, as_dongles=True)), 300)

    def test_a_phone_capture_agrees(self):
        path = recording("captures", "phone_extended_69s.btsnoop")
        self.assertTrue(self.assert_agreement(path, as_dongles=True))

    def test_every_hall_recording_agrees(self):
        hall = recording("hall")
        for path in sorted(hall.glob("*[!h].jsonl")):
            if not path.name.endswith(".truth.jsonl"):
                with self.subTest(path.name):
                    self.assertGreater(len(self.assert_agreement(path, as_dongles=False)), 300)


if __name__ == "__main__":
    main()
