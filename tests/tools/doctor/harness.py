"""What the scripts with tests of hxsso-doctor have in common. Each function whose name begins
with a capital is a test."""

import json
import pathlib
import tempfile

import rig
from cases import CASES
from rig import apart, skip  # noqa: F401

import elf

COMPATIBILITY = "server/SSOVersionCompatibility.config"


class Test:
    def __init__(self, build, directory, row):
        self.build = build
        self.directory = pathlib.Path(directory)
        self.row = row
        self.count = 0

    def installation(self, case=None):
        """One of a case; what it is started with is remembered."""
        self.count += 1
        made = rig.Installation(self.build, self.directory / str(self.count), self.row)
        made.arguments = made.set_up(CASES / case) if case else []
        return made

    def whole(self):
        return self.installation("nothing-is-wrong")

    def undeclared_dependency(self):
        """On Linux: a plugin that takes a symbol from a module which it does not name."""
        place = self.installation("plugin-lacks-a-dependency")
        elf.retag(place.path("server/plugin/DependentPlugin.so"), elf.NEEDED, elf.DEBUG,
                  named=b"PluginDependency.so")
        return place


def said(ended, *texts):
    for text in texts:
        assert text in ended.output, f"{text!r} is not in:\n{ended.output}"
    return ended


def line_of(ended, *parts):
    """The line that has all of these."""
    found = [line for line in ended.lines if all(part in line for part in parts)]
    assert len(found) == 1, f"{len(found)} lines with {parts} in:\n{ended.output}"
    return found[0]


def compatibility(place):
    """The version compatibility file of an installation, to be changed and written."""
    return json.loads(place.path(COMPATIBILITY).read_text(encoding="utf-8"))


def call(test, build, row):
    # In the build, for the links: these need one file system.
    with tempfile.TemporaryDirectory(dir=build.folder.parent, prefix="doctor-") as directory:
        test(Test(build, directory, row))
