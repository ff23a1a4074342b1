#!/usr/bin/env python3
"""Makes the comments of a header Doxygen's, for Doxygen to read: comments.py HEADER. The one that opens the file
describes the file, one before a declaration what it declares, and one behind a member that member. Those inside
functions stay as they are."""

import re
import sys

COMMENT = re.compile(r"( *)// ?(.*)")
DECLARES = re.compile(r'\b(namespace|struct|class|union|enum|extern "C")\b')
LITERAL = re.compile(r"""("(?:\\.|[^"\\])*"|'(?:\\.|[^'\\])*')""")
CODE = re.compile(r"(`[^`]*`)")


def doxygen(text):
    """What would be a tag, a command or a link to Doxygen is text in the headers. An indented line is code."""
    if text.startswith("    "):
        return text
    parts = CODE.split(text)
    parts[::2] = [re.sub(r"([\\@<>#%])", r"\\\1", part) for part in parts[::2]]
    return "".join(parts)


def is_declarative(opening):
    """Whether what the text before a brace opens has declarations in it: a class or a namespace, but no function."""
    return bool(DECLARES.search(opening)) and not opening.rstrip().endswith(")") and "=" not in opening


def main():
    with open(sys.argv[1], encoding="utf-8") as header:
        lines = header.read().splitlines()
    print("/// @file")

    scopes = []  # of the open braces: whether declarations stand in them
    opening = ""  # what the next brace opens
    continues = False  # the directive of the line before
    for line in lines:
        is_directive = line.startswith("#") or continues
        continues = is_directive and line.endswith("\\")
        if is_directive:
            print(line)
            continue
        comment = COMMENT.fullmatch(line)
        if comment and all(scopes):
            print(f"{comment[1]}/// {doxygen(comment[2])}".rstrip())
            continue
        code, mark, behind = line.partition(" // ")
        if mark and all(scopes) and code.rstrip().endswith((";", ",", "{}")):
            line = f"{code} ///< {doxygen(behind)}"
        print(line)
        if code.lstrip().startswith("//"):
            continue
        for character in LITERAL.sub("", code) + " ":
            if character == "{":
                scopes.append(is_declarative(opening))
            elif character == "}":
                scopes.pop()
            opening = "" if character in "{};" else opening + character
    if scopes:
        sys.exit(f"{sys.argv[1]}: the braces do not match")


if __name__ == "__main__":
    main()
