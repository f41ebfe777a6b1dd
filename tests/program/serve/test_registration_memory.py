# SPDX-License-Identifier: Apache-2.0
"""A node whose memory runs short is registered nevertheless, and comes right by itself."""

import contextlib
import http.client
import os
import signal
import tempfile
import threading
import time
import unittest

from instrument import IMMEDIATE
from registrations import RESOURCES, RegistrationTest, figure
from short_memory import ShortMemory
from stand_in import wait_until

SECONDS = float(os.environ.get("NMOS_SHORT_MEMORY_SECONDS", "8"))


class Memory(RegistrationTest):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.memory = ShortMemory(folder.name)

    def start_short(self, registry, **more):
        return self.start(registry, environment=self.memory.environment, **more)

    def comes_right(self, registry, instrument):
        self.memory.set(0)
        self.assertIsNone(instrument.process.poll(), instrument.log[-2000:])
        begin = time.monotonic()
        self.all_is_well(registry, instrument)
        figure(f"{self.id().split('.')[-1]}: all is well {time.monotonic() - begin:.1f} s after "
               f"memory is back; {len(registry.requests())} requests")
        self.assertEqual(instrument.end(), 0)

    @contextlib.contextmanager
    def changes(self, instrument):
        """Of one receiver after the other; the answers do not matter."""
        receivers = instrument.resources("receivers")
        stop = threading.Event()

        def change():
            number = 0
            while not stop.wait(0.02):
                number += 1
                with contextlib.suppress(OSError, http.client.HTTPException):
                    instrument.patch(receivers[number % 24], {
                        "transport_params": [{"destination_port": 5000 + number}, {}],
                        **IMMEDIATE})

        thread = threading.Thread(target=change)
        thread.start()
        try:
            yield
        finally:
            stop.set()
            thread.join()

    def test_while_the_resources_are_posted(self):
        registry = self.registry()
        registry.behave(request="POST (?!health).*", delay=0.1)
        instrument = self.start_short(registry)
        self.memory.run_short(SECONDS, pause=0.1)
        registry.behave_well()
        self.comes_right(registry, instrument)

    def test_while_resources_change(self):
        registry = self.registry()
        instrument = self.start_short(registry)
        self.wait_registered(instrument)
        with self.changes(instrument):
            self.memory.run_short(SECONDS, pause=0.1)
        self.comes_right(registry, instrument)

    def test_while_the_registry_comes_and_goes(self):
        registry = self.registry(fronts=2)
        instrument = self.start(*registry.urls, environment=self.memory.environment)
        self.wait_registered(instrument)
        with self.changes(instrument):
            for turn in range(4):
                registry.front(turn % 2, "closed")
                self.memory.run_short(SECONDS / 4, pause=0.05)
                registry.front(turn % 2, "open")
        self.comes_right(registry, instrument)

    def test_the_end_without_memory(self):
        registry = self.registry()
        instrument = self.start_short(registry)
        self.wait_registered(instrument)
        registry.behave(request="DELETE .*", delay=0.01)
        instrument.process.send_signal(signal.SIGTERM)
        wait_until(lambda: registry.count() < RESOURCES, "the first DELETE", step=0.01)
        self.memory.set(1)
        # 2: it could not end in order. Worse would be a signal.
        self.assertIn(instrument.process.wait(timeout=30), (0, 2))


if __name__ == "__main__":
    unittest.main()
