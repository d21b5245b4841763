#!/usr/bin/env python3
"""Writes docs/settings.md and docs/commands.md out of what the tool itself says.

usage: references.py TOOL [--check]    --check: write nothing, fail when a page is out of date
"""
import json
import pathlib
import re
import subprocess
import sys

FOLDER = pathlib.Path(__file__).parent

SETTINGS_INTRO = """# Settings

Every key that the library reads, by the function that reads it. The same key may have a default of its own in each.

    auto settings = SmartPtr<AttrContainer>(new AttrContainer());
    settings->set(L"FBMnCells", 4);

Keys are case-sensitive. A value counts only when it has exactly the key's type: `set(L"FBMnCells", 4.0)` stores a `double`
and leaves the default in force. The tool takes `--set FBMnCells=4`, and refuses unknown keys and other types.
`settingsCatalogue()` gives the same list to programs, `mirel settings --json` to scripts.
"""

COMMANDS_INTRO = """# Commands

What `mirel` and each of its subcommands say of themselves. Exit status: 0 success, 1 nothing found in good input,
2 wrong usage or unusable input, 128 and the signal's number when a signal ended it. Formats have [pages of their own](index.md).
"""


def output(tool, *arguments):
    return subprocess.run([tool, *arguments], check=True, capture_output=True, text=True).stdout


def default(setting):
    value = setting["default"]
    return str(value).lower() if setting["type"] == "bool" else str(value)


def settings_page(tool):
    operations = {}
    for setting in json.loads(output(tool, "settings", "--json"))["settings"]:
        operations.setdefault(setting["read_by"], []).append(setting)
    page = SETTINGS_INTRO
    for operation, settings in operations.items():
        page += f"\n## {operation}\n\n| key | type | default | meaning |\n|---|---|---|---|\n"
        for s in settings:
            page += f"| `{s['key']}` | {s['type']} | `{default(s)}` | {s['meaning']} |\n"
    return page


def help_text(tool, *subcommand):
    lines = output(tool, *subcommand, "--help").strip().splitlines()
    text = "\n".join(line.rstrip() for line in lines)
    return "\n```text\n" + re.sub(r"\n{3,}", "\n\n", text) + "\n```\n"


def commands_page(tool):
    listed = output(tool, "--help").split("Subcommands:\n")[1].split("\n\n")[0]
    page = COMMANDS_INTRO + help_text(tool)
    for name in re.findall(r"^  ([a-z]+)", listed, re.MULTILINE):
        page += f"\n## mirel {name}\n" + help_text(tool, name)
    return page


def main():
    tool, check = sys.argv[1], "--check" in sys.argv[2:]
    for name, make in (("settings.md", settings_page), ("commands.md", commands_page)):
        page = make(tool)
        if not check:
            (FOLDER / name).write_text(page)
        elif page != (FOLDER / name).read_text():
            sys.exit(f"docs/{name} is out of date; ./dev docs writes it anew")


main()
