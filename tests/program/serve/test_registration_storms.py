# SPDX-License-Identifier: Apache-2.0
"""Much and long: storms of changes, half a minute of errors, registries that come and go.

NMOS_STORM_SECONDS says how long the changes go on; 10 without it.
"""

import json
import os
import time
import unittest

from instrument import CONNECTION, IMMEDIATE
from registrations import HEARTBEAT, RESOURCES, SLACK, RegistrationTest, figure, gaps
from stand_in import wait_until

STORM_SECONDS = float(os.environ.get("NMOS_STORM_SECONDS", "10"))

# Of a pause, in seconds; each is shortened by up to a fifth.
PAUSES = (1.25, 2.5, 5, 10, 20, 30)

# How long changes of a resource are gathered.
GATHERED = 0.75


class Storms(RegistrationTest):
    def test_all_receivers_change_a_hundred_times_a_second(self):
        registry = self.registry()
        instrument = self.started(registry)
        ids = instrument.ids("receivers")
        connection = instrument.connect()
        known = len(registry.requests())
        memory = instrument.resident_kib()
        begin = time.monotonic()
        rounds = 0
        while time.monotonic() - begin < STORM_SECONDS:
            rounds += 1
            self.change_all(connection, ids, 5000 + rounds % 1000)
            time.sleep(max(0.0, begin + rounds / 100 - time.monotonic()))
        took = time.monotonic() - begin
        connection.close()
        self.all_is_well(registry, instrument)
        posts = registry.posts("receivers/", since=known)
        figure(f"{rounds} bulk changes of {len(ids)} receivers within {took:.1f} s: {len(posts)} "
               f"POSTs, {took / rounds * 1000:.1f} ms for each bulk change; "
               f"{instrument.resident_kib() - memory} KiB more memory")
        for id in ids:
            self.assertLessEqual(sum(each["target"] == f"receivers/{id}" for each in posts),
                                 took / GATHERED + 2)
        between = gaps(registry.heartbeats())
        if between:
            figure(f"heartbeats were {min(between):.3f} to {max(between):.3f} s apart")
            self.assertLess(max(between), HEARTBEAT + SLACK)
        self.all_is_well(registry, instrument)

    def change_all(self, connection, ids, port):
        connection.request("POST", CONNECTION + "/bulk/receivers", json.dumps([
            {"id": id, "params": {"transport_params": [{"destination_port": port}, {}],
                                  **IMMEDIATE}} for id in ids]),
            {"Content-Type": "application/json"})
        response = connection.getresponse()
        answers = json.loads(response.read())
        self.assertEqual({each["code"] for each in answers}, {200}, answers)

    def errors_for_half_a_minute(self, registry, instrument):
        """Nothing but errors: few requests, later and later; afterwards it comes back by itself."""
        known = len(registry.requests())
        begin = time.monotonic()
        registry.behave(status=500, seconds=30)
        time.sleep(30)
        requests = registry.requests(since=known)
        between = gaps([each["time"] for each in requests])
        figure(f"{len(requests)} requests within 30 s of errors, "
               + ", ".join(f"{each:.1f}" for each in between) + " s apart")
        # Five pauses make 31 to 39 s.
        self.assertLessEqual(len(requests), 6)
        self.assertGreaterEqual(len(requests), 3)
        for pause, longest in zip(between, PAUSES):
            self.assertGreater(pause, 0.8 * longest - 0.1)
            self.assertLess(pause, longest + 1)
        self.all_is_well(registry, instrument)
        about = [line for line in instrument.log.splitlines() if registry.url in line]
        figure(f"{len(about)} lines of the log name the registry")
        self.assertLess(len(about), 8, "\n".join(about))
        figure(f"registered again {time.monotonic() - begin - 30:.1f} s after the errors")

    def test_errors_when_it_is_registered(self):
        registry = self.registry()
        instrument = self.started(registry)
        wait_until(registry.heartbeats, "a heartbeat")
        self.errors_for_half_a_minute(registry, instrument)

    def test_errors_before_it_is_registered(self):
        registry = self.registry()
        registry.behave(status=500, count=1)
        instrument = self.start(registry)
        wait_until(registry.requests, "the first POST")
        self.errors_before(registry, instrument)

    def errors_before(self, registry, instrument):
        begin = time.monotonic()
        registry.behave(status=500, seconds=20)
        time.sleep(20)
        requests = registry.requests()
        between = gaps([each["time"] for each in requests])
        figure(f"{len(requests)} POSTs within 20 s of errors, "
               + ", ".join(f"{each:.1f}" for each in between) + " s apart")
        # Four pauses make 15 to 19 s.
        self.assertLessEqual(len(requests), 6)
        self.assertEqual(len(instrument.log.split(" cannot be used: ")), 2, instrument.log)
        self.all_is_well(registry, instrument)
        figure(f"registered {time.monotonic() - begin - 20:.1f} s after the errors")

    def test_a_registry_that_comes_and_goes(self):
        registry = self.registry()
        instrument = self.started(registry)
        for number in range(5):
            registry.kill()
            time.sleep(1.5)
            registry.start()
            self.activate(instrument, instrument.resources("receivers")[number], 5020)
            time.sleep(2)
        self.all_is_well(registry, instrument)

    def test_registries_that_die_in_turn(self):
        registries = [self.registry() for _ in range(3)]
        instrument = self.started(*registries)
        files = self.open_files(instrument)
        used, down = registries[0], None
        for turn in range(6):
            used.kill()
            self.activate(instrument, instrument.resources("receivers")[turn], 5020 + turn)
            begin = time.monotonic()
            if down:
                down.start()
            down = used
            used = wait_until(lambda: next((each for each in registries
                                            if each.process and each.count() == RESOURCES), None),
                              "another one is used")
            figure(f"fail-over {turn + 1}, to number {registries.index(used) + 1}: "
                   f"{time.monotonic() - begin:.2f} s")
            self.all_is_well(used, instrument)
        self.assertLessEqual(self.open_files(instrument), files + 4)

    def test_many_instruments_lose_their_registry(self):
        """They do not come back at the same moment."""
        registry = self.registry()
        instruments = [self.start(registry, configuration={"serial_number": f"S{number}"},
                                  log_level="info") for number in range(6)]
        self.all_is_well(registry, *instruments)
        registry.kill()
        time.sleep(8)
        registry.start()
        self.all_is_well(registry, *instruments)
        created = sorted(each["time"] for each in registry.history()
                         if each["kind"] == "node" and each["event"] == "created")
        figure(f"{len(created)} instruments come back within {created[-1] - created[0]:.1f} s")


if __name__ == "__main__":
    unittest.main()
