#!/usr/bin/env python3
"""What is told, and with which exit status, where something is wrong."""

import json
import os
import re
import subprocess

from hxsso_place import PATIENCE, Ended, User, failed, run, schema, skip

import hostile  # noqa: E402

# All that ask for a login.
ASKING = (["login"], ["logout"], ["status"], ["whoami"], ["token"], ["servers"])


def NobodyIsSignedIn(place, provider):
    for command in ("whoami", "token", "logout"):
        failed(place.run(command), 1, "nobody is signed in at production", "'hxsso login'")
    ended = place.run("status")
    assert ended.status == 1 and ended.errors == "", ended
    assert ended.text == f"Not signed in\nserver  production, {provider.issuer}\nclient  hxsso-test\n"
    ended = place.run("servers")
    assert ended.status == 0 and ended.text == f"* production, {provider.issuer}: not signed in\n"
    assert not provider.requests, provider.requests


def NoPlugin(place, _provider):
    place.module.unlink()
    for words in ASKING:
        failed(place.run(*words), 3, "there is no sign-on plugin", "hxsso doctor")
        if words != ["login"]:
            document = place.run(*words, "--json").document
            assert (document["exitStatus"], document["result"]) == (3, None), document
            assert "no sign-on plugin" in document["error"]["text"]


def NoServerApplication(place, _provider):
    if place.is_windows:
        skip("there hxsso itself is the server application")
    (place.root / "app/SSOClient.config").write_text("{}")
    (place.root / "server/HxSSO.exe").unlink()
    failed(place.run("token"), 3, "there is no sign-on plugin", "hxsso doctor")


def ModuleThatIsNoPlugin(place, _provider):
    library = next(place.home.glob("*HxSSOServices*"))
    place.module.write_bytes(library.read_bytes())
    failed(place.run("token"), 3, "there is no sign-on plugin", "hxsso doctor")


def ConfigurationOfThePluginIsWrong(place, _provider):
    place.settings.write_text('{"servers": {"production": {"issuer": "http://login.example"}}}')
    for words in ASKING:
        ended = failed(place.run(*words), 3, "Nobody can sign in: .*HxSSOOpenID.json", "https")
        assert "issuer is not an https address" in ended.errors, ended
    place.settings.unlink()
    failed(place.run("status"), 3, "HxSSOOpenID.json is missing", "hxsso configure")


def UnknownServer(place, _provider):
    for command in ("login", "logout", "status", "whoami", "token"):
        failed(place.run(command, "--server", "elsewhere"), 2, "no server 'elsewhere'", "servers")


def ProviderThatFails(place, provider):
    with User(place):
        provider.misbehave("access-denied")
        failed(place.run("login"), 4, "Cannot sign in: .*access_denied")
        provider.behave()
        place.sign_in()
        provider.misbehave("500", at="token")
        ended = failed(place.run("token", "--scope", "data:read"), 4,
                       "Cannot get a new token: .*status 500")
        assert "Fix: " in ended.errors, ended
        assert place.run("status").status == 0
        provider.behave()
        place.token("--scope", "data:read")
        # The provider has ended the login: nobody is signed in any more.
        provider.revoke_all()
        failed(place.run("token", "--scope", "data:write"), 1, "Signed out: .*refuses", "sign in")
        failed(place.run("token"), 1, "nobody is signed in")


def StoreThatCannotBeRead(place, provider):
    """Nobody knows then who is signed in: a script is to try again, not to ask for a login."""
    if place.is_windows:
        skip("a file that fails is made on Linux alone")
    if os.geteuid() != 0:
        skip("only root can put a file that fails over another")
    with User(place):
        place.sign_in()
    [kept] = place.store.glob("login-*.dat")
    # The program's memory: what it looks like is a file, and its beginning cannot be read.
    script = 'mount --bind "/proc/$$/mem" "$1" && shift && exec "$@"'
    for words in (["status"], ["whoami"], ["token"], ["servers"], ["logout"]):
        ended = subprocess.run(
            ["unshare", "-m", "sh", "-c", script, "sh", kept, *place.words(*words)],
            env=place.environment(), capture_output=True, timeout=PATIENCE, check=False)
        failed(Ended(words, ended), 4, "cannot be read for now", "disk works")
    assert kept.exists() and place.run("status").status == 0
    assert provider.requests["revocation"] == 0


def ProviderThatIsAway(place, provider):
    with User(place):
        place.sign_in()
        token = place.token()
    provider.stop()
    try:
        assert place.token() == token, "a token that is good needs no network"
        assert place.run("status").status == 0 and place.run("whoami").text == "alice\n"
        failed(place.run("token", "--scope", "data:read"), 4, "could not be reached")
        ended = place.run("logout")
        assert ended.status == 0 and ended.text.startswith("Signed out"), ended
        assert "hxsso: The refresh token was forgotten, but not revoked" in ended.errors, ended
        assert "Fix: " in ended.errors, ended
        failed(place.run("login"), 4, "could not be reached")
    finally:
        provider.start()


