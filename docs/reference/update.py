#!/usr/bin/env python3
"""Writes the parts of docs/ that the program `reference` prints, or with --check says which of them are not what it
prints: update.py [--check] PROGRAM DOCS"""

import argparse
import pathlib
import re
import subprocess
import sys

WHOLE = {"records.md": "records", "message.svg": "drawing"}
# Between the lines <!-- begin PART --> and <!-- end PART -->.
BETWEEN_MARKS = {"fault-reports.md": ["checks", "result-codes"]}


def printed(program, part):
    return subprocess.run([program, part], check=True, capture_output=True, encoding="utf-8").stdout


def replaced(page, part, text):
    marks = re.compile(rf"(<!-- begin {part} -->\n).*?(<!-- end {part} -->\n)", re.DOTALL)
    if len(marks.findall(page)) != 1:
        sys.exit(f"the page has not one place for {part}")
    return marks.sub(lambda match: match[1] + text + "\n" + match[2], page)


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--check", action="store_true")
    arguments.add_argument("program")
    arguments.add_argument("docs", type=pathlib.Path)
    options = arguments.parse_args()

    outdated = []
    for name in WHOLE.keys() | BETWEEN_MARKS.keys():
        path = options.docs / name
        before = path.read_text(encoding="utf-8") if path.exists() else ""
        after = printed(options.program, WHOLE[name]) if name in WHOLE else before
        for part in BETWEEN_MARKS.get(name, []):
            after = replaced(after, part, printed(options.program, part))
        if after == before:
            continue
        outdated.append(name)
        if not options.check:
            path.write_text(after, encoding="utf-8")

    for name in sorted(outdated):
        print(f"docs/{name} is not what the library says" if options.check else f"docs/{name} written")
    if options.check and outdated:
        print("Write them anew, and look at the difference before you commit it:\n"
              "    cmake --build --preset release --target update_reference\n"
              "    git diff docs")
    return 1 if options.check and outdated else 0


if __name__ == "__main__":
    sys.exit(main())
