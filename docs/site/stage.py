#!/usr/bin/env python3
"""Lays out the pages of the site, and its menu, for mkdocs: stage.py ROOT TARGET. A link to another page leads there;
one to any other file of the tree becomes plain text, as the site does not carry it. A link to nothing is an error, and
so is a page that is in no menu."""

import pathlib
import posixpath
import re
import shutil
import sys

# The menu, in its order: title, file of the tree, page of the site.
PAGES = [
    ("Start", "README.md", "index.md"),
    ("Five-minute tutorial", "docs/tutorial.md", "tutorial.md"),
    ("Three ways to read", "docs/reading.md", "reading.md"),
    ("The format", "docs/format.md", "format.md"),
    ("The records", "docs/records.md", "records.md"),
    ("Reading a fault report", "docs/fault-reports.md", "fault-reports.md"),
    ("Security", "SECURITY.md", "security.md"),
    ("Performance", "docs/performance.md", "performance.md"),
    ("Size", "docs/size.md", "size.md"),
    ("Binary interface", "docs/abi.md", "abi.md"),
    ("Inspector", "docs/inspector.md", "inspector.md"),
    ("The long example", "examples/exchange/README.md", "exchange.md"),
    ("API reference", "docs/api.md", "api.md"),
    ("Contributing", "CONTRIBUTING.md", "contributing.md"),
    ("Adding a record", "docs/add-a-record.md", "add-a-record.md"),
    ("Changes", "CHANGELOG.md", "changelog.md"),
]
LINK = re.compile(r"(!?)\[((?:[^\[\]]|\[[^\]]*\])*)\]\(([^)#\s]*)(#[^)\s]*)?\)")
CODE = re.compile(r"(^```.*?^```$|^(?: {4}[^\n]*\n)+)", re.DOTALL | re.MULTILINE)


def staged(root, source, pages):
    """The page's text with its links as they are on the site."""

    def link(match):
        image, text, path, anchor = match.groups()
        if not path or re.match(r"[a-z]+:", path):
            return match[0]
        target = posixpath.normpath(posixpath.join(posixpath.dirname(source), path))
        if target in pages:
            return f"{image}[{text}]({pages[target]}{anchor or ''})"
        if source.startswith("docs/") and path.startswith("api/"):
            return match[0]
        if not (root / target).exists():
            sys.exit(f"{source} leads to {target}, which does not exist")
        return text

    parts = CODE.split((root / source).read_text(encoding="utf-8"))
    parts[::2] = [LINK.sub(link, part) for part in parts[::2]]
    return "".join(parts)


def main():
    root, target = map(pathlib.Path, sys.argv[1:])
    menu = [entry for entry in PAGES if (root / entry[1]).exists()]
    pages = {source: page for _, source, page in menu}
    pictures = {f"docs/{path.name}": path.name for path in (root / "docs").glob("*.svg")}

    unlisted = sorted({f"docs/{path.name}" for path in (root / "docs").glob("*.md")} - pages.keys())
    if unlisted:
        sys.exit(f"docs/site/stage.py has no place in the menu for {', '.join(unlisted)}")

    for source, page in pages.items():
        (target / "pages" / page).write_text(staged(root, source, pages | pictures), encoding="utf-8")
    for source in [*pictures, "docs/site/site.css", "docs/site/site.js", "docs/site/offline.js"]:
        shutil.copy(root / source, target / "pages")

    settings = (root / "docs/site/mkdocs.yml").read_text(encoding="utf-8")
    entries = "".join(f"  - {title}: {page}\n" for title, _, page in menu)
    (target / "mkdocs.yml").write_text(f"{settings}nav:\n{entries}", encoding="utf-8")


if __name__ == "__main__":
    main()
