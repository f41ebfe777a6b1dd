# SPDX-License-Identifier: Apache-2.0
"""A running virtual instrument, and HTTP requests to it."""

import http.client
import json
import os
import pathlib
import signal
import subprocess
import tempfile
import time
import unittest

PROGRAM = os.environ.get("NMOS_INSTRUMENT", "nmos-instrument")
PORT = os.environ.get("NMOS_PORT", "23000")
# Whoever runs the tests may have a registry in the network: it must not hear of them.
SERVE = [PROGRAM, "serve", "--no-registration"]
EXAMPLES = pathlib.Path(os.environ.get("NMOS_EXAMPLES", "docs/examples"))
FAULTS = pathlib.Path(os.environ.get("NMOS_FAULTS", "build/release/tests/program/faults"))

NODE = "/x-nmos/node/v1.2"
CONNECTION = "/x-nmos/connection/v1.0"
SINGLE = CONNECTION + "/single"

# The interfaces and the first destinations of the default configuration.
INTERFACES = ["192.0.2.10", "198.51.100.10"]


class Answer:
    def __init__(self, response):
        self.status = response.status
        self.headers = {name.lower(): value for name, value in response.getheaders()}
        self.body = response.read()
        self.text = self.body.decode("utf-8")

    @property
    def json(self):
        return json.loads(self.text)

    def __repr__(self):
        return f"{self.status} {self.text}"


def with_fault(name, **variables):
    """The environment of a program on a machine with the fault tests/program/faults/<name>.cpp,
    controlled by the variables. Skips the test if this build does not have it."""
    library = FAULTS / f"{name}.so"
    if not library.exists():
        raise unittest.SkipTest(f"this build has no {name}")
    # The sanitizers want to be the first library; after a fault they work as well.
    sanitizer = os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"
    return {**os.environ, "LD_PRELOAD": str(library), "ASAN_OPTIONS": sanitizer, **variables}


class Instrument:
    """The program at work; `with` ends it."""

    def __init__(self, *options, configuration=None, environment=None, stderr=None, stdout=None,
                 log_level="debug", registries=None, run_by=()):
        """`stderr` and `stdout` take the place of the file that `log` reads and of the pipe that
        the URL is read from; without that pipe the port is not known.
        `registries`: URLs. None: it does not register, unless the options say so; an empty list: as
        the configuration says. `run_by`: a command that runs the program."""
        self.folder = tempfile.TemporaryDirectory()
        registers = registries is not None or "--registry" in options
        arguments = [*run_by, *([PROGRAM, "serve"] if registers else SERVE), "--first-free-port",
                     "--port", PORT, "--log-level", log_level, *options]
        for url in registries or ():
            arguments += ["--registry", url]
        if configuration is not None:
            path = pathlib.Path(self.folder.name) / "configuration.json"
            path.write_text(json.dumps(configuration), encoding="utf-8")
            arguments += ["--config", str(path)]
        self.log_path = pathlib.Path(self.folder.name) / "log"
        with self.log_path.open("wb") as log:
            self.process = subprocess.Popen(arguments, stdout=stdout or subprocess.PIPE,
                                            stderr=stderr or log, env=environment)
        if stdout is not None:
            return
        self.url = self.process.stdout.readline().decode().strip()
        if not self.url:
            self.process.wait(timeout=30)
            raise AssertionError("it did not start: " + self.log)
        self.host, port = self.url[len("http://"):].rstrip("/").split(":")
        self.port = int(port)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()

    def end_program(self, with_signal=signal.SIGTERM):
        """The log is complete then, and can still be read."""
        if self.process.poll() is None:
            self.process.send_signal(with_signal)
        return self.process.wait(timeout=30)

    def end(self, with_signal=signal.SIGTERM):
        status = self.end_program(with_signal)
        if self.process.stdout is not None:
            self.process.stdout.close()
        self.folder.cleanup()
        return status

    @property
    def log(self):
        return self.log_path.read_text(encoding="utf-8", errors="replace")

    def wait_for_log(self, text, count=1):
        """The log is written by a thread of its own, so a line may come after the answer that it
        tells of. Waits until `text` is there `count` times, and returns the log."""
        end = time.monotonic() + 10
        while self.log.count(text) < count:
            if time.monotonic() > end:
                raise AssertionError(f"not in the log: {text!r}\n{self.log[-2000:]}")
            time.sleep(0.01)
        return self.log

    def connect(self, source=""):
        """`source`: the client's address, for tests of what the log says of one client; others may
        have used up the lines of 127.0.0.1."""
        return http.client.HTTPConnection(self.host, self.port, timeout=30,
                                          source_address=(source, 0) if source else None)

    def request(self, method, path, body=None, headers=None, source=""):
        """`body` as it is when it is text or bytes, else as JSON; None is no body."""
        if body is not None and not isinstance(body, (str, bytes)):
            body = json.dumps(body)
            headers = {"Content-Type": "application/json", **(headers or {})}
        if isinstance(body, str):
            body = body.encode("utf-8")
        connection = self.connect(source)
        try:
            connection.request(method, path, body, headers or {})
            return Answer(connection.getresponse())
        finally:
            connection.close()

    def get(self, path):
        return self.request("GET", path)

    def patch(self, resource, body, **more):
        """`resource` like "receivers/<id>"."""
        return self.request("PATCH", f"{SINGLE}/{resource}/staged", body, **more)

    def staged(self, resource):
        return self.get(f"{SINGLE}/{resource}/staged").json

    def active(self, resource):
        return self.get(f"{SINGLE}/{resource}/active").json

    def node(self, resource):
        return self.get(f"{NODE}/{resource}").json

    def ids(self, kind):
        """Of all senders or receivers that are shown, in the order of the records."""
        return [entry["id"] for entry in self.get(f"{NODE}/{kind}").json]

    def resources(self, kind):
        return [f"{kind}/{id}" for id in self.ids(kind)]

    def sdp(self, sender):
        return self.get(f"{SINGLE}/{sender}/transportfile").text

    def status(self):
        return self.get("/status").json

    def resident_kib(self):
        status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text(encoding="ascii")
        return next(int(line.split()[1]) for line in status.splitlines() if line.startswith("VmRSS"))


