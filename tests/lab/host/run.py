#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Boots the lab and runs its tests.

    run.py --cache FOLDER --controller P --listener P --proximity P --nearcast P [--boot quick|full|long|any] [--machines N]
           [--minutes N] [REGEX]
    run.py --list

`--minutes` is for how long the shop of the long boot is open.

Exit status 77 where it cannot run at all, which it says loudly.
"""

import argparse
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time

LAB = pathlib.Path(__file__).resolve().parents[1]
PROGRAMS = ("controller", "listener", "proximity", "nearcast")
LONGEST = {"quick": 240, "full": 900, "long": 1800, "any": 1800}  # seconds, without those that the shop is open
MINUTES = 30
FEWEST, MOST = 10, 240  # minutes: memory is compared from the fifth on
KERNEL = ("console=ttyS0 panic=-1 quiet cryptomgr.notests mitigations=off nokaslr random.trust_cpu=on tsc=reliable "
          "lab={lab} machine={machine}")
SHARE = "local,path={path},mount_tag={tag},security_model=none,readonly={readonly},multidevs=remap"

TEST = re.compile(r'^@test\("(\w+)"(?:, boot="(\w+)")?\)$', re.MULTILINE)


def skip(why):
    print(f"\n*** THE LAB HAS NOT RUN: {why} ***\n", flush=True)
    sys.exit(77)


def qemu(cache, results, machine):
    """The command of a machine that sees this one's files."""
    return ["qemu-system-x86_64", "-accel", "tcg,thread=multi", "-cpu", "Nehalem", "-smp", "1", "-m", "768",
            "-nodefaults", "-display", "none", "-serial", "stdio", "-no-reboot",
            "-kernel", str(cache / "vmlinuz"), "-initrd", str(cache / "initrd"),
            "-append", KERNEL.format(lab=LAB, machine=machine),
            "-virtfs", SHARE.format(path="/", tag="host", readonly="on"),
            "-virtfs", SHARE.format(path=results, tag="results", readonly="off")]


def longest(boot, minutes):
    """Seconds after which the machines are stopped."""
    return LONGEST[boot] + (60 * minutes if boot in ("long", "any") else 0)


class Machine:
    """One machine, and what its guest has written so far, printed as it comes."""

    def __init__(self, cache, results, number):
        self.number = number
        self.folder = results / f"machine{number}"
        self.folder.mkdir()
        self.read = 0
        self.good = 0
        self.bad = []
        self.running = None
        with open(self.folder / "console", "wb") as console:
            self.process = subprocess.Popen(qemu(cache, results, number), stdin=subprocess.DEVNULL, stdout=console,
                                            stderr=subprocess.STDOUT)

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
            print(f"          {name}: {value}")
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
    config = {"debian": str(arguments.cache / "root"), "boot": arguments.boot, "pattern": arguments.pattern,
              "minutes": arguments.minutes, "programs": {name: str(getattr(arguments, name)) for name in PROGRAMS}}
    (results / "config.json").write_text(json.dumps(config), encoding="utf-8")
    end = time.monotonic() + longest(arguments.boot, arguments.minutes)
    machines = []
    try:
        for number in range(1, arguments.machines + 1):
            machines.append(Machine(arguments.cache, results, number))
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
    parser.add_argument("--machines", type=int, default=min(2, os.cpu_count() or 1))
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
    results = pathlib.Path(tempfile.mkdtemp(prefix="nearcast-lab-"))
    status = judge(boot(arguments, results), results)
    if status == 0:
        shutil.rmtree(results)
    return status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
