#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
#
# Runs the commands of docs/tutorial.md against the installed tree, in their order, in one shell. After
# each block of commands, every line of the block "output" that follows it must be found in what they
# printed; every line of a block of C++ must be in the example.
#
# Usage: tutorial_test.py TUTORIAL EXAMPLE PREFIX CXX

import pathlib
import re
import subprocess
import sys
import tempfile

tutorial, example, prefix, compiler = sys.argv[1:]
MARK = "---- end of block "


def blocks():
    text = pathlib.Path(tutorial).read_text(encoding="utf-8")
    return re.findall(r"^```(\w+)\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)


def run(commands):
    """What each block printed."""
    script = "set -eu\n"
    for number, block in enumerate(commands):
        script += f"{block}\necho; echo '{MARK}{number}'\n"
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run(
            ["bash", "-m", "-c", script], cwd=folder, text=True, timeout=300, check=False,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            env={"PATH": "/usr/local/bin:/usr/bin:/bin", "prefix": prefix, "CXX": compiler,
                 "LD_LIBRARY_PATH": f"{prefix}/lib"})
    if done.returncode != 0:
        sys.exit(f"the commands ended with {done.returncode}:\n{done.stdout}")
    return re.split(re.escape(MARK) + r"\d+\n", done.stdout)


def main():
    found = blocks()
    commands = [text for kind, text in found if kind == "sh"]
    printed = run(commands)
    failures = []
    checked = 0
    number = -1
    source = pathlib.Path(example).read_text(encoding="utf-8")
    for kind, text in found:
        if kind == "sh":
            number += 1
            continue
        where, what = (source, example) if kind == "cpp" else (printed[number], "what was printed")
        for line in text.splitlines():
            checked += 1
            if line not in where:
                failures.append(f"{line!r} is not in {what}:\n{printed[number]}")
    print(f"{len(commands)} blocks of commands, {checked} lines checked, {len(failures)} missing")
    if failures or checked < 10:
        sys.exit("\n".join(failures) or "hardly anything was checked")


main()
