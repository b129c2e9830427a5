# SPDX-License-Identifier: Apache-2.0
"""The same mistake ends every command with the same exit status."""

import ctypes
import json
import subprocess

from nearcast_program import DEADLINE, PROGRAM, ProgramTest, commands, main, nearcast

GOOD, FAILED, USAGE, WANTING = range(4)

LIBC = ctypes.CDLL(None, use_errno=True)
DROP_FROM_BOUND = 24  # of prctl
READ_EVERYTHING = (1, 2)  # CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH

ADDRESS = "02:4E:43:00:00:01"
TRUTH = '{"at": 0, "truth": "%s"}\n{"at": 20, "truth": null}\n' % ADDRESS
SETTINGS = '{"BT:Bar": {"Device Type": "Printer", "MAC Address": "%s", "Nick Name": "Bar"}}' % ADDRESS
SCENARIO = '{"do": "startScan"}\n{"at": 1, "do": "stopScan"}\n'

OUTPUTS = {"--output", "--html", "--write"}
INPUTS = {"--settings": "settings", "--truth": "truth"}  # where their value is a file
POSITIONALS = {"RECORDING": "recording", "CAPTURE": "recording"}
POSITIONALS_OF = {"run": "scenario", "scene": "scene"}  # whose positional says no more than FILE

# What a file that can be read may hold, by what is expected of it.
WRONG = {
    "recording": [("a recording that is cut", lambda good: good[:-5], FAILED),
                  ("no recording", lambda good: b"hello\n", FAILED)],
    "scenario": [("no JSON", lambda good: b"hello\n", USAGE), ("cut", lambda good: good[:-5], USAGE),
                 ("an unknown operation", lambda good: good + b'{"do": "dance"}\n', USAGE)],
    "scene": [("no JSON", lambda good: b"hello", USAGE), ("cut", lambda good: good[:-5], USAGE),
              ("no scene", lambda good: b"{}", USAGE), ("empty", lambda good: b"", USAGE)],
    "settings": [("no JSON", lambda good: b"hello", USAGE), ("cut", lambda good: good[:-1], USAGE),
                 ("a list", lambda good: b"[]", USAGE), ("empty", lambda good: b"", USAGE)],
    "truth": [("no JSON", lambda good: b"hello\n", USAGE), ("cut", lambda good: good[:-5], USAGE),
              ("without a time", lambda good: b'{"truth": null}\n', USAGE), ("empty", lambda good: b"", USAGE)],
}


def advertisements():
    """A dongle that is close for twenty seconds, and far away for twenty more."""
    return "".join(json.dumps({"at": step / 5, "do": "advertise", "manufacturerData": "FFFF024E43000001",
                               "RSSI": -50 if step < 100 else -80}) + "\n" for step in range(200))


def without_rights():
    """Takes from root what lets it read every file. For others there is nothing to take."""
    for capability in READ_EVERYTHING:
        LIBC.prctl(DROP_FROM_BOUND, capability, 0, 0, 0)


