#!/usr/bin/env python3
"""plugin_check.py RUN ACCOUNT FOLDER [EMULATOR...]   all cases, as shards.py tells
plugin_check.py CASE FOLDER [EMULATOR...]          one

Runs hxsso-plugin-check from FOLDER, where the modules of the rig lie too, on the
module that a case is about, in a directory of its own.
"""

import functools
import inspect
import json
import os
import pathlib
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True
import elf  # noqa: E402
import pe  # noqa: E402
import shards  # noqa: E402
from shards import apart, skip  # noqa: E402

RUN = sys.argv[1]
IS_ONE = RUN[0].isupper()
FOLDER = pathlib.Path(os.path.abspath(sys.argv[2 if IS_ONE else 3]))
EMULATOR = [os.path.abspath(word) for word in sys.argv[3 if IS_ONE else 4:]]
IS_WINDOWS = (FOLDER / "hxsso-plugin-check.exe").exists()
EXTENSION = ".dll" if IS_WINDOWS else ".so"
PROGRAM = "hxsso-plugin-check" + (".exe" if IS_WINDOWS else "")
LOADER = "hxsso-plugin-loader" + (".exe" if IS_WINDOWS else "")
DECORATED = (
    "?GetSSOClientFactory@@YA?AV?$shared_ptr@VISSOClientFactory@SSOServices@Halvorix@@@std@@XZ"
    if IS_WINDOWS
    else "_Z19GetSSOClientFactoryv"
)
# Of the compiler that built library and modules.
RUNTIME = os.environ.get("HXSSO_RUNTIME", "libstdc++")
RUNTIME_DLL = {"libstdc++": "libstdc++-6.dll"}.get(RUNTIME, RUNTIME + ".dll")
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
    for file in [FOLDER / PROGRAM, FOLDER / LOADER, *FOLDER.glob("*HxSSOServices*" + EXTENSION + "*")]:
        if not file.is_symlink() or file.name.endswith(".10"):
            shards.link(file, pathlib.Path("program", file.name))


def machine_offset(data):
    return int.from_bytes(data[60:64], "little") + 4 if IS_WINDOWS else 18


def turn_architecture(file):
    """Makes it a module for ARM, by its header."""
    data = bytearray(pathlib.Path(file).read_bytes())
    at = machine_offset(data)
    data[at : at + 2] = (0xAA64 if IS_WINDOWS else 183).to_bytes(2, "little")
    pathlib.Path(file).write_bytes(data)


def run(*arguments, script=None, hostile=None):
    pathlib.Path("script").write_text(json.dumps(script or {}))
    environment = dict(os.environ, HXSSO_PLUGIN_SCRIPT="script", HXSSO_PLUGIN_RECORD="record")
    if hostile:
        environment["HXSSO_HOSTILE"] = hostile
        # A sanitizer would end a crash in its own way.
        environment["ASAN_OPTIONS"] = "handle_segv=0:" + environment.get("ASAN_OPTIONS", "")
    ended = subprocess.run(
        [*EMULATOR, os.path.join("program", PROGRAM), *arguments],
        env=environment,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        encoding="utf-8",
        timeout=100,
        check=False,
    )
    if EMULATOR and ended.returncode == shards.CANNOT_RUN:
        raise shards.CannotRun(ended.stderr)
    print(ended.stdout, ended.stderr, f"exit status {ended.returncode}", sep="")
    return ended


class Checked:
    """The lines of a run, as (result, check, detail)."""

    def __init__(self, module, status, script=None, hostile=None, options=()):
        ended = run(*options, module, script=script, hostile=hostile)
        assert ended.returncode == status, f"exit status {ended.returncode}, not {status}"
        # Wine itself tells of a crash there.
        lines = [line for line in ended.stderr.splitlines() if not line.startswith("wine: ")]
        assert not lines, "something on the standard error"
        lines = ended.stdout.splitlines()
        self.entries = [line.split(None, 2) for line in lines[:-1]]
        self.output = ended.stdout
        self.last = lines[-1]
        failures = sum(entry[0] == "FAILED" for entry in self.entries)
        assert (failures != 0) == (status != 0)
        if failures == 0:
            assert self.last == "All checks passed."
        elif failures == 1:
            assert self.last == "1 check failed."

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
    run_of.only("dependencies", "ok", "jsoncpp", RUNTIME, "HxSSOServices")
    run_of.only("export", "ok", DECORATED).only("runtime", "ok", RUNTIME)
    run_of.only("jsoncpp", "ok", "jsoncpp").only("load", "ok").only("factory", "ok")
    run_of.only("interfaces", "ok", ", ".join(INTERFACES)).only("logger", "ok")
    calls = [json.loads(line)[0] for line in pathlib.Path("record").read_text().splitlines()]
    assert calls[0] == "GetSSOClientFactory"
    assert calls[1:7] == ["ISSOClientFactory::Get" + name[1:] for name in INTERFACES]
    assert calls[7:] == ["ISSOLogManager::GetLogger", "ILogger::WriteLine"]
    assert run_of.entries[-1] == [
        "note", "operations", "not called: documents, units and exceptions are not checked"]


def MissingFile():
    failing("nowhere" + EXTENSION).only("file", "FAILED", "nowhere", "does not exist").stops()


def Folder():
    os.mkdir("folder")
    failing("folder").only("file", "FAILED", "folder is a folder").stops()


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


def HiddenFactoryProcedure():
    """In the table of symbols, and not among those for others."""
    if IS_WINDOWS:
        skip("the linkers of this system export it or keep nothing of it")
    module = place("HiddenPlugin")
    failing(module).only(
        "export", "FAILED", f"{DECORATED} is in the module but not exported; build it with "
        "hxsso_add_plugin, or compile it with -fvisibility=default").not_loaded()
    if not shutil.which("strip"):
        return
    subprocess.run(["strip", module], check=True)
    failing(module).only("export", "FAILED", f"no factory procedure; the library looks for {DECORATED}")


