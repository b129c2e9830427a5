# SPDX-License-Identifier: Apache-2.0
"""Runs the tests of one boot: `main.py FOLDER`, the folder for this machine's results."""

import json
import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))

import framework  # noqa: E402
import lab  # noqa: E402

RESULTS = pathlib.Path("/run/results")


def chosen(boot, pattern):
    """The tests of a boot whose names fit."""
    belongs = {"quick": ("quick",), "full": ("quick", "full"), "long": ("long",), "deaf": ("deaf",),
               "any": ("quick", "full", "long")}[boot]
    if boot == "any" and "Deaf" in pattern:  # the names of its cells have many words that others have too
        belongs = ("deaf",)
    return [one for one in framework.load() if one.boot in belongs and re.search(pattern, one.name)]


def claim(one):
    """Whether this machine is the one to run it: several share the tests."""
    try:
        (RESULTS / "claims" / one.name).mkdir(parents=True)
        return True
    except FileExistsError:
        return False


def run(mine):
    config = json.loads((RESULTS / "config.json").read_text(encoding="utf-8"))
    report = framework.Report(mine / "results.jsonl")
    report.write(event="booted", seconds=framework.now())
    lab.start_bus(config)
    good = True
    for one in chosen(config["boot"], config["pattern"]):
        if claim(one):
            good &= report.run(one, lambda name, figure: lab.Lab(config, name, figure))
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(run(pathlib.Path(sys.argv[1])))
