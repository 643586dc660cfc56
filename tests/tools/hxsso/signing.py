#!/usr/bin/env python3
"""Signing in and out, and who sees it."""

import os
import re
import socket
import subprocess
import threading
import time
import urllib.parse

from hxsso_place import PATIENCE, User, failed, run, skip, wait_until

from tokens import claims_of  # noqa: E402


def SignsInAndOut(place, provider):
    with User(place):
        ended = place.run("login")
        assert ended.status == 0, ended
        assert ended.text == f"Signed in as Alice Ågren (alice@example.org) at {provider.issuer}\n"
        assert "browser" in ended.errors, ended

        # Whoever is signed in is not sent to the browser again.
        ended = place.run("login")
        assert ended.status == 0 and ended.text.startswith("Already signed in as Alice"), ended
        assert ended.errors == "" and provider.requests["authorization"] == 1

        ended = place.run("status")
        assert ended.status == 0 and ended.errors == "", ended
        lines = ended.text.splitlines()
        assert lines[0] == "Signed in as Alice Ågren (alice@example.org)", ended
        assert f"server  production, {provider.issuer}" in lines, ended
        assert "client  hxsso-test" in lines, ended
        assert re.search(r"^since   \d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$", ended.text, re.M), ended
        assert re.search(r"^token   until \d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$", ended.text, re.M)

        assert place.run("whoami").text == "alice\n"
        token = place.token()
        assert claims_of(token)["sub"] == "alice" and place.token() == token

        ended = place.run("logout")
        assert (ended.status, ended.errors) == (0, ""), ended
        assert ended.text == f"Signed out at {provider.issuer}\n"
        assert provider.requests["revocation"] == 1
        failed(place.run("logout"), 1, "nobody is signed in at production", "hxsso login")


def HintNamesTheUser(place, provider):
    with User(place):
        place.sign_in()
        # Somebody else may be meant: the provider is asked.
        ended = place.run("login", "--hint", "bob@example.org")
        assert ended.status == 0 and ended.text.startswith("Signed in as Bob (bob@example.org)")
        assert provider.requests["authorization"] == 2
        assert dict(provider.seen)["authorization"]["login_hint"] == "bob@example.org"


def ServersHaveLoginsOfTheirOwn(place, provider):
    place.configure({"test": provider.server_entry(), "production": {
        **provider.server_entry(), "clientId": "another"}})
    with User(place):
        assert place.run("login", "--server", "test").status == 0
        ended = place.run("servers")
        assert ended.text.splitlines() == [
            f"* production, {provider.issuer}: not signed in",
            f"  test, {provider.issuer}: Alice Ågren (alice@example.org)"], ended
        assert place.run("status").status == 1
        assert place.run("status", "--server", "test").status == 0
        assert place.run("whoami", "--server", "test").text == "alice\n"
        assert claims_of(place.token("--server", "test"))["sub"] == "alice"
        failed(place.run("token"), 1, "nobody is signed in at production")
        assert place.run("logout", "--server", "test").status == 0
        assert place.run("status", "--server", "test").status == 1


def OneSignInForAll(place, provider):
    """A sign-in in a shell; then hosts of two folders and twenty shells at once; and a sign-out."""
    import shutil
    provider.lifetime = 4
    shutil.copytree(place.root / "app", place.root / "elsewhere")
    with User(place):
        place.sign_in()
    first = place.start()
    place.host = place.root / "elsewhere" / place.host.name
    second = place.start()
    try:
        wait_until(lambda: not first.ask("IsOAuth2TokenAvailable"))
        provider.lifetime = 3600
        shells = [place.begin("token") for _ in range(20)]
        for host in (first, second):
            host.tell("GetOAuth2AccessToken", 1, "")
        tokens = {host.answer()["token"] for host in (first, second)}
        for shell in shells:
            output, errors = shell.communicate(timeout=PATIENCE)
            assert (shell.returncode, errors) == (0, b""), errors
            tokens.add(output.decode().removesuffix("\n"))
        assert len(tokens) == 1, tokens
        assert provider.requests["authorization"] == 1, provider.requests
        assert provider.requests["token"] == 2, "one sign-in and one refresh"
        assert provider.requests["token.refresh_token"] == 1
        assert place.run("logout").status == 0
        asked = provider.requests.total()
        for host in (first, second):
            assert host.ask("GetOAuth2AccessToken", 1, "") is None
            assert host.ask("IsLoggedIn") is False and host.ask("RestoreLogin") is False
        assert [place.run(word).status for word in ("token", "whoami", "status")] == [1, 1, 1]
        assert provider.requests["revocation"] == 1 and provider.requests.total() == asked
    finally:
        first.close()
        second.close()


def OtherHostsSeeIt(place, provider):
    with User(place), place.start() as host:
        assert host.ask("IsLoggedIn") is False
        place.sign_in()
        assert host.ask("IsLoggedIn") is True and host.ask("RestoreLogin") is True
        assert host.ask("GetOAuth2AccessToken", 1, "")["token"] == place.token()
        assert provider.requests["authorization"] == 1
        assert place.run("logout").status == 0
        assert host.ask("IsLoggedIn") is False
        assert host.ask("GetOAuth2AccessToken", 1, "") is None
        # And the other way about.
        assert host.ask("UI.Login") is True
        assert place.run("status").status == 0
        assert host.ask("Logout") is True
        assert place.run("status").status == 1