def FactoryProcedureInANamespace():
    run_of = failing(place("NamespacedPlugin"))
    run_of.only("export", "FAILED", "only as ",
                f"; the library looks for {DECORATED}; define it outside any namespace").not_loaded()
    # Another function there is none.
    for name in () if IS_WINDOWS else ("_ZN2My19GetSSOClientFactoryEi",
                                         "_ZN19GetSSOClientFactory4MakeEv",
                                         "_ZNK2My22OldGetSSOClientFactoryEv"):
        elf.write("plugin.so", strings=name.encode() + b"\0", symbols=[(0, 1)])
        run_of = failing("plugin.so")
        assert run_of.of("export") == [
            ("FAILED", f"only as {name}; the library looks for {DECORATED}")], run_of.of("export")


def LibraryThatIsNotNamed():
    """A host that opens what brings the library for itself alone has no symbols for it."""
    if IS_WINDOWS:
        skip("modules for Windows name each one from which they take something")
    run_of = failing(place("UnlinkedPlugin"))
    run_of.only("symbols", "FAILED",
                "UnlinkedPlugin.so uses libHxSSOServices.so without naming it as needed: it loads "
                "only in programs that link the library; link it (hxsso_add_plugin does)")
    run_of.not_loaded()
    # So a program that is not linked with it has it, with the library there or not.
    for load in ("", f"ctypes.CDLL({os.path.abspath('program/libHxSSOServices.so.10')!r}); "):
        script = f"import ctypes, sys; {load}ctypes.CDLL(sys.argv[1], mode=2)"
        ended = subprocess.run([sys.executable, "-c", script, os.path.abspath("UnlinkedPlugin.so")],
                               stderr=subprocess.PIPE, encoding="utf-8", check=False)
        assert "undefined symbol" in ended.stderr or "HXSSO_INSTRUMENTED" in os.environ, ended.stderr


def JsoncppThatIsNotNamed():
    """The library brings it, which a host may have loaded for itself alone."""
    if IS_WINDOWS:
        skip("modules for Windows name each one from which they take something")
    library = pathlib.Path("program/libHxSSOServices.so.10").read_bytes()
    jsoncpp = re.search(rb"libjsoncpp\.so\.\d+(?=\0)", library)[0].decode()
    value = b"_ZN4Json5ValueD1Ev\0"
    elf.write("plugin.so", strings=value, symbols=[(0, 0)], uses=[0])
    run_of = failing("plugin.so")
    run_of.only("symbols", "FAILED",
                f"plugin.so uses {jsoncpp} without naming it as needed: it loads only in programs "
                "that link that one; link it (with hxsso_add_plugin the linker tells)")
    run_of.not_loaded()
    elf.write("plugin.so", needed=[jsoncpp], strings=value, symbols=[(0, 0)], uses=[0])
    assert not failing("plugin.so").of("symbols")
    # What each program in C++ has: the runtimes of both languages, and what these need.
    taken = (b"puts", b"_ZSt4cout", b"sqrt", b"_Unwind_Resume")
    for name in taken:
        elf.write("plugin.so", strings=name + b"\0", symbols=[(0, 0)], uses=[0])
        assert not failing("plugin.so").of("symbols"), name


def HostileSymbolNames():
    """Those that would take hours or pages to be read stay as they are."""
    if IS_WINDOWS:
        skip("names there are not read")
    packs = "_Z1fIJ" + "i" * 250 + "EEv" + "Dp1gIJT_" * 8 + "EE" * 8
    long = "_Z1fIJ" + "i" * 950 + "EEvDp1gIJ" + "T_" * 8 + "EE"
    one = "_Z1fIJiEEvDpT_"
    for name, told in ((packs, packs), (long, long), (one, f"void f<int>(int) [{one}]")):
        strings = DECORATED.encode() + b"\0"
        elf.write("plugin.so", strings=strings + name.encode() + b"\0",
                  symbols=[(0, 1), (len(strings), 0)], uses=[1])
        run_of = failing("plugin.so")
        run_of.only("symbols", "FAILED", f"plugin.so needs the symbol {told}, which no module has")


def OtherRuntime():
    run_of = failing(place("StaticRuntimePlugin"))
    # Microsoft's tools leave no mark of a runtime but that nothing is imported.
    how = "of its own" if RUNTIME == "libstdc++" else "no runtime is imported"
    run_of.only("runtime", "FAILED", how, "linked statically", RUNTIME).not_loaded()


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
    others = ", ".join(name for name in INTERFACES if name != "ISSOClient")
    assert run_of.of("interfaces") == [
        ("FAILED", "empty: ISSOClient, without which nobody can sign in"),
        ("note", "empty: " + others),
    ]
    run_of.only("logger", "note", "no ISSOLogManager")
    assert not run_of.of("operations"), "what failed comes first"


def OneEmptyInterface():
    run_of = recorded({"ISSOClientFactory::GetSSOClientUI": {"empty": True}}, 0)
    assert run_of.of("interfaces") == [
        ("ok", ", ".join(name for name in INTERFACES if name != "ISSOClientUI")),
        ("note", "empty: ISSOClientUI"),
    ]


def NoClient():
    """It alone signs in."""
    run_of = recorded({"ISSOClientFactory::GetSSOClient": {"empty": True}}, 1)
    assert run_of.of("interfaces") == [
        ("ok", ", ".join(name for name in INTERFACES if name != "ISSOClient")),
        ("FAILED", "empty: ISSOClient, without which nobody can sign in"),
    ]


def ThrowingGetter():
    run_of = recorded({"ISSOClientFactory::GetSSOClient": {"throw": "not now"},
                       "ISSOClientFactory::GetSSOClientUI": {"empty": True}}, 1)
    # Said once: the one that is empty is no second failure.
    assert run_of.of("interfaces") == [
        ("FAILED", "GetSSOClient throws: not now"),
        ("ok", ", ".join(name for name in INTERFACES if name not in ("ISSOClient", "ISSOClientUI"))),
        ("note", "empty: ISSOClientUI"),
    ]


def NoLogManager():
    run_of = recorded({"ISSOClientFactory::GetSSOLogManager": {"empty": True}}, 0)
    run_of.only("logger", "note", "no ISSOLogManager")


def NoLogger():
    recorded({"ISSOLogManager::GetLogger": {"empty": True}}, 0).only("logger", "note", "GetLogger")


