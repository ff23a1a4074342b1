#!/usr/bin/env python3
"""Does what docs/tutorial.md says, with its own commands and its own code, and compares what is printed with what it
shows: tutorial.py ROOT FOLDER PREFIX. The library is taken as it lies in PREFIX; its installation is tested by
itself."""

import os
import pathlib
import shutil
import subprocess
import sys

from page import blocks


def main():
    root, folder, prefix = map(pathlib.Path, sys.argv[1:])
    page = root / "docs/tutorial.md"
    install, run = blocks(page, "sh")
    if "--prefix ~/vyn" not in install or "=$HOME/vyn" not in run:
        sys.exit("the tutorial does not look for the library where it puts it")
    (lists,) = blocks(page, "cmake")
    program, *additions = blocks(page, "cpp")
    if not program.endswith("\n}\n"):
        sys.exit("the tutorial's first block of code does not end with main's brace")

    # A home of its own, in which the library is already installed.
    shutil.rmtree(folder, ignore_errors=True)
    project = folder / "project"
    project.mkdir(parents=True)
    (folder / "vyn").symlink_to(prefix)
    (project / "CMakeLists.txt").write_text(lists, encoding="utf-8")
    # The first block is a program by itself; the others go to its end.
    environment = os.environ | {"HOME": str(folder), "CXXFLAGS": "-Wall -Wextra -Wpedantic -Werror"}
    expected = blocks(page, "text")
    for code, output in ((program, expected[0]), (program[:-2] + "".join(additions) + "}\n", "".join(expected))):
        (project / "main.cpp").write_text(code, encoding="utf-8")
        ran = subprocess.run(["sh", "-ec", run], cwd=project, env=environment, capture_output=True, encoding="utf-8",
                             check=False)
        if ran.returncode != 0:
            sys.exit(f"{ran.stdout}{ran.stderr}\nthe tutorial's commands failed")
        if not ran.stdout.endswith(f"\n{output}"):
            sys.exit(f"the tutorial shows\n{output}\nits program and the commands before it print\n{ran.stdout}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
