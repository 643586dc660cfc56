#!/usr/bin/env python3
"""doctor.py TEST FOLDER [EMULATOR...]

hxsso-doctor from FOLDER, in what its command line and its reports promise."""

import hashlib
import json
import os
import pathlib
import random
import sys
import tempfile

sys.dont_write_bytecode = True
import rig  # noqa: E402

CASES = pathlib.Path(__file__).resolve().parent / "cases"
SCHEMA = pathlib.Path(__file__).resolve().parents[2] / "docs/schemas/doctor.schema.json"


def skip(reason):
    print("skipped:", reason)
    sys.exit(rig.SKIPPED)


class Test:
    def __init__(self, build, directory):
        self.build = build
        self.directory = pathlib.Path(directory)
        self.count = 0

    def installation(self, case=None):
        """One of a case; what it is started with is remembered."""
        self.count += 1
        made = rig.Installation(self.build, self.directory / str(self.count))
        made.arguments = made.set_up(CASES / case) if case else []
        return made

    def whole(self):
        return self.installation("nothing-is-wrong")

    def schema(self):
        try:
            import jsonschema
        except ImportError:
            skip("python3-jsonschema is not installed; scripts/setup native installs it")
        document = json.loads(SCHEMA.read_text())
        validator = jsonschema.Draft202012Validator
        validator.check_schema(document)
        return validator(document)


def tree(root):
    """All files with their content; what the plugin of the rig writes down apart."""
    return {
        str(file.relative_to(root)): hashlib.sha256(file.read_bytes()).hexdigest()
        for file in sorted(root.rglob("*"))
        if file.is_file() and file.name not in ("record", "script")
    }


def said(ended, *texts):
    for text in texts:
        assert text in ended.output, f"{text!r} is not in:\n{ended.output}"
    return ended


def line_of(ended, *parts):
    """The line that has all of these."""
    found = [line for line in ended.lines if all(part in line for part in parts)]
    assert len(found) == 1, f"{len(found)} lines with {parts} in:\n{ended.output}"
    return found[0]


# --- The command line ---------------------------------------------------------------


def WrongUse(test):
    place = test.whole()
    program = test.build.spelled(place.root / "app" / test.build.program)
    for arguments in (
        ["--nonsense"],
        ["something"],
        [""],
        ["--exe"],
        ["--exe", ""],
        ["--exe", program, "--exe", program],
        ["--exe", program + ".not"],
        ["--exe", test.build.spelled(place.root / "app")],
        ["--library", program + ".not"],
        ["--config"],
        ["--search"],
        ["--help", "--nonsense"],
    ):
        ended = place.run(*arguments)
        assert ended.status == 2, arguments
        assert ended.output == "" and ended.errors.startswith("hxsso-doctor: "), arguments
        assert "usage: hxsso-doctor" in ended.errors


def Help(test):
    ended = test.whole().run("--help")
    assert ended.status == 0 and ended.errors == "" and ended.output.startswith("usage:")
    said(ended, "--exe", "--library", "--config", "--search", "--load", "--json", "Exit status")
    said(ended, "--log", "Executes the plugin")


def WithoutExeLooksAtItsOwnFolder(test):
    place = test.whole()
    for file in (place.root / "app").iterdir():
        (place.root / "doctor" / file.name).write_bytes(file.read_bytes())
    ended = place.run()
    assert ended.last == rig.CAN_WORK and ended.status == 0
    line_of(ended, "%ExePath%", test.build.spelled(place.root / "doctor"))


def LibraryElsewhere(test):
    place = test.whole()
    elsewhere = place.root / "elsewhere"
    elsewhere.mkdir()
    library = elsewhere / test.build.library
    os.rename(place.root / "app" / test.build.library, library)
    assert place.diagnose().status == 1
    ended = place.diagnose("--library", test.build.spelled(library))
    assert ended.last == rig.CAN_WORK
    line_of(ended, "%SSOServicesModulePath%", test.build.spelled(elsewhere))