def ThrowingLogManager():
    run_of = recorded({"ISSOLogManager::GetLogger": {"throw": "full"}}, 1)
    run_of.only("logger", "FAILED", "GetLogger throws: full")


def ThrowingLogger():
    run_of = recorded({"ILogger::WriteLine": {"throw": "disk full"}}, 1)
    assert run_of.of("logger") == [("FAILED", "WriteLine throws: disk full")]


def NameBeyondAscii():
    os.mkdir("Zoë €")
    module = "Zoë €/" + place("RecordingPlugin")
    os.rename("RecordingPlugin" + EXTENSION, module)
    Checked(module, 0).only("file", "ok", module).only("load", "ok")


def WrongUse():
    for arguments in ([], ["one", "two"], ["--nonsense"], ["--nonsense", "one"], [""], ["--json"]):
        ended = run(*arguments)
        assert ended.returncode == 2, arguments
        assert ended.stdout == "" and ended.stderr.startswith("hxsso-plugin-check: "), arguments
        assert "\nusage: hxsso-plugin-check " in ended.stderr, arguments


def Help():
    ended = run("--help")
    assert ended.returncode == 0 and ended.stderr == ""
    assert ended.stdout.startswith("hxsso-plugin-check - ")
    for text in ("\nusage: hxsso-plugin-check ", "\n  --json  ", "\nExit status:\n"):
        assert text in ended.stdout, text
    page = (FOLDER.parent / "tools/text/hxsso-plugin-check.1").read_text(encoding="utf-8")
    assert page.startswith(".TH HXSSO-PLUGIN-CHECK 1 ")
    for option in ("json", "timeout SECONDS", "help", "version"):
        assert f"\n.TP\n.B \\-\\-{option}\n" in page, option


def Version():
    ended = run("--version")
    assert (ended.returncode, ended.stdout) == (0, "hxsso-plugin-check 10.22.00.1800\n")


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
    assert document(0, place("RecordingPlugin")) == [
        *((name, "ok") for name in names), ("operations", "note")]


def JsonOfFailure():
    throws = {"GetSSOClientFactory": {"throw": 'a "quoted" line\nand another, Zoë'}}
    assert document(1, place("RecordingPlugin"), throws)[-1] == ("factory", "FAILED")
    found = document(1, place("PlainNamePlugin"))
    assert ("export", "FAILED") in found and found[-1] == ("load", "note")
    assert document(1, "nowhere") == [("file", "FAILED"), ("load", "note")]


# --- Plugins that were made to harm -----------------------------------------------


def hostile(deed, options=()):
    return Checked(place("HostilePlugin"), 1, hostile=deed, options=options)


def PluginThatEndsTheProcess():
    for where, check, phrase in (
        ("load", "load", "while it is loaded"),
        ("factory", "factory", "in GetSSOClientFactory"),
    ):
        for deed in ("exit", "quick exit"):
            hostile(f"{where}: {deed}").only(
                check, "FAILED", f"the plugin ends the process with exit status 0 {phrase}")


def PluginThatCrashes():
    for where in ("load", "factory"):
        hostile(where + ": abort").only(where, "FAILED", "the plugin aborts the process")
        crashed = hostile(where + ": null")
        if IS_WINDOWS and where == "load":
            # There the system's loader catches it and refuses the module.
            crashed.only(where, "FAILED", "No access to memory location")
        else:
            crashed.only(where, "FAILED", "the plugin crashes the process: ",
                         "access violation" if IS_WINDOWS else "Segmentation fault")


def PluginThatLoopsForEver():
    run_of = hostile("factory: loop", ("--timeout", "2"))
    run_of.only("load", "ok").only(
        "factory", "FAILED", "the plugin does not come back within 2 s in GetSSOClientFactory")


def PluginThatPrints():
    """Neither its lines nor its answers come out, nor does it speak for itself."""
    run_of = hostile("load: print and exit")
    run_of.only("load", "FAILED", "exit status 0")
    assert "all is well" not in run_of.output and "\x1b" not in run_of.output
    run_of = hostile("factory: print")
    run_of.only("load", "ok").only("factory", "FAILED", "declines")
    assert "all is well" not in run_of.output


def PluginThatEndsItsParent():
    """It is not the tool, which has its last line."""
    if IS_WINDOWS:
        skip("only the other system has such calls")
    for where, phrase in (("load", "while it is loaded"), ("factory", "in GetSSOClientFactory")):
        hostile(where + ": kill parent").only(
            where, "FAILED", "the plugin ends the process that watches over it " + phrase)


def PluginThatForks():
    """The verdict is about the process that was started, and no copy of it speaks."""
    if IS_WINDOWS:
        skip("only the other system has such calls")
    for _ in range(5 if "HXSSO_INSTRUMENTED" in os.environ else 20):
        run_of = hostile("load: fork")
        run_of.only("load", "FAILED",
                    "the plugin ends the process with exit status 0 while it is loaded")
        run_of = hostile("load: copy")
        run_of.only("load", "ok").only("factory", "FAILED", "declines")


def PluginThatLeavesAProcess():
    """Nothing of it outlives the tool, in whatever session it is."""
    if IS_WINDOWS:
        skip("only the other system has such calls")
    for deed in ("load: leave ", "factory: leave ", "load: orphan "):
        hostile(deed + os.path.abspath("survived"))
    time.sleep(4)
    assert not os.path.exists("survived")


def ProcessesOfTheShell():
    """A shell that became the tool has started some, and these others: none is the plugin's."""
    if IS_WINDOWS:
        skip("only the other system has such calls")
    start = "sleep 100 >/dev/null 2>&1 & echo $! >>processes; "
    later = f"for i in 1 2 3 4 5 6 7 8; do sleep 0.02; ({start}) done"
    ended = subprocess.run(
        ["sh", "-c", f'{start} ({later}) >/dev/null 2>&1 & exec "$0" "$1"',
         os.path.join("program", PROGRAM), place("HostilePlugin")],
        stdout=subprocess.PIPE, encoding="utf-8", timeout=90, check=False)
    time.sleep(1)
    for process in pathlib.Path("processes").read_text().split():
        os.kill(int(process), signal.SIGKILL)  # an exception, if there is none
    assert ended.stdout.splitlines()[-1] == "1 check failed.", ended.stdout  # it declines


