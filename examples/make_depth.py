#!/usr/bin/env python3
"""Makes what a depth camera sees of a corner of a room with a box, a ball and a shiny plate in it.

    make_depth.py --out DIR [--width 512] [--height 384] [--points 6000] [--seed 1]

writes DIR/depth.png (16-bit grey, millimetres along the line of sight's z, 0 where the camera measures nothing: on the
shiny plate, in the shadow of its projector, here and there by chance) and DIR/points.csv (points of the same scene at
pixels x_px, y_px, in metres in the camera's frame, z forward; some of them are far off).
"""
import argparse
import csv
import math
import pathlib
import random
import struct
import zlib

BASELINE = 0.08      # metres between camera and projector
NOISE = 0.0012       # of the depth at 1 m; grows with its square
DROPOUTS = 0.0008    # share of pixels without measurement
OUTLIERS = 0.03      # share of points that are far off


class Camera:
    def __init__(self, width, height):
        self.focal, self.centre_x, self.centre_y = 0.9 * width, (width - 1) / 2, (height - 1) / 2

    def ray(self, x, y):
        """Through a pixel; z is 1, so that distances along it are depths."""
        return (x - self.centre_x) / self.focal, (y - self.centre_y) / self.focal


def wall(a, b):
    return 2.6 / (1 + 0.25 * a)


def floor(_, b):
    return 0.75 / b if b > 0 else math.inf


def box(a, b):
    """Its front, which is turned a little."""
    depth = 1.7 / (1 - 0.35 * a)
    return depth if -0.75 < a * depth < -0.15 and -0.1 < b * depth < 0.74 else math.inf


def ball(a, b):
    cx, cy, cz, radius = 0.4, 0.42, 1.75, 0.32
    length2, along = a * a + b * b + 1, a * cx + b * cy + cz
    root = along * along - length2 * (cx * cx + cy * cy + cz * cz - radius * radius)
    return (along - math.sqrt(root)) / length2 if root > 0 else math.inf


def is_shiny(a, b):
    return ((a - 0.28) / 0.16) ** 2 + ((b + 0.2) / 0.1) ** 2 < 1


def nearest(a, b):
    return min(wall(a, b), floor(a, b), box(a, b), ball(a, b))


def is_lit(a, b, depth):
    """Whether the projector, to the right of the camera, reaches the point."""
    x, y = a * depth - BASELINE, b * depth
    for surface in (box, ball):  # seen from the projector: moved by the baseline
        for step in range(1, 9):
            z = depth * step / 9
            px, py = x * z / depth + BASELINE, y * z / depth
            if surface(px / z, py / z) < z - 0.02:
                return False
    return True


def measured(depth, source):
    return depth + source.gauss(0, NOISE) * depth * depth


def write_png(path, rows):
    def chunk(kind, content):
        return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))

    height, width = len(rows), len(rows[0])
    lines = b"".join(b"\0" + struct.pack(f">{width}H", *row) for row in rows)
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 16, 0, 0, 0, 0)) +
                     chunk(b"IDAT", zlib.compress(lines, 6)) + chunk(b"IEND", b""))


def depth_rows(camera, width, height, source):
    for y in range(height):
        row = []
        for x in range(width):
            a, b = camera.ray(x, y)
            depth = nearest(a, b)
            seen = source.random() > DROPOUTS and not is_shiny(a, b) and is_lit(a, b, depth)
            row.append(round(1000 * measured(depth, source)) if seen else 0)
        yield row


def points(camera, width, height, count, source):
    while count > 0:
        x, y = source.uniform(0, width - 1), source.uniform(0, height - 1)
        a, b = camera.ray(x, y)
        if is_shiny(a, b):
            continue
        depth = measured(nearest(a, b), source)
        if source.random() < OUTLIERS:
            depth *= source.uniform(0.6, 1.4)
        yield x, y, a * depth, b * depth, depth
        count -= 1


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--out", type=pathlib.Path, required=True, help="folder, made if missing")
    parser.add_argument("--width", type=int, default=512)
    parser.add_argument("--height", type=int, default=384)
    parser.add_argument("--points", type=int, default=6000)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    options.out.mkdir(parents=True, exist_ok=True)
    source, size = random.Random(options.seed), (options.width, options.height)
    camera = Camera(*size)
    write_png(options.out / "depth.png", list(depth_rows(camera, *size, source)))
    with open(options.out / "points.csv", "w", newline="", encoding="utf-8") as file:
        table = csv.writer(file, lineterminator="\n")
        table.writerow(["x_px", "y_px", "x_m", "y_m", "z_m"])
        for x, y, *position in points(camera, *size, options.points, source):
            table.writerow([f"{x:.2f}", f"{y:.2f}", *(f"{v:.5f}" for v in position)])


if __name__ == "__main__":
    main()
