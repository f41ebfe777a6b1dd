# SPDX-License-Identifier: Apache-2.0
"""What the program says to those who start and operate it."""

import pathlib
import subprocess
import tempfile
import unittest

from instrument import PROGRAM, Instrument, seconds


class Messages(unittest.TestCase):
    def test_a_port_in_use_names_the_options_that_help(self):
        with Instrument() as instrument:
            run = subprocess.run([PROGRAM, "serve", "--port", str(instrument.port)],
                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=30)
            self.assertEqual(run.returncode, 2)
            said = run.stderr.decode()
            for words in (f"127.0.0.1:{instrument.port}", "--port PORT", "--first-free-port"):
                self.assertIn(words, said)

    def test_on_loopback_only_this_machine_can_reach_it(self):
        with Instrument() as instrument:
            self.assertIn("only this machine can reach 127.0.0.1: set server.address", instrument.log)

    def test_first_start_and_restored_state(self):
        with tempfile.TemporaryDirectory() as folder:
            state = str(pathlib.Path(folder) / "s.json")
            with Instrument("--state", state) as instrument:
                self.assertIn(f"no {state} yet: starting with the configuration", instrument.log)
            with Instrument("--state", state) as instrument:
                self.assertIn(f"state restored from {state}", instrument.log)

    def test_an_absolute_activation_in_the_past(self):
        with Instrument() as instrument:
            receiver = instrument.resources("receivers")[0]
            now, _ = seconds(instrument.status()["tai"])
            answer = instrument.patch(receiver, {"activation": {
                "mode": "activate_scheduled_absolute", "requested_time": f"{now - 37}:0"}})
            self.assertEqual(answer.status, 202)
            self.assertRegex(instrument.log, f"activated {receiver}: activate_scheduled_absolute at "
                             r"\d+:\d+, 3[78]\.\d{3} s after the requested time "
                             r"\(UTC instead of TAI\?\)")


if __name__ == "__main__":
    unittest.main()
