#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Folders include only those below them, in the order that docs/architecture.md gives."""

import pathlib
import re
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = "docs/architecture.md"


def order_of(page):
    """From the block "```order" of the page: {tree: [level, ...]}, a level a list of folders, the
    highest first; and {tree: [trees that it may include]}."""
    block = re.search(r"^```order\n(.*?)^```$", page, re.MULTILINE | re.DOTALL)
    if block is None:
        raise ValueError(f"{PAGE} has no block ```order")
    levels, uses = {}, {}
    for line in block.group(1).splitlines():
        tree, rest = line.split(":")
        rest, _, used = rest.partition("; uses")
        levels[tree.strip()] = [level.split() for level in rest.split(">")]
        uses[tree.strip()] = used.split()
    return levels, uses


def folder_of(file):
    """"." for a file at the top of its tree."""
    return file.parts[0] if len(file.parts) > 1 else "."


def violations(root):
    """What the sources below `root` include against the order, a line each."""
    levels, uses = order_of((root / PAGE).read_text())
    found = []
    for tree, tree_levels in levels.items():
        rank = {folder: i for i, level in enumerate(tree_levels) for folder in level}
        for file in sorted((root / tree).rglob("*.*")):
            if file.suffix not in (".h", ".cpp"):
                continue
            name = file.relative_to(root)
            own = folder_of(file.relative_to(root / tree))
            if own not in rank:
                found.append(f"{name}: {PAGE} does not place the folder {tree}/{own}")
                continue
            for mark, include in re.findall(r'^#include (["<])([^">]+)', file.read_text(),
                                            re.MULTILINE):
                if (root / tree / include).exists():
                    other = folder_of(pathlib.Path(include))
                    if other != own and rank.get(other, -1) <= rank[own]:
                        found.append(f"{name}: includes {include}, which is not below {tree}/{own}")
                elif mark == "<":
                    pass  # a header of the system, or a public one
                elif not any((root / used / include).exists() for used in uses[tree]):
                    found.append(f"{name}: includes {include}, which {tree}/ may not use")
    return found


class Layers(unittest.TestCase):
    def test_of_this_tree(self):
        found = violations(ROOT)
        self.assertEqual(found, [], "\n".join([""] + found))


class TheCheckItself(unittest.TestCase):
    """On a small tree that is made wrong in each way."""

    PAGE_TEXT = "```order\nlow: . > a b > c\nhigh: . ; uses low\n```\n"

    def found_with(self, file, include):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            files = {"low/a/a.h": "", "low/b/b.h": "", "low/c/c.h": "", "high/h.h": "", "low/top.h": ""}
            quoted = include if include.startswith("<") else f'"{include}"'
            files[file] = f"#include {quoted}\n"
            for name, text in files.items():
                (root / name).parent.mkdir(parents=True, exist_ok=True)
                (root / name).write_text(text)
            (root / "docs").mkdir()
            (root / PAGE).write_text(self.PAGE_TEXT)
            return violations(root)

    def test_downwards_is_right(self):
        for file, include in (("low/a/x.cpp", "c/c.h"), ("low/a/x.cpp", "a/a.h"),
                              ("low/top.cpp", "b/b.h"), ("high/main.cpp", "a/a.h"),
                              ("high/main.cpp", "h.h"), ("low/a/x.cpp", "<c/c.h>"),
                              ("low/a/x.cpp", "<string>")):
            self.assertEqual(self.found_with(file, include), [], (file, include))

    def test_upwards_and_sideways_are_wrong(self):
        for file, include in (("low/c/x.cpp", "a/a.h"), ("low/a/x.cpp", "b/b.h"),
                              ("low/a/x.h", "top.h"), ("low/c/x.cpp", "<a/a.h>"),
                              ("low/a/x.h", "<top.h>")):
            self.assertEqual(len(self.found_with(file, include)), 1, (file, include))

    def test_another_tree_is_wrong_unless_it_is_used(self):
        self.assertEqual(len(self.found_with("low/a/x.cpp", "h.h")), 1)

    def test_a_folder_without_a_place_is_wrong(self):
        self.assertEqual(len(self.found_with("low/new/x.cpp", "c/c.h")), 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=1)
