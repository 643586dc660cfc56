#!/usr/bin/env python3
"""agreement.py COUNT FOLDER [EMULATOR...]

Makes COUNT installations by chance, always the same ones, and compares what the
doctor says is chosen with what the library answers in a fresh host process: the
client plugin, the OpenSSL module, and which object of the file each comes from.

A host process each is what it costs. The doctor looks at one installation after the
other in one process, doctor-in-a-row; at some of them the program itself does so too,
and has to write the same."""

import concurrent.futures
import json
import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True
import rig  # noqa: E402

COUNT = int(sys.argv[1])
BUILD = rig.Build(sys.argv[2], sys.argv[3:])
# Programs of this build, without what makes them slow to copy and to read.
HOST, DOCTOR = BUILD.host, BUILD.doctor
ONE_IN = 40  # is looked at by the doctor's own program too

VERSIONS = ["10", "10.22", "10.22.0", "10.22.00", "10.22.00.1800", "10.22.0.1800", "10.22.00.1799"]
VERSIONS += ["10.22.00.1801", "10.23", "10.21.99", "11", "9", "", " 10.22 ", ".", "10..22", "10.22.x"]
VERSIONS += [10, 10.22, True, None, "99999999999999999999", "10.22.00.beta"]
OWN_VERSIONS = ["1.0", "1.0", "2", "2.0", "02", "10", "9.9", "", "1.0.0", "rc", "RC", 3, None]
DIRECTORIES = ["{root}/app", "{root}/server", "{root}/server/plugin", "%ExePath%", "%exepath%/sub"]
DIRECTORIES += ["%SSOServerAppPath%/plugin", "%SSOServerAppPath%", "%SSOServicesModulePath%/x", ""]
DIRECTORIES += ["%Nonsense%/y", "{root}\\\\server\\\\", "///", "%ProgramFiles%/z", "%LocalAppData%", "."]
DIRECTORIES += ["%SSOServerAppExeFile%", "%%", "%ExePath", "%AppData%//a", "%SSOServerAppExeDirPath%/.."]
NAMES = ["One.dll", "Two.dll", "Zoë.dll", "sub/Three.dll", "../Up.dll", ""]


