# SPDX-License-Identifier: Apache-2.0
"""The instrument registers with what it finds by unicast DNS-SD."""

import os
import signal
import time

from network import wait_until
from registrations import BASE, figure, same_as_node_api
from registries import RegistriesTest
from test_dns_sd import address, registry as dnsmasq_registry

SLOWNESS = float(os.environ.get("NMOS_SLOWNESS", "1"))


class RegistriesByDns(RegistriesTest):
    def start_server(self, *options):
        self.set_resolv_conf("nameserver 127.0.0.1\nsearch example.com\n")
        return self.start_dnsmasq("--local=/example.com/", "--local-ttl=60", *options)

    def one_registry(self, registry, priority):
        return [*dnsmasq_registry("one", f"api_proto=http,api_ver=v1.2,pri={priority}",
                                  port=registry.ports[0]),
                *address("reg.example.com", registry.address)]

    def test_a_registry_in_the_search_domain(self):
        registry = self.registry()
        dnsmasq = self.start_server(*self.one_registry(registry, 10))
        instrument = self.start()
        self.wait_registered(instrument, f"http://reg.example.com:{registry.ports[0]}{BASE}")
        self.assertEqual(self.status(instrument)["origin"], "DNS-SD in example.com")
        # The name servers are not needed any more.
        dnsmasq.stop(signal.SIGKILL)
        beats = len(registry.heartbeats())
        wait_until(lambda: len(registry.heartbeats()) > beats, "a heartbeat")
        same_as_node_api(registry, instrument)
        self.assertEqual(registry.violations(), [])

    def test_the_domain_of_the_option(self):
        registry = self.registry()
        self.start_server(*self.one_registry(registry, 10))
        self.set_resolv_conf("nameserver 127.0.0.1\n")
        instrument = self.start("--dns-domain", "example.com")
        self.wait_registered(instrument, f"http://reg.example.com:{registry.ports[0]}{BASE}")

    def test_an_address_that_nobody_has(self):
        registry = self.registry()
        self.start_server(*self.one_registry(registry, 10), *address("reg.example.com", "192.0.2.1"))
        instrument = self.start()
        self.wait_registered(instrument, f"http://reg.example.com:{registry.ports[0]}{BASE}")
        # Which address is tried first is chance, now and when the registry was lost.
        registry.restart()
        wait_until(lambda: registry.count() > 0, "it registers again")
        self.wait_registered(instrument, f"http://reg.example.com:{registry.ports[0]}{BASE}")

    def test_both_find_it_and_unicast_counts(self):
        registry = self.registry()
        self.start_daemons()
        self.announce(registry, 5)
        self.start_server(*self.one_registry(registry, 10))
        instrument = self.start()
        self.wait_registered(instrument, f"http://reg.example.com:{registry.ports[0]}{BASE}")
        self.assertEqual(len(registry.posts("nodes/")), 1)

    def test_daemons_that_hang_do_not_hold_up_the_end(self):
        registry = self.registry()
        dnsmasq = self.start_server(*self.one_registry(registry, 10))
        avahi = self.start_daemons()
        instrument = self.start()
        self.wait_registered(instrument, f"http://reg.example.com:{registry.ports[0]}{BASE}")
        for daemon in (dnsmasq, avahi):
            daemon.send(signal.SIGSTOP)
        begin = time.monotonic()
        self.assertEqual(instrument.end(), 0)
        took = time.monotonic() - begin
        figure(f"the end takes {1000 * took:.0f} ms")
        self.assertLess(took, 4 * SLOWNESS)
        self.assertEqual(registry.count(), 0)
