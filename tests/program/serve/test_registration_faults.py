# SPDX-License-Identifier: Apache-2.0
"""Registries that forget, die, are silent or talk nonsense."""

import http.client
import signal
import time
import unittest

from registrations import (BASE, EXPIRY, HEARTBEAT, RESOURCES, SLACK, RegistrationTest, figure,
                           gaps, same_as_node_api)
from stand_in import ADDRESS, wait_until


class Forgotten(RegistrationTest):
    def gap_of_the_node(self, registry):
        """How long the registry had no node between its last two creations."""
        created = [each["time"] for each in registry.history()
                   if each["kind"] == "node" and each["event"] == "created"]
        gone = [each["time"] for each in registry.history()
                if each["kind"] == "node" and each["event"] == "deleted"]
        return created[-1] - gone[-1]

    def test_what_an_earlier_run_left(self):
        """IS-04 v1.2, Behaviour: Registration, Node Encounters HTTP 200 On First Registration."""
        registry = self.registry()
        instrument = self.started(registry)
        self.activate(instrument, instrument.resources("receivers")[0], 5020)
        same_as_node_api(registry, instrument)
        instrument.end(signal.SIGKILL)
        known = len(registry.requests())
        begin = time.monotonic()
        instrument = self.started(registry)
        node = instrument.node("self")["id"]
        self.assertEqual(
            [(each["method"], each["target"], each["status"])
             for each in registry.requests(since=known)[:3]],
            [("POST", f"nodes/{node}", 200), ("DELETE", f"nodes/{node}", 204),
             ("POST", f"nodes/{node}", 201)])
        figure(f"after a kill: registered {time.monotonic() - begin:.2f} s after the next start; "
               f"the registry has no node for {1000 * self.gap_of_the_node(registry):.0f} ms")
        self.assertEqual(len(registry.posts(since=known)), RESOURCES + 1)
        self.all_is_well(registry, instrument)

    def test_its_deletion_fails(self):
        registry = self.registry()
        self.started(registry).end(signal.SIGKILL)
        registry.behave(request="DELETE .*", status=500, count=1)
        instrument = self.start(registry)
        self.all_is_well(registry, instrument)

    def test_its_deletion_is_refused(self):
        """A registry that cannot delete is still one to register at."""
        registry = self.registry()
        self.started(registry).end(signal.SIGKILL)
        registry.behave(request="DELETE .*", status=403)
        instrument = self.start(registry)
        self.all_is_well(registry, instrument)
        self.assertEqual(len(registry.requests("DELETE")), 1)

    def everything_comes_back(self, registry, why):
        begin = time.monotonic()
        wait_until(lambda: registry.count() == RESOURCES, "everything is registered again",
                   step=0.02)
        figure(f"{why}: everything is registered again {time.monotonic() - begin:.2f} s later")

    def test_a_registry_that_starts_again_empty(self):
        registry = self.registry()
        instrument = self.started(registry)
        wait_until(registry.heartbeats, "a heartbeat")
        registry.restart()
        begin = time.monotonic()
        self.everything_comes_back(registry, "a registry that starts again empty")
        first = registry.requests()[0]
        self.assertEqual((first["target"].split("/")[0], first["status"]), ("health", 404))
        self.assertLess(first["time"] - begin, HEARTBEAT + SLACK)
        self.all_is_well(registry, instrument)

    def test_a_node_that_was_removed(self):
        """By somebody else, at the registry."""
        registry = self.registry()
        instrument = self.started(registry)
        node = instrument.node("self")["id"]
        self.delete_at(registry, f"nodes/{node}")
        known = len(registry.requests())
        self.everything_comes_back(registry, "a node that was removed")
        self.assertEqual([(each["target"], each["status"])
                          for each in registry.requests(since=known)[:2]],
                         [(f"health/{node}", 404), (f"nodes/{node}", 201)])
        self.all_is_well(registry, instrument)

    def delete_at(self, registry, target):
        """As somebody else."""
        connection = http.client.HTTPConnection(ADDRESS, registry.ports[0], timeout=10)
        connection.request("DELETE", f"{BASE}/resource/{target}")
        self.assertEqual(connection.getresponse().status, 204)
        connection.close()

    def test_a_404_although_it_is_there(self):
        """Then the POST of the node is a 200, and what is there is deleted first."""
        registry = self.registry()
        instrument = self.started(registry)
        registry.behave(request="POST health/.*", status=404, count=1)
        known = len(registry.requests())
        wait_until(lambda: len(registry.posts(since=known)) == RESOURCES + 1,
                   "everything is registered again")
        self.assertEqual([(each["method"], each["status"])
                          for each in registry.requests(since=known)[:4]],
                         [("POST", 404), ("POST", 200), ("DELETE", 204), ("POST", 201)])
        figure("after a wrong 404 the registry has no node for "
               f"{1000 * self.gap_of_the_node(registry):.0f} ms")
        self.all_is_well(registry, instrument)

    def test_stopped_for_longer_than_the_registry_waits(self):
        """The program, or the machine, slept."""
        registry = self.registry()
        instrument = self.started(registry)
        instrument.process.send_signal(signal.SIGSTOP)
        time.sleep(EXPIRY + 1)
        self.assertEqual(registry.count(), 0)
        instrument.process.send_signal(signal.SIGCONT)
        self.everything_comes_back(registry, f"after {EXPIRY + 1:.0f} s asleep")
        self.all_is_well(registry, instrument)

    def test_stopped_for_a_while(self):
        registry = self.registry()
        instrument = self.started(registry)
        known = len(registry.requests())
        instrument.process.send_signal(signal.SIGSTOP)
        time.sleep(8)
        instrument.process.send_signal(signal.SIGCONT)
        time.sleep(6)
        self.assertEqual(registry.posts(since=known), [])
        # What was missed is not made up for.
        self.assertGreater(min(gaps(registry.heartbeats()), default=HEARTBEAT), 0.5)
        self.all_is_well(registry, instrument)


