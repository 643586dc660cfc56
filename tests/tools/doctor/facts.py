"""What is told of what was found."""

import ctypes
import json
import os
import struct

import rig
import harness
from harness import COMPATIBILITY, line_of, said, skip


def TellsTheWholeRoad(test):
    ended = test.whole().diagnose("--verbose")
    said(ended, "10.22.00.1800", "folder ProgramFiles", "%ProgramFiles%", "%LocalAppData%")
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
        {"module": module, "{modulePath}": "%ExePath%", "version": version}
        | ({"compatibleSsoServicesVersion": bounds} if bounds else {})
        for module, version, bounds, _ in entries
    ]
    objects += [None, {"module": "Other", "{modulePathWoW64}": "x"}]
    content = {"ssoClientPlugin": objects, "openssl": objects}
    place.write(COMPATIBILITY, json.dumps(content))
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
        (COMPATIBILITY, "compatibilityFile"),
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
    assert ended.last == rig.NOT_LOADED
    line_of(ended, "  line 3, column 3: ssoServer.SEARCHPATHS is ignored: the key is written")
    line_of(ended, "  line 4, column 2: more is not a key of this file, and is ignored")


def Location(test):
    """What stands in the registry on Windows."""
    if test.build.is_windows:
        skip("it would change the registry of every other test")
    place = test.whole().write("app/SSOClient.config", "{}")
    assert place.diagnose().status == 1
    place.write("xdg/Halvorix/HxSSO/Location", "{root}/server\n")
    ended = place.diagnose("--verbose")
    assert ended.last == rig.NOT_LOADED
    line_of(ended, "ssoServer.searchPaths", "/server", "(registry)")
    location = "xdg/Halvorix/HxSSO/Location"
    place.replace(location, f"{place.root}/caf\u00e9\n".encode("latin-1"))
    ended = place.diagnose()
    assert ended.last.endswith("; the file Location of the server application is not UTF-8, and the "
                               "library reads UTF-8"), ended.last
    assert f"Fix: save {place.path(location)} as UTF-8" in ended.lines, ended.output
    # Whatever stands behind its end.
    place.replace(location, f"{place.root}/server\ncaf\u00e9\n".encode("latin-1"))
    assert place.diagnose().last == rig.NOT_LOADED
    place.write(location, "{root}/server/HxSSO.exe//\n")
    assert "; the file Location of the server application names the server application's file, " \
        "not its directory" in place.diagnose().last
    # What has no value is corrected where it stands.
    place.write(location, "%Nowhere%/server\n")
    ended = place.diagnose()
    assert "%Nowhere% is not a variable of the library" in ended.last, ended.last
    assert "Fix: correct the directory in the file Location of the server application" in \
        ended.lines, ended.output
    place.write("app/SSOClient.config", json.dumps({"ssoServer": {"searchPaths": "%Nowhere%/x"}}))
    assert "Fix: correct the directories in ssoServer.searchPaths of the client configuration" in \
        place.diagnose().lines


def LocationIsAskedOnce(test):
    """For what it is, and for the directory."""
    if test.build.is_windows:
        skip("only the other system tells who opens a file")
    opened, closed = 0x20, 0x10
    place = test.installation("location-without-a-client-config")
    libc = ctypes.CDLL(None)
    events = libc.inotify_init1(os.O_NONBLOCK)
    file = os.fsencode(place.path("xdg/Halvorix/HxSSO/Location"))
    # With the ends, since two events of one kind that follow each other count as one.
    assert libc.inotify_add_watch(events, file, opened | closed) > 0
    said(place.diagnose(), "server")
    kinds = [mask for _, mask, _, _ in struct.iter_unpack("iIII", os.read(events, 65536))]
    os.close(events)
    assert kinds == [opened, closed, opened, closed], kinds


def LocationOfTheRegistry(test):
    """A value that the library does not read as what was meant."""
    if not test.build.is_windows:
        skip("only the other system has a registry")
    place = test.whole().write("app/SSOClient.config", "{}")
    with place:
        place.leave_location("x" * 511)
        assert "is longer than" not in place.diagnose().last
        place.leave_location("x" * 512)
        assert "; the registry value Location is longer than 511 char" in place.diagnose().last
        place.registry("add", rig.LOCATION_KEY, "/v", "Location", "/t", "REG_DWORD", "/d", "7",
                       "/f")
        assert place.diagnose().last.endswith("; the registry value Location is not a text")
        # The library reads a text out of these.
        server = place.build.spelled(place.root / "server")
        place.registry("add", rig.LOCATION_KEY, "/v", "Location", "/t", "REG_MULTI_SZ", "/d", server,
                       "/f")
        assert place.diagnose().last == rig.NOT_LOADED
        place.registry("add", rig.LOCATION_KEY, "/v", "Location", "/t", "REG_BINARY", "/d",
                       server.encode("utf-16-le").hex(), "/f")
        assert place.diagnose().last == rig.NOT_LOADED
        place.registry("add", rig.LOCATION_KEY, "/v", "Location", "/t", "REG_BINARY", "/d",
                       (server + "x").encode("utf-16-le").hex(), "/f")
        assert place.diagnose().last.endswith("/serverx"), place.diagnose().last
        place.registry("delete", rig.LOCATION_KEY, "/v", "Location", "/f")
        assert place.diagnose().last.endswith("; the registry value Location is not in its key")


