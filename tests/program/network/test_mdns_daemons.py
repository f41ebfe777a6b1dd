# SPDX-License-Identifier: Apache-2.0
"""Daemons that come later, go, come back and hang."""

import os
import signal
import time

from network import NEIGHBOUR_ADDRESS, NetworkTest, neighbour
from test_mdns import GOOD, URL


class MdnsDaemons(NetworkTest):
    RUNS = "mDNS: avahi-daemon runs"
    ABSENT = "mDNS: no avahi-daemon"

    def setUp(self):
        super().setUp()
        neighbour.write_service("Registry 1", *GOOD, "pri=10")
        self.start_neighbour()

    def test_avahi_comes_is_killed_and_comes_back(self):
        self.start_bus()
        watch = self.watch()
        self.assertEqual(watch.next(), [])
        watch.wait_for_log(self.ABSENT)
        for count in (1, 2):
            avahi = self.start_avahi()
            watch.wait_for(URL)
            self.assertEqual(watch.log.count(self.RUNS), count)
            # A daemon that is killed tells nobody.
            avahi.stop(signal.SIGKILL)
            watch.wait_for()
            self.assertEqual(watch.log.count(self.ABSENT), 1 + count)
            if count == 1:
                files = self.open_files(watch)
        watch.search()
        self.assertEqual(watch.next(), [])
        self.assertEqual(watch.log.count(self.ABSENT), 3)
        self.open_files(watch, files)

    def open_files(self, watch, expected=None):
        """How many files it has open, a while after the daemon is gone."""
        time.sleep(1.5)
        count = len(os.listdir(f"/proc/{watch.process.pid}/fd"))
        self.assertEqual(count, expected or count)
        return count

    def test_the_bus_comes_later(self):
        watch = self.watch()
        self.assertEqual(watch.next(), [])
        watch.wait_for_log(self.ABSENT)
        self.start_bus()
        self.start_avahi()
        watch.wait_for(URL)  # it is tried again every ten seconds at first
        self.assertEqual(watch.log.count(self.ABSENT), 1)

    def test_the_bus_is_killed(self):
        bus = self.start_bus()
        self.start_avahi()
        watch = self.watch()
        watch.wait_for(URL)
        bus.stop(signal.SIGKILL)
        watch.wait_for()
        watch.wait_for_log(self.ABSENT)

    def test_an_avahi_that_hangs_does_not_hold_up_the_end(self):
        self.start_bus()
        avahi = self.start_avahi()
        watch = self.watch()
        watch.wait_for(URL)
        avahi.send(signal.SIGSTOP)
        self.assertLess(watch.end(), 5)
        # The same from the start on, where it does not hold up a search either.
        watch = self.watch()
        self.assertEqual(watch.next(), [])
        self.assertLess(watch.end(), 5)

    def test_a_registry_that_dies_stays_until_its_time_is_over(self):
        self.start_bus()
        self.start_avahi()
        watch = self.watch()
        watch.wait_for(URL)
        self.daemons[0].stop(signal.SIGKILL)  # the neighbour's
        watch.search()
        self.assertEqual([registry["address"] for registry in watch.next()], [NEIGHBOUR_ADDRESS])
