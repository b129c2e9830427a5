# SPDX-License-Identifier: Apache-2.0
"""nearcast watch on a terminal: of any width and kind, stopped and continued, made larger and smaller."""

import codecs
import fcntl
import os
import pty
import re
import select
import signal
import struct
import subprocess
import termios
import time
import unicodedata

from nearcast_program import DEADLINE, PROGRAM, ProgramTest, main

LINE = '{"at": %.1f, "do": "advertise", "manufacturerData": "FFFF0200000000%02X", "RSSI": %d}\n'
SETTINGS = """{"BT:Front Desk": {"Device Type": "Printer", "MAC Address": "02:00:00:00:00:00"},
               "厨房打印机一二三四五六七八九十": {"Device Type": "Printer", "MAC Address": "02:00:00:00:00:01"}}"""


def width(text):
    return sum(2 if unicodedata.east_asian_width(character) in "WF" else 1 for character in text)


class Terminal:
    """What a terminal shows: its lines, and all that has scrolled out above them."""

    def __init__(self, rows=24, columns=80, kind="xterm"):
        self.leader, self.follower = pty.openpty()
        self.kind = kind
        self.rows = rows
        self.resize(rows, columns)
        self.lines = [""]
        self.place = 0  # of the cursor, which always stands at a line's begin between two writes
        self.raw = ""
        self.decoder = codecs.getincrementaldecoder("utf-8")()

    def resize(self, rows, columns):
        self.rows = rows
        fcntl.ioctl(self.follower, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))

    def start(self, *arguments):
        """A job of its own in this session, as a shell starts one: it may be stopped."""
        environment = {**os.environ, "TERM": self.kind}
        if self.kind is None:
            del environment["TERM"]
        return subprocess.Popen([PROGRAM, *map(str, arguments)], stdin=subprocess.DEVNULL, stdout=self.follower,
                                stderr=self.follower, env=environment, process_group=0)

    def write(self, text):
        """What another program, such as a shell, writes."""
        os.write(self.follower, text.encode())

    def take(self, within):
        """Takes what comes within so many seconds; whether anything has."""
        if not select.select([self.leader], [], [], within)[0]:
            return False
        text = self.decoder.decode(os.read(self.leader, 1 << 20)).replace("\r", "")  # before each line feed
        self.raw += text
        for part in re.findall(r"\x1b\[\d*[A-Za-z]|\n|[^\x1b\n]+", text):
            self.draw(part)
        return True

    def draw(self, part):
        top = max(0, len(self.lines) - self.rows)
        if part == "\n":
            self.place += 1
            if self.place == len(self.lines):
                self.lines.append("")
        elif part == "\x1b[J":
            del self.lines[self.place:]
            self.lines.append("")
        elif part == "\x1b[H":
            self.place = top
        elif part.startswith("\x1b["):
            up = re.fullmatch(r"\x1b\[(\d+)A", part)
            assert up, f"an unknown move: {part!r}"
            self.place = max(top, self.place - int(up.group(1)))
        else:
            self.lines[self.place] += part

    def is_whole(self):
        """Whether a drawing has come to its end."""
        return len(self.lines) > 1 and self.lines[-1] == "" and "Ctrl-C ends." in self.lines[-2]

    def until(self, what, description):
        end = time.monotonic() + DEADLINE
        while not what():
            if time.monotonic() > end or not self.take(1) and time.monotonic() > end:
                raise AssertionError(f"{description}: {self.text()}")

    def text(self):
        return "\n".join(self.lines)

    def close(self):
        os.close(self.leader)
        os.close(self.follower)


def is_stopped(process):
    with open(f"/proc/{process.pid}/stat", encoding="ascii") as stat:
        return stat.read().rpartition(")")[2].split()[0] == "T"


