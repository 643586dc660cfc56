"""What counts as wrong, and what the last line names first."""

import json

import rig
import harness
from harness import COMPATIBILITY, line_of


def ListThatAnOverrideKeepsUnread(test):
    place = test.whole()
    config = {"ssoServer": {"searchPaths": "{root}/server"}}
    config["openssl"] = {"moduleName": "crypto.x", "modulePath": "%ExePath%"}
    place.write("app/SSOClient.config", json.dumps(config)).write("app/crypto.x", "")
    whole = harness.compatibility(place)
    for openssl in ({"a": 1}, [{"module": []}, 7], [{"module": "x", "{modulePath}": "y", "version": []}]):
        place.write(COMPATIBILITY, json.dumps(whole | {"openssl": openssl}))
        ended = place.diagnose("--log")
        assert ended.last == rig.CAN_WORK, ended.last
        assert "ends the reading" not in ended.output
        oddities = place.diagnose("--json").document["compatibilityFile"]["oddities"]
        assert not any(oddity["stopsReading"] for oddity in oddities)
        # The other list is read all the same.
        place.write(COMPATIBILITY,
                    json.dumps(whole | {"openssl": openssl, "ssoClientPlugin": {"a": 1}}))
        assert place.diagnose().status == 1


def OnlyWhatIsReadStops(test):
    """An object is passed over at its first flaw, whatever stands behind that."""
    place = test.whole()
    whole = harness.compatibility(place)
    objects = [{"module": "", "{modulePath}": []}, {"module": "x", "{modulePath}": "", "version": {}}]
    objects += whole["ssoClientPlugin"]
    place.write(COMPATIBILITY, json.dumps(whole | {"ssoClientPlugin": objects}))
    ended = place.diagnose("--log")
    assert ended.last == rig.CAN_WORK, ended.last
    text = "entry 1 of ssoClientPlugin: {modulePath} is an array where a text belongs"
    line_of(ended, "warning", place.filled(text))
    # The value that ends the reading hides those behind it.
    objects[0] = {"module": "x", "{modulePath}": [], "version": []}
    place.write(COMPATIBILITY, json.dumps(whole | {"ssoClientPlugin": objects}))
    document = place.diagnose("--json").document
    oddities = document["compatibilityFile"]["oddities"]
    stops = [oddity["key"] for oddity in oddities if oddity["stopsReading"]]
    assert stops == [place.filled("ssoClientPlugin[0].{modulePath}")], stops
    assert place.filled("entry 1 of ssoClientPlugin: {modulePath}") in document["verdict"]["line"]


def NestedTooDeeply(test):
    """An exception and no parse error: no defaults follow it."""
    deep = '{"more": ' + "[" * 3000 + "]" * 3000 + "}"
    place = test.whole().write("app/SSOClient.config", deep)
    ended = place.diagnose()
    assert ended.last.startswith("the client configuration cannot be read: "), ended.last
    assert "nested too deeply" in ended.last and "not valid JSON" not in ended.output
    assert "defaults" not in ended.output
    config = place.diagnose("--json").document["clientConfig"]
    assert config["state"] == "stopped"
    assert {key["origin"] for key in config["keys"]} == {"unset"}
    place = test.whole().write(COMPATIBILITY, deep)
    ended = place.diagnose()
    assert ended.last.startswith("the version compatibility file cannot be read: "), ended.last
    assert "nested too deeply" in ended.last and "not valid JSON" not in ended.output


def LastLineIsTheFirstFatalProblem(test):
    """A harmless warning of before is none; a file that is lost as a whole is."""
    place = test.installation("server-application-missing")
    config = '{"more": 1, "ssoServer": {"searchPaths": "{root}/server"}}'
    place.write("app/SSOClient.config", config)
    ended = place.diagnose()
    assert ended.last.startswith("the server application "), ended.last
    line_of(ended, "warning", "more is not a key of this file")
    assert place.diagnose("--json").document["verdict"]["line"] == ended.last
    place.write("app/SSOClient.config", config[:-1])
    assert place.diagnose().last.startswith("the client configuration is not valid JSON: ")
    nowhere = test.build.spelled(place.root / "nowhere")
    assert ", which the program names, " in place.diagnose("--config", nowhere).last
    # Keys that were meant to say where it lies are named beside it.
    config = '{"ssoServer": {"bundleid": 1, "SearchPaths": "{root}/server"}}'
    ended = place.write("app/SSOClient.config", config).diagnose()
    assert ended.last.startswith("the server application "), ended.last
    assert "ssoServer.SearchPaths is ignored: the key is written searchPaths" in ended.last
    assert "bundleid" not in ended.last


def stumbling_as_a_load(place):
    """What a load stumbles over, and the document of a doctor that says the same."""
    loaded = place.diagnose("--json", "--log").document
    stumbles = [one["text"] for one in loaded["interruptions"] if one["during"] == "the load"]
    document = place.diagnose("--json").document
    assert [one["text"] for one in document["interruptions"]] == stumbles
    return stumbles, document


