#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Boots the lab and runs its tests.

    run.py --cache FOLDER --controller P --listener P --proximity P --nearcast P [--boot quick|full|long|deaf|any]
           [--system today|next] [--machines N] [--icount auto|on|off] [--minutes N] [--seed N] [REGEX]
    run.py --list

`--minutes` is for how long the shop of the long boot is open, `--seed` chooses what happens in it. With `--icount` a
machine's time is that of its instructions: what it measures does not depend on what else runs here, but it takes longer.

Exit status 77 where it cannot run at all, which it says loudly.
"""

import argparse
import json
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile
import time

from deaf_table import DeafTable

LAB = pathlib.Path(__file__).resolve().parents[1]
PROGRAMS = ("controller", "listener", "proximity", "nearcast")
# Seconds, without those that the shop is open.
LONGEST = {"quick": 240, "full": 900, "long": 1800, "deaf": 3000, "any": 3000}
SLOWER = 4  # times, by the count of instructions
MINUTES = 30
FEWEST, MOST = 20, 240  # minutes: memory is compared from when everything has happened once
BUSY = 2  # programs for each processor that want to run
KERNEL = ("console=ttyS0 panic=-1 quiet cryptomgr.notests mitigations=off nokaslr random.trust_cpu=on tsc=reliable "
          "no_timer_check "  # which fails where the host is busy
          "lab={lab} machine={machine}")
SHARE = "local,path={path},mount_tag={tag},security_model=none,readonly={readonly},multidevs=remap"

TEST = re.compile(r'^@test\("(\w+)"(?:, boot="(\w+)")?\)$', re.MULTILINE)
FAULT = re.compile(r'^@fault\("(\w+)"', re.MULTILINE)


def skip(why):
    print(f"\n*** THE LAB HAS NOT RUN: {why} ***\n", flush=True)
    sys.exit(77)


def pace(icount):
    """By what the machine's clocks go: this one's, or its own instructions."""
    if not icount:
        return ["-accel", "tcg,thread=multi"]
    return ["-accel", "tcg,thread=single", "-icount", "shift=0,sleep=on"]


def busy():
    """So much else runs here that a machine would not keep up with the clock."""
    return os.getloadavg()[0] > BUSY * (os.cpu_count() or 1)


def qemu(cache, results, machine, icount):
    """The command of a machine that sees this one's files."""
    return ["qemu-system-x86_64", *pace(icount), "-cpu", "Nehalem", "-smp", "1", "-m", "768",
            "-nodefaults", "-display", "none", "-serial", "stdio", "-no-reboot",
            "-kernel", str(cache / "vmlinuz"), "-initrd", str(cache / "initrd"),
            "-append", KERNEL.format(lab=LAB, machine=machine),
            "-virtfs", SHARE.format(path="/", tag="host", readonly="on"),
            "-virtfs", SHARE.format(path=results, tag="results", readonly="off")]


def longest(arguments):
    """Seconds after which the machines are stopped."""
    shop = 60 * arguments.minutes if arguments.boot in ("long", "any") else 0
    return (LONGEST[arguments.boot] + shop) * (SLOWER if arguments.icount else 1)


class Machine:
    """One machine, and what its guest has written so far, printed as it comes."""

    def __init__(self, arguments, results, number):
        self.number = number
        self.table = DeafTable()
        self.folder = results / f"machine{number}"
        self.folder.mkdir()
        self.read = 0
        self.good = 0
        self.bad = []
        self.running = None
        with open(self.folder / "console", "wb") as console:
            self.process = subprocess.Popen(qemu(arguments.cache, results, number, arguments.icount),
                                            stdin=subprocess.DEVNULL, stdout=console, stderr=subprocess.STDOUT)

    def stop(self):
        self.process.kill()
        self.process.wait()
        self.follow()

    def finished(self):
        """It came to its end by itself."""
        return (self.folder / "status").exists()

    def follow(self):
        path = self.folder / "results.jsonl"
        if not path.exists():
            return
        with open(path, "rb") as file:
            file.seek(self.read)
            text = file.read()
        whole = text[:text.rfind(b"\n") + 1]
        self.read += len(whole)
        for line in whole.splitlines():
            self.take(json.loads(line))

    def take(self, event):
        if event["event"] == "booted":
            print(f"machine {self.number} booted in {event['seconds']:.1f} s", flush=True)
        elif event["event"] == "begin":
            self.running = event["test"]
        else:
            self.running = None
            self.tell(event)

    def tell(self, event):
        if event["good"]:
            self.good += 1
        else:
            self.bad.append(event["test"])
        print(f"{'PASS' if event['good'] else 'FAIL'}  {event['test']}  ({event['seconds']:.1f} s)")
        for name, value in event["figures"]:
            print(f"          {name}: {self.table.take(value) if name == 'deaf' else value}")
        if event["why"]:
            print("          " + event["why"].rstrip().replace("\n", "\n          "))
        sys.stdout.flush()

    def last_words(self):
        for name in ("output", "console"):
            path = self.folder / name
            text = path.read_text(encoding="utf-8", errors="replace") if path.exists() else ""
            if text.strip():
                print(f"--- {name} of machine {self.number}\n{text[-3000:]}")


