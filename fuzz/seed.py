#!/usr/bin/env python3
"""Writes the messages of tests/messages as inputs of the fuzz targets that read messages, into FOLDER/records,
FOLDER/event and FOLDER/inspect. Those over 2,000 bytes are left out: what is special about them is their size, and
small inputs get there by aliasing. Usage: seed.py FOLDER"""
import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent
MESSAGES = HERE.parent / "tests" / "messages"
LARGEST = 2000


def records():
    """In the order in which the targets number them: that of their names."""
    return sorted(path.name for path in MESSAGES.iterdir() if path.is_dir())


def message_bytes(rows):
    content = bytearray()
    for row in rows:
        for word in row.split("#")[0].split()[1:]:
            if word == "..":
                content.append(0)
            elif word.startswith("*"):
                content.extend(content[-1:] * (int(word[1:]) - 1))
            elif word != "<--":
                content.append(int(word, 16))
    return bytes(content)


def parse(path):
    values, rows, section = {}, {"wire": [], "arena": []}, None
    for line in path.read_text(encoding="ascii").splitlines():
        key = re.match(r"(\w+): ?(.*)", line)
        if key:
            section = key[1]
            values[section] = key[2]
        elif line.startswith("  ") and section in rows:
            rows[section].append(line)
    arena = message_bytes(rows["arena"])
    flags = int(values.get("start", "0")) | {"null": 0x80, "unset": 0x40}.get(values["arena"], 0)
    top = min(int(values.get("top", len(arena))), 0xFFFF)
    return bytes([flags]) + top.to_bytes(2, "little") + message_bytes(rows["wire"]) + arena


def main():
    folder = pathlib.Path(sys.argv[1])
    inspect = folder / "inspect"
    inspect.mkdir(parents=True, exist_ok=True)
    numbered = [name for name in records() if name != "VynEvent"]
    for name in records():
        target = folder / ("event" if name == "VynEvent" else "records")
        target.mkdir(parents=True, exist_ok=True)
        number = 0 if name == "VynEvent" else numbered.index(name)
        for path in sorted((MESSAGES / name).glob("*.msg")):
            content = parse(path)
            if len(content) < LARGEST:
                (target / f"{name}_{path.stem}").write_bytes(bytes([number]) + content)
                (inspect / f"{name}_{path.stem}").write_bytes(bytes([records().index(name)]) + content)


if __name__ == "__main__":
    main()