class FailOver(RegistrationTest):
    def test_another_registry(self):
        """It knows nothing, so it gets everything."""
        first, second = self.registry(), self.registry()
        instrument = self.started(first, second)
        self.assertEqual(second.requests(), [])
        wait_until(first.heartbeats, "a heartbeat")
        first.kill()
        begin = time.monotonic()
        wait_until(lambda: second.count() == RESOURCES, "everything is there", step=0.02)
        figure(f"after a kill the other registry has everything {time.monotonic() - begin:.2f} s "
               "later")
        self.assertLess(second.requests()[0]["time"] - begin, HEARTBEAT + SLACK)
        node = instrument.node("self")["id"]
        self.assertEqual([(each["target"], each["status"]) for each in second.requests()[:2]],
                         [(f"health/{node}", 404), (f"nodes/{node}", 201)])
        self.all_is_well(second, instrument)
        status = self.status(instrument)
        self.assertEqual((status["registry"], status["fail_overs"]), (second.url + BASE, 1))
        self.assertGreaterEqual(status["failures"], 1)
        # It stays there when the first one is back.
        first.start()
        time.sleep(6)
        self.assertEqual(first.requests(), [])
        self.all_is_well(second, instrument)

    def test_a_change_finds_out_earlier(self):
        first, second = self.registry(), self.registry()
        instrument = self.started(first, second)
        first.kill()
        begin = self.activate(instrument, instrument.resources("receivers")[0], 5020)
        wait_until(lambda: second.count() == RESOURCES, "everything is there", step=0.02)
        figure(f"with a change the other registry has everything {time.monotonic() - begin:.2f} s "
               "later")
        self.assertLess(second.requests()[0]["time"] - begin, 1.0 + SLACK)
        self.all_is_well(second, instrument)

    def carries_on(self, fault):
        """With two front ends of one registry, of which the first has a fault: all goes on at the
        second without another POST."""
        registry = self.registry(fronts=2)
        instrument = self.started(*registry.urls)
        wait_until(registry.heartbeats, "a heartbeat")
        known = len(registry.requests())
        fault(registry)
        first = wait_until(lambda: next((each for each in registry.requests(since=known)
                                         if each["front"] == 1), None),
                           "a request to the other front end")
        self.assertEqual((first["target"].split("/")[0], first["status"]), ("health", 200))
        time.sleep(0.5)
        self.assertEqual(registry.posts(since=known), [])
        longest = max(gaps(registry.heartbeats()))
        figure(f"{self.id().split('.')[-1]}: {longest:.2f} s between heartbeats, and no POST")
        self.assertLess(longest, EXPIRY)
        self.all_is_well(registry, instrument)
        # A change is posted there.
        self.activate(instrument, instrument.resources("receivers")[0], 5020)
        same_as_node_api(registry, instrument)
        self.assertEqual({each["front"] for each in registry.posts(since=known)}, {1})
        status = self.status(instrument)
        self.assertEqual((status["registry"], status["fail_overs"]), (registry.urls[1] + BASE, 1))
        self.all_is_well(registry, instrument)

    def test_another_front_end(self):
        self.carries_on(lambda registry: registry.front(0, "closed"))

    def test_a_front_end_that_is_silent(self):
        self.carries_on(lambda registry: registry.behave(front=0, mode="stall"))

    def test_a_front_end_that_accepts_nobody(self):
        self.carries_on(lambda registry: registry.front(0, "deaf"))

    def test_a_front_end_that_never_ends(self):
        self.carries_on(lambda registry: registry.behave(front=0, mode="trickle"))

    def test_another_front_end_while_the_resources_are_posted(self):
        """Only what is missing is posted there."""
        registry = self.registry(fronts=2)
        registry.behave(request="POST (?!health).*", delay=0.05)
        instrument = self.start(*registry.urls)
        wait_until(lambda: registry.count() > 10, "some resources")
        registry.front(0, "closed")
        self.all_is_well(registry, instrument)
        self.assertLessEqual(len(registry.posts()), RESOURCES + 1)
        elsewhere = [each for each in registry.requests() if each["front"] == 1]
        self.assertEqual((elsewhere[0]["target"].split("/")[0], elsewhere[0]["status"]),
                         ("health", 200))

    def test_a_registry_with_an_older_state(self):
        """Two registries that know nothing of each other: the first one still has the node when it
        is needed again."""
        first, second = self.registry(expiry=60), self.registry()
        instrument = self.started(first, second)
        receivers = instrument.resources("receivers")
        first.front(0, "closed")
        self.activate(instrument, receivers[0], 5020)
        self.all_is_well(second, instrument)
        self.activate(instrument, receivers[1], 5020)
        same_as_node_api(second, instrument)
        known = len(first.requests())
        first.front(0, "open")
        second.kill()
        self.activate(instrument, receivers[2], 5020)
        self.all_is_well(first, instrument)
        self.assertEqual({each["status"] for each in first.requests(since=known)}, {200})

    def in_turn(self, *faults):
        """Back and forth between two front ends, always with a heartbeat. A registry that was left
        earlier may have an older state, so everything is posted there again."""
        registry = self.registry(fronts=2)
        instrument = self.started(*registry.urls)
        known = len(registry.requests())
        for turn, fault in enumerate(faults):
            used, other = turn % 2, 1 - turn % 2
            with self.subTest(fault):
                registry.behave_well()
                registry.behave(front=used, **fault)
                self.wait_until_at(instrument, registry.urls[other])
        registry.behave_well()
        self.assertEqual({each["status"] for each in registry.posts(since=known)}, {200})
        self.assertEqual(registry.requests("DELETE"), [])
        self.assertEqual(self.status(instrument)["fail_overs"], len(faults))
        longest = max(gaps(registry.heartbeats()))
        figure(f"{longest:.2f} s at most between heartbeats, over {len(faults)} fail-overs")
        self.assertLess(longest, EXPIRY)
        self.all_is_well(registry, instrument)

    def wait_until_at(self, instrument, url):
        def is_there():
            status = self.status(instrument)
            return status["registered"] and status["registry"] == url + BASE
        wait_until(is_there, f"registered at {url}")

    def test_front_ends_that_answer_with_errors(self):
        self.in_turn({"status": 500}, {"status": 503}, {"status": 405}, {"status": 302})

    def test_front_ends_that_answer_with_nonsense(self):
        self.in_turn({"mode": "garbage"}, {"mode": "half"}, {"mode": "drop"}, {"mode": "flood"})


