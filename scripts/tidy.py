#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs clang-tidy over sources; part of scripts/lint.

Most of clang-tidy's time goes into the headers of GoogleTest, nlohmann-json and the standard
library, again for each source. So the sources of a folder that are compiled alike are written into
one text, which is checked as a whole; into several where their names clash. Only where a text is
not clean, each of its sources is checked alone, and what is said then counts.

A text that was clean is not checked again until it, a header, a flag, the configuration or
clang-tidy changes.
"""

import argparse
import concurrent.futures
import hashlib
import itertools
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import time

# Larger ones would leave CPUs without work at the end.
SOURCES_IN_A_BATCH = 12

# The analyzer gives up on a function sooner than by default (225000): the last of its many paths
# through a few functions would take most of the time.
ANALYZER = ["--extra-arg=-Xclang", "--extra-arg=-analyzer-config",
            "--extra-arg=-Xclang", "--extra-arg=max-nodes=25000"]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--checks", default="", help="in addition to the configured ones")
    parser.add_argument("build", type=pathlib.Path, help="folder with compile_commands.json")
    parser.add_argument("sources", nargs="+", type=pathlib.Path)
    options = parser.parse_args()
    commands = read_commands(options.build)
    # The largest first, so that no CPU waits for one at the end.
    batches = sorted(make_batches(options.sources, commands), key=size_of_batch, reverse=True)
    tidy = Tidy(options.build, options.checks)
    started = time.monotonic()
    clean = True
    with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as threads:
        checks = [threads.submit(tidy.check, *batch) for batch in batches]
        for done, check in enumerate(concurrent.futures.as_completed(checks), 1):
            what, complaints = check.result()
            print(f"[{done}/{len(checks)} {time.monotonic() - started:.0f} s] {what}", flush=True)
            print(complaints, end="", flush=True)
            clean = clean and not complaints
    return 0 if clean else 1


def read_commands(build):
    """The flags with which each source is compiled."""
    flags = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        words = shlex.split(entry["command"])
        flags[pathlib.Path(entry["file"])] = words[1 : words.index("-o")]
    return flags


def make_batches(sources, flags):
    """(flags, sources) of sources that lie in one folder and are compiled alike."""
    def kind(source):
        return str(source.parent), flags[source.resolve()]

    for (_, words), alike in itertools.groupby(sorted(sources, key=kind), kind):
        alike = list(alike)
        count = -(-len(alike) // SOURCES_IN_A_BATCH)
        for first in range(count):
            yield words, alike[first::count]


def size_of_batch(batch):
    return sum(source.stat().st_size for source in batch[1])


class Tidy:
    def __init__(self, build, checks):
        self.build = build
        self.command = ["clang-tidy", "--quiet", f"--checks={checks}", *ANALYZER]
        self.batches = build / "batches"
        self.clean = build / "clean"
        self.batches.mkdir(exist_ok=True)
        self.clean.mkdir(exist_ok=True)
        version = run(["clang-tidy", "--version"]).stdout
        self.rules = f"{version}{pathlib.Path('.clang-tidy').read_text()}{checks}{ANALYZER}"

    def check(self, flags, sources):
        """What was checked, and what is wrong with it."""
        flags = flags + ["-iquote", str(sources[0].parent.resolve())]
        batch = self.batches / (digest(repr(sources))[:16] + ".cpp")
        batch.write_text(one_text(sources))
        what = f"{sources[0].parent}: {' '.join(source.name for source in sources)}"
        stamp = self.stamp(flags, batch, sources)
        if stamp.exists():
            return what + ": unchanged", ""
        complaints = self.complaints(flags, batch, sources)
        if not complaints:
            stamp.touch()
        return what, complaints

    def complaints(self, flags, batch, sources):
        if len(sources) > 1 and run(["clang++", *flags, "-fsyntax-only", batch]).returncode != 0:
            middle = len(sources) // 2
            return "".join(self.check(flags, half)[1] for half in (sources[:middle], sources[middle:]))
        if run([*self.command, batch, "--", *flags]).returncode != 0:
            return "".join(self.check_alone(source) for source in sources)
        return ""

    def check_alone(self, source):
        return said(run([*self.command, "-p", self.build, source]))

    def stamp(self, flags, batch, sources):
        """A file that exists once this text was clean."""
        # With comments, which may hold NOLINT, and with the macros' definitions.
        text = run(["clang++", *flags, "-E", "-CC", "-dD", batch]).stdout
        # Our own headers as they are: of what is included twice the text shows nothing.
        own = sorted(set(re.findall(r'^# \d+ "([^"<]+)"', text, re.M)))
        files = [pathlib.Path(name) for name in own if name.startswith(str(pathlib.Path.cwd()))]
        contents = [file.read_text() for file in [*files, *sources]]
        return self.clean / digest(repr((self.rules, flags, text, contents)))


def one_text(sources):
    """The sources one after the other, without the directives that include a header again.

    What is unnamed in two of them is kept apart by a namespace around it.
    """
    included = set()
    lines = []
    for number, source in enumerate(sources):
        for line in source.read_text().splitlines():
            if line == "namespace {":
                line = f"inline namespace source_{number} {{ namespace {{"
            elif line == "} // namespace":
                line = "} } // namespace"
            elif line.startswith("#include") and line in included:
                line = ""
            included.add(line)
            lines.append(line)
    return "\n".join(lines) + "\n"


def digest(text):
    return hashlib.sha256(text.encode(errors="surrogateescape")).hexdigest()


def run(command):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True,
                          errors="surrogateescape", check=False)


def said(result):
    return result.stdout + result.stderr if result.returncode != 0 else ""


if __name__ == "__main__":
    sys.exit(main())
