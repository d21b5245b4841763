#!/usr/bin/env python3
"""Plants faults in the library, one at a time, and tells which test finds each.

A fault changes one token: a comparison, a border, a number, an operator, an order of arguments; or drops a check.
COUNT of them (50) are drawn by SEED (1), each from a file of MirelAlgorithms/ by its share of the lines. They are
planted in a copy of the project, build/faults/tree. The folder's own test program runs first, then the other programs
of the library, then the tool's. A fault that does not compile, leaves every program's code as it is, or stands in
equivalent.txt is replaced by another draw. Exit status 1 when more than one of 25 survives.
"""
import argparse
import filecmp
import hashlib
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
TREE = ROOT / "build/faults/tree"
MEMORY = 8 << 30  # of a test program, bytes; a fault may ask for any amount
KINDS = {
    "comparison": [(r" (<=?|>=?|==|!=) ", {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="})],
    "direction": [(r" (<=?|>=?) ", {"<": ">", "<=": ">=", ">": "<", ">=": "<="})],
    "logic": [(r" (&&|\|\|) ", {"&&": "||", "||": "&&"})],
    "negation": [(r"[( ](!)(?=[\w(*])", {"!": ""})],
    "arithmetic": [(r" ([-+*/]) ", {"+": "-", "-": "+", "*": "/", "/": "*"}), (r" ([-+])= ", {"+": "-", "-": "+"}),
                   (r" (<<|>>) ", {"<<": ">>", ">>": "<<"})],
    "extremum": [(r"\b(min|max)\)?\(", {"min": "max", "max": "min"}),
                 (r"\b(floor|ceil)\(", {"floor": "ceil", "ceil": "floor"})],
    "truth": [(r"\b(true|false)\b", {"true": "false", "false": "true"})],
    "number": [(r"(?<![\w.<'])(\d+)(?=\.\d|[^\w.'>\"])(?!\];)", None)],
    "arguments": [(r"\b(?!min|max|hypot|swap|abs|isEqual)\w+\(([\w.]+, [\w.]+)[,)]", None)],
    "check": [],
}
NOT_CODE = re.compile(r"//[^\n]*|/\*.*?\*/|L?\"(?:\\.|[^\"\\\n])*\"|'(?:\\.|[^'\\\n])+'|^ *#(?:[^\n]*\\\n)*[^\n]*",
                      re.M | re.S)
WITHOUT_EFFECT = re.compile(r"reserve\w*\(|prefetch|static_assert|MIREL_LOG|^ *(template|using|namespace)\b|alignas")
CHECK = re.compile(r"^ *(if \(|require\w*\()", re.M)
LEAVING = re.compile(r"\s*(return\b|continue;|break;|throw\b|refuse\w*\()[^;{}]*;")


def blanked(text):
    """The text with spaces for all that is no code, so that places stay."""
    text = NOT_CODE.sub(lambda match: re.sub(r"[^\n]", " ", match[0]), text)
    return "".join(re.sub(r"\S", " ", line) if WITHOUT_EFFECT.search(line) else line for line in text.splitlines(True))


def closing(code, start):
    """Where the parenthesis ends that opens at `start`."""
    depth = 0
    for i in range(start, len(code)):
        depth += {"(": 1, ")": -1}.get(code[i], 0)
        if depth == 0:
            return i + 1
    return len(code)


def checks(code):
    """Statements that refuse or leave early, on their own."""
    for match in CHECK.finditer(code):
        end = closing(code, match.end() - 1)
        leaving = LEAVING.match(code, end) if match[1] == "if (" else re.compile(";").match(code, end)
        if leaving and not re.match(r"\s*else\b", code[leaving.end():]):
            yield match.start(1), leaving.end(), ";"


def changed(kind, token, rng):
    if kind == "arguments":
        first, second = token.split(", ")
        return f"{second}, {first}"
    return str(int(token) + (rng.choice((-1, 1)) if int(token) else 1))


def sites(text, rng):
    """(kind, start, end, replacement) of every fault that the text can get."""
    code = blanked(text)
    found = [("check", *site) for site in checks(code)]
    for kind, patterns in KINDS.items():
        for pattern, replacements in patterns:
            for match in re.finditer(pattern, code):
                new = replacements[match[1]] if replacements else changed(kind, match[1], rng)
                line = code[code.rfind("\n", 0, match.start()) + 1:match.start()]
                trivial = kind == "direction" and line.lstrip().startswith("for (")  # a loop that does nothing
                if new != match[1] and not trivial:
                    found.append((kind, match.start(1), match.end(1), new))
    return found


def copy_project():
    """What has changed gets a new time stamp, and so does what an interrupted run left faulty."""
    names = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT,
                           capture_output=True, text=True, check=True).stdout.split("\0")
    for name in filter(None, names):
        source, target = ROOT / name, TREE / name
        if source.is_file() and not (target.exists() and filecmp.cmp(source, target, shallow=False)):
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)


class Suite:
    """The copy's test programs: builds them, runs them, and knows what they were without a fault."""

    def __init__(self, with_tool):
        self.build = TREE / "build/release"
        subprocess.run(["cmake", "-S", TREE, "-B", self.build, "-G", "Ninja", "-DCMAKE_CXX_COMPILER_LAUNCHER=ccache",
                        "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST", f"-DMIREL_BUILD_TOOL={int(with_tool)}"],
                       stdout=subprocess.DEVNULL, check=True)
        targets = subprocess.run(["ninja", "-C", self.build, "-t", "targets", "all"], capture_output=True, text=True,
                                 check=True)
        self.programs = sorted(set(re.findall(r"^tests/\w+/(test_\w+): ", targets.stdout, re.M)))
        if not self.make(self.programs):
            sys.exit(f"{TREE} does not build")
        self.seconds, self.clean = {}, {}
        for program in self.programs:
            begin = time.monotonic()
            self.clean[program] = self.digest(program)
            finder = self.run(program, 1800)
            if finder:
                sys.exit(f"{finder} fails without a fault")
            self.seconds[program] = time.monotonic() - begin

    def make(self, programs):
        targets = [*programs, "MirelAlgorithms"]
        return subprocess.run(["ninja", "-C", self.build, *targets], capture_output=True).returncode == 0

    def path(self, program):
        return next(self.build.glob(f"tests/*/{program}"))

    def digest(self, program):
        """Of the code that the program's run depends on: some run the library, test_mirel the tool."""
        parts = [self.path(program), self.build / "MirelAlgorithms/libMirelAlgorithms.so"]
        parts += [self.build / "apps/mirel/mirel"] if program == "test_mirel" else []
        return [hashlib.sha256(part.read_bytes()).digest() for part in parts if part.exists()]

    def run(self, program, limit):
        """Name of the test that fails, or None."""
        log = self.build / f"{program}.log"
        with log.open("wb") as output:
            process = subprocess.Popen([self.path(program), "--gtest_fail_fast", "--gtest_color=no"], stdout=output,
                                       stderr=output, cwd=self.path(program).parent, start_new_session=True,
                                       preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY)))
            try:
                status = process.wait(limit)
            except subprocess.TimeoutExpired:
                status = "hangs"
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()
        if status == 0:
            return None
        text = log.read_text(errors="replace")
        failed = re.findall(r"^\[  FAILED  \] (\w[\w/.]*)", text, re.M)
        last = re.findall(r"^\[ RUN      \] (.*)", text, re.M)
        how = {1: "", "hangs": " (hangs)"}.get(status, f" (status {status})")
        return f"{program.removeprefix('test_')}/{(failed or last[-1:] or ['start'])[0]}{how}"

    def finder(self, file):
        """The test that finds the fault in `file`, "" when none does, None when there is no fault to be found."""
        def order(program):
            return 0 if program.startswith(f"test_{file.parts[1]}") else 2 if program == "test_mirel" else 1

        differs = False
        for rank in range(3):
            group = [program for program in self.programs if order(program) == rank]
            if group and not self.make(group):
                return None
            for program in group:
                if self.digest(program) == self.clean[program]:
                    continue
                differs = True
                test = self.run(program, 20 + 10 * self.seconds[program])
                if test:
                    return test
        return "" if differs else None


