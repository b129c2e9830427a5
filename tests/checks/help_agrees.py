#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Fails where the man page, a completion or a document says another thing than the program's help.

    help_agrees.py PROGRAM ROOT

- The man page has every example of every help, and the exit statuses of the general one.
- The completions offer every rule and every setting that the program knows.
- What documents show of the program are commands that it has, with options that they have.
"""

import re
import shlex
import subprocess
import sys
from pathlib import Path

from options_documented import BASH, FISH, MAN, ZSH, commands_of, help_of, options_of, section_of

FOLDERS_OF_OTHERS = {"build", "node_modules"}


def examples_of(text):
    return [line.strip() for line in section_of(text, "Examples").splitlines()]


def statuses_of(text):
    return re.findall(r"^  (\d)  ", section_of(text, "Exit status"), re.MULTILINE)


def missing_in_man_page(page, helps):
    """@param helps: the general one first"""
    written = page.replace("\\-", "-").splitlines()
    for text in helps:
        yield from (f"{MAN} does not have the example: {line}" for line in examples_of(text) if line not in written)
    told = re.findall(r"^\.B (\d)$", page.partition(".SH EXIT STATUS\n")[2].partition("\n.SH")[0], re.MULTILINE)
    if told != statuses_of(helps[0]):
        yield f"{MAN} has the exit statuses {told}, and the help {statuses_of(helps[0])}"


def missing_words(pages, words):
    for name, text in pages.items():
        known = set(re.findall(r"[\w.-]+", text))
        yield from (f"{name} does not offer {word}" for word in words if word not in known)


def calls_in(text):
    """The calls of the program in a document's blocks of code, each in words."""
    lines = re.findall(r"^    (nearcast -*[a-z]+(?: .*)?)$", text, re.MULTILINE)
    for block in re.findall(r"^```\w*\n(.*?)^```", text, re.MULTILINE | re.DOTALL):
        lines += re.findall(r"^(nearcast -*[a-z]+(?: .*)?)$", block, re.MULTILINE)
    for line in lines:
        words = shlex.split(line, comments=True)
        ends = [place for place, word in enumerate(words) if word in ("|", ">", ">>", "&&", ";", "&")]
        yield words[:ends[0]] if ends else words


def wrong_calls(name, text, options):
    for words in calls_in(text):
        command = words[1] if len(words) > 1 else ""
        if command in ("help", "version", "--version", "--help"):
            continue
        if command not in options:
            yield f"{name}: there is no command {command}: {' '.join(words)}"
            continue
        used = {word.partition("=")[0] for word in words[2:] if word.startswith("--")} - {"--help"}
        yield from (f"{name}: {command} has no {option}" for option in sorted(used - set(options[command])))


def documents(root):
    for path in sorted(Path(root).rglob("*.md")):
        if not FOLDERS_OF_OTHERS & set(path.relative_to(root).parts):
            yield str(path.relative_to(root)), path.read_text(encoding="utf-8")


def words_of(program):
    """The rules and the settings, as the program knows them."""
    rules = subprocess.run([program, "evaluate", "--list-rules"], capture_output=True, text=True, check=True).stdout
    refused = subprocess.run([program, "evaluate", "x", "--set", "none=1"], capture_output=True, text=True, check=False)
    settings = re.search(r"\(known: (.*?)\)", refused.stderr).group(1).split(", ")
    return [line.split()[0] for line in rules.splitlines()] + settings


def main(program, root):
    general = help_of(program)
    commands = commands_of(general)
    helps = [general] + [help_of(program, command) for command in commands]
    options = {command: options_of(text) for command, text in zip(commands, helps[1:])}
    read = {page: Path(root, page).read_text(encoding="utf-8") for page in (MAN, BASH, ZSH, FISH)}
    problems = list(missing_in_man_page(read.pop(MAN), helps))
    problems += missing_words(read, words_of(program))
    for name, text in documents(root):
        problems += wrong_calls(name, text, options)
    if not commands or not all(map(examples_of, helps)) or not statuses_of(general):
        problems.append("the program's help names no commands, no examples or no exit statuses")
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
