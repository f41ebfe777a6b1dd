# SPDX-License-Identifier: Apache-2.0
"""The registration of the node, at registries that do what they should."""

import pathlib
import signal
import tempfile
import threading
import time
import unittest

from certificates import Certificates
from instrument import EXAMPLES, IMMEDIATE, Instrument, file_patch, sdp_file, seconds, video_medium
from registrations import (BASE, KINDS, LEAVES_WITHIN, REGISTERED, RESOURCES, SLACK,
                           RegistrationTest, figure, node_api, same_as_node_api)
from stand_in import ADDRESS, has_ipv6, wait_until


class First(RegistrationTest):
    def test_the_first_registration(self):
        registry = self.registry()
        instrument = self.started(registry)
        posts = registry.posts()
        served = node_api(instrument)
        # In the order of the Node API, so that parents come first.
        self.assertEqual([each["target"] for each in posts],
                         [f"{kind}/{id}" for kind in KINDS for id in served[kind]])
        self.assertEqual(len(posts), RESOURCES)
        self.assertEqual({each["status"] for each in posts}, {201})
        self.assert_one_at_a_time(posts)
        self.assertEqual(len({each["connection"] for each in posts}), 1)
        figure(f"{len(posts)} resources are registered in "
               f"{1000 * (posts[-1]['answered'] - posts[0]['time']):.0f} ms")
        self.all_is_well(registry, instrument)
        log = instrument.wait_for_log(REGISTERED)
        self.assertRegex(
            log, rf"info: registered at {registry.url}{BASE}: 38 resources in \d+ ms\n")

    def test_what_status_says(self):
        registry = self.registry()
        instrument = self.started(registry)
        status = self.status(instrument)
        self.assertEqual(
            {name: status[name] for name in status
             if name not in ("since", "last_heartbeat", "heartbeats")},
            {"state": "registered", "registered": True, "registry": registry.url + BASE,
             "origin": "named", "posts": 38, "deletions": 0, "refusals": 0, "failures": 0,
             "fail_overs": 0, "next_try_seconds": None})
        self.assertRegex(status["since"], r"^\d+:\d+$")
        wait_until(registry.heartbeats, "a heartbeat")
        wait_until(lambda: self.status(instrument)["last_heartbeat"], "it is in /status")
        status = self.status(instrument)
        beat = status["last_heartbeat"]
        self.assertEqual(set(beat), {"sent", "round_trip_us", "late_us"})
        self.assertGreaterEqual(status["heartbeats"], 1)
        self.assertGreater(seconds(beat["sent"]), seconds(status["since"]))
        self.assertGreater(beat["round_trip_us"], 0)
        self.assertGreaterEqual(beat["late_us"], 0)
        figure(f"a heartbeat is {beat['late_us']} us late and takes {beat['round_trip_us']} us")

    def test_each_example(self):
        """What is hidden is not registered."""
        # Devices, sources, flows, senders, receivers.
        shown = {"default.json": [1, 3, 3, 6, 24], "single-stream-video.json": [1, 1, 1, 1, 4],
                 "st-2022-6.json": [1, 3, 3, 6, 24], "video-senders-only.json": [1, 1, 1, 4, 16]}
        for example in sorted(EXAMPLES.glob("*.json")):
            with self.subTest(example.name):
                registry = self.registry()
                instrument = self.started(registry, options=["--config", str(example)])
                self.all_is_well(registry, instrument)
                there = registry.resources()
                self.assertEqual([len(there[kind]) for kind in KINDS[1:]], shown[example.name])
                self.assertEqual(instrument.end(), 0)
                self.assertEqual(registry.count(), 0)

    def test_texts_as_they_are(self):
        registry = self.registry()
        instrument = self.started(registry, options=["--as-is"])
        same_as_node_api(registry, instrument)

    def test_forms_of_the_url(self):
        registry = self.registry()
        for form in ("", "/", "/x-nmos/registration", BASE, BASE + "/"):
            with self.subTest(form):
                instrument = self.started(registry.url + form)
                self.assertEqual(self.status(instrument)["registry"], registry.url + BASE)
                self.all_is_well(registry, instrument)
                instrument.end()

    def test_a_name_and_ipv6(self):
        for address, host in (("127.0.0.1", "localhost"), ("::1", "[::1]")):
            with self.subTest(host):
                if ":" in address and not has_ipv6():
                    self.skipTest("there is no IPv6 on this machine")
                registry = self.registry(address=address, host=host)
                instrument = self.started(registry)
                self.assertEqual(self.status(instrument)["registry"], registry.url + BASE)
                self.all_is_well(registry, instrument)

    def test_the_configuration_names_it(self):
        registry = self.registry()
        instrument = self.started(configuration={"registration": {"registries": [registry.url]}})
        self.all_is_well(registry, instrument)

    def test_no_registration(self):
        registry = self.registry()
        instrument = Instrument(configuration={"registration": {"registries": [registry.url]}})
        self.addCleanup(instrument.end)
        time.sleep(2)
        self.assertEqual(registry.requests(), [])
        self.assertEqual(instrument.get("/x-nmos/node/v1.2/self").status, 200)

    def test_nothing_there_yet(self):
        """Searches go on with growing pauses until a registry appears."""
        registry = self.registry(started=False)
        instrument = self.start(registry)
        wait_until(lambda: self.status(instrument)["next_try_seconds"], "a pause")
        status = self.status(instrument)
        self.assertEqual((status["registered"], status["registry"], status["origin"]),
                         (False, None, None))
        self.assertLessEqual(status["next_try_seconds"], 30)
        self.assertEqual(self.metric(instrument, "registered"), 0)
        time.sleep(3)
        registry.start()
        begin = time.monotonic()
        self.wait_registered(instrument)
        figure(f"a registry that appears after 3 s is used {time.monotonic() - begin:.1f} s later")
        self.all_is_well(registry, instrument)

    def test_metrics(self):
        registry = self.registry()
        instrument = self.started(registry)
        wait_until(registry.heartbeats, "a heartbeat")
        status = self.status(instrument)
        self.assertEqual(self.metric(instrument, "registered"), 1)
        for name in ("posts", "deletions", "heartbeats", "refusals", "failures", "fail_overs"):
            self.assertEqual(self.metric(instrument, name + "_total"), status[name], name)
        self.assertEqual(status["posts"], 38)
        self.assertGreaterEqual(status["heartbeats"], 1)


