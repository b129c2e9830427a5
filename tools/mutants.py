#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Changes the sources a little, one place at a time, and looks whether the tests notice.

    mutants.py [--seed N] [--count N] [--only REGEX] [--list] [--keep-going] [--jobs N] [--build FOLDER]

The places are drawn by the seed, from each source in turn, so that each has its share. A mutant that does not compile
gives way to the next draw of its source. tests/mutants/survivors.json says of those that live why no test can see them.
Exit status 1 when fewer than 95 % are killed, when one lives without a reason, or when a reason has lost its mutant.
"""

import argparse
import concurrent.futures
import dataclasses
import json
import os
import queue
import random
import re
import sys
import time
from pathlib import Path

import mutants_run
from mutants_code import OPERATORS, Source

ROOT = Path(__file__).resolve().parents[1]
SURVIVORS = "tests/mutants/survivors.json"
AT_LEAST = 60  # mutants in all
EACH = 4  # of each source
WANTED = 0.95  # killed, of all
# Sources, and what tests them: test programs of the build, the quick ones first, and scripts.
TABLE = (
    ("src/core/**/*.cpp", ("unit_core", "unit_settings", "unit_proximity", "tests_scenario")),
    ("src/settings/**/*.cpp", ("unit_settings", "unit_core", "unit_proximity", "tests_scenario")),
    ("src/proximity/**/*.cpp", ("unit_proximity", "unit_core", "tests_scenario")),
    ("src/nearest/Decision*.cpp", ("unit_nearest", "unit_lab", "tests_scenario")),
    ("src/platform/bluez/**/*.cpp", ("unit_platform_bluez", "tests_contract", "tests/integration/bluez_test.py")),
)


def sources_of(root, only=""):
    """(file, its test programs), sorted."""
    found = {}
    for pattern, programs in TABLE:
        files = [path.relative_to(root).as_posix() for path in root.glob(pattern)]
        if not files:
            raise SystemExit(f"mutants: there is no {pattern}")
        found.update((file, programs) for file in files if re.search(only, file))
    if not found:
        raise SystemExit(f"mutants: no source fits '{only}'")
    return dict(sorted(found.items()))


def drawn(mutants, file, seed):
    """All mutants of a source in the order in which they are drawn: the operators take turns."""
    dice = random.Random(f"{seed} {file}")
    turns = []
    for operator in dice.sample(OPERATORS, len(OPERATORS)):
        group = [one for one in mutants if one.operator == operator]
        dice.shuffle(group)
        turns.append(group)
    longest = max(map(len, turns))
    return [group[turn] for turn in range(longest) for group in turns if turn < len(group)]


def shares(lengths, count):
    """How many are taken of each source: in turn, as far as they go, until there are enough."""
    taken = dict.fromkeys(lengths, 0)
    while sum(taken.values()) < count and taken != lengths:
        for file in lengths:
            if sum(taken.values()) < count and taken[file] < lengths[file]:
                taken[file] += 1
    return taken


def check_survivors(entries, mutants):
    """What is wrong with the list: an entry without a reason, without a mutant, or twice."""
    known = {mutant.names() for mutant in mutants}
    seen = set()
    for entry in entries:
        names = tuple(entry.get(key, "") for key in ("file", "operator", "line", "becomes"))
        if not entry.get("reason", "").strip():
            yield f"no reason is given for {names}"
        if names not in known:
            yield f"no mutant fits {names}"
        if names in seen:
            yield f"twice in the list: {names}"
        seen.add(names)


@dataclasses.dataclass
class Verdict:
    mutant: object
    killer: str | None
    seconds: float


class Run:
    """All mutants of a run, with as many workers as there are cores."""

    def __init__(self, build, order, programs_of, jobs, folder):
        self.build = build
        self.order = order
        self.programs_of = programs_of
        self.tests = {}
        self.uncompiled = 0
        self.workers = queue.Queue()
        for number in range(1, jobs + 1):
            self.workers.put(mutants_run.Worker(build, folder / f"worker{number}"))
        self.pool = concurrent.futures.ThreadPoolExecutor(jobs)

    def measure(self):
        """Runs all tests without a change: they have to pass, and the quick ones come first later."""
        for programs in self.programs_of.values():
            for program in programs:
                if program not in self.tests:
                    self.tests[program] = self.build.tests_of(program)
        every = [test for tests in self.tests.values() for test in tests]
        failed, skipped = [], set()
        for test, (ended, test.seconds) in zip(every, self.pool.map(self.run_unchanged, every)):
            if ended == "skipped":
                skipped.add(test)
            elif ended != "passed":
                failed.append(f"{test.name} {ended}")
        if failed:
            raise SystemExit("mutants: tests that do not pass without a change:\n" + "\n".join(failed))
        for program, tests in self.tests.items():
            self.tests[program] = sorted((one for one in tests if one not in skipped), key=lambda one: one.seconds)
            print(f"{program}: {len(self.tests[program])} tests, {sum(one.seconds for one in tests):.1f} s")

    def run_unchanged(self, test):
        worker = self.workers.get()
        try:
            worker.object = None
            return worker.run(test)
        finally:
            self.workers.put(worker)

    def judge(self, file, text):
        """The next mutant of a source that compiles, and who kills it; None where there are no more."""
        worker = self.workers.get()
        try:
            while self.order[file]:
                mutant = self.order[file].pop(0)
                began = time.monotonic()
                if not worker.compile(file, mutant.applied_to(text)):
                    self.uncompiled += 1
                    continue
                tests = [test for program in self.programs_of[file] for test in self.tests[program]]
                return Verdict(mutant, worker.kills(tests), time.monotonic() - began)
            return None
        finally:
            self.workers.put(worker)

    def all(self, taken, texts):
        """The verdicts as they come."""
        waiting = [self.pool.submit(self.judge, file, texts[file]) for file, count in taken.items()
                   for _ in range(count)]
        for future in concurrent.futures.as_completed(waiting):
            if future.result() is not None:
                yield future.result()

    def stop(self):
        self.pool.shutdown(cancel_futures=True)


def tell(verdict, explained):
    how = f"killed by {verdict.killer}" if verdict.killer else "LIVES, explained" if explained else "LIVES"
    one = verdict.mutant
    print(f"{verdict.seconds:5.1f} s  {one.file}:{one.number}  {one.operator}\n"
          f"         - {one.line}\n         + {one.becomes}\n         {how}", flush=True)


def tell_sources(verdicts, files):
    print(f"\n{'source':48} killed  of")
    for file in files:
        mine = [one for one in verdicts if one.mutant.file == file]
        print(f"{file:48} {sum(one.killer is not None for one in mine):6} {len(mine):3}")


def problems_of(verdicts, reasons):
    """What makes the run fail."""
    killed = sum(one.killer is not None for one in verdicts)
    for one in verdicts:
        names = one.mutant.names()
        if one.killer is None and names not in reasons:
            yield f"{names[0]}:{one.mutant.number} lives and is not explained: {names[3]}"
        if one.killer is not None and names in reasons:
            yield f"{names[0]}:{one.mutant.number} is killed by {one.killer}; its entry in {SURVIVORS} has to go"
    if not verdicts or killed < WANTED * len(verdicts):
        yield f"fewer than {WANTED:.0%} are killed"


def parse(argv):
    parser = argparse.ArgumentParser(description="Changes the sources and looks whether the tests notice.")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--count", type=int, help=f"mutants in all ({EACH} of each source, at least {AT_LEAST})")
    parser.add_argument("--only", metavar="REGEX", default="", help="sources whose paths fit")
    parser.add_argument("--list", action="store_true", help="say what would be tried; nothing is built")
    parser.add_argument("--keep-going", action="store_true", help="go on after a survivor without a reason")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--build", type=Path, default=ROOT / "build/mutants")
    return parser.parse_args(argv)


def execute(arguments, order, taken, texts, programs_of, reasons):
    programs = {program for row in programs_of.values() for program in row if not program.endswith(".py")}
    build = mutants_run.Build(ROOT, arguments.build.resolve())
    build.prepare(sorted(programs | {mutants_run.PROGRAM, mutants_run.DAEMON}))
    run = Run(build, order, programs_of, arguments.jobs, arguments.build.resolve())
    verdicts = []
    try:
        run.measure()
        for verdict in run.all(taken, texts):
            explained = verdict.mutant.names() in reasons
            verdicts.append(verdict)
            tell(verdict, explained)
            if not (verdict.killer or explained or arguments.keep_going):
                print("\nnot the whole run: it ends at the first that lives without a reason (--keep-going)")
                break
    finally:
        run.stop()
    tell_sources(verdicts, texts)
    problems = list(problems_of(verdicts, reasons))
    for problem in problems:
        print(problem)
    print(f"{run.uncompiled} more did not compile; seed {arguments.seed}")
    print(f"{sum(one.killer is not None for one in verdicts)}/{len(verdicts)}")
    return 1 if problems else 0


def main(argv):
    arguments = parse(argv)
    every = {file: (ROOT / file).read_text(encoding="utf-8") for file in sources_of(ROOT)}
    mutants = {file: Source(file, text).mutants() for file, text in every.items()}
    entries = json.loads((ROOT / SURVIVORS).read_text(encoding="utf-8"))
    wrong = list(check_survivors(entries, [one for group in mutants.values() for one in group]))
    if wrong:
        raise SystemExit(f"mutants: {SURVIVORS}:\n" + "\n".join(wrong))
    programs_of = sources_of(ROOT, arguments.only)
    texts = {file: every[file] for file in programs_of}
    order = {file: drawn(mutants[file], file, arguments.seed) for file in texts}
    count = arguments.count or max(AT_LEAST, EACH * len(texts))
    taken = shares({file: len(group) for file, group in order.items()}, count)
    if arguments.list:
        for file, number in taken.items():
            for one in order[file][:number]:
                print(f"{one.file}:{one.number}: {one.operator}: {one.line}  =>  {one.becomes}")
        return 0
    reasons = {(one["file"], one["operator"], one["line"], one["becomes"]) for one in entries}
    return execute(arguments, order, taken, texts, programs_of, reasons)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
