# SPDX-License-Identifier: Apache-2.0
"""Bulk POST: one entry for each in the request, each as a single PATCH would have it."""

from instrument import CONNECTION, IMMEDIATE, InstrumentTest

NOBODY = "00000000-0000-4000-8000-000000000000"


class Bulk(InstrumentTest):
    def post(self, kind, body):
        return self.instrument.request("POST", f"{CONNECTION}/bulk/{kind}", body)

    def test_entries_in_order(self):
        for kind in ("senders", "receivers"):
            ids = self.instrument.ids(kind)
            port = {"transport_params": [{"destination_port": 6100}, {}]}
            later = {"activation": {"mode": "activate_scheduled_relative",
                                    "requested_time": "3600:0"}}
            request = [
                (ids[0], {}, 200, None),
                (NOBODY, {}, 404, "id"),
                (ids[1], {**port, **IMMEDIATE}, 200, None),
                (ids[1], {"master_enable": "yes"}, 400, "/master_enable"),
                (ids[1], {**later}, 202, None),
                (ids[1], {}, 423, "mode to null"),
                (ids[1], {"activation": {"mode": None}}, 200, None),
                (ids[2], 5, 400, "object"),
                (ids[2], port, 200, None),
                (ids[2], port, 200, None),
            ]
            answer = self.post(kind, [{"id": id, "params": params} for id, params, _, _ in request])
            self.assertEqual(answer.status, 200, answer)
            self.assertEqual(answer.headers["content-type"], "application/json")
            self.assertEqual([(entry["id"], entry["code"]) for entry in answer.json],
                             [(id, code) for id, _, code, _ in request])
            for entry, (_, _, code, word) in zip(answer.json, request):
                if code < 400:
                    self.assertEqual(set(entry), {"id", "code"})
                else:
                    self.assertEqual(set(entry), {"id", "code", "error", "debug"})
                    self.assertIn(word, entry["debug"])
            self.assertEqual(self.instrument.active(
                f"{kind}/{ids[1]}")["transport_params"][0]["destination_port"], 6100)
            self.assertEqual(self.instrument.staged(
                f"{kind}/{ids[2]}")["transport_params"][0]["destination_port"], 6100)

    def test_nothing_to_do(self):
        self.assertEqual(self.post("senders", []).json, [])

    def test_malformed(self):
        id = self.instrument.ids("receivers")[5]
        before = self.instrument.staged("receivers/" + id)
        good = {"id": id, "params": {"master_enable": not before["master_enable"]}}
        for body, path in (({}, "the document"), ("1", "the document"), ([1], "/0"),
                           ([good, {"id": id}], "/1"), ([good, {"params": {}}], "/1"),
                           ([{**good, "more": 1}], "/0/more"),
                           ([good, {"id": 5, "params": {}}], "/1/id"),
                           ([{"id": id.upper(), "params": {}}], "/0/id"),
                           ([{"id": "no", "params": {}}], "/0/id"), ([[]], "/0")):
            with self.subTest(body):
                self.assert_error(self.post("receivers", body), 400, path)
                self.assertEqual(self.instrument.staged("receivers/" + id), before)

    def test_many(self):
        id = self.instrument.ids("receivers")[6]
        entries = [{"id": id, "params": {}}] * 9000
        answer = self.post("receivers", entries)
        self.assertEqual([entry["code"] for entry in answer.json], [200] * 9000)
