#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Shows that links.py finds a link that leads nowhere."""

import tempfile
import unittest
from pathlib import Path

from links import dead_links


class Links(unittest.TestCase):
    def dead_in(self, text):
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, "docs").mkdir()
            Path(folder, "docs", "there.md").touch()
            page = Path(folder, "page.md")
            page.write_text(text, encoding="utf-8")
            return list(dead_links(page))

    def test_finds_links_to_files_that_are_not_there(self):
        self.assertEqual(self.dead_in("[a](docs/gone.md) and [b](there.md#part)"), ["docs/gone.md", "there.md#part"])

    def test_passes_files_parts_of_pages_and_other_sites(self):
        self.assertEqual(self.dead_in("[a](docs/there.md) [b](docs/there.md#part) [c](#part) [d](https://a.org/b)"), [])

    def test_does_not_read_code(self):
        self.assertEqual(self.dead_in("`[a](gone)`\n```cpp\n[&](auto)\n```\n"), [])


if __name__ == "__main__":
    unittest.main()
