#!/usr/bin/env python3
"""The tests of hxsso-doctor: those of the scripts beside this one, and the installations in
cases/, each as "script.Test".

    tests.py RUN ACCOUNT SCRIPTS FOLDER [EMULATOR...]   all of some scripts, as shards.py tells
    tests.py script.Test FOLDER [EMULATOR...]           one
    tests.py --update FOLDER [EMULATOR...]              writes what is expected of all cases

FOLDER has the programs and modules of a build. SCRIPTS are names with commas between them."""

import contextlib
import functools
import importlib
import inspect
import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True
import rig  # noqa: E402
import cases  # noqa: E402
import harness  # noqa: E402
import shards  # noqa: E402


def tests_of(script):
    if script == "cases":
        return {f"cases.{case.name}": functools.partial(cases.compare, case)
                for case in cases.all_cases()}
    module = importlib.import_module(script)
    return {f"{script}.{name}": function
            for name, function in inspect.getmembers(module, inspect.isfunction)
            if name[0].isupper() and function.__module__ == script}


def changes_the_registry(build, name):
    """What stands in Wine's registry is seen by all."""
    return build.is_windows and name.startswith(("cases.location-", "facts.LocationOfTheRegistry"))


def main(run, *arguments):
    one = "." in run
    folder, *emulator = arguments if one or run == "--update" else arguments[2:]
    build = rig.Build(folder, emulator)
    with contextlib.ExitStack() as stack:
        # In the build, for the links: these need one file system.
        directory = stack.enter_context(
            tempfile.TemporaryDirectory(dir=build.folder.parent, prefix="doctor-"))
        row = rig.Row(build, pathlib.Path(directory))
        stack.callback(row.close)
        if run == "--update":
            return harness.call(cases.update_all, build, row)
        scripts = [run.partition(".")[0]] if one else arguments[1].split(",")
        tests = {name: functools.partial(harness.call, test, build, row)
                 for script in scripts for name, test in tests_of(script).items()}
        if one:
            return shards.run_one(run, tests[run])[0] == "FAILED"
        return shards.run_tests(run, arguments[0], tests,
                                functools.partial(changes_the_registry, build))


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