def LibraryByRunPath(test):
    if test.build.is_windows:
        skip("programs for Windows have no run path")
    place = test.whole()
    place.place("app/host", "host")
    (place.root / "lib").mkdir()
    os.rename(place.root / "app" / test.build.library, place.root / "lib" / test.build.library)
    ended = place.run("--exe", str(place.root / "app/host"))
    assert ended.last == rig.CAN_WORK
    line_of(ended, "%SSOServicesModulePath%", str(place.root / "lib"))


def ConfigOverride(test):
    place = test.whole()
    moved = place.root / "settings.json"
    os.rename(place.root / "app/SSOClient.config", moved)
    assert place.diagnose().status == 1
    ended = place.diagnose("--config", test.build.spelled(moved))
    assert ended.last == rig.CAN_WORK
    line_of(ended, "named by the program", "settings.json")


def SupportFileSearchPaths(test):
    place = test.whole()
    (place.root / "support").mkdir()
    os.rename(place.root / "app/SSOClient.config", place.root / "support/SSOClient.config")
    ended = place.diagnose("--search", "%Nonsense%;;%ExePath%/../support")
    assert ended.last == rig.CAN_WORK
    line_of(ended, "    %Nonsense%", "%Nonsense% stays as text")
    line_of(ended, "/app/../support  found")


# --- What is told -------------------------------------------------------------------


def TellsTheWholeRoad(test):
    ended = test.whole().diagnose()
    said(ended, "10.22.00.1800", "Known folders", "%ProgramFiles%", "%LocalAppData%")
    line_of(ended, "ssoServer.searchPaths", "/server", "(file, line 3, column 9)")
    line_of(ended, "ssoServer.serverName", "Halvorix.SSO.DefaultServer-v2", "(default)")
    line_of(ended, "ssoServer.bundleId", "(not set)")
    line_of(ended, "1. RecordingPlugin", "version 1.0", "from 10.22, up to 10.22.00.1800", "chosen")
    said(ended, "%SSOServerAppPath%/plugin -> ")
    line_of(ended, "ok", "export", test.build.decorated)
    line_of(ended, "openssl/openssl" + test.build.module + "  is there")


def EachEntryHasItsVerdict(test):
    place = test.whole()
    fits = {"minVersion": "10.22"}
    entries = [
        ("Low", "1.0", fits, "fits-lower-version"),
        ("High", "4.0", {"minVersion": "11"}, "below-minimum"),
        ("Best", "3.0", fits, "chosen"),
        ("Twin", "3.0", fits, "fits-later-in-file"),
        ("Old", "5.0", {"maxVersion": "10.21"}, "above-maximum"),
        ("Listed", "5.0", {"versions": ["10.21"]}, "not-listed"),
        ("", "5.0", fits, "ignored"),
        ("NoRange", "5.0", None, "ignored"),
    ]
    objects = [
        {"module": module, "modulePath": "%ExePath%", "version": version}
        | ({"compatibleSsoServicesVersion": bounds} if bounds else {})
        for module, version, bounds, _ in entries
    ]
    objects += [None, {"module": "Other", "modulePathWoW64": "x"}]
    content = {"ssoClientPlugin": objects, "openssl": objects}
    place.write("server/SSOVersionCompatibility.config", json.dumps(content))
    wanted = [verdict for *_, verdict in entries] + ["null", "no-path-for-process"]
    document = place.diagnose("--json").document
    for key in ("ssoClientPlugin", "openssl"):
        rows = document["compatibilityFile"][key]["modules"]
        assert [row["verdict"] for row in rows] == wanted
        assert [row["number"] for row in rows] == list(range(1, 11))
    assert document["plugin"]["file"].endswith("/app/Best")
    ended = place.diagnose()
    assert "3. Best" in ended.output and ended.output.count("chosen, file missing on disk") == 2


