#!/usr/bin/env python3
"""counts.py BENCH-COUNTS FOLDER: instructions for each call on the hot paths.

Unlike times they are the same in each run on one machine with one compiler. The
profiles stay in the folder, for callgrind_annotate.
"""

import pathlib
import subprocess
import sys

from table import print_table

CALLS = 1000
PATHS = [
    ("forwarded", "forwarded call"),
    ("failed", "forwarded call after a failed load"),
    ("token", "token request"),
]


def count(program, folder, path, side):
    profile = folder / f"{path}.{side}.callgrind"
    subprocess.run(
        ["valgrind", "--tool=callgrind", "--toggle-collect=CountedCalls",
         f"--callgrind-out-file={profile}", program, path, side],
        check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    for line in profile.read_text().splitlines():
        if line.startswith(("summary:", "totals:")):
            return int(line.split()[1]) / CALLS
    sys.exit(f"no count in {profile}")


def main():
    program, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    lines = []
    for path, row in PATHS:
        floor, ours = (count(program, folder, path, side) for side in ("floor", "ours"))
        lines.append((row, f"{floor:,.0f}", f"{ours:,.0f}", f"{ours / floor:.2f}", "", ""))
    print_table(lines)


if __name__ == "__main__":
    main()
