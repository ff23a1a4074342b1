#!/usr/bin/env python3
"""Compares the library's dynamic symbols with the committed lists.

exported: the names that the library defines are exactly those of tests/exported_symbols.txt, whatever the
compiler. With --update the list is written instead of compared.

imported: every name that the library takes from elsewhere is in tests/imported_symbols.txt and none of them does
input or output, starts or synchronises threads, or asks for the time or the environment.

writable: what can be written once the library is loaded is in tests/writable_symbols.txt, and nothing hides between
the objects named there; every other constant, and every address that the loader has filled in, is read-only by then.
"""
import argparse
import difflib
import pathlib
import re
import subprocess
import sys

# Refused in the library and in the list of expected imports alike, so that nobody lists one by accident.
FORBIDDEN = [
    (r"^(open|openat|creat|close|p?readv?(64)?|p?writev?(64)?|lseek|ioctl|fcntl|mmap|socket\w*|connect|bind|"
     r"accept4?|listen|send\w*|recv\w*|poll|select|epoll_\w+|eventfd|pipe2?|syscall)(64)?$", "input or output"),
    (r"^(f|d|v|vf|vd|s|sn|vs|vsn|as|vas|__\w*)?(printf|scanf)(_chk)?$|^_*f?put[cs](har)?(_unlocked)?$|"
     r"^_*f?get[cs](har)?(_unlocked)?$|^(f|fd|fre)open(64)?$|^f(close|read|write|seeko?|tello?|flush)(64)?$|"
     r"^std(in|out|err)$|^perror$|^(v?syslog|openlog)$", "input or output"),
    (r"^std::(__cxx11::)?(basic_)?[io]?(w?fstream|w?stringstream|w?stream|"
     r"streambuf|filebuf|ios|ostringstream|istringstream)\b|std::(w?c(in|out|err|log))\b|"
     r"std::ios_base|std::(__cxx11::)?basic_(i|o|io|if|of|f|string)\w*(stream|buf)|std::filesystem|"
     r"std::(__)?(ostream|istream)_", "input or output"),
    (r"^fmt::.*::(v?print|vprint_mojibake|file|ostream|buffered_file|output_redirect)\b", "input or output"),
    (r"^(pthread|thrd|mtx|cnd|tss|sem|call_once)_?\w*$|^(fork|vfork|clone3?|posix_spawn\w*|exec\w+)$|"
     r"^std::(this_)?(thread|j?thread|mutex|\w*_mutex|condition_variable\w*|__once_call\w*|call_once|"
     r"__future_base|promise|future|__throw_system_error)\b|^__once_proxy$|^__gthr", "threads"),
    (r"^(clock|clock_\w+|time|gettimeofday|times|timespec_get|nanosleep|u?sleep|ftime|localtime(_r)?|gmtime(_r)?|"
     r"mktime|timegm|strftime|timer\w*|difftime)$|^std::(__\w+::)?chrono\b|^std::this_thread::__sleep", "time"),
    (r"^(secure_)?getenv$|^(put|set|unset)env$|^environ$|^setlocale$|^s?rand(om)?(_r)?$|^getrandom$|^getentropy$|"
     r"^std::random_device|^(atexit|signal|sigaction|system)$", "the process's environment"),
]
# The library's own dependencies: nothing else may be loaded with it.
NEEDED = re.compile(r"^(lib(fmt\.so\.9|stdc\+\+\.so\.6|m\.so\.6|gcc_s\.so\.1|c\.so\.6)|ld-linux[\w.-]*)$")


