#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Holds the table at the top of core/Manager.h to the sources: it says in which file each operation lies.

    manager_table.py ROOT

A row is an operation and its file below src. Every operation that is defined has one, with the file where it is, and
every row has a definition. What Manager.h declares as private are steps of operations, which have no row.
"""

import re
import sys
from pathlib import Path

HEADER = "core/Manager.h"
FOLDERS = ["core", "settings", "proximity"]
ROW = re.compile(r"^///     (\w+) +(\S+)$", re.MULTILINE)
DEFINITION = re.compile(r"^[\w:<>,&* \[\]]*\bManager::(\w+)\(", re.MULTILINE)
INLINE = re.compile(r"\b(\w+)\([^;{}]*\)[\w ]*\{")
DECLARED = re.compile(r"\b(\w+)\(")


def table_of(header):
    """The rows: operation to its files, more than one where it stands there again."""
    rows = {}
    for name, file in ROW.findall(header):
        rows.setdefault(name, []).append(file)
    return rows


def split_header(header):
    """What the class declares for others, and its private part."""
    body = header[header.index("class Manager :"):]
    public, _, private = body.partition("\nprivate:")
    return public, private


def definitions(root):
    """Operation to the set of files that define it, without the constructor and the private steps."""
    src = Path(root, "src")
    public, private = split_header((src / HEADER).read_text(encoding="utf-8"))
    steps = set(DECLARED.findall(private)) - set(DECLARED.findall(public))
    found = {}
    for folder in FOLDERS:
        for path in sorted((src / folder).glob("*.cpp")):
            for name in DEFINITION.findall(path.read_text(encoding="utf-8")):
                found.setdefault(name, set()).add(path.relative_to(src).as_posix())
    for name in INLINE.findall(public):
        found.setdefault(name, set()).add(HEADER)
    return {name: files for name, files in found.items() if name != "Manager" and name not in steps}


def problems(root):
    table = table_of(Path(root, "src", HEADER).read_text(encoding="utf-8"))
    defined = definitions(root)
    if not table:
        yield f"{HEADER} has no table of operations"
    for name, files in sorted(table.items()):
        if len(files) != 1:
            yield f"{name} stands in the table {len(files)} times"
        if name not in defined:
            yield f"{name} stands in the table and is defined nowhere"
    for name, files in sorted(defined.items()):
        if name not in table:
            yield f"{name} ({', '.join(sorted(files))}) is missing from the table of {HEADER}"
        elif set(table[name]) != files:
            yield f"{name} lies in {', '.join(sorted(files))}, not in {', '.join(table[name])}"


def main(root):
    found = list(problems(root))
    for problem in found:
        print(problem)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
