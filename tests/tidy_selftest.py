#!/usr/bin/env python3
"""Has scripts/lib/tidy.py look at sources made up here, some of which are not clean."""

import json
import pathlib
import subprocess
import sys
import tempfile

TIDY = pathlib.Path(__file__).resolve().parents[1] / "scripts/lib/tidy.py"

CLEAN = "namespace {\nint Twice(int n) { return 2 * n; }\n} // namespace\nint A(int n) { return Twice(n); }\n"
CLASHES = CLEAN.replace("A(", "B(")
# Of the analyzer's, which follows a main file alone.
NULL_READ = "int C(bool is)\n{\n    int const* p = nullptr;\n    return is ? *p : 0;\n}\n"
POINTER_IS_0 = "int* D() { return 0; }\n"
HEADER = "#pragma once\ninline int* E() { return 0; }\n"

WITH_HEADER = {"a.cpp": '#include "h.h"\n' + CLEAN, "h.h": HEADER.replace("return 0", "return nullptr")}
EXCUSED = {"a.cpp": "int* D() { return 0; } // NOLINT\n"}

# Sources and headers as they come and as they change, and what has to be said of the last.
CASES = {
    "what was clean and stays the same": (
        WITH_HEADER, {}, ["1 passed, 0 failed, 0 skipped"]),
    "a header of what was clean changes": (
        WITH_HEADER, {"h.h": HEADER},
        ["src/h.h:2:26: error: use nullptr", "failed: src/a.cpp", "0 passed, 1 failed, 0 skipped"]),
    "an excuse goes": (
        EXCUSED, {"a.cpp": "int* D() { return 0; }\n"}, ["0 passed, 1 failed, 0 skipped"]),
    "an excuse stays": (EXCUSED, {}, ["1 passed, 0 failed, 0 skipped"]),
    "what was not clean stays so": (
        {"a.cpp": POINTER_IS_0}, {}, ["0 passed, 1 failed, 0 skipped"]),
    "clean": ({"a.cpp": CLEAN, "b.cpp": POINTER_IS_0.replace("0", "nullptr")},
              ["2 passed, 0 failed, 0 skipped"]),
    "two that clash are looked at alone": (
        {"a.cpp": CLEAN, "b.cpp": CLASHES}, ["2 passed, 0 failed, 0 skipped"]),
    "a clash hides nothing": (
        {"a.cpp": CLEAN, "b.cpp": CLASHES, "c.cpp": POINTER_IS_0},
        ["src/c.cpp:1:19: error: use nullptr [modernize-use-nullptr,-warnings-as-errors]",
         "failed: src/c.cpp", "2 passed, 1 failed, 0 skipped"]),
    "each is told by its line": (
        {"a.cpp": CLEAN, "b.cpp": NULL_READ, "c.cpp": POINTER_IS_0, "d.cpp": "int F() { return 1; }\n"},
        ["src/b.cpp:4:17: error: Dereference of null pointer (loaded from variable 'p')",
         "src/c.cpp:1:19: error: use nullptr [modernize-use-nullptr,-warnings-as-errors]",
         "failed: src/b.cpp", "failed: src/c.cpp", "2 passed, 2 failed, 0 skipped"]),
    "what is in a header is everybody's": (
        {"a.cpp": '#include "h.h"\n' + CLEAN, "b.cpp": "int F() { return 1; }\n", "h.h": HEADER},
        ["src/h.h:2:26: error: use nullptr", "failed: src/a.cpp", "failed: src/b.cpp",
         "0 passed, 2 failed, 0 skipped"]),
    "one that does not compile": (
        {"a.cpp": CLEAN, "b.cpp": "int G() { return missing; }\n"},
        ["src/b.cpp:1:18: error: use of undeclared identifier 'missing'",
         "failed: src/b.cpp", "1 passed, 1 failed, 0 skipped"]),
}


def examine(*changes):
    """What is said in the end of sources that change so, all looked at by one memory."""
    with tempfile.TemporaryDirectory() as name:
        root = pathlib.Path(name).resolve()
        (root / "src").mkdir()
        (root / "build").mkdir()
        files = {}
        for change in changes:
            files.update(change)
            said = look(root, change, files)
        return said


def look(root, change, files):
    for file, text in change.items():
        (root / "src" / file).write_text(text)
    # A source that two targets compile is still one.
    commands = [{"directory": str(root), "file": str(root / "src" / file),
                 "command": f"c++ -std=c++17 -Wall -o {target}.o -c {root}/src/{file}"}
                for file in files if file.endswith(".cpp") for target in ("one", "two")]
    (root / "build/compile_commands.json").write_text(json.dumps(commands))
    run = subprocess.run([TIDY, "--clean", "build/clean", "build", "src"], cwd=root, text=True,
                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return run.stdout.replace(f"{root}/", "")


def main():
    wrong = 0
    for name, (*changes, expected) in CASES.items():
        said = examine(*changes)
        missing = [text for text in expected
                   if not any(line.startswith(text) for line in said.splitlines())]
        if missing:
            wrong += 1
            print(f"{name}: not said: {missing}, but:\n{said}")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
