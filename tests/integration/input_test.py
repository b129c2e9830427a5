# SPDX-License-Identifier: Apache-2.0
"""Every command that reads recordings knows them by their content, however they come: files, pipes, packed by gzip."""

import gzip
import json
import os
import signal
import struct
import subprocess
import threading
import time

from nearcast_program import DEADLINE, PROGRAM, ProgramTest, commands, main, nearcast

ADDRESS = "02:4E:43:00:00:01"
LINES = [json.dumps({"at": step / 5, "do": "advertise", "name": None, "manufacturerData": "FFFF024E43000001",
                     "RSSI": -50}) + "\n" for step in range(100)]
RECORDING = "".join(LINES).encode()
TRUTH = json.dumps({"at": 0, "truth": ADDRESS}) + "\n"


class InputTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.truth = self.write("truth.jsonl", TRUTH)

    def readers(self):
        """Calls of each command that reads recordings, to be completed with the name of one."""
        for command in commands():
            options = {option.name for option in command.options}
            if command.positionals and command.name != "scene":
                rest = ["--truth", self.truth] if command.name == "evaluate" else []
                yield command.name, lambda name, command=command, rest=rest: [command.name, name, *rest]
            if "--radio" in options:
                rest = (["--json"] if "--json" in options else []) + (["--for", "30"] if command.name == "doctor" else [])
                yield command.name, lambda name, command=command, rest=rest: [
                    command.name, "--radio", f"replay:{name}" + ("&" if "?" in name.replace("\\?", "") else "?") +
                    "speed=max", *rest]

    def run_with(self, words, **streams):
        return subprocess.run([PROGRAM, *map(str, words)], capture_output=True, timeout=DEADLINE, check=False, **streams)

    def from_a_pipe(self, words, path, content):
        """The call, with a pipe under this name that somebody else writes."""
        os.mkfifo(path)
        writer = threading.Thread(target=lambda: path.write_bytes(content))
        writer.start()
        result = self.run_with(words, stdin=subprocess.DEVNULL)
        writer.join()
        path.unlink()
        return result

    def outcome(self, result):
        """What a command found, without the names of its input and of the moment."""
        text = result.stdout.decode()
        for name in ("standard input", "/dev/stdin", str(self.folder)):
            text = text.replace(name, "")
        return result.returncode, len(text.splitlines()), text.count(ADDRESS), text.count("advertise")


