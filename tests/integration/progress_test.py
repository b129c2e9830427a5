# SPDX-License-Identifier: Apache-2.0
"""Commands that take a while say how far they are, on a terminal, and at the end what they wrote, everywhere."""

import json
import os
import pty
import re
import subprocess
import threading

from nearcast_program import DEADLINE, PROGRAM, ProgramTest, main

ADDRESS = "02:4E:43:00:00:01"
RECORDING = "".join(json.dumps({"at": step / 5, "do": "advertise", "manufacturerData": "FFFF024E43000001",
                                "RSSI": -50}) + "\n" for step in range(101))
HEARD = "101 advertisements, 20.0 s"
DRAWN = re.compile("\r\x1b\\[K([^\r\x1b]+)")


def on_a_terminal(words, terminal="xterm", output=subprocess.DEVNULL):
    """What standard error, a terminal, gets; `output` None: standard output is the same terminal."""
    leader, follower = pty.openpty()
    environment = {**os.environ, "TERM": terminal} if terminal is not None else \
        {name: value for name, value in os.environ.items() if name != "TERM"}
    with subprocess.Popen([PROGRAM, *map(str, words)], stdin=subprocess.DEVNULL,
                          stdout=follower if output is None else output, stderr=follower, env=environment) as process:
        os.close(follower)
        timer = threading.Timer(DEADLINE, process.kill)
        timer.start()
        text = b""
        while True:
            try:
                part = os.read(leader, 1 << 16)
            except OSError:  # the other end is closed
                break
            text += part
        status = process.wait()
        timer.cancel()
    os.close(leader)
    return text.decode().replace("\r\n", "\n"), status


def shown(text):
    """What a terminal shows in the end, line by line."""
    lines = []
    for line in text.split("\n"):
        lines.append(re.sub("\x1b\\[K", "", line.rpartition("\r")[2]))
    return lines


class ProgressTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.shop = self.write("shop.jsonl", RECORDING)
        self.truth = self.write("truth.jsonl", json.dumps({"at": 0, "truth": ADDRESS}) + "\n")
        record = {"Device Type": "Printer", "MAC Address": ADDRESS, "Nick Name": "Bar"}
        self.settings = self.write("settings.json", json.dumps({"BT:Bar": record}))
        radio = f"replay:{self.shop}?speed=max"
        out = self.folder
        self.calls = {
            "record": (["record", "--radio", radio, "-o", out / "out.jsonl"], [(out / "out.jsonl", HEARD)]),
            "import": (["import", self.shop, "-o", out / "out.pcapng.gz"], [(out / "out.pcapng.gz", HEARD)]),
            "report": (["report", self.shop, "-o", out / "out.html"], [(out / "out.html", HEARD)]),
            "evaluate": (["evaluate", self.shop, "--truth", self.truth, "--html", out / "rules.html"],
                         [("standard output", f"1 recording, {HEARD}"), (out / "rules.html", f"1 recording, {HEARD}")]),
            "advise": (["evaluate", "--advise", self.shop, "--truth", self.truth, "--settings", self.settings, "--write",
                        out / "out.json"],
                       [("standard output", f"1 recording, {HEARD}"), (out / "out.json", "1 device")]),
            "doctor": (["doctor", "--radio", radio, "--for", "20"], [("standard output", None)]),
        }


class Progress(ProgressTest):
    def told(self, name):
        """The last lines that the call has to say."""
        words, written = self.calls[name]
        return [f"nearcast {words[0]}: wrote {path}: " + (what or "") for path, what in written]

    def assert_told(self, name, lines):
        for line, expected in zip(lines[-len(self.told(name)):], self.told(name)):
            self.assertTrue(line.startswith(expected), lines)
        if name == "doctor":
            self.assertRegex(lines[-1], r": \d+ findings?, 101 advertisements, 20\.0 s$")

    def test_is_drawn_on_a_terminal_and_leaves_what_was_written(self):
        for name, (words, _) in self.calls.items():
            with self.subTest(name=name):
                text, status = on_a_terminal(words)
                self.assertIn(status, (0, 1) if name == "doctor" else (0,), text)
                drawn = DRAWN.findall(text)
                self.assertGreater(len(drawn), 0, text)
                self.assertIn(" s", drawn[0])
                self.assert_told(name, [line for line in shown(text) if line])
                self.assertEqual([line for line in shown(text) if line and not line.startswith("nearcast ")], [])

    def test_is_nothing_elsewhere_but_what_was_written(self):
        for name, (words, _) in self.calls.items():
            with self.subTest(name=name):
                result = subprocess.run([PROGRAM, *map(str, words)], stdin=subprocess.DEVNULL, capture_output=True,
                                        text=True, timeout=DEADLINE, check=False)
                self.assertNotIn("\r", result.stderr)
                self.assertNotIn("\x1b", result.stderr)
                self.assert_told(name, result.stderr.splitlines())
                self.assertEqual(len(result.stderr.splitlines()), len(self.told(name)))

    def test_is_nothing_on_a_terminal_that_cannot_draw_over_a_line(self):
        for terminal in ("dumb", "", None):
            for name, (words, _) in self.calls.items():
                with self.subTest(name=name, terminal=terminal):
                    text, _ = on_a_terminal(words, terminal)
                    self.assertNotIn("\r", text)
                    self.assertNotIn("\x1b", text)
                    self.assert_told(name, text.splitlines())

    def test_stays_out_of_lines_that_go_to_the_terminal(self):
        for words in (["import", self.shop], ["record", "--radio", f"replay:{self.shop}?speed=max"]):
            with self.subTest(command=words[0]):
                text, status = on_a_terminal(words, output=None)
                self.assertEqual(status, 0)
                self.assertEqual(DRAWN.findall(text), [])
                self.assertEqual(text.count('"advertise"'), 101)
                self.assertIn(f"wrote standard output: {HEARD}", text)

    def test_makes_room_for_what_is_wrong(self):
        cut = self.write("cut.jsonl", RECORDING[:-9])
        text, status = on_a_terminal(["import", cut, "-o", self.folder / "out.jsonl"])
        self.assertEqual(status, 1)
        lines = [line for line in shown(text) if line]
        self.assertEqual(lines[0], f"nearcast import: wrote {self.folder / 'out.jsonl'}: 100 advertisements, 19.8 s")
        self.assertIn("damaged at byte", lines[1])


class Terminal(ProgressTest):
    def test_gets_no_page_unless_it_is_asked_for(self):
        text, status = on_a_terminal(["report", self.shop], output=None)
        self.assertEqual(status, 2)
        self.assertIn("name its file with --output", text)
        text, status = on_a_terminal(["report", self.shop, "-o", "-"], output=None)
        self.assertEqual(status, 0, text[-500:])
        self.assertIn("</html>", text)
        result = subprocess.run([PROGRAM, "report", self.shop], stdin=subprocess.DEVNULL, capture_output=True,
                                timeout=DEADLINE, check=False)
        self.assertEqual(result.returncode, 0, result.stderr)

    def test_gets_no_bytes_that_are_no_text(self):
        for form in ("btsnoop", "pcapng", "jsonl.gz"):
            text, status = on_a_terminal(["import", self.shop, "--format", form], output=None)
            self.assertEqual(status, 2)
            self.assertIn("is not for a terminal", text)


if __name__ == "__main__":
    main()
