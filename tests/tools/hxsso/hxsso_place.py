"""What the tests of hxsso have in common: each script is started as
SCRIPT CASE FOLDER [EMULATOR...] and runs one of its functions with the program of the build in
FOLDER, in a whole installation, with a provider and a user at the browser."""

import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[3]
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "tests/openid/host"))

import installation  # noqa: E402
from installation import PATIENCE, User, wait_until, why_not  # noqa: E402,F401

import hostile  # noqa: E402

PROGRAMS = pathlib.Path(sys.argv[2])


class Ended:
    """How a command ended. Nothing that it wrote on standard error is lost."""

    def __init__(self, words, completed):
        self.words, self.status = words, completed.returncode
        self.output = completed.stdout
        self.errors = completed.stderr.decode("utf-8")

    def __repr__(self):
        return f"{self.words}: {self.status}\n--- output\n{self.output!r}\n--- errors\n{self.errors}"

    @property
    def text(self):
        return self.output.decode("utf-8")

    @property
    def document(self):
        return json.loads(self.output)

    @property
    def result(self):
        return self.document["result"]


class Place(installation.Installation):
    """On Linux hxsso lies beside a host. On Windows, where it is the HxSSO.exe that the library
    looks for, it lies in the sign-on folder, with a library of its own."""

    def __init__(self, root, programs, emulator, provider):
        super().__init__(root, programs, emulator, provider)
        ending = ".exe" if self.is_windows else ""
        self.home = root / ("server" if self.is_windows else "app")
        self.hxsso = self.home / ("HxSSO.exe" if self.is_windows else "hxsso")
        shutil.copy((programs.parent / "sign-on" if self.is_windows else programs) /
                    self.hxsso.name, self.hxsso)
        for name in ("hxsso-doctor", "hxsso-plugin-loader"):
            shutil.copy(programs / (name + ending), self.home)
        if self.is_windows:
            shutil.copy(programs / "HxSSOServices.dll", self.home)

    def words(self, *arguments):
        """With them a command starts that trusts the provider; all that is between execs."""
        words = [*self.emulator, str(self.hxsso), *arguments]
        return self.provider.authority.trusted(words)

    def run(self, *arguments, folder=None, **environment):
        return Ended(arguments, subprocess.run(
            self.words(*arguments), cwd=folder or self.root, stdin=subprocess.DEVNULL,
            stdout=environment.pop("stdout", subprocess.PIPE), stderr=subprocess.PIPE,
            env={**self.environment(), **environment}, timeout=PATIENCE, check=False))

    def begin(self, *arguments, **more):
        return subprocess.Popen(
            self.words(*arguments), cwd=self.root, stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=self.environment(), **more)

    def sign_in(self):
        ended = self.run("login")
        assert ended.status == 0, ended

    def token(self, *arguments):
        ended = self.run("token", *arguments)
        assert ended.status == 0 and ended.errors == "", ended
        return ended.text.removesuffix("\n")


def failed(ended, status, error, remedy=None):
    """Nothing on the standard output, and on the other one what is wrong and what to do."""
    assert ended.status == status and ended.output == b"", ended
    lines = ended.errors.replace("\r", "").splitlines()
    assert any(re.search(error, line) for line in lines if line.startswith("hxsso: ")), ended
    if remedy:
        assert any(re.search(remedy, line) for line in lines if line.startswith("Fix: ")), ended
    return ended


def skip(reason):
    print("skipped:", reason)
    sys.exit(77)


def schema(name):
    try:
        import jsonschema
    except ImportError:
        skip("python3-jsonschema is not installed; scripts/setup native installs it")
    document = json.loads((ROOT / "docs/schemas" / name).read_text())
    jsonschema.Draft202012Validator.check_schema(document)
    return jsonschema.Draft202012Validator(document)


def run(cases):
    if reason := why_not():
        skip(reason)
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder).resolve()
        with hostile.HostileProvider(root / "authority") as provider:
            place = Place(root / "place", PROGRAMS, sys.argv[3:], provider)
            try:
                cases[sys.argv[1]](place, provider)
            except BaseException:
                print(*place.log(), sep="\n")
                raise
