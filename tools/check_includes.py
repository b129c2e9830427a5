#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Reads the include lines of the sources and fails on one that a layer may not have.

    tools/check_includes.py [ROOT]

The layers point one way only: what the manager is made of stands on the interfaces in src/platform/*.h, never on what
implements them. RULES says who may include what; a folder without a rule is an error, so that a new one is thought
about.
"""

import re
import sys
from pathlib import Path

SUFFIXES = {".cpp", ".h"}
INCLUDE = re.compile(r'^\s*#\s*include\s*(?:<([^>]+)>|"([^"]+)"|(.*))')

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
THIRD_PARTY = {"CLI", "benchmark", "gmock", "gtest", "httplib.h", "nlohmann", "rapidcheck", "rapidcheck.h", "systemd"}

MANAGER = ["core", "settings", "proximity", "support"]  # one class in three subjects, and its helpers
INTERFACES = ["platform", "support"]  # the headers directly in src/platform, not those of its sub-folders
# What several back ends are made of.
PARTS = INTERFACES + ["platform/radio", "platform/timers", "platform/timeline", "platform/hciformat",
                      "platform/json"]
BACK_ENDS = ["platform/virtual", "platform/simulator", "platform/replay", "platform/system", "platform/bluez",
             "platform/hci"]


def rule(layers=(), os=False, third_party=()):
    """Beside the standard library, the public headers and itself: these layers of src, headers of the operating
    system, these libraries."""
    return {"layers": set(layers), "os": os, "third_party": set(third_party)}


RULES = {
    "include/nearcast": rule(),
    "src/support": rule(),
    "src/core": rule(MANAGER + INTERFACES),
    "src/settings": rule(MANAGER + INTERFACES),
    "src/proximity": rule(MANAGER + INTERFACES),
    "src/nearest": rule(["support"]),  # an application of the manager, like the users' own
    "src/platform": rule(INTERFACES),
    "src/platform/radio": rule(INTERFACES),
    "src/platform/timers": rule(INTERFACES),
    "src/platform/timeline": rule(INTERFACES + ["platform/radio", "platform/timers"]),
    "src/platform/hciformat": rule(INTERFACES + ["platform/radio"]),
    "src/platform/json": rule(INTERFACES, third_party=["nlohmann"]),
    "src/platform/virtual": rule(PARTS, os=True),
    "src/platform/simulator": rule(PARTS, os=True),
    "src/platform/replay": rule(PARTS + ["scenario"], os=True),  # recordings are written in the scenario's lines
    "src/platform/system": rule(PARTS, os=True),
    # They run on threads of their own, with the machine's clock.
    "src/platform/bluez": rule(PARTS + ["platform/system"], os=True, third_party=["systemd"]),
    "src/platform/hci": rule(PARTS + ["platform/system"], os=True),
    "src/platform/factory": rule(PARTS + BACK_ENDS, os=True),  # the one place that knows the back ends
    "src/scenario": rule(PARTS + ["platform/virtual", "nearest"]),  # rules are told what a recording holds
    "apps": rule(["*"], os=True, third_party=THIRD_PARTY),
    # They see the library as its users do.
    "examples": rule(os=True),
    "tests/consumer": rule(os=True),
}


def layer_of(folder):
    """The rule's folder that `folder` lies in. A folder directly in src or src/platform is a layer by itself."""
    while folder not in RULES:
        parent = str(Path(folder).parent)
        if parent in ("src", "src/platform", "include", "."):
            return None
        folder = parent
    return folder


def objection_to_own(layer, name):
    """Why `layer` may not include the header `name` of src, or None."""
    target = layer_of(str(Path("src", name).parent))
    allowed = RULES[layer]["layers"]
    if target is None:
        return f"no layer has {name}"
    if target == layer or "*" in allowed or target.removeprefix("src/") in allowed:
        return None
    return f"{layer} may not know {target}"


def objection_to_angled(layer, name):
    """Why `layer` may not include <name>, or None."""
    library = name.split("/")[0]
    if name in STANDARD:
        return None
    if library in THIRD_PARTY:
        return None if library in RULES[layer]["third_party"] else f"{layer} may not use {library}"
    if name.endswith(".h") or name in OPERATING_SYSTEM:
        return None if RULES[layer]["os"] else f"{layer} may not reach the operating system by <{name}>"
    return f"<{name}> is no header that the rules know"


def objection(root, path, name, angled):
    """Why the file may not include the header, or None."""
    layer = layer_of(str(path.parent.relative_to(root)))
    if layer is None:
        return "no rule for this folder; add one to RULES in tools/check_includes.py"
    if name.startswith("nearcast/"):
        return None if (root / "include" / name).exists() else f"there is no public header {name}"
    if ".." in Path(name).parts:
        return f"{name} goes around the layers"
    if (root / "src" / name).exists():
        return objection_to_own(layer, name)
    if angled:
        return objection_to_angled(layer, name)
    # Whether a header of the apps is there is the compiler's question.
    return None if layer == "apps" or (path.parent / name).exists() else f"there is no {name}"


def problems_of(root, path):
    for number, line in enumerate(path.read_text(encoding="utf-8", errors="replace").splitlines(), 1):
        match = INCLUDE.match(line)
        if not match:
            continue
        angled, quoted, macro = match.groups()
        why = "an include of a macro cannot be checked" if macro is not None else objection(
            root, path, angled or quoted, angled is not None)
        if why:
            yield f"{path.relative_to(root)}:{number}: {why}"


def sources(root):
    for top in ("include", "src", "apps", "examples", "tests/consumer"):
        yield from (path for path in sorted((root / top).rglob("*")) if path.suffix in SUFFIXES)


def main(arguments):
    root = Path(arguments[0] if arguments else Path(__file__).parent.parent).resolve()
    files = list(sources(root))
    problems = [problem for path in files for problem in problems_of(root, path)]
    for problem in problems:
        print(problem)
    if problems:
        print(f"{len(problems)} includes that the layers do not allow")
    elif not files:
        print(f"{root}: no sources found")
    else:
        print(f"{len(files)} files keep to their layers")
    return 0 if files and not problems else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
