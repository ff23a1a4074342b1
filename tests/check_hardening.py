#!/usr/bin/env python3
"""Reads from a shared library or a program how hard a mistake in it is to use, and fails where something is missing:

    check_hardening.py --readelf READELF [--fortified] BINARY [OBJECT...]

The loader is told to fill in all addresses at once and to seal them, no segment is both writable and executable, nor is
the stack, a program can be loaded anywhere, functions have guards on the stack, and on x86-64 the binary and each
object that it is made of keep to shadow stacks. On arm64 each object signs return addresses and has landing pads for
jumps. With --fortified, which an optimised build deserves, copies that know their room check it."""
import argparse
import re
import subprocess
import sys


def read(readelf, *arguments):
    return subprocess.run([readelf, "-W", *arguments], check=True, stdout=subprocess.PIPE, text=True).stdout


def segments(readelf, library):
    """Type and flags, as "GNU_STACK" and "RW"."""
    for line in read(readelf, "-l", library).splitlines():
        segment = re.match(r"\s+([A-Z_]+)\s+(?:0x[0-9a-f]+\s+){5}([R ][W ][E ])\s", line)
        if segment:
            yield segment[1], segment[2].replace(" ", "")


def has(readelf, binary, feature):
    return re.search(rf" feature:.*\b{feature}\b", read(readelf, "-n", binary))


def problems(readelf, library, objects, fortified):
    header = read(readelf, "-h", library)
    flags = list(segments(readelf, library))
    if not re.search(r"Type:\s+DYN\b", header):
        yield "the program is always loaded at the same address (its type is not DYN)"
    if not any(name == "LOAD" for name, _ in flags):
        yield f"{library} has no segments that are loaded"
    for name, flag in flags:
        if name == "LOAD" and "W" in flag and "E" in flag:
            yield "a segment is writable and executable"
    if not any(name == "GNU_RELRO" for name, _ in flags):
        yield "the addresses that the loader fills in stay writable (no GNU_RELRO)"
    if not re.search(r"\(FLAGS\).*\bBIND_NOW\b|\(FLAGS_1\).*\bNOW\b", read(readelf, "-d", library)):
        yield "functions are looked up at their first call (neither BIND_NOW nor NOW)"
    if not any(name == "GNU_STACK" and "E" not in flag for name, flag in flags):
        yield "the stack may be executable (no GNU_STACK without E)"

    imported = set(re.findall(r"\bUND (\w+)@", read(readelf, "--dyn-syms", library)))
    if "__stack_chk_fail" not in imported:
        yield "no function has a guard on the stack (__stack_chk_fail is not imported)"
    if fortified and not any(name.endswith("_chk") for name in imported):
        yield "no copy checks the room that it has (no function that ends in _chk is imported)"

    machine = re.search(r"Machine:.*\b(X86-64|AArch64)\b", header)
    if machine and machine[1] == "X86-64" and not has(readelf, library, "SHSTK"):
        yield "returns are not protected (no SHSTK among the x86 features)"
    # The start-up code that Debian 12 links into every binary for arm64 has neither, so none of them says that it has.
    for feature in {"X86-64": ["SHSTK"], "AArch64": ["PAC", "BTI"]}.get(machine[1] if machine else "", []):
        for built in objects:
            if not has(readelf, built, feature):
                yield f"returns or jumps are not protected in {built} (no {feature})"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--readelf", required=True)
    parser.add_argument("--fortified", action="store_true")
    parser.add_argument("library")
    parser.add_argument("objects", nargs="*")
    args = parser.parse_args()
    found = list(problems(args.readelf, args.library, args.objects, args.fortified))
    for problem in found:
        print(problem)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
