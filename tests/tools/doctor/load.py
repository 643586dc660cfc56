"""What runs of the plugin, and what is told of it."""

import json

import rig
import harness
from harness import COMPATIBILITY, line_of, said


def NothingOfThePluginRunsUnasked(test):
    place = test.whole()
    assert place.diagnose().status == 0 and place.diagnose("--json").status == 0
    assert not (place.root / "record").exists(), "code of the plugin ran"
    assert place.diagnose().last == place.diagnose("--verbose").last == rig.NOT_LOADED
    ended = place.diagnose("--load")
    line_of(ended, "Loading the client plugin", "ISSOServerManager, ")
    assert ended.last == rig.CAN_WORK
    line_of(place.diagnose("--load", "--verbose"), "ok", "interfaces", "ISSOServerManager, ")
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


def PluginWhoseFileFailsACheck(test):
    """The load by the library itself is what the program would do."""
    place = test.whole()
    module = test.build.module
    place.place("server/plugin/RecordingPlugin" + module, "StaticRuntimePlugin" + module)
    ended = place.diagnose("--load", "--verbose")
    line_of(ended, "FAILED", "runtime", "linked statically")
    line_of(ended, "note", "load", "not tried because of the failures above")
    line_of(place.diagnose("--log"), "[info] Getting factory proc from client plugin module")


def ReasonOfALoadThatFails(test):
    """Not what was logged long before it."""
    place = test.installation("factory-empty")
    whole = harness.compatibility(place)
    whole["ssoClientPlugin"].insert(0, {"module": ""})
    place.write(COMPATIBILITY, json.dumps(whole))
    ended = place.diagnose("--log")
    line_of(ended, "[error] Blank or missing key 'module' in ssoClientPlugin")
    line_of(ended, "wrong: ", "could not load the client plugin: it gives no factory")
    place.set_script({"GetSSOClientFactory": {"throw": "no service"}})
    problems = place.diagnose("--log", "--json").document["verdict"]["problems"]
    codes = {problem["code"] for problem in problems if problem["isFatal"]}
    assert codes == {"library-stops", "plugin-factory"}, codes
