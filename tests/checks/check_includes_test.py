#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Shows that tools/check_includes.py fails on each kind of line that it is there for, and on nothing else."""

import contextlib
import io
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
import check_includes  # noqa: E402

# Headers that the lines below speak of.
HEADERS = [
    "include/nearcast/Platform.h",
    "src/core/Manager.h",
    "src/platform/NSLock.h",
    "src/platform/json/JSONSerialization.h",
    "src/platform/radio/Radio.h",
    "src/platform/simulator/Shop.h",
    "src/platform/system/SystemClock.h",
    "src/platform/timeline/Timeline.h",
    "src/platform/virtual/VirtualRadio.h",
    "src/scenario/Line.h",
    "src/support/Queue.h",
    "apps/nearcast/Command.h",
]

# File, what it includes.
FORBIDDEN = [
    ("src/core/A.cpp", '"platform/system/SystemClock.h"'),
    ("src/core/A.cpp", "<platform/system/SystemClock.h>"),
    ("src/core/A.cpp", '"platform/radio/Radio.h"'),
    ("src/core/A.cpp", '"scenario/Line.h"'),
    ("src/settings/A.cpp", "<nlohmann/json.hpp>"),
    ("src/settings/A.h", '"platform/json/JSONSerialization.h"'),
    ("src/proximity/A.cpp", "<unistd.h>"),
    ("src/proximity/A.cpp", "<sys/timerfd.h>"),
    ("src/proximity/A.cpp", "<time.h>"),
    ("src/proximity/A.cpp", "<ctime>"),
    ("src/proximity/A.cpp", "<boost/asio.hpp>"),
    ("src/support/A.cpp", '"core/Manager.h"'),
    ("src/support/A.cpp", '"platform/NSLock.h"'),
    ("src/nearest/A.cpp", '"core/Manager.h"'),
    ("src/nearest/A.cpp", '"platform/NSLock.h"'),
    ("include/nearcast/A.h", '"support/Queue.h"'),
    ("include/nearcast/A.h", "<pthread.h>"),
    ("include/nearcast/A.h", "<nearcast/Absent.h>"),
    ("src/platform/A.h", '"platform/system/SystemClock.h"'),
    ("src/platform/A.h", "<fcntl.h>"),
    ("src/platform/radio/A.cpp", '"platform/timeline/Timeline.h"'),
    ("src/platform/radio/A.cpp", "<poll.h>"),
    ("src/platform/timeline/A.cpp", "<linux/rfkill.h>"),
    ("src/platform/simulator/A.cpp", '"platform/system/SystemClock.h"'),
    ("src/platform/system/A.cpp", '"platform/simulator/Shop.h"'),
    ("src/platform/system/A.cpp", "<nlohmann/json.hpp>"),
    ("src/platform/system/A.cpp", "<systemd/sd-bus.h>"),
    ("src/platform/replay/A.cpp", '"core/Manager.h"'),
    ("src/scenario/A.cpp", '"platform/simulator/Shop.h"'),
    ("src/scenario/A.cpp", '"core/Manager.h"'),
    ("src/scenario/A.cpp", "<unistd.h>"),
    ("src/scenario/A.cpp", '"../core/Manager.h"'),
    ("src/scenario/A.cpp", '"Absent.h"'),
    ("src/scenario/A.cpp", "NEARCAST_HEADER"),
    ("src/unheard/A.cpp", "<vector>"),
    ("src/platform/unheard/A.cpp", "<vector>"),
    ("src/A.cpp", "<vector>"),
    ("examples/A.cpp", '"core/Manager.h"'),
    ("tests/consumer/A.cpp", '"support/Queue.h"'),
]

ALLOWED = [
    ("src/core/A.cpp", '"platform/NSLock.h"'),
    ("src/core/A.cpp", '"support/Queue.h"'),
    ("src/core/A.cpp", "<nearcast/Platform.h>"),
    ("src/core/A.cpp", "<vector>"),
    ("src/settings/A.cpp", '"core/Manager.h"'),
    ("src/nearest/A.cpp", "<nearcast/Platform.h>"),
    ("src/platform/json/A.cpp", "<nlohmann/json.hpp>"),
    ("src/platform/replay/A.cpp", '"scenario/Line.h"'),
    ("src/platform/simulator/A.cpp", '"platform/timeline/Timeline.h"'),
    ("src/platform/system/A.cpp", "<sys/timerfd.h>"),
    ("src/platform/factory/A.cpp", '"platform/simulator/Shop.h"'),
    ("src/scenario/A.cpp", '"platform/virtual/VirtualRadio.h"'),
    ("apps/nearcast/A.cpp", '"scenario/Line.h"'),
    ("apps/nearcast/A.cpp", '"Command.h"'),
    ("apps/nearcast/A.cpp", "<CLI/CLI.hpp>"),
    ("apps/nearcast/A.cpp", "<unistd.h>"),
    ("examples/A.cpp", "<nearcast/Platform.h>"),
]


def run_on(files):
    """The check's exit status and what it printed, for a tree of these files."""
    with tempfile.TemporaryDirectory() as folder, contextlib.redirect_stdout(io.StringIO()) as printed:
        for name, text in files.items():
            path = Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        return check_includes.main([folder]), printed.getvalue()


def run_with_line(file, included, lead="#include "):
    return run_on({name: "#pragma once\n" for name in HEADERS} | {file: f"#pragma once\n{lead}{included}\n"})


class CheckIncludes(unittest.TestCase):
    def test_fails_on_what_a_layer_may_not_have(self):
        for file, included in FORBIDDEN:
            with self.subTest(file=file, included=included):
                status, printed = run_with_line(file, included)
                self.assertEqual(status, 1, printed)
                self.assertIn(f"{file}:2: ", printed)

    def test_passes_what_a_layer_may_have(self):
        for file, included in ALLOWED:
            with self.subTest(file=file, included=included):
                status, printed = run_with_line(file, included)
                self.assertEqual(status, 0, printed)

    def test_reads_lines_in_other_spellings(self):
        for lead in ("#  include ", "  #include ", "#include"):
            with self.subTest(lead=lead):
                self.assertEqual(run_with_line("src/core/A.cpp", "<unistd.h>", lead)[0], 1)

    def test_fails_where_there_is_nothing_to_read(self):
        self.assertEqual(run_on({})[0], 1)


if __name__ == "__main__":
    unittest.main()
