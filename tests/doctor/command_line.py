#!/usr/bin/env python3
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
        assert "usage: hxsso-doctor" in ended.errors


def Help(test):
    ended = test.whole().run("--help")
    assert ended.status == 0 and ended.errors == "" and ended.output.startswith("usage:")
    said(ended, "--exe", "--library", "--config", "--search", "--load", "--json", "Exit status")
    said(ended, "--log", "Executes the plugin")


def WithoutExeLooksAtItsOwnFolder(test):
    place = test.whole()
    for file in (place.root / "app").iterdir():
        (place.root / "doctor" / file.name).write_bytes(file.read_bytes())
    ended = place.run()
    assert ended.last == rig.CAN_WORK and ended.status == 0
    line_of(ended, "%ExePath%", test.build.spelled(place.root / "doctor"))


def LibraryElsewhere(test):
    place = test.whole()
    elsewhere = place.root / "elsewhere"
    elsewhere.mkdir()
    library = elsewhere / test.build.library
    os.rename(place.root / "app" / test.build.library, library)
    assert place.diagnose().status == 1
    ended = place.diagnose("--library", test.build.spelled(library))
    assert ended.last == rig.CAN_WORK
    line_of(ended, "%SSOServicesModulePath%", test.build.spelled(elsewhere))


def LibraryByRunPath(test):
    if test.build.is_windows:
        skip("programs for Windows have no run path")
    place = test.whole()
    place.place("app/host", test.build.host)
    (place.root / "lib").mkdir()
    os.rename(place.root / "app" / test.build.library, place.root / "lib" / test.build.library)
    ended = place.run("--exe", str(place.root / "app/host"))
    assert ended.last == rig.CAN_WORK
    line_of(ended, "%SSOServicesModulePath%", str(place.root / "lib"))


def ConfigOverride(test):
    place = test.whole()
    moved = place.root / "settings.json"
    os.rename(place.root / "app/SSOClient.config", moved)
    assert place.diagnose().status == 1
    ended = place.diagnose("--config", test.build.spelled(moved))
    assert ended.last == rig.CAN_WORK
    line_of(ended, "named by the program", "settings.json")


def SupportFileSearchPaths(test):
    place = test.whole()
    (place.root / "support").mkdir()
    os.rename(place.root / "app/SSOClient.config", place.root / "support/SSOClient.config")
    ended = place.diagnose("--search", "%Nonsense%;;%ExePath%/../support")
    assert ended.last == rig.CAN_WORK
    line_of(ended, "    %Nonsense%", "%Nonsense% stays as text")
    line_of(ended, "/app/../support  found")


if __name__ == "__main__":
    harness.run(globals())
