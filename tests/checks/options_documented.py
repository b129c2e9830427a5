#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Fails on a command or long option of the program that its man page or a shell's completion does not know.

    options_documented.py PROGRAM ROOT
"""

import re
import subprocess
import sys
from pathlib import Path

MAN = "packaging/man/nearcast.1"
BASH = "packaging/completion/nearcast.bash"
ZSH = "packaging/completion/nearcast.zsh"
FISH = "packaging/completion/nearcast.fish"

# How a page spells an option.
SPELLED = {MAN: lambda option: option.replace("-", "\\-"), BASH: str, ZSH: str, FISH: lambda option: f"-l {option[2:]}"}
# The part of a page that speaks of a command.
SECTION = {MAN: r"^\.SS {}$(.*?)^\.S[HS] ", BASH: r"^        {}\) (.*?);;", ZSH: r"^        {}\)$(.*?);;",
           FISH: r"^([^\n]*__fish_seen_subcommand_from {}'.*?)$"}


def help_of(program, *command):
    return subprocess.run([program, *command, "--help"], capture_output=True, text=True, check=True).stdout


def options_of(text):
    return sorted(set(re.findall(r"(?<![\w-])--[a-z][a-z-]*", text)) - {"--help"})


def commands_of(text):
    section = re.search(r"^Subcommands:\n((?: +.*\n?)+)", text, re.MULTILINE)
    return re.findall(r"^  (\w+)", section.group(1), re.MULTILINE) if section else []


def part_about(page, text, command):
    """What the page says of a command; of the program itself, all of it."""
    if not command:
        return text
    return "\n".join(re.findall(SECTION[page].format(command), text, re.MULTILINE | re.DOTALL))


def missing(pages, options):
    """What the pages do not say of the options, a list for each command; the command "" is the program itself."""
    for page, text in pages.items():
        for command, names in options.items():
            about = part_about(page, text, command)
            if not about:
                yield f"{page} does not speak of the command {command}"
                continue
            for option in names:
                if not re.search(re.escape(SPELLED[page](option)) + r"(?![\w-])", about):
                    yield f"{page} does not have {option} of {command or 'the program'}"


def main(program, root):
    general = help_of(program)
    commands = commands_of(general)
    # The general help speaks of the commands' options too, in its last paragraphs.
    options = {"": options_of(general.split("Subcommands:")[0])}
    options |= {command: options_of(help_of(program, command).split("Radios (--radio):")[0]) for command in commands}
    problems = list(missing({page: Path(root, page).read_text(encoding="utf-8") for page in SPELLED}, options))
    if not commands or not any(options.values()):
        problems.append("the program's help names no commands or no options")
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
