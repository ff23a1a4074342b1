#!/usr/bin/env python3
"""Holds the message files of this folder against what model.py computes for the messages of cases.py.

    corpus.py --check   fails where a file is missing, differs from what is computed, or belongs to no case
    corpus.py --write   brings the files up to date
"""

import sys

sys.dont_write_bytecode = True  # the source tree stays as it is

from pathlib import Path

import cases

HERE = Path(__file__).resolve().parent


def main(arguments):
    if arguments not in (["--check"], ["--write"]):
        print(__doc__, file=sys.stderr)
        return 2

    wanted = {}
    for case in cases.all_cases():
        assert case.path not in wanted, f"two cases are named {case.path}"
        wanted[case.path] = case.text()
    present = {str(path.relative_to(HERE)): path for path in HERE.rglob("*.msg")}
    unlike = [name for name, text in wanted.items() if name not in present or present[name].read_text() != text]
    unknown = sorted(set(present) - set(wanted))
    if arguments == ["--write"]:
        for name in unlike:
            (HERE / name).parent.mkdir(exist_ok=True)
            (HERE / name).write_text(wanted[name])
        for name in unknown:
            present[name].unlink()
        print(f"{len(wanted)} messages, {len(unlike)} written, {len(unknown)} removed")
        return 0
    for name in unlike:
        print(f"{name}: {'differs from the model' if name in present else 'is missing'}", file=sys.stderr)
    for name in unknown:
        print(f"{name}: belongs to no case", file=sys.stderr)
    print(f"{len(wanted)} messages checked")
    return 1 if unlike or unknown else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
