#!/usr/bin/env python3
"""Installations that were made to harm whoever looks at them."""

import json
import os
import re
import shutil
import subprocess
import tempfile
import time

import pathlib
import sys

import rig
import harness
from harness import COMPATIBILITY, elf, line_of, skip

UNSAFE = [0x1B, 0x7F, 0x9B, 0x85, 0x61C, 0x200E, 0x200F, 0x2028, 0x2029, 0x202E, 0x2066, 0x2069,
          0xAD, 0x200B, 0x2060, 0xFEFF]


def hostile(test):
    """The plugin is one that does what the environment says."""
    place = test.whole()
    name = "server/plugin/RecordingPlugin" + test.build.module
    place.place(name, "HostilePlugin" + test.build.module)
    return place


def PluginThatEndsTheProcess(test):
    """Always a last line, always a whole document, never status 0."""
    place = hostile(test)
    for deed, how in (
        ("load: exit", "the plugin ends the process with exit status 0 while it is loaded"),
        ("factory: exit", "the plugin ends the process with exit status 0 in GetSSOClientFactory"),
        ("factory: abort", "the plugin aborts the process"),
        ("factory: null", "the plugin crashes the process: "),
        ("load: print and exit", "the plugin ends the process with exit status 0 while it is"),
    ):
        # A sanitizer would end a crash in its own way.
        environment = {"HXSSO_HOSTILE": deed, "ASAN_OPTIONS": "handle_segv=0"}
        ended = place.diagnose("--load", environment=environment)
        assert ended.status == 1
        # Wine itself tells of a crash there.
        assert all(line.startswith("wine: ") for line in ended.errors.splitlines()), ended.errors
        assert how in ended.output and "all is well" not in ended.output, ended.output
        ended = place.diagnose("--log", "--json", environment=environment)
        assert ended.status == 1 and not ended.document["verdict"]["canWork"]
        load = ended.document["load"]
        assert load["death"].startswith(how.split(" while")[0].split(" in Get")[0]), load
        assert load["death"].endswith("while the library loads it") and not load["worked"], load
        # What the library said before is not lost.
        assert "Dynamically loading client plugin" in load["log"][-1]["text"] or \
            "Getting factory" in load["log"][-1]["text"], load["log"][-1]


def PluginThatForgesTheReport(test):
    """What it says in the loader's place does not count once it has ended the process."""
    place = hostile(test)
    for deed in ("load: forge and abort", "factory: forge and abort"):
        environment = {"HXSSO_HOSTILE": deed}
        ended = place.diagnose("--load", environment=environment)
        assert ended.status == 1 and "the plugin aborts the process" in ended.output, ended.output
        ended = place.diagnose("--log", "--json", environment=environment)
        assert ended.status == 1 and not ended.document["verdict"]["canWork"]


def OutputThatCannotBeWritten(test):
    if test.build.is_windows:
        skip("only the other system has a device that is always full")
    place = test.whole()
    for options in ([], ["--json"]):
        with open("/dev/full", "w", encoding="utf-8") as full:
            ended = subprocess.run(place.command(*options), cwd=place.root / "work",
                                   env=place.environment(), stdout=full, stderr=subprocess.PIPE,
                                   timeout=100, check=False, text=True)
        assert ended.returncode == 1, ended
        assert "the report cannot be written" in ended.stderr, ended


def WrongUseThatSteers(test):
    ended = test.whole().diagnose("--\x1b]0;title\x07")
    assert ended.status == 2 and "\x1b" not in ended.output + ended.errors


def PluginThatWasNotLoaded(test):
    """Asked for and not tried is told as not loaded."""
    place = test.installation("plugin-lacks-a-dependency")
    verdict = place.diagnose("--load", "--json").document["verdict"]
    assert not verdict["canWork"] and not verdict["pluginWasLoaded"], verdict
    place = hostile(test)
    verdict = place.diagnose("--load", "--json",
                             environment={"HXSSO_HOSTILE": "load: exit"}).document["verdict"]
    assert not verdict["pluginWasLoaded"], verdict
    assert test.whole().diagnose("--load", "--json").document["verdict"]["pluginWasLoaded"]


