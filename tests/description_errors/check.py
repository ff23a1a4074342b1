#!/usr/bin/env python3
"""Checks that a record's table with a mistake does not compile, and that the compiler says why.

    check.py <compiler> <include directory>...

Each source beside this script begins with what it is to yield: "// compiles" or "// error: <text>", where the text is a
regular expression that the message of one of the compiler's errors matches.
"""

import pathlib
import re
import subprocess
import sys


def errors_of(compiler, include_dirs, source):
    includes = [f"-I{directory}" for directory in include_dirs]
    command = [compiler, "-std=c++17", "-fsyntax-only", "-fno-diagnostics-color", *includes, str(source)]
    run = subprocess.run(command, capture_output=True, text=True, check=False)
    messages = re.findall(r"error: (.*)", run.stderr)
    if (run.returncode != 0) != bool(messages):
        sys.exit(f"{' '.join(command)}\nended with {run.returncode} and these words:\n{run.stderr}")
    return messages


def fault(expectation, messages):
    """What is wrong with the compiler's messages, or None."""
    if expectation == "// compiles":
        return f"does not compile: {messages[0]}" if messages else None
    pattern = expectation.removeprefix("// error: ")
    if pattern == expectation:
        return "its first line does not say what it is to yield"
    if not messages:
        return "compiles, although its table has a mistake"
    if not any(re.search(pattern, message) for message in messages):
        return "the compiler says something else: " + " / ".join(messages)
    return None


def main():
    compiler, *include_dirs = sys.argv[1:]
    sources = sorted(pathlib.Path(__file__).parent.glob("*.cpp"))
    faults = 0
    for source in sources:
        expectation = source.read_text(encoding="utf-8").splitlines()[0]
        found = fault(expectation, errors_of(compiler, include_dirs, source))
        if found:
            faults += 1
            print(f"{source.name}: {found}")
    print(f"{len(sources)} tables, {faults} faults")
    return 1 if faults or not sources else 0


if __name__ == "__main__":
    sys.exit(main())
