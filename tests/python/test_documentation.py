# SPDX-License-Identifier: Apache-2.0
"""The programs of docs/c-and-python.md print what the page says."""

import os
import pathlib
import re
import shutil
import subprocess
import sys

import pytest
from conftest import ROOT, without_sanitizer

PAGE = (ROOT / "docs" / "c-and-python.md").read_text()


def program_and_output(language):
    found = re.search(rf"^```{language}\n(.*?)^```\n\n```text\n(.*?)^```$", PAGE,
                      re.MULTILINE | re.DOTALL)
    return found.group(1), found.group(2)


def test_c(tmp_path):
    compiler = os.environ.get("NMOS_C_COMPILER") or shutil.which("cc")
    library = os.environ.get("NMOS_INSTRUMENT_C_LIBRARY")
    if not compiler or not library:
        pytest.skip("there is no C compiler, or $NMOS_INSTRUMENT_C_LIBRARY names no library")
    program, output = program_and_output("c")
    (tmp_path / "first.c").write_text(program)
    subprocess.run([compiler, "-std=c11", "-Wall", "-Wextra", "-Wpedantic", "-Werror",
                    f"-I{ROOT / 'include'}", tmp_path / "first.c", "-o", tmp_path / "first",
                    library, f"-Wl,-rpath,{pathlib.Path(library).parent}"],
                   check=True, env=without_sanitizer())
    printed = subprocess.run([tmp_path / "first"], check=True, capture_output=True, text=True)
    assert printed.stdout == output


def test_python():
    program, output = program_and_output("python")
    printed = subprocess.run([sys.executable, "-c", program], check=True, capture_output=True,
                             text=True, env={**os.environ, "PYTHONPATH": str(ROOT / "python")})
    assert printed.stdout == output
