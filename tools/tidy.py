#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs clang-tidy over the sources of a build directory.

    tools/tidy.py BUILD [WORD...]

A file that passed is not looked at again until it, a header of ours that it reaches, its compiler flags, the checks or
clang-tidy itself change: BUILD/tidy holds an empty file named after the hash of all these. With words, only the files
whose path contains one of them.
"""

import concurrent.futures
import hashlib
import json
import os
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FOLDERS = ("src", "apps", "examples", "tests", "fuzz", "bench")
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', re.MULTILINE)
SEARCHED = [ROOT / "include", ROOT / "src", ROOT / "tests", ROOT / "apps" / "nearcast"]


def headers_of(path, found):
    """Adds the project's headers that the file reaches to `found`."""
    for name in INCLUDE.findall(path.read_text(encoding="utf-8", errors="replace")):
        for folder in [path.parent] + SEARCHED:
            header = (folder / name).resolve()
            if header.is_file() and header not in found:
                found.add(header)
                headers_of(header, found)


def key_of(entry, tool):
    digest = hashlib.sha256(tool.encode())
    digest.update(entry["command"].encode())
    path = Path(entry["file"])
    reached = {path}
    headers_of(path, reached)
    for configuration in [ROOT] + [p for p in path.parents if ROOT in p.parents]:
        if (configuration / ".clang-tidy").is_file():
            reached.add(configuration / ".clang-tidy")
    for file in sorted(reached):
        digest.update(str(file).encode() + b"\0" + file.read_bytes() + b"\0")
    return digest.hexdigest()


def check(entry, build):
    """What clang-tidy says of the file; nothing when it is content."""
    command = ["clang-tidy", "--quiet", f"-p={build}", "--extra-arg=-Wno-unknown-warning-option", entry["file"]]
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)
    return "" if result.returncode == 0 else result.stdout or result.stderr or f"{entry['file']}: clang-tidy failed\n"


def wanted(entry, words):
    path = os.path.relpath(entry["file"], ROOT)
    return path.split(os.sep)[0] in FOLDERS and (not words or any(word in path for word in words))


def main(arguments):
    build = Path(arguments[0]).resolve()
    entries = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    entries = [entry for entry in entries if wanted(entry, arguments[1:])]
    tool = subprocess.run(["clang-tidy", "--version"], capture_output=True, text=True, check=True).stdout
    passed = build / "tidy"
    passed.mkdir(exist_ok=True)
    keys = {entry["file"]: key_of(entry, tool) for entry in entries}
    todo = [entry for entry in entries if not (passed / keys[entry["file"]]).exists()]
    print(f"clang-tidy: {len(todo)} of {len(entries)} files to look at", flush=True)
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        checks = {pool.submit(check, entry, build): entry for entry in todo}
        for done in concurrent.futures.as_completed(checks):
            said = done.result()
            if said:
                failed += 1
                print(said, end="", flush=True)
            else:
                (passed / keys[checks[done]["file"]]).touch()
    if not entries:
        print("clang-tidy: nothing to look at; is the build directory configured?")
    elif failed:
        print(f"clang-tidy: {failed} files are not as they should be")
    return 0 if entries and not failed else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
