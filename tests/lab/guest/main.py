# SPDX-License-Identifier: Apache-2.0
"""Runs the tests of one boot; on any machine, `main.py --list [BOOT]` says which there are."""

import json
import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))

import framework  # noqa: E402

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
    import lab  # needs the guest's bus

    lab.start_bus(config)
    good = True
    for one in chosen(config["boot"], config["pattern"]):
        good &= report.run(one, lambda name, figure: lab.Lab(config, name, figure))
    return 0 if good else 1


def main(arguments):
    if arguments[:1] == ["--list"]:
        for boot in arguments[1:] or ("quick", "full", "long"):
            for one in chosen(boot, ""):
                if len(arguments) > 1 or one.boot == boot:
                    print(f"{boot:5}  {one.name}")
        return 0
    return run()


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
