# SPDX-License-Identifier: Apache-2.0
"""Who may change something."""

import subprocess
import unittest

from instrument import CONNECTION, IMMEDIATE, NODE, SERVE, SINGLE, Instrument, InstrumentTest


class Permission(InstrumentTest):
    """`assert_refused` and `assert_taken`; subclasses start the instrument."""

    def changes(self):
        sender = self.instrument.resources("senders")[0]
        receiver = self.instrument.resources("receivers")[0]
        bulk = {"id": sender.split("/")[1], "params": {}}
        return (("PATCH", f"{SINGLE}/{sender}/staged", IMMEDIATE),
                ("PATCH", f"{SINGLE}/{receiver}/staged", IMMEDIATE),
                ("POST", f"{CONNECTION}/bulk/senders", [bulk]),
                ("PUT", f"{NODE}/{receiver}/target", {}))

    def assert_refused(self, source, why):
        for method, path, body in self.changes():
            for sent in (body, "nonsense"):
                with self.subTest(f"{method} {path} {sent}"):
                    answer = self.instrument.request(method, path, sent, source=source)
                    self.assert_error(answer, 403)
                    self.assertEqual(answer.json["error"], "Changes are not allowed")
                    self.assertEqual(answer.json["debug"], why)

    def assert_taken(self, source):
        for method, path, body in self.changes():
            with self.subTest(f"{method} {path}"):
                answer = self.instrument.request(method, path, body, source=source)
                self.assertIn(answer.status, (200, 202), answer)


class ReadOnly(Permission):
    options = ("--read-only",)

    def test_every_change_is_refused_and_nothing_changes(self):
        receiver = self.instrument.resources("receivers")[0]
        before = self.instrument.node("receivers"), self.instrument.staged(receiver)
        self.assert_refused("127.0.0.1", "this instrument is read-only")
        self.assertEqual((self.instrument.node("receivers"), self.instrument.staged(receiver)),
                         before)

    def test_reading_goes_on(self):
        for path in (NODE + "/self", CONNECTION + "/single/senders", "/status", "/healthz"):
            self.assertEqual(self.instrument.get(path).status, 200)
        path = f"{SINGLE}/{self.instrument.resources('senders')[0]}/staged"
        self.assertEqual(self.instrument.request("OPTIONS", path).status, 200)


class Allow(Permission):
    options = ("--allow", "127.0.0.2", "--allow", "127.0.1.0/24")

    def test_only_the_named_clients_may_change(self):
        for source in ("127.0.0.2", "127.0.1.0", "127.0.1.255"):
            self.assert_taken(source)
        for source in ("127.0.0.1", "127.0.0.3", "127.0.2.0"):
            self.assert_refused(
                source, f"{source} is not among the clients that may change something")
            self.assertEqual(self.instrument.request("GET", NODE + "/self", source=source).status,
                             200)

    def test_the_log_names_who_was_refused(self):
        path = self.changes()[0][1]
        self.instrument.request("PATCH", path, {}, source="127.0.0.9")
        self.instrument.wait_for_log("403 Changes are not allowed: 127.0.0.9 is not among")


class Options(unittest.TestCase):
    def test_everybody_may_by_default(self):
        with Instrument() as instrument:
            receiver = instrument.resources("receivers")[0]
            self.assertEqual(instrument.patch(receiver, IMMEDIATE, source="127.0.0.7").status, 200)

    def test_what_is_no_network_is_refused(self):
        for word in ("", "x", "127.0.0.1/33", "127.0.0.1/8", "::1", "127.1", "127.0.0.1 "):
            run = subprocess.run([*SERVE, "--allow", word], stdout=subprocess.PIPE,
                                 stderr=subprocess.PIPE, timeout=30)
            self.assertEqual(run.returncode, 3)
            self.assertIn("--allow", run.stderr.decode())
