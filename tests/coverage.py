#!/usr/bin/env python3
"""Holds what the tests reached against the lines that they may leave out.

coverage.py BUILD

BUILD is the folder of a build with --coverage in which the tests have run. Each
line of src/ that no test reached has to stand in tests/coverage-exceptions.txt
with its reason, and each line that stands there has to be one that no test
reached. Prints one line for each file with exceptions and, at the end, lines and
branches in figures; fails if list and run differ.
"""

import collections
import json
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
EXCEPTIONS = ROOT / "tests/coverage-exceptions.txt"


def measured(build):
    """What gcovr makes of the counters: its own account of each file."""
    file = build / "coverage.json"
    # A process that ends while its threads call writes counters that do not fit together,
    # of which gcov makes negative ones: such a branch is left out.
    subprocess.run(["gcovr", "--root", ROOT, "--filter", f"{ROOT}/src/",
                    "--gcov-ignore-parse-errors", "--exclude-unreachable-branches",
                    "--exclude-throw-branches", "--json", file, build / "src"],
                   check=True, cwd=build)
    return json.loads(file.read_text())["files"]


def excepted():
    """Counts of (file, line's text), from blocks of a reason and its lines."""
    lines = collections.Counter()
    reason = ""
    for number, text in enumerate(EXCEPTIONS.read_text().splitlines(), 1):
        if not text or text.startswith("#"):
            continue
        if not text.startswith(" "):
            reason = text
            continue
        file, _, line = text.strip().partition(": ")
        if not reason or not line:
            sys.exit(f"{EXCEPTIONS}:{number}: neither a reason nor a file and its line")
        lines[file, line] += 1
    return lines


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    allowed = excepted()
    reached, lines, taken, branches = 0, 0, 0, 0
    missed, where = collections.Counter(), {}
    for file in measured(pathlib.Path(sys.argv[1]).resolve()):
        source = (ROOT / file["file"]).read_text().splitlines()
        for line in file["lines"]:
            if line["gcovr/noncode"]:
                continue
            lines += 1
            reached += line["count"] > 0
            branches += len(line["branches"])
            taken += sum(branch["count"] > 0 for branch in line["branches"])
            if not line["count"]:
                place = (file["file"], source[line["line_number"] - 1].strip())
                missed[place] += 1
                where[place] = line["line_number"]
    if not lines:
        sys.exit("no counters: have the tests been built with --coverage and run?")
    for place in sorted(missed - allowed):
        print(f"no test reaches {place[0]}:{where[place]}: {place[1]}")
    for place in sorted(allowed - missed):
        print(f"a test reaches it, or it is gone: {place[0]}: {place[1]}")
    right = missed == allowed
    print(f"{'passed' if right else 'failed'}: {reached} of {lines} lines of src/"
          f" ({100 * reached / lines:.1f} %), {sum(missed.values())} excepted with their reasons;"
          f" {taken} of {branches} branches ({100 * taken / branches:.1f} %)")
    return 0 if right else 1


if __name__ == "__main__":
    sys.exit(main())
