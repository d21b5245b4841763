#!/usr/bin/env python3
"""Checks that the relative links of pages, Markdown or HTML, lead to a file, and to a heading where a Markdown page's
is named.

usage: links.py PAGE...
"""
import pathlib
import re
import sys

CODE = re.compile(r"^```.*?^```|^    .*?$|`[^`\n]*`", re.MULTILINE | re.DOTALL)
LINK = re.compile(r"\]\(([^)\s]+)\)|(?:src|href)=\"([^\"]+)\"")


def anchors(page):
    """Names of the headings, as the usual viewers of Markdown make them."""
    headings = re.findall(r"^#+ +(.*?) *$", page.read_text(), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def broken_links(page):
    markdown = page.suffix == ".md"
    text = CODE.sub("", page.read_text()) if markdown else page.read_text()
    for match in LINK.finditer(text):
        link = match[2] or match[1]
        if re.match(r"[a-z]+:", link) or (match[1] and not markdown):
            continue
        name, _, anchor = link.partition("#")
        target = page.parent / name if name else page
        if not target.exists() or (anchor and target.suffix == ".md" and anchor not in anchors(target)):
            yield link


broken = [f"{name}: {link}" for name in sys.argv[1:] for link in broken_links(pathlib.Path(name))]
if broken:
    sys.exit("links that lead nowhere:\n" + "\n".join(broken))
