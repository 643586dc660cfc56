#!/usr/bin/env python3
"""Tokens: their forms, their lives, and who must not see them."""

import calendar
import json
import os
import subprocess
import time

from hxsso_place import PATIENCE, PROGRAMS, Ended, User, failed, run, skip
from tokens import claims_of  # noqa: E402


def FormsOfAToken(place, provider):
    with User(place):
        place.sign_in()
        token = place.token()
        assert place.token("--header") == "Authorization: Bearer " + token
        ended = place.run("token", "--json")
        assert ended.errors == "" and ended.result["token"] == token and ended.result["scope"] is None
        ends = claims_of(token)["exp"]
        told = time.strptime(ended.result["expiresAt"], "%Y-%m-%dT%H:%M:%SZ")
        assert abs(ends - calendar.timegm(told)) <= 2
        assert provider.requests["token"] == 1, "a token that is still good is asked for again"

        narrow = place.token("--scope", "data:read")
        assert claims_of(narrow)["scope"] == "data:read" and narrow != token
        assert place.token("--scope", "data:read") == narrow
        assert place.run("token", "--scope", "data:read", "--json").result["scope"] == "data:read"
        failed(place.run("token", "--scope", "unknown:scope"), 4, "was not granted the scope")
        assert place.run("status").status == 0, "a scope that is refused signs out"


def TokenOfOddCharacters(place, provider):
    """As RFC 6749 permits them."""
    odd = "a\"b\\c/<&'%>~ !"
    with User(place):
        place.sign_in()
        original = provider._json
        def with_odd_token(members):
            return original([(n, odd if n == "access_token" else v) for n, v in members
                             if n != "id_token"])
        provider._json = with_odd_token
        assert place.run("token", "--scope", "data:read").output == odd.encode() + b"\n"
        assert place.run("token", "--scope", "data:read", "--json").result["token"] == odd


def TokenIsRenewedBeforeItEnds(place, provider):
    provider.lifetime = 300
    with User(place):
        place.sign_in()
        token = place.token()
        assert place.token("--min-valid", "200") == token
        assert provider.requests["token.refresh_token"] == 0
        provider.lifetime = 3600
        renewed = place.token("--min-valid", "400")
        assert renewed != token and provider.requests["token.refresh_token"] == 1
        assert place.token("--min-valid", "3000") == renewed == place.token()
        # Longer than the provider gives: there is none, and that is told.
        ended = place.run("token", "--min-valid", "5000")
        assert ended.status == 0 and ended.output.count(b".") == 2, ended
        assert "gives no token that lives so long" in ended.errors, ended
        assert provider.requests["token.refresh_token"] == 2
        provider.misbehave("500", at="token")
        failed(place.run("token", "--min-valid", "5000"), 4, "status 500")


def TokenWithoutRefresh(place, provider):
    """What is at hand is better than none; that it is short is told."""
    provider.lifetime = 1800
    provider.misbehave("refresh-token-missing")
    with User(place):
        place.sign_in()
    token = place.token("--min-valid", "600")
    ended = place.run("token", "--min-valid", "3600")
    assert (ended.status, ended.text) == (0, token + "\n"), ended
    assert "gives no token that lives so long" in ended.errors, ended
    assert provider.requests["token"] == 1


def on_terminal(place, *words):
    """(status, what the terminal got), with the standard output on a terminal."""
    import pty
    controller, terminal = pty.openpty()
    process = subprocess.Popen(place.words(*words), cwd=place.root, env=place.environment(),
                               stdin=subprocess.DEVNULL, stdout=terminal, stderr=subprocess.PIPE)
    os.close(terminal)
    got = b""
    try:
        while chunk := os.read(controller, 4096):
            got += chunk
    except OSError:  # Linux tells the end so
        pass
    _, errors = process.communicate(timeout=PATIENCE)
    os.close(controller)
    return process.returncode, got.decode(), errors.decode()


