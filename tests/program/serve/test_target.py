# SPDX-License-Identifier: Apache-2.0
"""PUT of a receiver's target (IS-04 v1.2), with manifests of our own and of others."""

import concurrent.futures
import contextlib
import json
import socket
import time
import unittest

from instrument import NODE, Instrument, InstrumentTest, with_fault
from manifests import SENDER, ManifestServer

NO_FILE = {"data": None, "type": None}


def put_target(instrument, receiver, href):
    body = {**SENDER, "manifest_href": href}
    return instrument.request("PUT", f"{NODE}/{receiver}/target", body)


UNUSABLE = json.dumps({
    "code": 500, "error": "The sender's manifest cannot be used",
    "debug": "it cannot be fetched, or it is not an SDP file that this receiver takes; the log of "
             "the instrument says why"}, separators=(",", ":"))


class Target(InstrumentTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.receivers = cls.instrument.resources("receivers")
        cls.server = ManifestServer()
        cls.manifests = cls.server.url("")

    @classmethod
    def tearDownClass(cls):
        cls.server.__exit__()
        super().tearDownClass()

    def put(self, receiver, body, source=""):
        return self.instrument.request("PUT", f"{NODE}/{receiver}/target", body, source=source)

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
        """The answer is the same, whatever is there in the network; the log knows more."""
        receiver = self.receivers[2]
        before = self.instrument.active(receiver), self.instrument.staged(receiver)
        with socket.create_server(("127.0.0.1", 0)) as server:
            closed = server.getsockname()[1]
        silent = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(silent.close)
        for href, word in (
                (self.manifests + "/nothing", "404"),
                (self.manifests + "/redirect/3", "redirect"),
                (self.manifests + "/to-a-file", "Unsupported protocol"),
                (self.manifests + "/slow", "Timeout"),
                (self.manifests + "/endless", "longer than 1048576 bytes"),
                (f"http://127.0.0.1:{closed}/", "connect"),
                (f"http://127.0.0.1:{silent.getsockname()[1]}/", "Timeout"),
                ("http://nowhere.invalid/", "was not fetched"),
                ("http://10.1.2.3/", "10.1.2.3 is in no network that manifests are fetched from"),
                ("http://[::1]/", "was not fetched"),
                ("http://:80:80/", "a URL that cannot be read"),
                (self.manifests + "/audio", "audio L24, allowed: video/raw"),
                (self.manifests + "/latin1", "UTF-8"),
                (self.manifests + "/nul", "NUL"),
                (self.manifests + "/empty", "no line"),
                (self.manifests + "/long", "4095")):
            with self.subTest(href):
                begin = time.monotonic()
                logged = self.instrument.log.count(word)
                answer = self.put(receiver, {**SENDER, "manifest_href": href})
                self.assertEqual((answer.status, answer.text), (500, UNUSABLE))
                self.assertLess(time.monotonic() - begin, 4)
                self.instrument.wait_for_log(word, logged + 1)
                self.assertEqual((self.instrument.active(receiver),
                                  self.instrument.staged(receiver)), before)

    def test_no_url_of_a_manifest(self):
        for href in ("file:///etc/hostname", "ftp://127.0.0.1/", "", None):
            answer = self.put(self.receivers[2], {**SENDER, "manifest_href": href})
            self.assert_error(answer, 400, "/manifest_href")

    def test_ipv6_takes_no_place_of_names(self):
        for _ in range(6):
            answer = self.put(self.receivers[2], {**SENDER, "manifest_href": "http://[::1]/"},
                              "127.0.0.6")
            self.assertEqual((answer.status, answer.text), (500, UNUSABLE))

    def test_a_lock_is_no_answer_about_the_manifest(self):
        receiver = self.receivers[5]
        self.instrument.patch(receiver, {"activation": {
            "mode": "activate_scheduled_relative", "requested_time": "3600:0"}})
        before = list(self.server.paths)
        for path in ("/good", "/nothing"):
            answer = self.put(receiver, {**SENDER, "manifest_href": self.manifests + path})
            self.assert_error(answer, 423, "mode to null")
        self.assertEqual(self.server.paths, before)
        self.instrument.patch(receiver, {"activation": {"mode": None}})

    def test_the_log_has_no_credentials(self):
        place = self.server.place
        self.put(self.receivers[2], {**SENDER, "manifest_href":
                                     f"http://someone:secret@{place}/nothing?token=hidden"},
                 "127.0.0.7")
        log = self.instrument.wait_for_log(
            f'the manifest "http://{place}/nothing" was not fetched: the server answered 404')
        for word in ("someone", "secret", "hidden"):
            self.assertNotIn(word, log)

    def test_four_fetches_for_one_client(self):
        def put(path):
            return self.put(self.receivers[3], {**SENDER, "manifest_href": self.manifests + path})

        with concurrent.futures.ThreadPoolExecutor(20) as pool:
            slow = [pool.submit(put, "/slow") for _ in range(4)]
            end = time.monotonic() + 10
            while self.server.paths.count("/slow") < 4:
                self.assertLess(time.monotonic(), end)
                time.sleep(0.01)
            more = [pool.submit(put, "/good") for _ in range(16)]
            for answer in concurrent.futures.as_completed(more):
                self.assert_error(answer.result(), 503, "4 at once for one client")
            for _ in range(10):
                self.assertEqual(self.instrument.get(f"{NODE}/self").status, 200)
            self.assertEqual([answer.result().status for answer in slow], [500] * 4)
        self.assertEqual(put("/good").status, 202)
        self.put(self.receivers[3], {})

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


class Hosts(unittest.TestCase):
    """Whom manifests are fetched from. An instrument at 127.0.0.2 is in the network 127.0.0.0/24:
    no interface has that address."""

    here = {"server": {"address": "127.0.0.2"}}

    def assert_refused(self, answer):
        self.assertEqual((answer.status, answer.text), (500, UNUSABLE))

    def test_only_its_own_networks(self):
        with Instrument(configuration=self.here) as instrument, ManifestServer() as near, \
                ManifestServer("127.0.1.1") as far:
            receiver = instrument.resources("receivers")[0]
            self.assertEqual(put_target(instrument, receiver, near.url("/good")).status, 202)
            self.assert_refused(put_target(instrument, receiver, far.url("/good")))
            self.assert_refused(put_target(instrument, receiver,
                                           near.url(f"/to/{far.place}/good")))
            self.assertEqual(far.paths, [])
            instrument.wait_for_log("127.0.1.1 is in no network that manifests are fetched from")

    def test_networks_and_addresses_that_an_option_adds(self):
        with Instrument("--manifest-hosts", "127.0.1.1", "--manifest-hosts", "127.0.2.0/24",
                        configuration=self.here) as instrument, ManifestServer() as near, \
                ManifestServer("127.0.1.1") as one, ManifestServer("127.0.1.2") as other, \
                ManifestServer("127.0.2.7") as another:
            receiver = instrument.resources("receivers")[0]
            for server in (near, one, another):
                self.assertEqual(put_target(instrument, receiver, server.url("/good")).status, 202)
            answer = put_target(instrument, receiver, near.url(f"/to/{another.place}/good"))
            self.assertEqual(answer.status, 202)
            self.assert_refused(put_target(instrument, receiver, other.url("/good")))
            self.assertEqual(other.paths, [])

    def test_loopback_only_where_it_is_served_or_named(self):
        address = own_address()
        for options, allowed in (([], False), (["--manifest-hosts", "0.0.0.0/0"], False),
                                 (["--manifest-hosts", "127.0.0.1"], True)):
            with self.subTest(options), Instrument(
                    *options, configuration={"server": {"address": address}}) as instrument, \
                    ManifestServer() as loopback, ManifestServer(address) as own:
                receiver = instrument.resources("receivers")[0]
                self.assertEqual(put_target(instrument, receiver, own.url("/good")).status, 202)
                port = loopback.server.server_port
                for url in (f"http://127.0.0.1:{port}/good", f"http://localhost:{port}/good",
                            f"http://2130706433:{port}/good",
                            own.url(f"/to/127.0.0.1:{port}/good")):
                    answer = put_target(instrument, receiver, url)
                    self.assertEqual(answer.status, 202 if allowed else 500, url)
                self.assert_refused(put_target(instrument, receiver, f"http://0.0.0.0:{port}/good"))
                self.assertEqual(loopback.paths, ["/good"] * 4 if allowed else [])


def own_address():
    """An address of this machine that is not loopback."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        try:
            probe.connect(("192.0.2.1", 9))  # nothing is sent
        except OSError:
            raise unittest.SkipTest("this machine has no other address than loopback") from None
        address = probe.getsockname()[0]
    if address.startswith("127."):
        raise unittest.SkipTest("this machine has no other address than loopback")
    return address


class SilentNameServer(unittest.TestCase):
    def test_nobody_waits_for_it(self):
        with Instrument(environment=with_fault("silent_names")) as instrument, \
                ManifestServer() as server, concurrent.futures.ThreadPoolExecutor(4) as pool:
            receivers = instrument.resources("receivers")

            def timed(href):
                begin = time.monotonic()
                answer = put_target(instrument, receivers[0], href)
                return answer, time.monotonic() - begin

            silent = [pool.submit(timed, f"http://name{i}.example/") for i in range(3)]
            time.sleep(0.5)
            answer, duration = timed(server.url("/good"))
            self.assertEqual(answer.status, 202)
            self.assertLess(duration, 5)
            for one in silent:
                answer, duration = one.result()
                self.assertEqual((answer.status, answer.text), (500, UNUSABLE))
                self.assertLess(duration, 4)
            # Three look-ups still go on; a client may have four.
            answer, duration = timed("http://name3.example/")
            self.assertEqual((answer.status, answer.text), (500, UNUSABLE))
            answer, duration = timed("http://name4.example/")
            self.assertEqual(answer.status, 503)
            answer, duration = timed(server.url("/good"))
            self.assertEqual(answer.status, 202)

            begin = time.monotonic()
            self.assertEqual(instrument.end(), 0)
            self.assertLess(time.monotonic() - begin, 3)

    def test_it_does_not_hold_up_the_end(self):
        with Instrument(environment=with_fault("silent_names")) as instrument, \
                concurrent.futures.ThreadPoolExecutor(1) as pool:
            receiver = instrument.resources("receivers")[0]
            silent = pool.submit(put_target, instrument, receiver, "http://name.example/")
            time.sleep(0.5)
            begin = time.monotonic()
            self.assertEqual(instrument.end(), 0)
            self.assertLess(time.monotonic() - begin, 3)
            with contextlib.suppress(Exception):  # answered or not
                silent.result()
