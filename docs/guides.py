"""Writes programs, what they print, what the commands print, and the pictures into docs/guides.

usage: guides.py BUILD FRAMES BUNNY

Run from the project's folder. BUILD is a build with tool and examples, FRAMES the folder with photographs, BUNNY a mesh.
"""

import os
import pathlib
import re
import subprocess
import sys

from jpeg import jpeg_of_png

GUIDES = pathlib.Path("docs/guides")
IMAGES = pathlib.Path("docs/images")
OUT = pathlib.Path("out/guides")

PICTURES = {
    "matches": "readme/matches_0001.png",
    "guide-settings": "cells/overlay.png",
    "guide-features": "features/overlay.png",
    "guide-matching": "matching/matches_0001.png",
    "guide-filters": "imu/imu.png",
    "guide-geometry": "frustum/frustum.png",
    "guide-visibility": "visibility/visibility.png",
    "guide-smoothing": "depth/before_after.png",
    "guide-texture": "texture/matches.png",
    "guide-mesh": "mesh/mesh.png",
}

# `examples/NAME.cpp`, with `ARGUMENTS`   and behind it a block of code and one of output
PROGRAM = re.compile(r"(`(examples/\S+)\.cpp`(?:, with `([^`]*)`)?[^`]*)```cpp\n.*?```\n\n```text\n.*?```\n", re.DOTALL)
COMMAND = re.compile(r"(```sh\n([^`]*)```\n\n)```text\n.*?```\n", re.DOTALL)


class Shell:
    def __init__(self, build, frames, bunny):
        self.build = build
        path = f"{build / 'apps/mirel'}:{os.environ['PATH']}"
        self.environment = {**os.environ, "PATH": path, "frames": frames, "bunny": bunny}

    def output(self, commands):
        return subprocess.run(["bash", "-ec", commands], env=self.environment, check=True, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True).stdout


def program(match, shell):
    introduction, name, arguments = match.groups()
    executable = shell.build / "examples" / f"example_{pathlib.Path(name).name}"
    code = pathlib.Path(f"{name}.cpp").read_text(encoding="utf-8")
    output = shell.output(f"{executable} {arguments or ''}")
    return f"{introduction}```cpp\n{code}```\n\n```text\n{output}```\n"


def command(match, shell):
    """Times differ from run to run and are left out, as are large tables, whose titles begin with a capital letter."""
    summary, table, _ = re.split(r"^([A-Z]|\Z)", shell.output(match[2]), maxsplit=1, flags=re.MULTILINE)
    summary = re.sub(r"^time .* ms\n", "", summary, flags=re.MULTILINE)
    rest = "...\n" if table else ""
    return f"{match[1]}```text\n{summary}{rest}```\n"


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    shell = Shell(pathlib.Path(sys.argv[1]).resolve(), *sys.argv[2:])
    OUT.mkdir(parents=True, exist_ok=True)
    for guide in sorted(GUIDES.glob("*.md")):
        print(guide, flush=True)
        page = PROGRAM.sub(lambda match: program(match, shell), guide.read_text(encoding="utf-8"))
        page = COMMAND.sub(lambda match: command(match, shell), page)
        guide.write_text(page, encoding="utf-8")
    shell.output(f"mirel track $frames/basketball1.png $frames/basketball2.png --out {OUT}/readme")  # README.md shows it
    for name, source in PICTURES.items():
        (IMAGES / f"{name}.jpg").write_bytes(jpeg_of_png((OUT / source).read_bytes()))


main()
