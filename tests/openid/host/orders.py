"""What the plugin answers to a provider that misbehaves on order, and what it logs.

Each order: a fault, the endpoint for those that are an answer as a whole, and a pattern for the
reason in the line `Cannot sign in: REASON. Fix: REMEDY`.
"""

NOT_BACK = "the browser did not come back in time"
REPEATED = "is not valid JSON: .*[Dd]uplicate"

# A sign-in ends false for each of these, when its time or that of a request is over.
LATE = [
    *((fault, None, NOT_BACK) for fault in (
        "state-wrong", "state-missing", "state-repeated", "parameters-many", "parameters-long")),
    ("slow", "token", "did not answer in time"),
    ("silent", "token", "did not answer in time"),
]

# A sign-in ends false for each of these.
SIGN_IN = [
    # what the browser brings back
    ("response-iss-wrong", None, 'is from the issuer "https://other.example" instead of'),
    ("response-iss-missing", None, r"does not name its issuer \(iss\)"),
    ("response-iss-repeated", None, "has a parameter more than once"),
    ("code-missing", None, "has neither a code nor an error"),
    ("code-repeated", None, "has a parameter more than once"),
    ("access-denied", None, "refused the sign-in: access_denied: The user said no"),
    # claims of the id_token
    ("iss-missing", None, r"the id_token has no issuer \(iss\)"),
    ("iss-number", None, r"the id_token has no issuer \(iss\)"),
    ("iss-wrong", None, 'the id_token is from the issuer "https://other.example"'),
    ("sub-missing", None, r"the id_token names no user \(sub\)"),
    ("sub-empty", None, r"the id_token names no user \(sub\)"),
    ("aud-missing", None, r"the id_token has no audience \(aud\)"),
    ("aud-wrong", None, 'the id_token is not for the client "hxsso-test"'),
    ("aud-list-wrong", None, 'the id_token is not for the client "hxsso-test"'),
    ("azp-wrong", None, r"names another authorized party \(azp\)"),
    ("azp-missing", None, r"is also for .* \(aud\)"),
    ("exp-missing", None, 'has no time "exp"'),
    ("exp-text", None, 'has no time "exp"'),
    ("exp-negative", None, 'has no time "exp"'),
    ("iat-missing", None, 'has no time "iat"'),
    ("expired", None, r"the id_token expired \d+ s ago \(exp\)"),
    ("early", None, r"the id_token is not valid for another \d+ s"),
    ("nonce-missing", None, "the id_token has no nonce"),
    ("nonce-wrong", None, r"belongs to another sign-in \(nonce\)"),
    ("at-hash-wrong", None, r"belongs to another access token \(at_hash\)"),
    *((fault, None, REPEATED) for fault in (
        "iss-repeated", "sub-repeated", "aud-repeated", "azp-repeated", "nonce-repeated")),
    ("exp-huge", None, 'has no time "exp"|is not valid JSON'),
    # how the id_token is made
    ("alg-none", None, 'the algorithm "none", which is not accepted'),
    ("alg-hmac", None, 'the algorithm "HS256", which is not accepted'),
    ("key-wrong", None, "has a wrong signature"),
    ("key-id-unknown", None, "is signed by a key that the provider does not have"),
    ("signature-altered", None, "has a wrong signature"),
    ("payload-altered", None, "has a wrong signature"),
    ("token-huge", None, "longer than 64 KiB|answered with too much"),
    ("token-two-parts", None, "does not have the three parts"),
    ("token-garbage", None, "the id_token|id_token that is not a text"),
    ("header-critical", None, "the id_token .*crit"),
    # what the token endpoint gives
    ("id-token-missing", None, "gave tokens, but no id_token"),
    ("access-token-missing", None, "without an access token"),
    ("access-token-empty", None, "without an access token"),
    ("access-token-lines", None, "with access_token that is not a text"),
    ("access-token-repeated", None, REPEATED),
    ("token-type-missing", None, 'a token of the type ""'),
    ("token-type-wrong", None, 'a token of the type "mac"'),
    ("expires-enormous", None, "is not valid JSON"),
    ("expires-text", None, "a lifetime .* that is not a number"),
    ("400-json", "token", "status 400, invalid_grant: as ordered"),
    ("400-empty", "token", "status 400"),
    ("400-html", "token", "status 400"),
    ("401", "token", "status 401, invalid_client"),
    ("429", "token", "status 429, temporarily_unavailable, to be asked again after 2 s"),
    ("500", "token", "status 500"),
    ("redirect", "token", "status 302, a redirect, which is never followed"),
    ("redirect-307", "token", "status 307, a redirect, which is never followed"),
    ("not-json", "token", "is not valid JSON"),
    ("empty", "token", "is empty instead of JSON"),
    ("array", "token", "is not a JSON object|is not valid JSON"),
    ("null", "token", "is not a JSON object|is not valid JSON"),
    ("deep", "token", "is not valid JSON"),
    ("not-utf8", "token", "is not UTF-8"),
    ("nul", "token", "is not valid JSON"),
    ("large", "token", "answered with too much"),
    ("endless", "token", "answered with too much"),
    ("cut", "token", "could not be reached"),
    ("wrong-types", "token", "that is not a text"),
    # userinfo: that of another user ends the sign-in
    ("userinfo-sub-wrong", None, r"answered about another user \(sub\)"),
    ("userinfo-sub-missing", None, r"answered about another user \(sub\)"),
]

