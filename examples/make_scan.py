#!/usr/bin/env python3
"""Makes what a scanner sees on its way around a table with things on it.

The scanner walks once around the table, looks at its middle and sees marks on the table, on boxes, a ball and a
cylinder: each mark from all the poses that face it, with noise that is larger along the line of sight.

    make_scan.py --out DIR [--poses 64] [--points 10000] [--seed 1]

writes DIR/poses.json and DIR/points.csv (every point in the frame of its pose), and DIR/views.json: some of the poses
and three that look at a shelf elsewhere. Cameras look along -z with y up; the world's z axis points up; metres.
"""
import argparse
import csv
import json
import math
import pathlib
import random

CENTRE = (0.8, 0.5, 0.75)           # of the table's top
TABLE = (1.6, 1.0)                  # length and width
NOISE, DEPTH_NOISE = 0.0004, 0.002  # across and along the line of sight
HALF_VIEW = math.radians(30)


def subtract(a, b):
    return [p - q for p, q in zip(a, b)]


def dot(a, b):
    return sum(p * q for p, q in zip(a, b))


def cross(a, b):
    return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]


def unit(a):
    length = math.hypot(*a)
    return [p / length for p in a]


class Pose:
    """Camera to world: axes and position in the world."""

    def __init__(self, position, target):
        self.position = position
        self.z = unit(subtract(position, target))
        self.x = unit(cross((0, 0, 1), self.z))
        self.y = cross(self.z, self.x)

    def to_camera(self, point):
        d = subtract(point, self.position)
        return [dot(d, self.x), dot(d, self.y), dot(d, self.z)]

    def matrix(self):
        return [*self.x, 0, *self.y, 0, *self.z, 0, *self.position, 1]

    def quaternion(self):
        """x, y, z, w of the rotation (its trace is not near -1 for cameras that stand upright)."""
        x, y, z = self.x, self.y, self.z
        candidates = [(1 + x[0] - y[1] - z[2], (0, y[0] + x[1], z[0] + x[2], y[2] - z[1])),
                      (1 - x[0] + y[1] - z[2], (y[0] + x[1], 0, z[1] + y[2], z[0] - x[2])),
                      (1 - x[0] - y[1] + z[2], (z[0] + x[2], z[1] + y[2], 0, x[1] - y[0])),
                      (1 + x[0] + y[1] + z[2], (y[2] - z[1], z[0] - x[2], x[1] - y[0], 0))]
        index, (square, others) = max(enumerate(candidates), key=lambda c: c[1][0])
        scale = 0.5 / math.sqrt(square)
        return [0.5 * math.sqrt(square) if i == index else scale * o for i, o in enumerate(others)]


def marks(source):
    """Positions and normals: more of them on the things than on the table."""
    def spot(x, y, z, normal):
        return (CENTRE[0] + x, CENTRE[1] + y, CENTRE[2] + z), normal

    for _ in range(60):  # the table
        yield spot(source.uniform(-0.5, 0.5) * TABLE[0], source.uniform(-0.5, 0.5) * TABLE[1], 0, (0, 0, 1))
    for bx, by, width, height in [(-0.45, 0.1, 0.3, 0.25), (0.5, -0.2, 0.2, 0.4)]:  # boxes
        for _ in range(50):
            a, b = source.uniform(-0.5, 0.5) * width, source.uniform(0, 1) * height
            nx, ny = source.choice([(1, 0), (-1, 0), (0, 1), (0, -1)])
            if source.random() < 0.35:
                yield spot(bx + a, by + source.uniform(-0.5, 0.5) * width, height, (0, 0, 1))
            else:
                yield spot(bx + nx * width / 2 + ny * a, by + ny * width / 2 + nx * a, b, (nx, ny, 0))
    for _ in range(60):  # a ball
        n = unit([source.gauss(0, 1), source.gauss(0, 1), abs(source.gauss(0, 1))])
        yield spot(0.05 + 0.12 * n[0], 0.25 + 0.12 * n[1], 0.12 + 0.12 * n[2], n)
    for _ in range(40):  # a cylinder
        angle = source.uniform(0, 2 * math.pi)
        n = (math.cos(angle), math.sin(angle), 0)
        yield spot(0.1 + 0.07 * n[0], -0.3 + 0.07 * n[1], source.uniform(0, 0.3), n)


def walk(count, source):
    for i in range(count):
        angle = 2 * math.pi * i / count
        radius = 1.5 + 0.15 * math.sin(3 * angle)
        height = 0.75 + 0.25 * math.sin(2 * angle)
        position = [CENTRE[0] + 1.2 * radius * math.cos(angle), CENTRE[1] + radius * math.sin(angle),
                    CENTRE[2] + height]
        target = [c + source.gauss(0, 0.06) for c in CENTRE]
        yield Pose(position, target)


def is_seen(pose, point, normal):
    p = pose.to_camera(point)
    facing = dot(unit(subtract(pose.position, point)), normal) > 0.15
    return facing and math.hypot(p[0], p[1]) < -p[2] * math.tan(HALF_VIEW)


def measured(pose, point, source):
    p = pose.to_camera(point)
    stretch = 1 + source.gauss(0, DEPTH_NOISE) / math.hypot(*p)
    return [c * stretch + source.gauss(0, NOISE) for c in p]


def write_poses(path, entries):
    path.write_text(json.dumps({"schema": 1, "poses": entries}, indent=1) + "\n", encoding="utf-8")


def rounded(values):
    return [round(v, 9) + 0.0 for v in values]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--out", type=pathlib.Path, required=True, help="folder, made if missing")
    parser.add_argument("--poses", type=int, default=64, help="poses on the way around the table")
    parser.add_argument("--points", type=int, default=10000, help="at most")
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    options.out.mkdir(parents=True, exist_ok=True)
    source = random.Random(options.seed)
    things, poses = list(marks(source)), list(walk(options.poses, source))

    write_poses(options.out / "poses.json",
                [{"number": i, "position": rounded(p.position), "quaternion_xyzw": rounded(p.quaternion())}
                 for i, p in enumerate(poses)])

    shelf = [("shelf left", Pose([4.2, -1.2, 1.4], [5.4, -1.6, 1.2])), ("shelf", Pose([4.2, 0, 1.4], [5.4, 0, 1.2])),
             ("shelf right", Pose([4.2, 1.2, 1.4], [5.4, 1.6, 1.2]))]
    table = [(f"table {i}", poses[i * len(poses) // 7]) for i in range(7)]
    write_poses(options.out / "views.json", [{"name": n, "matrix": rounded(p.matrix())} for n, p in table + shelf])

    seen = [(i, p, m) for i, p in enumerate(poses) for m, normal in things if is_seen(p, m, normal)]
    kept = sorted(source.sample(range(len(seen)), min(options.points, len(seen))))
    with open(options.out / "points.csv", "w", newline="", encoding="utf-8") as file:
        table = csv.writer(file, lineterminator="\n")
        table.writerow(["x_m", "y_m", "z_m", "pose"])
        for index in kept:
            number, pose, mark = seen[index]
            table.writerow([*(f"{v:.6f}" for v in measured(pose, mark, source)), number])


if __name__ == "__main__":
    main()
