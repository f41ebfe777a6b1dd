# SPDX-License-Identifier: Apache-2.0
"""An instrument whose memory runs short: it answers 500 or closes a connection, and goes on."""

import contextlib
import http.client
import json
import os
import pathlib
import random
import signal
import socket
import tempfile
import threading
import time
import unittest

from instrument import CONNECTION, IMMEDIATE, NODE, SINGLE, Instrument, file_patch, sdp_file, \
    video_medium
from manifests import SENDER, ManifestServer
from short_memory import ShortMemory

PAUSE = 0.01  # seconds between two requests, so that the ports last for ten minutes
LONGEST = 12  # seconds; a change that cannot be saved is answered after 5
SECONDS = float(os.environ.get("NMOS_SHORT_MEMORY_SECONDS", "10"))


class Changes(threading.Thread):
    """Changes one receiver again and again, and remembers what was answered."""

    def __init__(self, instrument, receiver, end):
        super().__init__()
        self.instrument, self.receiver, self.end = instrument, receiver, end
        self.answered = None  # the port of the last change that was answered 200
        self.possible = {None}  # ports that may be in force: that one, and later ones without a 200
        self.statuses = {}
        self.unexpected = []

    def run(self):
        port = 0
        while time.monotonic() < self.end:
            time.sleep(PAUSE)
            port = port % 65535 + 1
            self.possible.add(port)
            status = self.change(port)
            self.statuses[status] = self.statuses.get(status, 0) + 1
            if status == 200:
                self.answered = port
                self.possible = {port}
            elif status not in (None, 500, 503):
                self.unexpected.append(status)

    def change(self, port):
        begin = time.monotonic()
        status = self.status_of(port)
        if time.monotonic() - begin > LONGEST:
            self.unexpected.append("no answer")
        return status

    def status_of(self, port):
        patch = {"transport_params": [{"destination_port": port}, {}], **IMMEDIATE}
        with contextlib.suppress(OSError, http.client.HTTPException):
            return self.instrument.patch(self.receiver, patch).status
        return None


class Readers(threading.Thread):
    """Everything else that a client may ask for."""

    def __init__(self, instrument, receiver, others, end):
        super().__init__()
        self.instrument, self.end = instrument, end
        file = file_patch(sdp_file(video_medium(source="203.0.113.1")))
        target = {**SENDER, "manifest_href": others}
        relative = {"activation": {"mode": "activate_scheduled_relative",
                                   "requested_time": "0:20000000"}}
        self.requests = [
            ("GET", NODE + "/self", None), ("GET", NODE + "/receivers", None),
            ("GET", "/status", None), ("GET", "/nothing", None),
            ("GET", "/layout", None), ("GET", "/panel/index.html", None),
            ("POST", f"/check-sdp/{receiver.split('/')[1]}", sdp_file(video_medium())),
            ("POST", f"/check-sdp/{receiver.split('/')[1]}", "a=mid:x\r\n" * 2000),
            ("PATCH", f"{SINGLE}/{receiver}/staged", {**file, **IMMEDIATE}),
            ("PATCH", f"{SINGLE}/{receiver}/staged", relative),
            ("PATCH", f"{SINGLE}/{receiver}/staged", {"activation": {"mode": None}}),
            ("PATCH", f"{SINGLE}/{receiver}/staged", {"x": [1] * 1000}),
            ("POST", CONNECTION + "/bulk/receivers",
             [{"id": receiver.split("/")[1], "params": file}]),
            ("PUT", f"{NODE}/{receiver}/target", target),
            ("PUT", f"{NODE}/{receiver}/target", {}),
        ]
        self.unexpected = []

    def run(self):
        chance = random.Random(3)
        while time.monotonic() < self.end:
            time.sleep(PAUSE)
            method, path, body = chance.choice(self.requests)
            begin = time.monotonic()
            with contextlib.suppress(OSError, http.client.HTTPException):
                answer = self.instrument.request(method, path, body)
                if answer.status not in (200, 202, 400, 404, 423, 500, 503):
                    self.unexpected.append(answer)
            if time.monotonic() - begin > LONGEST:
                self.unexpected.append("no answer")