class Statuses(ProgramTest):
    def setUp(self):
        super().setUp()
        self.paths = {
            "recording": self.recording(),
            "scenario": self.write("good-scenario.jsonl", SCENARIO),
            "scene": self.write("good-scene.json", nearcast("scene").stdout),
            "settings": self.write("good-settings.json", SETTINGS),
            "truth": self.write("good.truth.jsonl", TRUTH),
        }
        self.commands = commands()
        self.assertGreater(len(self.commands), 8)

    def recording(self, ending=".btsnoop"):
        lines = self.write("good.lines", advertisements())
        path = self.folder / f"good{ending}"
        result = nearcast("record", "--radio", f"replay:{lines}?speed=max", "-o", path)
        self.assertEqual(result.returncode, GOOD, result.stderr)
        return path

    def roles(self, command):
        """What the command reads: (where it is given, what it is, how a path is given there)."""
        for positional in command.positionals:
            role = POSITIONALS.get(positional.name) or POSITIONALS_OF[command.name]
            yield positional.name, role, str
        for option in command.options:
            if option.type == "FILE" and option.name not in OUTPUTS:
                yield option.name, INPUTS[option.name], str
            elif option.type == "RADIO":
                yield option.name, "recording", lambda path: f"replay:{path}?speed=max"
                yield option.name, "scene", lambda path: f"simulator:{path}?speed=max"

    def words(self, command, given=None, value=None):
        """A call of the command that ends well and soon, but for the value that is given to one of its words."""
        words = {}
        for place, role, form in self.roles(command):
            if place not in words and (place != "--settings" or place == given):
                words[place] = form(self.paths[role])
        for option in command.options:
            if option.type == "SECONDS" and not option.needs:
                words[option.name] = "60"
        if given is not None:
            words[given] = value
            for needed in command.option(given).needs if given.startswith("-") else []:
                flag = command.option(needed).type is None
                words.setdefault(needed, None if flag else self.paths[INPUTS[needed]])
        flat = [command.name]
        for place, word in words.items():
            flat += [place] if place.startswith("-") else []
            flat += [str(word)] if word is not None else []
        return flat

    def end(self, words, status, *said):
        """The command ends so, and says why under its own name; all of this in its first line."""
        result = subprocess.run([PROGRAM, *words], capture_output=True, stdin=subprocess.DEVNULL, timeout=DEADLINE,
                                check=False, preexec_fn=without_rights)
        error = result.stderr.decode()
        self.assertEqual(result.returncode, status, (words, error))
        if status in (FAILED, USAGE):
            self.assertRegex(error, rf"(?m)^nearcast {words[0]}: ", words)
            for text in said:
                self.assertIn(text, error, words)
        return error

    def for_each_input(self, body):
        for command in self.commands:
            for place, role, form in self.roles(command):
                with self.subTest(command=command.name, place=place, role=role):
                    body(command, place, role, form)

    def for_each_value(self, body, *places):
        """For all that is given a value; or for these alone."""
        seen = 0
        for command in self.commands:
            for place in [one.name for one in command.positionals] + [one.name for one in command.options if one.type]:
                if places and place not in places:
                    continue
                seen += 1
                with self.subTest(command=command.name, place=place):
                    body(command, place)
        self.assertGreater(seen, 3)

    def for_each_command(self, body):
        for command in self.commands:
            with self.subTest(command=command.name):
                body(command)

    def test_what_is_right_is_done(self):
        self.for_each_command(lambda command: self.end(self.words(command), GOOD))

    def test_what_is_done_and_found_wanting(self):
        self.end(["doctor", "--radio", "simulator?speed=max", "--for", "10"], WANTING)

    def test_a_file_that_is_not_there(self):
        path = self.folder / "none"

        def body(command, place, _, form):
            error = self.end(self.words(command, place, form(path)), FAILED, str(path), "No such file or directory")
            self.assertNotIn("--help", error)
        self.for_each_input(body)

    def test_a_folder_in_the_place_of_a_file(self):
        self.for_each_input(lambda command, place, _, form: self.end(
            self.words(command, place, form(self.folder)), FAILED, str(self.folder), "Is a directory"))

    def test_a_file_that_may_not_be_read(self):
        def body(command, place, role, form):
            path = self.write("secret", self.paths[role].read_bytes())
            path.chmod(0)
            self.addCleanup(path.unlink, missing_ok=True)
            self.end(self.words(command, place, form(path)), FAILED, str(path), "Permission denied")
            path.unlink()
        self.for_each_input(body)

    def test_a_file_that_says_something_wrong(self):
        seen = set()

        def body(command, place, role, form):
            for name, spoil, status in WRONG[role]:
                with self.subTest(wrong=name):
                    path = self.write("wrong", spoil(self.paths[role].read_bytes()))
                    error = self.end(self.words(command, place, form(path)), status, str(path))
                    self.assertNotIn("--help", error)
            seen.add(role)
        self.for_each_input(body)
        self.assertEqual(seen, set(WRONG))

    def test_a_recording_that_is_cut_in_any_format(self):
        cut = []
        for ending in (".jsonl", ".btsnoop", ".pcapng", ".jsonl.gz", ".btsnoop.gz", ".pcapng.gz"):
            good = self.recording(ending).read_bytes()
            cut.append(self.write(f"cut{ending}", good[:len(good) * 9 // 10 - 3]))

        def body(command, place, role, form):
            for path in cut if role == "recording" else []:
                with self.subTest(form=path.name):
                    self.end(self.words(command, place, form(path)), FAILED, str(path), "damaged at byte")
        self.for_each_input(body)

    def test_an_output_that_cannot_be_written(self):
        def body(command, place):
            for path in (self.folder / "none" / "out", self.folder):
                self.end(self.words(command, place, path), FAILED, str(path))
        self.for_each_value(body, *OUTPUTS)

    def test_an_empty_value(self):
        self.for_each_value(lambda command, place: self.end(
            self.words(command, place, ""), USAGE, place + ": is empty", f"Try 'nearcast {command.name} --help'."))

    def test_an_empty_value_behind_an_equals_sign(self):
        def body(command, place):
            if place.startswith("--"):
                self.end([command.name, place + "="], USAGE, place + ": is empty",
                         f"Try 'nearcast {command.name} --help'.")
        self.for_each_value(body)

    def test_an_option_without_its_value(self):
        def body(command, place):
            if place.startswith("--"):
                self.end([command.name, place], USAGE, place + " needs a value",
                         f"Try 'nearcast {command.name} --help'.")
        self.for_each_value(body)

    def test_an_option_that_is_unknown(self):
        self.for_each_command(lambda command: self.end(
            [*self.words(command), "--what-is-this"], USAGE, "there is no option '--what-is-this'",
            f"Try 'nearcast {command.name} --help'."))

    def test_a_word_too_many(self):
        def body(command):
            if not any(positional.several for positional in command.positionals):
                self.end([*self.words(command), "this-too"], USAGE, "'this-too'",
                         f"Try 'nearcast {command.name} --help'.")
        self.for_each_command(body)

    def test_a_radio_that_is_unknown_or_has_no_such_option(self):
        def body(command, place):
            for radio in ("carrier-pigeon", "simulator?feed=1", "simulator:", "replay:", "simulator?speed=fast",
                          f"replay:{self.paths['recording']}?as=cows", "hci:x", "bluez:", "", "auto:x"):
                with self.subTest(radio=radio):
                    self.end(self.words(command, place, radio), USAGE, f"radio '{radio}'" if radio else "is empty",
                             f"Try 'nearcast {command.name} --help'.")
        seen = [command for command in self.commands if any(one.name == "--radio" for one in command.options)]
        self.assertGreater(len(seen), 2)
        for command in seen:
            body(command, "--radio")


if __name__ == "__main__":
    main()
