"""glewlwyd from Debian, which scripts/setup openid unpacks into .deps/glewlwyd: nothing of it is
installed, so that no service of it starts."""

import gzip
import json
import os
import random
import socket
import sqlite3
import ssl
import tempfile
import time
import urllib.error

from authority import Authority
from browser import Browser
from program import DEPS, Program
from tokens import SigningKey

ROOT = DEPS / "glewlwyd"
SCOPES = ("profile", "email", "offline_access", "data:read", "data:write")

CONFIGURATION = """
port={port}
bind_address="127.0.0.1"
external_url="https://localhost:{port}"
login_url="login.html"
api_prefix="api"
static_files_path="{root}/usr/share/glewlwyd/webapp/"
cookie_secure=1
session_key="GLEWLWYD2_SESSION_ID"
admin_session_authentication="cookie"
profile_session_authentication="cookie"
admin_scope="g_admin"
profile_scope="g_profile"
login_api_enabled=true
log_mode="console"
log_level="WARNING"
user_module_path="{root}/usr/lib/glewlwyd/user"
client_module_path="{root}/usr/lib/glewlwyd/client"
user_auth_scheme_module_path="{root}/usr/lib/glewlwyd/scheme"
plugin_module_path="{root}/usr/lib/glewlwyd/plugin"
use_secure_connection=true
secure_connection_key_file="{key}"
secure_connection_pem_file="{certificate}"
hash_algorithm="SHA512"
database = {{ type = "sqlite3" path = "{database}" }};
static_files_mime_types =
(
    {{ extension = ".html" mime_type = "text/html" compress = 0 }},
    {{ extension = ".js" mime_type = "application/javascript" compress = 0 }},
    {{ extension = ".css" mime_type = "text/css" compress = 0 }},
    {{ extension = ".json" mime_type = "application/json" compress = 0 }}
)
"""


def why_missing():
    if not (ROOT / "usr/bin/glewlwyd").exists():
        return "glewlwyd is not in .deps; run scripts/setup openid"
    return None


def free_ports(count):
    """Below those that the system gives to others, who could take one before it is used."""
    ports = []
    while len(ports) < count:
        port = random.randrange(20_000, 32_000)
        with socket.socket() as trial:
            try:
                trial.bind(("127.0.0.1", port))
            except OSError:
                continue
        if port not in ports:
            ports.append(port)
    return ports