def FolderThatIsGone(test):
    """The current directory is removed while the doctor stands in it."""
    if test.build.is_windows:
        skip("that system keeps a directory in which a process stands")
    place = test.whole().write("app/SSOClient.config", json.dumps(
        {"ssoServer": {"searchPaths": "{root}/server;;nowhere"}}))
    (place.root / "gone").mkdir()
    script = 'cd "$1" && rmdir "$1" && shift && exec "$@"'
    for option in ("--verbose", "--json"):
        (place.root / "gone").mkdir(exist_ok=True)
        command = place.command("--exe", place.program, option)
        ended = rig.Ended(subprocess.run(
            ["sh", "-c", script, "sh", str(place.root / "gone"), *command],
            env=place.environment(), capture_output=True, timeout=100, check=False))
        assert ended.status == 0 and ended.errors == "", ended.output + ended.errors
        assert "exception" not in ended.output, ended.output


def PluginThatLoopsForEver(test):
    place = hostile(test)
    for option in ("--load", "--log"):
        begun = time.monotonic()
        ended = place.diagnose(option, "--timeout", "1", environment={"HXSSO_HOSTILE": "load: loop"})
        assert ended.status == 1 and time.monotonic() - begun < 30
        assert "does not come back within 1 s while it is loaded" in ended.output
    for value in ("", "0", "x", "-1", "1.5", "99999"):
        assert place.diagnose("--timeout", value).status == 2, value


def PluginThatPrints(test):
    place = hostile(test)
    ended = place.diagnose("--log", "--json", environment={"HXSSO_HOSTILE": "factory: print"})
    assert "all is well" not in ended.output
    checks = {one["check"]: one["result"] for one in ended.document["plugin"]["loadChecks"]}
    assert checks == {"load": "ok", "factory": "FAILED"}, checks


def PipesInTheInstallation(test):
    """Told, not opened: the doctor waits for nobody."""
    if test.build.is_windows:
        skip("only the other system has pipes among its files")
    for relative in ("app/SSOClient.config", COMPATIBILITY, "server/plugin/RecordingPlugin.so",
                     "app/" + test.build.library):
        place = test.whole()
        place.path(relative).unlink()
        os.mkfifo(place.path(relative))
        ended = place.diagnose()
        assert ended.last, relative
        assert ended.status == (0 if relative == "app/SSOClient.config" else 1) or \
            "SSOClient.config" in ended.last, (relative, ended.last)
    place = test.whole().write("app/SSOClient.config", "{}")
    location = "xdg/Halvorix/HxSSO/Location"
    place.path(location).parent.mkdir(parents=True)
    os.mkfifo(place.path(location))
    ended = place.diagnose()
    assert ended.last.endswith("; the file Location of the server application is a pipe, not a file")
    assert "Fix: put a file with the server application's directory in place of " + \
        str(place.path(location)) in ended.lines, ended.output
    # The library stops at the first directory that has one, be it what it may.
    place.write("other/Halvorix/HxSSO/Location", "{root}/server\n")
    environment = {"XDG_CONFIG_DIRS": f"{place.root}/xdg:{place.root}/other"}
    ended = place.diagnose(environment=environment)
    assert ended.last.endswith("; the file Location of the server application is a pipe, not a file")
    place.path(location).unlink()
    os.symlink("Location", place.path(location))
    ended = place.diagnose(environment=environment)
    assert ended.last.endswith("is a link that leads in a circle"), ended.last
    place.path(location).unlink()
    os.symlink("round", place.root / "round")
    environment = {"XDG_CONFIG_DIRS": f"{place.root}/round:{place.root}/other"}
    assert place.diagnose(environment=environment).last == rig.NOT_LOADED


def SettingsOfAnySize(test):
    """Told as what they are, by either file, in little memory."""
    for relative in ("app/SSOClient.config", COMPATIBILITY):
        place = test.whole()
        os.truncate(place.path(relative), 2 << 30)
        ended = place.diagnose()
        line = line_of(ended, ": ", relative, "is larger than 16 MiB, the limit of what is looked at")
        assert line.startswith(("wrong: ", "warning: ")), line
        assert "bad_alloc" not in ended.output and "allow the" not in ended.output, ended.output
        ended = place.diagnose("--json")
        assert ended.document["verdict"]["problems"], ended.output
    if not test.build.is_windows:
        import resource

        place = test.whole().write("app/SSOClient.config", "{}")
        location = place.write("xdg/Halvorix/HxSSO/Location", "").path("xdg/Halvorix/HxSSO/Location")
        os.truncate(location, 17 << 20)
        ended = place.diagnose()
        assert ended.last.endswith("; the file Location of the server application is larger than "
                                   "16 MiB, the limit of what is looked at"), ended.last
        # Where the library does not ask for it, nothing reads it.
        place.path("app/SSOClient.config").unlink()
        os.truncate(location, 2 << 30)
        assert place.diagnose().status == 1
        peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss >> 10
        print(f"peak: {peak} MiB")
        assert peak < 512, peak


