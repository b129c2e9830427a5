# SPDX-License-Identifier: Apache-2.0
"""What becomes of output where the device is full, a signal comes, or memory is short."""

import json
import os
import resource
import signal
import stat
import subprocess
import time
import unittest

from nearcast_program import DEADLINE, PROGRAM, ProgramTest, commands, main, nearcast

PAYLOAD = "FFFF024E43000001"


def recording(count):
    return "".join(json.dumps({"at": step / 50, "do": "advertise", "manufacturerData": PAYLOAD, "RSSI": -50}) + "\n"
                   for step in range(count))


SCENARIO = json.dumps({"do": "setDelegate", "implements": ["didDiscoverPort:deviceType:MACAddr:RSSI:"]}) + "\n" + \
    json.dumps({"do": "startScan"}) + "\n" + recording(2000)


class FullDevice(ProgramTest):
    def words(self, command):
        """A call of the command that has something to write and comes to an end."""
        words = []
        for option in command.options:
            if option.name == "--radio":
                words += ["--radio", "simulator?speed=max"]
            elif option.name == "--for" and not option.needs:
                words += ["--for", "3"]
        if command.positionals and command.name != "scene":
            words.append(str(self.write("scenario.jsonl", SCENARIO if command.name == "run" else recording(200))))
        if command.name == "evaluate":
            truth = json.dumps({"at": 0, "truth": "02:4E:43:00:00:01"}) + "\n"
            words += ["--truth", str(self.write("truth.jsonl", truth))]
        return [command.name, *words]

    def assert_fails(self, words):
        with open("/dev/full", "wb") as full:
            result = subprocess.run([PROGRAM, *words], stdin=subprocess.DEVNULL, stdout=full, stderr=subprocess.PIPE,
                                    text=True, timeout=DEADLINE, check=False)
        self.assertEqual(result.returncode, 1, result.stderr)
        self.assertIn("No space left on device", result.stderr)

    def test_every_command_ends_with_status_1(self):
        for command in commands():
            for flags in [[]] + [[option.name] for option in command.options if option.type is None and
                                 not option.needs and option.name not in ("--advise", "--truth")]:
                with self.subTest(command=command.name, flags=flags):
                    self.assert_fails(self.words(command) + flags)

    def test_help_and_the_version_too(self):
        ways = [["--help"], ["-h"], ["help"], ["--version"], ["-V"], ["version"]]
        for words in ways + [words for command in commands() for words in ([command.name, "--help"],
                                                                           ["help", command.name])]:
            with self.subTest(words=words):
                self.assert_fails(words)

    def test_every_file_that_is_written_too(self):
        for command in commands():
            for option in command.options:
                if option.name not in ("--output", "--html"):
                    continue
                with self.subTest(command=command.name, option=option.name):
                    result = nearcast(*self.words(command), option.name, "/dev/full")
                    self.assertEqual(result.returncode, 1, result.stderr)
                    self.assertIn("/dev/full: cannot be written", result.stderr)


class Signals(ProgramTest):
    def test_nothing_is_left_beside_the_output_of_a_command_that_a_signal_ends(self):
        for sent in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT):
            with self.subTest(signal=sent):
                os.mkfifo(self.folder / "capture")
                target = self.write("out", "before")
                with subprocess.Popen([PROGRAM, "import", self.folder / "capture", "-o", target]) as process:
                    with open(self.folder / "capture", "wb", buffering=0) as capture:
                        capture.write(recording(2000).encode())
                        self.await_files(3)
                        process.send_signal(sent)
                        process.wait(DEADLINE)
                self.assertEqual(process.returncode, -sent)
                self.assertEqual(sorted(os.listdir(self.folder)), ["capture", "out"])
                self.assertEqual(target.read_text(encoding="utf-8"), "before")
                (self.folder / "capture").unlink()

    def await_files(self, count):
        end = time.monotonic() + DEADLINE
        while len(os.listdir(self.folder)) < count:
            self.assertLess(time.monotonic(), end, "it writes nothing beside its output")


class Damage(ProgramTest):
    def test_of_a_damaged_capture_all_before_the_damage_is_written(self):
        capture = self.write("damaged.jsonl", recording(3) + "{")
        output = self.folder / "out.jsonl"
        result = nearcast("import", capture, "-o", output)
        self.assertEqual(result.returncode, 1)
        self.assertIn("damaged at byte", result.stderr)
        self.assertEqual(output.read_text(encoding="utf-8").count("advertise"), 3)
        told = " ".join(nearcast("import", "--help").stdout.split())
        self.assertIn("of a damaged one up to the damage", told)
        self.assertNotIn("whole or not at all", told)


class Links(ProgramTest):
    def test_an_output_keeps_its_mode_and_the_link_to_it(self):
        target = self.write("page.jsonl", "before")
        target.chmod(0o640)
        link = self.folder / "link"
        link.symlink_to("page.jsonl")
        self.assertEqual(nearcast("import", self.write("in.jsonl", recording(3)), "-o", link).returncode, 0)
        self.assertTrue(link.is_symlink())
        self.assertEqual(stat.S_IMODE(target.stat().st_mode), 0o640)
        self.assertEqual(target.read_text(encoding="utf-8").count("advertise"), 3)


class Memory(ProgramTest):
    @unittest.skipIf("asan" in PROGRAM or "tsan" in PROGRAM, "sanitizers take memory of their own")
    def test_a_run_without_memory_says_so(self):
        lines = [json.dumps({"do": "setDelegate", "implements": ["didDiscoverPort:deviceType:MACAddr:RSSI:"]})]
        name = "x" * 500_000
        for number in range(20):
            lines.append(json.dumps({"do": "addSettingForPrinterPortName", "portName": f"{number}{name}",
                                     "dongleMACAddr": f"02:4E:43:00:00:{number:02X}"}))
        lines.append(json.dumps({"do": "serializedSettings"}))
        path = self.write("large.jsonl", "\n".join(lines) + "\n")
        failed = 0
        for megabytes in range(14, 60, 3):
            limit = megabytes << 20
            result = subprocess.run(
                [PROGRAM, "run", path], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                text=True, timeout=DEADLINE, check=False,
                preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))
            if result.returncode == 127:
                continue  # not even its libraries could be loaded
            with self.subTest(megabytes=megabytes):
                self.assertIn(result.returncode, (0, 1), result.stderr)
                if result.returncode == 1:
                    failed += 1
                    self.assertIn("nearcast run: there is not enough memory", result.stderr)
        self.assertGreater(failed, 3)


if __name__ == "__main__":
    main()