def DoctorTakesPathsOfTheUser(place, _provider):
    """They are relative to his folder, not to the program's."""
    mine = place.root / "mine"
    (mine / "b").mkdir(parents=True)
    config = (place.root / "app/SSOClient.config").read_bytes()
    (place.root / "app/SSOClient.config").unlink()
    for file in (mine / "mine.config", mine / "b/SSOClient.config"):
        file.write_bytes(config)
    for words, file in ((["--config", "mine.config"], mine / "mine.config"),
                        (["--search", "a;b"], mine / "b/SSOClient.config")):
        ended = place.run("doctor", "--verbose", *words, folder=mine)
        told = ended.text.replace("\\", "/")
        assert re.search(re.escape(str(file)) + " +read", told), (file, ended)


def NoFolderOfTheProgram(place, _provider):
    """Without /proc nobody knows it. The user's folder does not stand in for it."""
    if place.is_windows:
        skip("there a program always knows where it lies")
    if os.geteuid() != 0:
        skip("only root can hide /proc")
    evil = place.root / "evil"
    evil.mkdir()
    (place.root / "app/SSOClient.config").unlink()
    (evil / "SSOClient.config").write_text(json.dumps(
        {"ssoServer": {"searchPaths": str(place.root / "server")}}))
    (place.root / "xdg/Halvorix/HxSSO/Location").unlink()
    script = 'mount -t tmpfs tmpfs /proc && exec "$@"'
    ended = subprocess.run(["unshare", "-m", "sh", "-c", script, "sh", place.hxsso, "status"],
                           cwd=evil, capture_output=True,
                           env={**place.environment(), "LD_LIBRARY_PATH": str(place.home)},
                           timeout=PATIENCE, check=False)
    failed(Ended(["status"], ended), 3, "there is no sign-on plugin")


def Doctor(place, provider):
    ended = place.run("doctor")
    assert ended.status == 0 and ended.errors == "", ended
    assert "nothing wrong found" in ended.text.splitlines()[-1], ended
    assert place.native(place.hxsso, "/") in ended.text.replace("\\", "/"), ended
    errors = list(schema("doctor.schema.json").iter_errors(place.run("doctor", "--json").document))
    assert not errors, errors
    ended = place.run("doctor", "--log")
    assert ended.status == 0 and ended.text.splitlines()[-1].strip() == "sign-in can work", ended
    assert place.run("doctor", "--nonsense", "with blanks \"\\").status == 2
    assert place.run("doctor", "--help").text.startswith("hxsso-doctor - ")
    place.module.unlink()
    assert place.run("doctor").status == 1
    next(place.home.glob("hxsso-doctor*")).unlink()
    failed(place.run("doctor"), 5, "hxsso-doctor.* cannot be run", "beside")
    assert not provider.requests


def FilesOfTheCurrentFolderDoNotCount(place, _provider):
    """Anybody's folder must not bring a plugin with it."""
    evil = place.root / "evil"
    evil.mkdir()
    for file in (place.root / "server").iterdir():
        (evil / file.name).write_bytes(file.read_bytes())
    (evil / "SSOClient.config").write_text(json.dumps(
        {"ssoServer": {"searchPaths": place.native(evil, "/")}}))
    (evil / "SSOVersionCompatibility.config").write_text(
        (evil / "SSOVersionCompatibility.config").read_text()
        .replace("%SSOServerAppPath%", place.native(evil, "/")))
    # Whatever leads to the right ones is gone.
    (place.root / "app/SSOClient.config").unlink()
    (place.root / "server/SSOVersionCompatibility.config").unlink()
    if not place.is_windows:
        (place.root / "server/HxSSO.exe").unlink()
    failed(place.run("status", folder=evil), 3, "there is no sign-on plugin")


def OutputThatCannotBeWritten(place, _provider):
    if place.is_windows:
        skip("there is no full device")
    with User(place):
        place.sign_in()
    for words in (["status"], ["token"], ["token", "--json"], ["whoami"], ["--help"]):
        with open("/dev/full", "wb") as full:
            ended = subprocess.run(place.words(*words), env=place.environment(), stdout=full,
                                   stderr=subprocess.PIPE, timeout=PATIENCE, check=False)
        assert ended.returncode == 5 and b"cannot be written" in ended.stderr, (words, ended)


def TextsOfAProviderCannotSteerATerminal(place, provider):
    hostile.USERS["alice"] = {**hostile.USERS["alice"], "name": "A\x1b[31mB\nC\u202eD\u009bE",
                              "preferred_username": "x\ny\x07"}
    with User(place):
        place.sign_in()
    for words in (["status"], ["whoami"], ["servers"], ["whoami", "--json"], ["login"]):
        ended = place.run(*words)
        assert ended.status == 0, ended
        for bad in "\x1b\x07\u202e\u009b":
            assert bad not in ended.text, (words, bad)
    assert place.run("whoami").text.count("\n") == 1
    assert place.run("whoami", "--json").result["loginName"] == "x\ny\x07"


if __name__ == "__main__":
    run(globals())
