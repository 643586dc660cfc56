"""What the doctor finds in each installation of cases/, against its expected.txt.

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

import functools
import json
import pathlib

import rig

CASES = pathlib.Path(__file__).resolve().parent / "cases"
SCHEMA = pathlib.Path(__file__).resolve().parents[3] / "docs/schemas/doctor.schema.json"


@functools.lru_cache(maxsize=None)
def validator():
    """Of documents; none where the package for it is not installed."""
    try:
        import jsonschema
    except ImportError:
        return None
    schema = json.loads(SCHEMA.read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    return jsonschema.Draft202012Validator(schema)


def diagnosed(place, tell, with_document=True):
    """What `tell` makes of an installation and of what the doctor finds in it."""
    # By itself where its folder or its environment matters.
    in_a_row = place.program and not place.variables
    for_program = functools.partial(place.in_a_row, "--exe", place.program)
    run = for_program if in_a_row else place.diagnose
    ended = run(*place.arguments)
    print(ended.output, ended.errors, f"exit status {ended.status}", sep="")
    assert ended.errors == "", "something on the standard error"
    works = ended.last in (rig.CAN_WORK, rig.NOT_LOADED)
    assert ended.status == (0 if works else 1), ended.status
    if with_document:
        document = run("--json", *place.arguments).document
        for error in validator().iter_errors(document) if validator() else ():
            raise AssertionError(f"{error.json_path}: {error.message}")
        verdict = document["verdict"]
        assert verdict["line"] == ended.last
        assert verdict["pluginWasLoaded"] or ended.last != rig.CAN_WORK
    return tell(place, "\n".join(ended.problems))


def all_cases():
    return sorted(folder for folder in CASES.iterdir() if folder.is_dir())


def expected_file(case, is_windows):
    other = case / "expected.windows.txt"
    return other if is_windows and other.exists() else case / "expected.txt"


def compare(case, test):
    def told(place, found):
        file = expected_file(case, test.build.is_windows)
        expected = place.filled(file.read_text(encoding="utf-8").strip())
        assert found == expected, expected

    # The other report is the same code: where files are slow too, of one case in twelve.
    with_document = not test.build.starts_slowly or case in all_cases()[::12]
    with test.installation(case.name) as place:
        diagnosed(place, told, with_document)


def update(case, is_windows, found):
    file, other = case / "expected.txt", case / "expected.windows.txt"
    if not is_windows:
        file.write_text(found, encoding="utf-8")
    # There the library's file has the library's name.
    elif not file.exists() or file.read_text(encoding="utf-8").replace(" name}", "}") != found:
        other.write_text(found, encoding="utf-8")
    else:
        other.unlink(missing_ok=True)


def update_all(test):
    for case in all_cases():
        try:
            with test.installation(case.name) as place:
                found = diagnosed(place, rig.Installation.unfilled)
        except rig.Skipped:
            continue  # not on this system
        update(case, test.build.is_windows, found + "\n")
