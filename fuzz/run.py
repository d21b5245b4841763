#!/usr/bin/env python3
"""Runs the fuzz targets, several side by side, and prints what they did.

usage: run.py BUILD SECONDS [TARGET]    fuzz every target, or one, for a time; ends with 1 when something is amiss
       run.py BUILD --planted [TARGET]  plant a fault in each target's subject and see whether the target finds it

Runs begin with fuzz/corpus/TARGET. What they find in addition goes to out/fuzz/TARGET and helps the next run.
--planted changes the sources it is started beside: start it in a copy.
"""
import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys

LEAST_REACH = 70  # percent
PLANTED_SECONDS = 60


class Target:
    def __init__(self, build, name):
        self.name = name
        self.build = build
        self.program = build / "fuzz" / name
        self.corpus = pathlib.Path("fuzz/corpus", name)
        self.out = pathlib.Path("out/fuzz", name)
        settings = json.loads((build / f"fuzz/{name}.json").read_text())
        self.aims = settings["aims"]
        self.options = ["-timeout=5", "-rss_limit_mb=2048", "-print_final_stats=1", "-close_fd_mask=1",
                        f"-artifact_prefix={self.out}/", *settings["options"]]
        if os.environ.get("CI"):  # the same inputs in every run: what lands depends on no chance
            self.options.append("-seed=1")

    def make(self):
        subprocess.run(["cmake", "--build", self.build, "--target", self.name], check=True, stdout=subprocess.DEVNULL)

    def run(self, limit, *folders):
        """Whether all went well, and how many inputs were run. `limit` is libFuzzer's option that ends the run."""
        (self.out / "corpus").mkdir(parents=True, exist_ok=True)
        environment = dict(os.environ, TMPDIR="/dev/shm", LLVM_PROFILE_FILE=str(self.out / "reach.profraw"))
        result = subprocess.run([self.program, limit, *self.options, *folders], stdout=subprocess.DEVNULL,
                                stderr=subprocess.PIPE, text=True, errors="replace", env=environment)
        (self.out / "log.txt").write_text(result.stderr)
        executions = re.search(r"number_of_executed_units: *(\d+)", result.stderr)
        return result.returncode == 0, int(executions[1]) if executions else 0

    def reach(self):
        """Percent of the lines of the aims that the last run reached."""
        data = self.out / "reach.profdata"
        subprocess.run(["llvm-profdata-14", "merge", "-sparse", self.out / "reach.profraw", "-o", data], check=True)
        export = subprocess.run(["llvm-cov-14", "export", "-summary-only", f"-instr-profile={data}", self.program],
                                check=True, capture_output=True).stdout
        files = {file["filename"]: file["summary"]["lines"] for file in json.loads(export)["data"][0]["files"]}
        covered = total = 0
        for aim in self.aims:  # files have the build folder before their names
            lines = [lines for name, lines in files.items() if name.endswith("/" + aim)]
            covered += max(line["covered"] for line in lines)
            total += lines[0]["count"]
        return 100 * covered / total

    def last_words(self):
        """What broke and, when there is one, the input that did it."""
        text = (self.out / "log.txt").read_text()
        told = re.findall(r".*(?:broken:|runtime error:|ERROR: ).*", text)
        inputs = re.findall(r"Test unit written to (.*)", text)
        return told[:2] + [f"again: {self.program} {path}" for path in inputs] + [f"see {self.out}/log.txt"]


def fuzz(targets, seconds):
    print(f"{'target':<20} {'executions':>12}   reach", flush=True)
    faults = []
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        runs = pool.map(lambda t: t.run(f"-max_total_time={seconds}", t.out / "corpus", t.corpus), targets)
        for target, (well, executions) in zip(targets, runs):
            reach = target.reach() if well else 0
            word = "broken" if not well else "reaches too little" if reach < LEAST_REACH else ""
            print(f"{target.name:<20} {executions:>12,} {reach:>5.1f} %  {word}", flush=True)
            if word:
                faults.append([f"{target.name}: {word}", *(target.aims if well else target.last_words())])
    print(f"\nreach: lines reached in the files a target is for, at least {LEAST_REACH} %. {len(faults)} amiss.")
    for fault in faults:
        print("", "\n  ".join(fault), sep="\n")
    return not faults


def plant(target, fault):
    """Whether the target finds the fault, and after how many inputs; without it, its corpus must run clean."""
    target.make()
    if not target.run("-runs=0", target.corpus)[0]:
        sys.exit(f"run.py: {target.name} is broken without a fault:\n  " + "\n  ".join(target.last_words()))
    path = pathlib.Path(fault["file"])
    text = path.read_text()
    if text.count(fault["find"]) != 1:
        sys.exit(f"run.py: {target.name}: {path} must have exactly one: {fault['find']}")
    path.write_text(text.replace(fault["find"], fault["replace"]))
    try:
        target.make()
        well, executions = target.run(f"-max_total_time={PLANTED_SECONDS}", target.corpus)
        return not well, executions
    finally:
        path.write_text(text)


def planted(targets):
    faults = json.loads(pathlib.Path("fuzz/planted.json").read_text())
    print(f"{'target':<20} {'fault in':<58} {'executions':>12}", flush=True)
    results = []
    for target in targets:
        found, executions = plant(target, faults[target.name])
        results.append(found)
        word = "found" if found else "missed"
        print(f"{target.name:<20} {faults[target.name]['file']:<58} {executions:>12,}  {word}", flush=True)
    print(f"\n{sum(results)} of {len(targets)} found.")
    return all(results)


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    build, what = pathlib.Path(sys.argv[1]), sys.argv[2]
    names = sys.argv[3:] or sorted(file.stem for file in (build / "fuzz").glob("*.json"))
    targets = [Target(build, name) for name in names]
    sys.exit(0 if (planted(targets) if what == "--planted" else fuzz(targets, int(what))) else 1)


if __name__ == "__main__":
    main()