class Input(InputTest):
    def test_is_read_however_it_comes(self):
        plain, packed = self.write("plain.jsonl", RECORDING), self.write("odd.name", gzip.compress(RECORDING))
        members = self.write("members", b"".join(gzip.compress(line.encode()) for line in LINES))
        seen = []
        for name, words in self.readers():
            expected = self.run_with(words(str(plain)), stdin=subprocess.DEVNULL)
            self.assertIn(expected.returncode, (0, 1) if name == "doctor" else (0,), expected.stderr)
            ways = {"gzip": lambda: self.run_with(words(str(packed)), stdin=subprocess.DEVNULL),
                    "members": lambda: self.run_with(words(str(members)), stdin=subprocess.DEVNULL),
                    "-": lambda: self.run_with(words("-"), input=RECORDING),
                    "- gzip": lambda: self.run_with(words("-"), input=gzip.compress(RECORDING)),
                    "/dev/stdin": lambda: self.run_with(words("/dev/stdin"), input=RECORDING),
                    "pipe": lambda: self.from_a_pipe(words(str(self.folder / "pipe")), self.folder / "pipe", RECORDING),
                    "pipe gzip": lambda: self.from_a_pipe(words(str(self.folder / "pipe")), self.folder / "pipe",
                                                          gzip.compress(RECORDING))}
            for way, call in ways.items():
                with self.subTest(command=name, way=way):
                    result = call()
                    self.assertEqual(self.outcome(result), self.outcome(expected), result.stderr)
            seen.append(name)
        self.assertGreaterEqual(len(seen), 7, seen)

    def test_every_format_is_read_by_every_command(self):
        lines = self.write("plain.jsonl", RECORDING)
        for form in ("btsnoop", "pcapng", "pcapng.gz"):
            made = self.folder / f"made.{form}"
            self.assertEqual(nearcast("import", lines, "-o", made).returncode, 0)
            unnamed = made.rename(self.folder / "unnamed")
            for name, words in self.readers():
                with self.subTest(command=name, form=form):
                    expected = self.run_with(words(str(lines)), stdin=subprocess.DEVNULL)
                    result = self.run_with(words(str(unnamed)), stdin=subprocess.DEVNULL)
                    self.assertEqual(self.outcome(result), self.outcome(expected), result.stderr)

    def test_a_question_mark_in_a_name_is_escaped(self):
        self.write("what?.jsonl", RECORDING)
        escaped = str(self.folder / "what\\?.jsonl")
        for name, words in self.readers():
            with self.subTest(command=name):
                given = words(escaped)
                if name == "run":
                    given = ["run", self.folder / "what?.jsonl"]  # where no options can follow
                result = self.run_with(given, stdin=subprocess.DEVNULL)
                self.assertIn(result.returncode, (0, 1) if name == "doctor" else (0,), result.stderr)

    def test_standard_input_is_read_once_only(self):
        for words in (["run", "-", "-"], ["evaluate", "-", "-", "--truth", self.truth, "--truth", self.truth],
                      ["report", "-", "--truth", "-"]):
            with self.subTest(words=words):
                result = self.run_with(words, input=RECORDING)
                self.assertEqual(result.returncode, 2, result.stderr)
                self.assertIn(b"standard input can be read once only", result.stderr)

    def test_a_recording_on_standard_input_needs_its_truth(self):
        result = self.run_with(["evaluate", "-"], input=RECORDING)
        self.assertIn(b"name a file with --truth", result.stderr)


class Damage(InputTest):
    def assert_damaged(self, words, path):
        result = self.run_with(words(str(path)), stdin=subprocess.DEVNULL)
        # Doctor says how the radio was; that its recording ended is no fault of it.
        self.assertIn(result.returncode, (0, 1) if words("x")[0] == "doctor" else (1,), result.stderr)
        self.assertIn(path.name + ": damaged at byte ", result.stderr.decode())
        return result

    def test_a_packed_recording_that_is_cut_is_used_up_to_there(self):
        path = self.write("cut.jsonl.gz", gzip.compress(RECORDING)[:-5])
        for name, words in self.readers():
            with self.subTest(command=name):
                result = self.assert_damaged(words, path)
                self.assertIn(b"the gzip data end before their end", result.stderr)
                if name in ("watch", "doctor", "report"):
                    self.assertIn(ADDRESS.encode(), result.stdout)
                elif name in ("record", "import"):
                    self.assertGreater(result.stdout.count(b"advertise"), 80)

    def test_a_recording_that_is_cut_gives_a_page_whatever_its_format(self):
        whole = self.write("whole.jsonl", RECORDING)
        for form in ("jsonl", "btsnoop", "pcapng", "jsonl.gz", "btsnoop.gz", "pcapng.gz"):
            with self.subTest(form=form):
                made = self.folder / f"made.{form}"
                self.assertEqual(nearcast("import", whole, "-o", made).returncode, 0)
                cut, page = self.write(f"cut.{form}", made.read_bytes()[:-9]), self.folder / "page.html"
                result = nearcast("report", cut, "-o", page)
                self.assertEqual(result.returncode, 1, result.stderr)
                self.assertIn(f"cut.{form}: damaged at byte ", result.stderr)
                self.assertIn(f"wrote {page}: ", result.stderr)
                self.assertIn(ADDRESS, page.read_text(encoding="utf-8"))
                page.unlink()

    def test_what_is_packed_twice_is_refused(self):
        path = self.write("twice.gz", gzip.compress(gzip.compress(RECORDING)))
        for name, words in self.readers():
            with self.subTest(command=name):
                result = self.run_with(words(str(path)), stdin=subprocess.DEVNULL)
                self.assertNotEqual(result.returncode, 0)
                self.assertIn(b"is packed by gzip more than once", result.stderr)

    def test_little_that_unpacks_to_much_needs_little_memory(self):
        member = gzip.compress(b" " * (64 << 20))
        path = self.write("bomb.gz", gzip.compress(LINES[0].encode()) + 4 * member)
        self.assertLess(path.stat().st_size, 1 << 20)
        script = 'ulimit -v 200000; exec "$0" import "$1" -o "$2"'
        if "asan" in PROGRAM or "tsan" in PROGRAM:
            self.skipTest("sanitizers take memory of their own")
        result = subprocess.run(["bash", "-c", script, PROGRAM, path, self.folder / "out.jsonl"], capture_output=True,
                                text=True, timeout=DEADLINE, stdin=subprocess.DEVNULL, check=False)
        self.assertEqual(result.returncode, 1, result.stderr)
        self.assertIn("a line of more than 1048576 bytes", result.stderr)
        self.assertEqual((self.folder / "out.jsonl").read_text(), LINES[0])


