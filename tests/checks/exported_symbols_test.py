#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Shows that exported_symbols.py finds what should not be there, and what should."""

import tempfile
import unittest
from pathlib import Path

from exported_symbols import MUST_BE_THERE, exported_names, problems_of_shared, problems_of_static

CLASSES = {"QXNearcastManager", "PortException"}
GOOD = [("T", name) for name in MUST_BE_THERE]


class ExportedSymbols(unittest.TestCase):
    def test_reads_what_the_headers_mark(self):
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, "A.h").write_text("struct NEARCAST_EXPORT Marked {\n    void inside();\n};\nstruct Plain {};\n"
                                           "NEARCAST_EXPORT std::span<const Marked> marked(int) noexcept;\nint plain();\n",
                                           encoding="utf-8")
            self.assertEqual(exported_names(folder), {"Marked", "marked"})

    def test_passes_members_of_exported_classes(self):
        self.assertEqual(list(problems_of_shared(GOOD, CLASSES)), [])

    def test_finds_what_a_shared_library_should_not_export(self):
        for name in ("std::vector<nearcast::SettingValue>::_M_grow()", "main", "nlohmann::json::parse()",
                     "nearcast::Manager::startScan()", "typeinfo for nearcast::Radio", "vtable for std::exception",
                     "nearcast::simulator::builtInScene()"):
            with self.subTest(name=name):
                self.assertEqual(list(problems_of_shared(GOOD + [("W", name)], CLASSES)),
                                 [f"the shared library exports {name}"])

    def test_finds_what_a_shared_library_lacks(self):
        self.assertEqual(len(list(problems_of_shared([], CLASSES))), len(MUST_BE_THERE))

    def test_finds_strong_symbols_of_others_in_a_static_library(self):
        ours = [("T", "nearcast::Manager::startScan()"), ("W", "std::vector<int>::push_back(int&&)")]
        self.assertEqual(list(problems_of_static(ours)), [])
        for letter, name in (("T", "helper(int)"), ("D", "counter"), ("B", "CLI::App::instance"),
                             ("T", "nearcast::lab::play(nearcast::lab::PlaybackInput const&)")):
            with self.subTest(name=name):
                self.assertEqual(list(problems_of_static(ours + [(letter, name)])),
                                 [f"the static library defines {name}"])

    def test_finds_an_empty_static_library(self):
        self.assertEqual(list(problems_of_static([])), ["the static library defines nothing"])


if __name__ == "__main__":
    unittest.main()
