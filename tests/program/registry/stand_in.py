# SPDX-License-Identifier: Apache-2.0
"""registry.py at work, and questions to it."""

import http.client
import itertools
import json
import os
import pathlib
import subprocess
import sys
import time

PROGRAM = pathlib.Path(__file__).resolve().parent / "registry.py"

# Away from the ports that the system gives to clients, so that nobody has taken the port of a
# registry that was killed and starts again.
FIRST_PORT = int(os.environ.get("NMOS_PORT", "23000")) + 4000
ports = itertools.count(FIRST_PORT)


class Registry:
    """`with` ends it."""

    def __init__(self, fronts=1, expiry=12.0, certificate=None, started=True):
        """`fronts`: how many ports it has. `certificate`: for https, from certificates.py.
        `started`: false for one that is to appear later; its URL is known nevertheless."""
        self.ports = [next(ports) for _ in range(fronts)]
        self.expiry = expiry
        self.certificate = certificate
        self.process = None
        self.connection = None
        if started:
            self.start()

    @property
    def urls(self):
        scheme = "https" if self.certificate else "http"
        return [f"{scheme}://127.0.0.1:{port}" for port in self.ports]

    @property
    def url(self):
        return self.urls[0]

    def start(self):
        """Empty."""
        arguments = [sys.executable, str(PROGRAM), "--expiry", str(self.expiry)]
        for port in self.ports:
            arguments += ["--port", str(port)]
        if self.certificate:
            arguments += ["--certificate", str(self.certificate)]
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

    # What is there, and what happened.

    def resources(self):
        """{"nodes": {id: data}, "devices": ...}"""
        return self.ask("GET", "/resources")

    def count(self):
        return sum(map(len, self.resources().values()))

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


def wait_until(condition, what, limit=10.0, step=0.05):
    """Waits until condition() holds, and returns what it says."""
    end = time.monotonic() + limit
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > end:
            raise AssertionError(f"not within {limit} s: {what}")
        time.sleep(step)