def line_of(text, place):
    start = text.rfind("\n", 0, place) + 1
    end = text.find("\n", place)
    return text[start:end].strip()


def draw(texts, kinds, rng):
    """A file, its text with a fault, and how the fault reads."""
    files = list(texts)
    file = rng.choices(files, [texts[name].count("\n") for name in files])[0]
    text = texts[file]
    found = [site for site in sites(text, rng) if site[0] in kinds]
    if not found:
        return draw(texts, kinds, rng)
    kind = rng.choice(sorted({site[0] for site in found}))
    _, start, end, new = rng.choice([site for site in found if site[0] == kind])
    gap = "\n" * text.count("\n", start, end)  # numbers of lines stay
    faulty = text[:start] + new + gap + text[end:]
    after = "(dropped)" if kind == "check" else line_of(faulty, start)
    return file, faulty, f"{file}:{text.count(chr(10), 0, start) + 1}: {line_of(text, start)}  ->  {after}"


def equivalents():
    """Faults without an effect: "file: before  ->  after" and, on the line below, why."""
    lines = pathlib.Path(__file__).with_name("equivalent.txt").read_text().splitlines()
    return {line for line in lines if "  ->  " in line}


def plant(suite, texts, kinds, known, rng):
    """Plants faults until one counts: how it reads, and which test finds it."""
    while True:
        file, faulty, fault = draw(texts, kinds, rng)
        if re.sub(r":\d+:", ":", fault, count=1) in known:
            continue
        (TREE / file).write_text(faulty)
        try:
            finder = suite.finder(file)
        finally:
            (TREE / file).write_text(texts[file])
        if finder is not None:
            return fault, finder


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("count", type=int, nargs="?", default=50)
    parser.add_argument("seed", type=int, nargs="?", default=1)
    parser.add_argument("--from", type=int, default=1, metavar="NUMBER", dest="first", help="go on with this fault")
    parser.add_argument("--kinds", nargs="+", default=list(KINDS), choices=KINDS, help="only faults of these kinds")
    parser.add_argument("--library", action="store_true", help="leave out the tool's tests")
    options = parser.parse_args()
    os.environ["CCACHE_BASEDIR"] = str(TREE)
    copy_project()
    suite = Suite(not options.library)
    sources = sorted(path for path in (TREE / "MirelAlgorithms").rglob("*") if path.suffix in (".cpp", ".h"))
    texts = {path.relative_to(TREE): path.read_text() for path in sources}
    known, survivors, numbers = equivalents(), [], range(options.first, options.count + 1)
    for number in numbers:
        fault, finder = plant(suite, texts, options.kinds, known, random.Random(f"{options.seed} {number}"))
        if not finder:
            survivors.append(number)
        print(f"{number:3} {fault}\n      {'found by ' + finder if finder else 'SURVIVED'}", flush=True)
    print(f"{len(numbers) - len(survivors)} of {len(numbers)} faults found; survivors: {survivors or 'none'}")
    sys.exit(25 * len(survivors) > len(numbers))


main()
