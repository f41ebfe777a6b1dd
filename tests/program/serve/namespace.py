# SPDX-License-Identifier: Apache-2.0
"""Tests in a network namespace, where interfaces can be made without asking anybody."""

import os
import pathlib
import subprocess
import sys


def run_in_namespace(test, name):
    """`name`: of a module, or of a class or a test in it. Skips `test` where there is no such
    namespace."""
    try:
        probe = subprocess.run(["unshare", "-rn", "sh", "-c",
                                "ip link add nmos0 type veth peer name nmos1"],
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=30,
                               check=False)
    except FileNotFoundError as error:
        test.skipTest(str(error))
    if probe.returncode != 0:
        test.skipTest("no network namespace here: " + probe.stdout.decode().strip())
    run = subprocess.run(["unshare", "-rn", sys.executable, "-m", "unittest", name],
                         cwd=pathlib.Path(__file__).parent, timeout=300,
                         env={**os.environ, "PYTHONDONTWRITEBYTECODE": "1",
                              "PYTHONPATH": os.pathsep.join(sys.path)},
                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    said = run.stdout.decode(errors="replace")
    test.assertEqual(run.returncode, 0, said)
    test.assertRegex(said, r"Ran [1-9]\d* test")
    print(said)
