#!/usr/bin/env python3
"""plugin_check.py CASE FOLDER [EMULATOR]

Runs hxsso-plugin-check from FOLDER, where the modules of the rig lie too, on the
module that a case is about, in a directory of its own.
"""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

FOLDER = pathlib.Path(sys.argv[2])
EMULATOR = sys.argv[3:]
IS_WINDOWS = (FOLDER / "hxsso-plugin-check.exe").exists()
EXTENSION = ".dll" if IS_WINDOWS else ".so"
PROGRAM = "hxsso-plugin-check" + (".exe" if IS_WINDOWS else "")
DECORATED = (
    "?GetSSOClientFactory@@YA?AV?$shared_ptr@VISSOClientFactory@SSOServices@Halvorix@@@std@@XZ"
    if IS_WINDOWS
    else "_Z19GetSSOClientFactoryv"
)
INTERFACES = [
    "ISSOServerManager",
    "ISSOLogManager",
    "ISSOClientModule",
    "ISSOClient",
    "ISSOClientUI",
    "ISSOClientPrivate",
]


def place(name, as_name=None):
    """A copy of a module in the directory of the case."""
    target = (as_name or name) + EXTENSION
    shutil.copyfile(FOLDER / (name + EXTENSION), target)
    return target


def place_program():
    """On its own, with the library: what lies beside a program is found by it."""
    os.mkdir("program")
    for file in [FOLDER / PROGRAM, *FOLDER.glob("*HxSSOServices*" + EXTENSION + "*")]:
        if not file.is_symlink() or file.name.endswith(".10"):
            shutil.copy(file, "program")


def machine_offset(data):
    return int.from_bytes(data[60:64], "little") + 4 if IS_WINDOWS else 18


def turn_architecture(file):
    """Makes it a module for ARM, by its header."""
    data = bytearray(pathlib.Path(file).read_bytes())
    at = machine_offset(data)
    data[at : at + 2] = (0xAA64 if IS_WINDOWS else 183).to_bytes(2, "little")
    pathlib.Path(file).write_bytes(data)


def run(*arguments, script=None):
    pathlib.Path("script").write_text(json.dumps(script or {}))
    environment = dict(os.environ, HXSSO_PLUGIN_SCRIPT="script", HXSSO_PLUGIN_RECORD="record")
    ended = subprocess.run(
        [*EMULATOR, os.path.join("program", PROGRAM), *arguments],
        env=environment,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        encoding="utf-8",
        timeout=100,
        check=False,
    )
    if EMULATOR and ended.returncode == 77:
        sys.exit(77)
    print(ended.stdout, ended.stderr, f"exit status {ended.returncode}", sep="")
    return ended


class Checked:
    """The lines of a run, as (result, check, detail)."""

    def __init__(self, module, status, script=None):
        ended = run(module, script=script)
        assert ended.returncode == status, f"exit status {ended.returncode}, not {status}"
        assert ended.stderr == "", "something on the standard error"
        lines = ended.stdout.splitlines()
        self.entries = [line.split(None, 2) for line in lines[:-1]]
        self.last = lines[-1]
        failures = sum(entry[0] == "FAILED" for entry in self.entries)
        assert (failures != 0) == (status != 0)
        if failures == 0:
            assert self.last == "All holds."
        elif failures == 1:
            assert self.last == "1 thing does not hold."

    def of(self, check):
        return [(entry[0], entry[2]) for entry in self.entries if entry[1] == check]

    def only(self, check, result, *parts):
        """The check has one line, with this result and these texts."""
        found = self.of(check)
        assert len(found) == 1, f"{len(found)} lines of {check}"
        assert found[0][0] == result, f"{check}: {found[0]}"
        for part in parts:
            assert part in found[0][1], f"{check}: {part!r} is not in {found[0][1]!r}"
        return self

    def not_loaded(self):
        self.only("load", "note", "not tried")
        assert not self.of("factory")
        assert not pathlib.Path("record").exists(), "code of the module ran"

    def stops(self):
        """At a file that cannot be looked into any further."""
        assert not self.of("export")
        self.not_loaded()


