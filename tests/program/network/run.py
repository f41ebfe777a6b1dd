#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the tests of one module in a network of their own, which ends with them.

Usage: run.py PROGRAM DISCOVERY_WATCH MODULE [TEST...]

Exit status: 0 passed, 1 failed, 77 nothing but skipped tests.
"""

import os
import pathlib
import subprocess
import sys
import unittest

SKIPPED = 77
HERE = pathlib.Path(__file__).resolve().parent
INSIDE = "NMOS_NETWORK_INSIDE"
sys.dont_write_bytecode = True  # the tests may lie where nothing is to be written
sys.path += [str(HERE.parent), str(HERE.parent / "registry"), str(HERE.parent / "serve")]


def enter():
    """Goes on in namespaces of its own: network, mounts, host name, and processes, which are all killed at the
    end. Exits if the system does not allow them."""
    unshare = ["unshare", "--net", "--mount", "--uts", "--pid", "--mount-proc", "--fork",
               "--kill-child"]
    if os.geteuid() == 0 and mapped_users() < 1000:
        skip("root of a namespace that has no other users, which the daemons want")
    if os.geteuid() != 0:
        # The daemons want users of their own, so one that is mapped is not enough.
        unshare += ["--user", "--map-root-user", "--map-auto"]
    try:
        trial = subprocess.run([*unshare, "true"], capture_output=True, text=True, check=False)
    except OSError as error:
        skip(str(error))
    if trial.returncode != 0:
        skip("no namespaces: " + trial.stderr.strip())
    os.environ[INSIDE] = "yes"
    os.execvp(unshare[0], [*unshare, sys.executable, *sys.argv])


def mapped_users():
    lines = pathlib.Path("/proc/self/uid_map").read_text(encoding="ascii").splitlines()
    return sum(int(line.split()[2]) for line in lines)


def skip(reason):
    print("skipped:", reason)
    sys.exit(SKIPPED)


def main():
    if INSIDE not in os.environ:
        enter()
    os.environ["NMOS_INSTRUMENT"] = os.path.abspath(sys.argv[1])
    os.environ["NMOS_DISCOVERY_WATCH"] = os.path.abspath(sys.argv[2])
    import network  # what it reads from the environment is there now
    try:
        network.set_up()
    except unittest.SkipTest as reason:
        skip(reason)
    module = sys.argv[3]
    names = [f"{module}.{test}" for test in sys.argv[4:]] or [module]
    tests = unittest.defaultTestLoader.loadTestsFromNames(names)
    result = unittest.TextTestRunner(stream=sys.stdout, verbosity=1).run(tests)
    for _, reason in result.skipped:
        print("skipped:", reason)
    if not result.wasSuccessful() or result.testsRun == 0:
        network.print_logs()
        return 1
    return SKIPPED if len(result.skipped) == result.testsRun else 0


if __name__ == "__main__":
    sys.exit(main())
