#!/usr/bin/env python3
"""sizes.py BIN RESULT: two rows of the table that are no times.

The size of the library, stripped, and the peak memory of the sample host, each
beside the sample host with the sample plugin linked in: that one has neither a
library nor anything to find. BIN is the folder of what the preset `bench` built.
"""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

CONFIG = '{"ssoServer": {"searchPaths": "%ExePath%/../server"}}\n'
COMPATIBILITY = """{
    "%s": [{
        "module": "%s", "modulePath": "%%SSOServerAppPath%%", "version": "1.0",
        "compatibleSsoServicesVersion": {"minVersion": "10.22", "maxVersion": "10.22.00.1800"}
    }]
}
"""


def stripped_size(file, folder):
    copy = folder / file.name
    subprocess.run(["strip", "-o", copy, file], check=True)
    return copy.stat().st_size


def peak_memory(program, folder, expected):
    """Bytes that the process held at most; it has to say what is expected."""
    with open(folder / "output", "w+b") as output:
        child = subprocess.Popen([program], stdout=output, cwd=folder,
                                 env={**os.environ, "HXSSO_SAMPLE_LOG": str(folder / "log")})
        _, status, usage = os.wait4(child.pid, 0)
        child.returncode = status
        output.seek(0)
        if status != 0 or expected not in output.read():
            sys.exit(f"{program.name} did not do its work")
    return usage.ru_maxrss * 1024


def main():
    bin_folder, result = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])
    with tempfile.TemporaryDirectory() as name:
        root = pathlib.Path(name)
        for folder in ("app", "server", "stripped"):
            (root / folder).mkdir()
        for file in ("SampleHost", "libHxSSOServices.so.10"):
            shutil.copy(bin_folder / file, root / "app")
        shutil.copy(bin_folder / "SampleClientPlugin.so", root / "server")
        (root / "server" / "HxSSO.exe").write_text("a placeholder\n")
        (root / "app" / "SSOClient.config").write_text(CONFIG)
        (root / "server" / "SSOVersionCompatibility.config").write_text(
            COMPATIBILITY % ("ssoClientPlugin", "SampleClientPlugin.so"))

        token = b"access token: sample-oauth2"
        linked = bin_folder / "bench-linked-host"
        samples = {
            "size of the stripped library": {
                "floor": [stripped_size(linked, root / "stripped")],
                "ours": [stripped_size(bin_folder / "libHxSSOServices.so", root / "stripped")],
            },
            "peak memory of the sample host": {
                "floor": [peak_memory(linked, root, token) for _ in range(11)],
                "ours": [peak_memory(root / "app" / "SampleHost", root, token)
                         for _ in range(11)],
            },
        }
    result.write_text(json.dumps(samples))


if __name__ == "__main__":
    main()
