#!/usr/bin/env python3
"""Checks which files include which: the runtime nothing of the conversion layer, public headers only each other,
the standard library and fmt, nobody but the library's own sources a private header, and no tool a source of the
examples. Takes the source tree's root."""
import pathlib
import re
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
CONVERSION_HEADERS = "lyr_ipc/source/common/include"
RUNTIME_HEADERS = "runtime/include"
STANDARD_HEADER = re.compile(r"^[a-z_]+$")


def files(root, *folders):
    for folder in folders:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path


def includes(path):
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        if match:
            yield number, match[1] == '"', match[2]


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    public = {
        str(path.relative_to(root / folder)): folder
        for folder in (CONVERSION_HEADERS, RUNTIME_HEADERS) for path in files(root, folder)
    }
    if CONVERSION_HEADERS not in public.values() or RUNTIME_HEADERS not in public.values():
        sys.exit(f"{root} holds no headers")
    sources = files(root, "lyr_ipc/source/common/source", "runtime/source")
    private = {path.name for path in sources if path.suffix == ".h"}
    problems = []

    def refuse(path, number, name, reason):
        problems.append(f"{path.relative_to(root)}:{number}: {name}: {reason}")

    for path in files(root, "runtime"):
        for number, _, name in includes(path):
            if public.get(name) == CONVERSION_HEADERS or name.startswith("common/") or "lyr_ipc" in name:
                refuse(path, number, name, "the runtime includes nothing of the conversion layer")

    for path in files(root, CONVERSION_HEADERS, RUNTIME_HEADERS):
        for number, _, name in includes(path):
            if not (name in public or name.startswith("fmt/") or STANDARD_HEADER.match(name)):
                refuse(path, number, name, "a public header includes the standard library, fmt and public headers only")

    for path in files(root, "tests", "fuzz", "examples", "tools", "benchmarks", "docs"):
        for number, quoted, name in includes(path):
            own_header = quoted and (path.parent / name).exists()
            if not own_header and pathlib.PurePath(name).name in private or "source/" in name:
                refuse(path, number, name, "only the library's own sources include its private headers")

    example_headers = {path.name for path in files(root, "examples") if path.suffix == ".h"}
    for path in files(root, "tools"):
        for number, quoted, name in includes(path):
            own_header = quoted and (path.parent / name).exists()
            if not own_header and (pathlib.PurePath(name).name in example_headers or "examples/" in name):
                refuse(path, number, name, "a tool includes nothing of the examples")
            if name.startswith("common/detail/"):
                refuse(path, number, name, "a tool goes without the library's machinery")

    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