class Maker:
    """Texts of files, mostly whole, now and then not."""

    def __init__(self, number):
        self.random = random.Random(1800 + number)

    def chance(self, one_in):
        return self.random.randrange(one_in) == 0

    def pick(self, values):
        return self.random.choice(values)

    def spoiled(self, value):
        """A value of a wrong type now and then."""
        if self.chance(150):
            return self.pick([[], {}, [value], {"a": value}, 7, 1.5, True, None])
        return value

    def object_of(self, **members):
        return {key: self.spoiled(value) for key, value in members.items() if value is not ...}

    def range(self):
        whole = {"minVersion": "10.22", "maxVersion": "10.22.00.1800"}
        if not self.chance(3):
            return whole
        made = {}
        if not self.chance(3):
            made["minVersion"] = self.pick(VERSIONS)
        if not self.chance(3):
            made["maxVersion"] = self.pick(VERSIONS)
        if self.chance(3):
            made["versions"] = [self.pick(VERSIONS) for _ in range(self.random.randrange(3))]
        return {key: self.spoiled(value) for key, value in made.items()}

    def module(self):
        return self.object_of(
            module=self.pick(NAMES[:3] if not self.chance(8) else NAMES),
            **{
                BUILD.path_key: ... if self.chance(12) else self.pick(DIRECTORIES),
                BUILD.other_path_key: "{root}/wow64" if self.chance(4) else ...,
            },
            version=... if self.chance(8) else self.pick(OWN_VERSIONS),
            compatibleSsoServicesVersion=... if self.chance(12) else self.range(),
        )

    def modules(self):
        count = self.random.randrange(1, 6) if not self.chance(12) else 0
        return [None if self.chance(30) else self.module() for _ in range(count)]

    def compatibility(self):
        made = {}
        if not self.chance(30):
            made["ssoClientPlugin"] = self.spoiled(self.modules())
        if not self.chance(6):
            made["openssl"] = self.spoiled(self.modules())
        return self.text(self.spoiled(made))

    def config(self):
        server = self.object_of(
            appName=self.pick(["HxSSO.exe", "Other.exe", ""]) if self.chance(3) else ...,
            exeName=self.pick(["HxSSO.exe", "Other.exe", ""]) if self.chance(4) else ...,
            VersionCompatibilityConfigfilePath=(
                self.pick(["{root}/config", "%ExePath%", *DIRECTORIES]) if self.chance(3) else ...
            ),
            searchPaths=";".join(
                self.pick(["{root}/server", "{root}/elsewhere", *DIRECTORIES])
                for _ in range(self.random.randrange(4))
            ),
        )
        made = {"ssoServer": self.spoiled(server)}
        if self.chance(4):
            made["openssl"] = self.object_of(
                moduleName=self.pick(["libcrypto.dll", ""]), modulePath=self.pick(DIRECTORIES)
            )
        return self.text(self.spoiled(made))

    def text(self, value):
        text = json.dumps(value, ensure_ascii=False, indent=self.pick([None, 2]))
        if self.chance(60):
            text = text[: self.random.randrange(len(text) + 1)]
        elif self.chance(20):
            text = "// a comment\n" + text
        return text

    def files(self):
        made = {}
        for folder in ("app", "lib", "work", "support"):
            if self.chance(2 if folder == "app" else 6):
                made[folder + "/SSOClient.config"] = self.config()
        for folder in ("server", "app", "elsewhere"):
            if self.chance(1 if folder == "server" and not self.chance(6) else 5):
                made[folder + "/" + self.pick(["HxSSO.exe"] * 4 + ["Other.exe"])] = ""
        for folder in ("server", "config", "app", "work"):
            if self.chance(1 if folder == "server" and not self.chance(8) else 4):
                made[folder + "/SSOVersionCompatibility.config"] = self.compatibility()
        return made

    def choices(self):
        """What the host sets before it asks: (name, value)."""
        made = []
        # The other of the two starts the load, and then it is too late for this one.
        if self.chance(8):
            value = self.pick(["{root}/support/SSOClient.config", "{root}/nowhere", "{root}/app"])
            made.append(("config", value))
        if self.chance(5):
            paths = ["{root}/support", "", "%ExePath%/../support", "%Nonsense%"]
            value = ";".join(self.pick(paths) for _ in range(self.random.randrange(1, 4)))
            if value:
                made.append(("search", value))
        return made


class Place:
    """A directory that serves one installation after another."""

    def __init__(self, root, originals):
        self.root = root
        self.originals = originals
        self.made = []
        for folder in ("app", "lib", "server", "work", "home", "xdg"):
            (root / folder).mkdir(parents=True)
        library = "app" if BUILD.is_windows else "lib"
        for name, folder in ((HOST, "app"), (BUILD.library, library)):
            os.link(originals / name, root / folder / name)
        self.host = str(root / "app" / HOST)
        self.variables = {
            # Boost makes a locale of this one in half the time of C.UTF-8.
            "LC_ALL": "en_US.UTF-8",
            "HOME": str(root / "home"),
            "XDG_CONFIG_DIRS": str(root / "xdg"),
            "XDG_CONFIG_HOME": "",
            "XDG_DATA_HOME": "",
        }
        self.settings = {"cwd": root / "work", "env": dict(os.environ, **self.variables)}
        self.row = rig.Row(BUILD, root / "row", **self.variables)

    def filled(self, text):
        return text.replace("{root}", BUILD.spelled(self.root))

    def set_up(self, maker):
        for file in self.made:
            os.unlink(file)
        self.made = []
        for relative, content in maker.files().items():
            self.write(relative, content)
        if maker.chance(6):
            self.write("xdg/Halvorix/HxSSO/Location", "{root}/server\n")

    def write(self, relative, content):
        target = os.path.join(self.root, relative)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        with open(target, "w", encoding="utf-8") as file:
            file.write(self.filled(content))
        self.made.append(target)

    def run(self, command, **streams):
        ended = subprocess.run(
            [*BUILD.emulator, *command], timeout=100, check=False, **self.settings, **streams
        )
        if BUILD.emulator and ended.returncode == rig.CANNOT_RUN:
            print("skipped: programs of this build do not run here", flush=True)
            sys.exit(rig.CANNOT_RUN)
        return ended

    def answers(self, choices):
        """The library's, in a process of its own; an exception reads as no answer."""
        given = "".join(f"{name}={self.filled(value)}\n" for name, value in choices)
        # One pipe where that will do: several take longer.
        given = {"input": given.encode("utf-8")} if given else {"stdin": subprocess.DEVNULL}
        ended = self.run(
            [self.host], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, **given
        )
        assert ended.returncode == 0, ended.stderr
        stopped, plugin, openssl, _ = ended.stderr.decode("utf-8").split("\n")
        # A load, which a setter starts, asks for the plugin first: it has ended there.
        return ["" if stopped.strip() == "stopped" else plugin.strip(), openssl.strip()]

    def arguments(self, choices):
        made = ["--json", "--exe", BUILD.spelled(self.host)]
        for name, value in choices:
            made += ["--" + name, self.filled(value)]
        return made

    def diagnosis(self, choices):
        # Those variables it has from its start, like the program: one that scripts/wine sets
        # would be another here.
        ended = self.row.run(BUILD.spelled(self.root / "work"), {}, *self.arguments(choices))
        assert ended.status in (0, 1) and ended.errors == "", (ended.status, ended.errors)
        return ended.document

    def program_diagnosis(self, choices):
        program = str(self.originals / DOCTOR)
        ended = self.run([program, *self.arguments(choices)], capture_output=True)
        assert ended.returncode in (0, 1) and ended.stderr == b"", (ended.returncode, ended.stderr)
        return json.loads(ended.stdout)

    def close(self):
        self.row.close()


