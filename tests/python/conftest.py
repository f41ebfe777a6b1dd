# SPDX-License-Identifier: Apache-2.0

import os
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]

# The sources themselves, without an installed copy; test_install.py tries that.
sys.path.insert(0, str(ROOT / "python"))


def without_sanitizer():
    """The environment for programs that are no tests of ours."""
    return {name: value for name, value in os.environ.items() if name != "LD_PRELOAD"}
