#!/usr/bin/env python3
"""Measures the open plugin beside the least that its operations could be.

measure.py FOLDER RESULT [EMULATOR...]: FOLDER has the build's programs; RESULT gets samples as
bench/table.py reads them. Floor and ours come in turns, at one provider, which runs in this process
and so does not count where the time of the processor is measured. The requests of a floor are those
that the plugin made before, to the same endpoints in the same order.
"""

import http.client
import json
import pathlib
import secrets
import subprocess
import sys
import tempfile
import urllib.parse

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tests/openid/host"), str(ROOT / "tests/openid/providers")]
sys.dont_write_bytecode = True

import authority  # noqa: E402
from hostile import HostileProvider  # noqa: E402
from installation import Installation  # noqa: E402
from tokens import SigningKey, challenge_of  # noqa: E402

LOGINS, PROCESSES, RENEWALS, LOOPS, CALLS = 20, 30, 30, 12, 20_000
SCOPES = "openid profile offline_access data:read"


class Key(SigningKey):
    """Access tokens as short as those of the sample plugin: what a longer text costs is not the
    plugin's."""

    def sign(self, claims, header=None, signature="own"):
        if (header or {}).get("typ") == "at+jwt":
            return "sample-oauth2-" + secrets.token_hex(4)
        return super().sign(claims, header, signature)


class OpenPlugin(Installation):
    program = "bench-openid-host"

    def words(self, *arguments):
        return self.provider.authority.trusted([*self.emulator, str(self.host), *arguments])

    def begin(self, *arguments):
        return subprocess.Popen(self.words(*arguments), cwd=self.root, env=self.environment(),
                                stdin=subprocess.PIPE, stdout=subprocess.PIPE, encoding="utf-8")

    def measure(self, *arguments):
        """The numbers that it prints."""
        with self.begin(*arguments) as host:
            output, _ = host.communicate()
        if host.returncode:
            sys.exit("\n".join([f"{arguments} failed", *self.log()[-8:]]))
        return [int(line) for line in output.split()]


class SamplePlugin(OpenPlugin):
    plugin = "SampleClientPlugin"


class Floor:
    """The program that asks by the HTTP library alone."""

    def __init__(self, place):
        file = place.host.with_name(place.host.name.replace("host", "floor"))
        words = place.provider.authority.trusted([*place.emulator, str(file)])
        self.process = subprocess.Popen(words, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        encoding="utf-8")

    def tell(self, *words):
        self.process.stdin.write(" ".join(words) + "\n")
        self.process.stdin.flush()

    def answer(self):
        line = self.process.stdout.readline()
        return int(line) if line else sys.exit("the floor ended")

    def close(self):
        self.process.communicate()


class Asked:
    """Requests of the kind that the plugin made, with codes and tokens of their own."""

    def __init__(self, provider):
        self.provider = provider

    def code(self, redirect):
        verifier = secrets.token_urlsafe(32)
        _, headers, _ = self.provider.authorization({
            "client_id": self.provider.client_id, "redirect_uri": redirect, "state": "state",
            "response_type": "code", "scope": SCOPES, "nonce": "nonce",
            "code_challenge_method": "S256", "code_challenge": challenge_of(verifier)}, None)
        callback = headers["Location"]
        code = dict(urllib.parse.parse_qsl(urllib.parse.urlsplit(callback).query))["code"]
        return callback, {"grant_type": "authorization_code", "code": code,
                          "redirect_uri": redirect, "code_verifier": verifier,
                          "client_id": self.provider.client_id}

    def tokens(self):
        _, form = self.code("http://127.0.0.1:1/callback")
        return json.loads(self.provider.token(form, None)[2])

    def tell(self, floor, endpoints, form):
        """All requests but that for tokens need nothing, or a token that another sign-in gave."""
        paths = {"discovery": "/.well-known/openid-configuration", "keys": "/jwks",
                 "userinfo": "/userinfo"}
        for endpoint in endpoints:
            if endpoint == "token":
                floor.tell("ask", self.provider.issuer + "/token", "-",
                           urllib.parse.urlencode(form))
            else:
                bearer = self.tokens()["access_token"] if endpoint == "userinfo" else "-"
                floor.tell("ask", self.provider.issuer + paths[endpoint], bearer, "-")


def come_back(callback):
    """As the browser does; the page is not looked at."""
    address = urllib.parse.urlsplit(callback)
    connection = http.client.HTTPConnection(address.hostname, address.port, timeout=30)
    connection.request("GET", f"{address.path}?{address.query}")
    status = connection.getresponse().status
    connection.close()
    assert status == 200, status


