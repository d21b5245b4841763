"""Writes docs/detectors-and-descriptors.md: every detector with every descriptor on real pairs of frames.

usage: combinations.py MIREL FRAMES DOCS

MIREL is the command line tool, FRAMES the folder with the frames, DOCS where page and pictures go. Pictures are made
smaller by djpeg and cjpeg of libjpeg-turbo.
"""

import base64
import json
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile
from dataclasses import dataclass

from jpeg import small_jpeg

RUNS = 3
DASH = "–"


@dataclass(frozen=True)
class Pair:
    title: str
    first: str
    second: str
    options: tuple
    scene: str


@dataclass(frozen=True)
class Combination:
    detector: str
    descriptor: str
    settings: tuple  # FBMType, and for type 2 FBMFeatureType, FBMDescriptorType

    def name(self):
        return f"{self.detector} with {self.descriptor}"

    def options(self):
        keys = ("FBMType", "FBMFeatureType", "FBMDescriptorType")
        return [word for key, value in zip(keys, self.settings) for word in ("--set", f"{key}={value}")]


@dataclass(frozen=True)
class Outcome:
    features: tuple  # of the two frames
    matches: int
    inliers: int  # -1: no motion
    milliseconds: float

    def moved(self):
        return self.inliers >= 0


FAR_APART = ("--mode", "exhaustive", "--set", "FBMEnhancement=0")

PAIRS = [
    Pair("graf", "graf1.png", "graf3.png", FAR_APART, "a painted wall seen from two sides"),
    Pair("leuven", "leuvenA.jpg", "leuvenB.jpg", FAR_APART, "a building from two places far apart"),
    Pair("rubberwhale", "rubberwhale1.png", "rubberwhale2.png", ("--mode", "narrow"), "things that move a little"),
    Pair("box", "box.png", "box_in_scene.png", FAR_APART,
         "a box, and the same box turned and half as large among other things"),
]

DETECTORS = {"GFTT": 0, "AKAZE": 1, "MSER": 2, "ORB": 3, "BRISK": 5}
DESCRIPTORS = {"LATCH, 32 bytes": 0, "FREAK": 2, "BRISK": 3, "ORB": 4}

COMBINATIONS = [
    Combination("fixed-point corners", "fixed-point, 16 bytes", (0,)),
    Combination("ORB, sub-pixel", "LATCH, 16 bytes", (1,)),
] + [
    Combination(detector, descriptor, (2, feature_type, descriptor_type))
    for detector, feature_type in DETECTORS.items()
    for descriptor, descriptor_type in DESCRIPTORS.items()
]


def track(mirel, frames, pair, combination, out, pictures=0):
    """One run of the tool: its result and its run record."""
    command = [mirel, "track", frames / pair.first, frames / pair.second, *pair.options, *combination.options(),
               "--pictures", str(pictures), "--out", out, "--json"]
    run = subprocess.run(command, capture_output=True, text=True, check=False)
    if run.returncode not in (0, 1):  # 1: no match
        sys.exit(f"{' '.join(map(str, command))}\n{run.stderr}")
    return json.loads(run.stdout), json.loads((out / "run.json").read_text())


def measure(mirel, frames, pair, out):
    """The outcome of every combination, and the last run record. Runs of one combination lie far apart in time, so that
    other work of the machine slows all combinations alike."""
    milliseconds = {combination: [] for combination in COMBINATIONS}
    outcomes = {}
    for number in range(1, RUNS + 1):
        print(f"{pair.title}, run {number} of {RUNS}", flush=True)
        for combination in COMBINATIONS:
            result, record = track(mirel, frames, pair, combination, out)
            seconds = sum(record["seconds"].get(stage, 0) for stage in ("features", "descriptors", "matching"))
            milliseconds[combination].append(1000 * seconds)
            numbers = result["pairs"][0]
            outcomes[combination] = Outcome((numbers["features_1"], numbers["features_2"]), numbers["matches"],
                                            numbers["inliers"] if numbers["motion"] else -1,
                                            statistics.median(milliseconds[combination]))
    return outcomes, record


