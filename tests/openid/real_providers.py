#!/usr/bin/env python3
"""Signs in at real providers, by a host that does what it is told and a browser that fills in
their forms.

real_providers.py TEST PROVIDER FOLDER [EMULATOR...], where FOLDER has the build's programs. Ends
with status 77 and a line that says why where the provider cannot be had.
"""

import pathlib
import sys
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE / "host"), str(HERE / "providers")]
sys.dont_write_bytecode = True

import authority  # noqa: E402
import chromium  # noqa: E402
import glewlwyd  # noqa: E402
import oidc_provider  # noqa: E402
from browser import Browser  # noqa: E402
from hostile import HostileProvider  # noqa: E402
from installation import wait_until  # noqa: E402
from place import Place, processes_of  # noqa: E402
from tokens import claims_of  # noqa: E402

PROVIDERS = {"oidc-provider": (oidc_provider.OidcProvider, oidc_provider.why_missing),
             "glewlwyd": (glewlwyd.Glewlwyd, glewlwyd.why_missing),
             "hostile": (HostileProvider, lambda: None)}


def sign_in(host):
    assert host.ask("IsLoggedIn") is False
    assert host.ask("UI.Login") is True
    assert host.ask("IsLoggedIn") is True


def token_of(host, scope="data:read"):
    token = host.ask("GetOAuth2AccessToken", 1, scope)
    assert token and token["token"], f"no token for {scope}: {token}"
    return token["token"]


def refused_to(host, place):
    """A refresh that the provider refuses: signed out, and told why."""
    before = len(place.logged("Fix:"))
    assert host.ask("RefreshOAuth2Token", "true") is False
    assert host.ask("IsLoggedIn") is False
    assert host.ask("GetOAuth2AccessToken", 1, "data:read") is None
    assert len(place.logged("Fix:")) > before, place.log()


# ----- the tests

def signs_in(place):
    """User, narrowed token, and a second host that needs no browser."""
    with place.start() as host:
        sign_in(host)
        assert host.ask("GetUserNameW") == "Alice Ågren"
        assert host.ask("GetUserEmail") == "alice@example.org"
        assert host.ask("Private.GetUrlOverrides", 0) == {}
        token = token_of(host)
        claims = claims_of(token)
        assert claims["iss"] == place.provider.issuer, claims
        scopes = claims["scope"].split()
        assert "data:read" in scopes, claims
        # glewlwyd gives as much as was agreed to, whatever is asked for at a refresh.
        assert place.provider.name == "glewlwyd" or scopes == ["data:read"], claims
        with place.start_without_browser() as second:
            assert second.ask("RestoreLogin") is True
            assert second.ask("GetUserNameW") == "Alice Ågren"
            assert token_of(second) == token
    assert place.sign_ins() == 1


def rotates(place):
    """Refreshes, one after another and from two hosts, by tokens that are good once."""
    with place.start() as host:
        sign_in(host)
        tokens = [token_of(host)]
        with place.start_without_browser() as second:
            assert second.ask("RestoreLogin") is True
            for each in (host, second, host, second):
                assert each.ask("RefreshOAuth2Token.spec", 1, "data:read") is True
                tokens.append(token_of(each))
        assert len(set(tokens)) == len(tokens), "a refresh gave the token of before"
        assert host.ask("IsLoggedIn") is True
    assert place.sign_ins() == 1


def reuse_is_told(place):
    """A refresh token that was used before: the provider ends the whole login."""
    with place.start() as host:
        sign_in(host)
    place.keep_store("before")
    with place.start_without_browser() as host:
        assert host.ask("RestoreLogin") is True
        assert host.ask("RefreshOAuth2Token", "true") is True
    place.keep_store("after")
    place.put_store_back("before")
    with place.start_without_browser() as host:
        assert host.ask("RestoreLogin") is True  # its access token is still good
        refused_to(host, place)
    place.put_store_back("after")
    with place.start_without_browser() as host:
        assert host.ask("RestoreLogin") is True
        refused_to(host, place)
    with place.start() as host:
        sign_in(host)
        token_of(host)


