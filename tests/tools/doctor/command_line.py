"""What the command line promises."""

import os

import rig
import harness
from harness import line_of, said, skip


def WrongUse(test):
    place = test.whole()
    program = test.build.spelled(place.root / "app" / test.build.program)
    for arguments in (
        ["--nonsense"],
        ["something"],
        [""],
        ["--exe"],
        ["--exe", ""],
        ["--exe", program, "--exe", program],
        ["--exe", program + ".not"],
        ["--exe", test.build.spelled(place.root / "app")],
        ["--library", program + ".not"],
        ["--config"],
        ["--search"],
        ["--help", "--nonsense"],
    ):
        ended = place.run(*arguments)
        assert ended.status == 2, arguments
        assert ended.output == "" and ended.errors.startswith("hxsso-doctor: "), arguments
        assert ended.errors.replace("\r", "").count("\n") == 1, ended.errors
        assert "; hxsso-doctor --help tells how to use it" in ended.errors
    for path, why in ((program + ".not", "does not exist"), (test.build.spelled(place.root / "app"), "is not a file")):
        assert place.run("--exe", path).errors.startswith(f"hxsso-doctor: {path} {why}; ")


def Help(test):
    ended = test.whole().run("--help")
    assert ended.status == 0 and ended.errors == ""
    assert ended.lines[0].startswith("hxsso-doctor - "), ended.lines[0]
    assert ended.lines[2].startswith("usage: hxsso-doctor "), ended.lines[2]
    for option in ("--exe", "--library", "--config", "--search", "--timeout"):
        line_of(ended, f"  {option} ", "  ")
    for option in ("--load", "--log", "--verbose", "--json", "--help", "--version"):
        line_of(ended, f"  {option}  ")
    said(ended, "Exit status:", "NO_COLOR", "COLUMNS", "TERM")


def Version(test):
    ended = test.whole().run("--version")
    assert (ended.status, ended.errors) == (0, "")
    assert ended.lines == ["hxsso-doctor 10.22.00.1800"], ended.lines


def ManPage(test):
    """It has the text of --help, each option an item of its own."""
    page = (test.build.folder.parent / "tools/text/hxsso-doctor.1").read_text(encoding="utf-8")
    assert page.startswith('.TH HXSSO-DOCTOR 1 "" "HxSSOServices 10.22.'), page[:60]
    help_text = test.whole().run("--help").output.replace("\r\n", "\n")
    options = [line.split("  ")[1] for line in help_text.split("\n") if line.startswith("  --")]
    assert len(options) == 11, options
    for option in options:
        assert "\n.TP\n.B " + option.replace("-", "\\-") + "\n" in page, option
    headings = [line[4:] for line in page.split("\n") if line.startswith(".SH ")]
    assert headings == ["NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "ENVIRONMENT", "EXIT STATUS"]
    words = [word for word in page.replace("\\-", "-").split() if not word.startswith(".")]
    for line in help_text.replace("usage: ", "").split("\n"):
        if not line.endswith(":"):
            assert all(word in words for word in line.split()), line


def WithoutExeLooksAtItsOwnFolder(test):
    place = test.whole()
    for file in (place.root / "app").iterdir():
        (place.root / "doctor" / file.name).write_bytes(file.read_bytes())
    ended = place.run()
    assert ended.last == rig.NOT_LOADED and ended.status == 0
    line_of(ended, "Program ", "this doctor itself, since no --exe names another: ", test.build.doctor)
    ended = place.run("--verbose")
    line_of(ended, "looked at", "this doctor itself: no --exe names another program")
    line_of(ended, "%ExePath%", test.build.spelled(place.root / "doctor"))
    assert not place.run("--json").document["program"]["isNamed"]
    assert place.diagnose("--json").document["program"]["isNamed"]


def LibraryElsewhere(test):
    place = test.whole()
    elsewhere = place.root / "elsewhere"
    elsewhere.mkdir()
    library = elsewhere / test.build.library
    os.rename(place.root / "app" / test.build.library, library)
    assert place.diagnose().status == 1
    ended = place.diagnose("--verbose", "--library", test.build.spelled(library))
    assert ended.last == rig.NOT_LOADED
    line_of(ended, "%SSOServicesModulePath%", test.build.spelled(elsewhere))


def LibraryByRunPath(test):
    if test.build.is_windows:
        skip("programs for Windows have no run path")
    place = test.whole()
    place.place("app/host", test.build.host)
    (place.root / "lib").mkdir()
    os.rename(place.root / "app" / test.build.library, place.root / "lib" / test.build.library)
    ended = place.run("--verbose", "--exe", str(place.root / "app/host"))
    assert ended.last == rig.NOT_LOADED
    line_of(ended, "%SSOServicesModulePath%", str(place.root / "lib"))


def ConfigOverride(test):
    place = test.whole()
    moved = place.root / "settings.json"
    os.rename(place.root / "app/SSOClient.config", moved)
    assert place.diagnose().status == 1
    ended = place.diagnose("--verbose", "--config", test.build.spelled(moved))
    assert ended.last == rig.NOT_LOADED
    line_of(ended, "named by the program", "settings.json")


def SupportFileSearchPaths(test):
    place = test.whole()
    (place.root / "support").mkdir()
    os.rename(place.root / "app/SSOClient.config", place.root / "support/SSOClient.config")
    ended = place.diagnose("--verbose", "--search", "%Nonsense%;;%ExePath%/../support")
    assert ended.last == rig.NOT_LOADED
    line_of(ended, "    %Nonsense%", "%Nonsense% stays as text")
    line_of(ended, "/app/../support  found")
