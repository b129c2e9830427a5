#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Says which lines and branches of src/ the tests have reached, and fails under a floor.

    coverage.py BUILD PROFILES

BUILD is a build of the preset `coverage`, PROFILES the folder with what its programs have left behind. A header is seen
through the views of several layers (cmake/NearcastLayers.cmake) and in several template instances: each of its lines
and branches counts once, as reached when any of them has reached it.
"""

import collections
import json
import os
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
FLOOR = {"lines": 95.0, "branches": 88.0}  # percent of all of src/
SHOWN = 10  # of the files with the most that is not reached


class Reached:
    """For each file of src/ its lines, and the two ways of its branches, and whether they were reached."""

    def __init__(self, root, build):
        self.root = Path(os.path.realpath(root))
        self.build = Path(os.path.realpath(build))
        self.lines = collections.defaultdict(dict)
        self.branches = collections.defaultdict(dict)

    def file_of(self, name):
        """The path below the root of a file of src/ by the name that the compiler gave it; None for others."""
        # The names are those that records of the trace show: relative, from the root or from the build.
        for path in (self.root / name, self.root / os.path.relpath(name, os.path.relpath(self.build, self.root))):
            real = Path(os.path.realpath(path))
            if real.is_file() and self.root / "src" in real.parents:
                return real.relative_to(self.root).as_posix()
        return None

    def add_lines(self, lcov):
        file = None
        for line in lcov:
            key, _, rest = line.strip().partition(":")
            if key == "SF":
                file = self.file_of(rest)
            elif key == "DA" and file:
                number, count = map(int, rest.split(",")[:2])
                self.lines[file][number] = self.lines[file].get(number, False) or count > 0

    def add_branches(self, export):
        for entry in export["data"][0]["files"]:
            file = self.file_of(entry["filename"])
            for branch in entry["branches"] if file else ():
                place, counts = tuple(branch[:4]), branch[4:6]
                for way, count in enumerate(counts):
                    key = (*place, way)
                    self.branches[file][key] = self.branches[file].get(key, False) or count > 0

    def files(self):
        return sorted(set(self.lines) | set(self.branches))


def folder_of(file):
    """src/core for what is in it and below; a back end has a folder of its own."""
    parts = file.split("/")[:-1]
    return "/".join(parts[:3] if parts[1] == "platform" else parts[:2])


def percent(reached, all_of_them):
    return 100.0 * reached / all_of_them if all_of_them else 100.0


def sums(reached, files):
    """{"lines": (reached, all), "branches": (reached, all)} of these files."""
    found = {}
    for what in FLOOR:
        parts = [getattr(reached, what).get(file, {}) for file in files]
        found[what] = sum(sum(part.values()) for part in parts), sum(map(len, parts))
    return found


def row(name, figures):
    cells = [f"{good:6}/{every:<6} {percent(good, every):6.1f} %" for good, every in figures.values()]
    return f"{name:32} " + "   ".join(cells)


def show(reached):
    print(f"{'':32} {'lines':>22}   {'branches':>22}")
    folders = collections.defaultdict(list)
    for file in reached.files():
        folders[folder_of(file)].append(file)
    for folder, files in sorted(folders.items()):
        print(row(folder, sums(reached, files)))
    print(row("src", sums(reached, reached.files())))
    missed = {file: [number for number, good in sorted(reached.lines[file].items()) if not good]
              for file in reached.files()}
    print("\nlines that no test reaches, where there are most:")
    for file in sorted(missed, key=lambda file: -len(missed[file]))[:SHOWN]:
        if missed[file]:
            print(f"  {file}: {', '.join(map(str, missed[file]))}")


def problems_of(reached, floor):
    for what, (good, every) in sums(reached, reached.files()).items():
        if every == 0:
            yield f"there are no {what} at all"
        elif percent(good, every) < floor[what]:
            yield f"{percent(good, every):.1f} % of the {what} are reached, fewer than {floor[what]:g} %"


def tool(name):
    found = shutil.which(name) or shutil.which(name + "-14")
    if found is None:
        raise SystemExit(f"coverage: there is no {name} (package llvm)")
    return found


def programs_in(build):
    """The programs of the tests, and the library with all of its objects, whether a test links them or not."""
    found = [path.resolve() for path in build.glob("src/libnearcast.so")]
    for folder in ("tests", "fuzz", "apps"):
        for path in sorted((build / folder).rglob("*")):
            if path.is_file() and os.access(path, os.X_OK) and path.read_bytes()[:4] == b"\x7fELF":
                found.append(path)
    return found


def read(build, profiles):
    merged = build / "coverage.profdata"
    raw = sorted(map(str, Path(profiles).glob("*.profraw")))
    if not raw:
        raise SystemExit(f"coverage: no program has left anything in {profiles}")
    subprocess.run([tool("llvm-profdata"), "merge", "-sparse", "-o", str(merged), *raw], check=True)
    first, *others = map(str, programs_in(build))
    export = [tool("llvm-cov"), "export", f"-instr-profile={merged}", first, *(f"-object={one}" for one in others)]
    reached = Reached(ROOT, build)
    with subprocess.Popen([*export, "-format=lcov"], stdout=subprocess.PIPE, text=True) as lcov:
        reached.add_lines(lcov.stdout)
    if lcov.returncode != 0:
        raise SystemExit("coverage: llvm-cov has failed")
    text = subprocess.run([*export, "-skip-functions", "-skip-expansions"], check=True, capture_output=True).stdout
    reached.add_branches(json.loads(text))
    return reached


def main(argv):
    build, profiles = map(Path, argv)
    reached = read(build, profiles)
    show(reached)
    problems = list(problems_of(reached, FLOOR))
    for problem in problems:
        print(f"coverage: {problem}")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