def failing(module, script=None):
    return Checked(module, 1, script)


def recorded(script, status):
    return Checked(place("RecordingPlugin"), status, script)


# --- The cases --------------------------------------------------------------------


def RecordingPluginPasses():
    run_of = recorded(None, 0)
    run_of.only("file", "ok", "RecordingPlugin" + EXTENSION)
    run_of.only("module", "ok").only("architecture", "ok")
    run_of.only("dependencies", "ok", "jsoncpp", "libstdc++", "HxSSOServices")
    run_of.only("export", "ok", DECORATED).only("runtime", "ok", "libstdc++")
    run_of.only("jsoncpp", "ok", "libjsoncpp").only("load", "ok").only("factory", "ok")
    run_of.only("interfaces", "ok", ", ".join(INTERFACES)).only("logger", "ok")
    calls = [json.loads(line)[0] for line in pathlib.Path("record").read_text().splitlines()]
    assert calls[0] == "GetSSOClientFactory"
    assert calls[1:7] == ["ISSOClientFactory::Get" + name[1:] for name in INTERFACES]
    assert calls[7:] == ["ISSOLogManager::GetLogger"]


def MissingFile():
    failing("nowhere" + EXTENSION).only("file", "FAILED", "nowhere", "does not exist").stops()


def Folder():
    os.mkdir("folder")
    failing("folder").only("file", "FAILED", "is no file").stops()


def TextFile():
    pathlib.Path("text" + EXTENSION).write_text("This is no module.\n")
    failing("text" + EXTENSION).only("module", "FAILED", "no module of any kind").stops()


def CutFile():
    module = place("RecordingPlugin")
    os.truncate(module, 8192)
    failing(module).only("module", "FAILED", "damaged", "cut short").stops()


def OtherArchitecture():
    module = place("RecordingPlugin")
    turn_architecture(module)
    failing(module).only("architecture", "FAILED", "for ARM64").stops()


def OtherSystem():
    foreign = bytearray(1024)
    if IS_WINDOWS:
        foreign[:20] = b"\x7fELF\x02\x01\x01" + bytes(9) + b"\x03\x00\x3e\x00"
    else:
        foreign[:2] = b"MZ"
        foreign[60:64] = (128).to_bytes(4, "little")
        foreign[128:134] = b"PE\x00\x00\x64\x86"
    pathlib.Path("foreign" + EXTENSION).write_bytes(foreign)
    system = "Linux" if IS_WINDOWS else "Windows"
    failing("foreign" + EXTENSION).only("module", "FAILED", "a module for " + system).stops()


def Program():
    shutil.copyfile(FOLDER / PROGRAM, "other" + EXTENSION)
    failing("other" + EXTENSION).only("module", "FAILED", "a program").stops()


def MissingDependency():
    run_of = failing(place("DependentPlugin"))
    run_of.only("dependencies", "FAILED", "PluginDependency" + EXTENSION, "DependentPlugin")
    run_of.only("export", "ok").not_loaded()


def DependencyForOtherArchitecture():
    module = place("DependentPlugin")
    turn_architecture(place("PluginDependency"))
    failing(module).only("dependencies", "FAILED", "PluginDependency", "for ARM64").not_loaded()


def PlainNameOnly():
    run_of = failing(place("PlainNamePlugin"))
    run_of.only("export", "FAILED", "only as GetSSOClientFactory;", DECORATED).not_loaded()


def NoFactoryProcedure():
    failing(place("PluginDependency")).only("export", "FAILED", "no factory").not_loaded()


def OtherRuntime():
    run_of = failing(place("StaticRuntimePlugin"))
    run_of.only("runtime", "FAILED", "of its own", "linked statically", "libstdc++").not_loaded()


def EmptyFactory():
    module = place("DependentPlugin")
    place("PluginDependency")
    run_of = failing(module).only("dependencies", "ok", "PluginDependency" + EXTENSION)
    run_of.only("load", "ok").only("factory", "FAILED", "empty", "declines")
    script = {"GetSSOClientFactory": {"empty": True}}
    recorded(script, 1).only("factory", "FAILED", "empty", "declines")


