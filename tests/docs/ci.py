#!/usr/bin/env python3
"""Whether .github/workflows/ci.yml and vcpkg.json name what there is, which no run here shows.

Looks at each command of the workflow: programs of the project exist and can be run, and
presets are presets of their kind. vcpkg.json pins what it installs.
"""

import json
import os
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
KINDS = {"cmake --preset": "configurePresets", "cmake --build --preset": "buildPresets",
         "ctest --preset": "testPresets"}


def wrong_commands(commands, presets):
    for command in commands:
        used, _, name = command.rpartition(" ")
        if used in KINDS and name not in {preset["name"] for preset in presets[KINDS[used]]}:
            yield f"{command}: there is no such preset"
        program = command.split()[0]
        if program.startswith((".", "scripts/")) and not os.access(ROOT / program, os.X_OK):
            yield f"{command}: there is no such program"


def main():
    workflow = (ROOT / ".github/workflows/ci.yml").read_text(encoding="utf-8")
    presets = json.loads((ROOT / "CMakePresets.json").read_text(encoding="utf-8"))
    manifest = json.loads((ROOT / "vcpkg.json").read_text(encoding="utf-8"))
    commands = re.findall(r"^ +- run: (.*)$", workflow, re.M)
    wrong = list(wrong_commands(commands, presets))
    wrong += [f"ci.yml does not run {command}"
              for command in (".ci/run", *(f"{used} msvc" for used in KINDS))
              if command not in commands]
    if not re.fullmatch("[0-9a-f]{40}", manifest.get("builtin-baseline", "")):
        wrong.append("vcpkg.json has no baseline")
    if not list(wrong_commands(["cmake --preset none", ".ci/none"], presets)):
        wrong.append("this test finds nothing")
    for text in wrong:
        print(f"failed: {text}")
    print(f"{len(commands)} commands")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
