#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Fails on an include of the operating system or of a library where a folder may not have it.

    tools/check_system_headers.py [ROOT]

Which of our own headers a layer sees is kept by the build: a wrong include finds no file. Headers of the system are
found by every compiler everywhere, so this looks at the lines. RULES says which folder may use what beside the C++
standard library; a folder without a rule is an error, so that a new one is thought about.
"""

import re
import sys
from pathlib import Path

INCLUDE = re.compile(r"^\s*#\s*include\s*(?:<([^>]+)>|(\"[^\"]+\")|(.*))")

# The C++ standard library, with the C headers in their C++ form and the runtime's cxxabi.h.
STANDARD = set("""
    algorithm any array atomic barrier bit bitset charconv chrono codecvt compare complex concepts condition_variable
    coroutine deque exception execution filesystem format forward_list fstream functional future initializer_list
    iomanip ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource mutex new numbers
    numeric optional ostream queue random ranges ratio regex scoped_allocator semaphore set shared_mutex
    source_location span sstream stack stdexcept stop_token streambuf string string_view syncstream system_error
    thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant vector version
    cassert cctype cerrno cfenv cfloat cinttypes climits clocale cmath cstdarg cstddef cstdint cstdio cstdlib cstring
    cuchar cwchar cwctype cxxabi.h
    """.split())
# Standard in name, but the operating system's: its clocks, its signals.
OPERATING_SYSTEM = {"csetjmp", "csignal", "ctime"}
# Libraries by the first part of their headers' names.
LIBRARIES = {"CLI", "nlohmann", "systemd", "zlib.h"}

# What a folder may use beside the standard library; "os" is the operating system. The longest folder counts.
RULES = {
    "include/nearcast": set(),
    "src/support": set(),
    "src/core": set(),
    "src/settings": set(),
    "src/proximity": set(),
    "src/nearest": set(),
    "src/application": set(),
    "src/lines": set(),
    "src/lab": set(),
    "src/platform": set(),
    "src/platform/radio": set(),
    "src/platform/timers": set(),
    "src/platform/timeline": set(),
    "src/platform/hciformat": set(),
    "src/platform/json": {"nlohmann"},
    "src/platform/files": {"os", "zlib.h"},
    "src/platform/virtual": {"os"},
    "src/platform/simulator": {"os"},
    "src/platform/replay": {"os"},
    "src/platform/system": {"os"},
    "src/platform/bluez": {"os", "systemd"},
    "src/platform/hci": {"os"},
    "src/platform/factory": {"os"},
    "apps": {"os"} | LIBRARIES,
    "examples": {"os"},
    "tests/consumer": {"os"},
}
# Their folders are layers one by one.
PARENTS = {"include", "src", "src/platform", "tests", "."}


def rule_of(folder):
    while folder not in RULES:
        folder = str(Path(folder).parent)
        if folder in PARENTS:
            return None, None
    return folder, RULES[folder]


def objection(folder, name):
    """Why a source in this folder may not include <name>, or None."""
    folder, allowed = rule_of(folder)
    if folder is None:
        return "no rule for this folder; add one to RULES in tools/check_system_headers.py"
    library = name.split("/")[0]
    if name in STANDARD or library == "nearcast":
        return None
    if library in LIBRARIES:
        return None if library in allowed else f"{folder} may not use {library}"
    if name.endswith(".h") or name in OPERATING_SYSTEM:
        return None if "os" in allowed else f"{folder} may not reach the operating system by <{name}>"
    return f"<{name}> is no header that the rules know"


def problems_of(root, path):
    folder = str(path.parent.relative_to(root))
    if rule_of(folder)[0] is None:
        yield f"{path.relative_to(root)}: {objection(folder, '')}"
        return
    for number, line in enumerate(path.read_text(encoding="utf-8", errors="replace").splitlines(), 1):
        match = INCLUDE.match(line)
        if not match:
            continue
        angled, quoted, other = match.groups()
        if other is not None:
            why = "an include of a macro cannot be checked"
        elif quoted is not None:
            why = f"{quoted} goes around the layers" if ".." in quoted else None
        else:
            why = objection(folder, angled)
        if why:
            yield f"{path.relative_to(root)}:{number}: {why}"


def main(arguments):
    root = Path(arguments[0] if arguments else Path(__file__).parent.parent).resolve()
    files = [path for top in ("include", "src", "apps", "examples", "tests/consumer")
             for path in sorted((root / top).rglob("*")) if path.suffix in {".cpp", ".h"}]
    problems = [problem for path in files for problem in problems_of(root, path)]
    for problem in problems:
        print(problem)
    if not files:
        print(f"{root}: no sources found")
    elif not problems:
        print(f"{len(files)} files use the system where they may")
    return 0 if files and not problems else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