def FileOfTheWorkingDirectory(test):
    place = test.whole()
    os.rename(place.root / "app/SSOClient.config", place.root / "work/SSOClient.config")
    ended = place.diagnose()
    assert ended.last == rig.NOT_LOADED
    line_of(ended, "warning", "found in the current directory only")


def CircularDirectory(test):
    if test.build.is_windows:
        skip("links that lead in a circle are not made there")
    place = test.whole()
    os.symlink("circle", place.root / "app/circle")
    config = '{"ssoServer": {"searchPaths": "%ExePath%/circle;{root}/server"}}'
    place.write("app/SSOClient.config", config)
    ended = place.diagnose()
    assert ended.status == 1 and "with an exception" in ended.last, ended.last
    line_of(place.diagnose("--verbose"), "/app/circle  ", "cannot be looked at")
    assert f"Fix: put the file or folder itself in place of {place.root}/app/circle" in ended.lines


def UpBehindALink(test):
    """The file that is looked at is the one that is loaded."""
    if test.build.is_windows:
        skip("that system leaves it out of the text")
    place = test.whole()
    os.makedirs(place.root / "far/below")
    os.symlink(place.root / "far/below", place.root / "server/link")
    whole = harness.compatibility(place)
    whole["ssoClientPlugin"][0][place.build.path_key] = "%SSOServerAppPath%/link/../plugin"
    place.write(COMPATIBILITY, json.dumps(whole))
    os.rename(place.root / "server/plugin", place.root / "far/plugin")
    assert place.diagnose("--load").last == rig.CAN_WORK
    # Of this name by its text alone.
    place.place("server/plugin/RecordingPlugin.so", "PlainNamePlugin.so")
    assert place.diagnose("--load").last == rig.CAN_WORK
    # The library, too.
    os.rename(place.path("app/" + test.build.library), place.root / "far/Library.so")
    named = str(place.root / "server/link/../Library.so")
    assert place.diagnose("--load", "--library", named).last == rig.CAN_WORK


def LinksInACircle(test):
    """Each is told by its name, over whatever other links it leads to itself."""
    if test.build.is_windows:
        skip("links that lead in a circle are not made there")
    ends = "the library ends the {} with an exception: "
    for relative, during in (
        ("server/plugin/RecordingPlugin.so", "look for the client plugin's file"),
        ("server/openssl/openssl.so", "look for the OpenSSL module's file"),
        ("server/openssl", "look for the OpenSSL module's file"),
        ("server/plugin", "look for the client plugin's file"),
        ("server/HxSSO.exe", "choice of the client plugin"),
        ("app/SSOClient.config", "choice of the client plugin"),
        (harness.COMPATIBILITY, "choice of the client plugin"),
    ):
        place = test.whole()
        link = place.path(relative)
        os.rename(link, place.root / "away")
        os.symlink("other", link)
        os.symlink(link.name, link.parent / "other")
        ended = place.diagnose()
        assert ended.status == 1, ended.output
        assert ended.last == ends.format(during) + f"{link} is a link that leads in a circle"
        assert f"Fix: put the file or folder itself in place of {link}" in ended.lines
    place = test.whole()
    library = place.path("app/" + test.build.library)
    library.unlink()
    os.symlink(library.name, library)
    assert place.diagnose().last.endswith(
        f": the one in {place.root}/app is a link that leads in a circle")
    for option in ("--library", "--exe"):
        ended = place.run(option, str(library))
        assert ended.status == 2 and f"{library} is a link that leads in a circle" in ended.errors


def LibraryOfOtherVersion(test):
    place = test.whole()
    library = place.root / "app" / test.build.library
    if test.build.is_windows:
        # In the resource's record of numbers, behind its mark.
        mark = b"\xbd\x04\xef\xfe\x00\x00\x01\x00"
        wanted = mark + struct.pack("<4H", 22, 10, 1800, 0)
        other = mark + struct.pack("<4H", 23, 10, 1801, 0)
        content = library.read_bytes()
        assert wanted in content
        place.replace("app/" + test.build.library, content.replace(wanted, other))
    else:
        os.rename(library, place.root / "app/libHxSSOServices.so.10.23.0.1801")
        os.symlink("libHxSSOServices.so.10.23.0.1801", library)
    ended = place.diagnose()
    assert ended.last == rig.NOT_LOADED
    line_of(ended, "warning", "is version 10.23.0.1801, and this doctor is for version 10.22.0.1800")
    ours = test.whole().diagnose("--json").document["library"]["fileVersion"]
    assert ours == ("10.22.0.1800" if test.build.is_windows else None)


