#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Fails where the C++ in the README is not the example that is built. Usage: readme_snippet.py ROOT"""

import difflib
import re
import sys
from pathlib import Path


def main(root):
    blocks = re.findall(r"^```cpp\n(.*?)^```$", Path(root, "README.md").read_text(encoding="utf-8"), re.S | re.M)
    example = Path(root, "examples/near.cpp").read_text(encoding="utf-8").split("\n", 1)[1]  # without the licence line
    if len(blocks) != 1:
        print(f"README.md has {len(blocks)} blocks of C++; one is expected")
        return 1
    difference = list(difflib.unified_diff(example.splitlines(), blocks[0].splitlines(), "examples/near.cpp",
                                           "README.md", lineterm=""))
    print("\n".join(difference))
    return 1 if difference else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