def three_quarters(jpeg):
    return subprocess.run(["djpeg", "-scale", "6/8"], input=jpeg, capture_output=True, check=True).stdout


def write_picture(mirel, frames, pair, combination, out, target):
    track(mirel, frames, pair, combination, out, pictures=1)
    page = (out / "report.html").read_text()
    jpeg = re.search(r"data:image/jpeg;base64,([^\"]+)", page).group(1)
    target.write_bytes(small_jpeg(three_quarters(base64.b64decode(jpeg))))


def best_of(outcomes):
    """Most matches, most inliers and least time among the combinations that found a motion."""
    moved = [outcome for outcome in outcomes.values() if outcome.moved()]
    return (max((o.matches for o in moved), default=None), max((o.inliers for o in moved), default=None),
            min((round(o.milliseconds) for o in moved), default=None))


def table(outcomes):
    def bold(text, value, best, moved):
        return f"**{text}**" if moved and value == best else text

    def cell(outcome, best):
        o, moved = outcome, outcome.moved()
        inliers = bold(str(o.inliers), o.inliers, best[1], moved) if moved else DASH
        matches = bold(str(o.matches), o.matches, best[0], moved)
        time = bold(f"{o.milliseconds:.0f} ms", round(o.milliseconds), best[2], moved)
        return f"{inliers} of {matches}<br>{o.features[0]} + {o.features[1]}<br>{time}"

    lines = ["| detector | descriptor | settings | " + " | ".join(pair.title for pair in PAIRS) + " |",
             "|---|---|---|" + "---:|" * len(PAIRS)]
    best = {pair: best_of(outcomes[pair]) for pair in PAIRS}
    for c in COMBINATIONS:
        cells = [cell(outcomes[pair][c], best[pair]) for pair in PAIRS]
        lines.append(f"| {c.detector} | {c.descriptor} | {', '.join(map(str, c.settings))} | {' | '.join(cells)} |")
    return "\n".join(lines)


def listed(names):
    names = list(names)
    return " and ".join(names) if len(names) < 3 else ", ".join(names[:-1]) + " and " + names[-1]


def most_inliers(outcomes, pair):
    """The combination with most inliers, the faster one of several; None where no motion was found."""
    moved = [c for c in COMBINATIONS if outcomes[pair][c].moved()]
    return min(moved, key=lambda c: (-outcomes[pair][c].inliers, outcomes[pair][c].milliseconds), default=None)


def observations(outcomes):
    lines = []
    for pair in PAIRS:
        moved = [c for c in COMBINATIONS if outcomes[pair][c].moved()]
        text = f"- **{pair.title}** ({pair.scene}): {len(moved)} of {len(COMBINATIONS)} combinations find a motion."
        if moved:
            best = most_inliers(outcomes, pair)
            fastest = min(moved, key=lambda c: outcomes[pair][c].milliseconds)
            o, f = outcomes[pair][best], outcomes[pair][fastest]
            text += (f" Most inliers: {best.name()} ({o.inliers} of {o.matches} matches, {o.milliseconds:.0f} ms)."
                     f" Fastest: {fastest.name()} ({f.milliseconds:.0f} ms, {f.inliers} inliers).")
        lines.append(text)
    found = {c: [pair for pair in PAIRS if outcomes[pair][c].moved()] for c in COMBINATIONS}
    most = max(len(pairs) for pairs in found.values())
    leaders = [c for c in COMBINATIONS if len(found[c]) == most]
    lines.append(f"- The most pairs with a motion, {most} of {len(PAIRS)}: {listed(c.name() for c in leaders)}.")
    never = [c for c in COMBINATIONS if not found[c]]
    if never:
        lines.append(f"- No motion in any pair: {listed(c.name() for c in never)}.")
    lines.append(recommendation(outcomes, leaders, most))
    return "\n".join(lines)


