# SPDX-License-Identifier: Apache-2.0
"""Which signals end the program, and which do not."""

import pathlib
import resource
import signal
import tempfile
import threading
import time
import unittest

from instrument import IMMEDIATE, Instrument

# And how the log names them.
HARMLESS = {signal.SIGUSR1: "SIGUSR1", signal.SIGUSR2: "SIGUSR2", signal.SIGALRM: "SIGALRM",
            signal.SIGIO: "SIGPOLL", signal.SIGVTALRM: "SIGVTALRM", signal.SIGPROF: "SIGPROF",
            signal.SIGPWR: "SIGPWR", signal.SIGXCPU: "SIGXCPU",
            signal.SIGRTMIN: "signal 34", signal.SIGRTMAX: "signal 64"}
SILENT = [signal.SIGPIPE, signal.SIGXFSZ]


class Signals(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.state = str(pathlib.Path(folder.name) / "state")

    def start(self, **more):
        return Instrument("--state", self.state, **more)

    def assert_works(self, instrument, port):
        """A change is answered and saved."""
        receiver = instrument.resources("receivers")[0]
        answer = instrument.patch(receiver, {"transport_params": [{"destination_port": port}, {}],
                                             **IMMEDIATE})
        self.assertEqual(answer.status, 200, answer)
        self.assertEqual(instrument.status()["state_file"], "saved")

    def test_these_do_not_end_it(self):
        with self.start() as instrument:
            for number, (each, name) in enumerate(HARMLESS.items()):
                with self.subTest(each):
                    instrument.process.send_signal(each)
                    instrument.process.send_signal(each)
                    instrument.wait_for_log(f"info: {name} is ignored")
                    self.assert_works(instrument, 7000 + number)
                    self.assertEqual(instrument.log.count(f"{name} is ignored"), 1)
            for each in SILENT:
                instrument.process.send_signal(each)
                self.assert_works(instrument, 8000 + each)
            self.assertEqual(instrument.end(), 0)
        with self.start() as instrument:
            active = instrument.active(instrument.resources("receivers")[0])
            self.assertEqual(active["transport_params"][0]["destination_port"],
                             8000 + SILENT[-1])

    def test_hangup_is_answered_every_time(self):
        with self.start() as instrument:
            for count in (1, 2):
                instrument.process.send_signal(signal.SIGHUP)
                instrument.wait_for_log("SIGHUP: nothing to reopen, the log goes to standard error",
                                        count)
                self.assert_works(instrument, 9000 + count)

    def test_terminate_and_interrupt_end_it_in_order(self):
        for each in (signal.SIGTERM, signal.SIGINT):
            with self.start() as instrument:
                self.assert_works(instrument, 9100)
                instrument.process.send_signal(each)
                self.assertEqual(instrument.process.wait(timeout=30), 0)
                self.assertIn(f"stopping on {each.name}\n", instrument.log)

    def test_further_ones_while_it_stops_change_nothing(self):
        with self.start() as instrument:
            # A request that is not complete: stopping waits for it.
            connection = instrument.connect()
            connection.connect()
            connection.sock.sendall(b"GET / HTTP/1.1\r\nHost: a\r\n")
            instrument.wait_for_log("serving")
            for each in (signal.SIGTERM, signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
                instrument.process.send_signal(each)
                time.sleep(0.05)
            self.assertEqual(instrument.process.wait(timeout=30), 0)
            self.assertEqual(instrument.log.count("stopping on"), 1)
            connection.close()

    def test_a_flood_of_them(self):
        with self.start() as instrument:
            ends = threading.Event()

            def flood():
                while not ends.is_set():
                    for each in HARMLESS:
                        instrument.process.send_signal(each)

            thread = threading.Thread(target=flood)
            thread.start()
            for port in range(9200, 9230):
                self.assert_works(instrument, port)
            ends.set()
            thread.join()

    def test_a_file_that_may_not_grow(self):
        with self.start() as instrument:
            self.assert_works(instrument, 9300)
            resource.prlimit(instrument.process.pid, resource.RLIMIT_FSIZE, (1000, 1000))
            receiver = instrument.resources("receivers")[0]
            self.assertEqual(instrument.patch(receiver, IMMEDIATE).status, 500)
            self.assertIn("File too large", instrument.status()["state_file"])

    def test_only_the_first_thread_takes_them(self):
        with self.start() as instrument:
            masks = {}
            for task in pathlib.Path(f"/proc/{instrument.process.pid}/task").iterdir():
                status = (task / "status").read_text(encoding="ascii")
                mask = next(line for line in status.splitlines() if line.startswith("SigBlk"))
                masks[task.name] = int(mask.split()[1], 16)
            self.assertGreater(len(masks), 4)
            # The first one waits for them, so they are not blocked there.
            del masks[str(instrument.process.pid)]
            for task, mask in masks.items():
                for each in [signal.SIGTERM, signal.SIGINT, signal.SIGHUP, *HARMLESS]:
                    self.assertTrue(mask & 1 << (each - 1), (task, each))


if __name__ == "__main__":
    unittest.main()