class Changes(RegistrationTest):
    def test_a_change_is_posted_within_a_second(self):
        registry = self.registry()
        instrument = self.started(registry)
        for resource in (instrument.resources("receivers")[7], instrument.resources("senders")[2]):
            before = node_api(instrument)
            known = len(registry.requests())
            changed = self.activate(instrument, resource, 5010, master_enable=True)
            [post] = wait_until(lambda: registry.posts(since=known), "a POST")
            figure(f"a change of a {resource.split('/')[0][:-1]} is posted after "
                   f"{post['time'] - changed:.2f} s")
            self.assertLess(post["time"] - changed, 1.0 + SLACK)
            same_as_node_api(registry, instrument)
            after = node_api(instrument)
            changes = {f"{kind}/{id}" for kind in KINDS for id in after[kind]
                       if after[kind][id] != before[kind][id]}
            self.assertEqual(changes, {resource})
            # Nothing else is posted.
            time.sleep(1.5)
            self.assertEqual([each["target"] for each in registry.posts(since=known)], [resource])
        self.all_is_well(registry, instrument)

    def test_many_changes_of_a_receiver_are_one_post(self):
        registry = self.registry()
        instrument = self.started(registry)
        receiver = instrument.resources("receivers")[0]
        known = len(registry.requests())
        begin = time.monotonic()
        for number in range(100):
            time.sleep(max(0.0, begin + number / 200 - time.monotonic()))
            self.activate(instrument, receiver, 6000 + number)
        took = time.monotonic() - begin
        self.all_is_well(registry, instrument)
        time.sleep(1)
        posts = registry.posts(receiver, since=known)
        figure(f"100 changes within {took:.2f} s are {len(posts)} POSTs")
        self.assertLessEqual(len(posts), took / 0.75 + 1)
        self.all_is_well(registry, instrument)

    def test_each_kind_of_activation(self):
        registry = self.registry()
        instrument = self.started(registry)
        receivers = instrument.resources("receivers")
        tai, _ = seconds(instrument.status()["tai"])
        for resource, activation in (
                (receivers[0], {"mode": "activate_scheduled_relative", "requested_time": "1:0"}),
                (receivers[1], {"mode": "activate_scheduled_absolute",
                                "requested_time": f"{tai + 2}:0"}),
                (receivers[2], IMMEDIATE["activation"])):
            answer = instrument.patch(resource, {"master_enable": True, "activation": activation})
            self.assertIn(answer.status, (200, 202), answer)
        instrument.patch(receivers[3], file_patch(
            sdp_file(video_medium(source="203.0.113.1")), master_enable=True,
            sender_id="5709255c-c0ae-4e1e-99a0-e872e83e48e0", **IMMEDIATE))
        wait_until(lambda: not instrument.status()["pending_activations"], "all is activated")
        self.all_is_well(registry, instrument)
        there = registry.resources()["receivers"]
        for receiver in receivers[:4]:
            self.assertTrue(there[receiver.split("/")[1]]["subscription"]["active"], receiver)
        self.assertEqual(there[receivers[3].split("/")[1]]["subscription"]["sender_id"],
                         "5709255c-c0ae-4e1e-99a0-e872e83e48e0")

    def test_changes_while_the_resources_are_posted(self):
        registry = self.registry()
        registry.behave(request="POST (?!health).*", delay=0.1)
        instrument = self.start(registry)
        receivers = instrument.resources("receivers")
        stop = threading.Event()

        def change():
            port = 5000
            while not stop.wait(0.05):
                port += 1
                self.activate(instrument, receivers[port % 24], port)

        thread = threading.Thread(target=change)
        thread.start()
        try:
            wait_until(lambda: registry.posts(receivers[-1]), "the last receiver's POST")
        finally:
            stop.set()
            thread.join()
        registry.behave_well()
        self.all_is_well(registry, instrument)

    def test_state_and_versions_after_a_restart(self):
        registry = self.registry()
        with tempfile.TemporaryDirectory() as folder:
            options = ["--state", str(pathlib.Path(folder) / "state")]
            instrument = self.started(registry, options=options)
            self.activate(instrument, instrument.resources("receivers")[0], 5020)
            same_as_node_api(registry, instrument)
            before = registry.resources()
            self.assertEqual(instrument.end(), 0)
            self.assertEqual(registry.count(), 0)
            instrument = self.started(registry, options=options)
            self.all_is_well(registry, instrument)
            after = registry.resources()
            for kind in ("sources", "flows", "senders"):
                self.assertEqual(after[kind], before[kind])
            instrument.end()


