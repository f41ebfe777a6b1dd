# SPDX-License-Identifier: Apache-2.0
"""PUT of a receiver's target (IS-04 v1.2), with manifests of our own and of others."""

import contextlib
import http.server
import json
import socket
import threading
import time

from instrument import NODE, InstrumentTest, sdp_file, video_medium

SENDER = {
    "id": "5709255c-c0ae-4e1e-99a0-e872e83e48e0", "version": "1:2", "label": "", "description": "",
    "tags": {}, "flow_id": None, "transport": "urn:x-nmos:transport:rtp.mcast",
    "device_id": "6709255c-c0ae-4e1e-99a0-e872e83e48e0", "interface_bindings": [],
    "subscription": {"receiver_id": None, "active": True}, "caps": {}, "more": [1],
}
NO_FILE = {"data": None, "type": None}


class Manifests(http.server.BaseHTTPRequestHandler):
    files = {
        "/good": sdp_file(video_medium(source="203.0.113.1"), video_medium("233.252.0.2")).encode(),
        "/audio": sdp_file(["m=audio 5004 RTP/AVP 97", "c=IN IP4 233.252.0.1",
                            "a=rtpmap:97 L24/48000"]).encode(),
        "/latin1": sdp_file(video_medium()).encode() + b"s=\xe9\r\n",
        "/nul": sdp_file(video_medium()).encode() + b"\0",
        "/empty": b"",
        "/long": sdp_file(video_medium()).encode() + b"x" * 5000,
        "/endless": b"x" * (1024 * 1024 + 1),
    }

    def do_GET(self):
        if self.path.startswith("/redirect/"):
            count = int(self.path.split("/")[2])
            to = f"/redirect/{count - 1}" if count > 1 else "/good"
            self.answer(302, b"", [("Location", to)])
        elif self.path == "/to-a-file":
            self.answer(302, b"", [("Location", "file:///etc/hostname")])
        elif self.path == "/slow":
            time.sleep(5)
        elif self.path in self.files:
            self.answer(200, self.files[self.path])
        else:
            self.answer(404, b"no")

    def answer(self, status, body, headers=()):
        self.send_response(status)
        for name, value in headers:
            self.send_header(name, value)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        with contextlib.suppress(OSError):
            self.wfile.write(body)

    def log_message(self, *_):
        pass


