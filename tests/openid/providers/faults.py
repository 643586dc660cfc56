"""What the hostile provider does wrong on order, by name.

RESPONSE  parameters with which the browser comes back
CLAIMS    claims of the id_token
TOKEN     how the id_token is made
TOKENS    what else the token endpoint gives
USERINFO  the claims of userinfo
DISCOVERY what the provider says of itself
DEVICE    address and code for another device
ANSWERS   the answer of any endpoint, which is named with it
CERTIFICATES

The first seven are functions that change pairs of name and value, so that a name may stand
twice.
"""

import json
import time

OTHER = "https://other.example"


def setting(name, value):
    """Replaces it, or adds it."""
    def change(members):
        present = any(key == name for key, _ in members)
        changed = [(key, value if key == name else old) for key, old in members]
        return changed if present else changed + [(name, value)]
    return change


def without(name):
    return lambda members: [member for member in members if member[0] != name]


def repeating(name, value):
    """Once more with another value, the wrong one last."""
    return lambda members: members + [(name, value)]


def at_time(name, offset):
    return lambda members: setting(name, int(time.time()) + offset)(members)


def each(*changes):
    def change(members):
        for one in changes:
            members = one(members)
        return members
    return change


RESPONSE = {
    "state-wrong": setting("state", "another-state"),
    "state-missing": without("state"),
    "state-repeated": repeating("state", "another-state"),
    "response-iss-wrong": setting("iss", OTHER),
    "response-iss-missing": without("iss"),
    "response-iss-repeated": repeating("iss", OTHER),
    "code-missing": without("code"),
    "code-repeated": repeating("code", "another-code"),
    "access-denied": each(without("code"), setting("error", "access_denied"),
                          setting("error_description", "The user said no.\r\n<b>&\u0007")),
    "parameters-many": lambda members: members + [(f"p{i}", "x") for i in range(500)],
    "parameters-long": setting("padding", "x" * 60_000),
}

CLAIMS = {
    **{f"{name}-missing": without(name) for name in ("iss", "sub", "aud", "exp", "iat", "nonce")},
    "iss-wrong": setting("iss", OTHER),
    "iss-repeated": repeating("iss", OTHER),
    "sub-repeated": repeating("sub", "mallory"),
    "sub-empty": setting("sub", ""),
    "aud-wrong": setting("aud", "another-client"),
    "aud-list-wrong": setting("aud", ["another-client", "a-third"]),
    "aud-repeated": repeating("aud", "another-client"),
    "azp-wrong": setting("azp", "another-client"),
    "azp-missing": lambda members: [
        (name, [value, "another-client"] if name == "aud" else value)
        for name, value in members if name != "azp"],
    "azp-repeated": each(setting("azp", "hxsso-test"), repeating("azp", "another-client")),
    "nonce-wrong": setting("nonce", "another-nonce"),
    "nonce-repeated": repeating("nonce", "another-nonce"),
    "expired": at_time("exp", -1000),
    "early": each(at_time("iat", 1000), at_time("nbf", 1000), at_time("exp", 4600)),
    "exp-text": setting("exp", "tomorrow"),
    "exp-negative": setting("exp", -1),
    "exp-huge": setting("exp", 10**400),
    "iss-number": setting("iss", 7),
    "at-hash-wrong": setting("at_hash", "AAAAAAAAAAAAAAAAAAAAAA"),
}

# Carried out by the provider, which has the keys.
TOKEN = ("alg-none", "alg-hmac", "key-wrong", "key-id-unknown", "signature-altered",
         "payload-altered", "token-huge", "token-two-parts", "token-garbage", "header-critical")