class OnATerminal(ProgramTest):
    def setUp(self):
        super().setUp()
        lines = [LINE % (at / 10, number, -50 - number) for at in range(1200) for number in range(5)]
        self.recording = self.write("shop.jsonl", "".join(lines))
        self.settings = self.write("settings.json", SETTINGS)

    def terminal(self, *size, kind="xterm"):
        terminal = Terminal(*size, kind=kind)
        self.addCleanup(terminal.close)
        return terminal

    def watch(self, terminal, *more, speed="max"):
        process = terminal.start("watch", "--radio", f"replay:{self.recording}?speed={speed}", "--settings",
                                 self.settings, *more)

        def end():
            if process.poll() is None:
                process.kill()
            process.wait()
        self.addCleanup(end)
        return process

    def shown(self, terminal, *more):
        """All that a watch writes until its end."""
        process = self.watch(terminal, "--for", "4", *more)
        terminal.until(lambda: process.poll() is not None, "it does not end")
        while terminal.take(0.1):
            pass
        self.assertEqual(process.returncode, 0, terminal.raw)
        return terminal.raw


class Kinds(OnATerminal):
    def test_one_that_cannot_move_its_cursor_gets_lines(self):
        output = self.shown(self.terminal(24, 80, kind="dumb"))
        self.assertNotIn("\x1b", output)
        self.assertNotIn("PORT", output)
        self.assertRegex(output, r"(?m)^ +\d+\.\d{3} s  BT:Front Desk +02:00:00:00:00:00  printer")

    def test_any_other_gets_the_table(self):
        for kind in ("xterm", "dumber", "", None):
            with self.subTest(kind):
                self.assertIn("\x1b[", self.shown(self.terminal(24, 80, kind=kind)))


class Widths(OnATerminal):
    def test_no_line_is_longer_than_the_terminal(self):
        for columns in (20, 36, 37, 40, 55, 64, 79, 80, 81, 120, 200):
            with self.subTest(columns):
                output = self.shown(self.terminal(24, columns))
                drawn = re.sub("\x1b\\[\\d*[A-Z]", "", output).split("\n")
                table = [line for line in drawn if "fell silent" not in line]
                self.assertEqual([line for line in table if width(line) >= columns], [])
                self.assertTrue(any(line.startswith("BT:Front") and " dBm" in line for line in table), output[-500:])

    def test_at_80_columns_the_age_stays(self):
        output = self.shown(self.terminal(24, 80))
        self.assertRegex(output, r"BT:Front Desk +printer +02:00:00:00:00:00 +-\d+ dBm [#.]+ +\d+\.\d s")

    def test_a_terminal_of_few_rows_is_never_drawn_over_its_upper_edge(self):
        for rows in (2, 3, 5, 8, 9):
            with self.subTest(rows):
                ups = [int(up) for up in re.findall("\x1b\\[(\\d+)A", self.shown(self.terminal(rows, 80)))]
                self.assertTrue(ups)
                self.assertLess(max(ups), rows)


class Stopped(OnATerminal):
    SHELL = ["[1]+  Stopped", "$ ls", "one two", "$ fg", "nearcast watch"]

    def tables(self, terminal):
        """The lines from the last of the shell's on, and how many tables stand in all."""
        text = terminal.text()
        return text.rpartition(self.SHELL[-1])[2], text.count("PORT ")

    def stop(self, process, terminal, by):
        process.send_signal(by)
        terminal.until(lambda: is_stopped(process), "it does not stop")
        while terminal.take(0.05):
            pass
        return terminal.text()

    def go_on(self, process, terminal):
        terminal.write("".join(line + "\n" for line in self.SHELL))
        process.send_signal(signal.SIGCONT)
        for _ in range(3):  # and then it goes on
            terminal.until(lambda: terminal.take(1), "nothing is drawn any more")
        terminal.until(lambda: "PORT" in self.tables(terminal)[0] and terminal.is_whole(), "nothing is drawn")

    def test_and_continued_it_draws_the_whole_table_below_what_the_shell_wrote(self):
        for by in (signal.SIGTSTP, signal.SIGSTOP):
            with self.subTest(by):
                terminal = self.terminal(40, 80)
                process = self.watch(terminal, speed="1")
                terminal.until(lambda: "02:00:00:00:00:04" in terminal.text(), "no table")
                for turn in range(1, 4):
                    before = self.stop(process, terminal, by)
                    self.assertIn("Ctrl-C ends.", before, "the table stays on the screen")
                    self.go_on(process, terminal)
                    below, tables = self.tables(terminal)
                    self.assertEqual(tables, turn + 1, terminal.text())
                    for part in ("PORT", "BT:Front Desk", "02:00:00:00:00:04", "Radio powered on", "Ctrl-C ends."):
                        self.assertEqual(below.count(part), 1, terminal.text())
                    for line in self.SHELL:
                        self.assertEqual(terminal.lines.count(line), turn, terminal.text())
                process.send_signal(signal.SIGINT)
                terminal.until(lambda: process.poll() is not None, "it does not end")
                self.assertEqual(process.returncode, 0)

    def test_it_ends_by_ctrl_c_after_that(self):
        terminal = self.terminal(24, 80)
        process = self.watch(terminal, speed="1")
        terminal.until(lambda: "Ctrl-C ends." in terminal.text(), "no table")
        self.stop(process, terminal, signal.SIGTSTP)
        process.send_signal(signal.SIGCONT)
        process.send_signal(signal.SIGTERM)
        terminal.until(lambda: process.poll() is not None, "it does not end")
        self.assertEqual(process.returncode, 0)


