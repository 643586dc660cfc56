"""The library, the program and what both need: lacking, of another kind, elsewhere."""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

import rig
from harness import elf, line_of, skip


def rename_needed(place, relative, name, other):
    """The file then needs a module of another name, as long as the first one's."""
    data = place.path(relative).read_bytes()
    assert name.encode() + b"\0" in data
    place.replace(relative, data.replace(name.encode() + b"\0", other.encode() + b"\0"))


def LibraryLacksWhatItNeeds(test):
    """Found by reading, named, and nothing is loaded."""
    place = test.whole()
    library = place.path("app/" + test.build.library)
    needed = "libjsoncpp.dll" if test.build.is_windows else "libjsoncpp.so.25"
    gone = needed.replace("json", "jsxn")
    rename_needed(place, "app/" + test.build.library, needed, gone)
    ended = place.diagnose("--load")
    spelled = test.build.spelled(library)
    assert ended.last.startswith(
        f"the library {spelled}: dependencies: {gone}, which {test.build.library} needs, "
        "is missing"), ended.last
    assert not (place.root / "record").exists()
    # The plugin needs the library, and so is told of it too.
    fixes = [line for line in ended.lines if line.startswith("Fix: ") and gone in line]
    assert len(fixes) == 2 and fixes[0] == fixes[1], fixes
    folder = test.build.spelled(place.root / "app") if test.build.is_windows else "/usr/"
    assert fixes[0].startswith(f"Fix: install {gone} in {folder}"), fixes
    # And it is well again where the remedy leads.
    place.place("app/" + test.build.library, test.build.library)
    assert place.diagnose("--load").last == rig.CAN_WORK


def LibraryThatIsNamed(test):
    """Its own dependencies count, and not those of one of its name that the program finds."""
    needed = "libjsoncpp.dll" if test.build.is_windows else "libjsoncpp.so.25"
    gone = needed.replace("json", "jsxn")
    name = test.build.library
    place = test.whole().place("other/" + name, name)
    option = ("--library", test.build.spelled(place.root / "other" / name))
    rename_needed(place, "app/" + name, needed, gone)
    assert f"app/{name}: dependencies: {gone}" in place.diagnose().last
    assert place.diagnose("--load", *option).last == rig.CAN_WORK
    place.place("app/" + name, name)
    rename_needed(place, "other/" + name, needed, gone)
    assert f"other/{name}: dependencies: {gone}" in place.diagnose(*option).last


def LibraryOfAnotherNumber(test):
    """One that is there under another number is not the one that is needed."""
    if test.build.is_windows:
        skip("the library's name there has no number")
    place = test.whole()
    plugin = "server/plugin/RecordingPlugin.so"
    other = test.build.library[:-2] + "99"
    rename_needed(place, plugin, test.build.library, other)
    option = ("--library", str(place.path("app/" + test.build.library)))
    for arguments in ([], option):
        ended = place.diagnose(*arguments)
        assert ended.status == 1 and ended.last.endswith(
            f"dependencies: {other}, which RecordingPlugin.so needs, is missing"), ended.last
    # Its own name serves it under any file name.
    place = test.whole().place("other/renamed.so", test.build.library)
    option = ("--library", str(place.root / "other/renamed.so"))
    assert place.diagnose("--load", *option).last == rig.CAN_WORK


def LibraryThatLacksSymbols(test):
    """What it needs is there under the right name, and is another one."""
    place = test.whole()
    library = "app/" + test.build.library
    if test.build.is_windows:
        place.place("app/libjsoncpp.dll", "PluginDependency.dll")
        lacks = "of libjsoncpp.dll, which that one does not have"
    else:
        data = place.path(library).read_bytes()
        newest = max(re.findall(rb"GLIBCXX_3\.4\.\d\d(?=\0)", data))
        other = newest[:-2] + b"99"
        place.replace(library, data.replace(newest + b"\0", other + b"\0"))
        lacks = f"needs version {other.decode()} of the symbols of libstdc++.so.6"
    ended = place.diagnose()
    assert ended.status == 1 and f"{library}: symbols: " in ended.last, ended.last
    assert lacks in ended.last, ended.last


