# SPDX-License-Identifier: Apache-2.0
"""nearcast watch as a person uses it."""

import json
import os
import pty
import select
import signal
import subprocess
import time

from nearcast_program import DEADLINE, PROGRAM, ProgramTest, events, main, nearcast

SIMULATOR = "simulator?speed=max"


class Watch(ProgramTest):
    def settings_of_the_scene(self):
        return self.write("settings.json", nearcast("scene", "--settings").stdout)

    def test_the_built_in_shop_shows_devices_by_port_and_one_that_falls_silent(self):
        result = nearcast("watch", "--radio", SIMULATOR, "--settings", self.settings_of_the_scene(), "--for", 20,
                          "--json")
        self.assertEqual(result.returncode, 0, result.stderr)
        ports = {event["portName"] for event in events(result.stdout, "didDiscoverPort")}
        self.assertIn("BT:Front Desk", ports)
        self.assertGreaterEqual(len(ports), 4)
        self.assertTrue(events(result.stdout, "didUpdateState"))
        self.assertEqual(json.loads(result.stdout.splitlines()[-1])["event"], "summary")

    def test_without_settings_every_dongle_shows_by_its_address(self):
        result = nearcast("watch", "--radio", SIMULATOR, "--for", 5, "--json")
        reports = events(result.stdout, "didDiscoverPort")
        self.assertTrue(reports)
        self.assertEqual({report["portName"] for report in reports}, {""})

    def test_two_runs_show_the_same(self):
        runs = [nearcast("watch", "--radio", SIMULATOR, "--for", 30, "--json").stdout for _ in range(2)]
        self.assertEqual(runs[0], runs[1])

    def test_lines_tell_port_address_type_signal_and_age(self):
        result = nearcast("watch", "--radio", SIMULATOR, "--settings", self.settings_of_the_scene(), "--for", 3)
        self.assertRegex(result.stdout, r"BT:Front Desk +02:4E:43:00:00:01  printer +-\d+ dBm  age +\d+\.\d\d s")

    def test_settings_that_are_missing_are_named(self):
        result = nearcast("watch", "--radio", "none", "--settings", self.folder / "none.json")
        self.assertEqual(result.returncode, 1)
        self.assertIn(f"{self.folder}/none.json: cannot be opened", result.stderr)

    def test_settings_that_are_broken_are_named_and_left_alone(self):
        path = self.write("broken.json", '{"a": 1')
        result = nearcast("watch", "--radio", "none", "--settings", path)
        self.assertEqual(result.returncode, 2)
        self.assertIn(f"{path}: not JSON at line 1, column 8: ", result.stderr)
        self.assertEqual(path.read_text(), '{"a": 1')

    def test_a_radio_that_is_unknown_is_an_error_of_the_command_line(self):
        result = nearcast("watch", "--radio", "carrier-pigeon")
        self.assertEqual(result.returncode, 2)
        self.assertIn("there is no radio 'carrier-pigeon'", result.stderr)

    def test_without_a_radio_it_fails_in_words(self):
        result = nearcast("watch", "--radio", "none")
        self.assertEqual(result.returncode, 1)
        self.assertIn("there is no radio; 'nearcast doctor' says what to do", result.stderr)

    def test_a_time_that_is_no_time_is_refused(self):
        for wrong in ("-1", "nan", "inf", "soon"):
            with self.subTest(wrong):
                self.assertEqual(nearcast("watch", "--radio", SIMULATOR, "--for", wrong).returncode, 2)

    def test_output_that_cannot_be_written_ends_it_with_an_error(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            result = subprocess.run([PROGRAM, "watch", "--radio", SIMULATOR, "--for", "60"], stdout=full,
                                    stderr=subprocess.PIPE, text=True, timeout=DEADLINE, check=False)
        self.assertEqual(result.returncode, 1)
        self.assertIn("standard output cannot be written", result.stderr)


class DamagedRecording(ProgramTest):
    def setUp(self):
        super().setUp()
        good = ['{"at": %.1f, "do": "advertise", "manufacturerData": "FFFF020000000001", "RSSI": -60}\n' % (at / 10)
                for at in range(20)]
        self.head = "".join(good)
        self.path = self.write("cut.jsonl", self.head + '{"at": 3, "do": "adver')

    def test_is_watched_up_to_the_damage_whose_place_is_told(self):
        result = nearcast("watch", "--radio", f"replay:{self.path}?speed=max", "--json")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(len(events(result.stdout, "didDiscoverPort")), 14)
        self.assertEqual(result.stderr.count(f"{self.path}: damaged at byte {len(self.head)}"), 1, result.stderr)

    def test_is_imported_up_to_the_damage(self):
        result = nearcast("import", self.path)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(len(result.stdout.splitlines()), 20)
        self.assertIn(f"damaged at byte {len(self.head)}", result.stderr)


class RadioHealth(ProgramTest):
    """A dongle that is silent and a radio that is blind are told apart."""

    def setUp(self):
        super().setUp()
        lines = ['{"at": %.1f, "do": "advertise", "manufacturerData": "FFFF020000000001", "RSSI": -60}\n' % (at / 10)
                 for at in range(20)]
        lines += ['{"at": 2.5, "do": "radio", "state": 4}\n', '{"at": 4, "do": "end"}\n']
        self.radio = f"replay:{self.write('off.jsonl', ''.join(lines))}?speed=max"

    def test_a_change_is_an_event(self):
        result = nearcast("watch", "--radio", self.radio, "--json")
        changes = events(result.stdout, "radioHealth")
        self.assertEqual([(change["at"], change["state"], change["restarts"]) for change in changes], [(2.5, 4, 0)])
        self.assertEqual(changes[0]["lastReportAge"], 0.6)

    def test_a_change_is_a_line(self):
        result = nearcast("watch", "--radio", self.radio)
        self.assertRegex(result.stdout, r"(?m)^ +2\.500 s  radio powered off for 0\.0 s, ")

    def test_stands_below_the_table(self):
        output, _ = shown_on_a_terminal("watch", "--radio", self.radio)
        self.assertIn("Radio powered on for ", output)
        self.assertRegex(output, r"Radio powered off for 1\.\d s, \d+\.\d reports/s, last 2\.\d s ago, 0 restarts")


class Interrupted(ProgramTest):
    def test_ctrl_c_ends_it_cleanly_with_a_summary(self):
        for ending in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(ending), subprocess.Popen([PROGRAM, "watch", "--radio", "simulator", "--json"],
                                                        stdout=subprocess.PIPE, text=True) as process:
                first = json.loads(process.stdout.readline())
                self.assertEqual(first["event"], "didDiscoverPort")
                process.send_signal(ending)
                rest, _ = process.communicate(timeout=DEADLINE)
                self.assertEqual(process.returncode, 0)
                self.assertEqual(json.loads(rest.splitlines()[-1])["event"], "summary")


def shown_on_a_terminal(*arguments):
    """What the program writes to a terminal, and how it ended."""
    master, slave = pty.openpty()
    with subprocess.Popen([PROGRAM, *arguments], stdout=slave, stderr=slave, stdin=slave,
                          env={**os.environ, "TERM": "xterm"}) as process:
        os.close(slave)
        output, end = b"", time.monotonic() + DEADLINE
        while time.monotonic() < end and select.select([master], [], [], 1)[0] or process.poll() is None:
            try:
                output += os.read(master, 65536)
            except OSError:  # the other side is closed
                break
        status = process.wait(timeout=DEADLINE)
    os.close(master)
    return output.decode(), status


class Terminal(ProgramTest):
    def test_gets_a_table_that_is_drawn_again_and_again(self):
        output, status = shown_on_a_terminal("watch", "--radio", SIMULATOR, "--for", "10")
        self.assertEqual(status, 0)
        self.assertIn("PORT", output)
        self.assertIn("02:4E:43:00:00:01", output)
        self.assertGreater(output.count("\x1b["), 10)
        self.assertRegex(output, r"reports of \d+ dongles in 10\.0 s")

    def test_is_not_steered_by_names_from_the_air(self):
        line = {"at": 0.1, "do": "advertise", "manufacturerData": "4C00", "RSSI": -60, "name": "evil\x1b]0;x\x07name"}
        path = self.write("evil.jsonl", "".join(json.dumps({**line, "at": at / 10}) + "\n" for at in range(30)))
        output, _ = shown_on_a_terminal("watch", "--radio", f"replay:{path}?speed=max")
        self.assertNotIn("\x1b]0;", output)
        self.assertIn("il", output)


if __name__ == "__main__":
    main()
