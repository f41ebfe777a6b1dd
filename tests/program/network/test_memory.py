# SPDX-License-Identifier: Apache-2.0
"""Discovery when memory runs short: nothing dies, and afterwards everything is found again."""

import pathlib
import random
import signal
import struct
import tempfile
import time

from instrument import with_fault
from network import NetworkTest, Watch, neighbour
from test_dns_sd import address, registry

SECONDS = 5


class Memory(NetworkTest):
    def test_it_is_survived(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        control = pathlib.Path(folder.name) / "short_memory"
        control.write_bytes(struct.pack("=I", 0))
        environment = with_fault("short_memory", NMOS_SHORT_MEMORY=str(control))

        self.set_resolv_conf("nameserver 127.0.0.1\nsearch example.com\n")
        self.start_dnsmasq("--local=/example.com/", "--local-ttl=1",
                           *registry("one", "api_proto=http,api_ver=v1.2,pri=1"),
                           *address("reg.example.com", "192.0.2.1"))
        self.start_bus()
        avahi = self.start_avahi()
        self.start_neighbour()
        neighbour.write_service("Registry 1", "api_proto=http", "api_ver=v1.2", "pri=2")
        both = ("http://reg.example.com:8080", "http://neighbour.local:8080")
        watch = Watch(environment=environment)
        self.addCleanup(watch.end)
        watch.wait_for(*both)

        chance = random.Random(5)
        end = time.monotonic() + SECONDS
        next_restart = time.monotonic() + 1
        while time.monotonic() < end:
            with control.open("r+b") as file:
                file.write(struct.pack("=I", chance.choice((3, 10, 30, 100, 300, 1000))))
            watch.search()
            time.sleep(0.02)
            if time.monotonic() > next_restart:
                avahi.stop(signal.SIGKILL)
                avahi = self.start_avahi()
                next_restart = time.monotonic() + 1
        control.write_bytes(struct.pack("=I", 0))
        self.assertIsNone(watch.process.poll(), watch.log)
        watch.drop_lists()
        watch.search()
        watch.wait_for(*both)
        self.assertLess(watch.end(), 5)