def login(place):
    """Nanoseconds, and the endpoints that were asked."""
    provider = place.provider
    with place.begin("login") as host:
        address = host.stdout.readline().strip()
        parameters = dict(urllib.parse.parse_qsl(urllib.parse.urlsplit(address).query))
        _, headers, _ = provider.authorization(parameters, None)
        before = len(provider.seen)
        host.stdin.write("go\n")
        host.stdin.flush()
        come_back(headers["Location"])
        output, _ = host.communicate()
    if host.returncode:
        sys.exit("\n".join(["the sign-in failed", *place.log()[-8:]]))
    return int(output), [endpoint for endpoint, _ in provider.seen[before:]]


def login_of_floor(floor, asked, endpoints):
    floor.tell("listen")
    callback, form = asked.code(f"http://127.0.0.1:{floor.answer()}/callback")
    asked.tell(floor, endpoints, form)
    floor.tell("run")
    come_back(callback)
    return floor.answer()


def renewal_of_floor(floor, asked, endpoints):
    asked.tell(floor, endpoints, {
        "grant_type": "refresh_token", "refresh_token": asked.tokens()["refresh_token"],
        "scope": "data:read", "client_id": asked.provider.client_id})
    floor.tell("run")
    return floor.answer()


def measure(place, sample, samples):
    provider = place.provider
    asked, floor = Asked(provider), Floor(place)

    def add(row, ours, of_floor):
        sides = samples.setdefault(row, {"floor": [], "ours": []})
        sides["ours"].append(ours)
        sides["floor"].append(of_floor)

    print("bench: sign-ins", flush=True)
    login_of_floor(floor, asked, ["token"])  # its library begins
    for _ in range(LOGINS):
        ours, endpoints = login(place)
        add("callback to a token", ours, login_of_floor(floor, asked, endpoints))
    print(f"bench: a sign-in asks: {' '.join(endpoints)}")

    print("bench: renewals", flush=True)
    before = len(provider.seen)
    _, *ours = place.measure("renewals", str(RENEWALS + 1))
    endpoints = [endpoint for endpoint, _ in provider.seen[before:]]
    each = endpoints[-(len(endpoints) // (RENEWALS + 1)):]
    print(f"bench: a renewal asks: {' '.join(each)}")
    for time in ours:
        add("silent renewal", time, renewal_of_floor(floor, asked, each))
    floor.close()

    print("bench: tokens and first answers", flush=True)
    before = len(provider.seen)
    reads = set()
    for _ in range(LOOPS):
        ours, count = place.measure("tokens", str(CALLS))
        reads.add(count)
        add("token from memory", ours, sample.measure("tokens", str(CALLS))[0])
    for _ in range(PROCESSES):
        add("first answer, signed in", place.measure("first")[0], sample.measure("first")[0])
    if len(provider.seen) != before:
        sys.exit("the network was asked for tokens that are at hand")
    if reads == {-1}:
        print("bench: this system does not count reads")
    elif reads != {0}:
        sys.exit(f"{CALLS} tokens from memory took reads: {sorted(reads)}")
    else:
        print(f"bench: {LOOPS * CALLS:,} tokens from memory, 0 reads of any file")


def main(programs, result, *emulator):
    if why := authority.why_untrusted():
        sys.exit(f"bench: {why}")
    programs, samples = pathlib.Path(programs).resolve(), {}
    with tempfile.TemporaryDirectory(prefix="hxsso-bench-") as folder:
        root = pathlib.Path(folder).resolve()
        with HostileProvider(root / "authority") as provider:
            provider._key = Key("key-1")
            # Among as many authorities as a machine has: to read them takes most of a connection.
            own, bundle = provider.authority.bundle, root / "authorities.pem"
            bundle.write_bytes(pathlib.Path(authority.SYSTEM_BUNDLE).read_bytes() + own.read_bytes())
            provider.authority.bundle = bundle
            place = OpenPlugin(root / "open", programs, emulator, provider)
            place.configure({"production": provider.server_entry(SCOPES)})
            sample = SamplePlugin(root / "sample", programs, emulator, provider)
            floor = place.host.name.replace("host", "floor")
            (place.host.parent / floor).write_bytes((programs / floor).read_bytes())
            (place.host.parent / floor).chmod(0o755)
            measure(place, sample, samples)
    pathlib.Path(result).write_text(json.dumps(samples, indent=1))


if __name__ == "__main__":
    main(*sys.argv[1:])
