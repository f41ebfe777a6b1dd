# SPDX-License-Identifier: Apache-2.0
"""Tests with interfaces and addresses of their own; test_reach runs them in a network namespace."""

import pathlib
import signal
import subprocess
import tempfile
import time
import unittest

from instrument import PORT, SERVE, Instrument, seconds
from test_reach import addresses_in, is_reached_at


def ip(*words):
    subprocess.run(["ip", *words], check=True)


def ip_later(*words):
    """While the program waits for it."""
    return subprocess.Popen(["sh", "-c", 'sleep 1; exec ip "$@"', "ip", *words])


class Interfaces(unittest.TestCase):
    """nmos0 has a network, nmos1 is at the other end of its cable."""

    def setUp(self):
        ip("link", "set", "lo", "up")
        ip("link", "add", "nmos0", "type", "veth", "peer", "name", "nmos1")
        self.addCleanup(ip, "link", "del", "nmos0")
        for name in ("nmos0", "nmos1"):
            ip("link", "set", name, "up")

    def wait_until(self, condition, instrument):
        end = time.monotonic() + 20
        while not condition():
            self.assertLess(time.monotonic(), end, instrument.log)
            time.sleep(0.02)


def versions(instrument):
    """Of each kind of resource, all that are different."""
    found = {"node": {instrument.node("self")["version"]}}
    for kind in ("devices", "sources", "flows", "senders", "receivers"):
        found[kind] = {one["version"] for one in instrument.node(kind)}
    return found


class Following(Interfaces):
    def test_all_texts_move_together(self):
        ip("addr", "add", "192.0.2.10/24", "dev", "nmos0")
        with tempfile.TemporaryDirectory() as folder:
            service = pathlib.Path(folder) / "nmos-node.service"
            with Instrument("--listen", "nmos0", "--service-file", str(service)) as instrument:
                self.assertEqual(instrument.url, f"http://192.0.2.10:{instrument.port}/")
                self.assertEqual(addresses_in(instrument), {f"192.0.2.10:{instrument.port}"})
                self.assertNotIn("only this machine", instrument.log)
                self.assertNotIn("warning", instrument.log)
                self.wait_until(service.exists, instrument)
                self.assertIn("ver_slf=0<", service.read_text())
                before = versions(instrument)

                # As DHCP does it when a lease is not renewed.
                ip("addr", "del", "192.0.2.10/24", "dev", "nmos0")
                ip("addr", "add", "198.51.100.7/24", "dev", "nmos0")
                instrument.host = "198.51.100.7"
                moved = f"http://198.51.100.7:{instrument.port}/"
                self.wait_until(lambda: instrument.node("self")["href"] == moved, instrument)
                self.assertEqual(addresses_in(instrument), {f"198.51.100.7:{instrument.port}"})
                instrument.wait_for_log(f"info: others reach the instrument at {moved} from now on")
                after = versions(instrument)
                for kind in ("sources", "flows", "receivers"):
                    self.assertEqual(after[kind], before[kind])
                new = after["node"]
                self.assertEqual(after["devices"], new)
                self.assertEqual(after["senders"], new)
                self.assertGreater(seconds(*new), max(map(seconds, before["senders"])))
                self.wait_until(lambda: all(f"ver_{kind}=1<" in service.read_text()
                                            for kind in ("slf", "dvc", "snd")), instrument)
                for kind in ("src", "flw", "rcv"):
                    self.assertIn(f"ver_{kind}=0<", service.read_text())

    def test_an_address_that_is_added_changes_nothing(self):
        ip("addr", "add", "192.0.2.10/24", "dev", "nmos0")
        with Instrument("--listen", "nmos0") as instrument:
            ip("addr", "add", "198.51.100.7/24", "dev", "nmos0")
            self.assertTrue(is_reached_at("198.51.100.7", instrument.port))
            time.sleep(2.2)
            self.assertEqual(addresses_in(instrument), {f"192.0.2.10:{instrument.port}"})

    def test_a_lost_address_stays_until_there_is_another(self):
        ip("addr", "add", "192.0.2.10/24", "dev", "nmos0")
        with Instrument("--listen", "any", "--address", "nmos0") as instrument:
            ip("addr", "del", "192.0.2.10/24", "dev", "nmos0")
            instrument.wait_for_log("warning: nmos0: the address 192.0.2.10 is gone; it is named "
                                    "until there is another")
            instrument.host = "127.0.0.1"
            self.assertEqual(addresses_in(instrument), {f"192.0.2.10:{instrument.port}"})
            time.sleep(2.2)
            ip("addr", "add", "192.0.2.10/24", "dev", "nmos0")
            instrument.wait_for_log("info: nmos0: the address 192.0.2.10 is back")
            self.assertEqual(instrument.log.count("is gone"), 1)
            self.assertNotIn("from now on", instrument.log)

    def test_a_named_address_is_not_followed(self):
        ip("addr", "add", "192.0.2.10/24", "dev", "nmos0")
        with Instrument("--listen", "any", "--address", "192.0.2.10") as instrument:
            ip("addr", "del", "192.0.2.10/24", "dev", "nmos0")
            ip("addr", "add", "198.51.100.7/24", "dev", "nmos0")
            time.sleep(2.2)
            instrument.host = "198.51.100.7"
            self.assertEqual(addresses_in(instrument), {f"192.0.2.10:{instrument.port}"})