class AsAJob(OnATerminal):
    """By a shell that has a terminal of its own, with its keys."""

    def setUp(self):
        super().setUp()
        self.shell, self.leader = pty.fork()
        if self.shell == 0:
            os.environ.update({"TERM": "xterm", "PS1": "ready> ", "ENV": ""})
            os.execvp("sh", ["sh", "-i"])

    def tearDown(self):
        os.close(self.leader)  # which hangs up
        os.waitpid(self.shell, 0)
        super().tearDown()

    def hear(self, within):
        """What is written in so many seconds."""
        heard, end = b"", time.monotonic() + within
        while select.select([self.leader], [], [], max(0, end - time.monotonic()))[0]:
            heard += os.read(self.leader, 1 << 20)
        return heard.decode("utf-8", "replace")

    def await_text(self, text):
        said, end = "", time.monotonic() + DEADLINE
        while text not in said:
            self.assertLess(time.monotonic(), end, f"{text!r} does not come: {said}")
            said += self.hear(0.05)
        return said

    def type(self, text):
        os.write(self.leader, text.encode())

    def test_it_is_stopped_by_its_key_and_draws_nothing_from_the_background(self):
        self.await_text("ready> ")
        self.type(f"{PROGRAM} watch --radio 'replay:{self.recording}'\n")
        self.await_text("Ctrl-C ends.")
        self.type("\x1a")
        self.await_text("ready> ")
        self.type("bg\n")
        self.await_text("ready> ")
        self.assertEqual(self.hear(1), "")
        self.type("fg\n")
        drawn = self.await_text("Ctrl-C ends.")
        self.assertEqual(drawn.count("PORT"), 1, drawn)
        self.assertNotIn("\x1b[", drawn.partition("PORT")[0], "it draws over what the shell has written")
        self.type("\x03")
        self.assertIn("fell silent.", self.await_text("ready> "))
        self.type("echo status=$?\n")
        self.await_text("status=0")


class Resized(OnATerminal):
    def test_the_table_is_drawn_anew_in_the_new_size(self):
        terminal = self.terminal(24, 120)
        process = self.watch(terminal, speed="1")
        terminal.until(lambda: "Ctrl-C ends." in terminal.text(), "no table")
        for columns in (50, 200, 33, 80):
            terminal.until(terminal.is_whole, "the table is not whole")
            terminal.raw = ""
            terminal.resize(24, columns)
            process.send_signal(signal.SIGWINCH)
            terminal.until(lambda: "PORT" in terminal.raw and terminal.is_whole(), "nothing is drawn")
            self.assertEqual(terminal.text().count("PORT "), 1, terminal.text())
            drawn = terminal.raw.rpartition("PORT ")[2].split("\n")
            self.assertLess(max(map(width, drawn[1:])), columns)


if __name__ == "__main__":
    main()
