#!/usr/bin/env python3
"""Sums up a run of CTest, with the tests of our test programs one by one.

results.py BUILD

Reads BUILD/junit.xml and, for each shard of a test program, GoogleTest's own
account in BUILD/results. A shard that came to no account died in the test that it
began last; whatever the program lists and no shard ran has failed, too. Prints a
line for each test that failed or was skipped, then "N passed, N failed, N
skipped"; what failed tests printed goes to BUILD/failures.txt.
"""

import collections
import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree

RUN = re.compile(r"(.+)\.(list|alone|shard-\d+)")
BEGUN = re.compile(r"\[ RUN      \] (\S+)")
ENDED = re.compile(r"\[ +(OK|FAILED|SKIPPED) +\] (\S+) \(\d+ ms\)")
VERDICTS = {"OK": "passed", "FAILED": "failed", "SKIPPED": "skipped"}


class Results:
    def __init__(self):
        self.counts = collections.Counter()
        self.printed = []

    def passed(self):
        self.counts["passed"] += 1

    def failed(self, what, printed, count=1):
        self.counts["failed"] += count
        self.printed.append(f"=== {what}\n{printed.strip()}\n")
        print(f"failed: {what}")

    def skipped(self, what, reason):
        self.counts["skipped"] += 1
        print(f"skipped: {what}: {reason}")


def verdict(case):
    """What became of a test, and why it was left out."""
    if case.find("failure") is not None:
        return "failed", ""
    skipped = case.find("skipped")
    if skipped is not None:
        return "skipped", skipped.get("message").rpartition("\n")[2]
    return ("passed", "") if case.get("status") == "run" else ("skipped", "disabled")


def in_account(file):
    """GoogleTest's account of a shard, or of a program's list: (verdict, reason) by test."""
    return {
        f"{suite.get('name')}.{case.get('name')}": verdict(case)
        for suite in ElementTree.parse(file).iter("testsuite")
        for case in suite.iter("testcase")
    }


def in_output(output):
    """The same of a shard that died: from what it printed, with the test it died in."""
    ended = {name: (VERDICTS[how], "") for how, name in ENDED.findall(output)}
    return {name: ended.get(name, ("died", "")) for name in BEGUN.findall(output)}


def printed_by(test, output):
    """What a shard printed while this test ran."""
    begin = output.find(f"[ RUN      ] {test}\n")
    end = output.find(f"[  FAILED  ] {test}", begin)
    return output[begin:] if end < 0 else output[begin : output.find("\n", end)]


def cannot_run(case):
    """Whether a test said by its status that it cannot run here."""
    skipped = case.find("skipped")
    return skipped is not None and skipped.get("message", "").startswith("SKIP_")


def sum_up_test(case, results):
    name, output = case.get("name"), case.findtext("system-out", "").strip()
    if case.get("status") == "run":
        results.passed()
    elif cannot_run(case):
        results.skipped(name, output.rpartition("\n")[2].removeprefix("skipped: "))
    else:
        results.failed(name, output)


def sum_up_run(case, tests, results):
    """A run of a test program: CTest's account of it and the tests in it."""
    name, output = case.get("name"), case.findtext("system-out", "").replace("\r\n", "\n")
    program = RUN.fullmatch(name)[1]
    before = results.counts["failed"]
    for test, (how, reason) in tests.items():
        if how == "failed":
            results.failed(f"{program}.{test}", printed_by(test, output))
        elif how == "died":
            results.failed(f"{program}.{test}: {name} ended in it", printed_by(test, output))
        elif how == "skipped":
            results.skipped(f"{program}.{test}", reason)
        else:
            results.passed()
    if case.get("status") != "run" and results.counts["failed"] == before:
        results.failed(f"{name} ended badly, but not in a test", output[-8192:])


def sum_up_program(program, runs, folder, results):
    for case in filter(cannot_run, runs):
        results.skipped(program, case.findtext("system-out", "").strip())
        return
    listed, known = set(), set()
    for case in runs:
        account = folder / f"{case.get('name')}.xml"
        whole = account.exists()
        if case.get("name").endswith(".list"):
            listed = set(in_account(account)) if whole else listed
            continue
        tests = in_account(account) if whole else in_output(case.findtext("system-out", ""))
        known.update(tests)
        sum_up_run(case, tests, results)
        if not whole and not any(how == "died" for how, _ in tests.values()):
            results.failed(f"{case.get('name')} ended without an account of its tests",
                           case.findtext("system-out", "")[-8192:])
    if not listed:
        results.failed(f"{program} does not list its tests", "")
    missing = sorted(listed - known)
    if missing:
        what = f"{program}: {len(missing)} tests did not run"
        results.failed(what, "\n".join(missing), len(missing))


def sum_up(build):
    results = Results()
    programs = collections.defaultdict(list)
    for case in ElementTree.parse(build / "junit.xml").iter("testcase"):
        if match := RUN.fullmatch(case.get("name")):
            programs[match[1]].append(case)
        else:
            sum_up_test(case, results)
    for program, runs in programs.items():
        sum_up_program(program, runs, build / "results", results)
    (build / "failures.txt").write_text("\n".join(results.printed))
    print("{passed} passed, {failed} failed, {skipped} skipped".format_map(results.counts))


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sum_up(pathlib.Path(sys.argv[1]))
