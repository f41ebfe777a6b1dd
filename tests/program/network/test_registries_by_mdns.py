# SPDX-License-Identifier: Apache-2.0
"""The instrument registers with what it finds by mDNS."""

import pathlib
import signal
import tempfile

from network import neighbour, wait_until
from registrations import same_as_node_api
from registries import RegistriesTest


class RegistriesByMdns(RegistriesTest):
    def test_the_best_one_and_then_the_next(self):
        self.start_daemons()
        first, second, development = (self.registry(index) for index in range(3))
        urls = [self.announce(first, 10), self.announce(second, 20)]
        self.announce(development, 100)
        instrument = self.start()
        self.wait_registered(instrument, urls[0])
        self.assertEqual(self.status(instrument)["origin"], "mDNS")
        same_as_node_api(first, instrument)
        self.assertEqual(second.requests(), [])
        first.kill()
        self.wait_registered(instrument, urls[1])
        same_as_node_api(second, instrument)
        self.assertEqual(second.violations(), [])
        self.assertEqual(development.requests(), [])

    def test_those_that_do_not_suit_are_not_used(self):
        self.start_daemons()
        old, guarded, development = (self.registry(index) for index in range(3))
        self.announce(old, 1, versions="v1.0,v1.1")
        self.announce(guarded, 2, api_auth="true")
        url = self.announce(development, 100)
        instrument = self.start()
        for name in ("Registry 0", "Registry 1", "Registry 2"):
            instrument.wait_for_log(f'mDNS: registry "{name}" is left out')
        self.assertEqual(instrument.end(), 0)
        self.assertEqual([each.requests() for each in (old, guarded, development)], [[], [], []])
        self.wait_registered(self.start("--development-registries"), url)
        self.assertEqual([each.requests() for each in (old, guarded)], [[], []])

    def test_one_that_appears_later_goes_and_comes_back(self):
        self.start_daemons()
        with tempfile.TemporaryDirectory() as folder:
            service = pathlib.Path(folder) / "nmos-node.service"
            instrument = self.start("--service-file", str(service))
            # Peer to peer until there is one.
            wait_until(service.exists, "it is advertised")
            registry = self.registry()
            url = self.announce(registry, 10)
            self.wait_registered(instrument, url)
            wait_until(lambda: not service.exists(), "it is withdrawn")
            # That it is not announced any more is no reason to leave it.
            neighbour.remove_service("Registry 0")
            instrument.wait_for_log(f"registry {url} is not announced any more")
            self.assertTrue(self.status(instrument)["registered"])
            registry.kill()
            wait_until(service.exists, "it is advertised again")
            registry.start()
            self.announce(registry, 10)
            self.wait_registered(instrument, url)
            same_as_node_api(registry, instrument)

    def test_avahi_comes_and_goes_without_harm(self):
        registry = self.registry()
        url = self.announce(registry, 10)
        instrument = self.start()
        instrument.wait_for_log("mDNS: no avahi-daemon")
        avahi = self.start_daemons()
        self.wait_registered(instrument, url)
        posts = self.status(instrument)["posts"]
        avahi.stop(signal.SIGKILL)
        instrument.wait_for_log("mDNS: no avahi-daemon", 2)
        self.start_avahi()
        instrument.wait_for_log("mDNS: avahi-daemon runs", 2)
        beats = len(registry.heartbeats())
        wait_until(lambda: len(registry.heartbeats()) > beats, "a heartbeat")
        self.assertEqual(self.status(instrument)["posts"], posts)
        self.assertEqual(registry.violations(), [])
