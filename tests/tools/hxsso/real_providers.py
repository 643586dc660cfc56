#!/usr/bin/env python3
"""real_providers.py PROVIDER FOLDER [EMULATOR...]

From nothing to a token in a shell and back, at a provider as others run them.
"""

import json
import pathlib
import sys
import tempfile

from hxsso_place import PATIENCE, Place, User, failed, skip, why_not

import glewlwyd  # noqa: E402
import oidc_provider  # noqa: E402
from browser import Browser  # noqa: E402

PROVIDERS = {"oidc-provider": (oidc_provider.OidcProvider, oidc_provider.why_missing),
             "glewlwyd": (glewlwyd.Glewlwyd, glewlwyd.why_missing)}
SCOPES = {"oidc-provider": "openid profile email offline_access data:read",
          "glewlwyd": "openid profile email offline_access data:read data:write"}


def there_and_back(place, provider):
    place.settings.write_text(json.dumps({"store": place.native(place.store, "/")}))
    ports = provider.server_entry().get("redirectPorts")
    ended = place.run("configure", "--issuer", provider.issuer, "--client-id", "hxsso-test",
                      "--scopes", SCOPES[provider.name],
                      *(["--redirect-ports", ",".join(map(str, ports))] if ports else []))
    assert ended.status == 0, ended

    with User(place):
        ended = place.run("login")
        assert ended.status == 0 and ended.text.startswith("Signed in as Alice Ågren"), ended
    assert place.run("status").status == 0
    assert place.run("whoami", "--json").result["email"] == "alice@example.org"
    token = place.token()
    narrow = place.token("--scope", "data:read")
    assert narrow != token and place.token("--scope", "data:read") == narrow
    renewed = place.run("token", "--min-valid", "100000")
    assert renewed.status == 0 and renewed.text.strip() != token, renewed
    assert "lives so long" in renewed.errors, renewed

    ended = place.run("logout")
    assert ended.status == 0, ended
    failed(place.run("token"), 1, "nobody is signed in")

    # And without a browser here.
    process = place.begin("login", "--device")
    address = ""
    while "code=" not in address:
        address = process.stderr.readline().decode().strip()
        assert address, process.communicate()
    somewhere = Browser(str(provider.authority.bundle), provider.user, provider.password)
    _, status, page = somewhere.visit(address)
    assert status == 200, page
    output, errors = process.communicate(timeout=PATIENCE)
    assert process.returncode == 0, (output, errors)
    assert output.decode().startswith("Signed in as Alice Ågren"), output
    assert place.token("--scope", "data:read")
    assert place.run("logout").status == 0


def main():
    kind, why_missing = PROVIDERS[sys.argv[1]]
    if reason := why_missing() or why_not():
        skip(reason)
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder).resolve()
        with kind(root / "authority") as provider:
            place = Place(root / "place", pathlib.Path(sys.argv[2]), sys.argv[3:], provider)
            try:
                there_and_back(place, provider)
            except BaseException:
                print(*place.log(), sep="\n")
                raise


if __name__ == "__main__":
    main()
