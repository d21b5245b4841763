#!/usr/bin/env python3
"""Table of ratios out of one benchmark run: our time against a peer's, beside the goal.

usage: ratios.py GOALS.json RESULTS.json...

A goal is written "<= 1.25" (at most 1.25 times the peer's time) or ">= 10" (at least 10 times faster than the peer);
a row without one only compares, as times faster.
Figures are medians of CPU time.
"""
import json
import sys

MILLISECONDS = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}


def medians(path):
    """CPU time in milliseconds by benchmark name; of benchmarks that are run only once, that of this run."""
    with open(path) as file:
        results = json.load(file)
    return {
        entry["run_name"]: entry["cpu_time"] * MILLISECONDS[entry["time_unit"]]
        for entry in results["benchmarks"]
        if entry.get("aggregate_name", "median") == "median"
    }


def verdict(ratio, goal):
    """The figure in the goal's own terms, and whether it meets the goal."""
    relation, bound = goal.split()
    figure = ratio if relation == "<=" else 1.0 / ratio
    met = figure <= float(bound) if relation == "<=" else figure >= float(bound)
    return figure, met


def main():
    with open(sys.argv[1]) as file:
        goals = json.load(file)
    times = {}
    for path in sys.argv[2:]:
        times.update(medians(path))

    row = "{:<4} {:<34} {:<30} {:>10} {:>10} {:>8} {:>9} {:>9}  {}"
    print(row.format("", "ours", "beside", "ours ms", "peer ms", "figure", "goal", "stretch", ""))
    missed = 0
    for goal in goals:
        if goal["ours"] not in times or goal["peer"] not in times:
            continue
        ours, peer = times[goal["ours"]], times[goal["peer"]]
        wanted, stretch = goal.get("goal", ""), goal.get("stretch", "")
        figure, met = verdict(ours / peer, wanted or ">= 0")
        word = "missed" if not met else "stretch" if stretch and verdict(ours / peer, stretch)[1] else "met"
        missed += not met
        print(row.format(goal["row"], goal["ours"], goal["peer"], f"{ours:.4g}", f"{peer:.4g}", f"{figure:.2f}",
                         wanted, stretch, word if wanted else ""))
    print(f"\n'<=': our time as a multiple of the peer's. '>=': how many times faster than the peer. {missed} missed.")


if __name__ == "__main__":
    main()
