#!/usr/bin/env python3
"""Times what a user of scipy would call instead of the filters, on data like that of bench/filters.

usage: scipy_peers.py RESULTS.json [REGULAR EXPRESSION]

Writes medians of CPU time in the form of Google Benchmark, for ratios.py.
"""
import json
import re
import sys
import time

import numpy
from scipy import signal

REPETITIONS = 5
SECONDS = 0.2


def series(size):
    noise = numpy.random.default_rng(1).normal(0.0, 0.1, size)
    return numpy.sin(0.01 * numpy.arange(size)) + noise


def smoother(window, size):
    data = series(size)
    return lambda: signal.savgol_filter(data, window, 3, mode="mirror")


def biquad():
    data = series(100_000)
    sections = signal.butter(2, 5.0, fs=100.0, output="sos")
    return lambda: signal.sosfilt(sections, data)


PEERS = {"scipy_sosfilt": biquad}
for window in (5, 11, 25):
    for name, size in (("1e3", 1_000), ("1e5", 100_000), ("1e7", 10_000_000)):
        PEERS[f"scipy_savgol/{window}_of_{name}"] = lambda window=window, size=size: smoother(window, size)


def cpu_seconds(call, times):
    start = time.process_time()
    for _ in range(times):
        call()
    return (time.process_time() - start) / times


def median_seconds(call):
    times = max(1, int(SECONDS / max(cpu_seconds(call, 1), 1e-6)))
    return sorted(cpu_seconds(call, times) for _ in range(REPETITIONS))[REPETITIONS // 2]


def main():
    wanted = re.compile(sys.argv[2] if len(sys.argv) > 2 else ".")
    entries = [
        {"run_name": name, "aggregate_name": "median", "cpu_time": median_seconds(make()) * 1e3, "time_unit": "ms"}
        for name, make in PEERS.items()
        if wanted.search(name)
    ]
    with open(sys.argv[1], "w") as file:
        json.dump({"benchmarks": entries}, file, indent=1)


if __name__ == "__main__":
    main()