def signs_out(place):
    """Ends the session at the provider and revokes, where the provider lets it."""
    with place.start() as host, place.start_without_browser() as second:
        sign_in(host)
        assert second.ask("RestoreLogin") is True
        initiated = host.ask("InitiateLogout", 4000)
        assert initiated["result"] is True and initiated["cookies"] == 0, initiated
        assert initiated["text"].startswith(place.provider.issuer.partition("/api")[0])
        _, status, page = Browser(str(place.provider.authority.bundle)).visit(initiated["text"])
        assert status == 200, page
        place.keep_store("before")
        assert host.ask("CompleteLogout") is True
        for each in (host, second):
            assert each.ask("IsLoggedIn") is False
            assert each.ask("RestoreLogin") is False
            assert each.ask("GetOAuth2AccessToken", 1, "data:read") is None
            assert each.ask("GetUserNameW") == ""
    place.put_store_back("before")
    with place.start_without_browser() as host:
        host.ask("RestoreLogin")
        refreshed = host.ask("RefreshOAuth2Token", "true")
        assert refreshed is not place.provider.revokes_for_public_clients, refreshed


def account_is_removed(place):
    """By the provider's administrator: the next refresh signs out all hosts, and says so."""
    with place.start() as host, place.start_without_browser() as second:
        sign_in(host)
        assert second.ask("RestoreLogin") is True
        kept = token_of(second)
        place.provider.remove_account(place.provider.user)
        assert token_of(host) == kept, "nobody can know yet"
        refused_to(second, place)
        [line] = place.logged("Signed out: ")
        assert place.provider.issuer in line and "Fix: sign in again" in line, line
        assert host.ask("IsLoggedIn") is False and host.ask("RestoreLogin") is False
    assert place.sign_ins() == 1


def other_device(place):
    """The user signs in and agrees in a browser that knows nothing of the host."""
    with place.start_without_browser() as host, place.start_without_browser() as second:
        begun = host.ask("InitiateLogin.device", 17_000)
        assert begun["result"] is True, begun
        address, code, *complete = begun["text"].split("\n")
        assert address.startswith("https://localhost:") and len(complete) == 1, begun
        began = time.monotonic()
        host.begin("CompleteLogin")
        if place.provider.name == "glewlwyd":
            # While the user has not agreed, it tells who asks too often to slow down.
            place.provider.seem_polled(3)
            time.sleep(2.5)
        user = Browser(str(place.provider.authority.bundle), place.provider.user,
                       place.provider.password)
        _, status, page = user.visit(complete[0])
        assert status == 200, page
        assert host.ask("await") is True, place.log()
        if place.provider.name == "glewlwyd":
            assert time.monotonic() - began > 6, "it was not told to slow down"
        assert not place.logged(" Error "), place.log()
        assert not place.logged(code), place.log()
        assert host.ask("GetUserNameW") == "Alice Ågren"
        assert second.ask("RestoreLogin") is True and token_of(second) == token_of(host)
        assert second.ask("RefreshOAuth2Token.spec", 1, "data:read") is True
        assert host.ask("Logout") is True


def other_device_denied(place):
    with place.start_without_browser() as host:
        begun = host.ask("InitiateLogin.device", 17_000)
        host.begin("CompleteLogin")
        user = Browser(str(place.provider.authority.bundle), place.provider.user,
                       place.provider.password)
        user.presses = "abort"
        user.visit(begun["text"].split("\n")[2])
        assert host.ask("await") is False and host.ask("IsLoggedIn") is False
        assert place.logged("Cannot sign in", "access_denied", "and agree"), place.log()


def chromium_signs_in(place):
    """A real browser shows the page that the listener answers with."""
    place.browser = chromium.script(place.root, place.provider.authority)
    with place.start(HXSSO_OPENID_BROWSER=place.native(place.browser)) as host:
        sign_in(host)
        assert host.ask("GetUserId") == "alice"
    page = chromium.page(place.root)
    assert "You are back from signing in" in page, page


TESTS = {each.__name__: each
         for each in (signs_in, rotates, reuse_is_told, signs_out, account_is_removed,
                      other_device, other_device_denied, chromium_signs_in)}


def main(test, provider_name, programs, *emulator):
    provider_class, why_missing = PROVIDERS[provider_name]
    why = authority.why_untrusted() or why_missing() or \
        (test == "chromium_signs_in" and chromium.why_missing())
    if why:
        print(f"skipped: {why}")
        return 77
    with tempfile.TemporaryDirectory(prefix="hxsso-real-") as folder:
        root = pathlib.Path(folder).resolve()
        with provider_class(root / "authority") as provider:
            place = Place(root / "installation", pathlib.Path(programs), emulator, provider)
            try:
                TESTS[test](place)
            except BaseException:
                print("\n".join(place.log()))
                raise
        # Wine's own stay for a minute.
        wait_until(lambda: not processes_of(
            root, ("openid-host", "browser.py", "chromium", "serve.mjs", "glewlwyd")))
    print("passed")
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
