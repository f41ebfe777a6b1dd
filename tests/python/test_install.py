# SPDX-License-Identifier: Apache-2.0
"""pip installs the package from the source tree, typed, and it works from there."""

import os
import shutil
import subprocess
import sys

import pytest
from conftest import ROOT, without_sanitizer


def test_pip_install(tmp_path):
    for module in ("pip", "setuptools", "wheel"):
        if subprocess.run([sys.executable, "-c", f"import {module}"], capture_output=True).returncode:
            pytest.skip(f"this Python has no {module}")
    source = tmp_path / "python"  # pip writes beside what it builds
    shutil.copytree(ROOT / "python", source)
    target = tmp_path / "installed"
    subprocess.run([sys.executable, "-m", "pip", "install", "--quiet", "--no-index", "--no-deps",
                    "--no-build-isolation", "--target", target, source],
                   check=True, env=without_sanitizer())
    assert (target / "nmos_instrument" / "py.typed").exists()
    printed = subprocess.run(
        [sys.executable, "-c",
         "import nmos_instrument, importlib.metadata as m;"
         "print(nmos_instrument.__file__, m.version('nmos-instrument'),"
         " nmos_instrument.node_version())"],
        check=True, capture_output=True, text=True, cwd=tmp_path,
        env={**os.environ, "PYTHONPATH": str(target)}).stdout
    assert printed.startswith(f"{target}/nmos_instrument/__init__.py 1.")
    assert '"v1.2/"' in printed


def test_library_that_is_not_there(tmp_path):
    missing = subprocess.run(
        [sys.executable, "-c", "import nmos_instrument"], capture_output=True, text=True,
        env={**os.environ, "PYTHONPATH": str(ROOT / "python"),
             "NMOS_INSTRUMENT_C_LIBRARY": str(tmp_path / "none.so")})
    assert missing.returncode == 1
    assert "none.so: cannot open shared object file" in missing.stderr
    assert "name the file in $NMOS_INSTRUMENT_C_LIBRARY" in missing.stderr
