#!/usr/bin/env python3
"""Checks that a mistake which compilers are to find does not compile, and that the compiler says why.

    check.py <directory> <compiler> <include directory>...

Each source of the directory begins with what it is to yield: "// compiles", "// compiles as C++20", or
"// error: <text>", where the text is a regular expression for the message of one of the compiler's errors, or for what
it quotes, to the end; "// error from Clang: <text>" is one of Clang's warnings, and left out with other compilers.
"""

import pathlib
import re
import subprocess
import sys


def is_clang(compiler):
    version = subprocess.run([compiler, "--version"], capture_output=True, text=True, check=True)
    return "clang" in version.stdout


def errors_of(compiler, include_dirs, source, *options):
    includes = [f"-I{directory}" for directory in include_dirs]
    command = [compiler, "-std=c++17", *options, "-fsyntax-only", "-fno-diagnostics-color", *includes, str(source)]
    run = subprocess.run(command, capture_output=True, text=True, check=False)
    messages = re.findall(r"error: (.*)", run.stderr)
    if (run.returncode != 0) != bool(messages):
        sys.exit(f"{' '.join(command)}\nended with {run.returncode} and these words:\n{run.stderr}")
    return messages


def fault(expectation, messages):
    """What is wrong with the compiler's messages, or None."""
    if expectation.startswith("// compiles"):
        return f"does not compile: {messages[0]}" if messages else None
    pattern = re.sub("^// error( from Clang)?: ", "", expectation)
    if pattern == expectation:
        return "its first line does not say what it is to yield"
    if not messages:
        return "compiles, although it has a mistake"
    # From where the compiler quotes it to its end: a text with more in it is another one.
    if not any(re.search(f'(?:^|: |")(?:{pattern})"?$', message) for message in messages):
        return "the compiler says something else: " + " / ".join(messages)
    return None


def main():
    directory, compiler, *include_dirs = sys.argv[1:]
    sources = sorted(pathlib.Path(directory).glob("*.cpp"))
    checked = 0
    faults = 0
    for source in sources:
        expectation = source.read_text(encoding="utf-8").splitlines()[0]
        options = ["-std=c++20"] if expectation == "// compiles as C++20" else []
        if expectation.startswith("// error from Clang: "):
            if not is_clang(compiler):
                continue
            options.append("-Werror")
        checked += 1
        found = fault(expectation, errors_of(compiler, include_dirs, source, *options))
        if found:
            faults += 1
            print(f"{source.name}: {found}")
    print(f"{checked} sources, {faults} faults")
    return 1 if faults or not checked else 0


if __name__ == "__main__":
    sys.exit(main())