class Watcher(threading.Thread):
    """Comes to /events again and again, and stays for a while."""

    def __init__(self, instrument, end):
        super().__init__()
        self.instrument, self.end = instrument, end
        self.events = 0
        self.unexpected = []

    def run(self):
        while time.monotonic() < self.end:
            time.sleep(PAUSE)
            connection = self.instrument.connect()
            with contextlib.suppress(OSError, http.client.HTTPException), \
                    contextlib.closing(connection):
                connection.request("GET", "/events")
                self.watch(connection.getresponse())

    def watch(self, response):
        if response.status not in (200, 500, 503):
            self.unexpected.append(response.status)
        leave = time.monotonic() + 1
        while response.status == 200 and time.monotonic() < leave:
            line = response.readline()
            if line.startswith(b"event: "):
                self.events += 1
            elif line == b"":
                return


class Memory(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.state = str(pathlib.Path(folder.name) / "state")
        self.memory = ShortMemory(folder.name)
        self.manifests = ManifestServer()
        self.addCleanup(self.manifests.__exit__)

    def test_no_death_and_no_lost_change(self):
        with Instrument("--state", self.state, environment=self.memory.environment) as instrument:
            receivers = instrument.resources("receivers")
            end = time.monotonic() + SECONDS
            changes = [Changes(instrument, receiver, end) for receiver in receivers[:2]]
            readers = [Readers(instrument, receiver, self.manifests.url("/good"), end)
                       for receiver in receivers[4:6]]
            watchers = [Watcher(instrument, end) for _ in range(2)]
            others = readers + watchers
            for thread in changes + others:
                thread.start()
            # Long enough to save: what fails too often is not tried for seconds.
            self.memory.run_short(SECONDS, pause=0.06)
            for thread in changes + others:
                thread.join()
            self.memory.set(0)
            self.assertIsNone(instrument.process.poll(), instrument.log[-2000:])
            for thread in changes + others:
                self.assertEqual(thread.unexpected, [])
            for watcher in watchers:
                self.assertGreater(watcher.events, 5)
            # As soon as there is memory, everything works.
            self.assertEqual(instrument.get("/healthz").status, 200)
            for change in changes:
                self.assertGreater(change.statuses[200], 10)
                self.assert_kept(instrument, change)
            last = receivers[10]
            patch = {"transport_params": [{"destination_port": 4711}, {}], **IMMEDIATE}
            deadline = time.monotonic() + 20  # it may be waiting to save again
            while instrument.patch(last, patch).status != 200:
                self.assertLess(time.monotonic(), deadline, instrument.status())
                time.sleep(0.2)
            kept = [instrument.active(change.receiver) for change in changes]
            instrument.process.kill()
        with Instrument("--state", self.state) as instrument:
            self.assertNotIn("damaged", instrument.log)
            self.assertEqual([instrument.active(change.receiver) for change in changes], kept)
        print(f"{SECONDS:.0f} s:", *(change.statuses for change in changes))

    def test_the_end_without_memory(self):
        silent = socket.create_server(("127.0.0.1", 0), backlog=10)
        self.addCleanup(silent.close)
        target = {**SENDER, "manifest_href": f"http://127.0.0.1:{silent.getsockname()[1]}/"}
        with Instrument(environment=self.memory.environment) as instrument:
            receivers = instrument.resources("receivers")
            late = []
            for receiver in receivers[:4]:
                connection = instrument.connect()
                connection.request("PUT", f"{NODE}/{receiver}/target", json.dumps(target))
                late.append(connection)
            time.sleep(0.3)
            instrument.process.send_signal(signal.SIGTERM)
            time.sleep(0.1)
            self.memory.set(1)
            # 2: it could not end in order. Worse would be a signal.
            self.assertIn(instrument.process.wait(timeout=30), (0, 2))
            for connection in late:
                connection.close()

    def test_the_end_of_a_registration_without_memory(self):
        # Nobody listens there, so it is tried again and again.
        registries = ["http://127.0.0.1:1"]
        with Instrument(environment=self.memory.environment, registries=registries) as instrument:
            instrument.wait_for_log("no registry can be used")
            self.memory.set(1)
            time.sleep(2)  # longer than the first pause
            instrument.process.send_signal(signal.SIGTERM)
            self.assertIn(instrument.process.wait(timeout=30), (0, 2))

    def assert_kept(self, instrument, change):
        active = instrument.active(change.receiver)
        staged = instrument.staged(change.receiver)
        port = active["transport_params"][0]["destination_port"]
        self.assertIn(port, change.possible)
        self.assertEqual(staged["transport_params"][0]["destination_port"], port)
