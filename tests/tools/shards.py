"""Tests written in Python, run as those of GoogleTest are: in a few processes, since each
takes longer to start than most tests to run.

    SCRIPT list ACCOUNT ...            names all tests
    SCRIPT shard-1-of-2 ACCOUNT ...    runs every second one, from the first on
    SCRIPT alone ACCOUNT ...           runs those that nothing else may run beside
    SCRIPT TEST...                     runs these by themselves

tests/results.py reads the account of each run. What follows is the script's."""

import contextlib
import functools
import io
import os
import pathlib
import re
import shutil
import sys
import tempfile
import time
import traceback
import xml.etree.ElementTree as ElementTree

CANNOT_RUN = 77


class Skipped(Exception):
    """A test that cannot run here, and why."""


class CannotRun(Exception):
    """The programs of this build do not run here at all."""


def skip(reason):
    raise Skipped(reason)


def link(source, target):
    """A file of the build: a link to it, since some have many megabytes."""
    target.parent.mkdir(parents=True, exist_ok=True)
    target.unlink(missing_ok=True)
    try:
        os.link(source.resolve(), target)
    except OSError:
        shutil.copy(source, target)


def apart(test):
    """A test in a process of its own: of what children take the system tells a process the sum
    and the peak of all."""

    @functools.wraps(test)
    def forked(*arguments):
        if not hasattr(os, "fork"):
            test(*arguments)  # where there is nothing to be told of children
            return
        with tempfile.TemporaryFile("w+", encoding="utf-8") as printed:
            child = os.fork()
            if child == 0:
                how = 1
                try:
                    with contextlib.redirect_stdout(printed):
                        test(*arguments)
                    how = 0
                except Skipped as reason:
                    printed.write(str(reason))
                    how = CANNOT_RUN
                except (Exception, SystemExit):  # pylint: disable=broad-except
                    traceback.print_exc(file=printed)
                printed.flush()
                os._exit(how)  # pylint: disable=protected-access
            how = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
            printed.seek(0)
            if how == CANNOT_RUN:
                skip(printed.read())
            print(printed.read())
            assert how == 0, "in a process of its own, see above"

    return forked


def run_one(name, test):
    """How it ended, why if it was skipped, and its seconds. What it prints is shown if it
    failed."""
    print(f"[ RUN      ] {name}", flush=True)
    begun = time.monotonic()
    printed = io.StringIO()
    how, reason = "      OK", ""
    try:
        with contextlib.redirect_stdout(printed):
            test()
    except Skipped as skipped:
        how, reason = " SKIPPED", str(skipped)
    except CannotRun:
        raise
    except (Exception, SystemExit):  # pylint: disable=broad-except
        how = " FAILED "
        print(printed.getvalue(), traceback.format_exc(), sep="")
    seconds = time.monotonic() - begun
    print(f"[ {how} ] {name} ({seconds * 1000:.0f} ms)", flush=True)
    return how.strip(), reason, seconds


def write_account(file, outcomes):
    suites = ElementTree.Element("testsuites")
    for name, (how, reason, seconds) in outcomes.items():
        suite, _, test = name.partition(".")
        found = suites.find(f"testsuite[@name='{suite}']")
        if found is None:
            found = ElementTree.SubElement(suites, "testsuite", name=suite)
        case = ElementTree.SubElement(found, "testcase", name=test, status="run",
                                      time=f"{seconds:.3f}")
        if how == "FAILED":
            ElementTree.SubElement(case, "failure", message="")
        if how == "SKIPPED":
            ElementTree.SubElement(case, "skipped", message=reason)
    pathlib.Path(file).parent.mkdir(exist_ok=True)
    ElementTree.ElementTree(suites).write(file)


def chosen(run, names, is_alone):
    """The tests of a run."""
    if run == "list":
        return names
    if run == "alone":
        return [name for name in names if is_alone(name)]
    index, count = map(int, re.fullmatch(r"shard-(\d+)-of-(\d+)", run).groups())
    return [name for name in names if not is_alone(name)][index - 1 :: count]


def run_tests(run, account, tests, is_alone=lambda name: False):
    """Tests by name; the exit status."""
    names = chosen(run, list(tests), is_alone)
    if run == "list":
        outcomes = {name: ("OK", "", 0) for name in names}
    else:
        try:
            outcomes = {name: run_one(name, tests[name]) for name in names}
        except CannotRun as reason:
            print(reason)
            return CANNOT_RUN
    write_account(account, outcomes)
    return 1 if any(how == "FAILED" for how, *_ in outcomes.values()) else 0
