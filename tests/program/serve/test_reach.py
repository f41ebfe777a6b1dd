# SPDX-License-Identifier: Apache-2.0
"""Where it listens, and which address its texts name."""

import http.client
import re
import socket
import subprocess
import unittest

from instrument import CONNECTION, NODE, PORT, SERVE, SINGLE, Instrument, InstrumentTest
from namespace import run_in_namespace


def has_ipv6():
    try:
        with socket.create_server(("::1", 0), family=socket.AF_INET6):
            return True
    except OSError:
        return False


def is_reached_at(address, port):
    """Whether the instrument answers there."""
    connection = http.client.HTTPConnection(address, port, timeout=10)
    try:
        connection.request("GET", "/healthz")
        return connection.getresponse().read() == b'{"status":"ok"}\n'
    except ConnectionRefusedError:
        return False
    finally:
        connection.close()


def addresses_in(instrument):
    """All that the texts name, of which there should be one."""
    node = instrument.node("self")
    found = {node["href"].split("/")[2]}
    found |= {f"{one['host']}:{one['port']}" for one in node["api"]["endpoints"]}
    found |= {one["href"].split("/")[2] for one in instrument.node("devices")[0]["controls"]}
    found |= {one["manifest_href"].split("/")[2] for one in instrument.node("senders")}
    return found


class Listening(unittest.TestCase):
    def test_an_address(self):
        with Instrument("--listen", "127.0.0.2") as instrument:
            self.assertEqual(instrument.url, f"http://127.0.0.2:{instrument.port}/")
            self.assertEqual(addresses_in(instrument), {f"127.0.0.2:{instrument.port}"})
            self.assertFalse(is_reached_at("127.0.0.1", instrument.port))
            instrument.wait_for_log(f"(listening at 127.0.0.2:{instrument.port}, ")
            instrument.wait_for_log("only this machine can reach 127.0.0.2: ")

    def test_an_interface(self):
        with Instrument("--listen", "lo") as instrument:
            self.assertEqual(instrument.url, f"http://127.0.0.1:{instrument.port}/")
            self.assertTrue(is_reached_at("127.0.0.2", instrument.port))
            instrument.wait_for_log(f"(listening at lo:{instrument.port}, ")

    def test_every_address(self):
        with Instrument("--listen", "any", "--address", "127.0.0.1") as instrument:
            self.assertTrue(is_reached_at("127.0.0.1", instrument.port))
            self.assertTrue(is_reached_at("127.0.0.2", instrument.port))
            self.assertEqual(is_reached_at("::1", instrument.port), has_ipv6())
            self.assertNotIn("only this machine", instrument.log)

    def test_every_ipv4_address(self):
        with Instrument("--listen", "0.0.0.0", "--address", "127.0.0.1") as instrument:
            self.assertTrue(is_reached_at("127.0.0.2", instrument.port))
            self.assertFalse(is_reached_at("::1", instrument.port))

    def test_an_ipv6_address(self):
        if not has_ipv6():
            self.skipTest("this machine has no IPv6")
        for word in ("::1", "[::1]"):
            with Instrument("--listen", word, "--address", "127.0.0.1") as instrument:
                self.assertEqual(instrument.url, f"http://127.0.0.1:{instrument.port}/")
                self.assertTrue(is_reached_at("::1", instrument.port))
                self.assertFalse(is_reached_at("127.0.0.1", instrument.port))

    def test_the_configuration_says_it(self):
        for server in ({"address": "127.0.0.3"}, {"listen": "127.0.0.3"}):
            with Instrument(configuration={"server": server}) as instrument:
                self.assertEqual(addresses_in(instrument), {f"127.0.0.3:{instrument.port}"})
                self.assertFalse(is_reached_at("127.0.0.1", instrument.port))
            with Instrument("--listen", "127.0.0.1",
                            configuration={"server": server}) as instrument:
                self.assertTrue(is_reached_at("127.0.0.1", instrument.port))