# A sign-in goes on; a second pattern is for the line that says what is lacking.
HARMLESS = [
    ("expires-negative", None, None),
    ("expires-huge", None, None),
    ("refresh-token-missing", None, "gave no refresh token"),
    ("500", "userinfo", "goes on without the claims of userinfo: .*status 500"),
    ("not-json", "userinfo", "goes on without the claims of userinfo: .*is not valid JSON"),
    ("redirect", "userinfo", "goes on without the claims of userinfo: .*never followed"),
    ("userinfo-sub-repeated", None, "goes on without the claims of userinfo: .*" + REPEATED),
]

# A sign-in of a process that has not asked this provider before ends false.
FIRST = [
    ("discovery-issuer-wrong", None, 'is of the issuer "https://other.example" instead of'),
    ("discovery-issuer-missing", None, 'is of the issuer "" instead of'),
    ("discovery-token-endpoint-http", None, "token_endpoint that is not a proper https address"),
    ("discovery-token-endpoint-missing", None, "has no token_endpoint"),
    ("discovery-authorization-endpoint-file", None,
     "authorization_endpoint that is not a proper https address"),
    ("discovery-jwks-missing", None, "has no jwks_uri"),
    ("500", "discovery", "status 500"),
    ("not-json", "discovery", "is not valid JSON"),
    ("redirect", "discovery", "never followed"),
    ("wrong-types", "discovery", "is of the issuer"),
    ("endless", "discovery", "answered with too much"),
    ("500", "keys", "status 500"),
    ("empty", "keys", "is empty instead of JSON"),
    ("wrong-types", "keys", "has no key that verifies signatures"),
    ("certificate-expired", None, "has no TLS certificate that is trusted"),
    ("certificate-other-name", None, "has no TLS certificate that is trusted"),
    ("certificate-self-signed", None, "has no TLS certificate that is trusted"),
]

# A token is asked for that only a refresh can give: none comes, and the user stays signed in.
REFRESH = [
    ("400-html", "status 400"),
    ("429", "status 429"),
    ("500", "status 500"),
    ("redirect", "never followed"),
    ("not-json", "is not valid JSON"),
    ("cut", "could not be reached"),
    ("silent", "did not answer in time"),
    ("wrong-types", "that is not a text"),
]
# The same, and the user is signed out.
REFUSED = [
    ("400-json", "refuses the refresh token"),
    ("400-empty", "refuses the refresh token"),
]
