#!/usr/bin/env python3
"""Checks that the message shown in docs/format.md is, byte by byte, the message file that it names. Takes the source
tree's root."""

import pathlib
import re
import sys


def message_shown(page):
    """The file that the page names, and the block of text that follows."""
    found = re.search(r"`(tests/messages/\w+/\w+\.msg)`.*?\n```\n(.*?)\n```\n", page, re.DOTALL)
    if not found:
        sys.exit("docs/format.md names no message file and shows no message")
    return found[1], found[2]


def main():
    root = pathlib.Path(sys.argv[1])
    name, shown = message_shown((root / "docs/format.md").read_text(encoding="utf-8"))
    message = (root / name).read_text(encoding="utf-8")
    wire_and_arena = re.search(r"^wire: .*?(?=\n\n(decoded|raises):)", message, re.DOTALL | re.MULTILINE)[0]
    if shown != wire_and_arena:
        print(f"docs/format.md shows\n{shown}\n\n{name} is\n{wire_and_arena}")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