def OverriddenOpenSsl(test):
    place = test.whole()
    config = {"ssoServer": {"searchPaths": "{root}/server"}}
    config["openssl"] = {"moduleName": "crypto.x", "modulePath": "%ExePath%/ssl"}
    place.write("app/SSOClient.config", json.dumps(config)).write("app/ssl/crypto.x", "")
    document = place.diagnose("--json").document
    assert document["opensslModule"]["isOverride"] and document["opensslModule"]["exists"]
    rows = document["compatibilityFile"]["openssl"]["modules"]
    assert [row["verdict"] for row in rows] == ["fits-overridden"]


def ParseErrorPosition(test):
    place = test.whole()
    content = '{\n  "ssoServer": {\n    "appName": "Zoë"; "exeName": "x"\n  }\n}\n'
    for file, name in (
        ("app/SSOClient.config", "clientConfig"),
        ("server/SSOVersionCompatibility.config", "compatibilityFile"),
    ):
        broken = test.whole().write(file, content.replace("\n", "\r\n"))
        ended = broken.diagnose()
        said(ended, file, "line 3, column 21: Missing ',' or '}' in object declaration")
        assert '  |     "appName": "Zoë"; "exeName": "x"' in ended.lines
        error = broken.diagnose("--json").document[name]["parseError"]
        assert error["position"] == {"line": 3, "column": 21}
        assert error["text"] == '    "appName": "Zoë"; "exeName": "x"'
    assert place.diagnose("--json").document["clientConfig"]["parseError"] is None


def UnknownKeys(test):
    place = test.whole()
    config = '{\n "ssoServer": {"searchPaths": "{root}/server",\n  "SEARCHPATHS": 1},\n "more": {}\n}'
    place.write("app/SSOClient.config", config)
    ended = place.diagnose()
    assert ended.last == rig.CAN_WORK
    line_of(ended, "line 3, column 3: ssoServer.SEARCHPATHS: ignored: the key is written")
    line_of(ended, "line 4, column 2: more: no key of this file, ignored")


def Location(test):
    """What stands in the registry on Windows."""
    if test.build.is_windows:
        skip("it would change the registry of every other test")
    place = test.whole().write("app/SSOClient.config", "{}")
    assert place.diagnose().status == 1
    place.write("xdg/Halvorix/HxSSO/Location", "{root}/server\n")
    ended = place.diagnose()
    assert ended.last == rig.CAN_WORK
    line_of(ended, "ssoServer.searchPaths", "/server", "(registry)")


def FileOfTheWorkingDirectory(test):
    place = test.whole()
    os.rename(place.root / "app/SSOClient.config", place.root / "work/SSOClient.config")
    ended = place.diagnose()
    assert ended.last == rig.CAN_WORK
    line_of(ended, "warning", "found in the current directory alone")


def CircularDirectory(test):
    if test.build.is_windows:
        skip("links that lead in a circle are not made there")
    place = test.whole()
    os.symlink("circle", place.root / "app/circle")
    config = '{"ssoServer": {"searchPaths": "%ExePath%/circle;{root}/server"}}'
    place.write("app/SSOClient.config", config)
    ended = place.diagnose()
    assert ended.status == 1 and "with an exception" in ended.last, ended.last
    line_of(ended, "/app/circle", "cannot be looked at")


def LibraryOfOtherVersion(test):
    place = test.whole()
    library = place.root / "app" / test.build.library
    if test.build.is_windows:
        wanted, other = ("10.22.0.1800".encode("utf-16-le"), "10.23.0.1801".encode("utf-16-le"))
        content = library.read_bytes()
        assert wanted in content
        library.write_bytes(content.replace(wanted, other))
    else:
        os.rename(library, place.root / "app/libHxSSOServices.so.10.23.0.1801")
        os.symlink("libHxSSOServices.so.10.23.0.1801", library)
    ended = place.diagnose()
    assert ended.last == rig.CAN_WORK
    line_of(ended, "warning", "is version 10.23.0.1801, and this doctor speaks for 10.22.0.1800")
    ours = test.whole().diagnose("--json").document["library"]["fileVersion"]
    assert ours == ("10.22.0.1800" if test.build.is_windows else None)


