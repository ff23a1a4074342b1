#!/usr/bin/env python3
"""Checks the examples of docs/fault-reports.md: each is a report that one of the page's tables has. Takes the source
tree's root."""

import pathlib
import re
import sys

PLACE = re.compile(r"> `(\w+)` at `([^`]+)`:(\d+)")
TEXT = re.compile(r"> `([^`]+)`: (.+)")


def main():
    page = (pathlib.Path(sys.argv[1]) / "docs/fault-reports.md").read_text(encoding="utf-8")
    examples = re.findall(r"^> .*", page, re.MULTILINE)
    problems = []
    for example in examples:
        if place := PLACE.fullmatch(example):
            _, file, line = place.groups()
            known = re.search(rf"^File `{file}`\.\n(?:(?!^###).*\n)*?\| line {line} \|", page, re.MULTILINE)
        elif text := TEXT.fullmatch(example):
            known = f'| `{text[1]}`: "{re.sub(r"[0-9]+$", "{}", text[2])}" |' in page
        else:
            known = False
        if not known:
            problems.append(example)
    for problem in problems:
        print(f"no table of docs/fault-reports.md has this report: {problem}")
    return 1 if problems or not examples else 0


if __name__ == "__main__":
    sys.exit(main())
