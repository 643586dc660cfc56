#!/usr/bin/env python3
"""An OpenID Connect provider of the tests' own, which misbehaves on order.

In-process:

    with HostileProvider(folder) as provider:
        provider.misbehave("nonce-wrong")
        provider.misbehave("429", at="token", times=2)
        ... provider.issuer, provider.requests["token"] ...
        provider.behave()

As a program, hostile.py FOLDER [NAME=VALUE...]: prints a line of JSON with its address, then
reads orders, a line of JSON each, and answers each with a line; it ends with its standard input.

    {"misbehave": "429", "at": "token", "times": 2}    {"behave": true}
    {"set": {"lifetime": 5}}    {"rotate": true}    {"requests": true}

The browser is sent back at once, as if the user had agreed. FOLDER keeps the authority.
"""

import collections
import json
import secrets
import sys
import threading
import time
import urllib.parse

import faults
from authority import Authority
from server import Refusal, Server
from tokens import SigningKey, base64url, challenge_of, half_hash, object_text

USERS = {
    "alice": {"name": "Alice Ågren", "given_name": "Alice", "family_name": "Ågren",
              "preferred_username": "alice", "email": "alice@example.org",
              "email_verified": True, "locale": "sv"},
    "bob": {"name": "Bob", "preferred_username": "bob", "email": "bob@example.org"},
}
SCOPES = ("openid", "profile", "email", "offline_access", "data:read", "data:write", "Data:Read")
CODE, DEVICE = "authorization_code", "urn:ietf:params:oauth:grant-type:device_code"


class Grant:
    """What a user agreed to. Its refresh tokens are a family: one used again ends them all."""

    def __init__(self, subject, scope, nonce=None):
        self.subject, self.scope, self.nonce = subject, scope, nonce
        self.refresh_token = None
        self.revoked = False
        self.signed_in_at = int(time.time())


