# SPDX-License-Identifier: Apache-2.0
"""nearcast record as a person uses it: what was recorded plays as it was heard."""

import json
import signal
import subprocess

from nearcast_program import DEADLINE, PROGRAM, ProgramTest, main, nearcast

SHOP = "simulator?seed=3&speed=max"


class Record(ProgramTest):
    def record(self, name, radio=SHOP):
        path = self.folder / name
        result = nearcast("record", "--radio", radio, "--for", 20, "-o", path)
        self.assertEqual(result.returncode, 0, result.stderr)
        return path

    def assert_plays_the_same(self, path):
        """A recording of the recording is the recording."""
        heard = self.record("shop.jsonl").read_text(encoding="utf-8")
        again = nearcast("record", "--radio", f"replay:{path}?speed=max")
        self.assertEqual(again.returncode, 0, again.stderr)
        self.assertGreater(heard.count("advertise"), 400)
        self.assertEqual(again.stdout, heard)

    def test_json_lines_play_as_they_were_heard(self):
        self.assert_plays_the_same(self.record("first.jsonl"))

    def test_btsnoop_plays_as_it_was_heard(self):
        path = self.record("first.btsnoop")
        self.assertTrue(path.read_bytes().startswith(b"btsnoop\0"))
        self.assert_plays_the_same(path)

    def test_changes_of_state_play_too(self):
        lines = ['{"at": 1.0, "do": "radio", "state": 4}', '{"at": 2.0, "do": "radio", "state": 5}',
                 '{"at": 2.5, "do": "end"}']
        first = self.write("states.jsonl", "".join(line + "\n" for line in lines))
        second = self.record("states.btsnoop", f"replay:{first}?speed=max")
        third = nearcast("record", "--radio", f"replay:{second}?speed=max")
        self.assertEqual(third.stdout.splitlines(), lines)

    def test_foreign_advertisements_are_recorded_too(self):
        line = {"at": 0.5, "do": "advertise", "name": "x", "manufacturerData": "4C00", "RSSI": -60, "services": []}
        path = self.write("foreign.jsonl", json.dumps(line) + "\n")
        self.assertIn('"4C00"', nearcast("record", "--radio", f"replay:{path}?speed=max").stdout)

    def test_a_recording_that_was_killed_plays_up_to_there(self):
        path = self.folder / "killed.jsonl"
        with subprocess.Popen([PROGRAM, "record", "--radio", "simulator?speed=20", "-o", path]) as process:
            while not path.exists() or path.read_bytes().count(b"\n") < 50:
                self.assertIsNone(process.poll())
            process.kill()
        result = nearcast("import", path)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertGreaterEqual(len(result.stdout.splitlines()), 50)

    def test_ctrl_c_ends_it_cleanly(self):
        with subprocess.Popen([PROGRAM, "record", "--radio", "simulator"], stdout=subprocess.PIPE, text=True) as process:
            process.stdout.readline()
            process.send_signal(signal.SIGINT)
            rest, _ = process.communicate(timeout=DEADLINE)
        self.assertEqual(process.returncode, 0)
        self.assertEqual(json.loads(rest.splitlines()[-1])["do"], "end")


class CannotRecord(ProgramTest):
    def test_without_a_radio_it_fails_in_words(self):
        result = nearcast("record", "--radio", "none", "--for", 1)
        self.assertEqual(result.returncode, 1)
        self.assertIn("there is no radio; 'nearcast doctor' says what to do", result.stderr)

    def test_a_recording_is_not_written_over_while_it_is_played(self):
        path = self.write("shop.jsonl", '{"at": 1.0, "do": "end"}\n')
        result = nearcast("record", "--radio", f"replay:{path}", "-o", path)
        self.assertEqual(result.returncode, 2)
        self.assertIn("would be written over", result.stderr)
        self.assertEqual(path.read_text(), '{"at": 1.0, "do": "end"}\n')

    def test_an_output_that_cannot_be_written_ends_it(self):
        result = nearcast("record", "--radio", SHOP, "-o", "/dev/full")
        self.assertEqual(result.returncode, 1)
        self.assertIn("/dev/full: cannot be written", result.stderr)

    def test_an_output_that_cannot_be_opened_is_named(self):
        result = nearcast("record", "--radio", SHOP, "-o", self.folder / "none" / "x.jsonl")
        self.assertEqual(result.returncode, 1)
        self.assertIn("x.jsonl: cannot be opened", result.stderr)


if __name__ == "__main__":
    main()
