# SPDX-License-Identifier: Apache-2.0
"""/events: server-sent events for whoever watches the instrument."""

import http.client
import json
import signal
import socket
import time
import unittest

from instrument import IMMEDIATE, NODE, SINGLE, Instrument, InstrumentTest

MOST = 32  # of one client
STATUS = "/status"
ENDED = '"GET" "/events" 200'  # in the log, when a watcher has gone


class Watcher:
    """A client of /events; `with` closes it."""

    def __init__(self, instrument, method="GET", receive_buffer=None):
        self.connection = http.client.HTTPConnection(instrument.host, instrument.port, timeout=10)
        if receive_buffer:
            self.connection.sock = socket.socket()
            self.connection.sock.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
            self.connection.sock.settimeout(10)
            self.connection.sock.connect((instrument.host, instrument.port))
        self.connection.request(method, "/events", headers={"Accept": "text/event-stream"})
        self.response = self.connection.getresponse()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        self.response.close()
        self.connection.close()

    def next(self):
        """The name and the JSON of the next event; None at the end."""
        name, data = None, []
        for line in iter(lambda: self.response.readline().decode("utf-8"), ""):
            line = line.removesuffix("\n")
            if line == "":
                return name, json.loads("\n".join(data))
            field, _, value = line.partition(": ")
            if field == "event":
                name = value
            elif field == "data":
                data.append(value)
            elif (field, value) != ("retry", "1000"):
                raise AssertionError(f"unexpected line: {line}")
        return None

    def next_of(self, *paths):
        """What the next event says that has one of these paths."""
        while True:
            name, texts = self.next()
            if name != "changes":
                raise AssertionError(f"unexpected event: {name}")
            if any(path in texts for path in paths):
                return texts


def without_clocks(status):
    return {name: value for name, value in status.items() if name not in ("uptime_seconds", "tai")}


class TheFirstEvent(InstrumentTest):
    # The only test: who watches beside others may be told a status that is a second old.
    def test_the_first_event_has_everything(self):
        paths = self.paths()
        self.assertEqual(len(paths), 5 + 2 * (6 + 24))
        with Watcher(self.instrument) as watcher:
            name, texts = watcher.next()
            self.assertEqual(name, "all")
            self.assertEqual(set(texts) - {"/layout"}, set(paths))
            for path, text in texts.items():
                answer = self.instrument.get(path).json
                if path == STATUS:
                    text, answer = without_clocks(text), without_clocks(answer)
                self.assertEqual(text, answer, path)

    def paths(self):
        """All that is watched, but for /layout."""
        paths = [STATUS] + [f"{NODE}/{kind}" for kind in ("self", "devices", "senders", "receivers")]
        for kind in ("senders", "receivers"):
            for resource in self.instrument.resources(kind):
                paths += [f"{SINGLE}/{resource}/staged", f"{SINGLE}/{resource}/active"]
        return paths


class Events(InstrumentTest):
    def test_headers(self):
        with Watcher(self.instrument) as watcher:
            self.assertEqual(watcher.response.status, 200)
            self.assertEqual(watcher.response.getheader("Content-Type"), "text/event-stream")
            self.assertEqual(watcher.response.getheader("Cache-Control"), "no-store")
            self.assertEqual(watcher.response.getheader("Access-Control-Allow-Origin"), "*")

    def test_a_change_by_somebody_else(self):
        receiver = self.instrument.resources("receivers")[3]
        active = f"{SINGLE}/{receiver}/active"
        with Watcher(self.instrument) as first, Watcher(self.instrument) as second:
            port = first.next()[1][active]["transport_params"][0]["destination_port"]
            second.next()
            times = []
            for port in range(port + 1, port + 6):
                begin = time.monotonic()
                patch = {"transport_params": [{"destination_port": port}, {}], **IMMEDIATE}
                self.assertEqual(self.instrument.patch(receiver, patch).status, 200)
                for watcher in (first, second):
                    self.assert_told(watcher, receiver, port)
                times.append(time.monotonic() - begin)
            # One of them at least is not held up by a busy machine.
            self.assertLess(min(times), 1)

    def assert_told(self, watcher, receiver, port):
        active = f"{SINGLE}/{receiver}/active"
        changed = {active, f"{SINGLE}/{receiver}/staged", f"{NODE}/receivers"}
        texts = {}
        while not changed <= set(texts):
            texts.update(watcher.next_of(*changed))
        self.assertEqual(set(texts) - {STATUS}, changed)
        self.assertEqual(texts[active]["transport_params"][0]["destination_port"], port)
        for path in changed:
            self.assertEqual(texts[path], self.instrument.get(path).json)

    def test_without_a_change_there_is_the_status_once_a_second(self):
        with Watcher(self.instrument) as watcher:
            watcher.next()
            begin = time.monotonic()
            for _ in range(3):
                name, texts = watcher.next()
                self.assertEqual(name, "changes")
                self.assertEqual(list(texts), [STATUS])
            self.assertGreater(time.monotonic() - begin, 1.8)

    def test_a_scheduled_activation(self):
        sender = self.instrument.resources("senders")[1]
        scheduled = {"activation": {"mode": "activate_scheduled_relative", "requested_time": "60:0"}}
        with Watcher(self.instrument) as watcher:
            watcher.next()
            self.assertEqual(self.instrument.patch(sender, scheduled).status, 202)
            staged = f"{SINGLE}/{sender}/staged"
            texts = watcher.next_of(staged)
            self.assertEqual(texts[staged]["activation"]["mode"], "activate_scheduled_relative")
            status = texts if STATUS in texts else watcher.next_of(STATUS)
            self.assertEqual([each["resource"] for each in status[STATUS]["pending_activations"]],
                             [sender])
            cancel = {"activation": {"mode": None}}
            self.assertEqual(self.instrument.patch(sender, cancel).status, 200)
            texts = watcher.next_of(staged)
            self.assertIsNone(texts[staged]["activation"]["mode"])

    def test_other_methods(self):
        with Watcher(self.instrument, method="HEAD") as watcher:
            self.assertEqual(watcher.response.status, 200)
            self.assertEqual(watcher.response.getheader("Content-Type"), "text/event-stream")
            self.assertEqual(watcher.response.read(), b"")
        answer = self.instrument.request("POST", "/events", {})
        self.assert_error(answer, 405)
        self.assertEqual(answer.headers["allow"], "GET, HEAD, OPTIONS")

    def test_a_client_of_http_1_0(self):
        with socket.create_connection((self.instrument.host, self.instrument.port),
                                      timeout=10) as connection:
            connection.sendall(b"GET /events HTTP/1.0\r\n\r\n")
            received = b""
            while received.count(b"\n\n") < 2:
                received += connection.recv(65536)
        head, _, body = received.partition(b"\r\n\r\n")
        self.assertNotIn(b"chunked", head)
        self.assertTrue(body.startswith(b"retry: 1000\nevent: all\ndata: {"), body[:100])