def packets_of(pcapng):
    """Times in microseconds and packets of a file of one section in little endian: a reader beside ours."""
    place = 0
    while place < len(pcapng):
        kind, length = struct.unpack_from("<II", pcapng, place)
        assert struct.unpack_from("<I", pcapng, place + length - 4)[0] == length, place
        body = pcapng[place + 8:place + length - 4]
        if kind == 6:
            interface, high, low, captured, original = struct.unpack_from("<IIIII", body)
            assert interface == 0 and captured == original
            yield high << 32 | low, body[20:20 + captured]
        place += length


class Interrupted(InputTest):
    """A pipe that is read and stays silent."""

    def test_a_command_that_waits_for_a_pipe_ends_at_the_first_signal(self):
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        for command in ("watch", "record"):
            for content in (None, RECORDING, gzip.compress(RECORDING)[:-40]):
                with self.subTest(command=command, content=content and content[:2]):
                    words = [PROGRAM, command, "--radio", f"replay:{pipe}?speed=max"]
                    with subprocess.Popen(words, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
                        writer = os.open(pipe, os.O_WRONLY) if content else None
                        if content:
                            os.write(writer, content)
                            process.stdout.readline()  # of what has come so far
                        else:
                            self.await_signals(process)
                        process.send_signal(signal.SIGINT)
                        _, problems = process.communicate(timeout=DEADLINE)
                        if writer is not None:
                            os.close(writer)
                    self.assertEqual(process.returncode, 0, problems)

    def await_signals(self, process):
        """Until it leaves the signal to who watches for it."""
        mask, end = 0, time.monotonic() + DEADLINE
        while not mask & 1 << (signal.SIGINT - 1):
            self.assertLess(time.monotonic(), end)
            with open(f"/proc/{process.pid}/status", encoding="ascii") as status:
                mask = next(int(line.split()[1], 16) for line in status if line.startswith("SigBlk:"))


class Output(InputTest):
    def test_a_pcapng_is_what_others_read(self):
        made = self.folder / "made.pcapng"
        self.assertEqual(nearcast("import", self.write("plain.jsonl", RECORDING), "-o", made).returncode, 0)
        packets = list(packets_of(made.read_bytes()))
        notes = [bytes for _, bytes in packets if bytes[:4] == b"\xff\xff\x00\x0c"]
        events = [(at, bytes) for at, bytes in packets if bytes[:4] == b"\x00\x00\x00\x03"]
        self.assertEqual(notes, [b"\xff\xff\x00\x0cnearcast: begin\0"])
        self.assertEqual([at for at, _ in events], [step * 200_000 for step in range(100)])
        for _, event in events:
            self.assertEqual(event[4], 0x3E)
            self.assertEqual(event[5], len(event) - 6)
            self.assertIn(bytes.fromhex("09FFFFFF024E43000001"), event)

    def test_the_date_of_a_capture_is_kept(self):
        begin = 1_700_000_000_123_456
        record = struct.pack(">IIIIQ", 16, 16, 0xFFFF000C, 0, 0x00DCDDB30F2F8000 + begin) + b"nearcast: begin\0"
        capture = self.write("dated", b"btsnoop\0" + struct.pack(">II", 1, 2001) + record +
                             record.replace(b"begin\0", b"end\0\0\0"))
        for form in ("btsnoop", "pcapng"):
            made = self.folder / f"made.{form}"
            self.assertEqual(nearcast("import", capture, "-o", made).returncode, 0)
            content = made.read_bytes()
            if form == "pcapng":
                self.assertEqual([at for at, _ in packets_of(content)], [begin, begin])
            else:
                self.assertEqual(content.count(struct.pack(">Q", 0x00DCDDB30F2F8000 + begin)), 2)

    def test_endings_choose_in_any_case_and_contents_are_the_same(self):
        plain = self.write("plain.jsonl", RECORDING)
        again = [nearcast("import", plain).stdout]
        for name, begin in (("a.JSONL", b"{"), ("b.Btsnoop", b"btsnoop\0"), ("c.PCAPNG", b"\n\r\r\n"),
                            ("d.jsonl.GZ", b"\x1f\x8b"), ("e.btsnoop.gz", b"\x1f\x8b"), ("f.PcapNG.Gz", b"\x1f\x8b")):
            for words in (["import", plain], ["record", "--radio", f"replay:{plain}?speed=max"]):
                with self.subTest(name=name, command=words[0]):
                    result = nearcast(*words, "-o", self.folder / name)
                    self.assertEqual(result.returncode, 0, result.stderr)
                    self.assertTrue((self.folder / name).read_bytes().startswith(begin))
                    if words[0] == "import":
                        again.append(nearcast("import", self.folder / name).stdout)
        self.assertEqual(len(set(again)), 1)

    def test_endings_that_are_not_known_are_refused(self):
        plain = self.write("plain.jsonl", RECORDING)
        for words in (["import", plain], ["record", "--radio", f"replay:{plain}?speed=max"]):
            for name in ("a.txt", "a.pcap", "a.json", "a.gz", "a.jsonl.bz2"):
                with self.subTest(command=words[0], name=name):
                    result = nearcast(*words, "-o", self.folder / name)
                    self.assertEqual(result.returncode, 2, result.stderr)
                    self.assertIn("its ending says no format", result.stderr)
                    self.assertFalse((self.folder / name).exists())
            for more in (["-o", ""], ["--format", ""], ["--format", "pcap"], ["-o", "a.jsonl", "--format", "btsnoop"]):
                with self.subTest(command=words[0], more=more):
                    self.assertEqual(nearcast(*words, *more).returncode, 2)

    def test_standard_output_gets_what_the_option_says(self):
        plain = self.write("plain.jsonl", RECORDING)
        for words in (["import", plain], ["record", "--radio", f"replay:{plain}?speed=max"]):
            for form in ("jsonl", "btsnoop", "pcapng", "jsonl.gz", "btsnoop.gz", "pcapng.gz"):
                for output in ([], ["-o", "-"]):
                    with self.subTest(command=words[0], form=form, output=output):
                        made = self.run_with([*words, *output, "--format", form], stdin=subprocess.DEVNULL)
                        self.assertEqual(made.returncode, 0, made.stderr)
                        read = self.run_with(["import", "-"], input=made.stdout)
                        self.assertEqual(read.stdout.count(b"advertise"), 100)

    def test_a_packed_recording_that_was_killed_plays_up_to_there(self):
        for form in ("jsonl.gz", "pcapng.gz"):
            path = self.folder / f"killed.{form}"
            with subprocess.Popen([PROGRAM, "record", "--radio", "simulator?speed=20", "-o", path],
                                  stderr=subprocess.DEVNULL) as process:
                while not path.exists() or path.stat().st_size < 3000:
                    self.assertIsNone(process.poll())
                process.kill()
            result = nearcast("import", path)
            self.assertEqual(result.returncode, 1)
            self.assertIn("the gzip data end before their end", result.stderr)
            self.assertGreaterEqual(len(result.stdout.splitlines()), 50)


if __name__ == "__main__":
    main()
