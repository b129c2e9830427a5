# SPDX-License-Identifier: Apache-2.0
"""Programs that run beside a test."""

import bisect
import json
import os
import signal
import subprocess

from framework import Failure, expect, now, wait_for

OUT_OF_ORDER = 5  # seconds, far more than a thread waits between looking at the clock and writing


def with_capabilities(command, user, capabilities):
    """The command for a user that is given these, and no others, for this program."""
    given = ",".join("+" + name for name in capabilities)
    return ["setpriv", f"--reuid={user}", f"--regid={user}", "--clear-groups", f"--inh-caps=-all,{given}",
            f"--ambient-caps=-all,{given}", f"--bounding-set=-all,{given}", "--", *command]


class Process:
    """A program with its output in a file. With capabilities its user has these alone, without them none."""

    def __init__(self, log, command, user=None, capabilities=(), **options):
        self.log = log
        self.output = open(log, "wb")
        if capabilities:
            command = with_capabilities(command, user, capabilities)
        elif user is not None:
            options.update(user=user, group=user, extra_groups=[])
        self.process = subprocess.Popen(command, stdout=options.pop("stdout", self.output), stderr=self.output,
                                        stdin=subprocess.PIPE, **options)
        self.pid = self.process.pid

    def running(self):
        return self.process.poll() is None

    def kill(self, number=signal.SIGKILL):
        if self.running():
            os.kill(self.pid, number)
        self.process.wait(10)

    def signal(self, number):
        os.kill(self.pid, number)

    def hang(self, hung):
        """It stands still, as where the machine has no time for it; or goes on."""
        os.kill(self.pid, signal.SIGSTOP if hung else signal.SIGCONT)

    def say(self, line):
        self.process.stdin.write(line.encode() + b"\n")
        self.process.stdin.flush()

    def memory(self):
        """Resident memory in KiB."""
        with open(f"/proc/{self.pid}/status", encoding="ascii") as status:
            return next(int(line.split()[1]) for line in status if line.startswith("VmRSS:"))

    def close(self):
        try:
            self.process.stdin.close()
        except OSError:
            pass
        self.kill()
        if self.process.stdout:
            self.process.stdout.close()
        self.output.close()


class Controller(Process):
    """The virtual controller and its air; see tests/lab/controller/Console.h for what it can be told."""

    def __init__(self, log, program):
        super().__init__(log, [program], stdout=subprocess.PIPE)
        self.dongles = 0

    def do(self, line):
        self.say(line)
        answer = self.process.stdout.readline().decode().rstrip("\n")
        expect(answer.startswith("ok"), f"the controller answers '{answer}' to '{line}'")
        return answer[3:]

    def plug(self, *words):
        return int(self.do(" ".join(("plug",) + words)))

    def dongle(self, handle=None, **settings):
        """Puts a dongle on the air, with an address and a payload of its own; gives what it is called here."""
        self.dongles += 1
        number = self.dongles
        handle = handle or f"d{number}"
        settings.setdefault("address", f"C0:00:00:00:00:{number:02X}")
        settings.setdefault("payload", f"024e430000{number:02x}")
        self.do(f"dongle {handle} " + " ".join(f"{key}={value}" for key, value in settings.items()))
        return handle

    def counters(self):
        return json.loads(self.do("counters"))

    def aired(self, *names):
        """Advertisements put on the air so far, of these dongles or of all."""
        dongles = self.counters()["dongles"]
        return sum(dongles[name]["aired"] for name in names or dongles)


class Diary(Process):
    """A program of ours that writes down what happens, a line each: time, kind, rest."""

    def __init__(self, log, command, user=None, capabilities=()):
        super().__init__(log, command, user, capabilities)
        self.lines = {}  # of each kind (time, rest), in the order in which they were written
        self.reader = open(log, "r", encoding="utf-8", errors="replace")
        self.rest = ""

    def entries(self, kind, since=0.0):
        """Those of a kind from a moment on: (time, rest)."""
        self.rest += self.reader.read()
        *whole, self.rest = self.rest.split("\n")
        for line in whole:
            time, kind_, rest = (line.split(" ", 2) + ["", ""])[:3]
            try:
                self.lines.setdefault(kind_, []).append((float(time), rest))
            except ValueError:
                pass  # something said on standard error; it stays in the log
        lines = self.lines.get(kind, [])
        # A shop that is open for hours writes half a million lines, and is asked fifty times a second. Threads may
        # write their lines a little out of order.
        first = bisect.bisect_left(lines, (since - OUT_OF_ORDER,))
        return [line for line in lines[first:] if line[0] >= since]

    def wait(self, kind, within, since=0.0, fits=lambda rest: True, what=None):
        """The first entry of a kind from a moment on whose rest fits."""

        def first():
            if not self.running():
                raise Failure(f"{self.process.args} has ended: {self.tail()}")
            return next((entry for entry in self.entries(kind, since) if fits(entry[1])), None)

        return wait_for(what or f"a {kind}", within, first)

    def tail(self):
        with open(self.log, encoding="utf-8", errors="replace") as log:
            return log.read()[-500:]

    def ask(self, line, answer, within=10):
        began = now()
        self.say(line)
        return self.wait(answer, within, since=began)[1]

    def close(self):
        super().close()
        self.reader.close()


class Listener(Diary):
    """A radio's delegate: tests/lab/programs/Listener.cpp."""

    STATES = ("Unknown", "Resetting", "Unsupported", "Unauthorized", "PoweredOff", "PoweredOn")

    def state(self):
        """The last state that the delegate was told, and why."""
        told = self.entries("state")
        if not told:
            return None, ""
        number, _, why = told[-1][1].partition(" ")
        return self.STATES[int(number)], why

    def why(self):
        """The last reason that was given, with a state or later."""
        told = [(time, rest.partition(" ")[2]) for kind in ("state", "health") for time, rest in self.entries(kind)]
        return max(told)[1] if told else ""

    def wait_state(self, state, within=10):
        try:
            wait_for("", within, lambda: self.state()[0] == state)
        except Failure:
            raise Failure(f"not {state} within {within:g} s but {self.state()}; log: {self.tail()}") from None
        return self.why()

    def reports(self, since=0.0, payload=None):
        """(time, 'payload rssi') from a moment on."""
        found = self.entries("report", since)
        return [one for one in found if payload is None or one[1].split(" ")[0] == "ffff" + payload]

    def wait_reports(self, count=1, within=10, since=0.0):
        """The reports from a moment on, once there are so many."""
        try:
            wait_for("", within, lambda: len(self.reports(since)) >= count)
        except Failure:
            got = len(self.reports(since))
            raise Failure(f"{got} reports within {within:g} s, not {count}; {self.state()}; {self.tail()}") from None
        return self.reports(since)
