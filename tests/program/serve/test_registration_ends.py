# SPDX-License-Identifier: Apache-2.0
"""The program is ended or killed in each state of the registration, and starts again: then all
comes right."""

import signal
import time
import unittest

from registrations import LEAVES_WITHIN, RESOURCES, RegistrationTest
from stand_in import wait_until


class Ends(RegistrationTest):
    def end(self, instrument, with_signal):
        begin = time.monotonic()
        instrument.process.send_signal(with_signal)
        status = instrument.process.wait(timeout=30)
        if with_signal == signal.SIGTERM:
            self.assertEqual(status, 0, instrument.log[-2000:])
            self.assertLess(time.monotonic() - begin, LEAVES_WITHIN)

    def again(self, registry, *urls):
        instrument = self.started(*(urls or [registry]))
        self.all_is_well(registry, instrument)

    def while_searching(self, with_signal):
        registry = self.registry(started=False)
        instrument = self.start(registry)
        time.sleep(1.5)
        self.end(instrument, with_signal)
        registry.start()
        self.again(registry)

    def while_the_first_post_is_not_answered(self, with_signal):
        registry = self.registry()
        registry.behave(request="POST nodes/.*", mode="stall", processed=True)
        instrument = self.start(registry)
        wait_until(registry.posts, "the POST of the node")
        self.end(instrument, with_signal)
        registry.behave_well()
        if with_signal == signal.SIGTERM:
            # It may be there, so it was deleted.
            self.assertEqual(registry.count(), 0)
        self.again(registry)

    def while_what_was_left_is_deleted(self, with_signal):
        registry = self.registry()
        self.started(registry).end(signal.SIGKILL)
        registry.behave(request="DELETE nodes/.*", delay=0.5, count=1)
        instrument = self.start(registry)
        wait_until(lambda: registry.requests("DELETE"), "the DELETE of the node")
        self.end(instrument, with_signal)
        self.assertEqual(registry.count(), 0)
        self.again(registry)

    def while_posting(self, with_signal):
        registry = self.registry()
        registry.behave(request="POST (?!health).*", delay=0.1)
        instrument = self.start(registry)
        wait_until(lambda: registry.count() > 10, "some resources")
        self.end(instrument, with_signal)
        registry.behave_well()
        if with_signal == signal.SIGTERM:
            self.assertEqual(registry.count(), 0)
        self.again(registry)

    def while_registered(self, with_signal):
        registry = self.registry()
        instrument = self.started(registry)
        self.end(instrument, with_signal)
        self.assertEqual(registry.count(), 0 if with_signal == signal.SIGTERM else RESOURCES)
        self.again(registry)

    def while_a_change_is_posted(self, with_signal):
        registry = self.registry()
        instrument = self.started(registry)
        registry.behave(request="POST receivers/.*", delay=0.5)
        receiver = instrument.resources("receivers")[0]
        self.activate(instrument, receiver, 5020)
        wait_until(lambda: len(registry.posts(receiver)) == 2, "its POST")
        self.end(instrument, with_signal)
        registry.behave_well()
        if with_signal == signal.SIGTERM:
            self.assertEqual(registry.count(), 0)
        self.again(registry)

    def while_another_registry_is_asked(self, with_signal):
        registry = self.registry(fronts=2)
        instrument = self.started(*registry.urls)
        registry.behave(front=1, mode="stall")
        registry.front(0, "closed")
        wait_until(lambda: registry.requests()[-1]["front"] == 1, "the other front end")
        self.end(instrument, with_signal)
        registry.behave_well()
        registry.front(0, "open")
        self.again(registry, *registry.urls)

    def while_there_is_no_registry_any_more(self, with_signal):
        registry = self.registry()
        instrument = self.started(registry)
        registry.kill()
        wait_until(lambda: not self.status(instrument)["registered"], "it is lost")
        self.end(instrument, with_signal)
        registry.start()
        self.again(registry)

    def while_leaving(self, with_signal):
        registry = self.registry()
        instrument = self.started(registry)
        registry.behave(request="DELETE .*", delay=0.05)
        instrument.process.send_signal(signal.SIGTERM)
        wait_until(lambda: registry.count() < RESOURCES - 3, "some are deleted", step=0.01)
        self.end(instrument, with_signal)
        registry.behave_well()
        if with_signal == signal.SIGTERM:
            self.assertEqual(registry.count(), 0)
        self.again(registry)


def add_tests():
    """Each state with each signal is a test."""
    for name in [name for name in vars(Ends) if name.startswith("while_")]:
        for each in (signal.SIGTERM, signal.SIGKILL):
            def test(self, while_state=getattr(Ends, name), each=each):
                while_state(self, each)
            setattr(Ends, f"test_{each.name}_{name}", test)


add_tests()

if __name__ == "__main__":
    unittest.main()
