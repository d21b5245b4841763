"""Whether the table of capabilities calls every function that the library exports: exports.py NM LIBRARY SOURCES"""
import pathlib
import re
import subprocess
import sys

nm, library, *sources = sys.argv[1:]
# Members that only other members call, but that their class exports with the rest.
helpers = {"align", "covers", "initSamplePts", "lagrange", "lsqCore", "lsqRobust", "position", "renameRoots",
           "rootOfNumber"}

symbols = subprocess.run([nm, "-DC", "--defined-only", library], capture_output=True, text=True, check=True).stdout
exported = set(re.findall(r" T (?:Mirel)?Algorithms::(?:\w+::)*(\w+)(?:\[\w+:\w+\])?\(", symbols)) - helpers
called = set(re.findall(r"\w+", "".join(pathlib.Path(source).read_text() for source in sources)))
missing = exported - called
print(len(exported), "exported names")
if missing or len(exported) < 60:
    sys.exit(f"called by no capability: {', '.join(sorted(missing))}")
