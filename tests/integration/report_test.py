# SPDX-License-Identifier: Apache-2.0
"""nearcast report as a person uses it: a page of a recording, whole or not at all."""

import json

from nearcast_program import ProgramTest, data_of, main, nearcast, recording

BAR, KITCHEN = "02:4E:43:00:00:01", "02:4E:43:00:00:02"


def advertise(at, address, rssi):
    data = "FFFF" + address.replace(":", "")
    return json.dumps({"at": at, "do": "advertise", "manufacturerData": data, "RSSI": rssi}) + "\n"


def walk():
    """Ten seconds beside the bar, ten beside the kitchen."""
    return "".join(advertise(step / 5, address, -50 if (step < 50) == (address == BAR) else -75)
                   for step in range(100) for address in (BAR, KITCHEN))


class Report(ProgramTest):
    def setUp(self):
        super().setUp()
        self.shop = self.write("shop.jsonl", walk())

    def report(self, *arguments):
        page = self.folder / "page.html"
        result = nearcast("report", *arguments, "-o", page)
        self.assertEqual(result.returncode, 0, result.stderr)
        return data_of(page.read_text(encoding="utf-8"))

    def chosen(self, data):
        return [data["dongles"][decision["dongle"]]["address"] for decision in data["decision"]
                if decision["dongle"] >= 0]

    def test_every_dongle_of_a_recording_is_shown_and_decided_among(self):
        data = self.report(self.shop)
        self.assertEqual([dongle["address"] for dongle in data["dongles"]], [BAR, KITCHEN])
        self.assertEqual([len(dongle["raw"]["t"]) for dongle in data["dongles"]], [100, 100])
        self.assertEqual(self.chosen(data), [BAR, KITCHEN])
        self.assertEqual((data["title"], data["end"], data["truth"]), ("shop.jsonl", 19800, None))

    def test_a_settings_file_gives_names_and_thresholds(self):
        record = {"Device Type": "Printer", "MAC Address": BAR, "Nick Name": "Bar", "Threshold RSSI": -60}
        settings = self.write("settings.json", json.dumps({"BT:Bar": record}))
        data = self.report(self.shop, "--settings", settings)
        bar, kitchen = data["dongles"]
        self.assertEqual((bar["port"], bar["nick"], bar["threshold"], bar["own"]), ("BT:Bar", "Bar", -60, True))
        self.assertEqual((kitchen["port"], kitchen["address"]), ("", KITCHEN))
        self.assertEqual(self.chosen(data), [BAR])
        self.assertEqual(data["decision"][-1]["rule"], "left")

    def test_settings_of_the_decision_are_taken_and_told(self):
        data = self.report(self.shop, "--set", "patience=1000", "--set", "dwell=2")
        told = {setting["name"]: setting["value"] for setting in data["settings"]}
        self.assertEqual((told["patience"], told["dwell"]), (1000, 2))
        self.assertEqual(self.chosen(data), [BAR])

    def test_the_truth_is_shown_beside_it(self):
        marks = f'{{"at": 0, "truth": "{BAR}"}}\n{{"at": 10, "truth": null}}\n'
        data = self.report(self.shop, "--truth", self.write("truth.jsonl", marks))
        self.assertEqual(data["truth"], [{"at": 0, "dongle": 0}, {"at": 10000, "dongle": -1}])

    def test_a_scenario_is_played_as_it_is(self):
        calls = [{"at": 0, "do": "setDelegate", "implements": ["didDiscoverPort"]},
                 {"do": "addSettingForPrinterPortName", "portName": "BT:Bar", "dongleMACAddr": BAR, "nickName": "Bar"},
                 {"do": "startScan"}]
        lines = "".join(json.dumps(call) + "\n" for call in calls) + walk()
        data = self.report(self.write("scenario.jsonl", lines))
        self.assertEqual((data["dongles"][0]["port"], data["dongles"][1]["port"]), ("BT:Bar", ""))
        self.assertEqual(self.chosen(data), [BAR])

    def test_the_radio_and_its_scan_are_marked(self):
        lines = walk() + '{"at": 130, "do": "radio", "state": 4}\n{"at": 131, "do": "radio", "state": 5}\n'
        data = self.report(self.write("long.jsonl", lines))
        self.assertEqual([scan["what"] for scan in data["scans"]][:2], ["started", "restarted"])
        self.assertEqual([(radio["at"], radio["hears"]) for radio in data["radio"]], [(130000, False), (131000, True)])
        self.assertEqual([len(dongle["silent"]) for dongle in data["dongles"]], [1, 1])

    def test_the_page_goes_to_standard_output_and_is_the_same_each_time(self):
        first, second = (nearcast("report", self.shop, "--title", "A <walk> & back") for _ in range(2))
        self.assertEqual(first.stdout, second.stdout)
        self.assertIn("<title>A &lt;walk&gt; &amp; back</title>", first.stdout)

    def test_a_capture_of_others_becomes_a_page(self):
        capture = recording("captures", "linux_monitor_93s.pcapng")
        data = self.report(f"{capture}?as=dongles")
        self.assertGreater(sum(len(dongle["raw"]["t"]) for dongle in data["dongles"]), 900)
        self.assertEqual(data["title"], "linux_monitor_93s.pcapng")


class CannotReport(ProgramTest):
    def assert_fails(self, status, words, *arguments):
        page = self.write("page.html", "before")
        result = nearcast("report", *arguments, "-o", page)
        self.assertEqual(result.returncode, status, result.stderr)
        self.assertIn(words, result.stderr)
        self.assertTrue(result.stderr.startswith("nearcast report: "), result.stderr)
        self.assertEqual(page.read_text(), "before")

    def test_files_that_are_wrong_are_named(self):
        shop = self.write("shop.jsonl", walk())
        broken = self.write("broken.jsonl", '{"at": 0, "do": "dance"}\n')
        self.assert_fails(1, "none.jsonl: cannot be opened", self.folder / "none.jsonl")
        self.assert_fails(2, "broken.jsonl:1: ", broken)
        self.assert_fails(2, "broken.jsonl:2: ", self.write("broken.jsonl", '{"do": "startScan"}\n{"do": "dance"}\n'))
        self.assert_fails(2, "broken.jsonl:1: ", shop, "--truth", broken)
        self.assert_fails(2, "broken.jsonl: ", shop, "--settings", broken)

    def test_settings_that_cannot_be_are_named(self):
        shop = self.write("shop.jsonl", walk())
        self.assert_fails(2, "attack", shop, "--set", "attack=0")
        self.assert_fails(2, "speed", shop, "--set", "speed=1")

    def test_a_page_that_cannot_be_written_is_named(self):
        shop = self.write("shop.jsonl", walk())
        result = nearcast("report", shop, "-o", "/dev/full")
        self.assertEqual(result.returncode, 1)
        self.assertIn("/dev/full: cannot be written", result.stderr)

    def test_a_capture_that_was_cut_gives_a_page_and_says_so(self):
        capture = self.write("cut.btsnoop", b"btsnoop\0\0\0\0\1\0\0\x07\xd1cut")
        page = self.folder / "cut.html"
        result = nearcast("report", capture, "-o", page)
        self.assertEqual(result.returncode, 1)
        self.assertIn("damaged at byte 16", result.stderr)
        self.assertEqual(data_of(page.read_text(encoding="utf-8"))["dongles"], [])


if __name__ == "__main__":
    main()
