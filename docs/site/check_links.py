#!/usr/bin/env python3
"""Checks the built site: every link leads to a file of the site, and to a place in it that exists, and no page loads
anything from elsewhere: check_links.py SITE"""

import html.parser
import os
import pathlib
import sys
import urllib.parse

# What a page needs to be shown, in contrast to what a reader may follow.
LOADS = {("script", "src"), ("img", "src"), ("iframe", "src"), ("link", "href"), ("source", "src")}

# Doxygen's summary of a class offers the nested ones even where all of them are private, and so not shown.
NOT_OURS = "#nested-classes"


class Page(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.places = {"", "top"}
        self.links = []
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        given = dict(attributes)
        self.places |= {value for name, value in attributes if name == "id" or (tag, name) == ("a", "name")}
        for name in ("href", "src"):
            if given.get(name):
                loads = (tag, name) in LOADS and given.get("rel") != "canonical"
                self.links.append((given[name], loads, self.getpos()[0]))


def main():
    site = pathlib.Path(os.path.abspath(sys.argv[1]))
    pages = {path: Page(path) for path in sorted(site.rglob("*.html"))}
    if not pages:
        sys.exit(f"{site} holds no pages")
    problems = []
    for path, page in pages.items():
        for link, loads, line in page.links:
            if link == NOT_OURS:
                continue
            url = urllib.parse.urlsplit(link)
            if url.scheme or url.netloc:
                if loads and url.scheme not in ("data", "javascript"):
                    problems.append((path, line, link, "is loaded from elsewhere"))
                continue
            target = path
            if url.path:
                target = pathlib.Path(os.path.normpath(path.parent / urllib.parse.unquote(url.path)))
            if site not in target.parents or not target.is_file():
                problems.append((path, line, link, "leads to no file of the site"))
            elif target in pages and urllib.parse.unquote(url.fragment) not in pages[target].places:
                problems.append((path, line, link, "leads to no place of that page"))
    for path, line, link, problem in problems:
        print(f"{path.relative_to(site)}:{line}: {link} {problem}")
    print(f"{sum(len(page.links) for page in pages.values())} links on {len(pages)} pages, {len(problems)} wrong")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
