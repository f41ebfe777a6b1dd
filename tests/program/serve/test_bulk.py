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
                (ids[0], port, 200, None),
                (NOBODY, {}, 404, "id"),
                (ids[1], {**port, **IMMEDIATE}, 200, None),
                (ids[2], {"master_enable": "yes"}, 400, "/master_enable"),
                (ids[3], {**later}, 202, None),
                (ids[4], 5, 400, "object"),
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
                f"{kind}/{ids[0]}")["transport_params"][0]["destination_port"], 6100)
            answer = self.post(kind, [{"id": ids[3], "params": {}}])
            self.assertEqual([entry["code"] for entry in answer.json], [423])
            self.assertIn("mode to null", answer.json[0]["debug"])
            answer = self.post(kind, [{"id": ids[3], "params": {"activation": {"mode": None}}}])
            self.assertEqual(answer.text, f'[{{"code":200,"id":"{ids[3]}"}}]')

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

    def test_more_entries_than_resources(self):
        """Refused before any of them is done."""
        for kind in ("senders", "receivers"):
            ids = self.instrument.ids(kind)
            entries = [{"id": id, "params": {}} for id in ids]
            answer = self.post(kind, entries)
            self.assertEqual([entry["code"] for entry in answer.json], [200] * len(ids))
            before = self.instrument.staged(f"{kind}/{ids[0]}")
            entries[0]["params"] = {"master_enable": not before["master_enable"]}
            for more in (1, 1000):
                others = [{"id": f"{i:08x}-0000-4000-8000-000000000000", "params": {}}
                          for i in range(more)]
                self.assert_error(self.post(kind, entries + others), 400,
                                  f"the document: found an array of {len(ids) + more}, allowed: "
                                  f"at most {len(ids)} entries, one for each resource")
            self.assertEqual(self.instrument.staged(f"{kind}/{ids[0]}"), before)

    def test_an_id_twice(self):
        id = self.instrument.ids("receivers")[6]
        before = self.instrument.staged("receivers/" + id)
        change = {"id": id, "params": {"master_enable": not before["master_enable"]}}
        nobody = {"id": NOBODY, "params": {}}
        for entries, finding in (
                ([change, change], '/1: "id" is that of /0, allowed: one entry for each id'),
                ([nobody, change, nobody], '/2: "id" is that of /0, allowed: one entry for each id')):
            self.assert_error(self.post("receivers", entries), 400, finding)
        self.assertEqual(self.instrument.staged("receivers/" + id), before)

    def test_no_request_has_an_answer_much_longer_than_itself(self):
        """The worst that is known: files about which there is most to say."""
        data = ("v=0\nm=video 5004 RTP/AVP 96\nc=IN IP4 233.252.0.1\na=rtpmap:96 raw/90000\n" +
                "a=fmtp:96 TCS=;colorimetry=;PM=;SSN=;TP=;\n" * 90)
        params = {"transport_file": {"type": "application/sdp", "data": data}}
        ids = self.instrument.ids("receivers")
        answer = self.post("receivers", [{"id": id, "params": params} for id in ids])
        self.assertEqual([entry["code"] for entry in answer.json], [400] * len(ids))
        for entry in answer.json[:4]:
            lines = entry["debug"].splitlines()
            self.assertEqual(len(lines), 1 + 20 + 1)
            self.assertEqual(lines[-1], "and 430 more")
        self.assertLess(len(answer.body), 100_000)
