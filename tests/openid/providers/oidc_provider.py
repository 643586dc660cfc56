"""oidc-provider from npm, which scripts/setup openid puts into .deps/oidc-provider."""

import json
import pathlib
import shutil

from authority import Authority
from program import DEPS, Program

MODULES = DEPS / "oidc-provider"
SERVE = pathlib.Path(__file__).resolve().parent / "oidc-provider/serve.mjs"


def why_missing():
    if not shutil.which("node"):
        return "node is not installed; run scripts/setup openid"
    if not (MODULES / "node_modules/oidc-provider").is_dir():
        return "oidc-provider is not in .deps; run scripts/setup openid"
    return None


class OidcProvider:
    name = "oidc-provider"
    client_id = "hxsso-test"
    user, password = "alice", "wonderland"
    revokes_for_public_clients = True

    def __init__(self, folder, lifetime=3600):
        self.authority, self.lifetime = Authority(folder), lifetime

    def start(self):
        certificate, key = self.authority.certificate()
        self._program = Program(
            ["node", SERVE, json.dumps({"modules": str(MODULES), "certificate": str(certificate),
                                        "key": str(key), "lifetime": self.lifetime})],
            self.authority.folder / "oidc-provider.log")
        self.issuer = self._program.first_json_line()["issuer"]
        return self

    def stop(self):
        self._program.stop()

    def remove_account(self, name):
        self._program.process.stdin.write(name.encode() + b"\n")
        self._program.process.stdin.flush()
        assert self._program.first_json_line() == {"removed": True}

    def __enter__(self):
        return self.start()

    def __exit__(self, *_):
        self.stop()

    def server_entry(self, scopes="openid profile email offline_access data:read data:write"):
        """Its entry of `servers` in HxSSOOpenID.json."""
        return {"issuer": self.issuer, "clientId": self.client_id, "scopes": scopes}