class Leaving(RegistrationTest):
    def leave(self, instrument):
        """Returns the seconds until it has ended."""
        begin = time.monotonic()
        instrument.process.send_signal(signal.SIGTERM)
        self.assertEqual(instrument.process.wait(timeout=30), 0)
        return time.monotonic() - begin

    def test_children_before_their_parents(self):
        registry = self.registry()
        instrument = self.started(registry)
        took = self.leave(instrument)
        figure(f"{RESOURCES} resources are deleted, and the program has ended, within {took:.2f} s")
        deletions = registry.requests("DELETE")
        self.assertEqual({each["status"] for each in deletions}, {204})
        self.assert_one_at_a_time(deletions)
        if took < 1.0:  # a busy machine may have to leave some of them to the registry
            self.assertEqual(len(deletions), RESOURCES)
            self.assertEqual(self.kinds(deletions), list(reversed(KINDS)))
        self.assertEqual(registry.requests()[-1], deletions[-1])
        self.assertEqual(registry.count(), 0)
        self.assertEqual(registry.violations(), [])
        self.assertLess(took, LEAVES_WITHIN)
        self.assertIn(f"left registry {registry.url}", instrument.log)

    def test_a_slow_registry(self):
        """It is asked to delete the node at last, and with it all that is left."""
        registry = self.registry()
        instrument = self.started(registry)
        registry.behave(request="DELETE .*", delay=0.2)
        took = self.leave(instrument)
        figure(f"a registry that takes 0.2 s for each DELETE is left within {took:.2f} s")
        self.assertLess(took, LEAVES_WITHIN)
        deletions = registry.requests("DELETE")
        self.assertEqual(self.kinds(deletions)[-1], "nodes")
        self.assertLess(len(deletions), RESOURCES)
        self.assertEqual(registry.count(), 0)
        self.assertEqual(registry.violations(), [])

    def test_registries_that_do_not_answer(self):
        for what in ("killed", "stall", "deaf", "drop", "trickle"):
            with self.subTest(what):
                registry = self.registry()
                instrument = self.started(registry)
                if what == "killed":
                    registry.kill()
                elif what == "deaf":
                    registry.front(0, "deaf")
                else:
                    registry.behave(mode=what)
                took = self.leave(instrument)
                figure(f"a registry ({what}) is left within {took:.2f} s")
                self.assertLess(took, LEAVES_WITHIN)

    def test_refused_deletions(self):
        registry = self.registry()
        instrument = self.started(registry)
        registry.behave(request="DELETE receivers/.*", status=403)
        took = self.leave(instrument)
        self.assertLess(took, LEAVES_WITHIN)
        self.assertEqual(registry.count(), 0)
        refused = [each for each in registry.requests("DELETE") if each["status"] == 403]
        self.assertEqual(len(refused), len({each["target"] for each in refused}))

    def test_twice(self):
        """A second signal while it leaves changes nothing."""
        registry = self.registry()
        instrument = self.started(registry)
        registry.behave(request="DELETE .*", delay=0.02)
        instrument.process.send_signal(signal.SIGTERM)
        time.sleep(0.2)
        self.assertLess(self.leave(instrument), LEAVES_WITHIN)
        self.assertEqual(registry.count(), 0)
        self.assertEqual(registry.violations(), [])


