#!/usr/bin/env python3
"""Signing in on another device."""

import json
import re
import signal
import time

from hxsso_place import PATIENCE, User, failed, run, schema, skip


def begin(place, *arguments):
    """(the process, the lines about the other device)"""
    process = place.begin("login", "--device", *arguments)
    lines = []
    while not lines or not lines[-1].startswith("Waiting"):
        line = process.stderr.readline().decode()
        assert line, (lines, process.communicate())
        lines.append(line.rstrip("\r\n"))
    return process, lines


def SignsInOnAnyDevice(place, provider):
    process, lines = begin(place)
    page = provider.issuer + "/verify"
    assert lines[1] == page and re.fullmatch("[0-9A-F]{8}", lines[3]), lines
    assert lines[5] == f"{page}?user_code={lines[3]}", lines
    assert process.poll() is None
    User(place).visit(lines[5])
    output, errors = process.communicate(timeout=PATIENCE)
    assert (process.returncode, errors) == (0, b""), errors
    expected = f"Signed in as Alice Ågren (alice@example.org) at {provider.issuer}\n"
    assert output.decode().replace("\r", "") == expected, output
    assert place.run("whoami").text == "alice\n" and place.token().count(".") == 2
    assert not place.addresses.exists(), "a browser was opened"

    # Whoever is signed in needs no other device, either.
    ended = place.run("login", "--device")
    assert ended.status == 0 and ended.text.startswith("Already signed in as Alice"), ended
    assert provider.requests["device"] == 1


def DeviceKeepsTheDocumentClean(place, provider):
    """With --json, too, the lines are on standard error."""
    validator = schema("hxsso.schema.json")
    process, lines = begin(place, "--json")
    provider.approve_device(lines[3])
    output, _ = process.communicate(timeout=PATIENCE)
    document = json.loads(output)
    assert not list(validator.iter_errors(document)), document
    assert (document["exitStatus"], document["result"]["wasSignedIn"]) == (0, False), document


def InterruptEndsADevice(place, provider):
    if place.is_windows:
        skip("no Ctrl-C reaches a program under Wine")
    provider.device_interval = 20
    process, lines = begin(place)
    process.send_signal(signal.SIGINT)
    began = time.monotonic()
    output, errors = process.communicate(timeout=10)
    assert time.monotonic() - began < 1
    assert (process.returncode, output) == (-signal.SIGINT, b""), (process.returncode, output)
    assert errors.decode().endswith("hxsso: the sign-in was ended\n"), errors
    # Nobody fetches what the user agrees to now, and the next sign-in is free to begin.
    provider.approve_device(lines[3])
    assert place.run("status").status == 1 and provider.requests["token"] == 0
    provider.device_interval = 1
    process, lines = begin(place)
    provider.approve_device(lines[3])
    assert process.wait(PATIENCE) == 0


def UserOfTheDeviceSaysNo(place, provider):
    process, lines = begin(place)
    provider.approve_device(lines[3], denied=True)
    _, errors = process.communicate(timeout=PATIENCE)
    text = errors.decode()
    assert process.returncode == 4 and "access_denied" in text, (process.returncode, text)
    assert "Fix: sign in again, and agree at the provider" in text, text


def CodeOfTheDeviceEnds(place, provider):
    provider.device_lifetime = 2
    process, _ = begin(place)
    _, errors = process.communicate(timeout=PATIENCE)
    assert process.returncode == 4, process.returncode
    assert re.search("hxsso: Cannot sign in: .*(in time|code ended)", errors.decode()), errors


def ProviderWithoutDevices(place, provider):
    provider.misbehave("discovery-device-missing")
    failed(place.run("login", "--device"), 4, "offers no sign-in on another device",
           "provider's administrator")
    assert provider.requests["device"] == 0
    document = place.run("login", "--device", "--json").document
    assert "another device" in document["error"]["text"], document


def DeviceOrAddress(place, provider):
    failed(place.run("login", "--device", "--no-browser"), 2, "do not go together")
    assert not provider.requests


def LoginTellsOfDevices(place, _provider):
    """Who has no browser learns of the other way at once, whatever becomes of the browser."""
    place.configure(timeouts={"login": 1, "network": 5})
    ended = failed(place.run("login"), 4, "the browser did not come back")
    assert re.search("SSH.* hxsso login --device", ended.errors), ended
    ended = place.run("login", HXSSO_OPENID_BROWSER=place.native(place.root / "none"))
    failed(ended, 4, "no browser was started")
    assert "--device" in ended.errors, ended


if __name__ == "__main__":
    run(globals())
