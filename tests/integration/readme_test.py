# SPDX-License-Identifier: Apache-2.0
"""The commands of the README work as they are pasted, in a checkout."""

import re
import shlex
import subprocess

from nearcast_program import DEADLINE, PROGRAM, ROOT, ProgramTest, commands, main

HEADING = "## On the command line"
# They go on until somebody ends them.
ENDLESS = ("watch", "record")
# What they say depends on the machine: 1 where it has no radio, 3 where something is worth mending.
OF_THE_MACHINE = {"radios": (0,), "doctor": (0, 1, 3), "record": (0, 1)}


def pasted(path, heading):
    """The commands of the first block below a heading, without what is said of them."""
    section = path.read_text(encoding="utf-8").split(f"\n{heading}\n")[1]
    block = re.search(r"```\n(.*?)```", section, re.DOTALL).group(1)
    return [shlex.split(line, comments=True) for line in block.splitlines()]


class ReadmeTest(ProgramTest):
    def run_pasted(self, words):
        self.assertEqual(words[0], "nearcast")
        ended = ["--for", "2"] if words[1] in ENDLESS else []
        return subprocess.run([PROGRAM, *words[1:], *ended], capture_output=True, text=True, timeout=DEADLINE,
                              stdin=subprocess.DEVNULL, cwd=self.folder, check=False)

    def test_its_commands_work_in_their_order(self):
        (self.folder / "examples").symlink_to(ROOT / "examples")
        for words in pasted(ROOT / "README.md", HEADING):
            with self.subTest(command=" ".join(words)):
                done = self.run_pasted(words)
                self.assertIn(done.returncode, OF_THE_MACHINE.get(words[1], (0,)), done.stderr)
                if done.returncode == 0 and "-o" in words:
                    self.assertGreater((self.folder / words[words.index("-o") + 1]).stat().st_size, 0)

    def test_it_shows_every_command(self):
        shown = {words[1] for words in pasted(ROOT / "README.md", HEADING)}
        self.assertEqual(shown, {command.name for command in commands()})


class ScenarioPageTest(ProgramTest):
    def test_its_example_prints_what_it_says(self):
        page = (ROOT / "docs" / "scenarios.md").read_text(encoding="utf-8")
        scenario, printed = re.findall(r"```\n(.*?)```", page, re.DOTALL)[:2]
        self.write("front.jsonl", scenario)
        done = subprocess.run([PROGRAM, "run", "front.jsonl"], capture_output=True, text=True, timeout=DEADLINE,
                              cwd=self.folder, check=True)
        self.assertEqual(done.stdout, printed)

    def test_it_lists_every_line_that_there_is(self):
        page = (ROOT / "docs" / "scenarios.md").read_text(encoding="utf-8")
        listed = re.findall(r"^\| `(\w+)` \|", page.split("## The lines")[1].split("## Time")[0], re.MULTILINE)
        kinds = re.findall(r'Kind\{"(\w+)"', (ROOT / "src" / "lines" / "Line.cpp").read_text(encoding="utf-8"))
        self.assertGreater(len(kinds), 10)
        self.assertEqual(sorted(listed[1:]), sorted(kinds))  # without the head


class SamplesTest(ProgramTest):
    def test_they_can_be_made_anew(self):
        """What the page of the samples says makes files of the same content."""
        page = (ROOT / "examples" / "recordings" / "README.md").read_text(encoding="utf-8")
        for line in re.findall(r"^    (nearcast .*)$", page, re.MULTILINE):
            command = line.replace("nearcast", shlex.quote(PROGRAM), 1)
            subprocess.run(command, shell=True, cwd=self.folder, check=True, capture_output=True, timeout=DEADLINE)
        made = sorted(path.name for path in self.folder.iterdir())
        self.assertEqual(made, ["capture.pcapng.gz", "devices.json", "walk.jsonl.gz", "walk.truth.jsonl"])
        for name in ("devices.json", "walk.truth.jsonl"):
            self.assertEqual((self.folder / name).read_text(), (ROOT / "examples" / "recordings" / name).read_text())
        self.assertEqual(self.heard("walk.jsonl.gz"), self.heard("capture.pcapng.gz"))

    def heard(self, name):
        """How many reports the sample and its new copy hold, which must be as many."""
        counts = set()
        for folder in (self.folder, ROOT / "examples" / "recordings"):
            done = subprocess.run([PROGRAM, "import", folder / name], capture_output=True, text=True, check=True,
                                  timeout=DEADLINE)
            counts.add(done.stdout.count('"advertise"'))
        self.assertEqual(len(counts), 1, counts)
        return counts.pop()


if __name__ == "__main__":
    main()
