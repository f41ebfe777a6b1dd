# SPDX-License-Identifier: Apache-2.0
"""The page /metrics: every line of it, and what is counted."""

import re
import threading
import time
import unittest

from instrument import CONNECTION, IMMEDIATE, NODE, SINGLE, Instrument, InstrumentTest

NAME = r"[a-zA-Z_:][a-zA-Z0-9_:]*"
LABEL = r'([a-zA-Z_][a-zA-Z0-9_]*)="((?:[^\\"\n]|\\[\\"n])*)"'
SAMPLE = re.compile(rf"({NAME})(?:\{{({LABEL}(?:,{LABEL})*)\}})? ([0-9]+(?:\.[0-9]+)?)")
PREFIX = "nmos_instrument_"
REQUESTS = PREFIX + "http_requests_total"
REFUSALS = PREFIX + "refusals_total"
ACTIVATIONS = PREFIX + "activations_total"

RECEIVER = NODE + "/receivers/{receiver}"
STAGED = SINGLE + "/receivers/{receiver}/staged"


def parse(page):
    """{name: {labels: value}}; labels are a tuple of (name, value). Checks the form of every line,
    and that each metric begins with its meaning and its type."""
    if not page.endswith("\n"):
        raise AssertionError("the last line has no end")
    metrics, types, helped = {}, {}, None
    for line in page[:-1].split("\n"):
        if line.startswith("# HELP "):
            _, _, helped, text = line.split(" ", 3)
            if helped in types or not text.endswith("."):
                raise AssertionError(line)
        elif line.startswith("# TYPE "):
            _, _, name, kind = line.split(" ")
            if name != helped or kind not in ("counter", "gauge", "summary"):
                raise AssertionError(line)
            if (kind == "counter") != name.endswith("_total"):
                raise AssertionError(line)
            types[name] = kind
        else:
            match = SAMPLE.fullmatch(line)
            if match is None:
                raise AssertionError(line)
            name = match[1]
            if types[helped] == "summary":
                name = name.removesuffix("_sum").removesuffix("_count")
            if name != helped or not name.startswith(PREFIX):
                raise AssertionError(line)
            labels = tuple(re.findall(LABEL, match[2] or ""))
            if labels in metrics.setdefault(match[1], {}):
                raise AssertionError("twice: " + line)
            value = match[match.lastindex]
            metrics[match[1]][labels] = float(value) if "." in value else int(value)
    return metrics


def of_request(route, method, status):
    return (("route", route), ("method", method), ("status", status))


