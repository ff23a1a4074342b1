#!/usr/bin/env python3
"""Compiles the code of README.md and docs/reading.md, which is no whole program: fragments.py ROOT COMPILER
[INCLUDE_FOLDER...]"""

import pathlib
import subprocess
import sys

from page import blocks

# What the pages leave to their readers.
RECEIVED = """#include <vector>
void Talk(const vyn_connector::common::WireOf<vyn_connector::Credentials>& wire, const std::vector<std::uint8_t>& arena)
{
"""
CALLED = """#include <string>
#include <string_view>
void Refuse(const std::string& path, const std::string& reason);
void Filter(std::string_view name);
"""


def programs(root):
    [use] = blocks(root / "README.md", "cpp")
    include, statements = use.split("\n", 1)
    [function] = blocks(root / "docs/reading.md", "cpp")
    return {"README.md": include + "\n" + RECEIVED + statements + "}\n", "docs/reading.md": CALLED + function}


def main():
    root, compiler = pathlib.Path(sys.argv[1]), sys.argv[2]
    folders = [root / "lyr_ipc/source/common/include", root / "runtime/include", *sys.argv[3:]]
    # They show values and do nothing with them.
    command = [compiler, "-std=c++17", "-Wall", "-Wextra", "-Wpedantic", "-Werror", "-Wno-unused", "-fsyntax-only",
               *(f"-I{name}" for name in folders), "-x", "c++", "-"]
    wrong = [page for page, program in programs(root).items()
             if subprocess.run(command, input=program, text=True, check=False).returncode != 0]
    if wrong:
        sys.exit(f"the code of {' and '.join(wrong)} does not compile")


if __name__ == "__main__":
    main()