def move_library(test, place):
    """Where no run path leads; the file as it was, and the folder in which it is now."""
    library = place.path("app/" + test.build.library)
    elsewhere = place.root / "elsewhere"
    elsewhere.mkdir()
    os.rename(library, elsewhere / library.name)
    return library, elsewhere


def LibraryWhereTheLoaderLooks(test):
    if test.build.is_windows:
        skip("programs for Windows have no run path")
    place = test.whole()
    library, elsewhere = move_library(test, place)
    ended = place.diagnose()
    assert ended.status == 1 and f"Fix: install {library.name} in {place.root}/app" in ended.lines
    environment = {"LD_LIBRARY_PATH": f"/nowhere:{elsewhere}"}
    ended = place.diagnose("--verbose", environment=environment)
    assert ended.last == rig.NOT_LOADED
    line_of(ended, "%SSOServicesModulePath%", str(elsewhere))
    # The remedy, followed.
    os.rename(elsewhere / library.name, library)
    assert place.diagnose().last == rig.NOT_LOADED


def PrivilegedProgram(test):
    """One that gets more rights than its user has heeds neither LD_LIBRARY_PATH nor $ORIGIN."""
    if test.build.is_windows:
        skip("programs for Windows have no such rights")
    if os.geteuid() != 0:
        skip("only root can give a program to somebody else")
    place = test.whole()
    library, elsewhere = move_library(test, place)
    environment = {"LD_LIBRARY_PATH": str(elsewhere)}
    program = place.path("app/" + test.build.program)
    place.replace("app/" + test.build.program, program.read_bytes())

    def starts():
        return subprocess.run([program, "nothing"], env=place.environment(environment),
                              capture_output=True, check=False).returncode != 127

    assert starts() and place.diagnose(environment=environment).last == rig.NOT_LOADED
    os.chown(program, 65534, 65534)
    program.chmod(0o4755)
    if starts():
        skip("this file system gives no program more rights")
    ended = place.diagnose(environment=environment)
    assert ended.status == 1 and "is not where" in ended.last, ended.last
    # The run path of the rig's program is $ORIGIN.
    os.rename(elsewhere / library.name, library)
    assert not starts()
    ended = place.diagnose()
    assert ended.status == 1 and "is not where" in ended.last, ended.last


def DependencyByTheProgramsRunPath(test):
    """The older kind of it serves the plugin too, and in the loading process as well."""
    if test.build.is_windows:
        skip("programs for Windows have no run path")
    place = test.installation("plugin-lacks-a-dependency")
    elf.retag(place.path("server/plugin/DependentPlugin.so"), elf.RUNPATH, elf.DEBUG)
    place.place("lib/PluginDependency.so", "PluginDependency.so")
    ended = place.diagnose()
    assert "PluginDependency.so, which DependentPlugin.so needs, is missing" in ended.last
    program = place.path("app/" + test.build.program)
    elf.retag(program, elf.RUNPATH, elf.RPATH)
    ended = place.diagnose("--load", "--verbose")
    line_of(ended, "ok", "load", "loaded")
    assert "the plugin declines" in ended.last, ended.last


