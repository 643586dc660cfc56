"""A Wine prefix with a registry of its own, and the files of the one that scripts/wine uses: made
in a moment, and nobody else finds what is written there."""

import contextlib
import hashlib
import os
import pathlib
import shutil
import ssl
import struct
import subprocess

REPO = pathlib.Path(__file__).resolve().parents[3]
LOCATION = r"HKLM\Software\Halvorix\Halvorix HxSSO"
ROOTS = r"HKLM\Software\Microsoft\SystemCertificates\Root\Certificates"


class Registry:
    def __init__(self, place, variables):
        self._place, self._variables = place, variables

    def _reg(self, *words):
        subprocess.run([*self._place.emulator, "reg", *words, "/f", "/reg:64"], check=True,
                       env={**os.environ, **self._variables}, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL)

    def set_location(self, folder):
        self._reg("add", LOCATION, "/v", "Location", "/d", self._place.native(folder))

    def remove_location(self):
        self._reg("delete", LOCATION)

    def trust(self, authority_file):
        """As an administrator does, who puts an authority into the machine's root store."""
        der = ssl.PEM_cert_to_DER_cert(authority_file.read_text())
        digest = hashlib.sha1(der).digest()
        properties = ((3, digest), (32, der))  # its hash and itself (wincrypt.h)
        blob = b"".join(struct.pack("<III", number, 1, len(data)) + data
                        for number, data in properties)
        self._reg("add", ROOTS + "\\" + digest.hex().upper(), "/v", "Blob", "/t", "REG_BINARY",
                  "/d", blob.hex())


@contextlib.contextmanager
def own(place, folder):
    """The variables that lead a command to the prefix, and its registry."""
    shared = pathlib.Path(os.environ.get("HXSSO_WINEPREFIX", REPO / ".deps/wine")).resolve()
    (folder / "home").mkdir(parents=True)
    for file in (*shared.glob("*.reg"), shared / ".update-timestamp"):
        shutil.copy2(file, folder)
    shutil.copytree(shared / "dosdevices", folder / "dosdevices", symlinks=True)
    (folder / "drive_c").symlink_to(shared / "drive_c")
    try:
        variables = {"HXSSO_WINEPREFIX": str(folder)}
        yield variables, Registry(place, variables)
    finally:
        server = shutil.which("/usr/lib/wine/wineserver64") or shutil.which("wineserver")
        subprocess.run([server, "-k"], env={**os.environ, "WINEPREFIX": str(folder)}, check=False)
