# SPDX-License-Identifier: Apache-2.0
"""Memory that runs short, as tests/program/faults/short_memory.cpp makes it."""

import pathlib
import random
import struct
import time

from instrument import with_fault


class ShortMemory:
    """One of `one_in` allocations fails; 0: none."""

    def __init__(self, folder):
        self.path = pathlib.Path(folder) / "short_memory"
        self.set(0)

    def set(self, one_in):
        # In place: the program has mapped the file.
        with open(self.path, "r+b" if self.path.exists() else "wb") as file:
            file.write(struct.pack("=I", one_in))

    @property
    def environment(self):
        """Of the program. Skips the test if this build does not have the fault."""
        return with_fault("short_memory", NMOS_SHORT_MEMORY=str(self.path))

    def run_short(self, seconds, pause):
        """Again and again for a moment; in the pauses between there is enough."""
        chance = random.Random(4)
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            self.set(chance.choice((30, 100, 300, 1000, 3000, 10_000)))
            time.sleep(0.03)
            self.set(0)
            time.sleep(pause)