def NamesBeyondAscii(test):
    place = test.whole()
    folder = place.root / "Zoë €"
    os.rename(place.root / "app", folder)
    program = test.build.spelled(folder / test.build.program)
    ended = place.run("--exe", program)
    assert ended.last == rig.CAN_WORK
    line_of(ended, "%ExePath%", test.build.spelled(folder))
    document = place.run("--exe", program, "--json").document
    assert document["program"]["executable"] == program


def ListThatAnOverrideKeepsUnread(test):
    place = test.whole()
    config = {"ssoServer": {"searchPaths": "{root}/server"}}
    config["openssl"] = {"moduleName": "crypto.x", "modulePath": "%ExePath%"}
    place.write("app/SSOClient.config", json.dumps(config)).write("app/crypto.x", "")
    file = "server/SSOVersionCompatibility.config"
    whole = json.loads(place.path(file).read_text(encoding="utf-8"))
    for openssl in ({"a": 1}, [{"module": []}, 7], [{"module": "x", "modulePath": "y", "version": []}]):
        place.write(file, json.dumps(whole | {"openssl": openssl}))
        ended = place.diagnose("--log")
        assert ended.last == rig.CAN_WORK, ended.last
        assert "ends the reading" not in ended.output
        oddities = place.diagnose("--json").document["compatibilityFile"]["oddities"]
        assert not any(oddity["stopsReading"] for oddity in oddities)
        # The other list is read all the same.
        place.write(file, json.dumps(whole | {"openssl": openssl, "ssoClientPlugin": {"a": 1}}))
        assert place.diagnose().status == 1


def OnlyWhatIsReadStops(test):
    """An object is passed over at its first flaw, whatever stands behind that."""
    place = test.whole()
    file = "server/SSOVersionCompatibility.config"
    whole = json.loads(place.path(file).read_text(encoding="utf-8"))
    objects = [{"module": "", "modulePath": []}, {"module": "x", "modulePath": "", "version": {}}]
    objects += whole["ssoClientPlugin"]
    place.write(file, json.dumps(whole | {"ssoClientPlugin": objects}))
    ended = place.diagnose("--log")
    assert ended.last == rig.CAN_WORK, ended.last
    line_of(ended, "warning", "ssoClientPlugin[1].modulePath is an array where a text belongs")
    # The value that ends the reading hides those behind it.
    objects[0] = {"module": "x", "modulePath": [], "version": []}
    place.write(file, json.dumps(whole | {"ssoClientPlugin": objects}))
    document = place.diagnose("--json").document
    oddities = document["compatibilityFile"]["oddities"]
    stops = [oddity["key"] for oddity in oddities if oddity["stopsReading"]]
    assert stops == ["ssoClientPlugin[1].modulePath"], stops
    assert "ssoClientPlugin[1].modulePath" in document["verdict"]["line"]


def ReasonOfALoadThatFails(test):
    """Not what was logged long before it."""
    place = test.installation("factory-empty")
    file = "server/SSOVersionCompatibility.config"
    whole = json.loads(place.path(file).read_text(encoding="utf-8"))
    whole["ssoClientPlugin"].insert(0, {"module": ""})
    place.write(file, json.dumps(whole))
    ended = place.diagnose("--log")
    line_of(ended, "[error] Blank or missing key 'module' in ssoClientPlugin")
    line_of(ended, "wrong: ", "could not load the client plugin: it gives no factory")
    place.script = test.installation("factory-throws").script
    problems = place.diagnose("--log", "--json").document["verdict"]["problems"]
    codes = {problem["code"] for problem in problems if problem["isFatal"]}
    assert codes == {"library-stops", "plugin-factory"}, codes


