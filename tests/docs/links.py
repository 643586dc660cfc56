#!/usr/bin/env python3
"""Follows the links of the Markdown pages that stay within the repository.

Each has to lead to a file or folder that is there and, if it names a heading, to a
page that has it. docs/index.md has to list every page of docs/.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGES = [ROOT / name for name in ("README.md", "CONTRIBUTING.md", "CHANGELOG.md", "SECURITY.md")]
PAGES += sorted((ROOT / "docs").glob("*.md"))


def prose(page):
    """Without what is code."""
    text = re.sub(r"^( *)```.*?^\1```", "", page.read_text(encoding="utf-8"), flags=re.M | re.S)
    return re.sub(r"`[^`\n]*`", "", text)


def anchors(page):
    """The headings as links spell them."""
    text = re.sub(r"^```.*?^```", "", page.read_text(encoding="utf-8"), flags=re.M | re.S)
    return {
        re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")
        for heading in re.findall(r"^#+ (.+?) *$", text, re.M)
    }


def links(page):
    for link in re.findall(r"\]\(([^)\s]+)\)", prose(page)):
        if not re.match(r"[a-z]+:", link):
            yield link


def check(page):
    for link in links(page):
        name, _, anchor = link.partition("#")
        target = (page.parent / name).resolve() if name else page
        if not target.exists():
            yield f"{link}: there is no {name}"
        elif anchor and anchor not in anchors(target):
            yield f"{link}: no such heading"


def main():
    wrong = [f"{page.relative_to(ROOT)}: {text}" for page in PAGES for text in check(page)]
    index = ROOT / "docs/index.md"
    listed = {(index.parent / link.partition("#")[0]).resolve() for link in links(index)}
    for page in PAGES:
        if page.parent == index.parent and page != index and page not in listed:
            wrong.append(f"docs/index.md does not list {page.name}")
    followed = sum(1 for page in PAGES for _ in links(page))
    for text in wrong:
        print(f"failed: {text}")
    if not wrong:
        print(f"passed: {followed} links of {len(PAGES)} pages")
    return 1 if wrong or not followed else 0


if __name__ == "__main__":
    sys.exit(main())