class Glewlwyd:
    name = "glewlwyd"
    client_id = "hxsso-test"
    user, password = "alice", "wonderland"
    revokes_for_public_clients = False

    def __init__(self, folder, lifetime=3600):
        self.authority, self.lifetime = Authority(folder), lifetime

    def start(self):
        # It compares the port of a redirect address, and takes its own from its file.
        self.port, *self.redirect_ports = free_ports(4)
        self.issuer = f"https://localhost:{self.port}/api/oidc"
        self._folder = tempfile.TemporaryDirectory(prefix="glewlwyd-", dir=self.authority.folder)
        database, file = f"{self._folder.name}/glewlwyd.db", f"{self._folder.name}/glewlwyd.conf"
        script = ROOT / "usr/share/doc/glewlwyd/database/init.sqlite3.sql.gz"
        with sqlite3.connect(database) as connection:
            connection.executescript(gzip.decompress(script.read_bytes()).decode())
        connection.close()
        certificate, key = self.authority.certificate()
        with open(file, "w", encoding="utf-8") as configuration:
            configuration.write(CONFIGURATION.format(
                port=self.port, root=ROOT, key=key, certificate=certificate, database=database))
        libraries = next(ROOT.glob("usr/lib/*-linux-gnu"))
        self._program = Program(
            [ROOT / "usr/bin/glewlwyd", "--config-file=" + file],
            self.authority.folder / "glewlwyd.log",
            env={**os.environ, "LD_LIBRARY_PATH": str(libraries)})
        try:
            self._set_up()
        except BaseException:
            self.stop()
            raise
        return self

    def stop(self):
        self._program.stop(with_signal=True)
        self._folder.cleanup()

    def __enter__(self):
        return self.start()

    def __exit__(self, *_):
        self.stop()

    def server_entry(self, scopes="openid profile email offline_access data:read data:write"):
        """Its entry of `servers` in HxSSOOpenID.json."""
        return {"issuer": self.issuer, "clientId": self.client_id, "scopes": scopes,
                "redirectPorts": self.redirect_ports}

    def seem_polled(self, seconds):
        """As if all devices that wait had asked so many seconds from now: the next time is too
        soon for them."""
        with sqlite3.connect(f"{self._folder.name}/glewlwyd.db", timeout=10) as connection:
            changed = connection.execute(
                "UPDATE gpo_device_authorization SET gpoda_last_check = ? WHERE gpoda_status < 2",
                (int(time.time()) + seconds,)).rowcount
        connection.close()
        if changed != 1:
            raise RuntimeError(f"glewlwyd: {changed} devices wait")

    # ----- by its own interface, as an administrator does

    def _set_up(self):
        administrator = Browser(str(self.authority.bundle))
        api = f"https://localhost:{self.port}/api"

        def post(path, content):
            _, status, _, text = administrator.ask(
                api + path, json.dumps(content).encode(), "application/json", "POST")
            if status != 200:
                raise RuntimeError(f"glewlwyd: POST {path} gave {status}: {text}")

        self._wait_until_it_answers(administrator, api)
        post("/auth/", {"username": "admin", "password": "password"})
        for scope in SCOPES:
            post("/scope/", {"name": scope, "display_name": scope, "description": scope,
                             "password_required": False, "scheme": {}})
        post("/mod/plugin/", {"module": "oidc", "name": "oidc", "display_name": "OpenID Connect",
                              "order_rank": 0, "parameters": self._parameters()})
        post("/user/", {"username": self.user, "password": self.password, "name": "Alice Ågren",
                        "email": "alice@example.org", "scope": ["g_profile", "openid", *SCOPES],
                        "enabled": True})
        post("/client/", {
            "client_id": self.client_id, "name": "Tests", "enabled": True, "confidential": False,
            "redirect_uri": [f"http://127.0.0.1:{port}/callback" for port in self.redirect_ports],
            "authorization_type": ["code", "refresh_token", "device_authorization"],
            "token_endpoint_auth_method": ["none"], "scope": ["openid", *SCOPES]})

    def _wait_until_it_answers(self, browser, api):
        for _ in range(200):
            if self._program.process.poll() is not None:
                break
            try:
                if browser.ask(api.replace("/api", "/config"))[1] == 200:
                    return
            except (urllib.error.URLError, ssl.SSLError, ConnectionError):
                pass
            time.sleep(0.05)
        raise RuntimeError(f"glewlwyd does not answer, see {self._program.log}")

    def _parameters(self):
        key = SigningKey("only")
        return {
            "iss": self.issuer, "jwt-type": "rsa", "jwt-key-size": "256",
            "key": key.private_pem().decode(), "cert": key.public_pem().decode(),
            "oauth-as-iss-id": True,
            "access-token-duration": self.lifetime, "refresh-token-duration": 86400,
            "code-duration": 60, "refresh-token-one-use": "always", "refresh-token-rolling": True,
            "auth-type-code-enabled": True, "auth-type-code-revoke-replayed": True,
            "auth-type-device-enabled": True, "auth-type-refresh-enabled": True,
            "auth-type-token-enabled": False, "auth-type-password-enabled": False,
            "auth-type-client-enabled": False, "auth-type-none-enabled": False,
            "device-authorization-expiration": 60, "device-authorization-interval": 1,
            "allow-non-oidc": False, "jwks-show": True, "subject-type": "public",
            "pkce-allowed": True, "pkce-method-plain-allowed": False,
            "pkce-required": True, "pkce-required-public-client": True,
            "introspection-revocation-allowed": True,
            "introspection-revocation-allow-target-client": True,
            "session-management-allowed": True, "session-cookie-name": "GLEWLWYD2_OIDC_SESSION",
            "session-cookie-expiration": 86400,
            "front-channel-logout-allowed": False, "back-channel-logout-allowed": False,
            "name-claim": "mandatory", "email-claim": "mandatory", "scope-claim": "no",
        }