def boot(arguments, results):
    """Runs the tests on machines that share them, to their end."""
    config = {"debian": str(arguments.cache / "root"), "system": arguments.system, "boot": arguments.boot,
              "pattern": arguments.pattern, "minutes": arguments.minutes, "seed": arguments.seed,
              "programs": {name: str(getattr(arguments, name)) for name in PROGRAMS}}
    (results / "config.json").write_text(json.dumps(config), encoding="utf-8")
    end = time.monotonic() + longest(arguments)
    machines = []
    try:
        for number in range(1, arguments.machines + 1):
            machines.append(Machine(arguments, results, number))
        while any(one.process.poll() is None for one in machines) and time.monotonic() < end:
            time.sleep(0.2)
            for one in machines:
                one.follow()
    finally:
        for one in machines:
            one.stop()
    return machines


def judge(machines, results):
    """The exit status."""
    good, bad = sum(one.good for one in machines), [name for one in machines for name in one.bad]
    print(DeafTable.of(one.table for one in machines), end="")
    print(f"\n{good} passed, {len(bad)} failed")
    for name in bad:
        print(f"  failed: {name}")
    cut = [one for one in machines if not one.finished()]
    for one in cut:
        print(f"  machine {one.number} did not come to its end; it was at {one.running}")
    if good and not bad and not cut:
        return 0
    for one in machines:
        one.last_words()
    print(f"--- more in {results}")
    return 1


def list_tests():
    for path in sorted((LAB / "guest" / "tests").glob("*.py")):
        for name, boot in TEST.findall(path.read_text(encoding="utf-8")):
            print(f"{boot or 'full':5}  {name}")
    for name in FAULT.findall((LAB / "guest" / "faults.py").read_text(encoding="utf-8")):
        print(f"deaf   DeafWhen{name}Through...")
    return 0


def minutes(text):
    number = int(text)
    if not FEWEST <= number <= MOST:
        raise argparse.ArgumentTypeError(f"{number} is not from {FEWEST} to {MOST}")
    return number


def parse(argv):
    parser = argparse.ArgumentParser(description="Boots the lab and runs its tests.")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--cache", type=lambda text: pathlib.Path(text).resolve())
    parser.add_argument("--boot", choices=tuple(LONGEST), default="full")
    parser.add_argument("--system", choices=("today", "next"), default="today")
    parser.add_argument("--machines", type=int, default=min(2, os.cpu_count() or 1))
    parser.add_argument("--icount", choices=("auto", "on", "off"), default="auto")
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(1_000_000))
    parser.add_argument("--minutes", type=minutes, default=MINUTES)
    for name in PROGRAMS:
        parser.add_argument(f"--{name}", type=lambda text: pathlib.Path(text).resolve())
    parser.add_argument("pattern", nargs="?", default="")
    return parser.parse_args(argv)


def main(argv):
    arguments = parse(argv)
    if arguments.list:
        return list_tests()
    if shutil.which("qemu-system-x86_64") is None:
        skip("there is no qemu-system-x86_64 here; ./dev lab installs it")
    if not (arguments.cache / "initrd").exists():
        skip(f"nothing to boot in {arguments.cache}; ./dev lab fetches it")
    arguments.icount = busy() if arguments.icount == "auto" else arguments.icount == "on"
    print(f"Debian of {'today' if arguments.system == 'today' else 'the next release'}, "
          f"time by {'instructions' if arguments.icount else 'the clock'}", flush=True)
    results = pathlib.Path(tempfile.mkdtemp(prefix="nearcast-lab-"))
    status = judge(boot(arguments, results), results)
    if status == 0:
        shutil.rmtree(results)
    return status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
