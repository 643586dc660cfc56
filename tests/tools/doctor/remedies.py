"""What the doctor says that one should do: it helps when it is done."""

import json
import os
import shutil
import subprocess

import rig
import harness
from harness import COMPATIBILITY, elf, line_of, skip


def FilesAtWhichTheSearchEnds(test):
    """Where one of them is the cause, a module that is installed elsewhere changes nothing."""
    dependency = "PluginDependency" + test.build.module
    place = test.installation("plugin-lacks-a-dependency")
    place.place("server/plugin/" + dependency, dependency)
    # A sanitizer needs more modules, none of which lies there.
    environment = {} if test.build.is_windows else {"LD_LIBRARY_PATH": str(place.root / "first")}
    first = ("app/" if test.build.is_windows else "first/") + dependency
    place.write(first, "text")
    file = test.build.spelled(place.path(first))
    ended = place.diagnose("--load", environment=environment)
    assert f"{dependency}, which DependentPlugin{test.build.module} needs, is missing: the one in " \
        in ended.last, ended.last
    line_of(ended, "Fix: remove or replace " + file)
    place.path(first).unlink()
    assert "the plugin declines" in place.diagnose("--load", environment=environment).last


def DependencyBehindTheBuildsRunPath(test):
    """The folder beside the plugin, and not the first one, which only the build's machine has."""
    if test.build.is_windows:
        skip("modules for Windows have no run path")
    place = test.installation("plugin-lacks-a-dependency")
    plugin = place.path("server/plugin/DependentPlugin.so")
    elf.write(plugin, needed=["libhelper.so"], runpath="/home/builder/lib:$ORIGIN",
              strings=test.build.decorated.encode() + b"\0", symbols=[(0, 1)])
    ended = place.diagnose()
    line_of(ended, f"Fix: install libhelper.so beside the plugin, in {place.root}/server/plugin")
    # As it helps.
    elf.write(plugin.with_name("libhelper.so"))
    assert "libhelper.so, which" not in place.diagnose().output


def DependencyThatMayNotBeRead(test):
    if test.build.is_windows:
        skip("Wine denies root nothing")
    place = test.installation("plugin-lacks-a-dependency")
    name = "server/plugin/PluginDependency.so"
    place.place(name, "PluginDependency.so")
    place.replace(name, place.path(name).read_bytes())  # not that of the build
    place.deny(name)
    with place:
        ended = place.diagnose("--load")
        assert "server/plugin cannot be opened: Permission denied" in ended.last, ended.last
        line_of(ended, f"Fix: allow the program's user to read {place.path(name)}")
        place.path(name).chmod(0o644)
        assert "the plugin declines" in place.diagnose("--load").last


