#!/usr/bin/env python3
"""Writes the changes of CHANGELOG.md as Debian's changelog, compressed, and refuses where their last version is not the
one that is packaged:

    changelog.py CHANGELOG.md SOURCE_NAME VERSION REVISION MAINTAINER OUTPUT

A version without a date has that of SOURCE_DATE_EPOCH, or of now."""
import datetime
import email.utils
import gzip
import os
import re
import sys
import textwrap
import time

VERSION = re.compile(r"^## (\S+) \((unreleased|\d{4}-\d\d-\d\d)\)$", re.MULTILINE)


def entry(source, version, date, text, maintainer):
    if date == "unreleased":
        seconds = int(os.environ.get("SOURCE_DATE_EPOCH", time.time()))
    else:
        seconds = datetime.datetime.fromisoformat(date + "T00:00:00+00:00").timestamp()
    changes = [" ".join(change.replace("`", "").split()) for change in re.split(r"^- ", text, flags=re.MULTILINE)[1:]]
    lines = [textwrap.fill(change, 79, initial_indent="  * ", subsequent_indent="    ", break_long_words=False)
             for change in changes]
    distribution = "UNRELEASED" if date == "unreleased" else "stable"
    return "\n".join([f"{source} ({version}) {distribution}; urgency=medium", "", *lines, "",
                      f" -- {maintainer}  {email.utils.formatdate(seconds)}", ""])


def main(changes, source, version, revision, maintainer, output):
    with open(changes, encoding="utf-8") as file:
        _, *parts = VERSION.split(file.read())
    found = list(zip(parts[::3], parts[1::3], parts[2::3]))
    if not found or found[0][0] != version:
        return f"the last version of {changes} is not {version}"
    text = "\n".join(entry(source, f"{number}-{revision}", date, text, maintainer) for number, date, text in found)
    with open(output, "wb") as file:
        file.write(gzip.compress(text.encode(), 9, mtime=0))
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
