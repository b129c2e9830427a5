# SPDX-License-Identifier: Apache-2.0
"""Builds mutants and runs the tests on them.

The sources are copied into a folder and built there once, without changes. For a mutant one object is compiled anew, in
the folder of a worker, and the test programs are linked with it before the library, which then has nothing to add for
that source. So nothing that is shared is written, several workers go side by side, and a run that is broken off leaves
nothing behind: neither in the checkout nor in the build.
"""

import filecmp
import json
import os
import shlex
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

PROGRAM = "nearcast"
DAEMON = "bluezd"
# Quick to compile and to link, and not too slow for the scenarios made by chance, which run last on those that live.
# Nobody debugs a mutant, and it may have an unused variable. What is wrong with memory shows as in `./dev check`.
CONFIGURE = ["-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-Og -g0 -D_GLIBCXX_ASSERTIONS",
             "-DNEARCAST_SANITIZE=address", "-DNEARCAST_WERROR=OFF",
             "-DNEARCAST_BENCH=OFF"]


def copy_sources(root, copy):
    """Brings the copy up to date with the checkout; what has not changed keeps its time."""
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=root, check=True,
                            capture_output=True).stdout.decode().split("\0")
    wanted = {name for name in listed if name and (root / name).is_file()}
    for name in wanted:
        target = copy / name
        if not target.exists() or not filecmp.cmp(root / name, target, shallow=False):
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(root / name, target)
    for path in [path for path in copy.rglob("*") if path.is_file()]:
        if str(path.relative_to(copy)) not in wanted:
            path.unlink()


class Test:
    """One test of a program, or a script; `seconds` is what it took without a change."""

    def __init__(self, name, program, arguments):
        self.name = name
        self.program = program
        self.arguments = arguments
        self.seconds = None

    def limit(self):
        """Seconds after which it is taken to hang."""
        return 300 if self.seconds is None else 15 + 4 * self.seconds


class Build:
    """The build without changes, and what it says about how to make one with."""

    def __init__(self, root, folder):
        self.root = root
        self.source = folder / "source"
        self.build = folder / "build"
        self.commands = {}
        self.links = {}

    def prepare(self, programs):
        copy_sources(self.root, self.source)
        launcher = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []
        run_loudly(["cmake", "--preset", "dev", "-S", self.source, "-B", self.build, *CONFIGURE, *launcher],
                   cwd=self.source)
        run_loudly(["ninja", "-C", self.build, *programs])
        for entry in json.loads((self.build / "compile_commands.json").read_text(encoding="utf-8")):
            words, file = shlex.split(entry["command"]), Path(entry["file"])
            # The library's own object: measurements compile some sources a second time.
            if words[words.index("-o") + 1].startswith("src/") and self.source in file.parents:
                self.commands[file.relative_to(self.source).as_posix()] = words
        for program in programs:
            self.links[program] = self.link_command(program)

    def link_command(self, program):
        text = subprocess.run(["ninja", "-C", str(self.build), "-t", "commands", program], check=True,
                              capture_output=True, text=True).stdout.splitlines()[-1]
        for part in text.split(" && "):
            words = shlex.split(part)
            if "-o" in words and Path(words[words.index("-o") + 1]).name == program:
                return words
        raise SystemExit(f"mutants: ninja does not say how {program} is linked")

    def path_of(self, program):
        words = self.links[program]
        return self.build / words[words.index("-o") + 1]

    def tests_of(self, program):
        """Each in a process of its own: there is one manager in a process."""
        if program.endswith(".py"):
            return [Test(program, program, [sys.executable, "-B", str(self.source / program)])]
        listed = subprocess.run([self.path_of(program), "--gtest_list_tests"], check=True, capture_output=True,
                                text=True).stdout
        tests, suite = [], ""
        for line in listed.splitlines():
            name = line.split("#")[0].strip()
            if not line.startswith(" "):
                suite = name
            elif "DISABLED_" not in suite + name:
                tests.append(Test(suite + name, program, [f"--gtest_filter={suite}{name}"]))
        return tests


class Worker:
    """A folder in which one mutant at a time is built and tested."""

    def __init__(self, build, folder):
        self.build = build
        self.folder = folder
        self.linked = set()
        self.object = None
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)

    def compile(self, file, text):
        """Whether the changed source compiles; from then on programs are linked with it."""
        path = self.folder / file
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")
        self.linked.clear()
        self.object = self.folder / "mutant.o"
        words, skip = [], False
        for word in self.build.commands[file]:
            if skip:
                skip = False
            elif word in ("-o", "-MF", "-MT"):
                skip = True
            elif word not in ("-MD", "-c", str(self.build.source / file), "ccache"):
                words.append(word)
        # Trace records name the file as if it lay where the others do.
        words += [f"-ffile-prefix-map={self.folder}/=", "-w", "-o", str(self.object), "-c", str(path)]
        result = subprocess.run(words, cwd=self.build.build, capture_output=True, check=False)
        return result.returncode == 0

    def program(self, name):
        """The path of a program with the mutant in it; the unchanged one where there is none."""
        if self.object is None:
            return self.build.path_of(name)
        path = self.folder / name
        if name not in self.linked:
            words = list(self.build.links[name])
            place = words.index("-o") + 1
            words[place:place + 1] = [str(path), str(self.object)]
            subprocess.run(words, cwd=self.build.build, check=True)
            self.linked.add(name)
        return path

    def run(self, test):
        """How a test ends, in seconds: `passed`, `skipped`, `failed` or `hangs`."""
        command = list(test.arguments)
        if not test.program.endswith(".py"):
            command.insert(0, str(self.program(test.program)))
        environment = dict(os.environ, TZ="XXX-10:30")
        if test.program.endswith(".py") or test.program == "tests_scenario":
            environment.update(NEARCAST_PROGRAM=str(self.program(PROGRAM)),
                               NEARCAST_BLUEZD=str(self.build.path_of(DAEMON)))
        began = time.monotonic()
        with subprocess.Popen(command, cwd=self.folder, env=environment, stdin=subprocess.DEVNULL, text=True,
                              errors="replace", stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              start_new_session=True) as process:
            try:
                output, _ = process.communicate(timeout=test.limit())
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                return "hangs", time.monotonic() - began
        seconds = time.monotonic() - began
        if process.returncode == 77 or process.returncode == 0 and "[  SKIPPED ]" in output:
            return "skipped", seconds
        return "passed" if process.returncode == 0 else "failed", seconds

    def kills(self, tests):
        """The first test that fails, twice, or hangs; None where all pass."""
        for test in tests:
            ended, _ = self.run(test)
            # Once is not enough: a busy machine must not count as a test that sees the mutant.
            if ended == "hangs" or ended == "failed" and self.run(test)[0] != "passed":
                return f"{test.name}{' (hangs)' if ended == 'hangs' else ''}"
        return None


def run_loudly(command, **options):
    """Shows what it says only where it fails."""
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False, **options)
    if result.returncode != 0:
        raise SystemExit(f"mutants: {' '.join(map(str, command))} failed:\n{result.stdout}{result.stderr}")
