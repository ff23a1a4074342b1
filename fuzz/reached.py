#!/usr/bin/env python3
"""Says what of the library the fuzzers' inputs reach.

    reached.py PROFILES PROGRAM...

PROFILES is the folder of what the programs, built with Clang's source-based coverage, have counted. Every function of
lyr_ipc/ has to have run, and every condition to have been true and false; the instances of a template count as one, and
what is constexpr may be for the compiler alone. Fails where something is not reached and fuzz/unreached.txt gives no
reason, and where it gives one for something that is."""
import collections
import functools
import json
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
LIBRARY = "lyr_ipc/source/"
UNREACHED = ROOT / "fuzz" / "unreached.txt"


def exported(profiles, programs):
    merged = pathlib.Path(profiles, "all.profdata")
    subprocess.run(["llvm-profdata", "merge", "-o", merged, *pathlib.Path(profiles).glob("*.profraw")], check=True)
    objects = [word for program in programs[1:] for word in ("-object", program)]
    output = subprocess.run(["llvm-cov", "export", f"-instr-profile={merged}", "-skip-expansions", programs[0],
                             *objects], check=True, capture_output=True, text=True).stdout
    return json.loads(output)["data"][0]


def of_library(name):
    """The file's path in the tree, wherever the compiler says that this lies; None for what is not the library's."""
    at = name.rfind(LIBRARY)
    return name[at:] if at >= 0 else None


@functools.cache
def lines_of(name):
    return (ROOT / name).read_text(encoding="utf-8").splitlines()


def text_between(name, line, start, last, end):
    text = lines_of(name)[line - 1:last]
    text[-1] = text[-1][:end - 1]
    text[0] = text[0][start - 1:]
    return " ".join(" ".join(text).split())


def conditions(data):
    """{(file, line, condition): [times true, times false]}, without what the compiler decides."""
    counts = collections.defaultdict(lambda: [0, 0])
    for file in data["files"]:
        name = of_library(file["filename"])
        for line, start, last, end, isTrue, isFalse, *_ in file["branches"] if name else ():
            count = counts[name, line, text_between(name, line, start, last, end)]
            count[0] += isTrue
            count[1] += isFalse
    return {place: count for place, count in counts.items() if any(count)}


def functions(data):
    """{(file, line, declaration): times run}"""
    counts = collections.defaultdict(int)
    for function in data["functions"]:
        name = of_library(function["filenames"][0])
        if name is None:
            continue
        line, start = function["regions"][0][:2]  # of the body
        before = "\n".join(lines_of(name)[max(0, line - 6):line - 1] + [lines_of(name)[line - 1][:start - 1]])
        declaration = re.split(r"[;{}]\s|\n\n|(?m:^ *(?://|template|#|public:|private:).*$)", before)[-1]
        counts[name, line, " ".join(declaration.split())] += function["count"]
    return {place: count for place, count in counts.items() if count != 0 or "constexpr" not in place[2]}


def reasons():
    """{(file, function or condition)} of those that have a reason."""
    found = set()
    name, waiting = None, []
    for line in UNREACHED.read_text(encoding="utf-8").splitlines():
        if line.startswith("lyr_ipc/"):
            name = line
        elif line.startswith("="):
            found.update(waiting)
            waiting = []
        elif line and not line.startswith(("#", " ")):
            waiting.append((name, line))
    if waiting:
        sys.exit(f"reached: no reason for {waiting[0][1]}")
    return found


def main():
    data = exported(sys.argv[1], sys.argv[2:])
    called, taken = functions(data), conditions(data)
    missed = {(name, what): line for (name, line, what), count in called.items() if count == 0}
    missed.update({(name, what): line for (name, line, what), count in taken.items() if not all(count)})
    print(f"{sum(map(bool, called.values()))} of {len(called)} functions run,"
          f" {sum(map(all, taken.values()))} of {len(taken)} conditions both ways")

    explained = reasons()
    for name, what in sorted(missed.keys() - explained):
        print(f"not reached: {name}:{missed[name, what]}: {what}")
    for name, what in sorted(explained - missed.keys()):
        print(f"has a reason, and is reached or not there: {name}: {what}")
    sys.exit(1 if missed.keys() != explained else 0)


if __name__ == "__main__":
    main()