def TextThatIsNotUtf8(test):
    """Latin-1 reads as an empty text, save where the library keeps the bytes."""
    place = test.whole()
    config = '{"ssoServer": {"searchPaths": "{root}/server", "appName": "Zo\u00eb.exe",'
    config += ' "processName": "Zo\u00eb"}}'
    place.write("app/SSOClient.config", config.encode("latin-1"))
    ended = place.diagnose()
    assert ended.last == rig.CAN_WORK
    line_of(ended, "ssoServer.appName", "HxSSO.exe", "(default)")
    line_of(ended, "line 1, column ", "ssoServer.appName: not UTF-8 and reads as empty")
    line_of(ended, "warning", "ssoServer.appName is not UTF-8 and reads as empty")
    line_of(ended, "ssoServer.processName", "(file, line 1")
    assert "processName is not UTF-8" not in ended.output
    place = test.whole()
    file = "server/SSOVersionCompatibility.config"
    whole = json.loads(place.path(file).read_text(encoding="utf-8"))
    for key in ("module", "modulePath"):
        entry = whole["ssoClientPlugin"][0]
        content = json.dumps({"ssoClientPlugin": [entry | {key: "Zo\u00eb"}]}, ensure_ascii=False)
        ended = place.write(file, content.encode("latin-1")).diagnose()
        said(ended, "(1. ", f": {key} is not UTF-8 and reads as empty)")
        line_of(ended, "  line 1, column ", f": ssoClientPlugin[1].{key}: not UTF-8 and reads as empty")


def OriginsOfKeys(test):
    """By what the library has taken, not by what is written."""

    def keys(place):
        document = place.diagnose("--json").document["clientConfig"]
        return [(key["key"], key["value"], key["origin"]) for key in document["keys"]]

    place = test.whole()
    paths = "{root}/server;{root}/server"
    place.write("app/SSOClient.config", json.dumps({"ssoServer": {"searchPaths": paths}}))
    if not test.build.is_windows:  # where it stands in the registry of all tests
        place.write("xdg/Halvorix/HxSSO/Location", "{root}/elsewhere\n")
        found = [key[1:] for key in keys(place) if key[0] == "ssoServer.searchPaths"]
        root = str(place.root)
        assert found == [(root + "/server", "file"), (root + "/elsewhere", "registry")], found
    stopped = {"appName": "HxSSO.exe", "serverName": [], "bundleId": "never.read"}
    place.write("app/SSOClient.config", json.dumps({"ssoServer": stopped}))
    found = {key: (value, origin) for key, value, origin in keys(place)}
    assert found["ssoServer.appName"] == ("HxSSO.exe", "file"), found
    assert found["ssoServer.bundleId"] == (None, "unset"), found
    assert not any(origin == "default" for _, origin in found.values()), found


def NestedTooDeeply(test):
    """An exception and no parse error: no defaults follow it."""
    deep = '{"more": ' + "[" * 3000 + "]" * 3000 + "}"
    place = test.whole().write("app/SSOClient.config", deep)
    ended = place.diagnose()
    assert ended.last.startswith("the client configuration cannot be read: "), ended.last
    assert "nested too deeply" in ended.last and "is no JSON" not in ended.output
    assert "defaults" not in ended.output
    config = place.diagnose("--json").document["clientConfig"]
    assert config["state"] == "stopped"
    assert {key["origin"] for key in config["keys"]} == {"unset"}
    place = test.whole().write("server/SSOVersionCompatibility.config", deep)
    ended = place.diagnose()
    assert ended.last.startswith("the version compatibility file cannot be read: "), ended.last
    assert "nested too deeply" in ended.last and "is no JSON" not in ended.output


def LastLineIsTheFirstFatalProblem(test):
    """A harmless warning of before is none; a file that is lost as a whole is."""
    place = test.installation("server-application-missing")
    config = '{"more": 1, "ssoServer": {"searchPaths": "{root}/server"}}'
    place.write("app/SSOClient.config", config)
    ended = place.diagnose()
    assert ended.last.startswith("the server application "), ended.last
    line_of(ended, "warning", "more is no key of this file")
    assert place.diagnose("--json").document["verdict"]["line"] == ended.last
    place.write("app/SSOClient.config", config[:-1])
    assert place.diagnose().last.startswith("the client configuration is no JSON: ")
    nowhere = test.build.spelled(place.root / "nowhere")
    assert " that the program names " in place.diagnose("--config", nowhere).last
    # Keys that were meant to say where it lies are named beside it.
    config = '{"ssoServer": {"bundleid": 1, "SearchPaths": "{root}/server"}}'
    ended = place.write("app/SSOClient.config", config).diagnose()
    assert ended.last.startswith("the server application "), ended.last
    assert "ssoServer.SearchPaths is ignored: the key is written searchPaths" in ended.last
    assert "bundleid" not in ended.last