def ServerApplicationOnAnotherMachine(test):
    """The name of one is not asked for, wherever an empty entry would lead."""
    if not test.build.is_windows:
        skip("only a name of Windows leads to another machine")
    prefix = os.environ.get("HXSSO_WINEPREFIX",
                            str(pathlib.Path(__file__).resolve().parents[3] / ".deps/wine"))
    place = test.whole()
    if not os.path.isdir(prefix + "/dosdevices"):
        skip("this is not Wine with a prefix of its own")
    # That is where it has the files of other machines.
    machine = pathlib.Path(tempfile.mkdtemp(prefix="hxsso", dir=prefix + "/dosdevices"))
    try:
        other = pathlib.Path(prefix, "dosdevices/unc", machine.name, "share")
        other.mkdir(parents=True)
        (other / "HxSSO.exe").touch()
        name = f"\\\\{machine.name}\\share\\HxSSO.exe"
        server = {"appName": name, "searchPaths": ";{root}/server"}
        place.write("app/SSOClient.config", json.dumps({"ssoServer": server}))
        ended = place.diagnose()
        assert "; it is named on another machine, which is not asked; " in ended.last, ended.last
        line_of(ended, "Fix: write the name of the file alone in ssoServer.appName, and its")
    finally:
        shutil.rmtree(machine)
        shutil.rmtree(pathlib.Path(prefix, "dosdevices/unc", machine.name))


def SymbolsOfTheProgram(test):
    """A plugin may take what the program has loaded, or has itself, and need neither by name."""
    if test.build.is_windows:
        skip("modules for Windows name each one from which they take something")
    place = test.undeclared_dependency()
    ended = place.diagnose()
    assert "needs the symbol UseDependency() [_Z13UseDependencyv], which no module has" in ended.last, ended.last
    # What the program needs by name serves all that is loaded later.
    needed = [test.build.library, "libDependency.so"]
    program = place.path("app/" + test.build.program)
    elf.write(program, needed=needed, runpath="$ORIGIN")
    place.place("app/libDependency.so", "PluginDependency.so")
    for option in ("--load", "--log"):
        ended = place.diagnose(option, "--verbose")
        line_of(ended, "ok", "load", "loaded")
        assert "the plugin declines" in ended.last, ended.last
    # The program itself is not started.
    place.path("app/libDependency.so").unlink()
    elf.write(program, needed=needed[:1], runpath="$ORIGIN", strings=b"_Z13UseDependencyv\0",
              symbols=[(0, 1)])
    assert place.diagnose().status == 0
    ended = place.diagnose("--log", "--verbose")
    assert ended.status == 0 and ended.last == "nothing wrong found; the plugin was not loaded, " \
        "since it takes symbols from the program itself", ended.last
    line_of(ended, "note", "load", "not tried: it takes _Z13UseDependencyv from the program itself")
    # Nor where it takes something from one that takes something from the program.
    middle = place.path("app/libDependency.so")
    elf.write(middle, strings=b"_Z13UseDependencyv\0OfProgram\0", symbols=[(0, 1), (19, 0)],
              uses=[1])
    elf.write(program, needed=needed, runpath="$ORIGIN", strings=b"OfProgram\0", symbols=[(0, 1)])
    ended = place.diagnose("--load", "--verbose")
    assert ended.status == 0, ended.output
    line_of(ended, "note", "load", "not tried: it takes OfProgram from the program itself")
    # And what that one takes from another one has to be there before it.
    elf.write(place.path("app/libFurther.so"), strings=b"OfProgram\0", symbols=[(0, 1)])
    elf.write(program, needed=[*needed, "libFurther.so"], runpath="$ORIGIN")
    ended = place.diagnose("--load", "--verbose")
    line_of(ended, "ok", "load", "loaded")


