#!/usr/bin/env python3
"""Compiles the function that docs/reading.md shows: reading.py ROOT COMPILER [INCLUDE_FOLDER...]"""

import pathlib
import subprocess
import sys

from page import blocks

# What the page leaves to its reader.
CALLED = """#include <string>
#include <string_view>
void Refuse(const std::string& path, const std::string& reason);
void Filter(std::string_view name);
"""


def main():
    root, compiler = pathlib.Path(sys.argv[1]), sys.argv[2]
    [function] = blocks(root / "docs/reading.md", "cpp")
    folders = [root / "lyr_ipc/source/common/include", root / "runtime/include", *sys.argv[3:]]
    # It shows values and does nothing with them.
    return subprocess.run([compiler, "-std=c++17", "-Wall", "-Wextra", "-Wpedantic", "-Werror", "-Wno-unused",
                           "-fsyntax-only", *(f"-I{name}" for name in folders), "-x", "c++", "-"],
                          input=CALLED + function, text=True, check=False).returncode


if __name__ == "__main__":
    sys.exit(main())