class HostileProvider:
    client_id = "hxsso-test"
    password = "wonderland"  # nobody asks for it

    def __init__(self, folder, algorithm="RS256", lifetime=3600, address="127.0.0.1"):
        self.authority, self.address = Authority(folder), address
        self.algorithm, self.lifetime = algorithm, lifetime
        self.user = "alice"  # who agrees, unless a login_hint names another
        self.rotates = True             # refresh tokens
        self.id_token_at_refresh = True
        self.slow_seconds = 60          # of an answer or a handshake that is slow
        self.device_interval, self.device_lifetime = 1, 60
        self.requests = collections.Counter()  # by endpoint, and "token.GRANT"
        self.seen = []  # (endpoint, parameters) of every request, in order
        self.heads = []  # the headers of every request, as a text
        self.bytes_of_endless = 0
        self.lock = threading.RLock()
        self._faults = []
        self._codes, self._devices, self._access, self._refresh = {}, {}, {}, {}
        self._key_number = 0
        self.rotate()

    # ----- start and end

    def start(self):
        self._server = Server(self)
        self.port = self._server.server_address[1]
        self.issuer = f"https://localhost:{self.port}"
        self._use_certificate()
        self._thread = threading.Thread(
            target=self._server.serve_forever, kwargs={"poll_interval": 0.05}, daemon=True)
        self._thread.start()
        return self

    def stop(self):
        self._server.stopping.set()
        self._server.shutdown()
        self._server.server_close()
        self._server.end_connections()
        self._thread.join()

    def __enter__(self):
        return self.start()

    def __exit__(self, *_):
        self.stop()

    def server_entry(self, scopes="openid profile email offline_access data:read data:write"):
        """Its entry of `servers` in HxSSOOpenID.json."""
        return {"issuer": self.issuer, "clientId": self.client_id, "scopes": scopes}

    # ----- orders

    def misbehave(self, fault, at=None, times=None):
        """From now on, or for so many times. Answers as a whole (faults.ANSWERS) go with the
        endpoint that gives them: discovery, keys, authorization, token, token.refresh_token,
        userinfo, revocation, end_session, device."""
        if fault not in (faults.ANSWERS if at else faults.NAMES):
            raise ValueError(f"no fault {fault!r} for {at!r}")
        with self.lock:
            self._faults.append([fault, at, times])
        self._use_certificate()

    def behave(self):
        with self.lock:
            self._faults.clear()
        self._use_certificate()

    def rotate(self):
        """Another key, which alone is published from now on."""
        self._key_number += 1
        self._key = SigningKey(f"key-{self._key_number}", self.algorithm)

    def renew_certificate(self):
        """Another one of the same authority, for all connections from now on."""
        self._server.context = self.authority.server_context(f"renewed-{time.monotonic_ns()}")
        self._server.end_connections()

    def approve_device(self, user_code=None, denied=False):
        """As the user does with a browser; without a code all that wait."""
        with self.lock:
            for device in self._devices.values():
                if user_code in (None, device["user_code"]):
                    device["answer"] = "access_denied" if denied else self.user

    def revoke_all(self):
        """As an administrator does who ends all sessions."""
        with self.lock:
            for grant in self._refresh.values():
                grant.revoked = True
            self._access.clear()

    def end_connections(self):
        self._server.end_connections()

    def take(self, names, at=None):
        """The first ordered fault of these names for the endpoint, counted off."""
        with self.lock:
            for order in self._faults:
                if order[0] in names and order[1] == at:
                    if order[2] is not None:
                        order[2] -= 1
                        if order[2] <= 0:
                            self._faults.remove(order)
                    return order[0]
        return None

    def _changed(self, table, members):
        with self.lock:
            ordered = [order[0] for order in self._faults if order[0] in table]
        for _ in ordered:
            members = table[self.take(table)](members)
        return members

    def _use_certificate(self):
        with self.lock:
            kinds = [order[0][len("certificate-"):] for order in self._faults
                     if order[0].startswith("certificate-")]
        server = getattr(self, "_server", None)
        kind = kinds[-1] if kinds else "good"
        if server and server.certificate != kind:
            server.context = self.authority.server_context(kind)
            server.certificate = kind
            server.end_connections()

    # ----- endpoints: parameters and the bearer token in, (status, headers, body) out

    def discovery(self, _parameters, _bearer):
        def at(path):
            return self.issuer + path

        return self._json(self._changed(faults.DISCOVERY, [
            ("issuer", self.issuer),
            ("authorization_endpoint", at("/authorize")),
            ("token_endpoint", at("/token")),
            ("userinfo_endpoint", at("/userinfo")),
            ("jwks_uri", at("/jwks")),
            ("revocation_endpoint", at("/revoke")),
            ("end_session_endpoint", at("/end-session")),
            ("device_authorization_endpoint", at("/device")),
            ("scopes_supported", list(SCOPES)),
            ("response_types_supported", ["code"]),
            ("grant_types_supported", [CODE, "refresh_token", DEVICE]),
            ("subject_types_supported", ["public"]),
            ("id_token_signing_alg_values_supported", [self.algorithm]),
            ("token_endpoint_auth_methods_supported", ["none"]),
            ("code_challenge_methods_supported", ["S256"]),
            ("authorization_response_iss_parameter_supported", True),
        ]))

    def keys(self, _parameters, _bearer):
        return self._json([("keys", [self._key.jwk()])])

    def authorization(self, parameters, _bearer):
        redirect = parameters.get("redirect_uri", "")
        target = urllib.parse.urlsplit(redirect)
        # What cannot be trusted to lead back is answered here (RFC 6749, section 4.1.2.1).
        if parameters.get("client_id") != self.client_id or target.scheme != "http" or \
                target.hostname not in ("127.0.0.1", "::1", "localhost"):
            return 400, {"Content-Type": "text/plain"}, b"client_id or redirect_uri is wrong"
        answer = [("state", parameters.get("state", "")), ("iss", self.issuer)]
        try:
            answer.insert(0, ("code", self._new_code(parameters, redirect)))
        except Refusal as refusal:
            answer.insert(0, ("error", refusal.error))
        query = urllib.parse.urlencode(self._changed(faults.RESPONSE, answer))
        return 302, {"Location": f"{redirect}{'&' if target.query else '?'}{query}"}, b""

    def _new_code(self, parameters, redirect):
        if parameters.get("response_type") != "code":
            raise Refusal("unsupported_response_type")
        if parameters.get("code_challenge_method") != "S256" or \
                len(parameters.get("code_challenge", "")) != 43:
            raise Refusal("invalid_request")
        scope = parameters.get("scope", "").split()
        if "openid" not in scope or not set(scope) <= set(SCOPES):
            raise Refusal("invalid_scope")
        hint = parameters.get("login_hint", "").split("@")[0]
        code = secrets.token_urlsafe(24)
        with self.lock:
            self._codes[code] = (
                Grant(hint if hint in USERS else self.user, scope, parameters.get("nonce")),
                redirect, parameters["code_challenge"])
        return code

    def token(self, parameters, _bearer):
        if parameters.get("client_id") != self.client_id:
            raise Refusal("invalid_client", 401)
        grant_type = parameters.get("grant_type")
        if grant_type == CODE:
            grant, redirect, challenge = self._codes.pop(parameters.get("code"), [None] * 3)
            if not grant or redirect != parameters.get("redirect_uri") or \
                    challenge != challenge_of(parameters.get("code_verifier", "")):
                raise Refusal("invalid_grant")
            return self._tokens(grant, grant.scope, grant.nonce)
        if grant_type == "refresh_token":
            return self._refreshed(parameters)
        if grant_type == DEVICE:
            return self._polled(parameters.get("device_code"))
        raise Refusal("unsupported_grant_type")

    def _refreshed(self, parameters):
        with self.lock:
            token = parameters.get("refresh_token")
            grant = self._refresh.get(token)
            if not grant or grant.revoked:
                raise Refusal("invalid_grant")
            if grant.refresh_token != token:
                grant.revoked = True  # used again: somebody else may have it
                raise Refusal("invalid_grant")
            scope = parameters.get("scope", "").split() or grant.scope
            if not set(scope) <= set(grant.scope):
                raise Refusal("invalid_scope")
            return self._tokens(grant, scope, None, with_id_token=self.id_token_at_refresh)

    def _polled(self, device_code):
        with self.lock:
            device = self._devices.get(device_code)
            if not device:
                raise Refusal("invalid_grant")
            now = time.monotonic()
            early = now - device["polled_at"] < self.device_interval * 0.9
            device["polled_at"] = now
            if now > device["ends_at"]:
                raise Refusal("expired_token")
            if early:
                raise Refusal("slow_down")
            if device["answer"] is None:
                raise Refusal("authorization_pending")
            del self._devices[device_code]
            if device["answer"] == "access_denied":
                raise Refusal("access_denied")
            return self._tokens(Grant(device["answer"], device["scope"]), device["scope"], None)

    def _tokens(self, grant, scope, nonce, with_id_token=True):
        now = int(time.time())
        access = self._key.sign(
            [("iss", self.issuer), ("sub", grant.subject), ("aud", "https://api.example"),
             ("client_id", self.client_id), ("scope", " ".join(scope)), ("iat", now),
             ("exp", now + self.lifetime), ("jti", secrets.token_urlsafe(9))],
            header={"typ": "at+jwt"})
        members = [("access_token", access), ("token_type", "Bearer"),
                   ("expires_in", self.lifetime), ("scope", " ".join(scope))]
        with self.lock:
            self._access[access] = (grant, now + self.lifetime)
            if not grant.refresh_token or self.rotates:
                grant.refresh_token = secrets.token_urlsafe(32)
                self._refresh[grant.refresh_token] = grant
            members.append(("refresh_token", grant.refresh_token))
        if with_id_token:
            members.append(("id_token", self._id_token(grant, nonce, access)))
        return self._json(self._changed(faults.TOKENS, members))

    def _id_token(self, grant, nonce, access_token):
        now = int(time.time())
        claims = [("iss", self.issuer), ("sub", grant.subject), ("aud", self.client_id),
                  ("iat", now), ("exp", now + 3600), ("auth_time", grant.signed_in_at),
                  ("at_hash", half_hash(access_token, self.algorithm))]
        claims += [("nonce", nonce)] if nonce else []
        claims = self._changed(faults.CLAIMS, claims)
        fault = self.take(faults.TOKEN)
        if fault == "token-two-parts":
            return self._key.sign(claims).rpartition(".")[0]
        if fault == "token-garbage":
            return "%%%.\u00e5.==="
        if fault == "token-huge":  # a million characters, and nothing else wrong with it
            length = 750_000 - len(self._key.sign(claims)) * 3 // 4
            return self._key.sign(claims + [("padding", "x" * length)])
        if fault == "payload-altered":
            head, _, signature = self._key.sign(claims).split(".")
            other = faults.setting("sub", "mallory")(claims)
            return f"{head}.{base64url(object_text(other).encode())}.{signature}"
        if fault in ("key-wrong", "key-id-unknown"):
            name = self._key.key_id if fault == "key-wrong" else "key-unknown"
            return SigningKey(name, self.algorithm).sign(claims)
        header = {"crit": ["exp"]} if fault == "header-critical" else None
        signature = {"alg-none": "none", "alg-hmac": "hmac", "signature-altered": "altered"}
        return self._key.sign(claims, header, signature.get(fault, "own"))

    def userinfo(self, _parameters, bearer):
        with self.lock:
            grant, ends_at = self._access.get(bearer, (None, 0))
        if not grant or grant.revoked or ends_at <= time.time():
            raise Refusal("invalid_token", 401)
        return self._json(self._changed(
            faults.USERINFO, [("sub", grant.subject), *USERS[grant.subject].items()]))

    def revocation(self, parameters, _bearer):
        with self.lock:
            token = parameters.get("token")
            self._access.pop(token, None)
            grant = self._refresh.get(token)
            if grant:
                grant.revoked = True
        return 200, {}, b""

    def end_session(self, parameters, _bearer):
        target = parameters.get("post_logout_redirect_uri")
        if not target:
            return 200, {"Content-Type": "text/html"}, b"<p>You are signed out.</p>"
        query = urllib.parse.urlencode({"state": parameters.get("state", "")})
        return 302, {"Location": f"{target}?{query}"}, b""

    def device(self, parameters, _bearer):
        if parameters.get("client_id") != self.client_id:
            raise Refusal("invalid_client", 401)
        code, user_code = secrets.token_urlsafe(24), secrets.token_hex(4).upper()
        with self.lock:
            self._devices[code] = {
                "user_code": user_code, "scope": parameters.get("scope", "openid").split(),
                "polled_at": time.monotonic() - 60, "answer": None,
                "ends_at": time.monotonic() + self.device_lifetime}
        page = self.issuer + "/verify"
        return self._json(self._changed(faults.DEVICE, [
            ("device_code", code), ("user_code", user_code), ("verification_uri", page),
            ("verification_uri_complete", f"{page}?user_code={user_code}"),
            ("expires_in", self.device_lifetime), ("interval", self.device_interval)]))

    def verify(self, parameters, _bearer):
        """The page that a user of the device grant opens."""
        self.approve_device(parameters.get("user_code"))
        return 200, {"Content-Type": "text/html"}, b"<p>The device is signed in.</p>"

    def elsewhere(self, _parameters, _bearer):
        """Where redirects lead that nobody should follow."""
        return 200, {}, b"{}"

    @staticmethod
    def _json(members):
        return 200, {"Content-Type": "application/json", "Cache-Control": "no-store"}, \
            object_text(members).encode()


def _obey(provider, order):
    if "misbehave" in order:
        provider.misbehave(order["misbehave"], order.get("at"), order.get("times"))
    if "behave" in order:
        provider.behave()
    if "rotate" in order:
        provider.rotate()
    for name, value in order.get("set", {}).items():
        setattr(provider, name, type(getattr(provider, name))(value))
    return {"ok": True, **({"requests": provider.requests} if "requests" in order else {})}


def main(folder, *settings):
    provider = HostileProvider(folder)
    _obey(provider, {"set": dict(setting.split("=", 1) for setting in settings)})
    with provider:
        print(json.dumps({"issuer": provider.issuer, "clientId": provider.client_id,
                          "authority": str(provider.authority.bundle)}), flush=True)
        for line in sys.stdin:
            try:
                answer = _obey(provider, json.loads(line))
            except (ValueError, TypeError, AttributeError) as error:
                answer = {"ok": False, "error": str(error)}
            print(json.dumps(answer), flush=True)


if __name__ == "__main__":
    main(*sys.argv[1:])
