# SPDX-License-Identifier: Apache-2.0
"""Runs the tests of one boot."""

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
    belongs = {"quick": ("quick",), "full": ("quick", "full"), "long": ("long",),
               "any": ("quick", "full", "long")}[boot]
    return [one for one in framework.load() if one.boot in belongs and re.search(pattern, one.name)]


def run():
    config = json.loads((RESULTS / "config.json").read_text(encoding="utf-8"))
    report = framework.Report(RESULTS / "results.jsonl")
    report.write(event="booted", seconds=framework.now())
    lab.start_bus(config)
    good = True
    for one in chosen(config["boot"], config["pattern"]):
        good &= report.run(one, lambda name, figure: lab.Lab(config, name, figure))
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(run())
