# SPDX-License-Identifier: Apache-2.0
"""The refused changes that /status shows."""

import json
import time
import unittest

from instrument import (CONNECTION, NODE, SINGLE, Instrument, InstrumentTest, file_patch, seconds)
from manifests import SENDER, ManifestServer

UNKNOWN = "00000000-0000-4000-8000-000000000000"
SCHEDULED = {"activation": {"mode": "activate_scheduled_relative", "requested_time": "1000:0"}}


class Refusals(InstrumentTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.receivers = cls.instrument.resources("receivers")

    def latest(self, count=1):
        return self.instrument.status()["last_refusals"][:count]

    def assert_latest(self, answer, what):
        """The newest is that of the answer."""
        self.assertGreaterEqual(answer.status, 400, answer)
        latest, = self.latest()
        self.assertEqual(set(latest), {"time", "client", "what", "status", "error", "debug"})
        self.assertEqual(latest["what"], what)
        self.assertEqual(latest["status"], answer.status)
        self.assertEqual(latest["error"], answer.json["error"])
        self.assertEqual(latest["debug"], answer.json["debug"].rstrip("\n").replace("\n", " | "))
        self.assertRegex(latest["client"], r"^127\.0\.0\.1:[0-9]+$")

    def test_of_every_kind(self):
        receiver = self.receivers[0]
        staged = f"{SINGLE}/{receiver}/staged"
        target = f"{NODE}/{receiver}/target"
        bulk = f"{CONNECTION}/bulk/receivers"
        for method, path, body, media_type, what in (
                ("PATCH", staged, "{", "application/json", f"PATCH {staged}"),
                ("PATCH", staged, "{}", "text/plain", f"PATCH {staged}"),
                ("PATCH", staged, '{"x": 1, "master_enable": 2}', "application/json", receiver),
                ("PATCH", staged, json.dumps(file_patch("v=1\r\n")), "application/json", receiver),
                ("PUT", target, "[]", "application/json", f"PUT {target}"),
                ("POST", bulk, "{}", "application/json", f"POST {bulk}")):
            with self.subTest(f"{method} {path} {body}"):
                answer = self.instrument.request(method, path, body, {"Content-Type": media_type})
                self.assert_latest(answer, what)

    def test_its_time_is_tai(self):
        tai = self.instrument.status()["tai"]
        time.sleep(0.01)
        self.instrument.patch(self.receivers[0], {"x": 1})
        status = self.instrument.status()
        noted = seconds(status["last_refusals"][0]["time"])
        self.assertLess(seconds(tai), noted)
        self.assertLess(noted, seconds(status["tai"]))

    def test_the_entries_of_a_bulk_request(self):
        sender, other = self.instrument.ids("senders")[:2]
        answer = self.instrument.request("POST", f"{CONNECTION}/bulk/senders", [
            {"id": sender, "params": {"x": 1}}, {"id": UNKNOWN, "params": {}},
            {"id": other, "params": {}}])
        self.assertEqual([entry["code"] for entry in answer.json], [400, 404, 200])
        self.assertEqual([(one["status"], one["what"]) for one in self.latest(2)],
                         [(404, f"senders/{UNKNOWN}"), (400, f"senders/{sender}")])

    def test_a_locked_resource(self):
        receiver = self.receivers[1]
        self.assertEqual(self.instrument.patch(receiver, SCHEDULED).status, 202)
        answer = self.instrument.patch(receiver, {"master_enable": True})
        self.assertEqual(answer.status, 423)
        self.assert_latest(answer, receiver)
        self.instrument.patch(receiver, {"activation": {"mode": None}})

    def test_what_is_no_change_is_not_there(self):
        before = self.latest(10)
        for method, path in (("GET", "/nothing"), ("BREW", "/status"), ("GET", f"{SINGLE}/x"),
                             ("PATCH", f"{SINGLE}/receivers/{UNKNOWN}/staged")):
            self.assertIn(self.instrument.request(method, path).status, (404, 405))
        self.assertEqual(self.instrument.patch(self.receivers[2], {}).status, 200)
        self.assertEqual(self.latest(10), before)

    def test_the_latest_ten_newest_first(self):
        for receiver in self.receivers[:13]:
            self.instrument.patch(receiver, {"x": 1})
        self.assertEqual([one["what"] for one in self.instrument.status()["last_refusals"]],
                         self.receivers[12:2:-1])

    def test_long_reasons_are_cut(self):
        self.instrument.patch(self.receivers[0], {f"key{i}": 1 for i in range(100)})
        debug = self.latest()[0]["debug"]
        self.assertEqual(len(debug), 1004)
        self.assertTrue(debug.endswith(" ..."), debug)
        self.assertNotIn("\n", debug)

    def test_they_do_not_say_whether_there_was_a_manifest(self):
        receiver = self.receivers[3]
        with ManifestServer() as server:
            told = []
            for path in ("/nothing", "/audio", "/empty"):
                answer = self.instrument.request(
                    "PUT", f"{NODE}/{receiver}/target",
                    {**SENDER, "manifest_href": server.url(path)})
                self.assertEqual(answer.status, 500)
                self.assert_latest(answer, receiver)
                latest, = self.latest()
                told.append({name: latest[name] for name in ("what", "status", "error", "debug")})
                self.assertNotEqual(self.latest(2)[-1]["time"], latest["time"])
            self.assertEqual(told, [told[0]] * 3)
            self.assertEqual(server.paths, ["/nothing", "/audio", "/empty"])


class NotAllowed(unittest.TestCase):
    def test_clients_that_may_not_change_anything(self):
        with Instrument("--allow", "127.0.0.2") as instrument:
            receiver = instrument.resources("receivers")[0]
            self.assertEqual(instrument.status()["last_refusals"], [])
            self.assertEqual(instrument.patch(receiver, {}, source="127.0.0.3").status, 403)
            refusal, = instrument.status()["last_refusals"]
            self.assertTrue(refusal.pop("client").startswith("127.0.0.3:"))
            del refusal["time"]
            self.assertEqual(refusal, {
                "what": f"PATCH {SINGLE}/{receiver}/staged", "status": 403,
                "error": "Changes are not allowed",
                "debug": "127.0.0.3 is not among the clients that may change something"})
