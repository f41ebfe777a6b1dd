# SPDX-License-Identifier: Apache-2.0
"""How a registry can be told to misbehave."""

import re
import threading
import time

MODES = {
    "garbage": "answers with bytes that are not HTTP",
    "half": "ends the connection in the middle of the body",
    "chunked": "sends the right body in chunks",
    "close": "answers rightly, and then ends the connection",
    "drop": "ends the connection without an answer",
    "stall": "never answers",
    "trickle": "sends a byte of the body now and then, for ever",
    "flood": "sends a body that never ends, as fast as it can",
}


class Fault:
    def __init__(self, *, request=".*", front=None, status=None, body=None, headers=None,
                 delay=0.0, mode=None, processed=None, seconds=None, count=None):
        """`request`: a regular expression for all of "METHOD TARGET", as registry.py explains.
        `front`: through which of the ports; None is any.
        `status`, `body`, `headers`: the answer in place of the right one. Without a body it is an
        error of IS-04.
        `delay`: seconds before the answer. With a delay alone the answer is the right one.
        `mode`: one of MODES, in place of an answer.
        `processed`: whether the registry does what it was asked for nevertheless. It does if the
        answer is to be the right one.
        `seconds`, `count`: when the fault ends; None is never."""
        if mode is not None and mode not in MODES:
            raise ValueError(f"mode {mode!r} is none of {', '.join(MODES)}")
        self.request = re.compile(request)
        self.front = front
        self.status = status
        self.body = body
        self.headers = headers or {}
        self.delay = delay
        self.mode = mode
        self.processed = processed if processed is not None else (
            status is None and mode in (None, "chunked", "close"))
        self.until = None if seconds is None else time.monotonic() + seconds
        self.left = count

    def applies(self, request, front):
        return (self.left != 0 and (self.until is None or time.monotonic() < self.until)
                and self.front in (None, front) and self.request.fullmatch(request))


class Faults:
    """The first that applies counts."""

    def __init__(self):
        self.lock = threading.Lock()
        self.faults = []

    def add(self, fault):
        with self.lock:
            self.faults.append(fault)

    def clear(self):
        with self.lock:
            self.faults.clear()

    def take(self, request, front):
        with self.lock:
            for fault in self.faults:
                if fault.applies(request, front):
                    if fault.left is not None:
                        fault.left -= 1
                    return fault
        return None
