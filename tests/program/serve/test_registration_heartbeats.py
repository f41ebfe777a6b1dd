# SPDX-License-Identifier: Apache-2.0
"""Heartbeats (IS-04 v1.2, Behaviour: Registration, Heartbeating)."""

import threading
import time
import unittest

from registrations import HEARTBEAT, SLACK, RegistrationTest, figure, gaps

SHORTEST, LONGEST = HEARTBEAT - SLACK, HEARTBEAT + SLACK


class Heartbeats(RegistrationTest):
    def check(self, registry, what):
        """Since the node knows that it was created."""
        times = registry.heartbeats()
        between = gaps([registry.posts("nodes/")[0]["answered"], *times])
        figure(f"{what}: {len(times)} heartbeats, {min(between):.3f} to {max(between):.3f} s apart")
        self.assertGreater(min(between), SHORTEST)
        self.assertLess(max(between), LONGEST)

    def test_every_five_seconds(self):
        registry = self.registry()
        instrument = self.started(registry)
        time.sleep(27)
        self.check(registry, "nothing else to do")
        self.assertGreaterEqual(len(registry.heartbeats()), 5)
        # One connection is enough for all of them.
        self.assertEqual(len({each["connection"] for each in registry.requests("POST health/")}), 1)
        self.all_is_well(registry, instrument)

    def test_while_a_slow_registry_takes_the_resources(self):
        registry = self.registry()
        registry.behave(request="POST (?!health).*", delay=0.5)
        instrument = self.start(registry)
        self.wait_registered(instrument)
        posts = registry.posts()
        figure(f"{len(posts)} resources take {posts[-1]['answered'] - posts[0]['time']:.1f} s")
        self.check(registry, "0.5 s for each resource")
        registry.behave_well()
        self.all_is_well(registry, instrument)

    def test_when_each_takes_long(self):
        """What one takes is not added to the interval."""
        registry = self.registry()
        registry.behave(request="POST health/.*", delay=1.5)
        instrument = self.started(registry)
        time.sleep(22)
        self.check(registry, "1.5 s for each heartbeat")
        self.assertEqual(self.status(instrument)["failures"], 0)
        registry.behave_well()
        self.all_is_well(registry, instrument)

    def test_while_everything_is_slow(self):
        """POSTs that take seconds do not hold up a heartbeat."""
        registry = self.registry()
        instrument = self.started(registry)
        registry.behave(request="POST (?!health).*", delay=3.0)
        receivers = instrument.resources("receivers")
        for number in range(4):
            self.activate(instrument, receivers[number], 5020)
            time.sleep(4)
        self.check(registry, "3 s for each changed resource")
        registry.behave_well()
        self.all_is_well(registry, instrument)

    def test_while_a_client_keeps_the_instrument_busy(self):
        registry = self.registry()
        instrument = self.started(registry)
        stop = threading.Event()
        def read():
            connection = instrument.connect()
            while not stop.is_set():
                connection.request("GET", "/x-nmos/node/v1.2/receivers")
                connection.getresponse().read()
            connection.close()

        thread = threading.Thread(target=read)
        thread.start()
        time.sleep(11)
        stop.set()
        thread.join()
        self.check(registry, "a client asks without a pause")
        self.all_is_well(registry, instrument)


if __name__ == "__main__":
    unittest.main()
