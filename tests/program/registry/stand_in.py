# SPDX-License-Identifier: Apache-2.0
"""registry.py at work, and questions to it."""

import http.client
import itertools
import json
import os
import pathlib
import socket
import subprocess
import sys
import time

PROGRAM = pathlib.Path(__file__).resolve().parent / "registry.py"

# Tests that run side by side have an address each, all of them this machine's own. The ports are
# none of those that the system gives to clients: nobody has taken the port of a registry that was
# killed and starts again.
ADDRESS = os.environ.get("NMOS_REGISTRY_ADDRESS", "127.0.0.2")
ports = itertools.count(8200)


class Registry:
    """`with` ends it."""

    def __init__(self, fronts=1, expiry=12.0, certificate=None, started=True, address=ADDRESS,
                 host=None):
        """`fronts`: how many ports it has. `certificate`: for https, from certificates.py.
        `started`: false for one that is to appear later; its URL is known nevertheless.
        `host`: what the URL has for the address."""
        self.address = address
        self.host = host or address
        self.ports = [next(ports) for _ in range(fronts)]
        self.expiry = expiry
        self.certificate = certificate
        self.process = None
        self.connection = None
        self.starts = 0
        if started:
            self.start()

    @property
    def urls(self):
        scheme = "https" if self.certificate else "http"
        return [f"{scheme}://{self.host}:{port}" for port in self.ports]

    @property
    def url(self):
        return self.urls[0]

    def start(self):
        """It is empty then."""
        arguments = [sys.executable, str(PROGRAM), "--address", self.address,
                     "--expiry", str(self.expiry)]
        for port in self.ports:
            arguments += ["--port", str(port)]
        if self.certificate:
            arguments += ["--certificate", str(self.certificate)]
        if self.starts:
            arguments.append("--restarted")
        self.starts += 1
        self.process = subprocess.Popen(arguments, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        said = self.process.stdout.readline()
        if not said:
            raise AssertionError(f"it did not start: status {self.process.wait()}")
        self.connection = http.client.HTTPConnection("127.0.0.1", int(said), timeout=30)

    def kill(self):
        """Without a chance to say good-bye."""
        if not self.process:
            return
        self.connection.close()
        self.process.kill()
        self.process.wait()
        self.process.stdin.close()
        self.process.stdout.close()
        self.process = None

    def restart(self):
        self.kill()
        self.start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.kill()

    def ask(self, method, path, body=None):
        self.connection.request(method, path, None if body is None else json.dumps(body))
        response = self.connection.getresponse()
        answer = json.loads(response.read())
        if response.status != 200:
            raise AssertionError(f"{method} {path} {body}: {answer}")
        return answer

    # How it shall behave.

    def behave(self, **fault):
        """See class Fault."""
        self.ask("POST", "/behave", fault)

    def behave_well(self):
        self.ask("DELETE", "/behave")

    def front(self, index, state):
        self.ask("POST", "/front", {"front": index, "state": state})

    def forget(self):
        """All nodes, as if their time were over."""
        self.ask("POST", "/forget")

    # What is there, and what happened.

    def resources(self):
        """{"nodes": {id: data}, "devices": ...}"""
        return self.ask("GET", "/resources")

    def count(self):
        return self.ask("GET", "/count")

    def requests(self, start="", since=0):
        """Those whose "METHOD TARGET" begins so."""
        return [each for each in self.ask("GET", f"/requests?since={since}")
                if f"{each['method']} {each['target']}".startswith(start)]

    def posts(self, start="", since=0):
        """Of resources, not heartbeats."""
        return [each for each in self.requests("POST " + start, since)
                if not each["target"].startswith("health/")]

    def heartbeats(self):
        """The times of those that were accepted, of the one node that there is."""
        [times] = self.ask("GET", "/heartbeats").values() or [[]]
        return times

    def history(self):
        return self.ask("GET", "/history")

    def violations(self):
        return [each["what"] for each in self.ask("GET", "/violations")]


def has_ipv6():
    """Whether this machine can talk to itself by IPv6."""
    try:
        with socket.create_server(("::1", 0), family=socket.AF_INET6):
            return True
    except OSError:
        return False


def wait_until(condition, what, limit=60.0, step=0.05):
    """Waits until condition() holds, and returns what it says. The limit is longer than anything
    takes on a busy machine: how long it took is for the records to say."""
    end = time.monotonic() + limit
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > end:
            raise AssertionError(f"not within {limit} s: {what}")
        time.sleep(step)
