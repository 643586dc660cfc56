"""A machine of a test's own, as far as Linux lends one: the test's script begins anew in
namespaces that end with it."""

import os
import subprocess
import sys

_INSIDE = "HXSSO_TEST_INSIDE"


def enter(kinds, set_up):
    """Returns when the script runs in namespaces of these kinds (options of unshare), in which
    the commands of `set_up` have run; or with a reason why this machine permits it not."""
    if os.environ.get(_INSIDE):
        return None
    unshare = ["unshare", *([] if os.geteuid() == 0 else ["-r"]), *kinds, "sh", "-ec"]
    trial = subprocess.run([*unshare, set_up], capture_output=True, text=True, check=False)
    if trial.returncode:
        return "this machine permits no namespaces of one's own: " + trial.stderr.strip()
    os.environ[_INSIDE] = "1"
    os.execvp(unshare[0], [*unshare, set_up + '\nexec "$@"', "sh", sys.executable, *sys.argv])