def PluginThatCannotBeLookedFor(test):
    """The doctor stumbles over its name where a load does, and nowhere else."""
    place = test.whole()
    file = "server/SSOVersionCompatibility.config"
    whole = json.loads(place.path(file).read_text(encoding="utf-8"))
    whole["ssoClientPlugin"][0]["module"] = "x" * 300
    place.write(file, json.dumps(whole))
    loaded = place.diagnose("--json", "--log").document
    stumbles = [one["text"] for one in loaded["interruptions"] if one["during"] == "the load"]
    document = place.diagnose("--json").document
    assert [one["text"] for one in document["interruptions"]] == stumbles
    assert not document["plugin"]["exists"] and not document["verdict"]["canWork"]
    line = document["verdict"]["line"]
    assert (" with an exception: " if stumbles else "does not exist") in line, line


def MisspeltKeysOfTheCompatibilityFile(test):
    """Those of the plugin's list are named where no plugin comes of it."""
    place = test.whole()
    file = "server/SSOVersionCompatibility.config"
    content = place.path(file).read_text(encoding="utf-8")
    place.write(file, content.replace("ssoClientPlugin", "SsoClientPlugin"))
    last = place.diagnose().last
    assert "; SsoClientPlugin is ignored: the key is written ssoClientPlugin" in last, last
    # Both lists have it; that of OpenSSL keeps no plugin away.
    place.write(file, content.replace('"modulePath"', '"modulepath"'))
    last = place.diagnose().last
    assert "; ssoClientPlugin[1].modulepath is ignored: the key is written modulePath" in last, last
    assert "openssl" not in last, last


# --- Running the plugin, or not -----------------------------------------------------


def NothingOfThePluginRunsUnasked(test):
    place = test.whole()
    assert place.diagnose().status == 0 and place.diagnose("--json").status == 0
    assert not (place.root / "record").exists(), "code of the plugin ran"
    line_of(place.diagnose("--load"), "ok", "interfaces", "ISSOServerManager, ")
    assert (place.root / "record").exists()


def LogOfALoad(test):
    place = test.whole()
    ended = place.diagnose("--log")
    assert ended.last == rig.CAN_WORK
    begin = ended.lines.index("The library's log of a load")
    log = ended.lines[begin + 1 :]
    assert log[0].startswith("  [info] " + test.build.library_name + " module loaded (Version: ")
    assert test.build.spelled(place.root / "app" / test.build.library) + ")" in log[0]
    plugin = test.build.spelled(place.root / "server/plugin/RecordingPlugin")
    said(ended, "  [info] Dynamically loading client plugin module " + plugin)
    said(ended, "  [info] Searching for compatible openssl version")
    # The plugin is told the same, by its logger.
    record = (place.root / "record").read_text(encoding="utf-8")
    assert "ILogger::WriteLine" in record and "SetOpenSslModule" in record
    load = place.diagnose("--log", "--json").document["load"]
    assert load["worked"] and {line["level"] for line in load["log"]} == {8}


def LogOfALoadThatFails(test):
    place = test.installation("plugin-lacks-a-dependency")
    ended = place.diagnose("--log")
    assert ended.status == 1
    line_of(ended, "[error] Failed to load client plugin module")
    load = place.diagnose("--log", "--json").document["load"]
    assert not load["worked"] and load["log"][-1]["level"] == 2
    empty = test.installation("factory-empty")
    load = empty.diagnose("--log", "--json").document["load"]
    assert not load["worked"] and load["log"][-1]["text"].startswith("Getting factory from")


# --- The reports --------------------------------------------------------------------