def PluginThatWritesWhereTheReportGoes():
    """What the tool was started with besides is not the plugin's to write to."""
    if IS_WINDOWS:
        skip("a shell there hands on no more than the three streams")
    environment = dict(os.environ, HXSSO_HOSTILE="load: forge and abort")
    ended = subprocess.run(
        ["sh", "-c", 'exec "$0" --json "$1" 9>&1', os.path.join("program", PROGRAM),
         place("HostilePlugin")],
        env=environment, stdout=subprocess.PIPE, encoding="utf-8", timeout=100, check=False)
    parsed = json.loads(ended.stdout)
    assert ended.returncode == 1 and not parsed["holds"], ended.stdout


def JsonOfADeath():
    for deed in ("load: exit", "factory: abort", "factory: print and exit"):
        ended = run("--json", place("HostilePlugin"), hostile=deed)
        parsed = json.loads(ended.stdout)
        assert ended.returncode == 1 and not parsed["holds"]
        assert parsed["checks"][-1]["result"] == "FAILED", parsed["checks"][-1]
        assert "the plugin " in parsed["checks"][-1]["detail"]


def LoaderMissing():
    os.unlink(os.path.join("program", LOADER))
    Checked(place("RecordingPlugin"), 1).only("loader", "FAILED", LOADER, "is missing")


# --- What is only looked at -------------------------------------------------------


def renamed_dependency(module, before, after):
    """Another name in a module's header, of the same length."""
    assert len(before) == len(after), (before, after)
    file = pathlib.Path(module)
    data = file.read_bytes()
    assert before.encode() in data
    file.write_bytes(data.replace(before.encode(), after.encode()))
    return module


def DependencyNamedByAPlace():
    """The loader would open it, wherever that is; looking does not."""
    name = "PluginDependency" + EXTENSION
    elsewhere = tempfile.mkdtemp(prefix="hx", dir="/tmp")
    try:
        prefix = ("Z:" if IS_WINDOWS else "") + elsewhere + "/"
        wanted = prefix + "x" * (len(name) - len(prefix))
        shutil.copyfile(FOLDER / ("HostilePlugin" + EXTENSION), wanted[2:] if IS_WINDOWS else wanted)
        module = renamed_dependency(place("DependentPlugin"), name, wanted)
        run_of = Checked(module, 1, hostile="load: write marker")
        run_of.only("dependencies", "FAILED", wanted, "refused, nothing was opened").not_loaded()
        assert not os.path.exists("marker"), "code of it ran"
    finally:
        shutil.rmtree(elsewhere)


def DependencyOnAnotherMachine():
    if not IS_WINDOWS:
        skip("only a name of Windows leads to another machine")
    module = renamed_dependency(place("DependentPlugin"), "PluginDependency.dll",
                                "\\\\hxsso\\share\\xx.dll")
    failing(module).only("dependencies", "FAILED", "refused, nothing was opened").not_loaded()


def import_by_text(module, before, after):
    """Another name of any length, in the place of the text for a system of old."""
    data = bytearray(pathlib.Path(module).read_bytes())
    header = int.from_bytes(data[60:64], "little")
    sections = header + 24 + int.from_bytes(data[header + 20:header + 22], "little")
    text = data.index(before.encode() + b"\0")
    for place_of in range(sections, sections + 40 * data[header + 6], 40):
        address, size, begin = struct.unpack_from("<III", data, place_of + 12)
        if begin <= text < begin + size:
            pointer = struct.pack("<I", text - begin + address)
    assert data.count(pointer) == 1 and len(after) < 38
    data = data.replace(pointer, struct.pack("<I", 0x4E))
    data[0x4E:0x4F + len(after)] = after.encode() + b"\0"
    pathlib.Path(module).write_bytes(data)
    return module


def SetsOfFunctions():
    """Only those that this system has."""
    if not IS_WINDOWS:
        skip("only the other system has them")
    for name, is_there in (("api-ms-win-core-file-l1-1-0.dll", True),
                           ("API-MS-Win-core-file-l1-1-9.dll", True),
                           ("api-ms-win-no-such-l1-1-0.dll", False),
                           ("api-ms-win-none.dll", False)):
        module = import_by_text(place("DependentPlugin"), "PluginDependency.dll", name)
        ended = run(module)
        told = f"{name}, which DependentPlugin.dll needs, is missing" in ended.stdout
        assert told != is_there and ended.returncode == 1, name


def DependencyIsNeverRun():
    """Neither one beside the module nor one that the system would find."""
    module = place("DependentPlugin")
    shutil.copyfile(FOLDER / ("HostilePlugin" + EXTENSION), "PluginDependency" + EXTENSION)
    run_of = Checked(module, 1, hostile="load: write marker")
    # It is found, and lacks what the module takes from it: so nothing is loaded.
    run_of.only("symbols", "FAILED", "DependentPlugin").not_loaded()
    assert not os.path.exists("marker"), "code of it ran"


def ManyMissingSymbols():
    """The first sixteen, and how many more."""
    for count, more in ((16, None), (17, "1 more is missing"), (40, "24 more are missing")):
        lost = [f"lost{number:02}" for number in range(count)]
        if IS_WINDOWS:
            forwarding("other.dll", {"there": None})
            forwarding("plugin.dll", {DECORATED: None}, {"other.dll": lost})
        else:
            elf.write("plugin.so", strings="\0".join(lost).encode() + b"\0",
                      symbols=[(7 * number, 0) for number in range(count)], uses=range(count))
        told = [detail for _, detail in failing("plugin" + EXTENSION).of("symbols")]
        assert len(told) >= 16, told
        assert all(f" needs {'' if IS_WINDOWS else 'the symbol '}{name}" in detail
                   for name, detail in zip(lost, told[:16])), told
        assert told[16:] == ([more] if more else []), told