def FilesThatKeepTheirReaderWaiting(test):
    """The system calls some of them regular."""
    if test.build.is_windows or not os.access("/proc/kmsg", os.R_OK):
        skip("no such file can be read here")
    for relative in ("app/SSOClient.config", COMPATIBILITY):
        place = test.whole()
        place.path(relative).unlink()
        os.symlink("/proc/kmsg", place.path(relative))
        begun = time.monotonic()
        ended = place.diagnose()
        assert time.monotonic() - begun < 50 and relative in ended.output, ended.output


def TextsThatSteer(test):
    """Names, paths, keys and values with what would steer a terminal or turn a line."""
    place = test.whole()
    row = place.row()

    def told(*options):
        status, output = row.run("--exe", place.program, *options)
        assert status in (0, 1), status
        assert unsafe not in output.decode("utf-8"), (hex(point), output)
        return output

    for point in UNSAFE:
        unsafe = chr(point)
        whole = harness.compatibility(test.whole())
        module = whole["ssoClientPlugin"][0]
        whole["ssoClientPlugin"] = [module | {"module": "a" + unsafe, place.build.path_key: "p" + unsafe,
                                              "k" + unsafe: 1, "version": "9" + unsafe}, module]
        place.write(COMPATIBILITY, json.dumps(whole, ensure_ascii=False))
        config = {"ssoServer": {"searchPaths": "{root}/server;" + unsafe, unsafe: 1}}
        place.write("app/SSOClient.config", json.dumps(config, ensure_ascii=False))
        told()
        assert json.loads(told("--json"))["compatibilityFile"]["file"]
        place.write("app/SSOClient.config", "{" + unsafe + "}")
        told()
        told("--json")
    row.close()


def ManyEntries(test):
    """In time that grows as their number does: eight times as many, not 64 times."""
    if test.build.is_windows:
        skip("Wine tells no time of a process")
    import resource

    def seconds(count, entry):
        place = test.whole()
        whole = harness.compatibility(place)
        whole["ssoClientPlugin"] = [entry] * count + whole["ssoClientPlugin"]
        place.write(COMPATIBILITY, json.dumps(whole, indent=1))
        used = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
        assert place.diagnose("--json").document["compatibilityFile"]["ssoClientPlugin"]["modules"]
        return resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - used

    whole = harness.compatibility(test.whole())["ssoClientPlugin"][0]
    count = 250 if test.build.starts_slowly else 1000
    for entry in (whole | {"version": "0.5"}, whole | {"module": [], "more": 1}, {"version": []}):
        few, many = seconds(count, entry), seconds(8 * count, entry)
        print(f"{count} entries {few:.2f} s, {8 * count} entries {many:.2f} s")
        assert many < 24 * max(few, 0.05), entry


def ManySearches(test):
    """A server application that is not there is searched for again at each variable."""
    place = test.whole()
    place.path("server/HxSSO.exe").unlink()
    whole = harness.compatibility(place)
    whole["ssoClientPlugin"] *= 1000
    place.write(COMPATIBILITY, json.dumps(whole))
    place.write("app/SSOClient.config", json.dumps({"ssoServer": {
        "VersionCompatibilityConfigfilePath": "{root}/server",
        "searchPaths": ";".join(f"{{root}}/{number}" for number in range(1000))}}))
    ended = place.diagnose()
    limit = "looks into more than 200000 directories, the limit of what is looked at"
    assert ended.last == "the choice of the client plugin " + limit
    line_of(ended, "Fix: ", "keeps the server application from being found")
    line_of(ended, "wrong: the server application HxSSO.exe is in none of the directories")
    assert "no client plugin in" not in ended.output
    assert len(ended.problems) < 20, ended.problems


def LogOfAnyLength(test):
    """A line of any length is shown; that the log is too long is not the plugin's fault."""
    place = test.whole()
    names = [f"{{root}}/{number:0200}" for number in range(2000)]
    place.write("app/SSOClient.config", json.dumps({"ssoServer": {
        "VersionCompatibilityConfigfilePath": "{root}/server",
        "searchPaths": ";".join(["{root}/server"] + names)}}))
    ended = place.diagnose("--log")
    assert ended.last == "sign-in can work"
    assert f"/{1999:0200}" in ended.output[ended.output.index("The library's log of a load"):]
    if test.build.is_windows:
        return  # where the rest takes half a minute; the limit is the same code
    place.path("server/HxSSO.exe").unlink()
    whole = harness.compatibility(place)
    for key in ("modulePath", "modulePathWoW64"):
        whole["ssoClientPlugin"][0][key] = "{root}/server/plugin" + "%SSOServerAppPath%" * 8
    place.write(COMPATIBILITY, json.dumps(whole))
    ended = place.diagnose("--log")
    line_of(ended, "wrong: the load writes more than 4 MiB of log, the limit of what is shown")
    assert "the plugin " not in ended.last, ended.last


