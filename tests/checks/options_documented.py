#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Fails on a command or long option that the program has and its man page or a shell's completion has not, or the other
way round.

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
# An option as a page has it, without its two hyphens.
FOUND = {MAN: r"\\-\\-([a-z][a-z\\-]*)", BASH: r"(?<![\w-])--([a-z][a-z-]*)", ZSH: r"(?<![\w-])--([a-z][a-z-]*)",
         FISH: r"-l ([a-z][a-z-]*)"}
# The part of a page that speaks of a command.
SECTION = {MAN: r"^\.SS {}$(.*?)^\.S[HS] ", BASH: r"^        {}\) (.*?);;", ZSH: r"^        {}\)$(.*?);;",
           FISH: r"^([^\n]*__fish_seen_subcommand_from {}'.*?)$"}


def help_of(program, *command):
    return subprocess.run([program, *command, "--help"], capture_output=True, text=True, check=True).stdout


def section_of(text, head):
    return text.partition(f"\n{head}:\n")[2].partition("\n\n")[0]


def options_of(text):
    """Each stands at the begin of its line; the lines speak of others too."""
    named = re.findall(r"^  (-\S+)", section_of(text, "Options"), re.MULTILINE)
    return sorted({name for names in named for name in names.split(",") if name.startswith("--")} - {"--help"})


def commands_of(text):
    section = re.search(r"^Commands:\n((?: +.*\n?)+)", text, re.MULTILINE)
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


def invented(pages, options):
    """What the pages say that the options are not, a list for each command."""
    for page, text in pages.items():
        for command, names in options.items():
            told = re.findall(FOUND[page], part_about(page, text, command)) if command else []
            for name in sorted({name.replace("\\-", "-") for name in told} - {option[2:] for option in names} - {"help"}):
                yield f"{page} has --{name} of {command}, which the program has not"


def main(program, root):
    general = help_of(program)
    commands = commands_of(general)
    options = {"": options_of(general)}
    options |= {command: options_of(help_of(program, command)) for command in commands}
    pages = {page: Path(root, page).read_text(encoding="utf-8") for page in SPELLED}
    problems = [*missing(pages, options), *invented(pages, options)]
    if not commands or not any(options.values()):
        problems.append("the program's help names no commands or no options")
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
