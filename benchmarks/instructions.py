#!/usr/bin/env python3
"""Counts instructions under Callgrind.

    instructions.py table PROGRAM [PREFIX]    prints the counts of a program built from count.cpp; PREFIX is a record
    instructions.py gate PROGRAM HEADERS BASELINE [--update]
                                              compares the counts of a program built from gate.cpp with the baseline

A count is the difference between 15 runs and 5 divided by 10, so that nothing but the conversion is in it. The gate
fails where a conversion needs over 3 % more than in the baseline or where a record of HEADERS has no count, and ends
with status 77 where it cannot be judged: without Valgrind, or by another compiler than the baseline's."""
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

RUNS = (5, 15)
MARGIN = 0.03
SKIPPED = 77


def counted(program, *arguments):
    """The lines that the program prints, and the totals that Callgrind writes at its marks."""
    with tempfile.TemporaryDirectory() as folder:
        result = subprocess.run(
            ["valgrind", "--tool=callgrind", "--collect-atstart=no", "--toggle-collect=CountedRun",
             "--dump-before=EndCount",
             f"--callgrind-out-file={folder}/out", program, *arguments],
            check=False, capture_output=True, text=True,
            # Nothing of the caller's, which would move the stack; symbols bound beforehand.
            env={"PATH": "/usr/bin:/bin", "LC_ALL": "C", "LD_BIND_NOW": "1"})
        if result.returncode != 0:
            sys.exit(result.stderr)
        totals = []
        while (dump := pathlib.Path(folder, f"out.{len(totals) + 1}")).exists():
            totals.append(int(re.search(r"^totals: (\d+)", dump.read_text(), re.MULTILINE)[1]))
    return result.stdout.splitlines(), totals


def differences(names, totals):
    if len(totals) != len(RUNS) * len(names):
        sys.exit(f"{len(names)} conversions, but {len(totals)} counts")
    return {name: (totals[2 * i + 1] - totals[2 * i]) / (RUNS[1] - RUNS[0]) for i, name in enumerate(names)}


def counts(program, prefix=""):
    """The instructions of each conversion whose name begins with the prefix. Each has a process of its own: what one
    leaves in the heap would be part of the next one's count."""
    names = subprocess.run([program], check=True, capture_output=True, text=True).stdout.splitlines()
    result = {}
    for name in names:
        if name.startswith(prefix):
            result.update(differences(*counted(program, name)))
    return result


def described(headers):
    """The names of the records that have a table."""
    text = "".join(path.read_text() for path in sorted(pathlib.Path(headers).glob("*.h")))
    return set(re.findall(r"^VYN_RECORD\([^\n]*, (\w+), \d+, \d+,$", text, re.MULTILINE))


def gate(program, headers, baseline, update):
    if not shutil.which("valgrind"):
        print("skipped: valgrind is not installed")
        return SKIPPED
    (compiler, *names), totals = counted(program)
    current = {name.rpartition("/")[0]: count for name, count in differences(names, totals).items()}

    missing = described(headers) - {name.partition("/")[0] for name in current}
    if missing:
        print(f"gate.cpp does not convert: {', '.join(sorted(missing))}")
        return 1
    if update:
        text = json.dumps({"compiler": compiler, "instructions": current}, indent=4)
        pathlib.Path(baseline).write_text(text + "\n")
        return 0

    expected = json.loads(pathlib.Path(baseline).read_text())
    if compiler != expected["compiler"]:
        print(f"skipped: the baseline is {expected['compiler']}'s, this is {compiler}")
        return SKIPPED
    expected = expected["instructions"]
    if current.keys() != expected.keys():
        print(f"not in both counts and baseline: {', '.join(sorted(current.keys() ^ expected.keys()))}")
        return 1
    dearer = 0
    for name, count in current.items():
        if abs(count - expected[name]) > MARGIN * expected[name]:
            print(f"{name}: {count:g} instructions, {count / expected[name] - 1:+.1%} on {expected[name]:g}")
            dearer += count > expected[name]
    if dearer:
        print(f"{dearer} of {len(current)} conversions are dearer than the baseline allows")
        return 1
    print(f"{len(current)} conversions are within {MARGIN:.0%} of the baseline, or below it")
    return 0


def main(arguments):
    if len(arguments) in (2, 3) and arguments[0] == "table":
        for name, count in counts(*arguments[1:]).items():
            print(f"{name:40} {count:12.1f}", flush=True)
        return 0
    if len(arguments) in (4, 5) and arguments[0] == "gate" and arguments[4:] in ([], ["--update"]):
        return gate(*arguments[1:4], update=len(arguments) == 5)
    print(__doc__, file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
