#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Shows that tools/soak.py fails on a program whose memory grows with time, and on one that does not end well."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOAK = Path(__file__).resolve().parents[2] / "tools" / "soak.py"
PROGRAM = """#!{python}
import sys, time
seconds = int(sys.argv[sys.argv.index("--for") + 1])
kept = b"x" * ({kept})
time.sleep(0.2)
sys.exit({status})
"""


class Soak(unittest.TestCase):
    def soak(self, kept="0", status="0"):
        with tempfile.TemporaryDirectory() as folder:
            program = Path(folder, "program")
            program.write_text(PROGRAM.format(python=sys.executable, kept=kept, status=status), encoding="utf-8")
            program.chmod(0o755)
            return subprocess.run([sys.executable, "-B", SOAK, program, "--for", "100", "--growth", "4096"],
                                  capture_output=True, text=True, check=False)

    def test_passes_a_program_that_stays_as_it_is(self):
        result = self.soak(kept="10_000_000")
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertRegex(result.stdout, r"10 s of shop .*\n100 s of shop ")

    def test_fails_on_a_program_that_grows(self):
        result = self.soak(kept="seconds * 200_000")
        self.assertEqual(result.returncode, 1, result.stdout + result.stderr)
        self.assertIn("memory grows by", result.stdout)

    def test_fails_on_a_program_that_does_not_end_well(self):
        result = self.soak(status="3")
        self.assertEqual(result.returncode, 1)
        self.assertIn("has ended with 3", result.stderr)


if __name__ == "__main__":
    unittest.main()