def MissingSymbolVersion():
    if IS_WINDOWS:
        skip("modules for Windows have no symbol versions")
    module = place("RecordingPlugin")
    data = pathlib.Path(module).read_bytes()
    versions = sorted(set(re.findall(rb"GLIBCXX_3\.4\.\d\d(?=\0)", data)))
    other = versions[-1][:-2] + b"99"
    pathlib.Path(module).write_bytes(data.replace(versions[-1] + b"\0", other + b"\0"))
    failing(module).only("symbols", "FAILED", "needs version " + other.decode(),
                         "libstdc++.so.6").not_loaded()


def chain(count):
    """Each needs the next."""
    name = "PluginDependency" + EXTENSION
    made = place("DependentPlugin")
    strip = shutil.which("x86_64-w64-mingw32-strip" if IS_WINDOWS else "strip")
    if strip:
        subprocess.run([strip, made], check=True)
    data = pathlib.Path(made).read_bytes()
    for number in range(count):
        following = f"PluginDepend{number + 1:04}{EXTENSION}"
        file = f"PluginDepend{number:04}{EXTENSION}" if number else made
        pathlib.Path(file).write_bytes(data.replace(name.encode(), following.encode()))
    return made


def ChainOfModules():
    begun = time.monotonic()
    run_of = failing(chain(4200))
    run_of.only("limit", "FAILED", "more than 4096 modules are needed").not_loaded()
    assert time.monotonic() - begun < 60


def CircleOfModules():
    module = place("DependentPlugin")
    renamed_dependency(shutil.copyfile(module, "PluginDependency" + EXTENSION),
                       "PluginDependency" + EXTENSION, "PluginDependency" + EXTENSION)
    run_of = failing(module)
    assert {entry[0] for entry in run_of.of("symbols")} == {"FAILED"}
    assert "PluginDependency" in run_of.of("dependencies")[0][1]


def many_links(count, name_length=12, **content):
    """One file under many names, which needs all of them."""
    names = [f"m{number:04}".ljust(name_length, "x") for number in range(count)]
    elf.write("many.so", needed=names, runpath="$ORIGIN", **content)
    for name in names:
        os.symlink("many.so", name)
    return "many.so"


def measured(module):
    """What a check took: its run, the seconds of its process, the peak of memory in MiB."""
    import resource

    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
    run_of = failing(module)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    seconds, peak = after.ru_utime - before, after.ru_maxrss >> 10
    print(f"{seconds:.2f} s, at most {peak} MiB so far")
    if "HXSSO_INSTRUMENTED" in os.environ:
        seconds, peak = 0, 0
    return run_of, seconds, peak


@apart
def ManySymbolNames():
    """Only what is still looked for is kept, of all modules together."""
    if IS_WINDOWS:
        skip("Wine tells no peak of memory")
    long_name = b"a" * 500 + b"\0"
    run_of, _, peak = measured(many_links(16, strings=long_name, symbols=[(0, 0)] * 130000,
                                          used=130000))
    run_of.only("limit", "FAILED", "with it the modules have more than 64 MiB of names of symbols")
    assert peak < 250, peak


def LongSymbolNames():
    """Told with their names, and beyond a limit as what they are."""
    if IS_WINDOWS:
        skip("the linkers of this system write no names of that length")
    for length in (511, 512, 4000):
        name = b"a" * length
        elf.write("long.so", strings=name + b"\0" + DECORATED.encode() + b"\0",
                  symbols=[(0, 0), (length + 1, 1)], uses=[0])
        failing("long.so").only("symbols", "FAILED",
                                f"needs the symbol {name.decode()}, which no module has")
        # One that has it serves it.
        elf.write("has.so", strings=name + b"\0", symbols=[(0, 1)])
        elf.write("long.so", needed=["has.so"], runpath="$ORIGIN",
                  strings=name + b"\0" + DECORATED.encode() + b"\0",
                  symbols=[(0, 0), (length + 1, 1)], uses=[0])
        assert not Checked("long.so", 1).of("symbols")
    elf.write("long.so", strings=b"a" * 5000 + b"\0", symbols=[(0, 0)], uses=[0])
    failing("long.so").only("limit", "FAILED", "needs a symbol whose name has more than 4095 char")


@apart
def ManyRelocations():
    """A limit over all modules, not only for each table."""
    if IS_WINDOWS:
        skip("modules for Windows are not relocated by name")
    run_of, seconds, _ = measured(many_links(16, relocations=7000000))
    run_of.only("limit", "FAILED", "with it the modules have more than 4000000 symbols and "
                                   "relocations")
    assert seconds < 4, seconds


@apart
def ManyNamesOfModules():
    if IS_WINDOWS:
        skip("Wine tells no peak of memory")
    run_of, _, peak = measured(many_links(600, name_length=240))
    run_of.only("limit", "FAILED", "name more than 32 MiB of modules and folders: the search for "
                                   "what is needed ends there")
    assert peak < 150, peak


@apart
def LongRunPaths():
    """A chain in which each inherits the folders of all before it, and adds the same ones."""
    if IS_WINDOWS:
        skip("modules for Windows have no run path")
    path = ":".join(["/nonexistent/" + "d" * 50] * 63 + ["$ORIGIN"])
    for number in range(400):
        elf.write(f"c{number:04}.so", rpath=path,
                  needed=[f"c{number + 1:04}.so"] if number < 399 else [])
    run_of, seconds, _ = measured("c0000.so")
    run_of.only("dependencies", "ok", "c0399.so")
    assert seconds < 2, seconds
    # Different ones, each with the loader's own variables over and over.
    for number in range(400):
        folders = [f"/nonexistent/{number}/{part}" for part in range(200)]
        elf.write(f"c{number:04}.so", rpath=":".join(folders + ["$ORIGIN" * 4000, "$ORIGIN"]),
                  needed=[f"c{number + 1:04}.so"] if number < 399 else [])
    run_of, seconds, peak = measured("c0000.so")
    run_of.only("limit", "FAILED", "name more than 32 MiB of modules and folders")
    assert seconds < 4 and peak < 150, (seconds, peak)