def run(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def symbol_names(nm, library, which):
    """Sorted names, without address, type and version: those differ between compilers, the names may not."""
    names = set()
    for line in run(nm, "-D", "-C", which, library).splitlines():
        name = re.sub(r"^[0-9a-f]*\s+[A-Za-z] ", "", line)
        names.add(re.sub(r"@.*$", "", name))
    return sorted(names)


def read_list(path):
    lines = path.read_text(encoding="utf-8").splitlines()
    return [line for line in lines if line and not line.startswith("#")]


def check_exported(args):
    found = symbol_names(args.nm, args.library, "--defined-only")
    if args.update:
        args.list.write_text("".join(f"{name}\n" for name in found), encoding="utf-8")
        return []
    expected = read_list(args.list)
    return list(difflib.unified_diff(expected, found, str(args.list), args.library, n=0, lineterm=""))


def check_imported(args):
    found = symbol_names(args.nm, args.library, "--undefined-only")
    expected = read_list(args.list)
    exact = set(expected)
    beginnings = tuple(name[:-1] for name in expected if name.endswith("*"))
    problems = [
        f"not in {args.list}: {name}" for name in found if name not in exact and not name.startswith(beginnings)
    ]
    problems += [
        f"{name} is for {purpose}" for name in sorted(exact.union(found)) for pattern, purpose in FORBIDDEN
        if re.search(pattern, re.sub(r"^(vtable|VTT|typeinfo|guard variable) for ", "", name))
    ]
    for line in run(args.readelf, "-d", args.library).splitlines():
        needed = re.search(r"\(NEEDED\).*\[(.*)\]", line)
        if needed and not NEEDED.match(needed[1]):
            problems.append(f"the library needs {needed[1]}")
    return problems


def sections_that_stay_writable(readelf, library):
    """Name to (address, size), without those that the loader seals once it has filled them in."""
    sealed_end = 0  # what is sealed comes first, and may end inside a section
    for line in run(readelf, "-lW", library).splitlines():
        segment = line.split()
        if segment and segment[0] == "GNU_RELRO":
            sealed_end = int(segment[2], 16) + int(segment[5], 16)
    sections = {}
    for line in run(readelf, "-SW", library).splitlines():
        section = re.match(r"\s*\[ *\d+\] (\S+)\s+\S+\s+([0-9a-f]+)\s+\w+\s+([0-9a-f]+)\s+\w+\s+(\w+)\s", line)
        if section and "W" in section[4] and "A" in section[4]:
            start, size = int(section[2], 16), int(section[3], 16)
            if start + size > sealed_end:
                sections[section[1]] = (start, size)
    return sections


def objects(readelf, library):
    """Every object with a name and a size: (address, size, name)."""
    found = set()
    for line in run(readelf, "-sWC", library).splitlines():
        symbol = re.match(r"\s*\d+: ([0-9a-f]+)\s+([1-9]\d*) (?:OBJECT|TLS)\s+\S+\s+\S+\s+\d+ (.+)", line)
        if symbol:
            found.add((int(symbol[1], 16), int(symbol[2]), symbol[3]))
    return sorted(found)


# No object here asks for more, so a wider gap between two of them is not there to align the second.
WIDEST_GAP = 32


def check_writable(args):
    allowed = read_list(args.list)
    problems = []
    names = set()
    for section, (start, size) in sections_that_stay_writable(args.readelf, args.library).items():
        covered = start
        inside = [entry for entry in objects(args.readelf, args.library) if start <= entry[0] < start + size]
        for address, length, name in inside + [(start + size, 0, f"end of {section}")]:
            if address - covered >= WIDEST_GAP:
                problems.append(f"{section} holds {address - covered} bytes without a name before {name}")
            covered = max(covered, address + length)
        names.update(name for _, _, name in inside)
    problems += [f"can be written, but is not in {args.list}: {name}" for name in sorted(names.difference(allowed))]
    # The same objects with every compiler; their absence would mean that this looked in the wrong place.
    problems += [f"{name} is not where it was expected" for name in allowed if name not in names]
    return problems


CHECKS = {"exported": check_exported, "imported": check_imported, "writable": check_writable}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("kind", choices=sorted(CHECKS))
    parser.add_argument("library")
    parser.add_argument("list", type=pathlib.Path)
    parser.add_argument("--nm", default="nm")
    parser.add_argument("--readelf", default="readelf")
    parser.add_argument("--update", action="store_true", help="write the list of exported names")
    args = parser.parse_args()

    problems = CHECKS[args.kind](args)
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