def JsonKeepsToItsSchema(test):
    validator = test.schema()
    for case in sorted(CASES.iterdir()):
        place = test.installation(case.name)
        for more in ([], ["--log"]) if case.name in ("nothing-is-wrong", "factory-throws") else ([],):
            document = place.diagnose("--json", *place.arguments, *more).document
            errors = [f"{error.json_path}: {error.message}" for error in validator.iter_errors(document)]
            assert not errors, (case.name, errors)


def SchemaRefusesWhatIsNotTold(test):
    validator = test.schema()
    document = test.whole().diagnose("--json").document
    assert validator.is_valid(document)
    for change in (
        lambda d: d.pop("verdict"),
        lambda d: d.update(more=1),
        lambda d: d["plugin"].update(exists="yes"),
        lambda d: d["clientConfig"].update(state="lost"),
        lambda d: d["clientConfig"]["keys"][0].update(position={"line": 0, "column": 1}),
    ):
        changed = json.loads(json.dumps(document))
        change(changed)
        assert not validator.is_valid(changed)


def NoColoursInAPipe(test):
    for case in ("nothing-is-wrong", "plugin-file-missing"):
        assert b"\x1b" not in test.installation(case).diagnose().bytes


def ColoursOnATerminal(test):
    if test.build.is_windows:
        skip("Wine has no console to write to here")
    import pty
    import subprocess

    def shown(environment=None):
        place = test.whole()
        master, slave = pty.openpty()
        program = str(place.root / "app" / test.build.program)
        with subprocess.Popen(
            place.command("--exe", program), stdout=slave, env=place.environment(environment)
        ) as process:
            os.close(slave)
            output = b""
            while True:
                try:
                    part = os.read(master, 65536)
                except OSError:
                    break
                if not part:
                    break
                output += part
            assert process.wait() == 0
        os.close(master)
        return output

    assert b"\x1b[32msign-in can work\x1b[0m" in shown()
    assert b"\x1b" not in shown({"NO_COLOR": "1"})


def ChangesNothing(test):
    for case in ("nothing-is-wrong", "client-config-is-not-json", "server-application-missing"):
        place = test.installation(case)
        before = tree(place.root)
        for more in ([], ["--json"], ["--log"]):
            place.diagnose(*more)
        assert tree(place.root) == before


def SurvivesWhatIsInTheFiles(test):
    """Bytes by chance in both files; --json and the text agree, and none crashes."""
    chance = random.Random(22)
    place = test.whole()
    files = ["app/SSOClient.config", "server/SSOVersionCompatibility.config"]
    whole = {file: place.path(file).read_bytes() for file in files}
    hard = [b"", b"null", b"[]", b"7", b'"x"', b"[" * 3000, b"\x00\xff", b"\xff\xfe{\x00}\x00"]
    hard += [b'{"ssoServer": {"appName": "' + b"a" * 5000 + b'"}}', b'{"ssoServer": []}']
    hard += [b'{"ssoClientPlugin": [7, [], {}, "x", null, [1]]}', b'{"openssl": {"a": 1}}']
    hard += [b'{"ssoServer": {"searchPaths": "%SSOServerAppPath%;%%;;' + b"%" * 99 + b'"}}']
    for round_ in range(10 if test.build.is_windows else 120):
        for file in files:
            content = bytearray(whole[file])
            if round_ < 2 * len(hard):
                content = hard[round_ // 2] if (round_ % 2 == 0) == (file == files[0]) else content
            else:
                for _ in range(chance.randrange(1, 4)):
                    content[chance.randrange(len(content))] = chance.choice(b'{}[]":,\x00\xff7a%\\')
            place.path(file).write_bytes(content)
        ended = place.diagnose("--json")
        assert ended.status in (0, 1) and ended.errors == "", (round_, ended.status, ended.errors)
        verdict = ended.document["verdict"]
        assert verdict["canWork"] == (ended.status == 0)
        assert place.diagnose().last == verdict["line"], round_


def main():
    with tempfile.TemporaryDirectory() as directory:
        test = Test(rig.Build(sys.argv[2], sys.argv[3:]), directory)
        globals()[sys.argv[1]](test)


if __name__ == "__main__":
    main()
