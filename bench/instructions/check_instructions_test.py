#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What check_instructions.py calls too much."""

import contextlib
import io
import unittest

import check_instructions as check


def judged(now):
    kept = {work: 100.0 for work in check.WORK}
    with contextlib.redirect_stdout(io.StringIO()) as out:
        good = check.judge(kept, {**kept, "handler-100": now})
    return good, out.getvalue()


class Judge(unittest.TestCase):
    def test_five_percent_more_are_let_through_and_a_tenth_beyond_is_not(self):
        self.assertTrue(judged(105.0)[0])
        self.assertFalse(judged(105.1)[0])
        self.assertIn("GREW TOO MUCH", judged(105.1)[1])

    def test_less_is_good_and_is_said(self):
        good, text = judged(90.0)
        self.assertTrue(good)
        self.assertIn("--update", text)

    def test_work_that_the_file_does_not_name_is_an_error(self):
        with self.assertRaises(KeyError):
            check.judge({}, {work: 1.0 for work in check.WORK})

    def test_another_compiler_is_no_pass(self):
        with contextlib.redirect_stdout(io.StringIO()) as out:
            self.assertEqual(check.main(["no-program", "another compiler"]), check.DOES_NOT_APPLY)
        self.assertIn("DOES NOT APPLY", out.getvalue())


if __name__ == "__main__":
    unittest.main()