class Https(RegistrationTest):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.certificates = Certificates(folder.name, ADDRESS)

    def test_an_authority_that_is_named(self):
        registry = self.registry(certificate=self.certificates.registry)
        self.assertTrue(registry.url.startswith("https://"))
        instrument = self.started(
            registry, options=["--registry-ca", str(self.certificates.authority)])
        self.assertEqual(self.status(instrument)["registry"], registry.url + BASE)
        self.all_is_well(registry, instrument)
        self.assertEqual(instrument.end(), 0)
        self.assertEqual(registry.count(), 0)

    def test_an_authority_that_nobody_knows(self):
        self.refused(self.registry(certificate=self.certificates.registry))

    def test_a_certificate_of_somebody_else(self):
        with tempfile.TemporaryDirectory() as folder:
            certificates = Certificates(folder, "192.0.2.1")
            self.refused(self.registry(certificate=certificates.registry),
                         options=["--registry-ca", str(certificates.authority)])

    def refused(self, registry, **more):
        instrument = self.start(registry, **more)
        log = instrument.wait_for_log(f"warning: registry {registry.url}{BASE} cannot be used")
        line = next(line for line in log.splitlines() if "cannot be used" in line)
        self.assertIn("certificate", line)
        figure(line)
        self.assertEqual(registry.requests(), [])
        self.assertFalse(self.status(instrument)["registered"])

    def test_http_where_https_is_spoken(self):
        registry = self.registry(certificate=self.certificates.registry)
        instrument = self.start(registry.url.replace("https", "http"))
        instrument.wait_for_log("cannot be used")
        self.assertEqual(registry.requests(), [])


class Others(RegistrationTest):
    def test_several_instruments_at_one_registry(self):
        registry = self.registry()
        instruments = [self.start(registry, configuration={"serial_number": f"S{number}"})
                       for number in range(4)]
        self.all_is_well(registry, *instruments)
        self.assertEqual(registry.count(), 4 * RESOURCES)
        # One leaves, and the others stay.
        self.assertEqual(instruments.pop().end(), 0)
        self.all_is_well(registry, *instruments)
        self.assertEqual(registry.count(), 3 * RESOURCES)

    def test_two_with_the_same_id_do_not_fight(self):
        """Two that nobody has configured. None of them is registered again and again."""
        registry = self.registry()
        first = self.started(registry)
        second = self.started(registry)
        self.assertEqual(first.node("self")["id"], second.node("self")["id"])
        time.sleep(11)
        self.assertEqual(len(registry.posts()), 2 * RESOURCES + 1)
        self.assertEqual(len(registry.requests("DELETE")), 1)
        self.assertGreaterEqual(len(registry.heartbeats()), 4)


if __name__ == "__main__":
    unittest.main()
