# SPDX-License-Identifier: Apache-2.0
"""Tests of the registration with a network of their own; test_registration_network runs them in a
network namespace."""

import time
import unittest

from reach_in_namespace import Interfaces, ip
from registrations import EXPIRY, LEAVES_WITHIN, RESOURCES, RegistrationTest, figure, gaps
from stand_in import wait_until

INSTRUMENT, MOVED = "192.0.2.10", "198.51.100.7"
REGISTRY, NEIGHBOUR = "203.0.113.20", "203.0.113.1"


class Network(Interfaces, RegistrationTest):
    """The instrument and the registry have an interface each."""

    def setUp(self):
        super().setUp()
        ip("addr", "add", f"{INSTRUMENT}/24", "dev", "nmos0")
        for address in (NEIGHBOUR, REGISTRY):
            ip("addr", "add", f"{address}/24", "dev", "nmos1")

    def unplug(self):
        """As if the registry's cable were pulled: nobody answers there, and nobody refuses."""
        ip("addr", "del", f"{REGISTRY}/24", "dev", "nmos1")

    def plug_in(self):
        ip("addr", "add", f"{REGISTRY}/24", "dev", "nmos1")

    def test_another_address_of_the_instrument(self):
        registry = self.registry(address=REGISTRY)
        instrument = self.started(registry, options=["--listen", "nmos0"])
        known = len(registry.requests())
        ip("addr", "del", f"{INSTRUMENT}/24", "dev", "nmos0")
        ip("addr", "add", f"{MOVED}/24", "dev", "nmos0")
        begin = time.monotonic()
        instrument.host = MOVED
        wait_until(lambda: registry.posts(since=known), "the new address at the registry")
        figure(f"a new address is at the registry {time.monotonic() - begin:.2f} s later")
        self.all_is_well(registry, instrument)
        there = registry.resources()
        [node] = there["nodes"].values()
        self.assertEqual(node["href"], f"http://{MOVED}:{instrument.port}/")
        for sender in there["senders"].values():
            self.assertIn(f"//{MOVED}:", sender["manifest_href"])
        # The node, its device and its senders name it; whenever the node is posted, the library
        # gives the receivers a new version too.
        posts = registry.posts(since=known)
        self.assertEqual(self.kinds(posts), ["nodes", "devices", "senders", "receivers"])
        self.assertEqual(len(posts), 1 + 1 + 6 + 24)

    def test_unplugged_for_a_while(self):
        """IS-04 v1.2, Behaviour: Registration, Network Disconnect / Reconnect."""
        registry = self.registry(address=REGISTRY)
        instrument = self.started(registry, options=["--listen", "nmos0"])
        wait_until(registry.heartbeats, "a heartbeat")
        known = len(registry.requests())
        self.unplug()
        time.sleep(7)
        self.plug_in()
        time.sleep(6)
        figure(f"unplugged for 7 s: {max(gaps(registry.heartbeats())):.2f} s between heartbeats")
        self.assertEqual(registry.posts(since=known), [])
        self.all_is_well(registry, instrument)

    def test_unplugged_for_longer_than_the_registry_waits(self):
        registry = self.registry(address=REGISTRY)
        instrument = self.started(registry, options=["--listen", "nmos0"])
        wait_until(registry.heartbeats, "a heartbeat")
        self.unplug()
        time.sleep(EXPIRY + 4)
        self.assertEqual(registry.count(), 0)
        self.assertFalse(self.status(instrument)["registered"])
        self.plug_in()
        begin = time.monotonic()
        wait_until(lambda: registry.count() == RESOURCES, "everything is registered again", 20)
        figure(f"unplugged for {EXPIRY + 4:.0f} s: everything is registered again "
               f"{time.monotonic() - begin:.1f} s later")
        self.all_is_well(registry, instrument)

    def test_unplugged_at_the_end(self):
        registry = self.registry(address=REGISTRY)
        instrument = self.started(registry, options=["--listen", "nmos0"])
        self.unplug()
        begin = time.monotonic()
        self.assertEqual(instrument.end_program(), 0)
        figure(f"an unplugged registry is left within {time.monotonic() - begin:.2f} s")
        self.assertLess(time.monotonic() - begin, LEAVES_WITHIN)


if __name__ == "__main__":
    unittest.main()
