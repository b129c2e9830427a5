#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Shows that tools/check_system_headers.py fails on each kind of line that it is there for, and on nothing else."""

import contextlib
import io
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
import check_system_headers  # noqa: E402

# File, what it includes.
FORBIDDEN = [
    ("src/core/A.cpp", "<unistd.h>"),
    ("src/settings/A.cpp", "<nlohmann/json.hpp>"),
    ("src/proximity/A.cpp", "<sys/timerfd.h>"),
    ("src/proximity/A.cpp", "<time.h>"),
    ("src/proximity/A.cpp", "<ctime>"),
    ("src/proximity/A.cpp", "<boost/asio.hpp>"),
    ("src/support/log/A.cpp", "<unistd.h>"),
    ("src/nearest/A.cpp", "<csignal>"),
    ("include/nearcast/A.h", "<pthread.h>"),
    ("src/platform/A.h", "<fcntl.h>"),
    ("src/platform/radio/A.cpp", "<poll.h>"),
    ("src/platform/timeline/A.cpp", "<linux/rfkill.h>"),
    ("src/platform/system/A.cpp", "<nlohmann/json.hpp>"),
    ("src/platform/hci/A.cpp", "<systemd/sd-bus.h>"),
    ("src/lab/A.cpp", "<unistd.h>"),
    ("src/lines/A.cpp", "<nlohmann/json.hpp>"),
    ("src/platform/replay/A.cpp", "<zlib.h>"),
    ("src/lab/A.cpp", '"../core/Manager.h"'),
    ("src/lab/A.cpp", "NEARCAST_HEADER"),
    ("examples/A.cpp", "<CLI/CLI.hpp>"),
]
ALLOWED = [
    ("src/core/A.cpp", '"platform/NSLock.h"'),
    ("src/core/A.cpp", "<nearcast/Platform.h>"),
    ("src/core/A.cpp", "<vector>"),
    ("src/platform/json/A.cpp", "<nlohmann/json.hpp>"),
    ("src/platform/bluez/A.cpp", "<systemd/sd-bus.h>"),
    ("src/platform/system/A.cpp", "<sys/timerfd.h>"),
    ("src/platform/files/A.cpp", "<zlib.h>"),
    ("apps/nearcast/watch/A.cpp", "<CLI/CLI.hpp>"),
    ("apps/nearcast/A.cpp", "<unistd.h>"),
    ("examples/A.cpp", "<nearcast/Platform.h>"),
]
WITHOUT_A_RULE = ["src/unheard/A.cpp", "src/platform/unheard/A.cpp", "src/A.cpp"]


def run_on(files):
    """The check's exit status and what it printed, for a tree of these files."""
    with tempfile.TemporaryDirectory() as folder, contextlib.redirect_stdout(io.StringIO()) as printed:
        for name, text in files.items():
            path = Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        return check_system_headers.main([folder]), printed.getvalue()


class CheckSystemHeaders(unittest.TestCase):
    def test_fails_on_what_a_folder_may_not_use(self):
        for file, included in FORBIDDEN:
            with self.subTest(file=file, included=included):
                status, printed = run_on({file: f"#pragma once\n#include {included}\n"})
                self.assertEqual(status, 1, printed)
                self.assertIn(f"{file}:2: ", printed)

    def test_passes_what_a_folder_may_use(self):
        for file, included in ALLOWED:
            with self.subTest(file=file, included=included):
                status, printed = run_on({file: f"#include {included}\n"})
                self.assertEqual(status, 0, printed)

    def test_fails_on_a_folder_without_a_rule(self):
        for file in WITHOUT_A_RULE:
            with self.subTest(file=file):
                status, printed = run_on({file: "#include <vector>\n"})
                self.assertEqual(status, 1, printed)
                self.assertIn("no rule", printed)

    def test_reads_lines_in_other_spellings(self):
        for lead in ("#  include ", "  #include ", "#include"):
            with self.subTest(lead=lead):
                self.assertEqual(run_on({"src/core/A.cpp": f"{lead}<unistd.h>\n"})[0], 1)

    def test_fails_where_there_is_nothing_to_read(self):
        self.assertEqual(run_on({})[0], 1)


if __name__ == "__main__":
    unittest.main()