class StateTest(unittest.TestCase):
    """Tests with a folder for a state file of their own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.file = self.folder / "state"

    def names(self):
        """Of what is in the folder."""
        return sorted(path.name for path in self.folder.iterdir())


class InstrumentTest(unittest.TestCase):
    """Tests that share one instrument; subclasses may set how it is started."""

    options = ()
    configuration = None

    @classmethod
    def setUpClass(cls):
        cls.instrument = Instrument(*cls.options, configuration=cls.configuration)

    @classmethod
    def tearDownClass(cls):
        if cls.instrument.process.poll() is not None:
            raise AssertionError("the program has ended: " + cls.instrument.log[-2000:])
        status = cls.instrument.end()
        if status != 0:
            raise AssertionError(f"the program ended with status {status}")

    def assert_error(self, answer, status, *words):
        """An error of IS-04 and IS-05, whose debug text has all the words."""
        self.assertEqual(answer.status, status, answer)
        self.assertEqual(answer.headers["content-type"], "application/json")
        self.assertEqual(answer.headers["access-control-allow-origin"], "*")
        self.assertEqual(set(answer.json), {"code", "error", "debug"})
        self.assertEqual(answer.json["code"], status)
        self.assertNotEqual(answer.json["error"], "")
        for word in words:
            self.assertIn(word, f"{answer.json['error']} {answer.json['debug']}")


def seconds(tai):
    """Of a "<seconds>:<nanoseconds>" text, as a pair that compares."""
    whole, nanoseconds = tai.split(":")
    return int(whole), int(nanoseconds)


def sdp_file(*media, session=""):
    """A DUP group of two media, or one medium alone; each is a list of lines."""
    lines = ["v=0", "o=- 1 1 IN IP4 203.0.113.9", "s=test", "t=0 0"]
    if session:
        lines.append(session)
    if len(media) == 2:
        lines.append("a=group:DUP one two")
    for name, medium in zip(("one", "two"), media):
        lines += medium
        if len(media) == 2:
            lines.append("a=mid:" + name)
    return "\r\n".join(lines) + "\r\n"


def video_medium(address="233.252.0.1", port=5004, source=None, encoding="raw/90000"):
    lines = [f"m=video {port} RTP/AVP 96", f"c=IN IP4 {address}/64", f"a=rtpmap:96 {encoding}"]
    if source:
        lines.append(f"a=source-filter: incl IN IP4 {address} {source}")
    return lines


def file_patch(sdp, **more):
    return {"transport_file": {"data": sdp, "type": "application/sdp"}, **more}


IMMEDIATE = {"activation": {"mode": "activate_immediate"}}
