#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Shows that help_agrees.py finds what a page says differently."""

import unittest

from help_agrees import MAN, calls_in, missing_in_man_page, missing_words, wrong_calls

HELP = """Tells

Commands:
  watch                       Show

Examples:
  nearcast watch --for 5
  nearcast run x

Exit status:
  0  done
  1  not done
"""
PAGE = (".SH EXIT STATUS\n.TP\n.B 0\nDone.\n.TP\n.B 1\nNot.\n.SH EXAMPLES\nnearcast watch \\-\\-for 5\n"
        "nearcast run x\n.SH SEE ALSO\n.B 2\n")
DOCUMENT = """Some words on `nearcast dance`.

    nearcast watch --for 5 --json=x > out       # nearcast dance --twice
    cat nearcast

```sh
nearcast record | nearcast dance
```
"""


class HelpAgrees(unittest.TestCase):
    def test_is_content_with_a_page_that_has_all(self):
        self.assertEqual(list(missing_in_man_page(PAGE, [HELP])), [])

    def test_finds_an_example_that_the_man_page_has_not(self):
        self.assertEqual(list(missing_in_man_page(PAGE.replace("run x", "run xy"), [HELP])),
                         [f"{MAN} does not have the example: nearcast run x"])

    def test_finds_an_exit_status_that_the_man_page_has_not(self):
        self.assertEqual(list(missing_in_man_page(PAGE.replace(".B 1", ".B 4"), [HELP])),
                         [f"{MAN} has the exit statuses ['0', '4'], and the help ['0', '1']"])

    def test_finds_a_word_that_a_completion_does_not_offer(self):
        self.assertEqual(list(missing_words({"page": "a='median-7 stale'"}, ["median-7", "median", "stale"])),
                         ["page does not offer median"])

    def test_reads_the_calls_in_a_document(self):
        self.assertEqual(list(calls_in(DOCUMENT)),
                         [["nearcast", "watch", "--for", "5", "--json=x"], ["nearcast", "record"]])

    def test_finds_a_call_of_a_command_or_option_that_there_is_not(self):
        self.assertEqual(list(wrong_calls("x.md", DOCUMENT, {"watch": ["--for"]})),
                         ["x.md: watch has no --json", "x.md: there is no command record: nearcast record"])


if __name__ == "__main__":
    unittest.main()