class Target(InstrumentTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.receivers = cls.instrument.resources("receivers")
        cls.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Manifests)
        cls.server.daemon_threads = True
        cls.manifests = f"http://127.0.0.1:{cls.server.server_port}"
        threading.Thread(target=cls.server.serve_forever, daemon=True).start()

    @classmethod
    def tearDownClass(cls):
        cls.server.shutdown()
        cls.server.server_close()
        super().tearDownClass()

    def put(self, receiver, body):
        return self.instrument.request("PUT", f"{NODE}/{receiver}/target", body)

    def test_a_sender_of_our_own(self):
        receiver = self.receivers[0]
        sender = self.instrument.node("senders")[0]
        body = json.dumps(sender, indent=3)
        version = self.instrument.node(receiver)["version"]
        answer = self.put(receiver, body)
        self.assertEqual(answer.status, 202, answer)
        self.assertEqual(answer.text, body)
        self.assertEqual(answer.headers["content-type"], "application/json")
        active = self.instrument.active(receiver)
        self.assertEqual((active["master_enable"], active["sender_id"]), (True, sender["id"]))
        self.assertEqual(active["activation"]["mode"], "activate_immediate")
        self.assertEqual(active["transport_file"]["data"],
                         self.instrument.sdp("senders/" + sender["id"]))
        self.assertEqual(active["transport_params"][0]["multicast_ip"], "233.252.0.11")
        node = self.instrument.node(receiver)
        self.assertEqual(node["subscription"], {"active": True, "sender_id": sender["id"]})
        self.assertNotEqual(node["version"], version)
        self.assertEqual(self.instrument.staged(receiver)["activation"]["mode"], None)

        answer = self.put(receiver, " { } ")
        self.assertEqual((answer.status, answer.text), (202, "{}"))
        active = self.instrument.active(receiver)
        self.assertEqual((active["master_enable"], active["sender_id"], active["transport_file"]),
                         (False, None, NO_FILE))
        self.assertEqual(self.instrument.node(receiver)["subscription"],
                         {"active": False, "sender_id": None})

    def test_senders_of_others(self):
        receiver = self.receivers[1]
        for path in ("/good", "/redirect/1", "/redirect/2"):
            with self.subTest(path):
                answer = self.put(receiver, {**SENDER, "manifest_href": self.manifests + path})
                self.assertEqual(answer.status, 202, answer)
                active = self.instrument.active(receiver)
                self.assertEqual(active["sender_id"], SENDER["id"])
                self.assertEqual([leg["multicast_ip"] for leg in active["transport_params"]],
                                 ["233.252.0.1", "233.252.0.2"])
                self.put(receiver, {})

    def test_what_cannot_be_fetched_or_taken(self):
        receiver = self.receivers[2]
        before = self.instrument.active(receiver), self.instrument.staged(receiver)
        with socket.create_server(("127.0.0.1", 0)) as server:
            closed = server.getsockname()[1]
        for href, status, word in (
                (self.manifests + "/nothing", 500, "404"),
                (self.manifests + "/redirect/3", 500, "redirect"),
                (self.manifests + "/to-a-file", 500, "file"),
                (self.manifests + "/slow", 500, "Timeout"),
                (self.manifests + "/endless", 500, "1048576"),
                (f"http://127.0.0.1:{closed}/", 500, "connect"),
                ("http://nowhere.invalid/", 500, "resolve"),
                (self.manifests + "/audio", 400, "video/raw"),
                (self.manifests + "/latin1", 400, "UTF-8"),
                (self.manifests + "/nul", 400, "NUL"),
                (self.manifests + "/empty", 400, "no leg"),
                (self.manifests + "/long", 400, "4095"),
                ("file:///etc/hostname", 400, "/manifest_href"),
                ("ftp://127.0.0.1/", 400, "/manifest_href"),
                ("", 400, "/manifest_href"), (None, 400, "/manifest_href")):
            with self.subTest(href):
                begin = time.monotonic()
                answer = self.put(receiver, {**SENDER, "manifest_href": href})
                self.assert_error(answer, status, word)
                self.assertLess(time.monotonic() - begin, 4)
                self.assertEqual((self.instrument.active(receiver),
                                  self.instrument.staged(receiver)), before)

    def test_others_do_not_wait_for_a_manifest(self):
        body = {**SENDER, "manifest_href": self.manifests + "/slow"}
        slow = [threading.Thread(target=self.put, args=(self.receivers[3], body))
                for _ in range(20)]
        for thread in slow:
            thread.start()
        time.sleep(0.2)
        begin = time.monotonic()
        for _ in range(10):
            self.assertEqual(self.instrument.get(f"{NODE}/self").status, 200)
        self.assertLess(time.monotonic() - begin, 1)
        for thread in slow:
            thread.join()

    def test_bad_bodies(self):
        receiver = self.receivers[4]
        complete = {**SENDER, "manifest_href": self.manifests + "/good"}
        bodies = [([], "the document"), ("null", "the document"), ({"id": SENDER["id"]}, "label")]
        for name in complete:
            if name not in ("caps", "more"):
                bodies.append(({key: complete[key] for key in complete if key != name}, name))
                bodies.append(({**complete, name: 5}, "/" + name))
        bodies += [({**complete, "id": None}, "/id"), ({**complete, "tags": {"a": 1}}, "/tags"),
                   ({**complete, "version": "1"}, "/version"),
                   ({**complete, "transport": "urn:x-nmos:transport:dash"}, "/transport"),
                   ({**complete, "subscription": {"active": True}}, "/subscription")]
        for body, word in bodies:
            with self.subTest(body):
                self.assert_error(self.put(receiver, body), 400, word)
        self.assertFalse(self.instrument.active(receiver)["master_enable"])
