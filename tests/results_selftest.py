#!/usr/bin/env python3
"""Sums up runs of CTest that are made up here, with what can go wrong in one."""

import contextlib
import io
import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import results  # noqa: E402

LIST = """<testsuites><testsuite name="Topic"><testcase name="A"/><testcase name="B"/>
    <testcase name="C"/></testsuite></testsuites>"""
A_PASSED = '<testcase name="A" status="run" result="completed"/>'
B_FAILED = '<testcase name="B" status="run" result="completed"><failure message="no"/></testcase>'
B_SKIPPED = '<testcase name="B" status="run" result="skipped"><skipped message="X.cpp:7\nnot here"/></testcase>'
C_DISABLED = '<testcase name="C" status="notrun" result="suppressed"/>'
SAID = """[ RUN      ] Topic.A
[       OK ] Topic.A (1 ms)
[ RUN      ] Topic.B
X.cpp:7: Failure
[  FAILED  ] Topic.B (0 ms)
"""


def run(name, status="run", output="", inside=""):
    return (f'<testcase name="{name}" status="{status}">{inside}<system-out>{output}</system-out></testcase>')


def account(*tests):
    return f'<testsuites><testsuite name="Topic">{"".join(tests)}</testsuite></testsuites>'


DEAD = '<failure message=""/>'
NOT_HERE = '<skipped message="SKIP_RETURN_CODE=77"/>'

# What happens: CTest's account, the accounts of the runs, the lines that are expected, and
# a piece of what failed tests printed.
CASES = {
    "all is well": (
        run("p.list") + run("p.shard-1") + run("other.test"),
        {"p.list": LIST, "p.shard-1": account(A_PASSED, B_SKIPPED, C_DISABLED)},
        ["skipped: p.Topic.B: not here", "skipped: p.Topic.C: disabled", "2 passed, 0 failed, 2 skipped"], ""),
    "a test fails": (
        run("p.list") + run("p.shard-1", "fail", SAID, DEAD),
        {"p.list": LIST, "p.shard-1": account(A_PASSED, B_FAILED, C_DISABLED)},
        ["failed: p.Topic.B", "skipped: p.Topic.C: disabled", "1 passed, 1 failed, 1 skipped"],
        "=== p.Topic.B\n[ RUN      ] Topic.B\nX.cpp:7: Failure\n[  FAILED  ] Topic.B (0 ms)\n"),
    "a shard dies in a test": (
        run("p.list") + run("p.shard-1", "fail", "[ RUN      ] Topic.A\r\n[       OK ] Topic.A (1 ms)\r\n"
                            "[ RUN      ] Topic.B\r\nlast words", DEAD),
        {"p.list": LIST},
        ["failed: p.Topic.B: p.shard-1 ended in it", "failed: p: 1 tests did not run",
         "1 passed, 2 failed, 0 skipped"], "last words"),
    "a shard ends at once, with success": (
        run("p.list") + run("p.shard-1") + run("p.shard-2"),
        {"p.list": LIST, "p.shard-2": account(A_PASSED)},
        ["failed: p.shard-1 ended without an account of its tests", "failed: p: 2 tests did not run",
         "1 passed, 3 failed, 0 skipped"], "Topic.B\nTopic.C"),
    "a shard dies after its tests": (
        run("p.list") + run("p.shard-1", "fail", "leaked", DEAD),
        {"p.list": LIST, "p.shard-1": account(A_PASSED, B_SKIPPED, C_DISABLED)},
        ["skipped: p.Topic.B: not here", "skipped: p.Topic.C: disabled",
         "failed: p.shard-1 ended badly, but not in a test", "1 passed, 1 failed, 2 skipped"], "leaked"),
    "a program that does not list its tests": (
        run("p.list", "fail") + run("p.shard-1"), {"p.shard-1": account(A_PASSED)},
        ["failed: p does not list its tests", "1 passed, 1 failed, 0 skipped"], ""),
    "a program that cannot run here": (
        run("p.list", "notrun", "no Wine", NOT_HERE) + run("p.shard-1", "notrun", "no Wine", NOT_HERE), {},
        ["skipped: p: no Wine", "0 passed, 0 failed, 1 skipped"], ""),
    "tests that are no programs of ours": (
        run("doctor.a", "fail", "wrong", DEAD)
        + run("doctor.b", "notrun", "words\nwhy", NOT_HERE)
        + run("doctor.c", "notrun", "", '<skipped message="Unable to find executable"/>'), {},
        ["failed: doctor.a", "skipped: doctor.b: why", "failed: doctor.c", "0 passed, 2 failed, 1 skipped"],
        "=== doctor.a\nwrong\n"),
}


def main():
    wrong = 0
    for what, (junit, accounts, expected, printed) in CASES.items():
        with tempfile.TemporaryDirectory() as folder:
            build = pathlib.Path(folder)
            (build / "results").mkdir()
            (build / "junit.xml").write_text(f"<testsuite>{junit}</testsuite>")
            for name, text in accounts.items():
                (build / "results" / f"{name}.xml").write_text(text.replace("\n", "&#x0A;"))
            said = io.StringIO()
            with contextlib.redirect_stdout(said):
                results.sum_up(build)
            failures = (build / "failures.txt").read_text()
        if said.getvalue().splitlines() != expected or printed not in failures:
            wrong += 1
            print(f"{what}:\n{said.getvalue()}{failures}")
    print(f"{len(CASES)} runs, {wrong} summed up wrongly")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
