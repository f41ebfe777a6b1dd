# SPDX-License-Identifier: Apache-2.0
"""Avahi's service file."""

import pathlib
import re
import signal
import tempfile
import time
import unittest

from instrument import IMMEDIATE, Instrument, with_fault

TEXT = """<?xml version="1.0" standalone='no'?>
<!DOCTYPE service-group SYSTEM "avahi-service.dtd">

<service-group>
  <name replace-wildcards="yes">%h</name>

  <service>
    <type>_nmos-node._tcp</type>
    <port>{port}</port>
    <txt-record>api_proto=http</txt-record>
    <txt-record>api_ver=v1.2</txt-record>
    <txt-record>ver_slf=0</txt-record>
    <txt-record>ver_src=0</txt-record>
    <txt-record>ver_flw=0</txt-record>
    <txt-record>ver_dvc=0</txt-record>
    <txt-record>ver_snd={ver_snd}</txt-record>
    <txt-record>ver_rcv={ver_rcv}</txt-record>
  </service>
</service-group>
"""


class Advertisement(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.file = self.folder / "nmos-node.service"

    def instrument(self, *options, **more):
        return Instrument("--service-file", str(self.file), *options, **more)

    def wait_until(self, condition):
        end = time.monotonic() + 20
        while not condition():
            self.assertLess(time.monotonic(), end, [path.name for path in self.folder.iterdir()])
            time.sleep(0.01)

    def is_written(self, **values):
        text = TEXT.format(**{"ver_snd": 0, "ver_rcv": 0, **values})
        return self.file.exists() and self.file.read_text(encoding="ascii") == text

    def names(self):
        return [path.name for path in self.folder.iterdir()]

    def test_it_is_there_while_the_program_runs(self):
        with self.instrument("--advertise", "always") as instrument:
            self.wait_until(lambda: self.is_written(port=instrument.port))
            self.assertEqual(self.file.stat().st_mode & 0o777, 0o644)
            instrument.wait_for_log(f"{self.file}: advertised to the neighbours")
            instrument.end_program()
            self.assertEqual(self.names(), [])
            self.assertNotIn("withdrawn", instrument.log)

    def test_without_registration_peer_to_peer_is_always(self):
        with self.instrument() as instrument:
            self.wait_until(lambda: self.is_written(port=instrument.port))
        self.assertEqual(self.names(), [])

    def test_never_removes_what_a_killed_program_left(self):
        self.file.write_text("old")
        with self.instrument("--advertise", "never"):
            self.wait_until(lambda: self.names() == [])

    def test_the_advertised_port(self):
        with self.instrument("--advertised-port", "8080"):
            self.wait_until(lambda: self.is_written(port=8080))

    def test_counters_follow_activations(self):
        with self.instrument() as instrument:
            self.wait_until(lambda: self.is_written(port=instrument.port))
            sender, receiver = (instrument.resources(kind)[0] for kind in ("senders", "receivers"))
            instrument.patch(receiver, IMMEDIATE)
            self.wait_until(lambda: self.is_written(port=instrument.port, ver_rcv=1))
            instrument.patch(sender, IMMEDIATE)
            instrument.patch(receiver, IMMEDIATE)
            self.wait_until(lambda: self.is_written(port=instrument.port, ver_rcv=2, ver_snd=1))
            # What is only staged is no change of a resource.
            instrument.patch(receiver, {"master_enable": True})
            instrument.end_program()

    def test_a_kill_leaves_it_and_the_next_start_replaces_it(self):
        with self.instrument() as instrument:
            self.wait_until(lambda: self.is_written(port=instrument.port))
            instrument.patch(instrument.resources("receivers")[0], IMMEDIATE)
            self.wait_until(lambda: self.is_written(port=instrument.port, ver_rcv=1))
            instrument.end_program(signal.SIGKILL)
        with self.instrument() as instrument:
            self.wait_until(lambda: self.is_written(port=instrument.port))

    def test_a_missing_folder_is_said_once_and_may_come_later(self):
        self.file = self.folder / "services" / "nmos-node.service"
        with self.instrument() as instrument:
            instrument.wait_for_log(f"warning: {self.file}: cannot be written: there is no such "
                                    "folder; it is tried again every 10 s")
            receiver = instrument.resources("receivers")[0]
            for _ in range(3):
                self.assertEqual(instrument.patch(receiver, IMMEDIATE).status, 200)
                time.sleep(1.1)
            self.assertEqual(instrument.log.count("cannot be written"), 1, instrument.log)
            self.file.parent.mkdir()
            # Without a change it takes up to 10 s.
            self.wait_until(lambda: self.is_written(port=instrument.port, ver_rcv=3))
            instrument.wait_for_log(f"info: {self.file}: advertised to the neighbours")

    def test_a_loopback_address_is_warned_of(self):
        with self.instrument() as instrument:
            log = instrument.wait_for_log("but for each of them that is their own machine")
            self.assertEqual(len(re.findall("warning: ", log)), 1)
            self.assertIn(f"others hear of {instrument.url} from {self.file}", log)
        with self.instrument("--address", "192.0.2.10", "--listen", "127.0.0.1",
                             stdout=None) as instrument:
            self.assertTrue(instrument.url.startswith("http://192.0.2.10:"))
            instrument.end_program()
            self.assertNotIn("warning", instrument.log)

    def test_a_disk_that_hangs_holds_up_nothing(self):
        sign = self.folder / "hangs"
        sign.touch()
        with self.instrument(environment=with_fault("slow_disk", NMOS_SLOW_DISK=str(sign))
                             ) as instrument:
            self.wait_until(lambda: "nmos-node.service.new" in self.names())
            receiver = instrument.resources("receivers")[0]
            self.assertEqual(instrument.patch(receiver, IMMEDIATE).status, 200)
            begin = time.monotonic()
            self.assertEqual(instrument.end_program(), 0)
            self.assertLess(time.monotonic() - begin, 10)
            self.assertIn(f"warning: {self.file}: not withdrawn yet, the disk does not answer",
                          instrument.log)


if __name__ == "__main__":
    unittest.main()
