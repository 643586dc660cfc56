#!/usr/bin/env python3
"""cases.py run CASE FOLDER [EMULATOR...]     what the doctor finds, against expected.txt
cases.py --update FOLDER [EMULATOR...]     writes what is expected in all cases

base/ is a whole installation, and each folder below cases/ what is different in another
one. Files in a folder of their own go there as they are, placeholders filled in;
case.json tells the rest, which rig.py does in this order:

    system             the only system on which this happens
    copy               file: one of base/ that it is a copy of
    remove             files of base/ that are not there
    rename             old name: new name
    folders            that are made, empty
    empty, files       files that are made; with this content
    place              file: module of the build
    windowsFolder      file in a folder of its own below one of Windows': module of the build
    cut                file: number of bytes that are left of it
    patch              file: [bytes, as many in their place], everywhere in it
    otherArchitecture  modules that become such for another machine
    edit               file: [[text, the text in its place], …]
    encode             file: its encoding
    deny               files and folders that nobody may read
    location           what the server application's installation has left
    script             for the recording plugin
    environment        of the doctor
    path               folders that the variable PATH names, on Windows
    exe                the program that is looked at; "" starts the doctor without --exe
    arguments          of the doctor

expected.txt has the problems, what to do about each, and the last line; where the
systems differ, expected.windows.txt does so for Windows."""

import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True
import rig  # noqa: E402

CASES = pathlib.Path(__file__).resolve().parent / "cases"


def all_cases():
    return sorted(folder for folder in CASES.iterdir() if folder.is_dir())


def expected_file(case, is_windows):
    other = case / "expected.windows.txt"
    return other if is_windows and other.exists() else case / "expected.txt"


def diagnosed(case, build, tell):
    """What `tell` makes of the installation and of what the doctor finds in it."""
    # In the build, for the links: these need one file system.
    with tempfile.TemporaryDirectory(dir=build.folder.parent, prefix="doctor-") as directory:
        with rig.Installation(build, pathlib.Path(directory) / "place") as installation:
            arguments = installation.set_up(case)
            ended = installation.diagnose(*arguments)
            print(ended.output, ended.errors, f"exit status {ended.status}", sep="")
            assert ended.errors == "", "something on the standard error"
            works = ended.last in (rig.CAN_WORK, rig.NOT_LOADED)
            assert ended.status == (0 if works else 1), ended.status
            # The other report's verdict is the same code: compared where a start costs little.
            if not build.starts_slowly:
                verdict = installation.diagnose("--json", *arguments).document["verdict"]
                assert verdict["line"] == ended.last
                assert verdict["pluginWasLoaded"] or ended.last != rig.CAN_WORK
            return tell(installation, "\n".join(ended.problems))


def update(case, is_windows, found):
    file, other = case / "expected.txt", case / "expected.windows.txt"
    if not is_windows:
        file.write_text(found, encoding="utf-8")
    # There the library's file has the library's name.
    elif not file.exists() or file.read_text(encoding="utf-8").replace(" name}", "}") != found:
        other.write_text(found, encoding="utf-8")
    else:
        other.unlink(missing_ok=True)


def main():
    if sys.argv[1] == "run":
        case = CASES / sys.argv[2]
        build = rig.Build(sys.argv[3], sys.argv[4:])

        def compare(installation, found):
            file = expected_file(case, build.is_windows)
            expected = installation.filled(file.read_text(encoding="utf-8").strip())
            assert found == expected, expected

        diagnosed(case, build, compare)
    elif sys.argv[1] == "--update":
        build = rig.Build(sys.argv[2], sys.argv[3:])
        for case in all_cases():
            try:
                found = diagnosed(case, build, rig.Installation.unfilled)
            except SystemExit:
                continue  # not on this system
            update(case, build.is_windows, found + "\n")
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main()
