"""tinyproxy from Debian, which wants a name and a password."""

import base64
import pathlib
import shutil
import socket
import subprocess
import time

CONFIGURATION = """
Port {port}
Listen 127.0.0.1
Timeout 60
MaxClients 50
LogFile "{log}"
LogLevel Info
BasicAuth {user} {password}
"""


def why_missing():
    return None if shutil.which("tinyproxy") else "tinyproxy is not installed; run scripts/setup openid"


def _free_port():
    with socket.socket() as trial:
        trial.bind(("127.0.0.1", 0))
        return trial.getsockname()[1]


class Proxy:
    user, password = "anna", "Proxy-Pass-4711"

    def __init__(self, folder):
        self._folder = pathlib.Path(folder)
        self._folder.mkdir(parents=True)
        self._log = self._folder / "tinyproxy.log"

    def __enter__(self):
        self.port = _free_port()
        file = self._folder / "tinyproxy.conf"
        file.write_text(CONFIGURATION.format(
            port=self.port, log=self._log, user=self.user, password=self.password))
        self._process = subprocess.Popen(["tinyproxy", "-d", "-c", str(file)],
                                         stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
        end = time.monotonic() + 20
        while True:
            try:
                return socket.create_connection(("127.0.0.1", self.port), 1).close() or self
            except OSError:
                if self._process.poll() is not None or time.monotonic() > end:
                    self.__exit__()
                    raise RuntimeError(f"tinyproxy does not answer: {self.log()}") from None
                time.sleep(0.02)

    def __exit__(self, *_):
        self._process.terminate()
        self._process.wait(10)

    def log(self):
        return self._log.read_text() if self._log.exists() else ""

    def requests(self):
        """The first lines of what it was asked, in their order."""
        return [line.partition("): ")[2] for line in self.log().splitlines() if "Request (" in line]

    def secrets(self, password=None):
        """What nobody but the proxy may see."""
        password = password or self.password
        return [password, base64.b64encode(f"{self.user}:{password}".encode()).decode()]

    def address(self, credentials=""):
        return f"http://{credentials}127.0.0.1:{self.port}"