def recommendation(outcomes, leaders, most):
    """By the pairs with a motion, then by the inliers as a share of the pair's largest number."""
    def share(c):
        return statistics.mean(max(outcomes[pair][c].inliers, 0) / max(1, best_of(outcomes[pair])[1] or 0)
                               for pair in PAIRS)

    first = max(leaders, key=share)
    return (f"\nTo start with: **{first.name()}**. It finds a motion in {most} of {len(PAIRS)} pairs and on average has "
            f"{100 * share(first):.0f} % of the inliers of the pair's best combination. {len(PAIRS)} pairs are few: "
            "compare on frames of your own.")


def command_of(pair, combination):
    frames = f'"$frames"/{pair.first} "$frames"/{pair.second}'
    return f"$mirel track {frames} {' '.join(pair.options)} {' '.join(combination.options())}"


def processor():
    models = re.findall(r"model name\s*: (.+)", pathlib.Path("/proc/cpuinfo").read_text())
    return models[0].strip() if models else "an unknown processor"


PAGE = """# Detectors and descriptors

Every detector with every descriptor on four pairs of real frames. Made by `./dev combinations`, which runs `mirel track`
for each; the frames are samples of OpenCV's documentation (package opencv-doc).

## Table

Each cell: inliers of matches, features of the first and of the second frame, time. The best figure of a column among
the combinations that find a motion is bold.

{table}

- **inliers**: matches that lie within 0.5 % of the image's diagonal, at least 2 pixels, of where the estimated motion
  puts them. They agree with each other; that the motion is the true one does not follow from a handful of them. {dash}
  means that no motion was found that five matches agree with.
- **matches**: pairs that passed all tests of matching. **features**: those with a descriptor.
- **time**: milliseconds for features and descriptors of both frames and for matching them, median of {runs} runs with
  all threads on {processor} (OpenCV {opencv}, instruction set {instructions}). Times vary from machine to machine and
  from run to run.
- **settings**: `FBMType`, `FBMFeatureType`, `FBMDescriptorType`. Everything else is at its default but for the options
  of the pair below; the budget is 900 features for `FBMType` 0 and 2000 for the others.
- AKAZE's own descriptors (`FBMDescriptorType` 1) are missing: OpenCV computes them only for features that carry its
  class number, and a matrix of features has none, so it refuses.

Each pair has the same options in every row. Frames from places far apart are compared exhaustively and without
enhancement; with the default one no combination finds the box. With the settings of the best row:

    frames=${{MIREL_CACHE:-${{XDG_CACHE_HOME:-$HOME/.cache}}/mirel-algorithms}}/opencv-doc/usr/share/doc/opencv-doc/examples/data
    mirel=build/release/apps/mirel/mirel
{commands}

## What the figures say

{observations}

## Pictures

The combination with most inliers of each pair. Lines join matches, coloured by descriptor distance; rings: not in
agreement with the motion.
{pictures}"""


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    mirel, frames, docs = (pathlib.Path(argument) for argument in sys.argv[1:])
    outcomes = {}
    commands, pictures = "", ""
    with tempfile.TemporaryDirectory() as folder:
        out = pathlib.Path(folder)
        for pair in PAIRS:
            outcomes[pair], record = measure(mirel, frames, pair, out)
            shown = most_inliers(outcomes, pair) or COMBINATIONS[0]
            name = f"images/combination-{pair.title}.jpg"
            write_picture(mirel, frames, pair, shown, out, docs / name)
            commands += f"    {command_of(pair, shown)}\n"
            pictures += f"\n{pair.title}, {shown.name()}:\n\n![Matches of {pair.title}]({name})\n"
    (docs / "detectors-and-descriptors.md").write_text(PAGE.format(
        table=table(outcomes), dash=DASH, runs=RUNS, processor=processor(), opencv=record["opencv"],
        instructions=record["instruction_set"], commands=commands.rstrip("\n"), observations=observations(outcomes),
        pictures=pictures), encoding="utf-8")


main()
