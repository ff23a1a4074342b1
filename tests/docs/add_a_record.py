#!/usr/bin/env python3
"""Compiles the record that docs/add-a-record.md adds: add_a_record.py ROOT COMPILER [INCLUDE_FOLDER...]"""

import pathlib
import subprocess
import sys
import tempfile

from page import blocks


def main():
    root, compiler = pathlib.Path(sys.argv[1]), sys.argv[2]
    header, source = blocks(root / "docs/add-a-record.md", "cpp")
    common = root / "lyr_ipc/source/common"
    with tempfile.TemporaryDirectory() as folder:
        include = pathlib.Path(folder) / "common"
        include.mkdir()
        (include / "maintenance_window.h").write_text(header, encoding="utf-8")
        path = pathlib.Path(folder) / "maintenance_window.cpp"
        path.write_text(source, encoding="utf-8")
        folders = [folder, common / "include", common / "source", root / "runtime/include", *sys.argv[3:]]
        return subprocess.run([compiler, "-std=c++17", "-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow",
                               "-Werror", "-fsyntax-only", *(f"-I{name}" for name in folders), path],
                              check=False).returncode


if __name__ == "__main__":
    sys.exit(main())
