#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Shows that tools/bench_table.py fails a line that is over its budget, and takes nothing that it cannot understand."""

import json
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
LINE = {"what": "a thing", "unit": "ns", "value": 90.0, "floor": 60.0, "ratio": 1.5, "low": 1.4, "high": 1.7, "runs": 5,
        "budget": 1.5, "budget_of": "ratio"}


def line(**changes):
    return {**LINE, **changes}


class BenchTable(unittest.TestCase):
    def table(self, lines, *options, status=0):
        """Runs it on a program that writes these lines and ends with this status."""
        with tempfile.TemporaryDirectory() as folder:
            program = "import sys; print(sys.argv[2]); print('asked', sys.argv[3:], file=sys.stderr); " \
                      "sys.exit(int(sys.argv[1]))"
            text = "\n".join(each if isinstance(each, str) else json.dumps(each) for each in lines)
            programs = Path(folder, "programs.json")
            programs.write_text(json.dumps(
                [{"name": "one", "run": [sys.executable, "-c", program, str(status), text]}]), encoding="utf-8")
            self.json = Path(folder, "lines.jsonl")
            result = subprocess.run(
                [sys.executable, "-B", ROOT / "tools" / "bench_table.py", folder, "--programs", programs, "--json",
                 self.json, *options], capture_output=True, text=True, check=False)
            self.written = self.json.read_text(encoding="utf-8") if self.json.exists() else None
            return result

    def test_holds_a_line_that_is_just_within_its_budget(self):
        for within in (line(), line(budget=90.0, budget_of="value"), line(ratio=9.0, budget=None)):
            with self.subTest(line=within):
                result = self.table([within])
                self.assertEqual(result.returncode, 0, result.stderr)
                self.assertNotIn("OVER", result.stdout)

    def test_fails_a_line_that_is_just_over_its_budget(self):
        for over in (line(ratio=1.501), line(budget=89.9, budget_of="value")):
            with self.subTest(line=over):
                result = self.table([line(), over, line()])
                self.assertEqual(result.returncode, 1, result.stderr)
                self.assertEqual(result.stdout.count("OVER"), 1)
                self.assertEqual(result.stdout.count("held"), 2)
                self.assertIn("over its budget: a thing", result.stdout)

    def test_does_not_judge_a_quick_run(self):
        result = self.table([line(ratio=1.6)], "--quick")
        self.assertEqual(result.returncode, 0)
        self.assertNotRegex(result.stdout, "OVER|held|over its budget")

    def test_names_a_field_that_is_missing(self):
        for name in LINE:
            with self.subTest(name=name):
                result = self.table([{key: value for key, value in LINE.items() if key != name}])
                self.assertEqual(result.returncode, 2)
                self.assertIn(f'"{name}" is missing', result.stderr)

    def test_names_a_field_that_is_wrong(self):
        wrong = {"what": 1, "unit": None, "value": "90", "floor": True, "ratio": "1", "low": None, "high": float("nan"),
                 "runs": 5.0, "budget": "1.5", "budget_of": "floor", "other": 1}
        for name, value in wrong.items():
            with self.subTest(name=name):
                result = self.table([line(**{name: value})])
                self.assertEqual(result.returncode, 2)
                self.assertIn(f'"{name}"', result.stderr)

    def test_takes_no_budget_for_what_is_null(self):
        result = self.table([line(ratio=None, floor=None)])
        self.assertEqual(result.returncode, 2)
        self.assertIn('the field "ratio", which is null', result.stderr)

    def test_fails_when_a_program_fails_or_says_nothing_it_understands(self):
        for lines, status in (([line()], 3), ([], 0), (["90 ns"], 0), (["[1]"], 0)):
            with self.subTest(lines=lines, status=status):
                result = self.table(lines, status=status)
                self.assertEqual(result.returncode, 2)
                self.assertIn("bench_table.py: one: ", result.stderr)

    def test_hands_the_number_of_runs_on(self):
        self.assertIn("asked ['--runs', '5']", self.table([line()]).stderr)
        self.assertIn("asked ['--runs', '7', '--quick']", self.table([line()], "--runs", "7", "--quick").stderr)

    def test_runs_only_what_was_asked_for(self):
        self.assertEqual(self.table([line()], "--only", "^on").returncode, 0)
        result = self.table([line()], "--only", "two")
        self.assertEqual(result.returncode, 2)
        self.assertIn("no program", result.stderr)

    def test_shows_every_figure(self):
        out = self.table([line(), line(what="another", unit="ms", value=12.34, floor=None, ratio=None, low=11.0,
                                       high=1234.0, budget=20, budget_of="value")]).stdout
        rows = [" ".join(row.split()) for row in out.splitlines()]
        self.assertIn("a thing 90.0 ns 60.0 ns 1.50 1.40 to 1.70 (5) 1.5 x floor held", rows)
        self.assertIn("another 12.3 ms - - 11.0 to 1,234 (5) 20 ms held", rows)

    def test_writes_the_lines_as_they_came(self):
        self.table([line(), line(what="another")])
        self.assertEqual([json.loads(text) for text in self.written.splitlines()], [line(), line(what="another")])


if __name__ == "__main__":
    unittest.main()
