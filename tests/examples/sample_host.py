#!/usr/bin/env python3
"""The sample host in the sample installation: what it prints and what the plugin logs.

sample_host.py TEST FOLDER [EMULATOR...], where FOLDER has the build's programs.
The files in expected/ have a pattern on each line. Each fits a line of the output,
after the one that the pattern before it fitted.
"""

import datetime
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
SAMPLE = HERE.parents[1] / "examples/installation"
LOADED = "module loaded (Version"


class Installation:
    def __init__(self, root, programs, emulator):
        self.root = root
        self.emulator = [os.path.abspath(word) for word in emulator]
        is_windows = (programs / "SampleHost.exe").exists()
        self.host = root / "app" / ("SampleHost.exe" if is_windows else "SampleHost")
        self.plugin = "SampleClientPlugin" + (".dll" if is_windows else ".so")
        library = "HxSSOServices.dll" if is_windows else "libHxSSOServices.so.10"
        shutil.copytree(SAMPLE, root, dirs_exist_ok=True)
        for folder in ("server/plugin", "server/openssl"):
            (root / folder).mkdir()
        template = root / "server/SSOVersionCompatibility.config.in"
        compatibility = template.read_text().replace("$<TARGET_FILE_NAME:SampleClientPlugin>",
                                                     self.plugin)
        template.with_suffix("").write_text(compatibility)
        # Looked for, but neither started nor loaded.
        for name in ("HxSSO.exe", "openssl/openssl.module"):
            (root / "server" / name).touch()
        shutil.copy(programs / self.host.name, self.host)
        shutil.copy(programs / library, root / "app")
        shutil.copy(programs / self.plugin, root / "server/plugin")

    def run(self):
        """What the host printed and what the plugin logged, by lines."""
        log = self.root / "sample.log"
        ended = subprocess.run([*self.emulator, self.host], cwd=self.root, timeout=100,
                               env={**os.environ, "HXSSO_SAMPLE_LOG": log.name}, check=False,
                               stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE)
        assert ended.returncode == 0 and not ended.stderr, (ended.returncode, ended.stderr)
        logged = log.read_bytes() if log.exists() else b""
        for text in (ended.stdout, logged):
            assert b"sample-secret" not in text, text.decode()
        return [text.decode("utf-8").splitlines() for text in (ended.stdout, logged)]


def fits(lines, name, plugin):
    rest = iter(lines)
    for pattern in (HERE / "expected" / name).read_text(encoding="utf-8").splitlines():
        pattern = pattern.replace("{plugin}", re.escape(plugin))
        assert any(re.search(pattern, line) for line in rest), \
            f"{name}: no line {pattern!r}, or not in its place, in:\n" + "\n".join(lines)


def loads(lines):
    return sum(LOADED in line for line in lines)


def WithThePlugin(place):
    printed, logged = place.run()
    fits(logged, "with-plugin.log", place.plugin)
    fits(printed, "with-plugin.out", place.plugin)
    assert not [line for line in logged if re.match(r"\[(error|warning)\]", line)], logged
    assert loads(logged) == 1 and loads(printed) == 0
    [expires] = [line for line in printed if line.startswith("expires: ")]
    expires = datetime.datetime.strptime(expires, "expires: %Y-%m-%d %H:%M:%S UTC")
    assert expires > datetime.datetime.utcnow(), expires


def WithoutThePlugin(place):
    """The error at once, then the whole log, which nobody took."""
    (place.root / "server/plugin" / place.plugin).unlink()
    printed, logged = place.run()
    fits(printed, "without-plugin.out", place.plugin)
    assert not logged and loads(printed) == 1


def main():
    test, programs, *emulator = sys.argv[1:]
    with tempfile.TemporaryDirectory() as root:
        globals()[test](Installation(pathlib.Path(root), pathlib.Path(programs), emulator))


if __name__ == "__main__":
    main()
