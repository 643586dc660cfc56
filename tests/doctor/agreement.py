#!/usr/bin/env python3
"""agreement.py COUNT FOLDER [EMULATOR...]

Makes COUNT installations by chance, always the same ones, and compares what the
doctor says is chosen with what the library answers in a fresh host process: the
client plugin, the OpenSSL module, and which object of the file each comes from."""

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
QUESTIONS = ["GetSSOClientPluginModule", "GetOpenSslModule"]

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
            modulePath=... if self.chance(12) else self.pick(DIRECTORIES),
            modulePathWoW64="{root}/wow64" if self.chance(4) else ...,
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
        """What the host sets before it asks: (question, the doctor's option, value)."""
        made = []
        # The other of the two starts the load, and then it is too late for this one.
        if self.chance(8):
            value = self.pick(["{root}/support/SSOClient.config", "{root}/nowhere", "{root}/app"])
            made.append(("SSOClientConfigFileOverride", "--config", value))
        if self.chance(5):
            paths = ["{root}/support", "", "%ExePath%/../support", "%Nonsense%"]
            value = ";".join(self.pick(paths) for _ in range(self.random.randrange(1, 4)))
            if value:
                made.append(("SupportFileSearchPaths", "--search", value))
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
        for name, folder in ((BUILD.host, "app"), (BUILD.library, library)):
            os.link(originals / name, root / folder / name)

    def filled(self, text):
        return text.replace("{root}", BUILD.spelled(self.root))

    def set_up(self, maker):
        for file in self.made:
            file.unlink(missing_ok=True)
        self.made = []
        for relative, content in maker.files().items():
            self.write(relative, content)
        if maker.chance(6):
            self.write("xdg/Halvorix/HxSSO/Location", "{root}/server\n")

    def write(self, relative, content):
        target = self.root / relative
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_text(self.filled(content), encoding="utf-8")
        self.made.append(target)

    def run(self, command):
        environment = dict(
            os.environ,
            LC_ALL="C.UTF-8",
            HOME=str(self.root / "home"),
            XDG_CONFIG_DIRS=str(self.root / "xdg"),
            XDG_CONFIG_HOME="",
            XDG_DATA_HOME="",
            HXSSO_REPORT=BUILD.spelled(self.root / "report"),
        )
        ended = subprocess.run(
            [*BUILD.emulator, *map(str, command)],
            cwd=self.root / "work",
            env=environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            timeout=100,
            check=False,
        )
        if BUILD.emulator and ended.returncode == rig.SKIPPED:
            print(ended.stderr.decode())
            os._exit(rig.SKIPPED)
        return ended

    def answers(self, choices):
        """The library's, in a process of its own; an exception reads as no answer."""
        questions = [f"Set{name}={self.filled(value)}" for name, _, value in choices]
        (self.root / "questions").write_text(json.dumps(questions + QUESTIONS), encoding="utf-8")
        (self.root / "report").unlink(missing_ok=True)
        ended = self.run([self.root / "app" / BUILD.host, "--host-program", "AnswersQuestions"])
        report = (self.root / "report").read_text(encoding="utf-8").splitlines()
        found = dict(json.loads(line) for line in report)
        assert ended.returncode == 0 and found["program"] == "returned", ended.stderr
        answers = [found[key] for key in sorted(found) if key.startswith("answer")]
        answers = ["" if text.startswith(("Json::", "std::")) else text for text in answers]
        if len(answers) > len(QUESTIONS):
            # The load, which a setter starts, has asked for the plugin first and
            # ended with an exception.
            answers = ["", answers[-1]]
        return answers

    def diagnosis(self, choices):
        options = []
        for _, option, value in choices:
            options += [option, self.filled(value)]
        host = BUILD.spelled(self.root / "app" / BUILD.host)
        command = [self.originals / BUILD.doctor, "--json", "--exe", host, *options]
        ended = self.run(command)
        assert ended.returncode in (0, 1) and ended.stderr == b"", (ended.returncode, ended.stderr)
        return json.loads(ended.stdout.decode("utf-8"))


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
    """Programs and library, without what makes them slow to copy and to read."""
    folder.mkdir()
    for name in (BUILD.doctor, BUILD.host, BUILD.library):
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
            return [compare(number, places[worker]) for number in range(worker, COUNT, workers)]

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
