#!/usr/bin/env python3
"""Reads from a shared library how hard a mistake in it is to use, and fails where something is missing:

    check_hardening.py --readelf READELF [--fortified] LIBRARY [OBJECT...]

The loader is told to fill in all addresses at once and to seal them, no segment is both writable and executable, nor is
the stack, functions have guards on the stack, and on x86-64 the library and each object that it is made of keep to
shadow stacks. With --fortified, which an optimised build deserves, copies that know their room check it."""
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


def keeps_to_shadow_stacks(readelf, binary):
    return re.search(r"x86 feature:.*\bSHSTK\b", read(readelf, "-n", binary))


def problems(readelf, library, objects, fortified):
    flags = list(segments(readelf, library))
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

    if "X86-64" in read(readelf, "-h", library):
        if not keeps_to_shadow_stacks(readelf, library):
            yield "returns are not protected (no SHSTK among the x86 features)"
        for built in objects:
            if not keeps_to_shadow_stacks(readelf, built):
                yield f"returns are not protected in {built}"


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
