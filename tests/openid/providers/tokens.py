"""Signed tokens (RFC 7515 to 7519), and those that a client must refuse."""

import base64
import hashlib
import hmac
import json

from cryptography.hazmat.primitives import hashes, serialization
from cryptography.hazmat.primitives.asymmetric import ec, padding, rsa
from cryptography.hazmat.primitives.asymmetric.utils import decode_dss_signature

HASHES = {"256": hashes.SHA256, "384": hashes.SHA384, "512": hashes.SHA512}
CURVES = {"256": (ec.SECP256R1, "P-256", 32), "384": (ec.SECP384R1, "P-384", 48),
          "512": (ec.SECP521R1, "P-521", 66)}
ALGORITHMS = [family + bits for family in ("RS", "PS", "ES") for bits in HASHES]


def base64url(data):
    return base64.urlsafe_b64encode(data).rstrip(b"=").decode()


def parts_of(token):
    """Header and claims of a signed token, as text."""
    return [base64.urlsafe_b64decode(part + "===").decode() for part in token.split(".")[:2]]


def claims_of(token):
    return json.loads(parts_of(token)[1])


def _number(value, length=None):
    return base64url(value.to_bytes(length or (value.bit_length() + 7) // 8, "big"))


def challenge_of(verifier):
    """PKCE's S256."""
    return base64url(hashlib.sha256(verifier.encode()).digest())


def half_hash(text, algorithm):
    """at_hash of OpenID Connect Core."""
    digest = hashlib.new("sha" + algorithm[2:], text.encode()).digest()
    return base64url(digest[:len(digest) // 2])


def object_text(members):
    """A JSON object from pairs, of which several may have one name."""
    return "{" + ",".join(f"{json.dumps(name)}:{json.dumps(value)}"
                          for name, value in members) + "}"


class SigningKey:
    def __init__(self, key_id, algorithm="RS256"):
        self.key_id, self.algorithm = key_id, algorithm
        if algorithm.startswith("ES"):
            self._key = ec.generate_private_key(CURVES[algorithm[2:]][0]())
        else:
            self._key = rsa.generate_private_key(65537, 2048)

    def jwk(self):
        common = {"use": "sig", "kid": self.key_id, "alg": self.algorithm}
        numbers = self._key.public_key().public_numbers()
        if self.algorithm.startswith("ES"):
            _, name, length = CURVES[self.algorithm[2:]]
            return {**common, "kty": "EC", "crv": name,
                    "x": _number(numbers.x, length), "y": _number(numbers.y, length)}
        return {**common, "kty": "RSA", "n": _number(numbers.n), "e": _number(numbers.e)}

    def public_pem(self):
        return self._key.public_key().public_bytes(
            serialization.Encoding.PEM, serialization.PublicFormat.SubjectPublicKeyInfo)

    def private_pem(self):
        return self._key.private_bytes(
            serialization.Encoding.PEM, serialization.PrivateFormat.PKCS8,
            serialization.NoEncryption())

    def _signature(self, data):
        family, bits = self.algorithm[:2], self.algorithm[2:]
        digest = HASHES[bits]()
        if family == "RS":
            return self._key.sign(data, padding.PKCS1v15(), digest)
        if family == "PS":
            return self._key.sign(
                data, padding.PSS(padding.MGF1(digest), digest.digest_size), digest)
        length = CURVES[bits][2]
        r, s = decode_dss_signature(self._key.sign(data, ec.ECDSA(digest)))
        return r.to_bytes(length, "big") + s.to_bytes(length, "big")

    def sign(self, claims, header=None, signature="own"):
        """A token of claims (pairs). Signature: own, none, hmac with the public key, altered."""
        algorithm = {"none": "none", "hmac": "HS256"}.get(signature, self.algorithm)
        header = {"alg": algorithm, "kid": self.key_id, "typ": "JWT", **(header or {})}
        clear = ".".join(base64url(text.encode())
                         for text in (json.dumps(header), object_text(claims)))
        if signature == "none":
            return clear + "."
        if signature == "hmac":
            made = hmac.new(self.public_pem(), clear.encode(), hashlib.sha256).digest()
        else:
            made = self._signature(clear.encode())
        if signature == "altered":
            made = made[:-1] + bytes([made[-1] ^ 1])
        return f"{clear}.{base64url(made)}"
