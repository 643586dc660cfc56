#!/usr/bin/env python3
"""Shows a sign-on at a real provider: what scripts/demo openid runs when all is built.

demo.py FOLDER PLACE [EMULATOR...]: FOLDER has the build's programs, PLACE is made anew.

Two hosts share one login: the sample host, unchanged, which signs in by the browser where nobody
is signed in, and signs out at its end; and openid-host, which does what it is told, for what the
sample host does not do. The last line is "demo: ok" only if all that is claimed was seen.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE / "host"), str(HERE / "providers")]
sys.dont_write_bytecode = True

import authority  # noqa: E402
import oidc_provider  # noqa: E402
from place import Place  # noqa: E402
from tokens import parts_of  # noqa: E402

SCOPES = "openid profile email user:profile data:read data:write"
SIGNATURE = re.compile(r"(eyJ[\w-]+\.eyJ[\w-]+)\.[\w-]+")


def say(text):
    print(f"demo: {text}", flush=True)


def show(text):
    """What a program printed, but for signatures: with them a token could be used."""
    print()
    for line in text.splitlines():
        print("  " + SIGNATURE.sub(r"\1.(signature)", line))
    print(flush=True)


def show_token(what, token):
    header, claims = parts_of(token)
    show(f"{what}\n  header: {header}\n  claims: {claims}")


class Demonstration(Place):
    """Found by its Location, as an installer leaves it, and by nothing else."""

    def __init__(self, root, programs, emulator, provider):
        super().__init__(root, programs, emulator, provider)
        self.sample = self.host.with_name(self.host.name.replace("openid-host", "SampleHost"))
        shutil.copy(programs / self.sample.name, self.sample)
        self.configure({"production": provider.server_entry(SCOPES)})

    def _lead_to_the_plugin(self):
        super()._lead_to_the_plugin()
        (self.root / "app/SSOClient.config").write_text("{}")
        if self.is_windows:
            subprocess.run(
                [*self.emulator, "reg", "add", r"HKLM\Software\Halvorix\Halvorix HxSSO",
                 "/v", "Location", "/d", self.native(self.root / "server"), "/f", "/reg:64"],
                check=True, stdout=subprocess.DEVNULL)

    def run_sample(self, *expected):
        """Its output, which must have these lines, with "*" for anything."""
        words = [*self.emulator, str(self.sample)]
        ended = subprocess.run(
            self.provider.authority.trusted(words), cwd=self.root, encoding="utf-8",
            env=self.environment(), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            check=True)
        show(ended.stdout)
        for line in expected:
            pattern = "^" + re.escape(line).replace(r"\*", ".*") + "$"
            claim(re.search(pattern, ended.stdout, re.MULTILINE),
                  f"the sample host printed no line '{line}'")


def claim(condition, otherwise):
    if not condition:
        raise SystemExit(f"demo: {otherwise}")


def token_of(host):
    token = host.ask("GetOAuth2AccessToken", 1, "data:read")
    claim(token, "there is no token for data:read")
    return token["token"]


def demonstrate(place):
    say("the sample host, with nobody signed in: at its end it opens the browser")
    place.run_sample("RestoreLogin answers false", "access token: none *",
                     "dialog: Login answers true, IsLoggedIn true",
                     "dialog: Logout answers true, IsLoggedIn false")
    claim(place.sign_ins() == 1, "the browser did not come back to the sample host")
    found = place.logged("Getting HxSSO path from registry: ")
    claim(found, "the plugin's folder was not found by its Location")
    show(found[0])

    say("another host signs in by the browser, stays, and gets a token for data:read")
    with place.start() as host:
        claim(host.ask("UI.Login") is True, "Login answered false")
        claim(place.sign_ins() == 2, "the browser did not come back to the host")
        user = host.ask("GetUserNameW"), host.ask("GetUserEmail")
        claim(user == ("Alice Ågren", "alice@example.org"), f"the user is {user}")
        show("signed in: " + " ".join(user))
        first = token_of(host)
        show_token("access token", first)

        say("it refreshes the token; the provider takes each refresh token once")
        claim(host.ask("RefreshOAuth2Token.spec", 1, "data:read") is True, "no refresh")
        second = token_of(host)
        claim(second != first, "a refresh gave the same token")
        show_token("access token, refreshed", second)

        say("the sample host again: signed in by the other's login, until it signs out")
        place.run_sample("RestoreLogin answers true", "signed in: Alice Ågren alice@example.org",
                         "access token: *.*.*", "logout: CompleteLogout answers true",
                         "URL overrides: 0, login page none",
                         "dialog: Login answers true, IsLoggedIn true",
                         "dialog: Logout answers true, IsLoggedIn false")
        claim(place.sign_ins() == 3, "it used the browser before its dialog")
        claim(host.ask("IsLoggedIn") is False, "the host that stayed is still signed in")
        say("it needed no browser before its dialog, and the host that stayed is signed out, too")


def main(programs, place, *emulator):
    why = authority.why_untrusted() or oidc_provider.why_missing()
    if why:
        raise SystemExit(f"demo: {why}")
    root = pathlib.Path(place).resolve()
    shutil.rmtree(root, ignore_errors=True)
    say("starting oidc-provider, whose certificate is signed by an authority of our own")
    with oidc_provider.OidcProvider(root / "authority") as provider:
        say(f"installing the plugin's folder for {provider.issuer}, found by its Location")
        demonstrate(
            Demonstration(root / "installation", pathlib.Path(programs), emulator, provider))
    say("ok")


if __name__ == "__main__":
    os.environ["LC_ALL"] = "C.UTF-8"
    main(*sys.argv[1:])
