#!/usr/bin/env python3
"""device_test.py CASE FOLDER [EMULATOR...]

Signing in on another device, as hosts have it: see host_test.py.
"""

import re
import time

import host_test
from host_test import has_remedy, lines_of, order_cases, refused, token
from installation import User, wait_until

import orders  # noqa: E402

# Whatever is the provider's answer to the first question: no sign-in is begun.
BEGINNING = [
    ("400-json", "device", "status 400, invalid_grant: as ordered"),
    ("401", "device", "status 401, invalid_client"),
    ("429", "device", "status 429, temporarily_unavailable"),
    ("500", "device", "status 500"),
    ("redirect", "device", "never followed"),
    ("not-json", "device", "is not valid JSON"),
    ("empty", "device", "is empty instead of JSON"),
    ("array", "device", "is not a JSON object|is not valid JSON"),
    ("deep", "device", "is not valid JSON"),
    ("large", "device", "answered with too much"),
    ("endless", "device", "answered with too much"),
    ("cut", "device", "could not be reached"),
    ("wrong-types", "device", "that is not a text"),
    ("device-uri-http", None, "an address to sign in at that is not https"),
    ("device-uri-loopback", None, "an address to sign in at that is not https"),
    ("device-uri-complete-script", None, "an address to sign in at that is not https"),
    ("device-code-lines", None, "user_code that is not a text"),
    ("device-code-long", None, r"a code \(user_code\) that nobody can type"),
    ("device-code-missing", None, "without the codes"),
    ("device-expiry-missing", None, "without the lifetime of its codes"),
    ("device-interval-text", None, "an interval that is not a number"),
]
# What polling gets: the sign-in ends.
POLLING = [
    ("400-json", "token", "status 400, invalid_grant: as ordered"),
    ("401", "token", "status 401, invalid_client"),
    ("redirect", "token", "never followed"),
    ("not-json", "token", "is not valid JSON"),
    ("wrong-types", "token", "that is not a text"),
    ("large", "token", "answered with too much"),
    ("id-token-missing", None, "gave tokens, but no id_token"),
    ("aud-wrong", None, "is not for the client"),
    ("iss-wrong", None, "is from the issuer"),
    ("expired", None, r"expired \d+ s ago"),
    ("alg-none", None, "is not accepted"),
    ("signature-altered", None, "has a wrong signature"),
    ("at-hash-wrong", None, "belongs to another access token"),
    ("userinfo-sub-wrong", None, r"about another user \(sub\)"),
]


def begin(host, capacity=17_000):
    answer = host.ask("InitiateLogin.device", capacity)
    assert answer["result"] is True, answer
    assert (answer["error"], answer["value"]) == (0, 200), answer
    return answer["text"].split("\n")


def SignsInOnAnotherDevice(place, provider):
    with place.start() as host, place.start() as other:
        lines = begin(host)
        assert lines[0] == provider.issuer + "/verify" and re.fullmatch("[0-9A-F]{8}", lines[1])
        assert lines[2] == f"{lines[0]}?user_code={lines[1]}" and len(lines) == 3
        assert host.ask("UI.IsLoginInProgress") is True
        assert host.ask("InitiateLogin", 4000)["result"] is False  # one at a time
        before = len(place.log())
        host.begin("CompleteLogin")
        wait_until(lambda: provider.requests["token"] >= 1)
        assert host.ask("IsLoggedIn") is False
        User(place).visit(lines[2])
        assert host.ask("await") is True and host.ask("GetUserNameW") == "Alice Ågren"
        assert host.ask("UI.IsLoginInProgress") is False and host.ask("CompleteLogin") is False
        # As any other one: for all hosts, and to be renewed.
        assert other.ask("RestoreLogin") is True and token(other, "data:read").count(".") == 2
        assert token(host, "data:read") == token(other, "data:read")
        assert provider.requests["authorization"] == 0 and not place.addresses.exists()
        text = "\n".join(place.log()[before:])
        assert lines[1] not in text, text
        asked = [parameters for at, parameters in provider.seen if at == "device"]
        assert [parameters["client_id"] for parameters in asked] == ["hxsso-test"], asked
        assert "openid" in asked[0]["scope"].split() and "nonce" not in asked[0], asked


def DeviceTextIsNeverCut(place, provider):
    with place.start() as host:
        length = len("\n".join(begin(host)))
        host.ask("Logout")
        for capacity in (length, 30, 1):
            before = len(place.log())
            answer = host.ask("InitiateLogin.device", capacity)
            assert answer == {"result": False, "text": "", "error": 2, "value": 404}, answer
            [line] = lines_of(place, before)
            assert line.startswith("Error Cannot begin a sign-in") and has_remedy(line), line
            assert f"at least {length + 1}" in line, line
            assert host.ask("UI.IsLoginInProgress") is False
        lines = begin(host, length + 1)
        host.begin("CompleteLogin")
        provider.approve_device(lines[1])
        assert host.ask("await") is True