class Metrics(InstrumentTest):
    maxDiff = None

    def metrics(self):
        answer = self.instrument.get("/metrics")
        self.assertEqual(answer.status, 200)
        self.assertEqual(answer.headers["content-type"],
                         "text/plain; version=0.0.4; charset=utf-8")
        return parse(answer.text)

    def counters(self):
        """Of all that tests cause, except for the requests that read them."""
        metrics = self.metrics()
        counters = {(name, labels): value for name in (REQUESTS, REFUSALS, ACTIVATIONS)
                    for labels, value in metrics.get(name, {}).items()}
        counters.pop((REQUESTS, of_request("/metrics", "GET", "200")), None)
        return counters

    def settled(self):
        """The counters when nothing is on its way any more: a request counts when its answer has
        been sent, which may be after the client has read it."""
        before = self.counters()
        while True:
            time.sleep(0.1)
            after = self.counters()
            if after == before:
                return after
            before = after

    def counted_since(self, before, expected):
        """Waits until what has been counted since `before` is what is expected."""
        end = time.monotonic() + 10
        while True:
            found = {key: value - before.get(key, 0) for key, value in self.counters().items()
                     if value != before.get(key, 0)}
            if found == expected:
                return
            if time.monotonic() > end:
                self.assertEqual(found, expected)
            time.sleep(0.05)

    def test_names(self):
        self.instrument.get("/")
        names = self.metrics()
        for name in ("uptime_seconds", "http_requests_total", "activations_total"):
            self.assertIn(PREFIX + name, names)
        self.assertEqual(set(names[ACTIVATIONS]), {(("result", "done"),), (("result", "failed"),)})

    def test_uptime(self):
        first = self.metrics()[PREFIX + "uptime_seconds"][()]
        time.sleep(1.1)
        self.assertGreater(self.metrics()[PREFIX + "uptime_seconds"][()], first)

    def test_requests(self):
        receiver = self.instrument.resources("receivers")[0]
        before = self.settled()
        for _ in range(3):
            self.instrument.get(f"{NODE}/{receiver}")
        self.instrument.get(f"{NODE}/{receiver}/")
        self.instrument.request("HEAD", f"{NODE}/{receiver}")
        self.instrument.request("OPTIONS", f"{NODE}/{receiver}")
        self.instrument.request("DELETE", f"{NODE}/{receiver}")
        self.instrument.patch(receiver, IMMEDIATE)
        self.instrument.patch(receiver, {"nonsense": 1})
        self.instrument.patch(receiver, "{")
        self.instrument.request("PUT", f"{NODE}/{receiver}/target", {})
        self.instrument.request("POST", CONNECTION + "/bulk/receivers", [
            {"id": receiver.split("/")[1], "params": IMMEDIATE},
            {"id": "00000000-0000-4000-8000-000000000000", "params": {}}])
        self.instrument.request("OPTIONS", "*")
        self.counted_since(before, {
            (REQUESTS, of_request(RECEIVER, "GET", "200")): 4,
            (REQUESTS, of_request(RECEIVER, "HEAD", "200")): 1,
            (REQUESTS, of_request(RECEIVER, "OPTIONS", "200")): 1,
            (REQUESTS, of_request(RECEIVER, "DELETE", "405")): 1,
            (REQUESTS, of_request(STAGED, "PATCH", "200")): 1,
            (REQUESTS, of_request(STAGED, "PATCH", "400")): 2,
            (REQUESTS, of_request(RECEIVER + "/target", "PUT", "202")): 1,
            (REQUESTS, of_request(CONNECTION + "/bulk/receivers", "POST", "200")): 1,
            (REQUESTS, of_request("none", "OPTIONS", "200")): 1,
            (REFUSALS, (("status", "400"),)): 2,
            (REFUSALS, (("status", "404"),)): 1,
            (ACTIVATIONS, (("result", "done"),)): 3,
        })

    def test_a_manifest_that_cannot_be_used_is_a_refusal(self):
        receiver = self.instrument.resources("receivers")[1]
        sender = {**self.instrument.node("senders")[0], "manifest_href": "http://10.1.2.3/"}
        before = self.settled()
        answer = self.instrument.request("PUT", f"{NODE}/{receiver}/target", sender)
        self.assertEqual(answer.status, 500)
        self.counted_since(before, {
            (REQUESTS, of_request(RECEIVER + "/target", "PUT", "500")): 1,
            (REFUSALS, (("status", "500"),)): 1,
        })

    def test_clients_cannot_make_values(self):
        """However many paths and methods they invent."""
        receiver = self.instrument.resources("receivers")[0]
        before = self.settled()
        strange = ['/"}', "/a\\", "/%0A", "/x-nmos/%22", NODE + "/receivers/{receiver}",
                   NODE + "/receivers/" + "0" * 36, "/metrics/metrics"]
        strange += [f"/{i}" for i in range(200)]
        for path in strange:
            self.assertEqual(self.instrument.get(path).status, 404)
        for method in ("BREW", "TRACE", "get", "X" * 100):
            self.assertEqual(self.instrument.request(method, f"{NODE}/{receiver}").status, 405)
            self.assertEqual(self.instrument.request(method, "/nothing").status, 404)
        for method in ('A"', "A\\B"):  # no methods of HTTP
            self.assertEqual(self.instrument.request(method, f"{NODE}/{receiver}").status, 400)
        self.counted_since(before, {
            (REQUESTS, of_request("none", "GET", "404")): len(strange),
            (REQUESTS, of_request(RECEIVER, "other", "405")): 4,
            (REQUESTS, of_request("none", "other", "404")): 4,
            (REQUESTS, of_request("none", "other", "400")): 2,
        })

    def test_refused_before_the_routes(self):
        before = self.settled()
        answer = self.instrument.request("GET", NODE + "/self", headers={
            "Transfer-Encoding": "gzip"})
        self.assertEqual(answer.status, 501)
        self.counted_since(before, {(REQUESTS, of_request("none", "GET", "501")): 1})

    def test_nothing_is_lost_between_threads(self):
        before = self.settled()

        def get():
            connection = self.instrument.connect()
            for _ in range(100):
                connection.request("GET", "/healthz")
                connection.getresponse().read()
            connection.close()

        threads = [threading.Thread(target=get) for _ in range(8)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.counted_since(before, {(REQUESTS, of_request("/healthz", "GET", "200")): 800})


class ReadOnly(unittest.TestCase):
    def test_refusals_of_changes(self):
        with Instrument("--read-only") as instrument:
            receiver = instrument.resources("receivers")[0]
            self.assertEqual(instrument.patch(receiver, IMMEDIATE).status, 403)
            self.assertEqual(instrument.patch(receiver, "{").status, 403)
            metrics = parse(instrument.get("/metrics").text)
            self.assertEqual(metrics[REFUSALS], {(("status", "403"),): 2})
