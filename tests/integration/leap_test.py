# SPDX-License-Identifier: Apache-2.0
"""Recordings with a leap: years between two reports pass in less than a second."""

import json
import os
import pty
import subprocess
import time

from nearcast_program import DEADLINE, PROGRAM, ProgramTest, data_of, events, main, nearcast

DONGLE = "00:00:00:00:00:01"
LEAP = 10 ** 9  # seconds; some 31 years
LONGEST = 5  # seconds that any of these may take; they take a fifth of one


def heard(at):
    return {"at": at, "do": "advertise", "manufacturerData": "FFFF000000000001", "RSSI": -60}


def end(at):
    return {"at": at, "do": "end"}


def around(*begins):
    """A dongle that is heard for ten seconds from each of these times on, and then falls silent."""
    return [heard(begin + second) for begin in begins for second in range(11)] + [end(begins[-1] + 20)]


class LeapTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.begun = time.monotonic()

    def tearDown(self):
        self.assertLess(time.monotonic() - self.begun, LONGEST)

    def recording(self, lines, name="leap.jsonl"):
        return self.write(name, "".join(json.dumps(line) + "\n" for line in lines))

    def watched(self, lines, *arguments):
        """The events of a watch, a pair of time and kind for each."""
        result = nearcast("watch", "--radio", f"replay:{self.recording(lines)}?speed=max", "--json", *arguments)
        self.assertEqual(result.returncode, 0, result.stderr)
        return [(event["at"], event["event"]) for event in events(result.stdout, "didDiscoverPort", "didUpdateState")]


class Watch(LeapTest):
    def test_in_json_a_leap_passes_and_each_silence_keeps_its_own_second(self):
        told = self.watched(around(0, LEAP))
        silences = [at for at, kind in told if kind == "didUpdateState"]
        self.assertEqual(silences, [15, LEAP + 15])
        reports = [at for at, kind in told if kind == "didDiscoverPort"]
        self.assertEqual(reports, [*range(6, 11), *range(LEAP + 6, LEAP + 11)])

    def test_in_lines_a_leap_passes(self):
        result = nearcast("watch", "--radio", f"replay:{self.recording(around(0, LEAP))}?speed=max")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn(f"{LEAP + 15}.000 s", result.stdout)

    def test_in_the_table_of_a_terminal_a_leap_passes(self):
        shown = self.on_a_terminal("watch", "--radio", f"replay:{self.recording(around(0, LEAP))}?speed=max")
        self.assertIn(DONGLE, shown)
        self.assertIn("silent", shown)

    def on_a_terminal(self, *arguments):
        ours, theirs = pty.openpty()
        with subprocess.Popen([PROGRAM, *arguments], stdin=subprocess.DEVNULL, stdout=theirs, stderr=theirs) as program:
            os.close(theirs)
            shown = b""
            try:
                while part := os.read(ours, 65536):
                    shown += part
            except OSError:
                pass  # the other side is closed
            os.close(ours)
            self.assertEqual(program.wait(DEADLINE), 0, shown)
        return shown.decode()

    def test_times_that_are_not_whole_stay_as_they_are(self):
        silences = [at for at, kind in self.watched(around(0.25, LEAP + 0.125)) if kind == "didUpdateState"]
        self.assertEqual(silences, [20, LEAP + 20])

    def test_two_leaps_pass_and_one_at_the_very_begin(self):
        silences = [at for at, kind in self.watched(around(LEAP, 2 * LEAP, 3 * LEAP)) if kind == "didUpdateState"]
        self.assertEqual(silences, [LEAP + 15, 2 * LEAP + 15, 3 * LEAP + 15])

    def test_a_leap_at_the_end_passes_that_the_recording_or_the_user_asks_for(self):
        for lines, arguments in (([*around(0)[:-1], end(LEAP)], ()), (around(0), ("--for", LEAP))):
            with self.subTest(arguments=arguments):
                result = nearcast("watch", "--radio", f"replay:{self.recording(lines)}?speed=max", "--json", *arguments)
                summary = json.loads(result.stdout.splitlines()[-1])
                self.assertEqual((summary["event"], summary["at"]), ("summary", LEAP))
                self.assertEqual([event["at"] for event in events(result.stdout, "didUpdateState")], [15])


class Report(LeapTest):
    def report(self, lines, *arguments):
        page = self.folder / "page.html"
        result = nearcast("report", self.recording(lines), "-o", page, *arguments)
        self.assertEqual(result.returncode, 0, result.stderr)
        return data_of(page.read_text(encoding="utf-8"))

    def test_a_leap_passes_and_holds_no_restarts(self):
        data = self.report(around(0, LEAP))
        silences, at = [], 0
        for difference in data["dongles"][0]["silent"]:
            at += difference
            silences.append(at)
        self.assertEqual(silences, [15_000, (LEAP + 15) * 1000])
        self.assertEqual(data["end"], (LEAP + 20) * 1000)
        self.assertLess(len(data["scans"]), 10)

    def test_what_is_played_second_by_second_may_be_seven_days(self):
        hour = 3600
        hours = [heard(hour * place) for place in range(7 * 24 + 1)]
        self.report([*hours, end(7 * 24 * hour)])
        path = self.recording([*hours, end(7 * 24 * hour + 0.001)], "long.jsonl")
        result = nearcast("report", path, "-o", self.folder / "none.html")
        self.assertEqual(result.returncode, 2)
        self.assertIn(f"{path}: has more than seven days to be played second by second", result.stderr)


class Evaluate(LeapTest):
    def evaluated(self, lines, truth, *arguments):
        path = self.recording(lines)
        self.recording(truth, "leap.truth.jsonl")
        result = nearcast("evaluate", "--json", *arguments, path)
        self.assertEqual(result.returncode, 0, result.stderr)
        return json.loads(result.stdout)

    def test_a_leap_counts_for_as_long_as_it_is(self):
        rule = self.evaluated(around(0, LEAP), [{"at": 0, "truth": DONGLE}], "--rule", "nearest")["rules"][0]["total"]
        self.assertAlmostEqual(rule["minutes"], (LEAP + 20.5) / 60, delta=0.1)
        self.assertLess(rule["rightPercent"], 0.1)

    def test_a_mark_within_the_leap_counts_from_its_moment_on(self):
        truth = [{"at": 0, "truth": DONGLE}, {"at": LEAP / 4, "truth": None}]
        rule = self.evaluated(around(0, LEAP), truth, "--rule", "nearest")["rules"][0]["total"]
        self.assertAlmostEqual(rule["rightPercent"], 75, delta=0.1)
        self.assertEqual((rule["changes"], rule["neverReached"]), (1, 0))

    def test_several_that_are_longer_than_the_clock_are_refused(self):
        path = self.recording([heard(0), end(9 * LEAP)])
        self.recording([{"at": 0, "truth": DONGLE}], "leap.truth.jsonl")
        result = nearcast("evaluate", path, path)
        self.assertEqual(result.returncode, 2)
        self.assertIn("together with the recordings before it longer than 291 years", result.stderr)


if __name__ == "__main__":
    main()