def LinksToNothing(test):
    if test.build.is_windows:
        skip("links are rare there")
    for case, name in (
        ("nothing-is-wrong", "app/SSOClient.config"),
        ("nothing-is-wrong", COMPATIBILITY),
        ("nothing-is-wrong", "server/plugin/RecordingPlugin.so"),
        ("nothing-is-wrong", "app/" + test.build.library),
        ("nothing-is-wrong", "server/HxSSO.exe"),
        ("plugin-lacks-a-dependency", "server/plugin/PluginDependency.so"),
    ):
        place = test.installation(case)
        file = place.path(name)
        file.unlink(missing_ok=True)
        file.symlink_to("/nowhere/x")
        ended = place.diagnose("--load")
        assert ended.status == 1, ended.output
        assert " is a link to /nowhere/x, which does not exist" in ended.last, (name, ended.last)
        # The plugin may need the library, too.
        assert f"Fix: correct the link {file}" in ended.lines, ended.output
        # Over others it is the last one that is to be corrected.
        file.unlink()
        file.symlink_to("../first" if name.count("/") == 1 else "../../first")
        (place.root / "first").symlink_to("last")
        (place.root / "last").symlink_to("/nowhere/x")
        ended = place.diagnose("--load")
        last = next(line.rsplit(" ", 1)[1] for line in ended.lines if "Fix: correct the" in line)
        assert os.path.normpath(last) == f"{place.root}/last", ended.output
        assert f" is a link that leads to {last}, a link to /nowhere/x, which does not exist" \
            in ended.last, (name, ended.last)
    # A directory behind it may have another one.
    place = test.installation("nothing-is-wrong")
    place.write("app/SSOClient.config", "{}")
    location = place.root / "xdg/Halvorix/HxSSO/Location"
    location.parent.mkdir(parents=True)
    location.symlink_to("/nowhere/x")
    ended = place.diagnose()
    assert ended.last.endswith("; the file Location of the server application is a link to "
                               "/nowhere/x, which does not exist"), ended.last
    line_of(ended, f"Fix: correct the link {location}")
    place.write("more/Halvorix/HxSSO/Location", "{root}/server\n")
    directories = {"XDG_CONFIG_DIRS": f"{place.root}/xdg:{place.root}/more"}
    assert place.diagnose(environment=directories).last == rig.NOT_LOADED
    # The program does not look for its executable before somebody signs in.
    place = test.installation("nothing-is-wrong")
    config = place.path("app/SSOClient.config")
    settings = json.loads(config.read_text())
    settings["ssoServer"]["exeName"] = "Other.exe"
    place.write("app/SSOClient.config", json.dumps(settings))
    (place.root / "server/Other.exe").symlink_to("/nowhere/x")
    ended = place.diagnose("--load")
    assert ended.last.endswith("server/Other.exe is a link to /nowhere/x, which does not exist")
    line_of(ended, f"Fix: correct the link {place.root}/server/Other.exe")


def NamesOfDevices(test):
    """What is there under such a name is no link."""
    if not test.build.is_windows:
        skip("no name is that of a device there")
    place = test.whole()
    server = {"appName": "LPT1", "searchPaths": "{root}/server"}
    place.write("app/SSOClient.config", json.dumps({"ssoServer": server}))
    ended = place.diagnose()
    assert ended.last.startswith("the server application LPT1 is in none"), ended.last
    assert "link" not in ended.output, ended.output
    place = test.whole()
    whole = harness.compatibility(place)
    whole["ssoClientPlugin"][0]["module"] = "LPT1"
    place.write(COMPATIBILITY, json.dumps(whole))
    ended = place.diagnose()
    assert ended.last.endswith("server/plugin/LPT1 does not exist"), ended.last
    assert "link" not in ended.output, ended.output


def VersionThatIsTrue(test):
    place = test.whole()
    whole = harness.compatibility(place)
    for value, fix in (
        (True, 'write a version in quotes, such as "10.22"'),
        (11.5, 'write it in quotes: "11.5"'),
    ):
        whole["ssoClientPlugin"][0]["compatibleSsoServicesVersion"] = {"minVersion": value}
        place.write(COMPATIBILITY, json.dumps(whole))
        ended = place.diagnose()
        assert ended.status == 1 and "Fix: " + fix in ended.lines, ended.output


def NamesThatAreNone(test):
    place = test.whole()
    for name, what, fix in (
        ("HxSSO.exe/", 'ends in a slash, as no file\'s name does: "HxSSO.exe/"', "remove the slash"),
        ('"HxSSO.exe"', 'has quotation marks, which count as part of the name: "HxSSO.exe"',
         "remove the quotation marks within the text"),
        ("%ExePath%HxSSO.exe",
         'has a variable, which stays as text in a name: "%ExePath%HxSSO.exe"',
         "write the name of the file alone, and its folder where folders are named"),
        ("HxSSO.exe\u00a0", 'ends in a blank: "HxSSO.exe\u00a0"', "remove the blank"),
    ):
        server = {"appName": name, "searchPaths": "{root}/server"}
        place.write("app/SSOClient.config", json.dumps({"ssoServer": server}))
        ended = place.diagnose()
        assert ended.status == 1 and "; ssoServer.appName " + what in ended.last, ended.last
        assert "Fix: " + fix in ended.lines, ended.output
    # Percent signs make no variable of what the library does not know.
    os.rename(place.path("server/HxSSO.exe"), place.path("server/%%50%a%.exe"))
    server = {"appName": "%%50%a%.exe", "searchPaths": "{root}/server"}
    place.write("app/SSOClient.config", json.dumps({"ssoServer": server}))
    assert "has a variable" not in place.diagnose().output


