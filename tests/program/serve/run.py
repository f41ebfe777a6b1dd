#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the tests of one module against the program.

Usage: run.py [--side-by-side] PROGRAM EXAMPLES_DIRECTORY MODULE [TEST...]

With --side-by-side each test is a process of its own and several run at once: for modules whose
tests wait rather than work.

Exit status: 0 passed, 1 failed, 77 nothing but skipped tests.
"""

import concurrent.futures
import os
import pathlib
import subprocess
import sys
import unittest

SKIPPED = 77
AT_ONCE = 5
PORTS_OF_A_MODULE = 100
PORTS_OF_A_TEST = 3  # of one that runs beside others
sys.dont_write_bytecode = True  # the tests may lie where nothing is to be written
PROGRAM_TESTS = pathlib.Path(__file__).resolve().parent.parent
sys.path += [str(PROGRAM_TESTS), str(PROGRAM_TESTS / "registry")]


def place(module, number=None):
    """Modules run side by side, and so may the tests of one. Each has ports of its own, and its
    registries an address: after a kill nobody else must answer in its place."""
    modules = sorted(path.stem for path in pathlib.Path(__file__).parent.glob("test_*.py"))
    index = modules.index(module)
    host = 1 if number is None else 2 + number
    return {"NMOS_PORT": str(23000 + PORTS_OF_A_MODULE * index + PORTS_OF_A_TEST * (number or 0)),
            "NMOS_REGISTRY_ADDRESS": f"127.{1 + os.getpid() % 250}.{index}.{host}"}


def names_of(tests):
    for each in tests:
        if isinstance(each, unittest.TestSuite):
            yield from names_of(each)
        else:
            yield each.id()


def run_here(tests):
    result = unittest.TextTestRunner(stream=sys.stdout, verbosity=1).run(tests)
    for _, reason in result.skipped:
        print("skipped:", reason)
    if not result.wasSuccessful() or result.testsRun == 0:
        return 1
    return SKIPPED if len(result.skipped) == result.testsRun else 0


def run_side_by_side(module, tests):
    names = list(names_of(tests))

    def run(number):
        test = names[number].removeprefix(module + ".")
        return subprocess.run(
            [sys.executable, __file__, os.environ["NMOS_INSTRUMENT"], os.environ["NMOS_EXAMPLES"],
             module, test],
            env={**os.environ, **place(module, number)}, text=True, errors="replace",
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)

    if len(names) * PORTS_OF_A_TEST > PORTS_OF_A_MODULE:
        sys.exit(f"{module} has more tests than there are ports for them")
    statuses = set()
    with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
        for name, test in zip(names, pool.map(run, range(len(names)))):
            print(f"{name}: {test.returncode}\n{test.stdout}", flush=True)
            statuses.add(test.returncode)
    if statuses == {SKIPPED}:
        return SKIPPED
    return 0 if statuses and statuses <= {0, SKIPPED} else 1


def main():
    arguments = sys.argv[1:]
    side_by_side = "--side-by-side" in arguments
    if side_by_side:
        arguments.remove("--side-by-side")
    program, examples, module, *names = arguments
    os.environ["NMOS_INSTRUMENT"] = os.path.abspath(program)
    os.environ["NMOS_EXAMPLES"] = os.path.abspath(examples)
    for name, value in place(module).items():
        os.environ.setdefault(name, value)
    tests = unittest.defaultTestLoader.loadTestsFromNames(
        [f"{module}.{name}" for name in names] or [module])
    return run_side_by_side(module, tests) if side_by_side else run_here(tests)


if __name__ == "__main__":
    sys.exit(main())
