#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the tests of one module against the program.

Usage: run.py PROGRAM EXAMPLES_DIRECTORY MODULE [TEST...]

Exit status: 0 passed, 1 failed, 77 nothing but skipped tests.
"""

import os
import pathlib
import sys
import unittest

SKIPPED = 77
sys.dont_write_bytecode = True  # the tests may lie where nothing is to be written
PROGRAM_TESTS = pathlib.Path(__file__).resolve().parent.parent
sys.path += [str(PROGRAM_TESTS), str(PROGRAM_TESTS / "registry")]


def main():
    os.environ["NMOS_INSTRUMENT"] = os.path.abspath(sys.argv[1])
    os.environ["NMOS_EXAMPLES"] = os.path.abspath(sys.argv[2])
    module = sys.argv[3]
    # Modules run side by side. Each has ports of its own: after a kill another module's instrument
    # must not answer in its place.
    modules = sorted(path.stem for path in pathlib.Path(__file__).parent.glob("test_*.py"))
    os.environ["NMOS_PORT"] = str(23000 + 100 * modules.index(module))
    names = [f"{module}.{test}" for test in sys.argv[4:]] or [module]
    tests = unittest.defaultTestLoader.loadTestsFromNames(names)
    result = unittest.TextTestRunner(stream=sys.stdout, verbosity=1).run(tests)
    for _, reason in result.skipped:
        print("skipped:", reason)
    if not result.wasSuccessful() or result.testsRun == 0:
        return 1
    return SKIPPED if len(result.skipped) == result.testsRun else 0


if __name__ == "__main__":
    sys.exit(main())