@apart
def LargeFiles():
    """Read in parts, whatever their size."""
    if IS_WINDOWS:
        skip("Wine tells no peak of memory")
    import resource

    module = place("RecordingPlugin")
    os.truncate(module, 900 << 20)
    Checked(module, 0).only("load", "ok")
    os.unlink("record")
    os.truncate(module, 2 << 30)
    failing(module).only("module", "FAILED", "more than 1 GiB").stops()
    peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
    print(f"peak: {peak} KiB")
    if "HXSSO_INSTRUMENTED" not in os.environ:
        assert peak < 100 << 10


def PipesAndDevices():
    if IS_WINDOWS:
        # Their names are with the unit tests.
        for name in ("NUL", "folder/COM1"):
            failing(name).only("file", "FAILED", " is a device, not a file").stops()
        return
    os.mkfifo("pipe.so")
    failing("pipe.so").only("file", "FAILED", "pipe.so is a pipe").stops()
    os.symlink("/dev/zero", "zero.so")
    failing("zero.so").only("file", "FAILED", "zero.so is a device").stops()
    # As a dependency, too.
    os.mkfifo("PluginDependency.so")
    failing(place("DependentPlugin")).only("dependencies", "FAILED", "PluginDependency.so",
                                           "is a pipe").not_loaded()


def UnsafeNames():
    """What would steer a terminal is spelled, in the text and in the document."""
    unsafe = "\u009b\u202e\u2028\u2066\u00ad\u200b\ufeff"
    if not IS_WINDOWS:
        unsafe += "\x1b\u061c\x7f\u2060"
    for options in ([], ["--json"]):
        ended = run(*options, unsafe + EXTENSION)
        assert ended.returncode == 1
        for unit in unsafe:
            assert unit not in ended.stdout, repr(ended.stdout)
            assert f"\\u{ord(unit):04X}" in ended.stdout, repr(ended.stdout)
    assert json.loads(ended.stdout)["module"].endswith(unsafe + EXTENSION)


# --- Where the loader looks -------------------------------------------------------


def with_run_path(folder, module, run_path):
    """A copy of DependentPlugin whose run path, $ORIGIN, is another one."""
    data = (FOLDER / "DependentPlugin.so").read_bytes()
    old = b"\0$ORIGIN\0"
    assert data.count(old) == 1 and len(run_path) <= 7
    os.makedirs(folder, exist_ok=True)
    path = os.path.join(folder, module)
    pathlib.Path(path).write_bytes(data.replace(old, b"\0" + run_path.encode().ljust(8, b"\0")))
    return path


def found_by_loader(module, environment=None):
    """Whether the system's own loader finds all that it needs."""
    ended = subprocess.run(["timeout", "2", "ldd", module], stdout=subprocess.PIPE, text=True,
                           stderr=subprocess.DEVNULL, check=False,
                           env=dict(os.environ, **(environment or {})))
    return ended.returncode == 0 and "not found" not in ended.stdout


def RunPathsAsTheLoader():
    if IS_WINDOWS:
        skip("modules for Windows have no run path")
    for run_path, place_of in (
        ("$ORIGIN", "plugin"),
        ("$LIB", "lib/x86_64-linux-gnu"),
        ("a:b", "b"),
        ("", "plugin"),
        (":a", "."),
        ("${LIB}", "lib"),
    ):
        for folder in ("plugin", "a", "b", ".", "lib/x86_64-linux-gnu", "lib"):
            shutil.rmtree("case", ignore_errors=True)
            os.makedirs("case")
            here = os.getcwd()
            os.chdir("case")
            module = with_run_path("plugin", "DependentPlugin.so", run_path)
            os.makedirs(folder, exist_ok=True)
            shutil.copyfile(FOLDER / "PluginDependency.so",
                            os.path.join(folder, "PluginDependency.so"))
            expected = found_by_loader(module)
            ended = subprocess.run([os.path.join(here, "program", PROGRAM), module],
                                   stdout=subprocess.PIPE, text=True, check=False)
            os.chdir(here)
            told = "FAILED  dependencies" not in ended.stdout
            assert told == expected, (run_path, folder, expected, ended.stdout)


def ModuleWithoutDefaultFolders():
    """It keeps what the loader's cache has elsewhere."""
    if IS_WINDOWS:
        skip("only the other system has such modules")
    cached = ["unshare", "-m", "sh", "-c", 'mount --bind cache /etc/ld.so.cache && exec "$@"', "sh"]
    os.mkdir("elsewhere")
    dependency = "elsewhere/libplugindepend1.so"
    shutil.copyfile(FOLDER / "PluginDependency.so", dependency)
    # The cache has it by the name that it gives itself.
    renamed_dependency(dependency, "PluginDependency.so", "libplugindepend1.so")
    made = subprocess.run(["/sbin/ldconfig", "-X", "-C", "cache", "-f", "/dev/null",
                           os.path.abspath("elsewhere")], check=False)
    if made.returncode != 0 or subprocess.run([*cached, "true"], check=False).returncode != 0:
        skip("only root can give the loader another cache here")
    needed = subprocess.run(["ldd", FOLDER / "DependentPlugin.so"], stdout=subprocess.PIPE,
                            text=True, check=False).stdout
    if "libasan.so" in needed:
        skip("the sanitizer's own library lies in a default folder")
    for name, is_there in (("libplugindepend1.so", True), ("librt.so.1", False)):
        module = place("DependentPlugin")
        renamed_dependency(module, "PluginDependency.so", name.ljust(19, "\0"))
        for flags, expected in ((0, True), (elf.NODEFLIB, is_there)):
            file = pathlib.Path(module)
            if flags:
                elf.retag(file, elf.FLAGS_1, elf.FLAGS_1, flags)
            listed = subprocess.run([*cached, "ldd", file.absolute()], stdout=subprocess.PIPE,
                                    text=True, check=False).stdout
            assert ("not found" not in listed) == expected, (name, flags, listed)
            told = subprocess.run([*cached, os.path.join("program", PROGRAM), module],
                                  stdout=subprocess.PIPE, text=True, check=False).stdout
            assert ("FAILED  dependencies" not in told) == expected, (name, flags, told)


