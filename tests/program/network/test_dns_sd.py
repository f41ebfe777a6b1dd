# SPDX-License-Identifier: Apache-2.0
"""Registries found by unicast DNS-SD, at a dnsmasq on the same machine."""

import signal
import time

from network import NEIGHBOUR_ADDRESS, REGISTRATION, NetworkTest, neighbour, short_url

GOOD = "api_proto=http,api_ver=v1.2"


def registry(name, txt, host="reg.example.com", port=8080, domain="example.com"):
    """dnsmasq's options for one."""
    service = f"{REGISTRATION}.{domain}"
    instance = f"{name}.{service}"
    return (f"--ptr-record={service},{instance}", f"--srv-host={instance},{host},{port}",
            f"--txt-record={instance},{txt}")


def address(host, *addresses):
    return [f"--host-record={host},{one}" for one in addresses]


class DnsSd(NetworkTest):
    def setUp(self):
        super().setUp()
        self.set_resolv_conf("nameserver 127.0.0.1\nsearch example.com\n")

    def start(self, *options):
        """A server of the domain, where no other name exists."""
        return self.start_dnsmasq("--local=/example.com/", "--local-ttl=60", *options)

    def test_a_registry_in_the_search_domain(self):
        self.start(*registry("Registry 1", GOOD + ",pri=10"), *address("reg.example.com", "192.0.2.1"))
        watch = self.watch()
        self.assertEqual(watch.next(), [
            {"url": "http://reg.example.com:8080/x-nmos/registration/v1.2", "address": "192.0.2.1",
             "priority": 10, "origin": "DNS-SD in example.com"}])
        self.assertIn("DNS-SD: looking for registries in example.com", watch.log)

    def test_only_those_that_suit(self):
        self.start(*registry("second", GOOD + ",pri=20", port=8006),
                   *registry("first", GOOD + ",pri=10", port=8005),
                   *registry("development", GOOD + ",pri=100", port=8011),
                   *registry("old", "api_proto=http,api_ver=v1.0,pri=1"),
                   *registry("guarded", GOOD + ",pri=1,api_auth=true"),
                   *registry("lost", GOOD + ",pri=1", host="lost.example.com"),
                   f"--ptr-record={REGISTRATION}.example.com,none.{REGISTRATION}.example.com",
                   *address("reg.example.com", "192.0.2.1", "2001:db8::1"))
        first, second, development = (f"http://reg.example.com:{port}" for port in
                                      (8005, 8006, 8011))
        watch = self.watch()
        self.assertEqual([short_url(one) for one in watch.next()], [first, second])
        for name, reason in (
                ("development", "its pri is 100: 100 and more are for development"),
                ("old", 'its api_ver "v1.0" does not include v1.2'),
                ("guarded", "it asks for authorization"),
                ("lost", 'its host "lost.example.com" has no address'),
                ("none", "it has no api_proto")):
            self.assertIn(f'registry "{name}" is left out: {reason}', watch.log)
        watch.search()
        self.assertEqual([short_url(one) for one in watch.next()], [first, second])
        # Nothing is new in the second search.
        self.assertEqual(watch.log.count("is left out"), 5)
        self.watch("--development").wait_for(first, second, development)

    def test_the_domain_of_the_option(self):
        self.start("--local=/studio.example/", *registry("one", GOOD + ",pri=1"),
                   *registry("two", GOOD + ",pri=2", domain="studio.example"),
                   *address("reg.example.com", "192.0.2.1"))
        self.assertEqual(self.watch("--domain", "studio.example").next()[0]["origin"],
                         "DNS-SD in studio.example")

    def test_resolv_conf_is_read_for_each_search(self):
        self.start("--local=/studio.example/", *registry("one", GOOD + ",pri=1"),
                   *registry("two", GOOD + ",pri=2", domain="studio.example"),
                   *address("reg.example.com", "192.0.2.1"))
        self.set_resolv_conf("nameserver 127.0.0.1\n")
        watch = self.watch()
        self.assertEqual(watch.next(), [])
        watch.search()
        self.assertEqual(watch.next(), [])
        self.assertEqual(watch.log.count("[info] DNS-SD: there is no search domain"), 1)
        self.set_resolv_conf("nameserver 127.0.0.1\nsearch studio.example. . example.com\n")
        watch.search()
        # Both have the same address and port, and the domain that is named first counts.
        self.assertEqual([one["origin"] for one in watch.next()], ["DNS-SD in studio.example"])
        self.assertIn("looking for registries in studio.example, example.com", watch.log)

    def test_no_registry(self):
        self.start()
        watch = self.watch()
        begin = time.monotonic()
        self.assertEqual(watch.next(), [])
        self.assertLess(time.monotonic() - begin, 2.5)

    def test_a_server_that_hangs_and_one_that_is_gone(self):
        dnsmasq = self.start(*registry("one", GOOD + ",pri=1"),
                             *address("reg.example.com", "192.0.2.1"))
        watch = self.watch()
        watch.wait_for("http://reg.example.com:8080")
        dnsmasq.send(signal.SIGSTOP)
        for _ in range(2):
            watch.search()
            # Its time to live is not over.
            self.assertEqual(len(watch.next()), 1)
        dnsmasq.stop(signal.SIGKILL)
        watch.search()
        self.assertEqual(len(watch.next()), 1)
        trouble = "until that changes, unicast DNS finds nothing new"
        self.assertEqual(watch.log.count(trouble), 3)
        self.assertEqual(len([line for line in watch.log.splitlines()
                              if "[info]" in line and trouble in line]), 1)
        self.start()
        watch.search()
        self.assertEqual(watch.next(), [])

    def test_the_end_does_not_wait_for_a_server_that_hangs(self):
        self.start().send(signal.SIGSTOP)
        watch = self.watch()
        time.sleep(0.5)
        self.assertLess(watch.end(), 2)

    def test_the_second_server_answers(self):
        self.set_resolv_conf("nameserver 127.0.0.2\nnameserver 127.0.0.1\nsearch example.com\n")
        self.start(*registry("one", GOOD + ",pri=1"), *address("reg.example.com", "192.0.2.1"))
        self.watch().wait_for("http://reg.example.com:8080")

    def test_a_registry_found_by_both_is_one(self):
        self.start_bus()
        self.start_avahi()
        self.start_neighbour()
        neighbour.write_service("Registry 1", *GOOD.split(",", 1), "pri=5")
        neighbour.write_service("Registry 2", *GOOD.split(",", 1), "pri=10", port=8081)
        self.start(*registry("one", GOOD + ",pri=20"), *address("reg.example.com", NEIGHBOUR_ADDRESS))
        found = self.watch().wait_for("http://neighbour.local:8081", "http://reg.example.com:8080")
        self.assertEqual([one["origin"] for one in found], ["mDNS", "DNS-SD in example.com"])

    def test_an_answer_too_long_for_a_datagram(self):
        options = []
        for number in range(80):
            options += registry(f"registry-{number:02}", GOOD + f",pri={number}", port=1000 + number)
        self.start(*options, *address("reg.example.com", "192.0.2.1"))
        watch = self.watch()
        self.assertEqual(len(watch.next()), 64)
        self.assertIn("there are more than 64 registries; 16 are not looked at", watch.log)
