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
        self.folder = build / "fuzz"
        self.program = self.folder / name
        self.corpus = pathlib.Path("fuzz/corpus", name)
        self.out = pathlib.Path("out/fuzz", name)
        settings = json.loads((self.folder / f"{name}.json").read_text())
        self.aims = settings["aims"]
        self.options = ["-timeout=5", "-rss_limit_mb=2048", f"-max_len={settings['max_len']}", "-print_final_stats=1",
                        "-close_fd_mask=1", f"-artifact_prefix={self.out}/"]
        if os.environ.get("CI"):  # the same inputs in every run: what lands depends on no chance
            self.options.append("-seed=1")
        if settings["dictionary"]:
            self.options.append(f"-dict=fuzz/{settings['dictionary']}")

    def run(self, limit, *folders):
        """Whether all went well, and how many inputs were run. `limit` is libFuzzer's option that ends the run."""
        self.out.mkdir(parents=True, exist_ok=True)
        log = self.out / "log.txt"
        environment = dict(os.environ, LLVM_PROFILE_FILE=str(self.out / "reach.profraw"))
        with open(log, "w") as file:
            status = subprocess.run([self.program, limit, *self.options, *folders], stdout=subprocess.DEVNULL, stderr=file,
                                    env=environment).returncode
        text = log.read_text(errors="replace")
        executions = re.search(r"number_of_executed_units: *(\d+)", text)
        return status == 0, int(executions[1]) if executions else 0

    def fuzz(self, seconds):
        found = self.out / "corpus"
        found.mkdir(parents=True, exist_ok=True)
        return self.run(f"-max_total_time={seconds}", found, self.corpus)

    def reach(self):
        """Percent of the lines of the aims that the last run reached."""
        data = self.out / "reach.profdata"
        subprocess.run(["llvm-profdata-14", "merge", "-sparse", self.out / "reach.profraw", "-o", data], check=True)
        export = subprocess.run(["llvm-cov-14", "export", "-summary-only", f"-instr-profile={data}", self.program],
                                check=True, capture_output=True).stdout
        covered = total = 0
        for aim in self.aims:  # files have the build folder before their names
            lines = [file["summary"]["lines"] for file in json.loads(export)["data"][0]["files"]
                     if file["filename"].endswith("/" + aim)]
            if not lines:
                sys.exit(f"run.py: {self.name}: {aim} is not a part of the target")
            covered += max(line["covered"] for line in lines)
            total += lines[0]["count"]
        return 100 * covered / total

    def last_words(self):
        """What broke and, when there is one, the input that did it."""
        lines = (self.out / "log.txt").read_text(errors="replace").splitlines()
        told = [line for line in lines if re.search(r"broken:|runtime error:|ERROR: ", line)]
        inputs = [line.split()[-1] for line in lines if "Test unit written to" in line]
        again = [f"again: {self.program} {path}" for path in inputs]
        return told[:2] + again or [f"see {self.out}/log.txt"]


def fuzz(targets, seconds):
    row = "{:<20} {:>12} {:>7}  {}"
    print(row.format("target", "executions", "reach", ""), flush=True)
    faults = []
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for target, (well, executions) in zip(targets, pool.map(lambda target: target.fuzz(seconds), targets)):
            reach = target.reach() if well else None
            word = "broken" if not well else "reaches too little" if reach < LEAST_REACH else ""
            print(row.format(target.name, f"{executions:,}", f"{reach:.1f} %" if well else "", word), flush=True)
            if word:
                faults.append((target, word))
    print(f"\nreach: lines reached in the files a target is for, at least {LEAST_REACH} %. {len(faults)} amiss.")
    for target, word in faults:
        print(f"\n{target.name}: {word}", *(target.last_words() if word == "broken" else target.aims), sep="\n  ")
    return not faults


def build(folder, target):
    result = subprocess.run(["cmake", "--build", folder, "--target", target.name], capture_output=True, text=True)
    if result.returncode:
        sys.exit(f"run.py: {target.name} cannot be built:\n{result.stdout}{result.stderr}")


def plant(folder, target, fault):
    """Whether the target finds the fault, and after how many inputs; without it, its corpus must run clean."""
    build(folder, target)
    if not target.run("-runs=0", target.corpus)[0]:
        sys.exit(f"run.py: {target.name} is broken without a fault:\n  " + "\n  ".join(target.last_words()))
    path = pathlib.Path(fault["file"])
    text = path.read_text()
    if text.count(fault["find"]) != 1:
        sys.exit(f"run.py: {target.name}: {path} must have exactly one: {fault['find']}")
    path.write_text(text.replace(fault["find"], fault["replace"]))
    try:
        build(folder, target)
        well, executions = target.run(f"-max_total_time={PLANTED_SECONDS}", target.corpus)
        return not well, executions
    finally:
        path.write_text(text)


def planted(folder, targets):
    faults = json.loads(pathlib.Path("fuzz/planted.json").read_text())
    row = "{:<20} {:<58} {:>12}  {}"
    print(row.format("target", "fault in", "executions", ""), flush=True)
    missed = 0
    for target in targets:
        if target.name not in faults:
            sys.exit(f"run.py: fuzz/planted.json has no fault for {target.name}")
        fault = faults[target.name]
        found, executions = plant(folder, target, fault)
        missed += not found
        print(row.format(target.name, fault["file"], f"{executions:,}", "found" if found else "missed"), flush=True)
    print(f"\n{len(targets) - missed} of {len(targets)} found.")
    return missed == 0


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    folder, what, names = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3:]
    known = sorted(file.stem for file in (folder / "fuzz").glob("*.json"))
    if unknown := set(names) - set(known):
        sys.exit(f"run.py: no target {unknown.pop()}; there are {', '.join(known)}")
    targets = [Target(folder, name) for name in names or known]
    sys.exit(0 if (planted(folder, targets) if what == "--planted" else fuzz(targets, int(what))) else 1)


if __name__ == "__main__":
    main()
