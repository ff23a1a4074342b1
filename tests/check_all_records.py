#!/usr/bin/env python3
"""Checks that the list in all_records.h names every record that a table describes, each once, and no other. Takes the
source tree's root."""
import collections
import pathlib
import re
import sys

HEADERS = "lyr_ipc/source/common/include/common"
TABLE = re.compile(r"^VYN_RECORD\(\s*([\w:<>]+)\s*,", re.MULTILINE)
LIST = re.compile(r"using AllRecords\s*=\s*RecordList<(.*)>;", re.DOTALL)
COMMENT = re.compile(r"//[^\n]*")


def described_records(headers):
    """Each described record and the headers that describe it."""
    found = collections.defaultdict(list)
    for path in sorted(headers.glob("*.h")):
        for record in TABLE.findall(path.read_text(encoding="utf-8")):
            found[record].append(path.name)
    return found


def listed_records(header):
    found = LIST.search(COMMENT.sub("", header.read_text(encoding="utf-8")))
    if not found:
        sys.exit(f"{header} defines no AllRecords")
    return collections.Counter(record.strip() for record in found[1].split(","))


def main():
    headers = pathlib.Path(sys.argv[1]) / HEADERS
    described = described_records(headers)
    listed = listed_records(headers / "all_records.h")
    if not described:
        sys.exit(f"{headers} holds no tables")

    problems = [f"{header}: {record} is not in the list of all_records.h"
                for record, describing in described.items() if record not in listed for header in describing]
    problems += [f"all_records.h: {record} has no table" for record in listed if record not in described]
    problems += [f"all_records.h: {record} is listed {times} times" for record, times in listed.items() if times > 1]
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