def ThrowingFactory():
    script = {"GetSSOClientFactory": {"throw": "no luck today"}}
    run_of = recorded(script, 1).only("load", "ok")
    run_of.only("factory", "FAILED", "GetSSOClientFactory throws: no luck today")


def FactoryThrowsNumber():
    recorded({"GetSSOClientFactory": {"throw": 7}}, 1).only("factory", "FAILED", "no std::exc")


def EmptyInterfaces():
    script = {"ISSOClientFactory::Get" + name[1:]: {"empty": True} for name in INTERFACES}
    run_of = recorded(script, 1).only("factory", "ok")
    run_of.only("interfaces", "FAILED", "empty: " + ", ".join(INTERFACES))
    run_of.only("logger", "note", "no ISSOLogManager")


def OneEmptyInterface():
    run_of = recorded({"ISSOClientFactory::GetSSOClientUI": {"empty": True}}, 0)
    assert run_of.of("interfaces") == [
        ("ok", ", ".join(name for name in INTERFACES if name != "ISSOClientUI")),
        ("note", "empty: ISSOClientUI"),
    ]


def ThrowingGetter():
    run_of = recorded({"ISSOClientFactory::GetSSOClient": {"throw": "not now"}}, 1)
    assert ("FAILED", "GetSSOClient throws: not now") in run_of.of("interfaces")


def NoLogManager():
    run_of = recorded({"ISSOClientFactory::GetSSOLogManager": {"empty": True}}, 0)
    run_of.only("logger", "note", "no ISSOLogManager")


def NoLogger():
    recorded({"ISSOLogManager::GetLogger": {"empty": True}}, 0).only("logger", "note", "GetLogger")


def ThrowingLogManager():
    run_of = recorded({"ISSOLogManager::GetLogger": {"throw": "full"}}, 1)
    run_of.only("logger", "FAILED", "GetLogger throws: full")


def NameBeyondAscii():
    os.mkdir("Zoë €")
    module = "Zoë €/" + place("RecordingPlugin")
    os.rename("RecordingPlugin" + EXTENSION, module)
    Checked(module, 0).only("file", "ok", module).only("load", "ok")


def WrongUse():
    for arguments in ([], ["one", "two"], ["--nonsense"], ["--nonsense", "one"], [""], ["--json"]):
        ended = run(*arguments)
        assert ended.returncode == 2, arguments
        assert ended.stdout == "" and ended.stderr.startswith("usage:"), arguments
    ended = run("--help")
    assert ended.returncode == 0 and ended.stdout.startswith("usage:")


def document(status, module, script=None):
    ended = run("--json", module, script=script)
    assert ended.returncode == status
    parsed = json.loads(ended.stdout)
    assert parsed["holds"] == (status == 0)
    assert parsed["module"].endswith(module)
    for entry in parsed["checks"]:
        assert sorted(entry) == ["check", "detail", "result"]
        assert entry["result"] in ("ok", "FAILED", "note")
    return [(entry["check"], entry["result"]) for entry in parsed["checks"]]


def Json():
    names = ["file", "module", "architecture", "dependencies", "export", "runtime", "jsoncpp"]
    names += ["load", "factory", "interfaces", "logger"]
    assert document(0, place("RecordingPlugin")) == [(name, "ok") for name in names]


def JsonOfFailure():
    throws = {"GetSSOClientFactory": {"throw": 'a "quoted" line\nand another, Zoë'}}
    assert document(1, place("RecordingPlugin"), throws)[-1] == ("factory", "FAILED")
    found = document(1, place("PlainNamePlugin"))
    assert ("export", "FAILED") in found and found[-1] == ("load", "note")
    assert document(1, "nowhere") == [("file", "FAILED"), ("load", "note")]


def main():
    with tempfile.TemporaryDirectory() as directory:
        os.chdir(directory)
        try:
            place_program()
            globals()[sys.argv[1]]()
        finally:
            os.chdir("/")


if __name__ == "__main__":
    main()