def UpBehindALink():
    """It leads on from where the link leads, in the name of the file and in a run path."""
    if IS_WINDOWS:
        skip("that system leaves it out of the text")
    os.makedirs("far/below")
    os.symlink("far/below", "link")
    os.rename(place("RecordingPlugin"), "far/Plugin.so")
    Checked("link/../Plugin.so", 0).only("file", "ok", "/link/../Plugin.so").only("load", "ok")
    failing("Plugin.so").only("file", "FAILED", "does not exist")
    failing("nowhere/../far/Plugin.so").only("file", "FAILED", "does not exist")
    Checked("far/./below/../Plugin.so", 0).only("file", "ok", os.getcwd() + "/far/Plugin.so")
    # $ORIGIN is the folder of that name, and so is where a dependency is to be installed.
    os.rename(place("DependentPlugin"), "far/DependentPlugin.so")
    failing("link/../DependentPlugin.so").only("dependencies", "FAILED", "is missing")
    shutil.copyfile(FOLDER / "PluginDependency.so", "far/PluginDependency.so")
    failing("link/../DependentPlugin.so").only("load", "ok")


def forwarding(name, exports, imports=()):
    """A module that has the symbols of others, or none, in the place of its own."""
    data = (FOLDER / "PluginDependency.dll").read_bytes()
    is_x86 = data[machine_offset(data) :][:2] == b"\x4c\x01"
    pe.write(name, name, exports, imports, is_x86)


def dependent_plugin():
    """A plugin and the symbol that it needs of PluginDependency.dll, which Real.dll has."""
    if not IS_WINDOWS:
        skip("modules of this system have no such symbols")
    shutil.copyfile(FOLDER / "PluginDependency.dll", "Real.dll")
    return place("DependentPlugin"), "_Z13UseDependencyv"


def ForwardedSymbols():
    """They are looked for where the loader goes on looking."""
    module, symbol = dependent_plugin()
    begin = f"DependentPlugin.dll needs {symbol} of PluginDependency.dll, which is forwarded "

    def found():
        # It declines, loaded.
        run_of = failing(module).only("dependencies", "ok")
        run_of.only("load", "ok").only("factory", "FAILED", "declines")

    def lost(line):
        failing(module).only("symbols", "FAILED", begin + line).not_loaded()

    forwarding("PluginDependency.dll", {symbol: "Real." + symbol, "Unused": "Gone.Unused"})
    found()
    forwarding("PluginDependency.dll", {symbol: "Re.al." + symbol})
    lost(f"to Re.al.{symbol}, which is not there")
    forwarding("PluginDependency.dll", {symbol: "Gone." + symbol})
    lost(f"to Gone.{symbol}, which is not there")
    forwarding("PluginDependency.dll", {symbol: "Real.Other"})
    lost("to Real.Other, which is not there")
    forwarding("PluginDependency.dll", {symbol: "Real"})
    lost("to Real, which is not there")
    # By a number, and to what the system has.
    for target in ("Real.#1", "kernel32.GetTickCount",
                   "api-ms-win-core-sysinfo-l1-1-0.GetTickCount"):
        forwarding("PluginDependency.dll", {symbol: target})
        found()
    for target in ("Gone.#1", "Real.#77", "api-ms-win-core-nonsense-l1-1-0.CreateFileW"):
        forwarding("PluginDependency.dll", {symbol: target})
        lost(f"to {target}, which is not there")
    # More than once, and without end.
    forwarding("PluginDependency.dll", {symbol: "Middle.One", "Two": "Real." + symbol})
    forwarding("Middle.dll", {"One": "PluginDependency.Two"})
    found()
    forwarding("PluginDependency.dll", {symbol: "Middle.One"})
    forwarding("Middle.dll", {"One": "PluginDependency." + symbol})
    lost("more than 32 times")
    # What stands for it has needs of its own.
    forwarding("Middle.dll", {"One": None}, {"Further.dll": ["Function"]})
    run_of = failing(module)
    run_of.only("dependencies", "FAILED", "Further.dll, which Middle.dll needs, is missing")
    forwarding("Further.dll", {"Other": None})
    failing(module).only("symbols", "FAILED", "Middle.dll needs Function of Further.dll, which "
                         "that one does not have").not_loaded()
    forwarding("Further.dll", {"Function": "Real." + symbol})
    found()


def FunctionsByNumber():
    """A module may take them so, of those that are there."""
    module, symbol = dependent_plugin()
    forwarding("Further.dll", {"One": None, "Two": "Real." + symbol, "Zero": "Gone.Zero"})
    for number, line in (
        (1, ""),
        (2, ""),
        (3, "needs #3 of Further.dll, which is forwarded to Gone.Zero, which is not there"),
        (4, "needs #4 of Further.dll, which that one does not have"),
        (0, "needs #0 of Further.dll, which that one does not have"),
    ):
        forwarding("PluginDependency.dll", {symbol: None}, {"Further.dll": [number]})
        run_of = failing(module)
        if line:
            run_of.only("symbols", "FAILED", "PluginDependency.dll " + line).not_loaded()
        else:
            run_of.only("load", "ok")


def ForwardedFactoryProcedure():
    """The library names no folder any more when it asks for it."""
    if not IS_WINDOWS:
        skip("modules of this system have no such symbols")
    shutil.copyfile(FOLDER / "RecordingPlugin.dll", "Inner.dll")
    forwarding("Outer.dll", {DECORATED: "Inner." + DECORATED},
               {"HxSSOServices.dll": [], RUNTIME_DLL: []})
    lost = failing("Outer.dll").only("export", "ok", DECORATED)
    lost.only("symbols", "FAILED", f"needs {DECORATED} of Outer.dll, which is forwarded to "
              f"Inner.{DECORATED}, which is not there").not_loaded()
    os.rename("Inner.dll", "program/Inner.dll")
    Checked("Outer.dll", 0).only("factory", "ok")
    # Whoever needs it at its start brings it in time.
    os.rename("program/Inner.dll", "Inner.dll")
    forwarding("Outer.dll", {DECORATED: "Inner." + DECORATED},
               {"HxSSOServices.dll": [], RUNTIME_DLL: [], "Inner.dll": [DECORATED]})
    Checked("Outer.dll", 0).only("factory", "ok")