class Waiting(Interfaces):
    def test_an_interface_without_address_is_waited_for(self):
        comes = ip_later("addr", "add", "192.0.2.10/24", "dev", "nmos0")
        with Instrument("--listen", "nmos0") as instrument:
            self.assertEqual(comes.wait(timeout=30), 0)
            self.assertEqual(addresses_in(instrument), {f"192.0.2.10:{instrument.port}"})
            instrument.wait_for_log("warning: waiting for an IPv4 address of nmos0\n")

    def test_ipv6_alone_is_not_enough(self):
        ip("addr", "add", "2001:db8::5/64", "dev", "nmos0", "nodad")
        comes = ip_later("addr", "add", "192.0.2.10/24", "dev", "nmos0")
        with Instrument("--listen", "nmos0") as instrument:
            self.assertEqual(comes.wait(timeout=30), 0)
            instrument.wait_for_log("waiting for an IPv4 address of nmos0: it has only IPv6, which "
                                    "the texts of the instrument cannot name; --address names "
                                    "another one")
            self.assertTrue(is_reached_at("2001:db8::5", instrument.port))

    def test_a_signal_ends_the_wait(self):
        process = subprocess.Popen([*SERVE, "--listen", "nmos0", "--port", PORT],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        line = process.stderr.readline()
        self.assertIn(b"waiting for an IPv4 address of nmos0", line)
        process.send_signal(signal.SIGTERM)
        out, errors = process.communicate(timeout=30)
        self.assertEqual(process.returncode, 0)
        self.assertEqual(out, b"")
        self.assertIn(b"stopping on SIGTERM", errors)


class Listening(Interfaces):
    def test_only_what_comes_by_the_interface(self):
        ip("addr", "add", "192.0.2.10/24", "dev", "nmos0")
        ip("addr", "add", "2001:db8::5/64", "dev", "nmos0", "nodad")
        with Instrument("--listen", "nmos0") as instrument:
            for address in ("192.0.2.10", "2001:db8::5"):
                self.assertTrue(is_reached_at(address, instrument.port), address)
            for address in ("127.0.0.1", "::1"):
                self.assertFalse(is_reached_at(address, instrument.port), address)

    def test_another_instrument_at_the_same_port_of_another_interface(self):
        ip("addr", "add", "192.0.2.10/24", "dev", "nmos0")
        with Instrument("--listen", "lo") as at_lo:
            with Instrument("--listen", "nmos0") as at_nmos0:
                self.assertEqual(at_nmos0.port, at_lo.port)

    def make_again(self):
        """The interface, which is another one for the system then."""
        ip("link", "del", "nmos0")
        ip("link", "add", "nmos0", "type", "veth", "peer", "name", "nmos1")
        for name in ("nmos0", "nmos1"):
            ip("link", "set", name, "up")
        ip("addr", "add", "192.0.2.10/24", "dev", "nmos0")

    def test_an_interface_that_is_made_again(self):
        ip("addr", "add", "192.0.2.10/24", "dev", "nmos0")
        for options in ((), ("--address", "192.0.2.10")):
            with Instrument("--listen", "nmos0", *options) as instrument:
                self.make_again()
                instrument.wait_for_log("info: nmos0: the interface was made again, listening at it")
                self.assertTrue(is_reached_at("192.0.2.10", instrument.port))

    def test_an_interface_that_is_made_again_for_another_user(self):
        """Everybody may listen at an interface, but only once."""
        ip("addr", "add", "192.0.2.10/24", "dev", "nmos0")
        with Instrument("--listen", "nmos0", run_by=["setpriv", "--bounding-set=-net_raw",
                                                     "--inh-caps=-net_raw"]) as instrument:
            self.assertTrue(is_reached_at("192.0.2.10", instrument.port))
            self.make_again()
            instrument.wait_for_log("error: nmos0: the interface was made again, and nobody who "
                                    "comes by it is heard until the program is started again: "
                                    "Operation not permitted")
            time.sleep(2.2)
            self.assertEqual(instrument.log.count("was made again"), 1)

    def test_any_is_told_by_the_address_of_the_default_route(self):
        ip("link", "add", "nmos2", "type", "veth", "peer", "name", "nmos3")
        self.addCleanup(ip, "link", "del", "nmos2")
        for name in ("nmos2", "nmos3"):
            ip("link", "set", name, "up")
        ip("addr", "add", "192.0.2.10/24", "dev", "nmos0")
        ip("addr", "add", "198.51.100.7/24", "dev", "nmos2")
        ip("route", "add", "default", "via", "198.51.100.1")
        with Instrument("--listen", "any") as instrument:
            self.assertEqual(instrument.url, f"http://198.51.100.7:{instrument.port}/")
            for address in ("127.0.0.1", "192.0.2.10", "198.51.100.7", "::1"):
                self.assertTrue(is_reached_at(address, instrument.port), address)

    def test_any_without_an_address_is_this_machine_for_now(self):
        with Instrument("--listen", "any") as instrument:
            self.assertEqual(instrument.url, f"http://127.0.0.1:{instrument.port}/")
            ip("addr", "add", "192.0.2.10/24", "dev", "nmos0")
            instrument.wait_for_log("others reach the instrument at http://192.0.2.10:")
            self.assertEqual(addresses_in(instrument), {f"192.0.2.10:{instrument.port}"})


if __name__ == "__main__":
    unittest.main()
