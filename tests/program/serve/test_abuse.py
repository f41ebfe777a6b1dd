# SPDX-License-Identifier: Apache-2.0
"""Requests that mean no good, many clients at once, and the end."""

import contextlib
import json
import random
import signal
import socket
import subprocess
import threading
import time
import unittest

from instrument import (CONNECTION, IMMEDIATE, NODE, SERVE, SINGLE, Answer, Instrument, InstrumentTest,
                        file_patch, sdp_file, video_medium)


class Abuse(InstrumentTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.senders = cls.instrument.resources("senders")
        cls.receivers = cls.instrument.resources("receivers")
        cls.staged_path = f"{SINGLE}/{cls.receivers[0]}/staged"

    def assert_works(self):
        begin = time.monotonic()
        self.assertEqual(self.instrument.get(NODE + "/self").status, 200)
        self.assertLess(time.monotonic() - begin, 1)

    def paths(self):
        return (("PATCH", self.staged_path), ("POST", CONNECTION + "/bulk/receivers"),
                ("PUT", f"{NODE}/{self.receivers[0]}/target"))

    def test_deep_json(self):
        for opening, closing in (("[", "]"), ('{"a":', "}"), ('[{"id":[', "]}]")):
            for depth in (65, 1000, 100_000):
                for method, path in self.paths():
                    body = opening * depth
                    with self.subTest(f"{method} {opening} {depth}"):
                        self.assert_error(self.instrument.request(method, path, body), 400)
                        if len(body) < 400_000:
                            body += "1" + closing * depth
                            self.assert_error(self.instrument.request(method, path, body), 400,
                                              "deeper than 64 levels")
        self.assert_works()

    def test_many_small_values(self):
        """Reading is linear: 1 MiB of them costs moments, not minutes."""
        for body in ("[" + "{}," * 340_000 + "{}]", "[" + "1," * 500_000 + "1]",
                     "{" + ",".join(f'"{i}":0' for i in range(90_000)) + "}"):
            for method, path in self.paths():
                begin = time.monotonic()
                self.assert_error(self.instrument.request(method, path, body), 400)
                self.assertLess(time.monotonic() - begin, 15)
        self.assert_works()

    def test_odd_values(self):
        for value in ("1" * 100_000, "-" + "9" * 100_000, "1e400", "-1e-400", "0." + "1" * 100_000,
                      '"\\u0000"', '"\\ud800"', '"\\udc00\\ud800"', '"' + "\\n" * 100_000 + '"',
                      "NaN", "Infinity", "tru", "01", "1.", ".5", "+1", "'a'", '"\t"'):
            for member in ("master_enable", "sender_id", "transport_params", "activation", "x"):
                with self.subTest(f"{member} {value[:20]}"):
                    self.assert_error(self.instrument.request(
                        "PATCH", self.staged_path, f'{{"{member}":{value}}}'), 400)
        self.assert_works()

    def test_bytes_that_are_no_utf8(self):
        for bad in (b"\xff", b"\xc0\x80", b"\xed\xa0\x80", b"\xf8\x88\x80\x80\x80", b"\xe2\x82",
                    b"\0"):
            for body in (b'{"' + bad + b'":1}', b'{"sender_id":"' + bad + b'"}', bad, b"{}" + bad,
                         b'{"transport_file":{"type":"application/sdp","data":"' + bad + b'"}}'):
                for method, path in self.paths():
                    self.assert_error(self.instrument.request(method, path, body), 400)
            path = NODE.encode() + b"/" + bad.replace(b"\0", b"%00")
            self.raw(b"GET " + path + b" HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n")
        self.assert_works()

    def test_names_do_not_forge_the_log(self):
        self.instrument.request("PATCH", self.staged_path,
                                '{"sender_id":"\\nforged\\u001b[2J"}', source="127.0.0.2")
        self.instrument.request("GET", "/%0aforged", source="127.0.0.2")
        self.instrument.wait_for_log('"/%0aforged"')
        self.assertNotIn("\nforged", self.instrument.log)
        self.assertNotIn("\x1b", self.instrument.log)

    def test_random_patches(self):
        """Whatever comes, the answer is 200 or 400 and the bodies stay JSON."""
        randomness = random.Random(2)
        values = [None, True, False, 0, 1, -1, 5004, 65536, 1e300, "", "auto", "null", "x" * 5000,
                  "233.252.0.1", "192.0.2.10", "::1", [], {}, [{}], [{}, {}],
                  "5709255c-c0ae-4e1e-99a0-e872e83e48e0", "1:0", "activate_immediate",
                  "application/sdp", sdp_file(video_medium())]
        names = ["master_enable", "sender_id", "receiver_id", "activation", "mode", "data", "type",
                 "requested_time", "transport_file", "transport_params", "source_ip", "multicast_ip",
                 "destination_ip", "interface_ip", "destination_port", "rtp_enabled", "source_port"]

        def value(depth):
            if depth and randomness.random() < 0.4:
                return {randomness.choice(names): value(depth - 1)
                        for _ in range(randomness.randrange(4))}
            if depth and randomness.random() < 0.2:
                return [value(depth - 1) for _ in range(randomness.randrange(4))]
            return randomness.choice(values)

        statuses = {}
        connection = self.instrument.connect()
        for _ in range(2000):
            resource = randomness.choice(self.senders + self.receivers)
            body = json.dumps({randomness.choice(names): value(3)
                               for _ in range(randomness.randrange(4))})
            connection.request("PATCH", f"{SINGLE}/{resource}/staged", body)
            answer = Answer(connection.getresponse())
            statuses[answer.status] = statuses.get(answer.status, 0) + 1
            self.assertIn(answer.status, (200, 202, 400, 423), body)
            answer.json
        connection.close()
        self.assertGreater(statuses[200], 100)
        self.assertGreater(statuses[400], 100)
        for resource in self.senders + self.receivers:
            self.instrument.staged(resource)

    def test_large_bodies(self):
        fits = b" " * (1024 * 1024 - 2) + b"{}"
        self.assertEqual(self.instrument.request("PATCH", self.staged_path, fits).status, 200)
        self.assert_error(self.instrument.request("PATCH", self.staged_path, b" " + fits), 413)
        connection = self.instrument.connect()
        connection.request("PATCH", self.staged_path, iter([fits, b" "]), encode_chunked=True,
                           headers={"Transfer-Encoding": "chunked"})
        self.assert_error(Answer(connection.getresponse()), 413)
        connection.close()
        self.assert_works()

    def raw(self, data):
        with contextlib.suppress(OSError), socket.create_connection(
                (self.instrument.host, self.instrument.port), timeout=5) as connection:
            connection.sendall(data)
            with contextlib.suppress(socket.timeout):
                while connection.recv(65536):
                    pass

    def test_raw_nonsense(self):
        for data in (b"\r\n" * 1000 + b"\0", b"GET\r\n\r\n", b"GET / HTTP/9.9\r\n\r\n",
                     b"\x16\x03\x01\x02\x00\x01\x00", b"PATCH / HTTP/1.1\r\nContent-Length: -1\r\n\r\n",
                     b"GET / HTTP/1.1\r\n" + b"A: b\r\n" * 10000 + b"\r\n",
                     b"GET /" + b"a" * 100_000 + b" HTTP/1.1\r\nHost: a\r\n\r\n",
                     b"POST / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\nffffffffffff\r\n"):
            with socket.create_connection((self.instrument.host, self.instrument.port),
                                          timeout=5) as connection:
                with contextlib.suppress(OSError):
                    connection.sendall(data)
                    connection.shutdown(socket.SHUT_WR)
                    connection.recv(65536)
            self.assert_works()

    def test_slow_and_idle_clients(self):
        """1,000 that say nothing or trickle keep nobody from an answer within a second."""
        connections = []
        try:
            for i in range(1000):
                connection = socket.create_connection((self.instrument.host, self.instrument.port))
                if i % 2:
                    connection.sendall(b"PATCH " + self.staged_path.encode() +
                                       b" HTTP/1.1\r\nHost: a\r\nContent-Length: 1000\r\n\r\n{")
                connections.append(connection)
            for _ in range(3):
                for connection in connections[1::2]:
                    with contextlib.suppress(OSError):
                        connection.send(b" ")
                for _ in range(5):
                    self.assert_works()
                time.sleep(0.5)
        finally:
            for connection in connections:
                connection.close()
        self.assert_works()


class ManyClients(InstrumentTest):
    def test_eight_clients_at_once(self):
        """Each answer is whole, and in the end staged, active and IS-04 agree."""
        senders = self.instrument.resources("senders")
        receivers = self.instrument.resources("receivers")
        sdp = self.instrument.sdp(senders[0])
        problems = []

        def client(number):
            randomness = random.Random(number)
            connection = self.instrument.connect()

            def request(method, path, body=None):
                connection.request(method, path, body)
                return Answer(connection.getresponse())

            try:
                for i in range(60):
                    resource = randomness.choice(senders[:2] + receivers[:4])
                    patch = randomness.choice([
                        {}, IMMEDIATE, {"master_enable": bool(i % 2), **IMMEDIATE},
                        {"transport_params": [{"destination_port": 1000 + i}, {}], **IMMEDIATE},
                        {"activation": {"mode": "activate_scheduled_relative",
                                        "requested_time": "0:2000000"}},
                        {"activation": {"mode": None}},
                    ] + ([file_patch(sdp, **IMMEDIATE)] if resource in receivers else []))
                    answer = request("PATCH", f"{SINGLE}/{resource}/staged", json.dumps(patch))
                    if answer.status not in (200, 202, 423):
                        problems.append(f"{patch}: {answer}")
                    for path in (f"{NODE}/receivers", f"{SINGLE}/{resource}/active", "/status"):
                        request("GET", path).json
                    request("GET", f"{SINGLE}/{senders[0]}/transportfile")
            except Exception as error:  # a thread's own would be lost
                problems.append(repr(error))
            finally:
                connection.close()

        threads = [threading.Thread(target=client, args=(number,)) for number in range(8)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(problems, [])
        time.sleep(0.2)
        self.assertEqual(self.instrument.status()["pending_activations"], [])
        for resource in senders[:2] + receivers[:4]:
            self.assertEqual(self.instrument.node(resource)["subscription"]["active"],
                             self.instrument.active(resource)["master_enable"])


class TheEnd(unittest.TestCase):
    def test_ends_within_two_seconds(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(number), Instrument() as instrument:
                idle = [instrument.connect() for _ in range(50)]
                for connection in idle:
                    connection.connect()
                begin = time.monotonic()
                self.assertEqual(instrument.end(number), 0)
                self.assertLess(time.monotonic() - begin, 2)
                for connection in idle:
                    connection.close()

    def test_a_port_in_use(self):
        with Instrument() as first, Instrument() as second:
            self.assertNotEqual(first.port, second.port)
            self.assertEqual(second.node("self")["api"]["endpoints"][0]["port"], second.port)
            run = subprocess.run([*SERVE, "--port", str(first.port)],
                                 stderr=subprocess.PIPE, timeout=30)
            self.assertEqual(run.returncode, 2)
            self.assertIn(str(first.port), run.stderr.decode())

    def test_connections_of_one_address_are_limited(self):
        with Instrument("--connections-per-address", "10") as instrument:
            connections = [instrument.connect() for _ in range(10)]
            for connection in connections:
                connection.request("GET", "/healthz")
                self.assertEqual(Answer(connection.getresponse()).status, 200)
            with self.assertRaises(Exception):
                instrument.get("/healthz")
            for connection in connections:
                connection.close()
            time.sleep(0.2)
            self.assertEqual(instrument.get("/healthz").status, 200)