def TokenIsNotWrittenToATerminal(place, provider):
    if place.is_windows:
        skip("Wine has no console that a test can read")
    with User(place):
        place.sign_in()
        token = place.token()
        asked = len(provider.seen)
        for words in (["token"], ["token", "--header"], ["token", "--json"],
                      ["token", "--min-valid", "99999"]):
            status, got, errors = on_terminal(place, *words)
            assert (status, got) == (2, ""), (words, status, got)
            assert "not written to a terminal" in errors and "--show" in errors, errors
        assert len(provider.seen) == asked, "asks the provider before it refuses"
        assert on_terminal(place, "token", "--show")[:2] == (0, token + "\r\n")
        status, got, _ = on_terminal(place, "token", "--show", "--json")
        assert status == 0 and json.loads(got)["result"]["token"] == token
        # Everything else may be read there.
        assert on_terminal(place, "whoami")[:2] == (0, "alice\r\n")


def TokenIsNotWrittenToMintty(place, _provider):
    """The terminal of Git Bash, which is a pipe to Windows."""
    if not place.is_windows:
        skip("a terminal is one on Linux")
    with User(place):
        place.sign_in()
    helper = PROGRAMS / "hxsso-mintty.exe"

    def in_pipe(name):
        words = [*place.emulator, helper, name, place.native(place.hxsso), "token"]
        return Ended(words, subprocess.run(
            place.provider.authority.trusted(words), env=place.environment(), cwd=place.root,
            stdin=subprocess.DEVNULL, capture_output=True, timeout=PATIENCE, check=False))
    for name in ("msys-1888ae32e00d56aa-pty0-to-master", "cygwin-e022582115c10879-pty12-to-master"):
        failed(in_pipe(name), 2, "not written to a terminal", "--show")
    ended = in_pipe("msys-1888ae32e00d56aa-2345-pipe-0x1")
    assert ended.status == 0 and ended.text.count(".") == 2, ended


def TwentyShellsMakeOneRefresh(place, provider):
    provider.lifetime = 4
    with User(place):
        place.sign_in()
        old = place.token()
        time.sleep(3)  # the token counts as ended in the second half of its short life
        provider.lifetime = 3600
        shells = [place.begin("token") for _ in range(20)]
        ended = [(shell.communicate(timeout=PATIENCE), shell.returncode) for shell in shells]
        assert all(status == 0 for _, status in ended), ended
        tokens = {output for (output, _), _ in ended}
        assert len(tokens) == 1 and old.encode() + b"\n" not in tokens, tokens
        assert all(errors == b"" for (_, errors), _ in ended), ended
        assert provider.requests["token.refresh_token"] == 1, provider.requests
        assert place.run("status").status == 0
        assert place.run("logout").status == 0


def NoSecretIsTold(place, provider):
    """Neither by a command that is no token's, nor where anybody looks."""
    with User(place):
        place.sign_in()
        token = place.token()
        secrets = [token, *provider._refresh, *provider._access]
        for words in (["status"], ["whoami"], ["servers"], ["login"], ["doctor", "--log"],
                      ["logout"]):
            for more in ([], ["--json"]):
                if words == ["logout"] and more:
                    continue
                ended = place.run(*words, *more)
                for secret in secrets:
                    assert secret not in ended.text + ended.errors, (words, secret)
        ended = place.run("token", "--scope", "unknown:scope")
        assert not any(secret in ended.errors for secret in secrets)


def TokenIsWipedInMemory(place, _provider):
    """At the end there is nothing of what hxsso makes of a token."""
    if place.is_windows:
        skip("the memory of another process is looked at on Linux alone")
    import memory_at_end
    with User(place):
        place.sign_in()
    token = place.token()
    # As nobody else has it: the plugin and the library know the token alone.
    texts = ["Bearer " + token[:20], token[-20:] + "\n", '"token" : "' + token[:20]]
    for words in (["token"], ["token", "--header"], ["token", "--json"],
                  ["token", "--min-valid", "60"]):
        try:
            output, count = memory_at_end.copies_at_end(
                place.words(*words), place.hxsso, texts, cwd=place.root, env=place.environment())
        except OSError as error:
            skip(f"this machine permits no look at another process: {error}")
        assert token.encode() in output and count == 0, (words, count)


if __name__ == "__main__":
    run(globals())