def chosen(document, key):
    """By the rows, not by the answer that the doctor got from the library itself."""
    rows = document["compatibilityFile"][key]["modules"]
    files = [row["file"] for row in rows if row["verdict"] == "chosen"]
    assert len(files) <= 1, files
    return files[0] if files else ""


def compare(number, place):
    """None, or what differs; and whether anything was chosen."""
    maker = Maker(number)
    place.set_up(maker)
    choices = maker.choices()
    document = place.diagnosis(choices)
    if number % ONE_IN == 0 and place.program_diagnosis(choices) != document:
        return f"{number}: the program says something else", False
    plugin, openssl = place.answers(choices)
    told = [document["plugin"]["file"] or "", document["opensslModule"]["file"] or ""]
    if told != [plugin, openssl]:
        return f"{number}: the library {[plugin, openssl]}, the doctor {told}", False
    if chosen(document, "ssoClientPlugin") != plugin:
        return f"{number}: the library {plugin}, the row {chosen(document, 'ssoClientPlugin')}", False
    if not document["opensslModule"]["isOverride"] and chosen(document, "openssl") != openssl:
        return f"{number}: the library {openssl}, the row {chosen(document, 'openssl')}", False
    return None, bool(plugin)


def prepare(folder):
    folder.mkdir()
    for name in (DOCTOR, HOST, BUILD.library):
        shutil.copy(BUILD.folder / name, folder / name)
        strip = shutil.which("strip")
        if strip is not None and not BUILD.is_windows:
            subprocess.run([strip, "--strip-unneeded", folder / name], check=True)


def main():
    begun = time.monotonic()
    # In the build, for the links: these need one file system.
    with tempfile.TemporaryDirectory(dir=BUILD.folder.parent, prefix="agreement-") as directory:
        root = pathlib.Path(os.path.realpath(directory))
        prepare(root / "programs")
        workers = min(4, os.cpu_count() or 1)
        places = [Place(root / str(worker), root / "programs") for worker in range(workers)]

        def work(worker):
            numbers = range(worker, COUNT, workers)
            results = [compare(number, places[worker]) for number in numbers]
            places[worker].close()
            return results

        with concurrent.futures.ThreadPoolExecutor(workers) as pool:
            results = [result for part in pool.map(work, range(workers)) for result in part]
    differences = [difference for difference, _ in results if difference]
    successes = sum(is_chosen for _, is_chosen in results)
    print(f"{len(results)} installations, a plugin chosen in {successes}, "
          f"{len(differences)} differences, {time.monotonic() - begun:.1f} s")
    print(*differences[:20], sep="\n")
    assert len(results) == COUNT and not differences
    assert COUNT / 10 < successes < COUNT, "these installations are too much alike"


if __name__ == "__main__":
    main()
