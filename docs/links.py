#!/usr/bin/env python3
"""Checks that the relative links of Markdown pages lead somewhere: to a file, and to a heading where one is named.

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
    for match in LINK.finditer(CODE.sub("", page.read_text())):
        link = match[1] or match[2]
        if re.match(r"[a-z]+:", link):
            continue
        name, _, anchor = link.partition("#")
        target = page.parent / name if name else page
        if not target.exists() or (anchor and anchor not in anchors(target)):
            yield link


broken = [f"{name}: {link}" for name in sys.argv[1:] for link in broken_links(pathlib.Path(name))]
if broken:
    sys.exit("links that lead nowhere:\n" + "\n".join(broken))
