# SPDX-License-Identifier: Apache-2.0
"""What the tests of the command line share: the program, the recordings of others, a folder of their own."""

import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

PROGRAM = os.environ["NEARCAST_PROGRAM"]
ROOT = pathlib.Path(__file__).resolve().parents[2]
DATA = ROOT.parent / "shared" / "data"
DEADLINE = 60  # seconds; far beyond what any of these takes


def nearcast(*arguments, timeout=DEADLINE, **options):
    """Runs the program to its end."""
    return subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, text=True, timeout=timeout,
                          stdin=subprocess.DEVNULL, **options)


def events(output, *kinds):
    """The events of these kinds in JSON Lines."""
    return [event for event in map(json.loads, output.splitlines()) if event["event"] in kinds]


def data_of(page):
    """The data that a page carries."""
    return json.loads(re.search(r'<script type="application/json" id="data">(.*?)</script>', page, re.DOTALL).group(1))


def recording(*names):
    """A recording made by others; where it is not there the test is skipped, loudly."""
    path = DATA.joinpath(*names)
    if not path.exists():
        print(f"\n*** NOT TESTED: {path} is not there ***", file=sys.stderr)
        raise unittest.SkipTest(f"{path} is not there")
    return path


class ProgramTest(unittest.TestCase):
    """A test with a folder of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, name, content):
        path = self.folder / name
        if isinstance(content, bytes):
            path.write_bytes(content)
        else:
            path.write_text(content, encoding="utf-8")
        return path


class Option:
    """An option or a positional of a command, as its help names it."""

    def __init__(self, names, rest):
        self.name = names.split(",")[-1]
        word = rest.split()[0] if rest else ""
        self.type = None if word in ("", "Excludes:", "Needs:") else re.sub("=.*", "", word)  # without its default
        self.several = "..." in rest.split()
        self.needs = re.findall(r"--[\w-]+", re.split("Excludes:", rest.partition("Needs:")[2])[0])


class Command:
    """A command of the program with all that may be given to it, read from its help."""

    def __init__(self, name):
        self.name = name
        text = nearcast(name, "--help").stdout
        self.positionals = [Option(*found) for found in re.findall(r"^  ([A-Z]+) (\S.*?)(?:  |$)", text, re.MULTILINE)]
        named = re.findall(r"^  (-\S+)[ ]?(\S.*?)?(?:  |$)", text, re.MULTILINE)
        self.options = [option for option in (Option(*found) for found in named) if option.name != "--help"]

    def option(self, name):
        return next(option for option in self.options if option.name == name)


def commands():
    """All commands: a new one is found by itself."""
    listed = nearcast("--help").stdout.partition("Commands:\n")[2].partition("\n\n")[0]
    return [Command(name) for name in re.findall(r"^  (\w+)", listed, re.MULTILINE)]


def main():
    """Runs the tests of the calling file; exit status 77 when some were skipped and none failed."""
    program = unittest.main(module="__main__", exit=False, verbosity=2)
    if not program.result.wasSuccessful():
        sys.exit(1)
    sys.exit(77 if program.result.skipped else 0)
