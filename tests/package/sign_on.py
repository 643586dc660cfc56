#!/usr/bin/env python3
"""sign_on.py PROVIDER FOLDER HOST [EMULATOR...]

Uses a package as whoever unpacks it: configures it for a provider, signs in, gets a token, has
another program find the sign-on folder, signs out. FOLDER is the unpacked ZIP, or the root into
which Debian's packages were installed; HOST is the program of docs/getting-started.md.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(HERE.parent / "openid/host"))

from installation import PATIENCE, Installation, User, why_not  # noqa: E402

import glewlwyd  # noqa: E402
import hostile  # noqa: E402
import oidc_provider  # noqa: E402

PROVIDERS = {
    "hostile": (hostile.HostileProvider, lambda: None),
    "oidc-provider": (oidc_provider.OidcProvider, oidc_provider.why_missing),
    "glewlwyd": (glewlwyd.Glewlwyd, glewlwyd.why_missing),
}
LOCATION = "etc/xdg/Halvorix/HxSSO/Location"


class Machine(Installation):
    """A copy of the package, and a host in a folder of its own."""

    def __init__(self, root, package, host, emulator, provider):
        # Nothing is laid out as the base class does it: that is what the package is for.
        self.root, self.provider = root, provider
        self.emulator = [os.path.abspath(word) for word in emulator]
        self.is_windows = host.suffix == ".exe"
        self.addresses = root / "addresses"
        self.package = root / "package of a user"
        (root / "home").mkdir(parents=True)
        self._provide_browsers()
        shutil.copytree(package, self.package, symlinks=True)
        if self.is_windows:
            self.folder, self._more = self.package / "sign-on", {}
            self.hxsso = self.folder / "HxSSO.exe"
        else:
            self.folder = self.package / "usr/lib/HxSSO"
            self.hxsso, self._more = self.package / "usr/bin/hxsso", self._settle()
        app = root / "app"
        app.mkdir()
        self.host = pathlib.Path(shutil.copy(host, app))
        (app / "SSOClient.config").write_text("{}")
        if self.is_windows:
            for module in (self.package / "bin").glob("*.dll"):
                shutil.copy(module, app)

    def _settle(self):
        """Debian's packages name folders of the machine, and here these lie below another root.
        Answers what the environment has to say of that."""
        location = self.package / LOCATION
        assert location.read_text() == "/usr/lib/HxSSO\n", location.read_text()
        location.write_text(f"{self.folder}\n")
        link = self.folder / "HxSSOOpenID.json"
        assert os.readlink(link) == "/etc/hxsso/HxSSOOpenID.json", os.readlink(link)
        link.unlink()
        link.symlink_to(self.package / "etc/hxsso/HxSSOOpenID.json")
        [libraries] = self.package.glob("usr/lib/*-linux-gnu")
        return {"XDG_CONFIG_DIRS": str(self.package / "etc/xdg"),
                "LD_LIBRARY_PATH": str(libraries)}

    def environment(self):
        return {**super().environment(), **self._more}

    def run(self, program, *arguments, status=(0,)):
        """What it printed on its standard output; its exit status is one of these."""
        words = [*self.emulator, str(program), *arguments]
        ended = subprocess.run(
            self.provider.authority.trusted(words), cwd=self.root, env=self.environment(),
            stdin=subprocess.DEVNULL, capture_output=True, timeout=PATIENCE, check=False)
        output = ended.stdout.decode().replace("\r", "")
        print("$", program.name, *arguments, ended.returncode, output, ended.stderr.decode(),
              flush=True)
        assert ended.returncode in status, f"exit status {ended.returncode}, not one of {status}"
        return output


def there_and_back(machine, provider):
    hxsso, host = machine.hxsso, machine.host
    machine.run(hxsso, "status", status=(3,))
    entry = provider.server_entry()
    ports = ",".join(map(str, entry.get("redirectPorts", [])))
    machine.run(hxsso, "configure", "--issuer", provider.issuer, "--client-id",
                provider.client_id, *(["--redirect-ports", ports] if ports else []))
    with User(machine):
        assert "Alice Ågren" in machine.run(hxsso, "login")
    assert len(machine.run(hxsso, "token").split()) == 1
    machine.run(hxsso, "doctor")

    # Another program finds the folder by the value Location, which Debian's package has written.
    if machine.is_windows:
        assert "no plugin" in machine.run(host, status=(1,))
        assert machine.native(machine.folder) in machine.run(hxsso, "install", "--system")
    try:
        # The token that it wants has scopes that are not configured: not all providers give one.
        assert machine.run(host, status=(0, 1)).startswith("signed in")
        machine.run(hxsso, "logout")
        machine.run(hxsso, "token", status=(1,))
        assert machine.run(host, status=(1,)) == "not signed in\n"
    finally:
        machine.run(hxsso, "install", "--system", "--remove", "--folder",
                    machine.native(machine.folder))
    assert "no plugin" in machine.run(host, status=(1,))


def main(name, package, host, *emulator):
    kind, why_missing = PROVIDERS[name]
    if reason := why_missing() or why_not():
        print("skipped:", reason)
        return 77
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder).resolve()
        with kind(root / "authority") as provider:
            there_and_back(Machine(root / "machine", pathlib.Path(package), pathlib.Path(host),
                                   emulator, provider), provider)
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