def SymbolsThatAreNotVisible(test):
    """What a program loads by itself serves only those that name it as needed."""
    if test.build.is_windows:
        skip("modules for Windows name each one from which they take something")
    place = test.installation("plugin-lacks-a-dependency")
    plugin, library, program = (place.path(name) for name in (
        "server/plugin/DependentPlugin.so", "app/" + test.build.library,
        "app/" + test.build.program))
    # Not the build's own modules: a sanitizer would not be loaded so late.
    name = test.build.decorated.encode() + b"\0"
    elf.write(plugin, strings=name + b"Function\0", symbols=[(0, 1), (len(name), 0)], uses=[1])
    mark = b"WebServicesManager::IsInitialized\0"
    elf.write(library, soname=test.build.library, strings=mark + b"Function\0",
              symbols=[(0, 1), (len(mark), 1)])

    def is_visible(load):
        script = f"import ctypes, sys; {load}; ctypes.CDLL(sys.argv[2], mode=2)"
        return subprocess.run([sys.executable, "-c", script, library, plugin],
                              stderr=subprocess.DEVNULL, check=False).returncode == 0

    elf.write(program, runpath="$ORIGIN")
    ended = place.diagnose("--load")
    line_of(ended, "wrong: ", f": symbols: DependentPlugin.so needs the symbol Function, "
            f"which only {test.build.library} has, and DependentPlugin.so does not name that one "
            "as needed")
    assert "not tried" in ended.output, ended.output
    # As the system's loader has it, here in the place of such a program.
    assert not is_visible("ctypes.CDLL(sys.argv[1])")
    assert is_visible("ctypes.CDLL(sys.argv[1], mode=ctypes.RTLD_GLOBAL)")
    elf.write(program, needed=[test.build.library], runpath="$ORIGIN")
    assert "needs the symbol" not in place.diagnose().output
    # Or by what needs it.
    elf.write(program, needed=["libMiddle.so"], runpath="$ORIGIN")
    elf.write(place.path("app/libMiddle.so"), needed=[test.build.library], runpath="$ORIGIN")
    assert "needs the symbol" not in place.diagnose().output
    # Whoever asks for no program asks for one that is linked with the library.
    place.program = ""
    place.replace("doctor/" + test.build.library, library.read_bytes())
    shutil.copy(place.path("app/SSOClient.config"), place.path("doctor"))
    ended = place.diagnose()
    assert "Client plugin " in ended.output and "needs the symbol" not in ended.output, ended.output


def ImportsFromTheProgram(test):
    """A plugin for Windows names the program as any other module."""
    if not test.build.is_windows:
        skip("plugins of this system name no module for what the program has")
    place = test.installation("plugin-lacks-a-dependency")
    # A module whose header says that it is a program, with all that it exports.
    data = bytearray((test.build.folder / "PluginDependency.dll").read_bytes())
    at = int.from_bytes(data[60:64], "little") + 22
    data[at + 1] &= ~0x20
    place.replace("app/PluginDependency.exe", bytes(data))
    place.program = test.build.spelled(place.root / "app/PluginDependency.exe")
    rename_needed(place, "server/plugin/DependentPlugin.dll", "PluginDependency.dll",
                  "PluginDependency.exe")
    assert place.diagnose().status == 0
    for option in ("--load", "--log"):
        ended = place.diagnose(option, "--verbose")
        assert ended.status == 0 and ended.last == "nothing wrong found; the plugin was not " \
            "loaded, since it takes symbols from the program itself", ended.last
        line_of(ended, "note", "load", "not tried: it takes ", "UseDependency",
                " from the program itself, which is not started")


def LibraryForTheOtherSystem(test):
    place = test.whole()
    foreign = b"\x7fELF\x02\x01\x01" + bytes(2000) if test.build.is_windows else b"MZ" + bytes(2000)
    place.replace("app/foreign", foreign)
    ended = place.diagnose("--library", test.build.spelled(place.root / "app/foreign"))
    system = "Linux or its like" if test.build.is_windows else "Windows"
    assert f"app/foreign is a module for {system}" in ended.last, ended.last


def ProgramLacksWhatItNeeds(test):
    """It would not start, whatever the library could do."""
    place = test.whole()
    # On Windows its name tells how the compiler handles exceptions, which differs by machine.
    program = place.path("app/" + test.build.program).read_bytes()
    needed = re.search(rb"libgcc_s[\w.-]*(?=\0)", program)[0].decode()
    gone = needed.replace("gcc", "gxc")
    rename_needed(place, "app/" + test.build.program, needed, gone)
    ended = place.diagnose("--load")
    assert ended.status == 1 and gone in ended.last and "does not start" in ended.last, ended.last


