#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Reads the symbols of the installed libraries.

    exported_symbols.py INCLUDE SHARED STATIC

The shared library exports the members of the classes marked NEARCAST_EXPORT, with their type information, the functions
that are marked, and nothing else. The static one, which has to show its layers to itself, defines nothing outside our
namespace but what every program may define again (inline functions and templates), and nothing of the laboratory.
"""

import re
import subprocess
import sys
from pathlib import Path

EXTRA = re.compile(r"^(typeinfo for|typeinfo name for|vtable for|VTT for|guard variable for|"
                   r"(non-)?virtual thunk to) ")
# nm's letters for what a linker may find several times and keeps once.
VAGUE = set("WwVvu")
# What only the command line and the tests need: it plays, compares and scores.
NOT_INSTALLED = "nearcast::lab::"
MUST_BE_THERE = ["nearcast::QXNearcastManager::sharedManager()", "typeinfo for nearcast::PortException",
                 "vtable for nearcast::PortException"]


def symbols(library, *options):
    """Pairs of nm's letter and the demangled name."""
    output = subprocess.run(["nm", "--demangle", "--defined-only", *options, library], capture_output=True, text=True,
                            check=True).stdout
    lines = (re.match(r"^[0-9a-f]* *([A-Za-z]) (.*)$", line) for line in output.splitlines())
    return [(match.group(1), match.group(2)) for match in lines if match]


def exported_names(include):
    """The names of the classes and functions that the headers mark."""
    text = "".join(header.read_text(encoding="utf-8") for header in Path(include).rglob("*.h"))
    classes = re.findall(r"\b(?:class|struct)\s+NEARCAST_EXPORT\s+(\w+)", text)
    functions = re.findall(r"^NEARCAST_EXPORT\s[^;(]*?(\w+)\(", text, re.M)
    return set(classes + functions)


def problems_of_shared(found, classes):
    names = {name for _, name in found}
    for name in MUST_BE_THERE:
        if name not in names:
            yield f"the shared library lacks {name}"
    for name in sorted(names):
        match = re.match(r"nearcast::(\w+)", EXTRA.sub("", name))
        if not match or match.group(1) not in classes:
            yield f"the shared library exports {name}"


def problems_of_static(found):
    strong = sorted({name for letter, name in found if letter not in VAGUE})
    if not strong:
        yield "the static library defines nothing"
    for name in strong:
        plain = EXTRA.sub("", name)
        if not plain.startswith("nearcast::") or plain.startswith(NOT_INSTALLED):
            yield f"the static library defines {name}"


def main(include, shared, static):
    classes = exported_names(include)
    problems = list(problems_of_shared(symbols(shared, "--dynamic"), classes))
    problems += problems_of_static(symbols(static, "--extern-only"))
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
