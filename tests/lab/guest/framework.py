# SPDX-License-Identifier: Apache-2.0
"""What a test of the lab is: a function with a sentence for a name, told on which boots it runs."""

import importlib
import json
import time
import traceback

MODULES = ("rates", "recovery", "clients", "manager", "states", "facts", "shop", "user_channel")
TESTS = []


class Failure(Exception):
    """Something is not as it should be."""


class Test:
    def __init__(self, name, function, boot):
        self.name = name
        self.function = function
        self.boot = boot


def test(name, boot="full"):
    """Registers a test. Boot `quick` also belongs to `full`; `long` runs alone."""

    def register(function):
        assert all(one.name != name for one in TESTS), name
        TESTS.append(Test(name, function, boot))
        return function

    return register


def load():
    for module in MODULES:
        importlib.import_module("tests." + module)
    return TESTS


def expect(condition, otherwise):
    if not condition:
        raise Failure(otherwise)


def now():
    """Seconds since the machine's start, the time of everything here."""
    return time.clock_gettime(time.CLOCK_BOOTTIME)


def wait_for(what, within, condition):
    """Waits until the condition gives something true, and gives that."""
    end = now() + within
    while True:
        result = condition()
        if result:
            return result
        if now() > end:
            raise Failure(f"not within {within:g} s: {what}")
        time.sleep(0.02)


class Report:
    """The results, a JSON line each, written as they come."""

    def __init__(self, path):
        self.file = open(path, "a", encoding="utf-8", buffering=1)

    def write(self, **what):
        self.file.write(json.dumps(what) + "\n")

    def run(self, one, make_lab):
        """Runs a test."""
        began = now()
        figures = []
        self.write(event="begin", test=one.name)
        lab = make_lab(one.name, lambda name, value: figures.append((name, value)))
        why = None
        try:
            one.function(lab)
        except Failure as failure:
            why = str(failure)
        except Exception:  # a fault of the test's own
            why = traceback.format_exc()
        finally:
            lab.close(keep_logs=why is not None)
        self.write(event="end", test=one.name, good=why is None, why=why, figures=figures, seconds=now() - began)
        return why is None