class ManyWatchers(InstrumentTest):
    def test_so_many_and_no_more(self):
        before = self.instrument.resident_kib()
        watchers = [Watcher(self.instrument) for _ in range(MOST)]
        try:
            for watcher in watchers:
                self.assertEqual(watcher.response.status, 200)
                self.assertEqual(watcher.next()[0], "all")
            self.assert_error(self.instrument.get("/events"), 503, "32 at once for one client, 128 in all")
            # Watchers that read take less than 200 KiB each. The sanitizers need more.
            if self.instrument.resident_kib() < 100_000:
                self.assertLess(self.instrument.resident_kib() - before, MOST * 200)
            self.change()
            for watcher in watchers:
                watcher.next_of(f"{SINGLE}/{self.receiver}/active")
            watchers.pop().close()
            self.wait_for_a_place()
        finally:
            for watcher in watchers:
                watcher.close()

    @property
    def receiver(self):
        return self.instrument.resources("receivers")[0]

    def change(self):
        port = self.instrument.active(self.receiver)["transport_params"][0]["destination_port"]
        patch = {"transport_params": [{"destination_port": port % 60000 + 1}, {}], **IMMEDIATE}
        self.assertEqual(self.instrument.patch(self.receiver, patch).status, 200)

    def wait_for_a_place(self):
        end = time.monotonic() + 20
        while True:
            with Watcher(self.instrument) as watcher:
                if watcher.response.status == 200:
                    return
            self.assertLess(time.monotonic(), end)
            time.sleep(0.1)


class SlowReaders(unittest.TestCase):
    def test_one_that_pauses_gets_the_latest_of_everything(self):
        with Instrument() as instrument:
            receivers = instrument.resources("receivers")
            with Watcher(instrument, receive_buffer=4096) as slow:
                texts = {}
                texts.update(slow.next()[1])
                # More than the buffers on the way have room for.
                for number in range(12):
                    for receiver in receivers:
                        patch = {"transport_params": [{"destination_port": 7000 + number}, {}],
                                 **IMMEDIATE}
                        self.assertEqual(instrument.patch(receiver, patch).status, 200)
                    time.sleep(0.3)
                paths = [f"{SINGLE}/{receiver}/active" for receiver in receivers]
                end = time.monotonic() + 20
                while {texts[path]["transport_params"][0]["destination_port"]
                       for path in paths} != {7011}:
                    self.assertLess(time.monotonic(), end)
                    texts.update(slow.next()[1])
                for path in texts:
                    if path != STATUS:
                        self.assertEqual(texts[path], instrument.get(path).json, path)

    def test_one_that_stops_reading_is_ended(self):
        with Instrument() as instrument:
            receivers = instrument.resources("receivers")
            with Watcher(instrument, receive_buffer=4096) as watcher:
                watcher.next()
                end = time.monotonic() + 240
                number = 0
                # Its answers do not fit into the buffers any more; 30 seconds later it is ended.
                while ENDED not in instrument.log:
                    self.assertLess(time.monotonic(), end)
                    number += 1
                    for receiver in receivers:
                        instrument.patch(receiver, {
                            "transport_params": [{"destination_port": 1000 + number}, {}],
                            **IMMEDIATE}, source="127.0.0.2")  # has its own lines in the log
                    time.sleep(0.2)
            self.assertEqual(instrument.get("/healthz").status, 200)


class TheEnd(unittest.TestCase):
    def test_who_goes_is_noticed_and_counted_with_its_status(self):
        with Instrument() as instrument:
            with Watcher(instrument) as watcher:
                watcher.next()
                self.assertNotIn(ENDED, instrument.log)
            instrument.wait_for_log(ENDED)
            self.assertIn('requests_total{route="/events",method="GET",status="200"} 1\n',
                          instrument.get("/metrics").text)

    def test_watchers_do_not_delay_it(self):
        with Instrument() as instrument:
            watchers = [Watcher(instrument) for _ in range(5)]
            for watcher in watchers:
                watcher.next()
            begin = time.monotonic()
            self.assertEqual(instrument.end_program(signal.SIGTERM), 0)
            # Requests that do not end get 1.5 seconds.
            self.assertLess(time.monotonic() - begin, 1.5)
            for watcher in watchers:
                while watcher.next():  # what was under way; then the end in good order
                    pass
                watcher.close()


if __name__ == "__main__":
    unittest.main()
