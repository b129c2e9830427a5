#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Shows that tools/coverage.py counts a header once, and that its floor is one."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
from coverage import Reached, folder_of, problems_of, sums  # noqa: E402

FLOOR = {"lines": 80.0, "branches": 50.0}


class Coverage(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        root = Path(folder.name, "tree")
        build = root / "build/coverage"
        for name in ("src/core/A.cpp", "src/core/A.h", "tests/T.cpp"):
            (root / name).parent.mkdir(parents=True, exist_ok=True)
            (root / name).touch()
        for view in ("core", "settings"):
            (build / "views" / view).mkdir(parents=True)
            (build / "views" / view / "core").symlink_to(root / "src/core")
        self.reached = Reached(root, build)

    def lines(self, file, **counts):
        self.reached.add_lines([f"SF:{file}\n", *(f"DA:{line[1:]},{count}\n" for line, count in counts.items())])

    def branches(self, file, *branches):
        self.reached.add_branches({"data": [{"files": [{"filename": file, "branches": branches}]}]})

    def test_counts_a_header_once_whatever_view_it_is_seen_through(self):
        self.lines("build/coverage/views/core/core/A.h", _1=0, _2=5, _3=0)
        self.lines("build/coverage/views/settings/core/A.h", _1=7, _2=0, _3=0)
        self.assertEqual(self.reached.lines, {"src/core/A.h": {1: True, 2: True, 3: False}})

    def test_knows_a_source_by_a_name_from_the_root_or_from_the_build(self):
        self.lines("src/core/A.cpp", _1=0, _2=0)
        self.lines("build/coverage/src/core/A.cpp", _1=1)
        self.assertEqual(self.reached.lines, {"src/core/A.cpp": {1: True, 2: False}})

    def test_leaves_out_what_is_not_in_src(self):
        self.lines("tests/T.cpp", _1=1)
        self.lines("/usr/include/c++/12/vector", _1=1)
        self.branches("tests/T.cpp", [1, 2, 1, 9, 0, 1, 0, 0, 4])
        self.assertEqual(self.reached.files(), [])

    def test_counts_both_ways_of_a_branch_over_all_template_instances(self):
        self.branches("src/core/A.h", [3, 9, 3, 14, 1, 0, 0, 0, 4], [3, 9, 3, 14, 2, 0, 0, 0, 4],
                      [4, 9, 4, 14, 1, 0, 0, 0, 4])
        self.branches("build/coverage/views/core/core/A.h", [4, 9, 4, 14, 0, 3, 0, 0, 4])
        self.assertEqual(sums(self.reached, self.reached.files())["branches"], (3, 4))

    def test_fails_under_the_floor_and_not_on_it(self):
        self.lines("src/core/A.cpp", _1=1, _2=1, _3=1, _4=1, _5=0)
        self.branches("src/core/A.cpp", [1, 2, 1, 9, 0, 1, 0, 0, 4])
        self.assertEqual(list(problems_of(self.reached, FLOOR)), [])
        self.lines("src/core/A.h", _1=0)
        self.branches("src/core/A.h", [1, 2, 1, 9, 0, 0, 0, 0, 4])
        self.assertEqual(list(problems_of(self.reached, FLOOR)),
                         ["66.7 % of the lines are reached, fewer than 80 %",
                          "25.0 % of the branches are reached, fewer than 50 %"])

    def test_fails_where_nothing_was_seen(self):
        self.assertEqual(list(problems_of(self.reached, FLOOR)),
                         ["there are no lines at all", "there are no branches at all"])

    def test_gives_each_back_end_a_row(self):
        self.assertEqual([folder_of(file) for file in ("src/platform/bluez/A.cpp", "src/platform/A.h", "src/core/A.h",
                                                       "src/support/log/A.h")],
                         ["src/platform/bluez", "src/platform", "src/core", "src/support"])


if __name__ == "__main__":
    unittest.main()
