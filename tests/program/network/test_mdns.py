# SPDX-License-Identifier: Apache-2.0
"""Registries found by mDNS, announced by another machine's avahi-daemon, or by a stranger."""

from mdns_stranger import registry, withdrawn
from network import NEIGHBOUR_ADDRESS, NEIGHBOUR_IPV6_ADDRESS, NetworkTest, neighbour

GOOD = ("api_proto=http", "api_ver=v1.0,v1.1,v1.2")
URL = "http://neighbour.local:8080"


class Found(NetworkTest):
    def setUp(self):
        super().setUp()
        self.start_bus()
        self.start_avahi()

    def test_a_registry_comes_changes_and_goes(self):
        self.start_neighbour()
        neighbour.write_service("Registry 1", *GOOD, "pri=10")
        watch = self.watch()
        self.assertEqual(watch.wait_for(URL), [
            {"url": URL + "/x-nmos/registration/v1.2", "address": NEIGHBOUR_ADDRESS,
             "priority": 10, "origin": "mDNS"}])
        # Its service file is replaced: the same name with another priority and port.
        neighbour.write_service("Registry 1", *GOOD, "pri=20", port=8081)
        self.assertEqual(watch.wait_for("http://neighbour.local:8081")[0]["priority"], 20)
        neighbour.remove_service("Registry 1")
        self.assertEqual(watch.wait_for(), [])

    def test_only_those_that_suit(self):
        for name, *txt in (("Second", *GOOD, "pri=20"), ("First", *GOOD, "pri=10"),
                           ("Development", *GOOD, "pri=100"),
                           ("Old", "api_proto=http", "api_ver=v1.0,v1.1", "pri=1"),
                           ("Guarded", *GOOD, "pri=1", "api_auth=true"),
                           ("Other", "api_proto=coap", "api_ver=v1.2", "pri=1"),
                           ("Unranked", *GOOD), ("Empty",)):
            neighbour.write_service(name, *txt, port=8000 + len(name))
        self.start_neighbour()
        first, second, development = (f"http://neighbour.local:{port}" for port in
                                      (8005, 8006, 8011))
        watch = self.watch()
        watch.wait_for(first, second)
        for name, reason in (
                ("Development", "its pri is 100: 100 and more are for development"),
                ("Old", 'its api_ver "v1.0,v1.1" does not include v1.2'),
                ("Guarded", "it asks for authorization"),
                ("Other", 'its api_proto is "coap", not http or https'),
                ("Unranked", "it has no pri"), ("Empty", "it has no api_proto")):
            watch.wait_for_log(f'mDNS: registry "{name}" is left out: {reason}')
        self.watch("--development").wait_for(first, second, development)

    def test_only_ipv6(self):
        self.start_neighbour(ipv4="no")
        neighbour.write_service("Registry 1", *GOOD, "pri=10")
        watch = self.watch()
        self.assertEqual(watch.wait_for(URL)[0]["address"], NEIGHBOUR_IPV6_ADDRESS)


class Strangers(NetworkTest):
    """What nobody would announce who means well."""

    TXT = (b"api_proto=http", b"api_ver=v1.2", b"pri=1")

    def setUp(self):
        super().setUp()
        self.start_bus()
        self.start_avahi()

    def test_strange_texts(self):
        messages = [
            registry(b"first counts", (b"pri=7", b"PRI=8", b"api_ver=v1.2", b"api_proto=http",
                                       b"api_proto=coap"), port=1001),
            registry(b"binary", (b"\xff\x00=\x01", b"=", b"", b"pri=\x1b[2J", *self.TXT)),
            registry(b"a.b\\c \xc3\xa4\n\x7f\xff", (b"api_proto=http",)),
            registry(b"long", self.TXT + (b"x" * 255,) * 4, port=1002),
            registry(b"odd host", self.TXT, host=(b"a b/@:1", b"local"), port=1003),
            registry(b"no port", self.TXT, port=0),
            registry(b"multicast", self.TXT, host=(b"multicast", b"local"),
                     address=(224, 0, 0, 251)),
        ]
        watch = self.watch()
        watch.next()
        self.send_mdns(*messages)
        found = watch.wait_for("http://192.0.2.20:1003", "http://stranger.local:1002",
                               "http://stranger.local:1001")
        self.assertEqual([registry["priority"] for registry in found], [1, 1, 7])
        for line in ('registry "binary" is left out: its pri is "\\x1b[2J", not a whole number',
                     'registry "no port" is left out: its port is 0',
                     'registry "multicast" is left out: no host has its address "224.0.0.251"'):
            watch.wait_for_log(line)

    def test_very_many(self):
        watch = self.watch()
        watch.next()
        self.send_mdns(*(registry(b"%d" % number, self.TXT, port=1000 + number)
                         for number in range(300)))
        watch.wait_for_log("mDNS: there are more than 256 registries; the others are not looked at")
        # When they are gone, those that were left are looked at.
        self.send_mdns(*(withdrawn(b"%d" % number) for number in range(280)))
        watch.wait_for(*(f"http://stranger.local:{1000 + number}" for number in range(280, 300)))