def UserOfTheDeviceSaysNo(place, provider):
    with place.start() as host:
        lines = begin(host)
        before = len(place.log())
        host.begin("CompleteLogin")
        provider.approve_device(lines[1], denied=True)
        assert host.ask("await") is False and host.ask("IsLoggedIn") is False
        refused(place, "access_denied.* and agree", before)


def CodeOfTheDeviceEnds(place, provider):
    provider.device_lifetime = 2
    with place.start() as host:
        begin(host)
        before = len(place.log())
        assert host.ask("CompleteLogin") is False
        refused(place, "in time|code ended", before)
        assert host.ask("UI.IsLoginInProgress") is False


def LogoutEndsADeviceThatWaits(place, provider):
    provider.device_interval = 30
    with place.start() as host:
        begin(host)
        host.begin("CompleteLogin")
        wait_until(lambda: host.ask("UI.IsLoginInProgress"))
        time.sleep(0.3)
        began = time.monotonic()
        assert host.ask("Logout") is False  # nobody was signed in
        assert host.ask("await") is False and time.monotonic() - began < 1
        assert provider.requests["token"] == 0


def DeviceGoesOnAfterTroubles(place, provider):
    provider.misbehave("500", at="token", times=1)
    provider.misbehave("cut", at="token", times=1)
    with place.start() as host:
        lines = begin(host)
        before = len(place.log())
        host.begin("CompleteLogin")
        wait_until(lambda: provider.requests["token"] == 2)
        provider.approve_device(lines[1])
        assert host.ask("await") is True and provider.requests["token"] == 3
        assert not [line for line in lines_of(place, before) if line.startswith("Error ")]


def HostileProviderOfDevices(place, provider):
    provider.slow_seconds = 20
    with place.start() as host:
        def begins(_fault, _at, pattern, before):
            assert host.ask("InitiateLogin.device", 17_000)["result"] is False, "begun"
            assert host.ask("UI.IsLoginInProgress") is False
            refused(place, pattern, before)
        order_cases(BEGINNING, place, provider, begins)

        def polls(_fault, _at, pattern, before):
            provider.approve_device(begin(host)[1])
            assert host.ask("CompleteLogin") is False, "signed in"
            assert host.ask("IsLoggedIn") is False
            refused(place, pattern, before)
        order_cases(POLLING, place, provider, polls)
        provider.approve_device(begin(host)[1])
        assert host.ask("CompleteLogin") is True
    assert provider.bytes_of_endless < 64 << 20


def ProviderWithoutDevices(place, provider):
    provider.misbehave("discovery-device-missing")
    with place.start() as host:
        before = len(place.log())
        assert host.ask("InitiateLogin.device", 17_000)["result"] is False
        refused(place, "offers no sign-in on another device", before)


# What Login needs to find no browser.
WITHOUT_BROWSER = {"DISPLAY": "", "WAYLAND_DISPLAY": ""}


def device_in_log(place, provider):
    """Signs in with what stands in the log alone."""
    line = r"Sign in on another device: open (https://\S+) there, and enter (\S+)$"
    found = []
    wait_until(lambda: found.extend(filter(None, (re.search(line, l) for l in place.log()))) or
               found)
    assert found[0][1] == provider.issuer + "/verify"
    provider.approve_device(found[0][2])


def LoginWithoutABrowserUsesADevice(place, provider):
    place.configure({"production": {**provider.server_entry(), "deviceLogin": True}})
    none = place.native(place.root / "none")
    # On Linux it is known beforehand; a browser that does not start is known on both.
    environments = [{"HXSSO_OPENID_BROWSER": none}]
    if not place.is_windows:
        environments.append({"HXSSO_OPENID_BROWSER": ""})
    for environment in environments:
        (place.store / "HxSSOOpenID.log").unlink(missing_ok=True)
        with place.start(**WITHOUT_BROWSER, **environment) as host:
            host.begin("UI.Login")
            device_in_log(place, provider)
            assert host.ask("await") is True and host.ask("GetUserId") == "alice"
            assert host.ask("Logout") is True
    assert provider.requests["authorization"] == 0


def LoginWithoutABrowserFails(place, provider):
    """Nobody has permitted another device."""
    with place.start(**WITHOUT_BROWSER,
                     HXSSO_OPENID_BROWSER=place.native(place.root / "none")) as host:
        before = len(place.log())
        assert host.ask("UI.Login") is False
        refused(place, "no browser was started", before)
    assert provider.requests["device"] == 0
    assert orders.NOT_BACK not in "".join(place.log())


if __name__ == "__main__":
    host_test.main(globals())
