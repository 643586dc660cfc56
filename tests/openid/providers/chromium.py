"""Debian's Chromium without a window, as the browser that the plugin starts."""

import base64
import hashlib
import os
import shutil
import time

from cryptography import x509
from cryptography.hazmat.primitives import serialization


def why_missing():
    return None if shutil.which("chromium") else "chromium is not installed"


def script(folder, authority):
    """A program that opens its argument and writes the page where that ended.

    Chromium has a store of its own, so it is told the key of the server's certificate."""
    certificate = x509.load_pem_x509_certificate(authority.certificate()[0].read_bytes())
    key = certificate.public_key().public_bytes(
        serialization.Encoding.DER, serialization.PublicFormat.SubjectPublicKeyInfo)
    pin = base64.b64encode(hashlib.sha256(key).digest()).decode()
    sandbox = "--no-sandbox" if os.geteuid() == 0 else ""  # it refuses to be root's otherwise
    file = folder / "chromium.sh"
    file.write_text(f"""#!/bin/sh
HOME={folder} chromium --headless --disable-gpu {sandbox} --user-data-dir={folder}/profile \\
    --ignore-certificate-errors-spki-list={pin} --dump-dom "$1" >{folder}/page.new 2>/dev/null
mv {folder}/page.new {folder}/page
""")
    file.chmod(0o755)
    return file


def page(folder, seconds=30):
    """What it showed last."""
    end = time.monotonic() + seconds
    while not (folder / "page").exists():
        assert time.monotonic() < end, "chromium wrote no page"
        time.sleep(0.1)
    return (folder / "page").read_text(encoding="utf-8")
