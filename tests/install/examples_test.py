#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs what was built from examples/ against the installed tree.

Usage: examples_test.py BUILD_DIRECTORY
"""

import http.client
import json
import pathlib
import subprocess
import sys
import unittest

BUILD = pathlib.Path(sys.argv.pop())


class MinimalTexts(unittest.TestCase):
    def test_output(self):
        run = subprocess.run([BUILD / "minimal_texts"], check=True, stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, timeout=60)
        node, receiver, sdp = run.stdout.decode().split("\n", 2)
        self.assertEqual(run.stderr, b"")
        self.assertEqual(json.loads(node)["href"], "http://192.0.2.1:8080/")
        self.assertEqual(json.loads(node)["label"], "Rack 4")
        self.assertEqual(json.loads(receiver)["label"], "Monitor")
        self.assertEqual(json.loads(receiver)["subscription"], {"active": False, "sender_id": None})
        self.assertEqual(sdp.split("\r\n")[:12], [
            "v=0",
            "o=HALDEN 1541234567 1541234567 IN IP4 192.0.2.10",
            "s=QX3100 OPT21/22",
            "t=0 0",
            "a=group:DUP primary secondary",
            "m=audio 5004 RTP/AVP 97",
            "c=IN IP4 239.255.1.5/64",
            "a=rtpmap:97 L24/48000/16",
            "a=ptime:1",
            "a=source-filter: incl IN IP4 239.255.1.5 192.0.2.10",
            "a=ts-refclk:ptp=IEEE1588-2008:00-00-5E-FF-FE-00-53-01:127",
            "a=mediaclk:direct=0",
        ])


class RecordFromC(unittest.TestCase):
    def test_output(self):
        run = subprocess.run([BUILD / "record_from_c"], check=True, stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, timeout=60)
        node, receivers = run.stdout.decode().splitlines()
        self.assertEqual(run.stderr, b"")
        self.assertEqual(json.loads(node)["label"], "Rack 4")
        self.assertEqual(json.loads(node)["version"], "1541234567:0")
        self.assertEqual([receiver["caps"] for receiver in json.loads(receivers)],
                         [{"media_types": ["video/raw"]}])


class OwnHttpServer(unittest.TestCase):
    def start(self, requests):
        server = subprocess.Popen([BUILD / "own_http_server", "0", "--requests", str(requests)],
                                  stdout=subprocess.PIPE, encoding="ascii")
        self.addCleanup(server.stdout.close)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        self.url = server.stdout.readline().rstrip("\n")
        self.assertRegex(self.url, r"^http://127\.0\.0\.1:[1-9][0-9]*/x-nmos/node/v1\.2/$")
        self.port = int(self.url.split("/")[2].split(":")[1])
        return server

    def ask(self, path, method="GET"):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        try:
            connection.request(method, path)
            response = connection.getresponse()
            return response.status, response.getheader("Content-Type"), response.read().decode()
        finally:
            connection.close()

    def test_what_it_serves(self):
        server = self.start(9)
        status, kind, body = self.ask("/x-nmos/node/v1.2/self")
        self.assertEqual((status, kind), (200, "application/json"))
        self.assertEqual(json.loads(body)["api"]["endpoints"],
                         [{"host": "127.0.0.1", "port": self.port, "protocol": "http"}])
        senders = json.loads(self.ask("/x-nmos/node/v1.2/senders")[2])
        self.assertEqual([sender["label"] for sender in senders],
                         ["Video of IP stream 1", "Audio of IP stream 1",
                          "Ancillary data of IP stream 1"])
        receivers = json.loads(self.ask("/x-nmos/node/v1.2/receivers")[2])
        self.assertEqual(len(receivers), 24)

        single = "/x-nmos/connection/v1.0/single/"
        active = json.loads(self.ask(f"{single}receivers/{receivers[0]['id']}/active")[2])
        self.assertEqual((active["master_enable"], active["sender_id"]), (False, None))
        # Where the node says that the file is.
        path = senders[0]["manifest_href"].removeprefix(f"http://127.0.0.1:{self.port}")
        status, kind, body = self.ask(path)
        self.assertEqual((status, kind), (200, "application/sdp"))
        self.assertIn("m=video 5004 RTP/AVP 96\r\nc=IN IP4 239.255.1.1/64\r\n", body)
        self.assertEqual(json.loads(self.ask("/x-nmos/node/v1.2/")[2]),
                         ["self/", "sources/", "flows/", "devices/", "senders/", "receivers/"])

        self.assertEqual(self.ask("/x-nmos/node/v1.2/nothing")[0], 404)
        self.assertEqual(self.ask(f"{single}receivers/{receivers[0]['id']}/")[0], 404)
        self.assertEqual(self.ask("/x-nmos/node/v1.2/self", "DELETE")[0], 405)
        self.assertEqual(server.wait(60), 0)

    def test_port_in_use(self):
        self.start(1)
        run = subprocess.run([BUILD / "own_http_server", str(self.port)], stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, timeout=60, encoding="utf-8")
        self.assertEqual((run.returncode, run.stdout), (2, ""))
        self.assertEqual(run.stderr, f"port {self.port}: Address already in use\n")


if __name__ == "__main__":
    unittest.main()
