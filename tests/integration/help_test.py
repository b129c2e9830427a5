# SPDX-License-Identifier: Apache-2.0
"""Help: how it is asked for, and that all it says of a command is so."""

import json
import re
import shlex
import signal
import subprocess

from nearcast_program import DEADLINE, PROGRAM, ProgramTest, commands, main, nearcast

ADDRESS = "02:4E:43:00:00:01"
HARDWARE = ("auto", "bluez", "hci")


def help_of(*words):
    return nearcast(*words, "--help").stdout


def walk():
    """Two minutes beside one dongle and then beside another, back and forth."""
    lines = []
    for step in range(1200):
        near = step // 300 % 2
        for dongle in (0, 1):
            lines.append({"at": step / 10, "do": "advertise", "manufacturerData": f"FFFF024E4300000{dongle + 1}",
                          "RSSI": -50 if dongle == near else -75})
    return "".join(json.dumps(line) + "\n" for line in lines)


def truth():
    return "".join(json.dumps({"at": 30 * stay, "truth": f"02:4E:43:00:00:0{stay % 2 + 1}"}) + "\n"
                   for stay in range(4))


def settings():
    return json.dumps({f"BT:{number}": {"Device Type": "Printer", "MAC Address": f"02:4E:43:00:00:0{number}",
                                        "Nick Name": f"Printer {number}"} for number in (1, 2)})


class Asked(ProgramTest):
    def test_for_the_program_in_several_ways(self):
        general = help_of()
        self.assertIn("Commands:", general)
        for words in (["-h"], ["help"], ["help", "help"], ["help", "--help"], ["help", "version"]):
            result = nearcast(*words)
            self.assertEqual((result.returncode, result.stdout, result.stderr), (0, general, ""), words)

    def test_for_a_command_in_several_ways(self):
        for command in commands():
            expected = help_of(command.name)
            self.assertIn(f"Usage: nearcast {command.name}", expected)
            for words in ([command.name, "-h"], ["help", command.name]):
                result = nearcast(*words)
                self.assertEqual((result.returncode, result.stdout, result.stderr), (0, expected, ""), words)

    def test_for_the_version_in_several_ways(self):
        for words in (["--version"], ["-V"], ["version"]):
            result = nearcast(*words)
            self.assertRegex(result.stdout, r"^nearcast \d+\.\d+\.\d+\n$", words)
            self.assertEqual((result.returncode, result.stderr), (0, ""), words)

    def test_for_a_command_that_is_none(self):
        for words in (["help", "wach"], ["wach", "--help"]):
            result = nearcast(*words)
            self.assertEqual((result.returncode, result.stdout), (2, ""), words)
            self.assertIn("did you mean 'watch'?", result.stderr)

    def test_for_too_much(self):
        for words in (["help", "watch", "record"], ["version", "watch"], ["help", "--what"]):
            result = nearcast(*words)
            self.assertEqual((result.returncode, result.stdout), (2, ""), words)
            self.assertIn(f"'{words[-1]}'", result.stderr)


class Said(ProgramTest):
    def test_only_commands_with_a_radio_have_the_table_of_radios(self):
        having = []
        for command in commands():
            has = any(option.name == "--radio" for option in command.options)
            self.assertEqual("Radios (--radio):" in help_of(command.name), has, command.name)
            having += [command.name] if has else []
        self.assertGreater(len(having), 2)
        self.assertNotIn("Radios (--radio):", help_of())

    def test_no_help_names_an_option_that_the_command_has_not(self):
        for command in commands():
            own = {option.name for option in command.options} | {"--help"}
            text = help_of(command.name)
            # Another command that an example or a sentence names has options of its own.
            other = re.compile(r"nearcast (?!%s\b).*" % command.name)
            self.assertLessEqual(set(re.findall(r"(?<![\w-])--[a-z][a-z-]*", other.sub("", text))), own, command.name)

    def test_the_statuses_are_told(self):
        told = help_of().partition("Exit status:\n")[2]
        self.assertEqual([line.split()[0] for line in told.splitlines()], ["0", "1", "2", "3"])


class Examples(ProgramTest):
    def setUp(self):
        super().setUp()
        for name in ("shop", "walk", "stays", "setup", "scenario", "phone"):
            self.write(f"{name}.jsonl", walk())
        for name in ("shop.pcapng", "phone.btsnoop", "shop.btsnoop"):
            result = nearcast("record", "--radio", "replay:shop.jsonl?speed=max", "-o", "made.btsnoop", cwd=self.folder)
            self.assertEqual(result.returncode, 0, result.stderr)
            self.write(name, (self.folder / "made.btsnoop").read_bytes())
        for name in ("walk", "stays"):
            self.write(f"{name}.truth.jsonl", truth())
        self.write("devices.json", settings())
        self.write("kiosk.json", nearcast("scene").stdout)

    def listed(self, *words):
        text = help_of(*words).partition("Examples:\n")[2].partition("\n\n")[0]
        return [line.strip() for line in text.splitlines()]

    def needs_hardware(self, line):
        words = shlex.split(line)
        command = next((command for command in self.commands if command.name == words[1]), None)
        if command is None or not any(option.name == "--radio" for option in command.options):
            return False
        radio = words[words.index("--radio") + 1] if "--radio" in words else "auto"
        return radio.startswith(HARDWARE)

    def goes_on(self, line):
        """Until it is interrupted, or for as long as its recording lasts."""
        command = next((command for command in self.commands if command.name == shlex.split(line)[1]), None)
        return command is not None and any(option.name == "--radio" for option in command.options) and \
            "speed=max" not in line

    def run_to_its_end(self, line):
        shell = line.replace("nearcast ", shlex.quote(PROGRAM) + " ", 1)
        with subprocess.Popen(["bash", "-c", f"exec {shell}"], cwd=self.folder, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            if self.goes_on(line):
                process.stdout.read(1)
                process.send_signal(signal.SIGINT)
            error = process.communicate(timeout=DEADLINE)[1]
        return process.returncode, error.decode()

    def test_each_help_has_two_and_they_do_what_they_say(self):
        self.commands = commands()
        tried = 0
        for words in [[]] + [[command.name] for command in self.commands]:
            lines = self.listed(*words)
            self.assertGreaterEqual(len(lines), 2, words)
            for line in lines:
                with self.subTest(example=line):
                    self.assertTrue(line.startswith(" ".join(["nearcast", *words])), line)
                    if self.needs_hardware(line):
                        continue
                    status, error = self.run_to_its_end(line)
                    self.assertIn(status, (0, 3) if "doctor" in line else (0,), error)
                    tried += 1
        self.assertGreater(tried, 15)


if __name__ == "__main__":
    main()
