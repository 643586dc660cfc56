"""An installation with a browser that signs in as the provider's user."""

import pathlib
import shutil

from installation import Installation, wait_until

BROWSER = pathlib.Path(__file__).resolve().parent / "browser.py"
NO_BROWSER = "no-browser-is-to-be-started"


def processes_of(root, programs=("browser.py", "chromium")):
    """Those of these programs that a test below this folder started and that have not ended."""
    left = []
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            words = (process / "cmdline").read_bytes().replace(b"\0", b" ").decode()
            environment = (process / "environ").read_bytes().decode("utf-8", "replace")
        except OSError:
            continue  # it has just ended
        if any(name in words for name in programs) and str(root) in words + environment:
            left.append(words)
    return left


class Place(Installation):
    def __init__(self, root, programs, emulator, provider):
        super().__init__(root, programs, emulator, provider)
        self.trace = root / "trace"

    def configure(self, servers=None, **more):
        """A sign-in takes a second; on a machine with much to do it may take many."""
        super().configure(servers, **{"timeouts": {"login": 50, "network": 30}, **more})

    def environment(self):
        return {
            **super().environment(),
            "HXSSO_OPENID_BROWSER": self.native(BROWSER),
            "HXSSO_TEST_AUTHORITY": str(self.provider.authority.bundle),
            "HXSSO_TEST_USER": self.provider.user,
            "HXSSO_TEST_PASSWORD": self.provider.password,
            "HXSSO_TEST_COOKIES": str(self.root / "cookies"),
            "HXSSO_TEST_TRACE": str(self.trace),
        }

    def start_without_browser(self):
        return self.start(HXSSO_OPENID_BROWSER=self.native(self.root / NO_BROWSER))

    def sign_ins(self):
        """How often the browser came back to the host; it may still be showing the page."""
        wait_until(lambda: not processes_of(self.root))
        trace = self.trace.read_text() if self.trace.exists() else ""
        return trace.count("came to http://127.0.0.1:")

    def keep_store(self, name):
        """A copy of the store, for a host that has slept while others went on."""
        shutil.copytree(self.store, self.root / name)

    def put_store_back(self, name):
        shutil.rmtree(self.store)
        shutil.copytree(self.root / name, self.store)

    def logged(self, *words):
        return [line for line in self.log() if all(word in line for word in words)]