def PluginThatCannotBeLookedFor(test):
    """The doctor stumbles over its name where a load does, and nowhere else."""
    place = test.whole()
    whole = harness.compatibility(place)
    whole["ssoClientPlugin"][0]["module"] = "x" * 300
    place.write(COMPATIBILITY, json.dumps(whole))
    stumbles, document = stumbling_as_a_load(place)
    assert not document["plugin"]["exists"] and not document["verdict"]["canWork"]
    # No right to read anything would help.
    assert "allow the program's user" not in place.diagnose().output
    line = document["verdict"]["line"]
    assert (" with an exception: " if stumbles else "does not exist") in line, line


def MisspeltKeysOfTheCompatibilityFile(test):
    """Those of the plugin's list are named where no plugin comes of it."""
    place = test.whole()
    content = place.path(COMPATIBILITY).read_text(encoding="utf-8")
    place.write(COMPATIBILITY, content.replace("ssoClientPlugin", "SsoClientPlugin"))
    last = place.diagnose().last
    assert "; SsoClientPlugin is ignored: the key is written ssoClientPlugin" in last, last
    key = place.build.path_key
    # Both lists have it; that of OpenSSL keeps no plugin away.
    place.write(COMPATIBILITY, content.replace(f'"{key}"', f'"{key.lower()}"'))
    last = place.diagnose().last
    assert f"; entry 1 of ssoClientPlugin: {key.lower()} is ignored: the key is written {key}" in last
    assert "openssl" not in last, last


def OpenSslThatCannotBeLookedFor(test):
    """A load ends there, with the plugin in use, and the doctor says why."""
    place = test.whole()
    whole = harness.compatibility(place)
    whole["openssl"][0]["module"] = "x" * 300
    place.write(COMPATIBILITY, json.dumps(whole))
    stumbles, document = stumbling_as_a_load(place)
    assert bool(stumbles) == (not test.build.is_windows), stumbles
    assert document["verdict"]["canWork"] == (not stumbles)
    module = document["opensslModule"]
    row = document["compatibilityFile"]["openssl"]["modules"][0]
    for one in (module, row):
        assert not one["exists"] and one["lookError"] == (stumbles[0] if stumbles else None), one
    if stumbles:
        ended = place.diagnose("--verbose")
        assert stumbles[0] in ended.last, ended.last
        line_of(ended, "chosen, file cannot be looked at: ", stumbles[0])
        assert "does not exist" not in ended.output


def RowsAskAsTheLoadDoes(test):
    """For the plugin by its narrow name, which is another one beyond 16 bits."""
    place = test.whole()
    whole = harness.compatibility(place)
    whole["ssoClientPlugin"][0]["module"] = "x" * 300
    place.write(COMPATIBILITY, json.dumps(whole))
    document = place.diagnose("--json").document
    row = document["compatibilityFile"]["ssoClientPlugin"]["modules"][0]
    assert row["exists"] == document["plugin"]["exists"] is False
    assert row["lookError"] == document["plugin"]["lookError"]
    assert bool(row["lookError"]) == (not test.build.is_windows), row


def LastLineIsShort(test):
    """However many entries there are, and directories."""
    place = test.whole()
    entry = harness.compatibility(place)["ssoClientPlugin"][0]
    entry["compatibleSsoServicesVersion"] = {"minVersion": "11"}
    place.write(COMPATIBILITY, json.dumps({"ssoClientPlugin": [entry] * 200}))
    ended = place.diagnose()
    assert "; 3. " in ended.last and ended.last.endswith("; and 197 more)"), ended.last
    assert len(ended.last) < 500, ended.last
    line_of(ended, "    200. ", "excluded by minVersion")
    paths = ";".join(f"{{root}}/{number}" for number in range(200))
    place.write("app/SSOClient.config", json.dumps({"ssoServer": {"searchPaths": paths}}))
    ended = place.diagnose()
    assert ended.last.endswith("/1, and 198 more"), ended.last
    line_of(ended, "    ", "/199  no such directory")
    place = test.whole()
    entry = harness.compatibility(place)["ssoClientPlugin"][0] | {"module": "ä" * 150000}
    entry["compatibleSsoServicesVersion"] = {"minVersion": "11"}
    place.write(COMPATIBILITY, json.dumps({"ssoClientPlugin": [entry]}, ensure_ascii=False))
    ended = place.diagnose()
    assert ended.last.endswith("ä…") and len(ended.last) < 2001, len(ended.last)
    assert place.diagnose("--json").document["verdict"]["line"] == ended.last


def OpenSslIsJudgedLast(test):
    """The library reads its list when the plugin is in use already."""
    place = test.whole()
    whole = harness.compatibility(place)
    whole["openssl"][0]["version"] = []
    place.write(COMPATIBILITY, json.dumps(whole))
    last = place.diagnose().last
    assert "entry 1 of openssl: version is an array where a text belongs" in last, last
    whole["ssoClientPlugin"][0]["module"] = "Nowhere"
    place.write(COMPATIBILITY, json.dumps(whole))
    ended = place.diagnose()
    assert ended.last.startswith("the chosen client plugin ") and "does not exist" in ended.last
    line_of(ended, "wrong: ", "entry 1 of openssl: version is an array where a text belongs")
