#!/usr/bin/env python3
"""What the command line promises, and the form of its documents."""

import json
import re
import subprocess

from hxsso_place import PATIENCE, PROGRAMS, ROOT, User, run, schema, skip


def WrongUse(place, provider):
    for words in ([], ["nonsense"], [""], ["--nonsense"], ["--help", "login"],
                  ["login", "--nonsense"], ["login", "somebody"], ["login", "--hint"],
                  ["login", "--hint", ""], ["login", "--scope", "x"], ["status", "--server"],
                  ["status", "--json", "--json"], ["token", "--server", "a", "--server", "b"],
                  ["servers", "--server", "production"], ["token", "--min-valid", "soon"],
                  ["token", "--min-valid", "-1"], ["token", "--min-valid", "9999999999999999999"],
                  ["token", "--header", "--json"], ["status", "--\x1b[31m"]):
        ended = place.run(*words)
        assert (ended.status, ended.output) == (2, b""), ended
        assert ended.errors.startswith("hxsso: ") and "\x1b" not in ended.errors, ended
    assert not provider.requests


def HelpAndVersion(place, _provider):
    for words in (["--help"], ["login", "--help"], ["token", "--help", "--json"]):
        ended = place.run(*words)
        assert (ended.status, ended.errors) == (0, ""), ended
        assert ended.text.startswith("hxsso - "), ended
        for word in ("login", "logout", "status", "whoami", "token", "servers", "doctor"):
            assert re.search(rf"^  {word}  ", ended.text, re.M), word
    ended = place.run("--version")
    assert (ended.status, ended.output, ended.errors) == (0, b"hxsso 10.22.00.1800\n", ""), ended


def ManPage(place, _provider):
    """It has the text of --help, each option an item of its own."""
    page = (PROGRAMS.parent / "tools/hxsso/text/hxsso.1").read_text(encoding="utf-8")
    assert page.startswith('.TH HXSSO 1 "" "HxSSOServices 10.22.'), page[:60]
    help_text = place.run("--help").text
    options = [line.split("  ")[1] for line in help_text.split("\n") if line.startswith("  --")]
    assert len(options) >= 10, options
    for option in options:
        assert "\n.TP\n.B " + option.replace("-", "\\-") + "\n" in page, option
    headings = [line[4:] for line in page.split("\n") if line.startswith(".SH ")]
    assert headings == ["NAME", "SYNOPSIS", "DESCRIPTION", "COMMANDS", "OPTIONS", "EXIT STATUS",
                        "EXAMPLES"], headings
    words = [word for word in page.replace("\\-", "-").split() if not word.startswith(".")]
    for line in help_text.replace("usage: ", "").split("\n"):
        if not line.endswith(":"):
            assert all(word in words for word in line.split()), line


def JsonKeepsToItsSchema(place, provider):
    validator = schema("hxsso.schema.json")

    def document(*words, status):
        ended = place.run(*words, "--json")
        assert ended.status == status == ended.document["exitStatus"], ended
        errors = [f"{e.json_path}: {e.message}" for e in validator.iter_errors(ended.document)]
        assert not errors, (words, errors, ended)
        # An error is told on the other output, too.
        assert (ended.document["error"] is None) == ("hxsso: " not in ended.errors), ended
        assert ended.document["command"] == words[0]
        return ended.document["result"]

    assert document("status", status=1)["signedIn"] is False
    assert document("token", status=1) is None and document("whoami", status=1) is None
    assert document("logout", status=1) is None
    assert document("status", "--server", "none", status=2) is None
    with User(place):
        signed_in = document("login", status=0)
        assert signed_in["wasSignedIn"] is False and signed_in["userId"] == "alice"
        assert document("login", status=0)["wasSignedIn"] is True
        state = document("status", status=0)
        assert state["signedIn"] is True and state["refreshable"] is True
        assert state["loginExpiresAt"] is None and state["issuer"] == provider.issuer
        user = document("whoami", status=0)
        assert (user["loginName"], user["userName"]) == ("alice", "Alice Ågren")
        assert user["claims"]["locale"] == "sv"
        assert document("token", status=0)["token"].count(".") == 2
        [server] = document("servers", status=0)["servers"]
        assert server["isDefault"] is True and server["loginName"] == "alice"
        assert document("logout", status=0)["loginName"] == "alice"
    configure = ["configure", "--issuer", provider.issuer, "--client-id", "hxsso-test"]
    assert document(*configure, status=0)["isChecked"] is True
    provider.misbehave("500", at="discovery")
    assert document("login", status=4) is None


def SchemaRefusesWhatIsNotTold(place, _provider):
    validator = schema("hxsso.schema.json")
    document = place.run("status", "--json").document
    assert validator.is_valid(document)
    for change in (lambda d: d.pop("result"), lambda d: d.pop("error"),
                   lambda d: d["result"].pop("signedIn"), lambda d: d.update(more=1),
                   lambda d: d["result"].update(more=1), lambda d: d.update(command="token"),
                   lambda d: d.update(exitStatus=9), lambda d: d.update(error="text"),
                   lambda d: d["result"].update(signedIn="no")):
        changed = json.loads(json.dumps(document))
        change(changed)
        assert not validator.is_valid(changed), changed


def completed(place, *words):
    """What bash offers in the place of the last word."""
    script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _hxsso; '
              'printf "%s\\n" "${COMPREPLY[@]}"')
    file = ROOT / "tools/hxsso/completion/hxsso.bash"
    ended = subprocess.run(
        place.provider.authority.trusted(["bash", "-c", script, "bash", file, *words]),
        env=place.environment(), capture_output=True, text=True, timeout=PATIENCE, check=False)
    assert ended.returncode == 0 and not ended.stderr, ended
    return ended.stdout.split()


def CompletionInBash(place, provider):
    if place.is_windows:
        skip("bash runs no program for Windows here")
    place.configure({"production": provider.server_entry(), "test": provider.server_entry()})
    program = str(place.hxsso)
    assert completed(place, program, "lo") == ["login", "logout"]
    assert completed(place, program, "token", "--server", "") == ["production", "test"]
    assert completed(place, program, "token", "--server", "t") == ["test"]
    assert completed(place, program, "login", "--hint", "") == []
    # All that there is, and nothing else.
    help_text = place.run("--help").text
    commands = re.findall(r"^  ([a-z]+)  ", help_text, re.M)
    assert set(commands) == {w for w in completed(place, program, "") if w[0] != "-"}
    offered = {w for command in commands if command != "doctor"
               for w in completed(place, program, command, "--")}
    assert offered | {"--version"} == set(re.findall(r"^  (--[a-z-]+)", help_text, re.M))
    takes_value = set(re.findall(r"^  (--[a-z-]+) [A-Z]", help_text, re.M))
    for command in commands:
        for option in completed(place, program, command, "--") if command != "doctor" else []:
            ended = place.run(command, option, *["1"] * (option in takes_value), "--help")
            assert ended.status == 0, ended


if __name__ == "__main__":
    run(globals())
