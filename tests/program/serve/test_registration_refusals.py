# SPDX-License-Identifier: Apache-2.0
"""Registries that refuse a resource (IS-04 v1.2, Behaviour: Registration, Node Encounters HTTP 400
(or other 4xx) On Registration)."""

import time
import unittest

from registrations import KINDS, RESOURCES, RegistrationTest, figure, node_api
from stand_in import wait_until


class Refusals(RegistrationTest):
    def refusals(self, instrument):
        return [line for line in instrument.log.splitlines() if " refuses " in line]

    def refused(self, target, status=400, **more):
        """An instrument and a registry that refuses these."""
        registry = self.registry()
        registry.behave(request=f"POST {target}", status=status, body={
            "code": status, "error": "we do not like it", "debug": None}, **more)
        return registry, self.started(registry)

    def assert_left_out(self, registry, instrument, left_out):
        """Everything but these is registered, and they were not tried."""
        served = node_api(instrument)
        all_of_it = {f"{kind}/{id}" for kind in KINDS for id in served[kind]}
        there = registry.resources()
        self.assertEqual({f"{kind}/{id}" for kind in KINDS for id in there[kind]},
                         all_of_it - left_out)

    def test_a_receiver(self):
        for status in (400, 401, 403, 409, 422):
            with self.subTest(status):
                registry, instrument = self.refused("receivers/.*", status, count=1)
                receiver = instrument.resources("receivers")[0]
                self.assert_left_out(registry, instrument, {receiver})
                log = instrument.wait_for_log(" refuses ")
                [line] = [line for line in log.splitlines() if " refuses " in line]
                # With what it said, and what was posted.
                for words in ("warning: ", receiver, str(status), "we do not like it",
                              '"type":"receiver"', receiver.split("/")[1]):
                    self.assertIn(words, line)
                self.assertEqual(self.status(instrument)["refusals"], 1)
                # Whether the registry still knows the node is asked at once.
                posts = registry.requests("POST ")
                refused = next(index for index, each in enumerate(posts)
                               if each["status"] == status)
                heartbeat = next(each for each in posts if each["target"].startswith("health/"))
                self.assertLess(heartbeat["time"] - posts[refused]["answered"], 1)
                # With a change it is another body.
                known = len(registry.requests())
                self.activate(instrument, receiver, 5020)
                self.all_is_well(registry, instrument)
                self.assertEqual([each["target"] for each in registry.posts(since=known)],
                                 [receiver])
                instrument.end()

    def test_not_again_unchanged(self):
        registry, instrument = self.refused("receivers/.*")
        receivers = instrument.resources("receivers")
        self.assert_left_out(registry, instrument, set(receivers))
        self.assertEqual(len(registry.posts("receivers/")), 24)
        known = len(registry.requests())
        # A change of another resource, and two heartbeats, bring none of them back.
        self.activate(instrument, instrument.resources("senders")[0], 5020)
        time.sleep(7)
        self.assertEqual([each["target"] for each in registry.posts(since=known)],
                         instrument.resources("senders")[:1])
        self.assertEqual(len(self.refusals(instrument)), 24)
        # Each change is tried once.
        self.activate(instrument, receivers[5], 5020)
        instrument.wait_for_log(" refuses ", count=25)
        time.sleep(1.5)
        self.assertEqual(len(registry.posts(receivers[5])), 2)
        self.assertEqual(self.status(instrument)["refusals"], 25)
        self.assertEqual(registry.violations(), [])

    def test_everything_is_tried_again_at_a_registry_that_has_forgotten(self):
        registry, instrument = self.refused("receivers/.*", count=3)
        self.assertEqual(registry.count(), RESOURCES - 3)
        registry.restart()
        self.all_is_well(registry, instrument)

    def test_the_device(self):
        registry, instrument = self.refused("devices/.*")
        self.assertEqual(self.kinds(registry.posts()), ["nodes", "devices"])
        self.assertEqual(registry.count(), 1)
        wait_until(registry.heartbeats, "a heartbeat")
        time.sleep(6)
        self.assertEqual(len(registry.posts()), 2)
        self.assertGreaterEqual(len(registry.heartbeats()), 2)
        self.assertEqual(len(self.refusals(instrument)), 1)
        self.assertEqual(registry.violations(), [])
        self.assertEqual(instrument.end(), 0)
        self.assertEqual(registry.count(), 0)

    def test_a_source(self):
        registry, instrument = self.refused("sources/.*", count=1)
        served = node_api(instrument)
        source = instrument.resources("sources")[0]
        flow = next(id for id, data in served["flows"].items()
                    if data["source_id"] == source.split("/")[1])
        senders = {f"senders/{id}" for id, data in served["senders"].items()
                   if data["flow_id"] == flow}
        self.assertEqual(len(senders), 4)
        self.assert_left_out(registry, instrument, {source, f"flows/{flow}", *senders})
        self.assertEqual(len(registry.posts()), RESOURCES - 5)
        self.assertEqual(registry.violations(), [])

    def test_a_flow(self):
        registry, instrument = self.refused("flows/.*", 409, count=1)
        flow = instrument.resources("flows")[0]
        senders = {f"senders/{each['id']}" for each in instrument.node("senders")
                   if each["flow_id"] == flow.split("/")[1]}
        self.assertEqual(len(senders), 4)
        self.assert_left_out(registry, instrument, {flow, *senders})
        self.assertEqual(len(registry.posts()), RESOURCES - 4)
        # A change of a sender does not bring it there either.
        self.activate(instrument, sorted(senders)[0], 5020)
        time.sleep(1.5)
        self.assertEqual(len(registry.posts()), RESOURCES - 4)
        self.assertEqual(registry.violations(), [])

    def test_a_sender(self):
        registry, instrument = self.refused("senders/.*", 409, count=1)
        self.assert_left_out(registry, instrument, {instrument.resources("senders")[0]})
        self.activate(instrument, instrument.resources("senders")[0], 5020)
        self.all_is_well(registry, instrument)

    def test_an_update(self):
        """What the registry has stays until it takes a newer one."""
        registry = self.registry()
        instrument = self.started(registry)
        receiver = instrument.resources("receivers")[3]
        before = registry.resources()
        registry.behave(request=f"POST {receiver}", status=400, count=1)
        self.activate(instrument, receiver, 5020)
        instrument.wait_for_log(" refuses ")
        time.sleep(1.5)
        self.assertEqual(registry.resources(), before)
        self.assertEqual(len(registry.posts(receiver)), 2)
        self.activate(instrument, receiver, 5021)
        self.all_is_well(registry, instrument)
        # It is deleted in the end, since it is there.
        self.assertEqual(instrument.end(), 0)
        self.assertEqual(registry.count(), 0)

    def test_the_node_is_refused_and_taken_elsewhere(self):
        for status in (400, 401, 403, 409, 422):
            with self.subTest(status):
                first, second = self.registry(), self.registry()
                first.behave(request="POST nodes/.*", status=status)
                begin = time.monotonic()
                instrument = self.started(first, second)
                figure(f"after a {status} for the node it is registered elsewhere "
                       f"{time.monotonic() - begin:.2f} s after the start")
                self.assertEqual(len(first.requests()), 1)
                self.all_is_well(second, instrument)
                self.assertEqual(len(self.refusals(instrument)), 1)
                instrument.end()

    def test_the_node_is_refused_everywhere(self):
        """The same body is not posted again, however long it takes."""
        registry = self.registry()
        registry.behave(request="POST nodes/.*", status=400)
        instrument = self.start(registry)
        instrument.wait_for_log(" refuses ")
        time.sleep(6)
        self.assertEqual(len(registry.requests()), 1)
        self.assertEqual(len(self.refusals(instrument)), 1)
        status = self.status(instrument)
        self.assertEqual((status["registered"], status["refusals"]), (False, 1))
        self.assertEqual(instrument.end(), 0)

    def test_a_registry_that_has_lost_the_node_refuses_its_children(self):
        """Not a refusal of this body: with the node's return it is posted again."""
        registry = self.registry()
        instrument = self.started(registry)
        wait_until(registry.heartbeats, "a heartbeat")  # the next one is not due yet
        registry.forget()
        known = len(registry.requests())
        receiver = instrument.resources("receivers")[0]
        self.activate(instrument, receiver, 5020)
        wait_until(lambda: registry.count() == RESOURCES, "everything is there again")
        node = instrument.node("self")["id"]
        self.assertEqual([(each["target"], each["status"])
                          for each in registry.requests(since=known)[:3]],
                         [(receiver, 400), (f"health/{node}", 404), (f"nodes/{node}", 201)])
        self.all_is_well(registry, instrument)


if __name__ == "__main__":
    unittest.main()
