#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Tries includes that the layers do not allow, with the compiler's own command of a source of the layer.

    layers.py BUILD SOURCE

Each has to fail because the header is not found, and the same command has to compile one that the layer may have:
otherwise it would fail for another reason, and nothing would be shown.
"""

import json
import shlex
import subprocess
import sys
import tempfile
from pathlib import Path

# A source of the layer, what it may include, what it may not.
TRIES = [
    ("src/core/Manager.cpp", "platform/NSLock.h", "platform/bluez/BluezSession.h"),
    ("src/support/Trace.cpp", "support/Trace.h", "core/Manager.h"),
    ("src/platform/replay/ReplayPlatform.cpp", "lines/Line.h", "lab/Playback.h"),
    ("src/platform/hci/HciSession.cpp", "platform/system/SystemClock.h", "platform/simulator/Scene.h"),
    ("src/nearest/Decision.cpp", "support/Utf8.h", "platform/Platform.h"),
    ("apps/nearcast/CommandLine.cpp", "lab/Playback.h", "core/Manager.h"),
    ("apps/nearcast/CommandLine.cpp", "settings/SavedSettings.h", "settings/Registry.h"),
]


def command_of(commands, source):
    """The command that compiles the source, to compile another file in its place."""
    for entry in commands:
        if entry["file"] != str(source):
            continue
        words = shlex.split(entry["command"])
        kept = []
        skip = False
        for word in words:
            if skip or word == "-c" or word == entry["file"]:
                skip = False
            elif word in ("-o", "-MF", "-MT"):
                skip = True
            elif word != "-MD":
                kept.append(word)
        return kept, entry["directory"]
    raise SystemExit(f"{source} is compiled by no command of the build")


def compile_include(commands, source, header):
    words, directory = command_of(commands, source)
    with tempfile.NamedTemporaryFile("w", suffix=".cpp") as file:
        file.write(f'#include "{header}"\n')
        file.flush()
        return subprocess.run([*words, "-fsyntax-only", file.name], cwd=directory, capture_output=True, text=True)


def main(build, root):
    commands = json.loads(Path(build, "compile_commands.json").read_text(encoding="utf-8"))
    problems = []
    for name, allowed, forbidden in TRIES:
        source = Path(root, name)
        good = compile_include(commands, source, allowed)
        if good.returncode != 0:
            problems.append(f"{name} cannot include {allowed}, which it may have:\n{good.stderr}")
        bad = compile_include(commands, source, forbidden)
        if bad.returncode == 0:
            problems.append(f"{name} could include {forbidden}")
        elif f"{forbidden}" not in bad.stderr or "not found" not in bad.stderr and "No such file" not in bad.stderr:
            problems.append(f"{name} with {forbidden} fails for another reason:\n{bad.stderr}")
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
