# SPDX-License-Identifier: Apache-2.0
"""What the program says to those who start and operate it."""

import pathlib
import subprocess
import tempfile
import unittest

from instrument import EXAMPLES, INTERFACES, PROGRAM, SERVE, Instrument, seconds, with_fault


class Messages(unittest.TestCase):
    def test_a_port_in_use_names_the_options_that_help(self):
        with Instrument() as instrument:
            run = subprocess.run([*SERVE, "--port", str(instrument.port)],
                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=30)
            self.assertEqual(run.returncode, 2)
            said = run.stderr.decode()
            for words in (f"127.0.0.1:{instrument.port}", "--port PORT", "--first-free-port"):
                self.assertIn(words, said)

    def test_on_loopback_only_this_machine_can_reach_it(self):
        with Instrument() as instrument:
            instrument.wait_for_log('only this machine can reach 127.0.0.1: "listen" in the '
                                    'configuration, '
                                    "or serve --listen eth0, is for a network")

    def test_first_start_and_restored_state(self):
        with tempfile.TemporaryDirectory() as folder:
            state = str(pathlib.Path(folder) / "s.json")
            with Instrument("--state", state) as instrument:
                instrument.wait_for_log(f"no {state} yet: starting with the configuration")
            with Instrument("--state", state) as instrument:
                instrument.wait_for_log(f"state restored from {state}")

    def test_an_absolute_activation_in_the_past(self):
        with Instrument() as instrument:
            receiver = instrument.resources("receivers")[0]
            now, _ = seconds(instrument.status()["tai"])
            answer = instrument.patch(receiver, {"activation": {
                "mode": "activate_scheduled_absolute", "requested_time": f"{now - 37}:0"}})
            self.assertEqual(answer.status, 202)
            instrument.wait_for_log(f"activated {receiver}")
            self.assertRegex(instrument.log, f"activated {receiver}: activate_scheduled_absolute at "
                             r"\d+:\d+, 3[78]\.\d{3} s after the requested time "
                             r"\(UTC instead of TAI\?\)")

    def test_the_start_is_one_line(self):
        with tempfile.TemporaryDirectory() as folder:
            state = str(pathlib.Path(folder) / "s.json")
            configuration = str(EXAMPLES / "default.json")
            with Instrument("--state", state, "--config", configuration) as instrument:
                log = instrument.wait_for_log(f"serving {instrument.url} (listening at "
                                              f"127.0.0.1:{instrument.port}, at most ")
                line = next(line for line in log.splitlines() if "serving" in line)
                version = subprocess.run([PROGRAM, "--version"], stdout=subprocess.PIPE,
                                         check=True).stdout.decode().strip()
                for words in (version, "node " + instrument.node("self")["id"],
                              "configuration " + configuration, "state " + state):
                    self.assertIn(words, line)
            with Instrument() as instrument:
                instrument.wait_for_log("configuration none, state none, interfaces "
                                        f"{INTERFACES[0]} and {INTERFACES[1]}")

    def test_a_clock_before_1970(self):
        with Instrument(environment=with_fault("old_clock")) as instrument:
            instrument.wait_for_log("warning: the system clock shows a time before 1970, 3600 s "
                                    "before: times and versions start at 0 until it is set")
            self.assertEqual(instrument.status()["tai"], "0:0")
            receiver = instrument.resources("receivers")[0]
            self.assertEqual(instrument.node(receiver)["version"], "0:0")
            answer = instrument.patch(receiver, {"activation": {
                "mode": "activate_scheduled_relative", "requested_time": "0:200000000"}})
            self.assertEqual(answer.json["activation"]["activation_time"], "0:200000000")
            instrument.wait_for_log(f"activated {receiver}")
            self.assertEqual(instrument.node(receiver)["version"], "0:1")


if __name__ == "__main__":
    unittest.main()
