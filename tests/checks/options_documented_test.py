#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Shows that options_documented.py finds an option, or a command, that a page leaves out."""

import unittest

from options_documented import BASH, FISH, MAN, ZSH, commands_of, invented, missing, options_of

PAGES = {
    MAN: ".SH COMMANDS\n.SS watch\n.BI \\-\\-for \" SECONDS\"\n.SS run\n.B \\-\\-trace\n.SH OPTIONS\n.B \\-\\-version\n",
    BASH: "    case $command in\n        watch) options='--for' ;;\n        run) options='--trace' ;;\n"
          "        *) options='--version' ;;\n",
    ZSH: "--version\n        watch)\n            _arguments '--for[x]:s:'\n            ;;\n"
         "        run)\n            _arguments '--trace[x]'\n            ;;\n",
    FISH: "complete -n 'x' -l version\ncomplete -n '__fish_seen_subcommand_from watch' -l for -x\n"
          "complete -n '__fish_seen_subcommand_from run' -l trace\n",
}
HELP = """Usage: nearcast [OPTIONS] SUBCOMMAND

Options:
  -h,--help                   Print this help message and exit
  -o,--output TEXT            Write there, or with --else somewhere else
  --for FLOAT                 End after so many seconds

Commands:
  watch                       Show which devices are near
  run                         Run a scenario

Examples:
  nearcast run --trace
"""


class OptionsDocumented(unittest.TestCase):
    def test_is_content_where_every_page_has_every_option(self):
        self.assertEqual(list(missing(PAGES, {"": ["--version"], "watch": ["--for"], "run": ["--trace"]})), [])

    def test_finds_an_option_that_a_page_leaves_out(self):
        for option in ("--json", "--fo", "--trace"):  # unknown, a part of another, another command's
            with self.subTest(option=option):
                self.assertEqual(list(missing(PAGES, {"watch": [option]})),
                                 [f"{page} does not have {option} of watch" for page in PAGES])

    def test_finds_an_option_that_a_page_has_and_the_program_has_not(self):
        self.assertEqual(list(invented(PAGES, {"watch": ["--for"], "run": ["--trace"]})), [])
        self.assertEqual(list(invented(PAGES, {"watch": [], "run": ["--trace"]})),
                         [f"{page} has --for of watch, which the program has not" for page in PAGES])

    def test_finds_a_command_that_a_page_leaves_out(self):
        self.assertEqual(list(missing(PAGES, {"scene": []})),
                         [f"{page} does not speak of the command scene" for page in PAGES])

    def test_reads_the_commands_and_options_of_a_help_text(self):
        self.assertEqual(commands_of(HELP), ["watch", "run"])
        self.assertEqual(options_of(HELP), ["--for", "--output"])


if __name__ == "__main__":
    unittest.main()