def LoginWithoutABrowserHere(place, provider):
    with User(place) as user:
        process = place.begin("login", "--no-browser", "--hint", "bob@example.org")
        address = ""
        while not address.startswith("https://"):
            address = process.stderr.readline().decode()
            assert address, process.communicate()
        query = dict(urllib.parse.parse_qsl(urllib.parse.urlsplit(address).query))
        assert query["login_hint"] == "bob@example.org"
        assert not place.addresses.exists(), "a browser was opened"
        user.visit(address.strip())
        output, errors = process.communicate(timeout=PATIENCE)
        assert process.returncode == 0 and errors == b"", errors
        assert output.decode() == f"Signed in as Bob (bob@example.org) at {provider.issuer}\n"


def nothing_is_left(place, address):
    """Of a sign-in that was ended: no port, no lock, no login."""
    query = dict(urllib.parse.parse_qsl(urllib.parse.urlsplit(address).query))
    redirect = urllib.parse.urlsplit(query["redirect_uri"])
    try:
        socket.create_connection((redirect.hostname, redirect.port), 1).close()
        raise AssertionError("the port is still open")
    except ConnectionRefusedError:
        pass
    began = time.monotonic()
    assert place.run("status").status == 1
    with User(place):
        place.sign_in()
    assert time.monotonic() - began < 20


def InterruptEndsALogin(place, _provider):
    if place.is_windows:
        skip("no Ctrl-C reaches a program under Wine")
    import signal
    process = place.begin("login")
    wait_until(lambda: place.addresses.exists() and place.addresses.read_text().endswith("\n"))
    process.send_signal(signal.SIGINT)
    output, errors = process.communicate(timeout=10)
    assert process.returncode == -signal.SIGINT and output == b"", (process.returncode, output)
    assert errors.decode().endswith("hxsso: the sign-in was ended\n"), errors
    address = place.addresses.read_text().splitlines()[0]
    place.addresses.unlink()
    nothing_is_left(place, address)


def InterruptKeepsALoginThatIsThere(place, _provider):
    if place.is_windows:
        skip("no Ctrl-C reaches a program under Wine")
    import signal
    with User(place):
        place.sign_in()
    token = place.token()
    place.addresses.unlink()
    process = place.begin("login", "--hint", "bob@example.org")
    wait_until(place.addresses.exists)
    process.send_signal(signal.SIGINT)
    process.communicate(timeout=10)
    assert place.run("whoami").text == "alice\n" and place.token() == token


def InterruptOfATerminal(place, _provider):
    """Ctrl-C as a shell sees it."""
    if place.is_windows:
        skip("no Ctrl-C reaches a program under Wine")
    import pty
    controller, terminal = pty.openpty()
    script = 'trap : INT; "$@"; echo "status $?"'
    shell = subprocess.Popen(["setsid", "--ctty", "--wait", "bash", "-c", script, "bash",
                              *place.words("login", "--no-browser")],
                             cwd=place.root, env=place.environment(),
                             stdin=terminal, stdout=terminal, stderr=terminal)
    os.close(terminal)
    got = b""
    while b"https://" not in got:
        got += os.read(controller, 4096)
    time.sleep(0.2)
    os.write(controller, b"\x03")
    try:
        while chunk := os.read(controller, 4096):
            got += chunk
    except OSError:
        pass
    shell.wait(PATIENCE)
    assert b"status 130" in got and b"the sign-in was ended" in got, got


def InterruptLosesNoLogin(place, provider):
    """The provider has ended the old refresh token by then: the new one is stored first."""
    if place.is_windows:
        skip("no Ctrl-C reaches a program under Wine")
    import signal
    provider.lifetime = 2
    renewed, goes_on = threading.Event(), threading.Event()
    original = provider._refreshed

    def slowly(parameters):
        answer = original(parameters)
        renewed.set()
        goes_on.wait(PATIENCE)
        return answer

    with User(place):
        place.sign_in()
    for words, number in ((["token"], signal.SIGINT), (["login"], signal.SIGTERM),
                          (["token", "--min-valid", "1"], signal.SIGHUP)):
        time.sleep(1.5)  # the token counts as ended in the second half of its short life
        provider._refreshed = slowly
        process = place.begin(*words)
        assert renewed.wait(PATIENCE), words
        process.send_signal(number)
        time.sleep(0.3)
        assert process.poll() is None, (words, process.communicate())
        goes_on.set()
        output, errors = process.communicate(timeout=PATIENCE)
        assert (process.returncode, output) == (-number, b""), (words, process.returncode, errors)
        provider._refreshed = original
        renewed.clear()
        goes_on.clear()
        assert place.token() and place.run("status").status == 0, words


def LoginThatEndsWithItsToken(place, provider):
    provider.lifetime = 3
    provider.misbehave("refresh-token-missing")
    with User(place):
        place.sign_in()
        assert "no refresh token" in place.run("status").text
        wait_until(lambda: place.run("status").status == 1)
        failed(place.run("token"), 1, "no refresh token")


def LogoutForgetsWhatWasSetAside(place, provider):
    """Nobody is signed in, and still there is a refresh token that the provider takes."""
    with User(place):
        place.sign_in()
    [kept] = place.store.glob("login-*.dat")
    kept.rename(f"{kept}.damaged-1")
    assert place.run("status").status == 1
    failed(place.run("logout"), 1, "nobody is signed in at production")
    assert not list(place.store.glob("login-*.damaged-*")), list(place.store.iterdir())
    assert provider.requests["revocation"] == 1


def NobodyComesBack(place, _provider):
    place.configure(timeouts={"login": 1, "network": 5})
    failed(place.run("login"), 4, "the browser did not come back in time")


def NoBrowserAtAll(place, _provider):
    ended = place.run("login", HXSSO_OPENID_BROWSER=place.native(place.root / "none"))
    failed(ended, 4, "no browser was started")
    assert "--device" in ended.errors, ended


if __name__ == "__main__":
    run(globals())
