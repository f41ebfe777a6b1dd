# SPDX-License-Identifier: Apache-2.0
"""What the tests of the registration have in common."""

import itertools
import os
import re
import time
import unittest

from instrument import IMMEDIATE, Instrument
from stand_in import Registry, wait_until

BASE = "/x-nmos/registration/v1.2"
KINDS = ("nodes", "devices", "sources", "flows", "senders", "receivers")  # parents first

# What the default configuration shows: a node and a device, three sources and flows, six senders
# and 24 receivers.
RESOURCES = 38

# IS-04 v1.2, Behaviour: Registration, Heartbeating.
HEARTBEAT, EXPIRY = 5.0, 12.0

# How much later than promised something may be seen, in seconds. NMOS_SLOWNESS is how many times
# slower the program is than a release on a machine with nothing else to do.
SLACK = 0.5 * float(os.environ.get("NMOS_SLOWNESS", "1"))

LEAVES_WITHIN = 2.0 + SLACK

REGISTERED = "registered at"


def figure(text):
    """What was measured, for people."""
    print("figure:", text, flush=True)


def node_api(*instruments):
    """What the Node API serves, as Registry.resources() lists it: {"nodes": {id: data}, ...}"""
    listing = {kind: {} for kind in KINDS}
    for instrument in instruments:
        node = instrument.node("self")
        listing["nodes"][node["id"]] = node
        for kind in KINDS[1:]:
            listing[kind].update({each["id"]: each for each in instrument.node(kind)})
    return listing


def differences(served, registered):
    """Between two listings, a line each."""
    for kind in KINDS:
        for id in served[kind].keys() | registered[kind].keys():
            ours, theirs = served[kind].get(id), registered[kind].get(id)
            if theirs is None:
                yield f"{kind}/{id} is not registered"
            elif ours is None:
                yield f"{kind}/{id} is registered and not in the Node API"
            elif ours != theirs:
                members = [f"{name} is {ours.get(name)!r} and {theirs.get(name)!r} is registered"
                           for name in sorted(ours.keys() | theirs.keys())
                           if ours.get(name) != theirs.get(name)]
                yield f"{kind}/{id}: " + "; ".join(members)


def same_as_node_api(registry, *instruments):
    """Waits until the registry holds what the Node API serves, each resource equal as JSON, none
    more and none less."""
    found = []

    def is_same():
        # A listing is not one moment, so they are looked at until they agree.
        found[:] = differences(node_api(*instruments), registry.resources())
        return not found

    try:
        wait_until(is_same, "the registry has what the Node API serves", step=0.2)
    except AssertionError as error:
        raise AssertionError("\n".join([str(error), *found[:20]])) from None


def gaps(times):
    return [later - earlier for earlier, later in itertools.pairwise(times)]


class RegistrationTest(unittest.TestCase):
    maxDiff = None

    def registry(self, **more):
        registry = Registry(**more)
        self.addCleanup(registry.kill)
        return registry

    def start(self, *registries, options=(), **more):
        """An instrument that registers at these; URLs are taken too."""
        urls = [each if isinstance(each, str) else each.url for each in registries]
        instrument = Instrument(*options, registries=urls, **more)
        self.addCleanup(instrument.end)
        return instrument

    def status(self, instrument):
        return instrument.status()["registration"]

    def metric(self, instrument, name):
        page = instrument.get("/metrics").text
        value = re.search(rf"^nmos_instrument_registration_{name} (\S+)$", page, re.MULTILINE)
        self.assertIsNotNone(value, f"{name}\n{page}")
        return float(value.group(1))

    def wait_registered(self, instrument):
        wait_until(lambda: self.status(instrument)["registered"], "the node is registered")

    def started(self, *registries, **more):
        """The same, registered."""
        instrument = self.start(*registries, **more)
        self.wait_registered(instrument)
        return instrument

    def all_is_well(self, registry, *instruments):
        """What each test ends with."""
        for instrument in instruments:
            self.wait_registered(instrument)
        same_as_node_api(registry, *instruments)
        self.assertEqual(registry.violations(), [])

    def activate(self, instrument, resource, port, **more):
        """A change that advances the version. Returns when it was answered."""
        answer = instrument.patch(resource, {
            "transport_params": [{"destination_port": port}, {}], **IMMEDIATE, **more})
        self.assertEqual(answer.status, 200, answer)
        return time.monotonic()

    def open_files(self, instrument):
        return len(os.listdir(f"/proc/{instrument.process.pid}/fd"))

    def kinds(self, requests):
        """Of requests, without repetitions that follow one another."""
        return [kind for kind, _ in itertools.groupby(
            each["target"].split("/")[0] for each in requests)]

    def assert_one_at_a_time(self, requests):
        for each, next_one in itertools.pairwise(requests):
            self.assertIsNotNone(each["answered"], each)
            self.assertLessEqual(each["answered"], next_one["time"], (each, next_one))