class Nonsense(RegistrationTest):
    """One registry alone: after a pause it is asked again, and goes on where it was."""

    def test_a_post_that_fails_while_registering(self):
        for fault in ({"status": 500}, {"status": 503}, {"status": 404}, {"status": 408},
                      {"status": 429}, {"mode": "garbage"}, {"mode": "half"}, {"mode": "drop"},
                      {"status": 500, "processed": True}, {"mode": "drop", "processed": True},
                      {"status": 307, "headers": {"Location": "http://192.0.2.1/"}}):
            with self.subTest(fault):
                registry = self.registry()
                registry.behave(request="POST flows/.*", count=1, **fault)
                instrument = self.start(registry)
                self.all_is_well(registry, instrument)
                # Carried on: nothing that was taken is posted again.
                posts = [each["target"] for each in registry.posts()]
                self.assertEqual(len(posts), RESOURCES + 1)
                self.assertEqual(len(set(posts)), RESOURCES)
                # A connection that ends may just have been idle for too long: libcurl tries once
                # more by itself. Otherwise a heartbeat comes first.
                self.assertEqual([each["status"] for each in registry.requests("POST health/")],
                                 [] if fault.get("mode") == "drop" else [200])
                instrument.end()

    def test_killed_while_the_resources_are_posted(self):
        registry = self.registry()
        registry.behave(request="POST (?!health).*", delay=0.05)
        instrument = self.start(registry)
        wait_until(lambda: registry.count() > 10, "some resources")
        registry.restart()
        self.all_is_well(registry, instrument)

    def test_a_node_that_always_exists(self):
        """It is deleted once, and not for ever."""
        registry = self.registry()
        registry.behave(request="POST nodes/.*", status=200, processed=True)
        instrument = self.start(registry)
        self.all_is_well(registry, instrument)
        self.assertEqual([each["status"] for each in registry.posts("nodes/")], [200, 200])
        self.assertEqual(len(registry.requests("DELETE")), 1)

    def test_the_first_post_of_the_node_fails(self):
        for fault in ({"status": 500}, {"status": 404}, {"mode": "garbage"}, {"mode": "half"},
                      {"mode": "drop"}, {"status": 500, "processed": True}):
            with self.subTest(fault):
                registry = self.registry()
                registry.behave(request="POST nodes/.*", count=1, **fault)
                instrument = self.start(registry)
                self.all_is_well(registry, instrument)
                instrument.end()

    def test_an_answer_that_comes_too_late(self):
        """The registry has the resource, and the node does not know."""
        registry = self.registry()
        registry.behave(request="POST sources/.*", delay=5.5, count=1)
        instrument = self.start(registry)
        self.all_is_well(registry, instrument)
        self.assertEqual(len(registry.posts()), RESOURCES + 1)

    def test_a_registry_that_never_answers(self):
        """The next one is used."""
        for state in ("stall", "deaf"):
            with self.subTest(state):
                silent, other = self.registry(), self.registry()
                if state == "deaf":
                    silent.front(0, "deaf")
                else:
                    silent.behave(mode="stall")
                begin = time.monotonic()
                instrument = self.started(silent, other)
                figure(f"a registry ({state}) is given up for the next one after "
                       f"{time.monotonic() - begin:.2f} s")
                self.assertEqual(self.status(instrument)["registry"], other.url + BASE)
                self.all_is_well(other, instrument)
                instrument.end()

    def test_registries_that_are_none(self):
        """Each is tried once, at once, and the one that is left is used."""
        faults = ({"status": 500}, {"status": 404}, {"status": 405}, {"status": 301},
                  {"mode": "garbage"}, {"mode": "half"}, {"mode": "drop"}, {"mode": "flood"})
        others = [self.registry() for _ in faults]
        for other, fault in zip(others, faults):
            other.behave(**fault)
        registry = self.registry()
        begin = time.monotonic()
        instrument = self.started(*others, registry)
        figure(f"{len(others)} registries that are none are passed within "
               f"{time.monotonic() - begin:.2f} s")
        for other, fault in zip(others, faults):
            self.assertEqual(len(other.requests()), 1, fault)
            self.assertEqual(instrument.log.count(f"warning: registry {other.url}{BASE} "), 1)
        self.all_is_well(registry, instrument)

    def test_redirects_are_not_followed(self):
        registry, there = self.registry(), self.registry()
        for status in (301, 302, 303, 307, 308):
            registry.behave(status=status, count=1,
                            headers={"Location": f"{there.url}{BASE}/resource"})
        instrument = self.start(registry)
        instrument.wait_for_log(f"{there.url}{BASE}/resource")
        registry.behave_well()
        self.all_is_well(registry, instrument)
        self.assertEqual(there.requests(), [])

    def test_right_answers_in_other_forms(self):
        for mode in ("chunked", "close"):
            with self.subTest(mode):
                registry = self.registry()
                registry.behave(mode=mode)
                instrument = self.started(registry)
                wait_until(registry.heartbeats, "a heartbeat")
                self.all_is_well(registry, instrument)
                self.assertEqual(len(registry.posts()), RESOURCES)
                if mode == "close":
                    connections = {each["connection"] for each in registry.requests()}
                    self.assertEqual(len(connections), len(registry.requests()))
                self.assertEqual(instrument.end(), 0)
                self.assertEqual(registry.count(), 0)

    def test_a_long_answer(self):
        """What the answer says beyond its status does not matter."""
        registry = self.registry()
        registry.behave(request="POST (devices|health)/.*", status=200, processed=True,
                        body="x" * 500_000)
        instrument = self.started(registry)
        wait_until(registry.heartbeats, "a heartbeat")
        time.sleep(0.5)
        self.assertEqual(self.status(instrument)["failures"], 0)
        self.all_is_well(registry, instrument)


if __name__ == "__main__":
    unittest.main()
