# SPDX-License-Identifier: Apache-2.0
"""An authority of our own, and a certificate of it for an address."""

import pathlib
import shutil
import subprocess
import unittest


class Certificates:
    def __init__(self, folder, address):
        """Skips the test where there is no openssl."""
        if not shutil.which("openssl"):
            raise unittest.SkipTest("there is no openssl to make certificates")
        self.folder = pathlib.Path(folder)
        self.authority = self.folder / "authority.pem"
        self.registry = self.folder / "registry.pem"  # with its key
        self.make("authority", "/CN=Test authority", "basicConstraints=critical,CA:TRUE")
        self.make("registry", "/CN=Test registry", f"subjectAltName=IP:{address}",
                  "-addext", "basicConstraints=critical,CA:FALSE", "-CA", str(self.authority),
                  "-CAkey", str(self.folder / "authority.key"))
        key = (self.folder / "registry.key").read_bytes()
        self.registry.write_bytes(self.registry.read_bytes() + key)

    def make(self, name, subject, extension, *options):
        subprocess.run(
            ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
             "-nodes", "-days", "2", "-subj", subject, "-addext", extension,
             "-keyout", str(self.folder / f"{name}.key"), "-out", str(self.folder / f"{name}.pem"),
             *options], check=True, stderr=subprocess.DEVNULL)
