# SPDX-License-Identifier: Apache-2.0
"""Which paths there are, which methods they have, and how what is wrong is answered."""

import subprocess
import unittest

from instrument import (CONNECTION, INTERFACES, NODE, PROGRAM, SINGLE, Answer, Instrument,
                        InstrumentTest)

LISTINGS = {
    "/": ["x-nmos/"],
    "/x-nmos": ["node/", "registration/", "connection/"],
    "/x-nmos/node": ["v1.2/"],
    NODE: ["self/", "sources/", "flows/", "devices/", "senders/", "receivers/"],
    "/x-nmos/registration": ["v1.2/"],
    "/x-nmos/registration/v1.2": ["resource/", "health/"],
    "/x-nmos/connection": ["v1.0/"],
    CONNECTION: ["bulk/", "single/"],
    CONNECTION + "/bulk": ["senders/", "receivers/"],
    SINGLE: ["senders/", "receivers/"],
}


class UrlSpace(InstrumentTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.sender = cls.instrument.resources("senders")[0]
        cls.receiver = cls.instrument.resources("receivers")[0]

    def methods(self):
        """Every path with the methods that it has."""
        reading = "GET, HEAD, OPTIONS"
        staged = "GET, HEAD, PATCH, OPTIONS"
        table = {path: reading for path in LISTINGS}
        for kind in ("sources", "flows", "devices", "senders", "receivers"):
            table[f"{NODE}/{kind}"] = reading
            table[f"{NODE}/{kind}/{self.instrument.node(kind)[0]['id']}"] = reading
        table |= {
            NODE + "/self": reading,
            f"{NODE}/{self.receiver}/target": "PUT, OPTIONS",
            CONNECTION + "/bulk/senders": "POST, OPTIONS",
            CONNECTION + "/bulk/receivers": "POST, OPTIONS",
            SINGLE + "/senders": reading,
            SINGLE + "/receivers": reading,
            f"{SINGLE}/{self.sender}/transportfile": reading,
            "/healthz": reading,
            "/status": reading,
            "/metrics": reading,
            "/layout": reading,
            f"/check-sdp/{self.receiver.split('/')[1]}": "POST, OPTIONS",
        }
        for resource in (self.sender, self.receiver):
            table |= {
                f"{SINGLE}/{resource}": reading,
                f"{SINGLE}/{resource}/constraints": reading,
                f"{SINGLE}/{resource}/staged": staged,
                f"{SINGLE}/{resource}/active": reading,
            }
        return table

    def test_listings(self):
        for path, entries in LISTINGS.items():
            with self.subTest(path):
                self.assertEqual(self.instrument.get(path).json, entries)

    def test_id_listings(self):
        for kind, count in (("senders", 6), ("receivers", 24)):
            listing = self.instrument.get(f"{SINGLE}/{kind}").json
            self.assertEqual(listing, [id + "/" for id in self.instrument.ids(kind)])
            self.assertEqual(len(listing), count)
        self.assertEqual(self.instrument.get(f"{SINGLE}/{self.sender}").json,
                         ["constraints/", "staged/", "active/", "transportfile/"])
        self.assertEqual(self.instrument.get(f"{SINGLE}/{self.receiver}").json,
                         ["constraints/", "staged/", "active/"])

    def test_get_and_head_with_and_without_slash(self):
        for path, methods in self.methods().items():
            for spelling in (path, path.rstrip("/") + "/"):
                with self.subTest(spelling):
                    get = self.instrument.get(spelling)
                    head = self.instrument.request("HEAD", spelling)
                    expected = 200 if "GET" in methods else 405
                    self.assertEqual((get.status, head.status), (expected, expected))
                    self.assertEqual(head.body, b"")
                    self.assertEqual(head.headers["content-type"], get.headers["content-type"])
                    if path not in ("/status", "/metrics"):  # whose numbers differ
                        self.assertEqual(head.headers["content-length"], str(len(get.body)))
                    self.assertEqual(get.headers["access-control-allow-origin"], "*")

    def test_content_types(self):
        for path, methods in self.methods().items():
            if "GET" in methods:
                expected = ("application/sdp" if path.endswith("/transportfile")
                            else "text/plain; version=0.0.4; charset=utf-8" if path == "/metrics"
                            else "application/json")
                with self.subTest(path):
                    self.assertEqual(self.instrument.get(path).headers["content-type"], expected)

    def test_options(self):
        for path, methods in self.methods().items():
            with self.subTest(path):
                answer = self.instrument.request("OPTIONS", path)
                self.assertEqual(answer.status, 200)
                self.assertEqual(answer.headers["access-control-allow-methods"], methods)
                self.assertEqual(answer.headers["allow"], methods)
                self.assertEqual(answer.headers["access-control-allow-headers"],
                                 "Content-Type, Accept")
                self.assertGreater(int(answer.headers["access-control-max-age"]), 0)
                self.assertEqual(answer.headers["access-control-allow-origin"], "*")

    def test_other_methods(self):
        for path, methods in self.methods().items():
            for method in ("DELETE", "POST", "PUT", "PATCH", "TRACE", "BREW"):
                if method in methods:
                    continue
                with self.subTest(f"{method} {path}"):
                    answer = self.instrument.request(method, path)
                    self.assert_error(answer, 405, method)
                    self.assertEqual(answer.headers["allow"], methods)

    def test_other_methods_want_no_slash(self):
        for path, methods in self.methods().items():
            for method in ("PATCH", "POST", "PUT", "DELETE"):
                if path != "/":
                    with self.subTest(f"{method} {path}/"):
                        self.assert_error(self.instrument.request(method, path + "/"), 404)

    def test_unknown_paths(self):
        id = "00000000-0000-4000-8000-000000000000"
        for path in ("/nothing", "/x-nmos/query", "/x-nmos/node/v1.1", NODE + "/nothing",
                     NODE + "/self/self", NODE + "//self", "//x-nmos", "/x-nmos//",
                     "/X-NMOS/node", "/x-nmos/node/v1.2%2Fself",
                     f"{NODE}/senders/{id}", f"{NODE}/receivers/{id}/target",
                     f"{NODE}/senders/{self.sender.split('/')[1].upper()}",
                     f"{NODE}/{self.sender}/target", f"{NODE}/{self.receiver}/staged",
                     "/x-nmos/connection/v1.1", f"{SINGLE}/senders/{id}",
                     f"{SINGLE}/senders/{id}/staged", f"{SINGLE}/{self.sender}/nothing",
                     f"{SINGLE}/{self.receiver}/transportfile",
                     f"{SINGLE}/senders/{self.receiver.split('/')[1]}",
                     CONNECTION + "/bulk/nothing"):
            for method in ("GET", "PATCH", "OPTIONS"):
                with self.subTest(f"{method} {path}"):
                    self.assert_error(self.instrument.request(method, path), 404)

    def test_this_node_is_no_registry(self):
        for path in ("/x-nmos/registration/v1.1", "/x-nmos/registration/v1.2/resource",
                     "/x-nmos/registration/v1.2/health/nodes/1"):
            for method in ("GET", "POST"):
                with self.subTest(f"{method} {path}"):
                    self.assert_error(self.instrument.request(method, path), 404,
                                      "this node is not a registry")

    def test_query_is_ignored(self):
        self.assertEqual(self.instrument.get(NODE + "/self?a=b").json["label"], "QX3100/QX3300")

    def test_media_types_of_bodies(self):
        path = f"{SINGLE}/{self.receiver}/staged"
        for content_type, status in ((None, 200), ("application/json", 200),
                                     ("application/json; charset=utf-8", 200),
                                     ("Application/JSON", 200), ("text/json", 200),
                                     ("application/vnd.x+json", 200), ("application/sdp", 415),
                                     ("text/plain", 415), ("application/jsonx", 415)):
            with self.subTest(content_type):
                headers = {"Content-Type": content_type} if content_type else {}
                answer = self.instrument.request("PATCH", path, "{}", headers)
                self.assertEqual(answer.status, status)
                if status == 415:
                    self.assert_error(answer, 415, content_type, "application/json")
        for method, path in (("POST", CONNECTION + "/bulk/senders"),
                             ("PUT", f"{NODE}/{self.receiver}/target")):
            self.assert_error(
                self.instrument.request(method, path, "{}", {"Content-Type": "text/xml"}), 415)

    def test_malformed_json_is_shown_with_its_position(self):
        for body, word in (("{\"master_enable\":}", "line 1, column 18"), ("", "line 1, column 1"),
                           ("{}{}", "line 1, column 3"), ("{\n\"a\":1,}", "line 2"),
                           ("{\"master_enable\":true,\"master_enable\":true}", "/master_enable"),
                           (b"{\"sender_id\":\"\xff\"}", "line 1"), ("{\"a\":1e999}", "1e999"),
                           ("// no comments\n{}", "line 1")):
            for method, path in (("PATCH", f"{SINGLE}/{self.receiver}/staged"),
                                 ("POST", CONNECTION + "/bulk/receivers"),
                                 ("PUT", f"{NODE}/{self.receiver}/target")):
                with self.subTest(f"{method} {body}"):
                    self.assert_error(self.instrument.request(method, path, body), 400, word)

    def test_one_connection_for_many_requests(self):
        connection = self.instrument.connect()
        for _ in range(50):
            connection.request("GET", NODE + "/self")
            self.assertEqual(Answer(connection.getresponse()).status, 200)
        connection.close()


class StreamConfigurations(unittest.TestCase):
    """What the stream configuration hides is not there: not listed, not found."""

    # Configuration, then the positions of the senders and receivers that are shown.
    TABLE = [
        ({}, range(6), range(24)),
        ({"senders": "stream 1"}, [0, 4, 5], range(24)),
        ({"receiver_essences": "video only"}, range(6), range(4)),
        ({"audio_groups": 1}, range(6), [0, 1, 2, 3, 4, 8, 12, 16, 20, 21, 22, 23]),
        ({"audio_groups": 2}, range(6),
         [0, 1, 2, 3, 4, 5, 8, 9, 12, 13, 16, 17, 20, 21, 22, 23]),
        ({"sender_essences": "video only"}, range(4), range(24)),
        ({"senders": "stream 1", "sender_essences": "video only",
          "receiver_essences": "video only"}, [0], range(4)),
    ]

    def test_hidden_ids(self):
        with Instrument() as everything:
            all_ids = {kind: everything.ids(kind) for kind in ("senders", "receivers")}
        for streams, senders, receivers in self.TABLE:
            with self.subTest(streams), Instrument(configuration={"streams": streams}) as instrument:
                for kind, shown in (("senders", senders), ("receivers", receivers)):
                    expected = [all_ids[kind][i] for i in shown]
                    self.assertEqual(instrument.ids(kind), expected)
                    # The listing is JSON too when the hidden entries come last.
                    self.assertEqual(instrument.get(f"{SINGLE}/{kind}").json,
                                     [id + "/" for id in expected])
                    self.assertEqual(instrument.node("devices")[0][kind], expected)
                    for id in set(all_ids[kind]) - set(expected):
                        for path in (f"{NODE}/{kind}/{id}", f"{SINGLE}/{kind}/{id}",
                                     f"{SINGLE}/{kind}/{id}/staged"):
                            self.assertEqual(instrument.get(path).status, 404)
                        self.assertEqual(instrument.patch(f"{kind}/{id}", {}).status, 404)
                        bulk = instrument.request("POST", f"{CONNECTION}/bulk/{kind}",
                                                  [{"id": id, "params": {}}])
                        self.assertEqual(bulk.json[0]["code"], 404)
                        if kind == "receivers":
                            self.assertEqual(instrument.request(
                                "PUT", f"{NODE}/receivers/{id}/target", {}).status, 404)


class TheNode(InstrumentTest):
    def test_addresses_agree(self):
        node = self.instrument.node("self")
        self.assertEqual(node["href"], self.instrument.url)
        self.assertEqual(node["api"]["endpoints"],
                         [{"host": "127.0.0.1", "port": self.instrument.port, "protocol": "http"}])
        self.assertEqual(self.instrument.node("devices")[0]["controls"],
                         [{"href": self.instrument.url + "x-nmos/connection/v1.0/",
                           "type": "urn:x-nmos:control:sr-ctrl/v1.0"}])
        for sender in self.instrument.node("senders"):
            self.assertEqual(
                sender["manifest_href"],
                f"{self.instrument.url}x-nmos/connection/v1.0/single/senders/{sender['id']}"
                "/transportfile")

    def test_start(self):
        for sender in self.instrument.resources("senders"):
            active = self.instrument.active(sender)
            self.assertTrue(active["master_enable"])
            for leg, address in zip(active["transport_params"], INTERFACES):
                self.assertEqual(leg["source_ip"], address)
                self.assertRegex(leg["destination_ip"], r"^233\.252\.0\.\d+$")
        for receiver in self.instrument.resources("receivers"):
            active = self.instrument.active(receiver)
            self.assertFalse(active["master_enable"])
            for leg, address in zip(active["transport_params"], INTERFACES):
                self.assertEqual(leg["interface_ip"], address)

    def test_texts_are_those_of_the_library(self):
        for path, words in ((NODE, ["root", "node/v1.2"]),
                            (SINGLE, ["root", "connection/v1.0/single"]),
                            (f"{SINGLE}/{self.instrument.resources('senders')[0]}/constraints",
                             ["senders-constraints", "0"]),
                            (f"{SINGLE}/{self.instrument.resources('receivers')[3]}/staged",
                             ["receivers-staged", "3"])):
            printed = subprocess.run([PROGRAM, "print", *words], check=True,
                                     stdout=subprocess.PIPE).stdout
            self.assertEqual(self.instrument.get(path).body, printed)

    def test_status(self):
        self.assertEqual(self.instrument.get("/healthz").status, 200)
        status = self.instrument.status()
        self.assertGreaterEqual(status["uptime_seconds"], 0)
        self.assertEqual((status["pending_activations"], status["last_failures"]), ([], []))

    def test_resident_memory(self):
        kib = self.instrument.resident_kib()
        print(f"resident memory: {kib} KiB")
        self.assertGreater(kib, 0)



