"""What the tests of hxsso-doctor have in common: each script is started as
SCRIPT TEST FOLDER [EMULATOR...] and runs one of its functions on the doctor in FOLDER."""

import json
import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True
import rig  # noqa: E402
from rig import skip  # noqa: E402,F401

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))
import elf  # noqa: E402

CASES = pathlib.Path(__file__).resolve().parent / "cases"
COMPATIBILITY = "server/SSOVersionCompatibility.config"


class Test:
    def __init__(self, build, directory):
        self.build = build
        self.directory = pathlib.Path(directory)
        self.count = 0

    def installation(self, case=None):
        """One of a case; what it is started with is remembered."""
        self.count += 1
        made = rig.Installation(self.build, self.directory / str(self.count))
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


def run(tests):
    build = rig.Build(sys.argv[2], sys.argv[3:])
    # In the build, for the links: these need one file system.
    with tempfile.TemporaryDirectory(dir=build.folder.parent, prefix="doctor-") as directory:
        tests[sys.argv[1]](Test(build, directory))