def told_by_check(module):
    ended = run(module)
    return "FAILED  dependencies" not in ended.stdout


def FilesAtWhichTheLoaderStops():
    """What is no file ends its search; what is not there or denied does not."""
    if IS_WINDOWS:
        skip("modules for Windows have no run path")
    first, second = "a/PluginDependency.so", "b/PluginDependency.so"
    module = with_run_path(".", "DependentPlugin.so", "a:b")
    os.mkdir("b")
    shutil.copyfile(FOLDER / "PluginDependency.so", second)
    for make, hint in (
        (lambda: None, ""),
        (lambda: os.mkdir(first), "a is a folder, not a file"),
        (lambda: os.mkfifo(first), "a is a pipe, not a file"),
        (lambda: os.symlink("/dev/null", first), "a is a device, not a file"),
        (lambda: os.symlink("PluginDependency.so", first), "a is a link that leads in a circle"),
        (lambda: os.symlink("/nonexistent", first), ""),
        (lambda: pathlib.Path(first).touch(), "a is no module"),
    ):
        shutil.rmtree("a", ignore_errors=True)
        os.mkdir("a")
        make()
        assert found_by_loader(module) == (hint == ""), hint
        ended = run(module)
        assert ("FAILED  dependencies" in ended.stdout) == (hint != ""), hint
        assert hint == "" or "is missing: the one in " + hint in ended.stdout, hint


def DependencyThatTheLoaderRefuses():
    """A program, of either kind, and what no running process may load: it looks no further."""
    if IS_WINDOWS:
        skip("only the other system marks its modules so")
    module = with_run_path(".", "DependentPlugin.so", "a:b")
    os.mkdir("a")
    os.mkdir("b")
    shutil.copyfile(FOLDER / "PluginDependency.so", "b/PluginDependency.so")
    assert "FAILED  dependencies" not in run(module).stdout
    for content, hint in (
        ({"kind": 2}, "a is a program, not a module"),
        ({"flags": elf.PIE}, "a is a program, not a module"),
        ({"flags": elf.NOOPEN}, "a is for programs that need it at their start alone"),
    ):
        elf.write("a/PluginDependency.so", strings=b"_Z13UseDependencyv\0", symbols=[(0, 1)],
                  **content)
        assert ctypes_refuses(module), content
        run_of = failing(module)
        run_of.only("dependencies", "FAILED", "is missing: the one in " + hint).not_loaded()
    # As the plugin itself.
    elf.write("own.so", strings=DECORATED.encode() + b"\0", symbols=[(0, 1)], flags=elf.NOOPEN)
    failing("own.so").only("module", "FAILED", "for programs that need it at their start").stops()


def ctypes_refuses(module):
    """Whether the system's own loader does, in a process of its own."""
    program = "import ctypes, sys; ctypes.CDLL(sys.argv[1])"
    return subprocess.run([sys.executable, "-c", program, os.path.abspath(module)],
                          stderr=subprocess.DEVNULL, check=False).returncode != 0


def FoldersForTheProcessor():
    """As the loader of this machine has it for its processor."""
    if IS_WINDOWS:
        skip("only the other system has them")
    module = with_run_path(".", "DependentPlugin.so", "a")
    seen = set()
    for folder in ("glibc-hwcaps", "glibc-hwcaps/x86-64-v1", "glibc-hwcaps/x86-64-v2",
                   "glibc-hwcaps/x86-64-v3", "glibc-hwcaps/x86-64-v4", "tls", "x86_64",
                   "tls/x86_64", "x86_64/tls", "haswell", "tls/haswell/avx512_1/x86_64",
                   "haswell/avx512_1", "sse2"):
        shutil.rmtree("a", ignore_errors=True)
        os.makedirs("a/" + folder)
        shutil.copyfile(FOLDER / "PluginDependency.so", f"a/{folder}/PluginDependency.so")
        expected = found_by_loader(module)
        seen.add(expected)
        assert told_by_check(module) == expected, (folder, expected)
    assert seen == {True, False}


def ManyFoldersOfTheEnvironment():
    """All of them count, however many there are."""
    if IS_WINDOWS:
        skip("a program for Windows gets its path from Wine")
    folders = [os.path.abspath(f"f{number}") for number in range(300)]
    for folder in folders:
        os.mkdir(folder)
    shutil.copyfile(FOLDER / "PluginDependency.so", folders[-1] + "/PluginDependency.so")
    module = place("DependentPlugin")
    os.environ["LD_LIBRARY_PATH"] = ":".join(folders)
    failing(module).only("dependencies", "ok", "PluginDependency.so").only("load", "ok")
    del os.environ["LD_LIBRARY_PATH"]


def LibraryPathOfTheEnvironment():
    if IS_WINDOWS:
        skip("LD_LIBRARY_PATH is of the other system")
    os.mkdir("elsewhere")
    module = place("DependentPlugin")
    shutil.copyfile(FOLDER / "PluginDependency.so", "elsewhere/PluginDependency.so")
    failing(module).only("dependencies", "FAILED", "PluginDependency.so")
    for value in ("elsewhere", "/nowhere:elsewhere", "/nowhere;elsewhere"):
        os.environ["LD_LIBRARY_PATH"] = value
        run_of = failing(module)  # it declines, loaded
        run_of.only("dependencies", "ok", "PluginDependency.so").only("load", "ok")
    del os.environ["LD_LIBRARY_PATH"]


def in_its_own_directory(case):
    before, environment = os.getcwd(), dict(os.environ)
    with tempfile.TemporaryDirectory() as directory:
        os.chdir(directory)
        try:
            place_program()
            case()
        finally:
            os.chdir(before)
            os.environ.clear()
            os.environ.update(environment)


def main():
    cases = {
        f"Module.{name}": functools.partial(in_its_own_directory, case)
        for name, case in globals().items()
        if name[0].isupper() and inspect.isfunction(case)
    }
    if IS_ONE:
        return shards.run_one(RUN, cases["Module." + RUN])[0] == "FAILED"
    return shards.run_tests(RUN, sys.argv[2], cases)


if __name__ == "__main__":
    sys.exit(main())
