"""A whole installation of host, library and open plugin in a folder, and hosts that run in it."""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import threading
import time

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "providers"))
sys.dont_write_bytecode = True

import authority  # noqa: E402
import browser  # noqa: E402

NOTE_ADDRESS = r"""printf '%s\n' "$1" >>"$OPENID_HOST_ADDRESSES"
"""
# The variable has a path as Windows writes it.
START_BROWSER = r"""program=$(printf %s "${HXSSO_OPENID_BROWSER#Z:}" | tr '\\' /)
exec "$program" "$1"
"""

# Of a single answer: far more than any takes, far less than CTest waits.
PATIENCE = 60


class Installation:
    """Layout: app/ with host and library, server/ with the plugin, store/ with what it keeps."""

    program, plugin = "openid-host", "HxSSOOpenID"

    def __init__(self, root, programs, emulator, provider=None):
        self.root, self.provider = root, provider
        self.emulator = [os.path.abspath(word) for word in emulator]
        self.is_windows = (programs / (self.program + ".exe")).exists()
        ending, module = (".exe", ".dll") if self.is_windows else ("", ".so")
        library = "HxSSOServices.dll" if self.is_windows else "libHxSSOServices.so.10"
        self.host = root / "app" / (self.program + ending)
        self.module = root / "server" / (self.plugin + module)
        self.settings = root / "server/HxSSOOpenID.json"
        self.store, self.addresses = root / "store", root / "addresses"
        for folder in ("app", "server", "xdg/Halvorix/HxSSO", "home"):
            (root / folder).mkdir(parents=True)
        for file in (self.host.name, library):
            shutil.copy(programs / file, root / "app")
        shutil.copy(programs / self.module.name, self.module)
        self._lead_to_the_plugin()
        self._provide_browsers()
        self.configure()

    def _lead_to_the_plugin(self):
        """As an installer does, but for the registry's value: others would find that too."""
        (self.root / "server/HxSSO.exe").touch()
        config = {}
        if self.is_windows:
            config["ssoServer"] = {"searchPaths": self.native(self.root / "server", "/")}
        else:
            (self.root / "xdg/Halvorix/HxSSO/Location").write_text(f"{self.root}/server\n")
        (self.root / "app/SSOClient.config").write_text(json.dumps(config))
        entry = {"module": self.module.name, "modulePath": "%SSOServerAppPath%",
                 "version": "1.0", "compatibleSsoServicesVersion": {"minVersion": "10.22"}}
        (self.root / "server/SSOVersionCompatibility.config").write_text(
            json.dumps({"ssoClientPlugin": [entry], "openssl": [entry]}))

    def _provide_browsers(self):
        """One that writes the address down. Wine counts its programs as raised by the user, in
        which the plugin does not let the environment choose: it opens addresses by xdg-open."""
        self._script("note-address", NOTE_ADDRESS)
        self._script("xdg-open", START_BROWSER)

    def _script(self, name, commands):
        file = self.root / "bin" / name
        file.parent.mkdir(exist_ok=True)
        file.write_text("#!/bin/sh\n" + commands)
        file.chmod(0o755)

    def configure(self, servers=None, **more):
        """Writes HxSSOOpenID.json; without `servers` with the provider as the only one."""
        if servers is None:
            servers = {"production": self.provider.server_entry()} if self.provider else {}
        self.settings.write_text(json.dumps(
            {"servers": servers, "store": self.native(self.store, "/"),
             "timeouts": {"login": 20, "network": 10}, **more}))

    def native(self, path, separator="\\"):
        """A path as the program's system writes it."""
        if self.is_windows and self.emulator:
            return "Z:" + str(path).replace("/", separator)
        return str(path)

    def environment(self):
        return {
            **os.environ,
            "HOME": str(self.root / "home"),
            "XDG_CONFIG_DIRS": str(self.root / "xdg"),
            "XDG_DATA_HOME": str(self.root / "home/data"),
            "PATH": f"{self.root}/bin{os.pathsep}{os.environ['PATH']}",
            "HXSSO_OPENID_BROWSER": self.native(self.root / "bin/note-address"),
            "OPENID_HOST_ADDRESSES": str(self.addresses),
        }

    def command(self):
        words = [*self.emulator, str(self.host)]
        return self.provider.authority.trusted(words) if self.provider else words

    def log(self, folder=None):
        """The lines of the plugin's log, those of the library among them."""
        file = (folder or self.store) / "HxSSOOpenID.log"
        return file.read_text(encoding="utf-8").splitlines() if file.exists() else []

    def start(self, **environment):
        return Host(self, environment)


class Host:
    """A process that does what it is told; initialized, as a host with a user interface."""

    def __init__(self, place, environment):
        self.process = subprocess.Popen(
            place.command(), cwd=place.root, env={**place.environment(), **environment},
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
            encoding="utf-8")
        self.ask("UI.Initialize", "false")

    def tell(self, command, *arguments):
        self.process.stdin.write(" ".join([command, *map(str, arguments)]) + "\n")
        self.process.stdin.flush()

    def answer(self):
        """What it answers to the command that was told before."""
        watch = threading.Timer(PATIENCE, self.process.kill)
        watch.start()
        try:
            line = self.process.stdout.readline()
        finally:
            watch.cancel()
        assert line, (f"the host ended or was silent: {self.process.communicate()}, "
                      f"status {self.process.returncode}")
        answer = json.loads(line)
        assert "answer" in answer, answer
        return answer["answer"]

    def ask(self, command, *arguments):
        self.tell(command, *arguments)
        return self.answer()

    def begin(self, command, *arguments):
        self.ask("begin", command, *arguments)

    def close(self):
        """Its exit status and standard error are those of a program that had no trouble."""
        _, errors = self.process.communicate(timeout=PATIENCE)
        assert self.process.returncode == 0 and not errors, (self.process.returncode, errors)

    def __enter__(self):
        return self

    def __exit__(self, kind, *_):
        if kind is None:
            self.close()
        else:
            self.process.kill()
            self.process.communicate()


class User:
    """Somebody at the browser: visits each address that the plugin opens, and agrees."""

    def __init__(self, place):
        self.place, self.visited = place, []
        self._browser = browser.Browser(str(place.provider.authority.bundle))
        self._over = threading.Event()
        self._thread = threading.Thread(target=self._watch, daemon=True)

    def visit(self, address):
        self.visited.append((address, *self._browser.visit(address)))

    def _watch(self):
        seen = 0
        while not self._over.wait(0.02):
            if self.place.addresses.exists():
                addresses = self.place.addresses.read_text().splitlines(keepends=True)
                whole = [line.strip() for line in addresses if line.endswith("\n")]
                for address in whole[seen:]:
                    self.visit(address)
                seen = len(whole)

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._over.set()
        self._thread.join()


def wait_until(condition, seconds=PATIENCE):
    """For what another process does and nobody tells us of."""
    end = time.monotonic() + seconds
    while not condition():
        assert time.monotonic() < end, "it did not come"
        time.sleep(0.02)


def why_not():
    """Why these tests cannot run on this machine; None if they can."""
    return authority.why_untrusted()
