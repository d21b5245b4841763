#!/usr/bin/env python3
"""Makes meshes as scans leave them, with as many triangles as wanted.

    make_mesh.py --out DIR [--triangles 200000] [--seed 1]

writes DIR/figure.obj (a closed figure: a sphere with limbs, bumps and the noise of a scanner) and DIR/ground.obj (an
open piece of ground with a hole, texture coordinates and two materials that DIR/ground.mtl describes). Units: metres.
"""
import argparse
import math
import pathlib
import random

NOISE = 0.0006      # standard deviation along the normal, of a figure 2 m wide
BLOCK = 1 << 16     # lines that are written at once


def write_lines(file, form, rows):
    """One line per row; formatted a block at a time, which is several times as quick as line by line."""
    block = []
    for row in rows:
        block.append(row)
        if len(block) == BLOCK:
            file.write((form * len(block)) % tuple(value for entry in block for value in entry))
            block.clear()
    file.write((form * len(block)) % tuple(value for entry in block for value in entry))


class Bumps:
    """Smooth hills around directions: a height for every direction."""

    def __init__(self, source, count):
        self.hills = []
        for _ in range(count):
            z, angle = source.uniform(-1, 1), source.uniform(0, 2 * math.pi)
            ring = math.sqrt(1 - z * z)
            limb = source.random() < 0.2
            self.hills.append((ring * math.cos(angle), ring * math.sin(angle), z,
                               source.uniform(30, 60) if limb else source.uniform(8, 150),
                               source.uniform(0.3, 0.55) if limb else source.uniform(-0.06, 0.1)))

    def height(self, x, y, z):
        height = 0.0
        for hx, hy, hz, steep, size in self.hills:
            fall = steep * (hx * x + hy * y + hz * z - 1)
            if fall > -12:
                height += size * math.exp(fall)
        return height


def figure(path, triangles, source):
    """Rings of equal latitude between two poles: 2 * across * (rings - 1) triangles."""
    rings = max(3, round(math.sqrt(triangles / 4)))
    across = max(3, triangles // (2 * (rings - 1)))
    bumps = Bumps(source, 40)
    gauss = source.gauss

    def point(x, y, z):
        radius = 1 + bumps.height(x, y, z) + gauss(0, NOISE)
        return radius * x, radius * y, radius * z

    def points():
        yield point(0, 1, 0)
        turns = [(math.cos(2 * math.pi * j / across), math.sin(2 * math.pi * j / across)) for j in range(across)]
        for i in range(1, rings):
            y, ring = math.cos(math.pi * i / rings), math.sin(math.pi * i / rings)
            for cosine, sine in turns:
                yield point(ring * cosine, y, ring * sine)
        yield point(0, -1, 0)

    def faces():
        last = 2 + (rings - 1) * across
        for j in range(across):
            yield 1, 2 + (j + 1) % across, 2 + j
        for i in range(rings - 2):
            up, down = 2 + i * across, 2 + (i + 1) * across
            for j in range(across):
                k = j + 1 if j + 1 < across else 0
                yield up + j, up + k, down + j
                yield up + k, down + k, down + j
        for j in range(across):
            yield last, last - across + j, last - across + (j + 1) % across

    with open(path, "w", encoding="ascii", newline="\n") as file:
        file.write("# a closed figure\n")
        write_lines(file, "v %.6f %.6f %.6f\n", points())
        write_lines(file, "f %d %d %d\n", faces())


def ground(path, triangles, source):
    """A square grid; the corner beyond the path is of the other material, a round hole has no triangles."""
    side = max(3, round(math.sqrt(triangles / 2)))
    waves = [(source.uniform(-9, 9), source.uniform(-9, 9), source.uniform(0, 6.3), source.uniform(0.02, 0.08))
             for _ in range(8)]

    def points():
        for i in range(side + 1):
            y = i / side
            for j in range(side + 1):
                x = j / side
                z = sum(size * math.sin(a * x + b * y + phase) for a, b, phase, size in waves)
                yield 2 * x - 1, 2 * y - 1, z + source.gauss(0, NOISE)

    def cells(material):
        for i in range(side):
            for j in range(side):
                x, y = (j + 0.5) / side, (i + 0.5) / side
                is_path = abs(y - 0.5 - 0.15 * math.sin(5 * x)) < 0.07
                if is_path == (material == "path") and (x - 0.75) ** 2 + (y - 0.75) ** 2 > 0.006:
                    yield i * (side + 1) + j + 1

    def faces(material):
        for a in cells(material):
            b, c, d = a + 1, a + side + 2, a + side + 1
            yield a, a, 1, b, b, 1, c, c, 1
            yield a, a, 1, c, c, 1, d, d, 1

    with open(path, "w", encoding="ascii", newline="\n") as file:
        file.write("# an open piece of ground\nmtllib ground.mtl\n")
        write_lines(file, "v %.6f %.6f %.6f\n", points())
        write_lines(file, "vt %.6f %.6f\n", ((j / side, i / side) for i in range(side + 1) for j in range(side + 1)))
        file.write("vn 0 0 1\n")
        for material in ("grass", "path"):
            file.write(f"usemtl {material}\n")
            write_lines(file, "f %d/%d/%d %d/%d/%d %d/%d/%d\n", faces(material))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--out", type=pathlib.Path, required=True)
    parser.add_argument("--triangles", type=int, default=200_000)
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()
    if not 20 <= arguments.triangles <= 5_000_000:
        parser.error("--triangles: a number from 20 to 5000000 expected")
    arguments.out.mkdir(parents=True, exist_ok=True)
    source = random.Random(arguments.seed)
    figure(arguments.out / "figure.obj", arguments.triangles, source)
    ground(arguments.out / "ground.obj", arguments.triangles, source)
    with open(arguments.out / "ground.mtl", "w", encoding="ascii", newline="\n") as file:
        file.write("newmtl grass\nKd 0.35 0.55 0.25\nnewmtl path\nKd 0.6 0.5 0.4\n")


if __name__ == "__main__":
    main()
