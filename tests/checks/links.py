#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Fails on a link of a page that leads to no file of the project. Usage: links.py ROOT"""

import re
import sys
from pathlib import Path

LINK = re.compile(r"\]\(([^)\s]+)\)")
CODE = re.compile(r"^```.*?^```$|`[^`\n]*`", re.MULTILINE | re.DOTALL)


def dead_links(page):
    for target in LINK.findall(CODE.sub("", page.read_text(encoding="utf-8"))):
        if not re.match(r"[a-z]+:|#", target) and not (page.parent / target.split("#")[0]).exists():
            yield target


def main(root):
    pages = sorted(Path(root).glob("*.md")) + sorted(Path(root, "docs").rglob("*.md"))
    problems = [f"{page.relative_to(root)}: there is no {target}" for page in pages for target in dead_links(page)]
    if not any(LINK.search(page.read_text(encoding="utf-8")) for page in pages):
        problems.append("no links found")
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
