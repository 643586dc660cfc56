"""Installations that were made to harm whoever looks at them."""

import json
import os
import subprocess
import time

import rig
import harness
from harness import COMPATIBILITY, apart, line_of, skip

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


@apart
def SettingsOfAnySize(test):
    """Told as what they are, by either file, in little memory."""
    test.row = None  # the system tells what a process took when it has ended
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

    def told(*options):
        ended = place.in_a_row("--exe", place.program, *options)
        assert ended.status in (0, 1) and ended.errors == "", (ended.status, ended.errors)
        assert unsafe not in ended.output, (hex(point), ended.output)
        return ended.bytes

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


def FolderOfManySpellings(test):
    """Each folder is listed once."""
    test.row = None
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
