"""What limits cost: settings that would take hours or gigabytes. Sanitizers multiply that and see
nothing that smaller settings do not show."""

import json

import harness
from harness import COMPATIBILITY, apart, line_of, skip


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
    if test.build.is_windows:
        skip("Wine takes twelve seconds for so many directories; the limit is the same code")
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


@apart
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
