"""What the real providers have in common: a program that is started, and stopped for good."""

import json
import pathlib
import subprocess
import threading

REPO = pathlib.Path(__file__).resolve().parents[3]
DEPS = REPO / ".deps"


class Program:
    """A process and what it said. Stopped by the end of its input, or else by a signal."""

    def __init__(self, command, log, **settings):
        self._log = open(log, "wb")
        self.process = subprocess.Popen([str(word) for word in command], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=self._log, **settings)
        self.log = log

    def first_json_line(self, seconds=20):
        """Of its standard output; the rest goes into its log."""
        timer = threading.Timer(seconds, self.process.kill)
        timer.start()
        try:
            for line in self.process.stdout:
                if line.startswith(b"{"):
                    return json.loads(line)
        finally:
            timer.cancel()
        raise RuntimeError(f"it ended without its address: {pathlib.Path(self.log).read_text()}")

    def stop(self, with_signal=False):
        """Its exit status."""
        if with_signal:
            self.process.terminate()
        try:
            self.process.communicate(timeout=10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.communicate()
        self._log.close()
        return self.process.returncode
