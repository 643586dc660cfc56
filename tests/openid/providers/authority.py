"""An authority of the tests' own: its certificates, and how a command comes to trust it.

The plugin believes the system's store alone, and no test changes that of a user's machine. So a
command that is to trust this authority runs in a mount namespace of its own, where the bundle of
the system's authorities is another file.
"""

import datetime
import functools
import ipaddress
import os
import pathlib
import ssl
import subprocess

from cryptography import x509
from cryptography.hazmat.primitives import hashes, serialization
from cryptography.hazmat.primitives.asymmetric import rsa
from cryptography.x509.oid import ExtendedKeyUsageOID, NameOID

SYSTEM_BUNDLE = "/etc/ssl/certs/ca-certificates.crt"


def _name(text):
    return x509.Name([x509.NameAttribute(NameOID.COMMON_NAME, text)])


def _private_pem(key):
    return key.private_bytes(serialization.Encoding.PEM, serialization.PrivateFormat.PKCS8,
                             serialization.NoEncryption())


class Authority:
    """Keeps its files in a folder; another one for the same folder is the same authority."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder).resolve()
        self.folder.mkdir(parents=True, exist_ok=True)
        self.bundle = self.folder / "authority.pem"
        key_file = self.folder / "authority.key"
        if self.bundle.exists():
            self._key = serialization.load_pem_private_key(key_file.read_bytes(), None)
            self._certificate = x509.load_pem_x509_certificate(self.bundle.read_bytes())
            return
        self._key = rsa.generate_private_key(65537, 2048)
        self._certificate = self._sign(
            _name("HxSSO test authority"), self._key.public_key(), days=3650,
            extensions=[(x509.BasicConstraints(True, 0), True),
                        (x509.KeyUsage(False, False, False, False, False, True, True, False,
                                       False), True)])
        key_file.write_bytes(_private_pem(self._key))
        self._write(self.bundle, self._certificate)

    def _sign(self, subject, public_key, days, extensions, issuer=None, key=None):
        now = datetime.datetime.utcnow()
        end = now + datetime.timedelta(days=days)
        builder = (x509.CertificateBuilder()
                   .subject_name(subject)
                   .issuer_name(issuer or _name("HxSSO test authority"))
                   .public_key(public_key)
                   .serial_number(x509.random_serial_number())
                   .not_valid_before(min(now, end) - datetime.timedelta(days=1))
                   .not_valid_after(end))
        for extension, critical in extensions:
            builder = builder.add_extension(extension, critical)
        return builder.sign(key or self._key, hashes.SHA256())

    @staticmethod
    def _write(file, certificate):
        file.write_bytes(certificate.public_bytes(serialization.Encoding.PEM))

    def certificate(self, kind="good"):
        """Files of a server's certificate and key: expired, other-name, self-signed, or of any
        other kind, which is a good one of that name."""
        file, key_file = self.folder / f"{kind}.pem", self.folder / f"{kind}.key"
        if not file.exists():
            key = rsa.generate_private_key(65537, 2048)
            host = "elsewhere.example" if kind == "other-name" else "localhost"
            names = [x509.DNSName(host)]
            if kind != "other-name":
                names += [x509.IPAddress(ipaddress.ip_address(address))
                          for address in ("127.0.0.1", "::1")]
            itself = {"issuer": _name(host), "key": key} if kind == "self-signed" else {}
            certificate = self._sign(
                _name(host), key.public_key(), days=-1 if kind == "expired" else 365, **itself,
                extensions=[(x509.SubjectAlternativeName(names), False),
                            (x509.BasicConstraints(False, None), True),
                            (x509.ExtendedKeyUsage([ExtendedKeyUsageOID.SERVER_AUTH]), False)])
            key_file.write_bytes(_private_pem(key))
            self._write(file, certificate)
        return file, key_file

    def server_context(self, kind="good"):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(*self.certificate(kind))
        return context

    def client_context(self):
        return ssl.create_default_context(cafile=str(self.bundle))

    def trusted(self, command):
        """The command, in a namespace where the system's only authority is this one."""
        return with_bundle(self.bundle, command)


def with_bundle(bundle, command):
    """The command, in a namespace where this file is the system's store of authorities."""
    words = ["sh", "-c", 'mount --bind "$1" "$2" && shift 2 && exec "$@"',
             "sh", str(bundle), SYSTEM_BUNDLE]
    command = [str(word) for word in command]
    if os.geteuid() == 0:
        return ["unshare", "-m", *words, *command]
    # Root in a namespace, as long as it takes to mount; then the same user as before.
    back = ["unshare", "-U", f"--map-user={os.geteuid()}", f"--map-group={os.getegid()}"]
    return ["unshare", "-rm", *words, *back, *command]


@functools.lru_cache(maxsize=None)
def why_untrusted():
    """Why no command can be made to trust an authority of ours here; None if one can."""
    if not os.path.exists(SYSTEM_BUNDLE):
        return f"there is no {SYSTEM_BUNDLE} (package ca-certificates)"
    trial = subprocess.run(with_bundle(SYSTEM_BUNDLE, ["true"]), capture_output=True, text=True)
    if trial.returncode:
        return "this machine permits no mount namespace of one's own: " + trial.stderr.strip()
    return None