def NamesBeyondAscii(test):
    place = test.whole()
    folder = place.root / "Zoë €"
    os.rename(place.root / "app", folder)
    program = test.build.spelled(folder / test.build.program)
    ended = place.run("--verbose", "--exe", program)
    assert ended.last == rig.NOT_LOADED
    line_of(ended, "%ExePath%", test.build.spelled(folder))
    document = place.run("--exe", program, "--json").document
    assert document["program"]["executable"] == program


def TextThatIsNotUtf8(test):
    """Latin-1 reads as an empty text, save where the library keeps the bytes."""
    place = test.whole()
    config = '{"ssoServer": {"searchPaths": "{root}/server", "appName": "Zo\u00eb.exe",'
    config += ' "processName": "Zo\u00eb"}}'
    place.write("app/SSOClient.config", config.encode("latin-1"))
    ended = place.diagnose()
    assert ended.last == rig.NOT_LOADED
    line_of(ended, "ssoServer.appName", "HxSSO.exe", "(default)")
    line_of(ended, "  line 1, column ", "ssoServer.appName is not UTF-8 and reads as empty")
    line_of(ended, "warning", "ssoServer.appName is not UTF-8 and reads as empty")
    line_of(ended, "ssoServer.processName", "(file, line 1")
    assert "processName is not UTF-8" not in ended.output
    place = test.whole()
    whole = harness.compatibility(place)
    for key in ("module", place.build.path_key):
        entry = whole["ssoClientPlugin"][0]
        content = json.dumps({"ssoClientPlugin": [entry | {key: "Zo\u00eb"}]}, ensure_ascii=False)
        ended = place.write(COMPATIBILITY, content.encode("latin-1")).diagnose()
        said(ended, "(1. ", f": {key} is not UTF-8 and reads as empty)")
        line_of(ended, "  line 1, column ", f": entry 1 of ssoClientPlugin: {key} is not UTF-8 and reads as empty")


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


def HalfSurrogatePairs(test):
    """Both reports stay UTF-8; what is no character is U+FFFD in them."""
    place = test.whole()
    config = '{"ssoServer": {"searchPaths": "{root}/server", "processName": "a\\udc00b",'
    config += ' "bundleId": "x\\udc00y"}}'
    place.write("app/SSOClient.config", config)
    content = place.path(COMPATIBILITY).read_text(encoding="utf-8")
    place.write(COMPATIBILITY, content.replace("RecordingPlugin", "Half\\udc00Pair"))
    ended = place.diagnose("--verbose")
    line_of(ended, "1. Half", "Pair" + test.build.module + "  version 1.0")
    document = place.diagnose("--json", "--log").document
    name = "/plugin/Half\ufffdPair" + test.build.module
    assert document["plugin"]["file"].endswith(name)
    if test.build.is_windows:
        # Its narrow name is looked for, which the locale cannot make a wide one again.
        assert " with an exception: boost::filesystem::path codecvt" in ended.last, ended.last
        assert document["load"]["log"][-1]["text"].endswith(name)
    else:
        assert name + " does not exist" in ended.last, ended.last
    keys = {key["key"]: key["value"] for key in document["clientConfig"]["keys"]}
    assert keys["ssoServer.bundleId"] == "x\ufffdy", keys
    # The bytes are the library's, and each is none.
    assert keys["ssoServer.processName"] == "a\ufffd\ufffd\ufffdb", keys


def ListsAsTheyWereSearched(test):
    """A variable of the server application has no value while it is searched for."""
    place = test.whole()
    config = {"ssoServer": {"searchPaths": "%SSOServerAppPath%/x;{root}/server"}}
    place.write("app/SSOClient.config", json.dumps(config))
    arguments = ["--search", "%SSOServerAppPath%/support"]
    document = place.diagnose("--json", "--log", *arguments).document
    root = test.build.spelled(place.root)
    directories = document["serverApplication"]["search"]["directories"]
    paths = [directory["path"] for directory in directories]
    assert paths == [root + "/app", "%SSOServerAppPath%/x", root + "/server"], paths
    assert directories[1]["unresolvedVariables"] == ["SSOServerAppPath"]
    supported = document["clientConfig"]["search"]["directories"]
    assert [one["path"] for one in supported] == [root + "/app", "%SSOServerAppPath%/support"]
    # And so it is in the library's own words.
    log = [line["text"] for line in document["load"]["log"]]
    assert "Searching for SSO server app HxSSO.exe in the following paths:\n" + "\n".join(paths) in log
    assert any(line.endswith("/app\n%SSOServerAppPath%/support") for line in log), log
    variables = {one["name"]: one["value"] for one in document["program"]["pathVariables"]}
    assert variables["SSOServerAppPath"] == root + "/server"
    assert document["verdict"]["canWork"]
