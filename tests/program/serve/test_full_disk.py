# SPDX-License-Identifier: Apache-2.0
"""A change that was answered with 200 survives, whatever the disk does."""

import concurrent.futures
import resource
import signal
import subprocess
import time
import unittest

from instrument import IMMEDIATE, PORT, SERVE, Instrument, StateTest, with_fault

MADE = "The change was made but is not saved yet: a restart might lose it. Saving is tried again"
NOT_MADE = "The change was not made: the state cannot be saved"


def port_patch(port):
    return {"transport_params": [{"destination_port": port}, {}], **IMMEDIATE}


class DiskTest(StateTest):
    def start(self, **more):
        instrument = Instrument("--state", str(self.file), **more)
        self.addCleanup(instrument.end, signal.SIGKILL)
        self.receiver = instrument.resources("receivers")[0]
        return instrument

    def port(self, instrument):
        return instrument.active(self.receiver)["transport_params"][0]["destination_port"]

    def wait_until_saved(self, instrument, seconds=20):
        end = time.monotonic() + seconds
        while instrument.status()["state_file"] != "saved":
            self.assertLess(time.monotonic(), end, instrument.status()["state_file"])
            time.sleep(0.05)

    def assert_error(self, answer, error, *words):
        self.assertEqual(answer.status, 500, answer)
        self.assertEqual(answer.json["error"], error)
        for word in words:
            self.assertIn(word, answer.json["debug"])


class FullDisk(DiskTest):
    @staticmethod
    def set_full(instrument, full):
        _, hard = resource.prlimit(instrument.process.pid, resource.RLIMIT_FSIZE)
        resource.prlimit(instrument.process.pid, resource.RLIMIT_FSIZE,
                         (0 if full else hard, hard))

    def test_no_change_is_lost_and_none_is_made_in_vain(self):
        instrument = self.start()
        self.assertEqual(instrument.patch(self.receiver, port_patch(6001)).status, 200)
        self.set_full(instrument, True)
        # The first change meets the fault.
        self.assert_error(instrument.patch(self.receiver, port_patch(6002)), MADE,
                          f"{self.file}: File too large")
        self.assertEqual(self.port(instrument), 6002)
        self.assertIn("File too large", instrument.status()["state_file"])
        # All others are refused before they change anything.
        sender = instrument.resources("senders")[0]
        before = {kind: instrument.node(kind) for kind in ("senders", "receivers")}
        bulk = [{"id": self.receiver.split("/")[1], "params": port_patch(6003)}]
        for answer in (instrument.patch(self.receiver, port_patch(6003)),
                       instrument.patch(sender, port_patch(6003)),
                       instrument.request("POST", "/x-nmos/connection/v1.0/bulk/receivers", bulk),
                       instrument.request("PUT", f"/x-nmos/node/v1.2/{self.receiver}/target", {})):
            self.assert_error(answer, NOT_MADE, "File too large")
        self.assertEqual(self.port(instrument), 6002)
        self.assertEqual({kind: instrument.node(kind) for kind in before}, before)
        # There is room again: it saves without another change.
        self.set_full(instrument, False)
        self.wait_until_saved(instrument)
        instrument.process.kill()
        instrument.process.wait()
        again = self.start()
        self.assertEqual(self.port(again), 6002)
        self.assertEqual(again.patch(self.receiver, port_patch(6004)).status, 200)

    def test_what_was_not_saved_is_saved_at_the_end(self):
        instrument = self.start()
        self.set_full(instrument, True)
        self.assert_error(instrument.patch(self.receiver, port_patch(6002)), MADE)
        # By now the program tries again only every few seconds.
        time.sleep(1)
        self.set_full(instrument, False)
        self.assertEqual(instrument.end(), 0)
        self.assertEqual(self.port(self.start()), 6002)

    def test_what_could_not_be_saved_at_the_end(self):
        instrument = self.start()
        self.set_full(instrument, True)
        self.assert_error(instrument.patch(self.receiver, port_patch(6002)), MADE)
        self.assertEqual(instrument.end(), 2)
        self.assertEqual([path.name for path in self.folder.iterdir()], ["state"])

    def test_a_folder_that_is_away_for_a_while(self):
        inner = self.folder / "inner"
        inner.mkdir()
        self.file = inner / "state"
        instrument = self.start()
        inner.rename(self.folder / "away")
        self.assert_error(instrument.patch(self.receiver, port_patch(6002)), MADE,
                          "No such file or directory")
        instrument.wait_for_log("the state cannot be saved")
        (self.folder / "away").rename(inner)
        self.wait_until_saved(instrument)
        instrument.wait_for_log("the state can be saved again")
        self.assertEqual(instrument.end(), 0)


class SlowDisk(DiskTest):
    """The program waits 5 s for the disk. The bounds are generous: sanitizers are slow too."""

    def setUp(self):
        super().setUp()
        self.sign = self.folder / "hangs"

    def start_with_fault(self):
        return self.start(environment=with_fault("slow_disk", NMOS_SLOW_DISK=str(self.sign)))

    def test_answers_come_although_the_disk_hangs(self):
        instrument = self.start_with_fault()
        other = instrument.resources("receivers")[1]
        self.sign.touch()
        begin = time.monotonic()
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            for answer in pool.map(lambda receiver: instrument.patch(receiver, port_patch(6002)),
                                   (self.receiver, other)):
                self.assert_error(answer, MADE, "writing takes longer than 5 s")
        self.assertLess(time.monotonic() - begin, 9)
        begin = time.monotonic()
        self.assert_error(instrument.patch(self.receiver, port_patch(6003)), NOT_MADE,
                          "writing takes longer than 5 s")
        self.assertLess(time.monotonic() - begin, 3)
        self.assertEqual(self.port(instrument), 6002)
        self.assertEqual(instrument.status()["state_file"], "writing takes longer than 5 s")
        self.sign.unlink()
        self.wait_until_saved(instrument)
        instrument.process.kill()
        instrument.process.wait()
        self.assertEqual(self.port(self.start()), 6002)

    def test_the_program_ends_although_the_disk_hangs(self):
        instrument = self.start_with_fault()
        self.sign.touch()
        self.assert_error(instrument.patch(self.receiver, port_patch(6002)), MADE)
        begin = time.monotonic()
        instrument.process.send_signal(signal.SIGTERM)
        self.assertEqual(instrument.process.wait(timeout=20), 2)
        self.assertLess(time.monotonic() - begin, 10)
        instrument.wait_for_log(f"the last changes are not saved in {self.file}")

    def test_a_start_does_not_wait_for_a_disk_that_hangs(self):
        self.sign.touch()
        run = subprocess.run([*SERVE, "--first-free-port", "--port", PORT,
                              "--state", str(self.file)],
                             env=with_fault("slow_disk", NMOS_SLOW_DISK=str(self.sign)),
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=20)
        self.assertEqual(run.returncode, 2)
        self.assertIn("cannot be written: writing takes longer than 5 s", run.stderr.decode())


if __name__ == "__main__":
    unittest.main()