def ManyOddities(test):
    """A thousand are told, and how many more there are; what stops the library always is."""
    place = test.whole()
    keys = {f"k{number}": 1 for number in range(20000)}
    place.write("app/SSOClient.config", json.dumps(
        {"ssoServer": {**keys, "VersionCompatibilityConfigfilePath": "{root}/server",
                       "searchPaths": "{root}/server", "appName": []}}))
    ended = place.diagnose("--json")
    assert ended.document["verdict"]["line"].startswith("the client configuration cannot be read: ")
    oddities = ended.document["clientConfig"]["oddities"]
    assert len(oddities) == 1002, len(oddities)
    assert oddities[-1]["text"] == "is one of 19000 more, which are not told", oddities[-1]


def LongExpansions(test):
    """A short text may have a variable in it thousands of times."""
    place = test.whole()
    whole = harness.compatibility(place)
    for key in ("modulePath", "modulePathWoW64"):
        whole["ssoClientPlugin"][0][key] = "%ExePath%" * 100000
    whole["ssoClientPlugin"] *= 5
    place.write(COMPATIBILITY, json.dumps(whole))
    ended = place.diagnose()
    assert ended.last == "the choice of the client plugin fills in variables with more than " \
        "4 Mi characters, the limit of what is looked at", ended.last
    assert len(ended.output) < 100000


def ManyValues(test):
    """Told as what they are by a line that names the limit, in little time and memory."""
    if test.build.is_windows:
        skip("Wine tells no time of a process")
    import resource

    for what, limit in (("{}," * 1000000, "300000 values"), ("1," * 1500000, "300000 values"),
                        ("{}," * 290000, "40000 entries of ssoClientPlugin"),
                        ("1," * 290000, "40000 entries of ssoClientPlugin")):
        place = test.whole().write(COMPATIBILITY, '{"ssoClientPlugin": [' + what + "1]}")
        used = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
        ended = place.diagnose()
        used = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - used
        line_of(ended, "wrong: ", f"{COMPATIBILITY} has more than {limit}, the limit of what is")
        assert "Fix: put the right file there, or install the file again" in ended.lines
        peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss >> 10
        print(f"{used:.2f} s, {peak} MiB, {len(ended.output)} characters")
        assert used < 60 and peak < 800 and len(ended.output) < 10000, (used, peak)
    place = test.whole().write("app/SSOClient.config", '{"a": [' + "1," * 400000 + "1]}")
    line_of(place.diagnose(), "wrong: ", "app/SSOClient.config has more than 300000 values")
    for paths, limit in ((";".join(map(str, range(45000))), "40000 semicolons"),
                         ("x" * 15000000, "1 MiB in one text")):
        place = test.whole().write("app/SSOClient.config",
                                   json.dumps({"ssoServer": {"searchPaths": paths}}))
        problems = place.diagnose("--json").document["verdict"]["problems"]
        text = f"app/SSOClient.config has more than {limit}, the limit of what is looked at"
        assert any(text in problem["text"] for problem in problems), problems
        peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss >> 10
        print(f"{limit}: {peak} MiB")
        assert peak < 800, peak


def FolderOfManySpellings(test):
    """Each folder is listed once."""
    if test.build.is_windows:
        skip("Wine tells no time of a process")
    import resource

    place = test.whole()
    (place.root / "many").mkdir()
    for number in range(10000):
        (place.root / f"many/{number}").touch()
    (place.root / "many/hxsso.EXE").touch()

    def seconds(count):
        paths = ";".join("{root}/many" + "/../many" * number for number in range(count))
        place.write("app/SSOClient.config", json.dumps({"ssoServer": {"searchPaths": paths}}))
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        ended = place.diagnose()
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        assert "Fix: rename it to HxSSO.exe" in ended.lines, ended.output
        return after.ru_utime + after.ru_stime - used.ru_utime - used.ru_stime

    few, many = seconds(1), seconds(200)
    print(f"1 spelling {few:.2f} s, 200 spellings {many:.2f} s")
    assert many < few + 4


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


if __name__ == "__main__":
    harness.run(globals())