def UndefinedSymbols(test):
    """Of the plugin's own: as they were declared, the first of them in the last line."""
    if test.build.is_windows:
        skip("the linkers of that system refuse them")
    place = test.installation("plugin-lacks-a-dependency")
    plugin = place.path("server/plugin/DependentPlugin.so")
    name = test.build.decorated.encode() + b"\0"
    # A name that doubles itself again and again stays as it is.
    doubled = b"_Z9MissingzzI1AIiiES0_IS1_S1_ES0_IS2_S2_ES0_IS3_S3_EEvv"
    missing = [b"_Z7Missingv", doubled, *(b"_Z9Missing%dv" % number for number in range(20, 58))]

    def diagnose_without(count):
        strings, symbols = name, [(0, 1)]
        for symbol in missing[:count]:
            symbols.append((len(strings), 0))
            strings += symbol + b"\0"
        elf.write(plugin, strings=strings, symbols=symbols, uses=range(1, len(symbols)))
        return place.diagnose()

    # Of whatever number the first sixteen.
    for count in (16, 40, 17):
        ended = diagnose_without(count)
        assert ended.last.endswith(f", which no module has, and {count - 1} more"), ended.last
        assert ended.output.count("needs the symbol") - 2 == 16, ended.output
        if count > 16:
            told = "1 more is missing" if count == 17 else f"{count - 16} more are missing"
            line_of(ended, "FAILED", "symbols", told)
    line_of(ended, "FAILED", "DependentPlugin.so needs the symbol Missing() [_Z7Missingv], which no module has")
    line_of(ended, "FAILED", "DependentPlugin.so needs the symbol Missing20() [_Z9Missing20v], ")
    assert len(ended.last) < 400, ended.last
    # So does one whose packs stand for packs, and one that reads longer than a line.
    packs = b"_Z1fIJ" + b"i" * 250 + b"EEv" + b"Dp1gIJT_" * 8 + b"EE" * 8
    nested = b"_Z1fIJ" + b"i" * 250 + b"EEv1gIX" + b"sp" * 6 + b"T_EE"
    long = b"_Z1fIJ" + b"i" * 950 + b"EEvDp1gIJ" + b"T_" * 8 + b"EE"
    for one in (doubled, packs, nested, long):
        elf.write(plugin, strings=name + one + b"\0", symbols=[(0, 1), (len(name), 0)], uses=[1])
        ended = place.diagnose()
        line_of(ended, "wrong: ", f"needs the symbol {one.decode()}, which no module has")
    line_of(ended, "Fix: link the plugin with what defines it; with hxsso_add_plugin the linker tells")
    # What can be done about one of its own comes before what another module lacks.
    program = place.path("app/" + test.build.program)
    program.unlink()
    elf.write(program, needed=[test.build.library, "libMiddle.so"], runpath="$ORIGIN")
    elf.write(place.path("app/libMiddle.so"), strings=b"Lost\0", symbols=[(0, 0)], uses=[0])
    elf.write(plugin, needed=["libMiddle.so"], strings=name + b"_Z7Missingv\0",
              symbols=[(0, 1), (len(name), 0)], uses=[1])
    ended = place.diagnose()
    line_of(ended, "FAILED", "libMiddle.so needs the symbol Lost, which no module has")
    assert ended.last.endswith("needs the symbol Missing() [_Z7Missingv], which no module has, "
                               "and 1 more"), ended.last
    line_of(ended, "Fix: link the plugin with what defines it; with hxsso_add_plugin the linker tells")


def PluginWithoutItsSymbols(test):
    place = test.installation("plugin-lacks-a-dependency")
    place.place("server/plugin/PluginDependency" + test.build.module,
                "PlainNamePlugin" + test.build.module)
    ended = place.diagnose("--load")
    assert ": symbols: DependentPlugin" in ended.last, ended.last
    assert "not tried" in ended.output