def LineFeedInAPath(test):
    place = test.whole()
    place.write("app/SSOClient.config", '{"ssoServer": {"searchPaths": "{root}/server\n"}}')
    ended = place.diagnose()
    assert "ssoServer.searchPaths holds a line feed" in ended.last, ended.last
    fix, = {line for line in ended.lines if line.startswith("Fix: write each backslash")}
    assert fix.endswith("; if there is no backslash, remove the line feed"), fix


def FilesThatMayNotBeRead(test):
    """A program may be started that cannot be read; the library is of no use then."""
    if test.build.is_windows:
        skip("Wine denies root nothing")
    for name, fix in (
        ("app/" + test.build.program, "allow the user of this doctor to read "
         "{root}/app/{program}, whether or not that of the program needs to"),
        ("app/" + test.build.library, "allow the program's user to read {root}/app/{library}"),
    ):
        place = test.whole()
        place.replace(name, place.path(name).read_bytes())  # not that of the build
        place.deny(name)
        with place:
            place.path(name).chmod(0o111)
            ended = place.diagnose()
            assert ended.last.endswith(name + " cannot be opened: Permission denied"), ended.last
            assert "Fix: " + place.filled(fix) in ended.lines, ended.output


def FoldersThatMayNotBeEntered(test):
    """What is said of a link's own folder is of no use then."""
    if test.build.is_windows:
        skip("Wine denies root nothing")
    place = test.whole()
    library = "app/" + test.build.library
    place.replace("closed/file", place.path(library).read_bytes())
    place.path(library).unlink()
    place.path(library).symlink_to("../closed/file")
    place.deny("closed")
    with place:
        ended = place.diagnose()
        assert ended.status == 1, ended.output
        assert ended.last.endswith("app cannot be opened: Permission denied"), ended.last
        line_of(ended, f"Fix: allow the program's user to read {place.path(library)} and to enter "
                "the folders that lead to it")
        place.path("closed").chmod(0o711)
        assert place.diagnose().last == rig.NOT_LOADED
    place = test.installation("location-holds-the-server-application")
    place.deny("xdg/Halvorix")
    with place:
        ended = place.diagnose()
        line_of(ended, f"Fix: allow the program's user to read {place.root}/xdg/Halvorix/HxSSO/"
                "Location and to enter the folders that lead to it")


def FilesThatAreHeld(test):
    """No right of anybody's opens them."""
    if not test.build.is_windows:
        skip("a file is held from nobody there")
    for name in ("app/" + test.build.program, "app/" + test.build.library):
        place = test.whole()
        place.replace(name, place.path(name).read_bytes())  # not that of the build
        file = test.build.spelled(place.path(name))
        with subprocess.Popen([*test.build.emulator, test.build.folder / "file-holder.exe", file],
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE) as holder:
            assert holder.stdout.readline().strip() == b"held"
            ended = place.diagnose()
            holder.stdin.close()
        assert ended.status == 1, ended.output
        assert f"{name} cannot be opened: " in ended.last, ended.last
        assert "Fix: end what holds the file " + file in ended.lines, ended.output


def SettingsUnderOtherNames(test):
    place = test.whole()
    config = place.path("app/SSOClient.config")
    os.rename(config, str(config) + ".json")
    ended = place.diagnose()
    assert ended.status == 1 and ended.last.endswith(
        "app/SSOClient.config.json is not read: its name ends in .json"), ended.last
    line_of(ended, "Fix: rename it to SSOClient.config")
    # One that was put away on purpose is not missed.
    os.rename(str(config) + ".json", config)
    shutil.copy(config, str(config) + ".bak")
    assert place.diagnose().problems == [rig.NOT_LOADED]
