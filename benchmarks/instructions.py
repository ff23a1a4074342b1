#!/usr/bin/env python3
"""Counts the instructions of every conversion of a program that was built from count.cpp:

    cmake --build --preset release --target count_instructions
    benchmarks/instructions.py build/release/benchmarks/count_instructions

A conversion's count is the difference of two runs' counts, so that nothing but the conversion is in it."""
import pathlib
import re
import subprocess
import sys
import tempfile

RUNS = (5, 15)


def count(program):
    """The instructions of one conversion each, by its name, in the program's order."""
    with tempfile.TemporaryDirectory() as folder:
        result = subprocess.run(
            ["valgrind", "--tool=callgrind", "--zero-before=BeginCount", "--dump-before=EndCount",
             f"--callgrind-out-file={folder}/out", program],
            check=True, capture_output=True, text=True)
        totals = []
        number = 1
        while (dump := pathlib.Path(folder, f"out.{number}")).exists():
            totals.append(int(re.search(r"^(?:totals|summary): (\d+)", dump.read_text(), re.MULTILINE)[1]))
            number += 1
    names = result.stdout.split("\n")[:-1]
    if len(totals) != len(RUNS) * len(names):
        sys.exit(f"{len(names)} conversions, but {len(totals)} counts")
    return {name: (totals[2 * i + 1] - totals[2 * i]) / (RUNS[1] - RUNS[0]) for i, name in enumerate(names)}


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    for name, instructions in count(sys.argv[1]).items():
        print(f"{name:40} {instructions:12.1f}")


if __name__ == "__main__":
    main()