class Refusals(unittest.TestCase):
    def refusal_of(self, *options, port=PORT):
        run = subprocess.run([*SERVE, "--port", str(port), *options], stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, timeout=30)
        self.assertEqual(run.returncode, 2)
        self.assertEqual(run.stdout, b"")
        return run.stderr.decode()

    def test_an_unknown_interface_is_answered_with_those_that_there_are(self):
        for option in ("--listen", "--address"):
            self.assertRegex(self.refusal_of(option, "absent0"),
                             'cannot serve: no network interface "absent0"; there are ([^ ]+, )*lo')

    def test_an_address_that_the_machine_does_not_have(self):
        self.assertRegex(self.refusal_of("--listen", "192.0.2.99"),
                         f"cannot serve: 192.0.2.99:{PORT}: Cannot assign requested address; this "
                         r"machine has .*127\.0\.0\.1 \(lo\)")

    def test_an_ipv6_address_that_nothing_could_name(self):
        self.assertIn("listening at ::1, but the texts of the instrument can name an IPv4 address "
                      "only: name one too (--address)", self.refusal_of("--listen", "::1"))

    def test_a_port_in_use(self):
        with Instrument("--listen", "lo") as instrument:
            said = self.refusal_of("--listen", "lo", port=instrument.port)
            self.assertIn(f"lo:{instrument.port}: Address already in use; use --port PORT", said)


class Naming(InstrumentTest):
    """Behind a router that forwards a port."""

    options = ("--listen", "127.0.0.1", "--address", "203.0.113.9", "--advertised-port", "80")

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        # The URL is what others are told.
        cls.url = cls.instrument.url
        log = cls.instrument.wait_for_log("(listening at 127.0.0.1:")
        cls.instrument.host = "127.0.0.1"
        cls.instrument.port = int(re.search(r"\(listening at 127\.0\.0\.1:(\d+),", log).group(1))

    def test_all_texts_name_what_others_reach(self):
        self.assertEqual(self.url, "http://203.0.113.9:80/")
        self.assertEqual(addresses_in(self.instrument), {"203.0.113.9:80"})

    def test_its_own_manifests_are_not_fetched(self):
        sender = self.instrument.node("senders")[0]
        self.assertTrue(sender["manifest_href"].startswith("http://203.0.113.9:80/"))
        receiver = self.instrument.ids("receivers")[0]
        answer = self.instrument.request("PUT", f"{NODE}/receivers/{receiver}/target", sender)
        self.assertEqual(answer.status, 202, answer)
        self.assertEqual(self.instrument.active(f"receivers/{receiver}")["sender_id"],
                         sender["id"])


class Ipv6Clients(unittest.TestCase):
    def test_the_log_names_them_as_urls_do(self):
        if not has_ipv6():
            self.skipTest("this machine has no IPv6")
        with Instrument("--listen", "any", "--address", "127.0.0.1",
                        "--allow", "127.0.0.0/8") as instrument:
            receiver = instrument.ids("receivers")[0]
            change = (f"{SINGLE}/receivers/{receiver}/staged", {"master_enable": True})
            # IPv4 that comes by the same socket is IPv4.
            self.assertEqual(instrument.request("PATCH", *change).status, 200)
            instrument.wait_for_log("info: 127.0.0.1:")
            instrument.host = "::1"
            self.assertEqual(instrument.get(f"{CONNECTION}/single/receivers/").status, 200)
            answer = instrument.request("PATCH", *change)
            self.assertEqual(answer.status, 403)
            self.assertIn("::1 is not among the clients that may change something", answer.text)
            instrument.wait_for_log("info: [::1]:")


class InANetworkOfItsOwn(unittest.TestCase):
    def test_all_of_addresses_that_change(self):
        run_in_namespace(self, "reach_in_namespace")


if __name__ == "__main__":
    unittest.main()
