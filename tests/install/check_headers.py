#!/usr/bin/env python3
"""Compiles every installed public header by itself, as a caller's compiler would see it, all warnings being
errors: check_headers.py INCLUDE_DIR COMPILER [FLAG...]"""
import concurrent.futures
import os
import pathlib
import subprocess
import sys

WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Werror"]


def main():
    include_dir = pathlib.Path(sys.argv[1])
    command = sys.argv[2:] + WARNINGS + ["-fsyntax-only", "-I", str(include_dir), "-x", "c++", "-"]
    headers = sorted(str(path.relative_to(include_dir)) for path in include_dir.rglob("*.h"))
    if not headers:
        sys.exit(f"{include_dir} holds no headers")

    def compiles(header):
        # Twice, because a header without its guard shows only then.
        program = f"#include <{header}>\n#include <{header}>\n"
        return subprocess.run(command, input=program, text=True, env={**os.environ, "LC_ALL": "C"}).returncode == 0

    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        failed = [header for header, good in zip(headers, pool.map(compiles, headers)) if not good]
    for header in failed:
        print(f"does not compile by itself: {header}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
