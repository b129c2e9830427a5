# SPDX-License-Identifier: Apache-2.0
"""Whatever command reads it, broken JSON is refused in one wording: one line, one column, no words of a library."""

import re
import subprocess

from nearcast_program import DEADLINE, PROGRAM, ProgramTest, commands, main

ADDRESS = "02:4E:43:00:00:01"
LINE = '{"at": %.1f, "do": "advertise", "manufacturerData": "FFFF024E43000001", "RSSI": -60}\n'
HEARD = "".join(LINE % (at / 10) for at in range(100))
TRUTH = '{"at": 0, "truth": "%s"}\n' % ADDRESS
NOWHERE = '{"at": 0, "truth": null}\n'

# What is broken, and where: line, column in characters, and what is said. A brace in front is what recordings
# are told from captures by.
BROKEN = {
    "empty": (b"", None),
    "blank": (b" \n\t\n", None),
    "truncated": (b'{"a": 1', "line 1, column 8: it breaks off here"),
    "truncated before line feeds": (b'{"a": 1\n\n\n', "line 1, column 8: it breaks off here"),
    "a bare word": (b'{"a": oops}', "line 1, column 7: 'o' is not expected here"),
    "after other letters": ('{"äöü€😀": oops}'.encode(), "line 1, column 11: 'o' is not expected here"),
    "behind a byte order mark": (b'\xef\xbb\xbf{"a": oops}', "line 1, column 7: 'o' is not expected here"),
    "trailing text": (b'{"a": 1} x', "line 1, column 10: nothing may follow the value"),
    "a comma too many": (b'{"a": 1,}', "line 1, column 9: '}' is not expected here"),
    "single quotes": (b"{'a': 1}", "line 1, column 2: ''' is not expected here"),
    "a comment": (b'{"a": 1 // one\r', "line 1, column 9: '/' is not expected here"),
    "a zero octet": (b'{"a": "\0"}', "line 1, column 8: a zero octet stands in the text"),
    "no UTF-8": (b'{"a": "\xff"}', "line 1, column 8: what stands here is not UTF-8"),
    "a control character": (b'{"a": "\x1b[2J"}', "line 1, column 8: a control character has to be an escape"),
    "a number too large": (b'{"a": 1e999}', "line 1, column 7: the number is too large"),
    "a lone surrogate": (b'{"a": "\\ud800"}', "line 1, column 14: '\"' is not expected here"),
    "nested without end": (b'{"a": ' + b"[" * 100000, None),
    "nested too deep": (b'{"a": ' + b"[" * 600, "line 1, column 518: objects and lists lie deeper than 512 levels"),
    "nested and closed": (b'{"a":' * 600 + b"1" + b"}" * 600,
                          "line 1, column 2561: objects and lists lie deeper than 512 levels"),
}
FOREIGN = ("json.exception", "[json", "parse_error", "syntax error", "while parsing", "last read", "literal",
           "nlohmann", "terminate")
FILES = {"heard.jsonl": HEARD, "heard.truth.jsonl": TRUTH, "broken.truth.jsonl": NOWHERE, "settings.json": "{}"}
READERS = ("--settings", "--truth")
ORDINARY = {"FILE": "settings.json", "RADIO": "replay:heard.jsonl?speed=max", "SECONDS": "8"}


def ordinary(command, but=None):
    """What a command is given beside the file that is broken, so that it ends soon."""
    words = ["heard.jsonl"] if command.positionals and but != "FILE" else []
    always = [option for option in command.options if option.type in ("RADIO", "SECONDS") and option.needs == []]
    return words + [f"{option.name}={ORDINARY[option.type]}" for option in always if option.name != but]


def readings():
    """The commands, each with every way in which it reads JSON: the whole of a file, or one of its lines."""
    for command in commands():
        for option in command.options:
            if option.name in READERS and option.type == "FILE":
                yield command.name, [f"{option.name}=broken"] + ordinary(command)
            if option.type == "RADIO":
                for radio in ("simulator:broken?speed=max", "replay:broken?speed=max"):
                    yield command.name, [f"{option.name}={radio}"] + ordinary(command, option.name)
        for _ in command.positionals:
            yield command.name, ["broken"] + ordinary(command, "FILE")


class BrokenJSON(ProgramTest):
    def setUp(self):
        super().setUp()
        for name, content in FILES.items():
            self.write(name, content)

    def said(self, command, arguments):
        result = subprocess.run([PROGRAM, command, *arguments], cwd=self.folder, capture_output=True, timeout=DEADLINE,
                                stdin=subprocess.DEVNULL, check=False)
        self.assertIn(result.returncode, (0, 1, 2, 3), (command, arguments))
        findings = result.stdout if command == "doctor" else b""  # where a radio that cannot be opened is one of them
        return result.returncode, (findings + result.stderr).decode("utf-8")

    def test_is_refused_in_one_wording_by_every_command_that_reads_it(self):
        ways = list(readings())
        self.assertGreater(len(ways), 12)
        for name, (content, problem) in BROKEN.items():
            self.write("broken", content)
            for command, arguments in ways:
                with self.subTest(broken=name, command=command, arguments=arguments):
                    status, text = self.said(command, arguments)
                    self.assertEqual([word for word in FOREIGN if word in text], [], text)
                    if problem is None:
                        continue
                    self.assertNotEqual(status, 0, text)
                    places = re.findall(r"line \d+, column \d+", text)
                    self.assertEqual(len(places), 1, text)
                    self.assertEqual(len(re.findall(r"\bline\b", re.sub("before its line", "", text))), 1, text)
                    self.assertIn(f"not JSON at {problem}", text)
                    self.assertIn("broken: ", text)

    def test_of_lines_has_the_files_own_line(self):
        lines = [way for way in readings() if not any("--settings" in word or "simulator" in word for word in way[1])]
        self.assertGreater(len(lines), 6)
        for command, arguments in lines:
            truth = any("--truth" in word for word in arguments)
            self.write("broken", (TRUTH if truth else LINE % 0) + "\n\n{oops}\n")
            with self.subTest(command=command, arguments=arguments):
                if command == "scene":  # which reads no lines
                    continue
                _, text = self.said(command, arguments)
                self.assertEqual(text.count("not JSON at line 4, column 2: 'o' is not expected here"), 1, text)


if __name__ == "__main__":
    main()
