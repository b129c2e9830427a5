#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Shows that manager_table.py finds a table that does not say where the operations are."""

import tempfile
import unittest
from pathlib import Path

from manager_table import problems

HEADER = """\
///     init      core/Manager.cpp
///     settings  core/Manager.h
///     forget    settings/Removal.cpp
///     start     proximity/Scan.cpp
class Manager : public Delegate {
public:
    Manager(const void* face);
    void init();
    [[nodiscard]] Settings settings() const noexcept { return settings_.load(); }
    void forget(Text portName);
    bool start();
    bool start(std::uint64_t number);

private:
    struct Found {
        std::string name() const { return {}; }
    };
    void step();
};
"""
SOURCES = {
    "core/Manager.cpp": "Manager::Manager(const void* face) : face_(face) {}\nvoid Manager::init() {\n    start();\n}\n",
    "settings/Removal.cpp": "void Manager::step() {}\n\nvoid Manager::forget(Text portName) {}\n",
    "proximity/Scan.cpp": "bool Manager::start() {}\nbool Manager::start(std::uint64_t number) {}\n",
}


class ManagerTable(unittest.TestCase):
    def found(self, header=HEADER, **sources):
        """What is wrong with a tree of these files; `core_Other` stands for core/Other.cpp."""
        files = {**SOURCES, "core/Manager.h": header}
        files.update({name.replace("_", "/") + ".cpp": text for name, text in sources.items()})
        with tempfile.TemporaryDirectory() as folder:
            for name, text in files.items():
                path = Path(folder, "src", name)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8")
            return list(problems(folder))

    def test_passes_a_table_that_is_true(self):
        self.assertEqual(self.found(), [])

    def test_finds_an_operation_without_a_row(self):
        self.assertEqual(self.found(HEADER.replace("///     init      core/Manager.cpp\n", "")),
                         ["init (core/Manager.cpp) is missing from the table of core/Manager.h"])
        self.assertEqual(self.found(HEADER.replace("///     settings  core/Manager.h\n", "")),
                         ["settings (core/Manager.h) is missing from the table of core/Manager.h"])

    def test_finds_an_operation_in_another_file(self):
        self.assertEqual(self.found(HEADER.replace("proximity/Scan.cpp", "proximity/Sweep.cpp")),
                         ["start lies in proximity/Scan.cpp, not in proximity/Sweep.cpp"])

    def test_finds_an_operation_in_two_files(self):
        self.assertEqual(self.found(proximity_Other="bool Manager::start(std::uint64_t number) {}\n"),
                         ["start lies in proximity/Other.cpp, proximity/Scan.cpp, not in proximity/Scan.cpp"])

    def test_finds_a_row_without_a_definition(self):
        self.assertEqual(self.found(settings_Removal="void Manager::step() {}\n"),
                         ["forget stands in the table and is defined nowhere"])

    def test_finds_a_row_that_stands_twice(self):
        twice = HEADER.replace("class Manager", "///     init  core/Manager.cpp\nclass Manager", 1)
        self.assertEqual(self.found(twice), ["init stands in the table 2 times"])

    def test_finds_a_header_without_a_table(self):
        self.assertIn("core/Manager.h has no table of operations", self.found(HEADER[HEADER.index("class"):]))

    def test_does_not_ask_for_the_private_steps(self):
        self.assertEqual(self.found(proximity_Steps="void Manager::step() {}\n"), [])

    def test_finds_a_definition_that_breaks_its_line(self):
        header = HEADER.replace("void init();", "void init();\n    std::optional<std::int32_t> scan(const A& a, B b);")
        source = "std::optional<std::int32_t> Manager::scan(const A& a,\n    B b) {}\n"
        self.assertEqual(self.found(header, proximity_More=source),
                         ["scan (proximity/More.cpp) is missing from the table of core/Manager.h"])


if __name__ == "__main__":
    unittest.main()
