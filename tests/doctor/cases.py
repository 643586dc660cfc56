#!/usr/bin/env python3
"""cases.py run CASE FOLDER [EMULATOR...]     the doctor's last line, against expected.txt
cases.py page                              the table in docs/troubleshooting.md, likewise
cases.py --update FOLDER [EMULATOR...]     writes expected.txt of all cases, and the table

Each folder below cases/ is an installation. case.json says what is put into it from
the build (FOLDER) and how the doctor is started; everything in a folder of its own
goes there as it is, placeholders filled in."""

import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True
import rig  # noqa: E402

CASES = pathlib.Path(__file__).resolve().parent / "cases"
PAGE = CASES.parents[2] / "docs" / "troubleshooting.md"

DECORATED = (
    "?GetSSOClientFactory@@YA?AV?$shared_ptr@VISSOClientFactory@SSOServices@Halvorix@@@std@@XZ"
)

BEGIN = "<!-- installations: written by tests/doctor/cases.py, do not edit -->\n"
END = "<!-- end of the installations -->\n"


def all_cases():
    return sorted(folder for folder in CASES.iterdir() if folder.is_dir())


def diagnosed(case, build, tell):
    """What `tell` makes of the installation and the doctor's last line on it."""
    # In the build, for the links: these need one file system.
    with tempfile.TemporaryDirectory(dir=build.folder.parent, prefix="doctor-") as directory:
        installation = rig.Installation(build, pathlib.Path(directory) / "place")
        arguments = installation.set_up(case)
        ended = installation.diagnose(*arguments)
        print(ended.output, ended.errors, f"exit status {ended.status}", sep="")
        last = ended.last
        assert ended.errors == "", "something on the standard error"
        assert ended.status == (0 if last == rig.CAN_WORK else 1), ended.status
        document = installation.diagnose("--json", *arguments).document
        assert document["verdict"]["line"] == last
        return tell(installation, last)


def table():
    text = "\n| installation | last line |\n|---|---|\n"
    for case in all_cases():
        last = (case / "expected.txt").read_text().strip()
        # As on the system that the product is for.
        for name, value in (
            ("{root}", "…"),
            ("{module}", ".dll"),
            ("{library}", "HxSSOServices.dll"),
            ("{library name}", "HxSSOServices.dll"),
            ("{program}", "Program.exe"),
            ("{decorated}", DECORATED),
            ("{portion}", "section"),
            ("|", "\\|"),
        ):
            last = last.replace(name, value)
        text += f"| {case.name.replace('-', ' ')} | ``{last}`` |\n"
    return text + "\n"


def page():
    before, rest = PAGE.read_text().split(BEGIN)
    return before + BEGIN + table() + END + rest.split(END)[1]


def main():
    if sys.argv[1] == "run":
        case = CASES / sys.argv[2]
        expected = (case / "expected.txt").read_text().strip()

        def compare(installation, last):
            assert last == installation.filled(expected), installation.filled(expected)

        diagnosed(case, rig.Build(sys.argv[3], sys.argv[4:]), compare)
    elif sys.argv[1] == "page":
        assert PAGE.read_text() == page(), "cases.py --update writes the page anew"
    elif sys.argv[1] == "--update":
        build = rig.Build(sys.argv[2], sys.argv[3:])
        for case in all_cases():
            (case / "expected.txt").write_text(diagnosed(case, build, rig.Installation.unfilled) + "\n")
        PAGE.write_text(page())
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main()