TOKENS = {
    "id-token-missing": without("id_token"),
    "access-token-missing": without("access_token"),
    "access-token-empty": setting("access_token", ""),
    "access-token-lines": setting("access_token", "one\r\nX-Injected: two"),
    "access-token-repeated": repeating("access_token", "another-token"),
    "token-type-missing": without("token_type"),
    "token-type-wrong": setting("token_type", "mac"),
    "expires-negative": setting("expires_in", -5),
    "expires-huge": setting("expires_in", 2**63),
    "expires-enormous": setting("expires_in", 10**400),
    "expires-text": setting("expires_in", "soon"),
    "refresh-token-missing": without("refresh_token"),
}

USERINFO = {
    "userinfo-sub-wrong": setting("sub", "mallory"),
    "userinfo-sub-missing": without("sub"),
    "userinfo-sub-repeated": repeating("sub", "mallory"),
}

DISCOVERY = {
    "discovery-issuer-wrong": setting("issuer", OTHER),
    "discovery-issuer-missing": without("issuer"),
    "discovery-token-endpoint-http": setting("token_endpoint", "http://other.example/token"),
    "discovery-token-endpoint-missing": without("token_endpoint"),
    "discovery-authorization-endpoint-file":
        setting("authorization_endpoint", "file:///etc/passwd"),
    "discovery-jwks-missing": without("jwks_uri"),
    "discovery-device-missing": without("device_authorization_endpoint"),
}

DEVICE = {
    "device-uri-http": setting("verification_uri", "http://other.example/device"),
    "device-uri-loopback": setting("verification_uri", "http://127.0.0.1:1/device"),
    "device-uri-complete-script": setting("verification_uri_complete", "javascript:alert(1)"),
    "device-code-lines": setting("user_code", "A\nhttps://other.example"),
    "device-code-long": setting("user_code", "A" * 65),
    "device-code-missing": without("device_code"),
    "device-expiry-missing": without("expires_in"),
    "device-interval-text": setting("interval", "often"),
}

STATUSES = {
    "400-json": (400, "application/json", json.dumps(
        {"error": "invalid_grant", "error_description": "as ordered"}), {}),
    "400-empty": (400, "application/json", "", {}),
    "400-html": (400, "text/html", "<html><body>Bad request</body></html>", {}),
    "401": (401, "application/json", '{"error":"invalid_client"}',
            {"WWW-Authenticate": 'Bearer error="invalid_token"'}),
    "429": (429, "application/json", '{"error":"temporarily_unavailable"}', {"Retry-After": "2"}),
    "500": (500, "text/plain", "Internal error", {}),
    "redirect": (302, "text/plain", "", {"Location": "/elsewhere"}),
    "redirect-307": (307, "text/plain", "", {"Location": "/elsewhere"}),
}
BODIES = {
    "not-json": b"This is not JSON.",
    "empty": b"",
    "array": b'["not", "an", "object"]',
    "null": b"null",
    "deep": b'{"a":' + b"[" * 100_000 + b"]" * 100_000 + b"}",
    "not-utf8": b'{"access_token":"\xff\xfe\x00","issuer":"\xc3"}',
    "nul": b'{"access_token":"a"}\0\0',
    "large": b'{"a":"' + b"x" * (2 << 20) + b'"}',
}
# Of the answer that is due: its bytes without an end, one after another, only half of them,
# its texts as numbers and the other way about; and nothing at all.
STREAMS = ("endless", "slow", "cut", "wrong-types", "silent")
ANSWERS = (*STATUSES, *BODIES, *STREAMS)

CERTIFICATES = ("expired", "other-name", "self-signed")

# All that need no endpoint with them.
NAMES = (*RESPONSE, *CLAIMS, *TOKEN, *TOKENS, *USERINFO, *DISCOVERY, *DEVICE,
         *(f"certificate-{kind}" for kind in CERTIFICATES))


def wrong_types(body):
    def turn(value):
        if isinstance(value, str):
            return 7
        return "seven" if isinstance(value, (int, float)) else {"seven": 7}
    try:
        return json.dumps({name: turn(value) for name, value in json.loads(body).items()}).encode()
    except (ValueError, AttributeError):
        return b"7"
