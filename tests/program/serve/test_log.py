# SPDX-License-Identifier: Apache-2.0
"""What the log says, to whom, and what happens when nobody reads it."""

import fcntl
import http.client
import os
import pathlib
import re
import select
import signal
import socket
import struct
import subprocess
import tempfile
import time
import unittest

from instrument import IMMEDIATE, PORT, SERVE, SINGLE, Instrument, file_patch, sdp_file, with_fault

ABSENT = "5709255c-c0ae-4e1e-99a0-e872e83e48e0"
LINE = re.compile(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z (debug|info|warning|error|critical): .+")


def lines_with(log, word):
    return [line for line in log.splitlines() if word in line]


def send_raw(instrument, data):
    """Whatever the answer is."""
    with socket.create_connection((instrument.host, instrument.port), timeout=0.5) as client:
        try:
            client.sendall(data)
            while client.recv(65536):
                pass
        except OSError:
            pass  # it waits for more, or has closed before it had read all


class Pipe:
    """Standard error as a pipe that is read only when the test asks for it."""

    def __init__(self):
        self.reader, self.writer = os.pipe()
        self.size = fcntl.fcntl(self.writer, fcntl.F_GETPIPE_SZ)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for descriptor in (self.reader, self.writer):
            if descriptor >= 0:
                os.close(descriptor)

    def close_writer(self):
        """Ours; the program has its own."""
        os.close(self.writer)
        self.writer = -1

    def close_reader(self):
        os.close(self.reader)
        self.reader = -1

    def waiting(self):
        return struct.unpack("i", fcntl.ioctl(self.reader, 0x541B, b"\0" * 4))[0]  # FIONREAD

    def read_until(self, text, seconds=20):
        got = b""
        end = time.monotonic() + seconds
        while text not in got:
            if not select.select([self.reader], [], [], max(0, end - time.monotonic()))[0]:
                raise AssertionError(f"{text} does not come: {got[-1000:]}")
            piece = os.read(self.reader, 65536)
            if not piece:
                raise AssertionError(f"{text} never came: {got[-1000:]}")
            got += piece
        return got.decode("ascii")


class Content(unittest.TestCase):
    def setUp(self):
        self.instrument = Instrument(log_level="info")
        self.addCleanup(self.instrument.end)
        self.receiver = self.instrument.resources("receivers")[0]

    def refusal_of(self, resource, body, **more):
        answer = self.instrument.patch(resource, body, **more)
        self.assertEqual(answer.status, 400, answer)
        log = self.instrument.wait_for_log("refused ")
        self.assertEqual(len(lines_with(log, "refused ")), 1)
        return answer, lines_with(log, "refused ")[0]

    def test_all_reasons_of_a_refused_file_are_there(self):
        """Each line of the parser, in one line of the log."""
        medium = ["m=video 5004 RTP/AVP 96", "c=IN IP4 233.252.0.1/64", "a=rtpmap:96 raw/90000",
                  "a=fmtp:96 sampling=RGBA; width=1; height=2; depth=99; colorimetry=BT1"]
        answer, line = self.refusal_of(self.receiver, file_patch(sdp_file(medium)))
        reasons = answer.json["debug"].rstrip("\n").splitlines()
        self.assertGreater(len(answer.json["debug"]), 72)
        self.assertTrue(line.endswith(" | ".join(reasons)), (line, reasons))

    def test_every_finding_is_in_the_line(self):
        answer, line = self.refusal_of(self.receiver, {f"member_{n}": n for n in range(12)})
        for n in range(12):
            self.assertIn(f"/member_{n}: ", line)
        self.assertEqual(line.count(" | "), answer.json["debug"].count("\n"))

    def test_what_a_client_sent_is_cut(self):
        _, line = self.refusal_of(self.receiver, {"sender_id": "x" * 100_000})
        self.assertIn("(100000 bytes)", line)
        self.assertLess(len(line), 1000)

    def test_every_line_has_a_time_in_utc_and_a_level(self):
        self.instrument.patch(self.receiver, IMMEDIATE)
        log = self.instrument.wait_for_log("activated")
        for line in log.splitlines():
            self.assertRegex(line, LINE)
        now = time.strftime("%Y-%m-%dT%H", time.gmtime(time.time()))
        before = time.strftime("%Y-%m-%dT%H", time.gmtime(time.time() - 60))
        self.assertIn(log[:13], (before, now))

    def test_the_client_is_named(self):
        """At every change and every refusal, in front."""
        sender = self.instrument.resources("senders")[0]
        single = f"{SINGLE}/{self.receiver}/staged"
        bulk = "/x-nmos/connection/v1.0/bulk/receivers"
        target = f"/x-nmos/node/v1.2/{self.receiver}/target"
        later = {"activation": {"mode": "activate_scheduled_relative", "requested_time": "900:0"}}
        cancel = {"activation": {"mode": None}}
        cases = [
            ("PATCH", single, {}, f"staged parameters of {self.receiver}"),
            ("PATCH", single, IMMEDIATE, f"activated {self.receiver}: activate_immediate"),
            ("PATCH", single, later, f"scheduled {self.receiver}: activate_scheduled_relative"),
            ("PATCH", single, {}, f"refused a change of {self.receiver}: 423 The resource is locked"),
            ("PATCH", single, cancel, f"cancelled the activation of {self.receiver}"),
            ("PATCH", single, {"x": 1}, f"refused a change of {self.receiver}: 400 The parameters"),
            ("PATCH", single, "{", f'refused "PATCH" "{single}": 400 The body cannot be read as JSON'),
            ("PATCH", f"{SINGLE}/{sender}/staged",
             {"transport_params": [{"source_port": 7, "destination_port": 8}, {}]},
             f"{sender}: source_port 7 of leg 1 is not kept"),
            ("POST", bulk, {}, f'refused "POST" "{bulk}": 400 The body is not a bulk request'),
            ("POST", bulk, [{"id": ABSENT, "params": {}}], f'refused a change of "{ABSENT}": 404'),
            ("POST", bulk, [{"id": self.receiver[10:], "params": {"x": 1}}],
             f"refused a change of {self.receiver}: 400"),
            ("PUT", target, {}, f"activated {self.receiver}: activate_immediate"),
            ("PUT", target, [], f'refused "PUT" "{target}": 400 The body is neither'),
        ]
        for number, (method, path, body, words) in enumerate(cases):
            with self.subTest(words):
                source = f"127.0.0.{number + 2}"
                self.instrument.request(method, path, body, source=source)
                log = self.instrument.wait_for_log(f" info: {source}:")
                line = lines_with(log, f" info: {source}:")[0]
                self.assertRegex(line, rf" info: {re.escape(source)}:\d+ {re.escape(words)}")
        self.instrument.request("PATCH", single, "{}", {"Content-Type": "text/\x1bplain"},
                                source="127.0.0.99")
        log = self.instrument.wait_for_log("127.0.0.99")
        self.assertIn('415 Unsupported media type: Content-Type: found "text/\\x1bplain"', log)

    def test_malformed_requests_do_not_fill_it(self):
        """The server's remarks on them name no client, so they count together."""
        with Instrument() as instrument:
            for _ in range(200):
                send_raw(instrument, b"GET / HTTP/1.1\r\nContent-Length: x\r\n\r\n")
            instrument.end_program()
            written = len(lines_with(instrument.log, "debug: http: "))
            self.assertGreater(written, 0)
            self.assertLess(written, 150)
            self.assertIn(" lines of http were left out", instrument.log)

    def test_one_client_does_not_fill_the_log(self):
        connection = self.instrument.connect("127.0.0.2")
        for _ in range(300):
            connection.request("PATCH", f"{SINGLE}/{self.receiver}/staged", b'{"x":1}',
                               {"Content-Type": "application/json"})
            connection.getresponse().read()
        self.instrument.patch(self.receiver, {"y": 1}, source="127.0.0.3")
        log = self.instrument.wait_for_log("info: 127.0.0.3:")
        written = len(lines_with(log, "info: 127.0.0.2:"))
        self.assertGreaterEqual(written, 50)
        self.assertLess(written, 250)
        # When lines are allowed again, the log says how many are missing.
        time.sleep(1.2)
        self.instrument.patch(self.receiver, {"x": 1}, source="127.0.0.2")
        # It may have said so before, if the requests took long: the last time counts.
        end = time.monotonic() + 10
        while self.written_and_said("127.0.0.2") != 300 and time.monotonic() < end:
            time.sleep(0.05)
        self.assertEqual(self.written_and_said("127.0.0.2"), 300)

    def written_and_said(self, client):
        """How many lines of a client the log has, and says that it has not, up to where it last said
        so."""
        log, found, _ = self.instrument.log.rpartition(f" lines of {client} were left out")
        said = re.findall(rf"info: (\d+) lines of {re.escape(client)} were left out", log + found)
        return len(lines_with(log, f"info: {client}:")) + sum(map(int, said))

    def test_at_the_end_it_says_what_was_left_out(self):
        connection = self.instrument.connect("127.0.0.2")
        for _ in range(300):
            connection.request("PATCH", f"{SINGLE}/{self.receiver}/staged", b'{"x":1}',
                               {"Content-Type": "application/json"})
            connection.getresponse().read()
        connection.close()
        self.instrument.process.send_signal(signal.SIGTERM)
        self.instrument.process.wait(timeout=30)
        log = self.instrument.log
        said = sum(int(count) for count in
                   re.findall(r"info: (\d+) lines of 127\.0\.0\.2 were left out", log))
        self.assertGreater(said, 0)
        self.assertEqual(len(lines_with(log, "info: 127.0.0.2:")) + said, 300)


class Strangers(unittest.TestCase):
    """Bytes from outside do not move the cursor of a terminal, nor forge lines."""

    BAD = b"\x01\x1b[2J\x7f\x80\xff\xc3\xa4"

    def assert_clean(self, instrument):
        raw = instrument.log_path.read_bytes()
        self.assertEqual(re.findall(rb"[^\n\x20-\x7e]", raw), [])
        for line in raw.decode("ascii").splitlines():
            self.assertRegex(line, LINE)
        return raw.decode("ascii")

    def test_raw_bytes_in_requests(self):
        with Instrument() as instrument:
            end = b" HTTP/1.1\r\nHost: a\r\nConnection: close\r\n"
            staged = f"{SINGLE}/{instrument.resources('receivers')[0]}/staged".encode()
            for data in (
                    b"GET /" + self.BAD + end + b"\r\n",
                    self.BAD + b" /" + end + b"\r\n",
                    b"GET / HTTP/" + self.BAD + b"\r\nHost: a\r\n\r\n",
                    b"GET /" + end + b"Content-Length: " + self.BAD + b"\r\n\r\n",
                    b"GET /" + end + self.BAD + b": 1\r\n\r\n",
                    b"GET /" + end + self.BAD + b"\r\n\r\n",
                    b"POST /" + end + b"Transfer-Encoding: " + self.BAD + b"\r\n\r\n",
                    b"POST /" + end + b"Transfer-Encoding: chunked\r\n\r\n" + self.BAD,
                    b"PATCH " + staged + end + b"Content-Type: " + self.BAD +
                    b"\r\nContent-Length: 2\r\n\r\n{}",
                    b"PATCH " + staged + end + b'Content-Length: 20\r\n\r\n{"' + self.BAD + b'":1}   '):
                send_raw(instrument, data)
            instrument.wait_for_log(r'"/\x01\x1b[2J\x7f\x80\xff\xc3\xa4" 400')
            instrument.wait_for_log(r"415 Unsupported media type: Content-Type: found")
            instrument.end_program()
            self.assert_clean(instrument)

    def test_file_names(self):
        with tempfile.TemporaryDirectory() as folder:
            name = os.fsencode(folder) + b"/state\n" + self.BAD
            shown = r"/state\x0a\x01\x1b[2J\x7f\x80\xff\xc3\xa4"
            with Instrument("--state", os.fsdecode(name)) as instrument:
                instrument.wait_for_log(f"no {folder}{shown} yet: starting with the configuration")
                instrument.wait_for_log(f"state {folder}{shown}, interfaces")
                instrument.end_program()
                self.assert_clean(instrument)
            pathlib.Path(os.fsdecode(name)).write_bytes(b"damaged")
            with Instrument("--state", os.fsdecode(name)) as instrument:
                instrument.wait_for_log(f"state file {folder}{shown} is damaged")
                self.assert_clean(instrument)
            run = subprocess.run([*SERVE, "--first-free-port", "--port", PORT, "--state",
                                  os.fsdecode(name) + "/below"],
                                 stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=30)
            self.assertEqual(run.returncode, 2)
            self.assertIn(shown + "/below", run.stderr.decode("ascii"))


class Levels(unittest.TestCase):
    def log_at(self, level):
        with Instrument(log_level=level) as instrument:
            receiver = instrument.resources("receivers")[0]
            instrument.patch(receiver, IMMEDIATE)
            instrument.patch(receiver, {"x": 1})
            instrument.end_program()
            return instrument.log

    def test_off_writes_nothing(self):
        self.assertEqual(self.log_at("off"), "")

    def test_warning_leaves_out_what_is_ordinary(self):
        self.assertEqual(self.log_at("warning"), "")

    def test_info_leaves_out_requests(self):
        log = self.log_at("info")
        self.assertIn("activated", log)
        self.assertIn("stopping on SIGTERM", log)
        self.assertNotIn(" debug: ", log)

    def test_debug_has_each_request(self):
        self.assertRegex(self.log_at("debug"),
                         r' debug: 127\.0\.0\.1:\d+ "PATCH" "/x-nmos/[^"]*/staged" 200 \d+ us\n')


class NobodyReads(unittest.TestCase):
    """The log is a pipe whose reader has stopped."""

    # One client may have 10 lines a second: several fill the pipe.
    CLIENTS = [f"127.0.1.{n}" for n in range(1, 61)]

    def fill(self, instrument, pipe):
        """Causes more lines than the pipe and the queue hold. All are answered."""
        receiver = instrument.resources("receivers")[0]
        body = {f"{n:02}" + "m" * 60: n for n in range(20)}  # refused with a long line
        for _ in range(2):
            for source in self.CLIENTS:
                connection = instrument.connect(source)
                for _ in range(25):
                    connection.request("GET", "/healthz")
                    self.assertEqual(connection.getresponse().read(), b'{"status":"ok"}\n')
                connection.close()
                self.assertEqual(instrument.patch(receiver, body, source=source).status, 400)
        self.assertGreater(pipe.waiting(), pipe.size // 2)

    def test_it_goes_on_and_says_what_is_lost(self):
        with Pipe() as pipe, Instrument(stderr=pipe.writer) as instrument:
            pipe.close_writer()
            self.fill(instrument, pipe)
            receiver = instrument.resources("receivers")[0]
            self.assertEqual(instrument.patch(receiver, IMMEDIATE).status, 200)
            # Reading goes on.
            log = pipe.read_until(b"because nobody read them")
            lost = int(re.search(r"warning: (\d+) lines of the log are lost, because nobody read them",
                                 log).group(1))
            self.assertGreater(lost, 1000)
            instrument.patch(receiver, {"last": 1}, source="127.0.2.1")
            log += pipe.read_until(b"/last: ")
            for line in log.splitlines()[:-1]:
                self.assertRegex(line, LINE)
            # None is lost without being counted.
            requests = 2 * len(self.CLIENTS) * 26
            seen = len(re.findall(r"127\.0\.1\.\d+:\d+ ", log))
            self.assertLess(seen, requests + 2 * len(self.CLIENTS))
            instrument.process.send_signal(signal.SIGTERM)
            pipe.read_until(b"stopping on SIGTERM\n")
            self.assertEqual(instrument.process.wait(timeout=30), 0)

    def test_it_ends_although_nobody_reads(self):
        with Pipe() as pipe, Instrument(stderr=pipe.writer) as instrument:
            self.fill(instrument, pipe)
            instrument.process.send_signal(signal.SIGTERM)
            self.assertEqual(instrument.process.wait(timeout=15), 0)

    def test_at_the_end_the_rest_is_written_to_a_slow_reader(self):
        with Pipe() as pipe, Instrument(stderr=pipe.writer) as instrument:
            pipe.close_writer()
            self.fill(instrument, pipe)
            instrument.process.send_signal(signal.SIGTERM)
            time.sleep(0.3)
            pipe.read_until(b"stopping on SIGTERM\n")
            self.assertEqual(instrument.process.wait(timeout=15), 0)

    def test_a_full_pipe_from_the_start(self):
        with Pipe() as pipe:
            os.set_blocking(pipe.writer, False)
            try:
                while True:
                    os.write(pipe.writer, b"x" * 4096)
            except BlockingIOError:
                pass
            os.set_blocking(pipe.writer, True)
            with Instrument(stderr=pipe.writer) as instrument:
                receiver = instrument.resources("receivers")[0]
                self.assertEqual(instrument.patch(receiver, IMMEDIATE).status, 200)
                instrument.process.send_signal(signal.SIGTERM)
                self.assertEqual(instrument.process.wait(timeout=15), 0)

    def test_the_reader_goes_away(self):
        with Pipe() as pipe, Instrument(stderr=pipe.writer) as instrument:
            pipe.close_writer()
            pipe.close_reader()
            receiver = instrument.resources("receivers")[0]
            for _ in range(100):
                self.assertEqual(instrument.patch(receiver, IMMEDIATE).status, 200)
            self.assertEqual(instrument.end(), 0)

    def test_a_terminal_that_is_stopped(self):
        try:
            master, terminal = os.openpty()
        except OSError as error:
            self.skipTest(f"there are no terminals here: {error}")
        try:
            with Instrument(stderr=terminal) as instrument:
                os.write(master, b"\x13")  # Ctrl-S
                receiver = instrument.resources("receivers")[0]
                for source in self.CLIENTS:
                    for _ in range(10):
                        answer = instrument.patch(receiver, {"x" * 90: 1}, source=source)
                        self.assertEqual(answer.status, 400)
                instrument.process.send_signal(signal.SIGTERM)
                self.assertEqual(instrument.process.wait(timeout=15), 0)
        finally:
            os.close(master)
            os.close(terminal)

    def test_a_socket_that_nobody_reads(self):
        ours, theirs = socket.socketpair()
        with ours, theirs, Instrument(stderr=theirs) as instrument:
            receiver = instrument.resources("receivers")[0]
            for source in self.CLIENTS:
                connection = instrument.connect(source)
                for _ in range(45):
                    connection.request("GET", "/healthz" + "x" * 90)
                    connection.getresponse().read()
                connection.close()
            self.assertEqual(instrument.patch(receiver, IMMEDIATE).status, 200)
            instrument.process.send_signal(signal.SIGTERM)
            self.assertEqual(instrument.process.wait(timeout=15), 0)

    def test_a_long_line_is_whole(self):
        with Pipe() as pipe, Instrument(stderr=pipe.writer, log_level="info") as instrument:
            receiver = instrument.resources("receivers")[0]
            body = {f"{n:02}" + "\x01" * 90: "\x02" * 90 for n in range(20)}
            self.assertEqual(instrument.patch(receiver, body).status, 400)
            line = pipe.read_until(b'/"19\\x01')
            self.assertGreater(len(line), 4096)
            self.assertEqual(line.count(" | "), 19)


class ShortMemory(unittest.TestCase):
    def test_lines_are_lost_and_the_log_goes_on(self):
        with tempfile.NamedTemporaryFile() as control:
            def one_fails_in(allocations):
                control.seek(0)
                control.write(struct.pack("I", allocations))
                control.flush()

            one_fails_in(0)
            environment = with_fault("short_memory", NMOS_SHORT_MEMORY=control.name)
            with Instrument(environment=environment) as instrument:
                receiver = instrument.resources("receivers")[0]
                body = {f"{n:02}" + "m" * 60: n for n in range(20)}
                one_fails_in(10)
                for n in range(100):
                    try:
                        instrument.patch(receiver, body, source=f"127.0.3.{n + 1}")
                    except (OSError, http.client.HTTPException):
                        pass  # the server had no memory for an answer
                one_fails_in(0)
                instrument.patch(receiver, {"x": 1}, source="127.0.4.1")
                instrument.wait_for_log("info: 127.0.4.1:")
                instrument.wait_for_log("lines of the log are lost, because")
                self.assertEqual(instrument.end_program(), 0)
                for line in instrument.log.splitlines():
                    self.assertRegex(line, LINE)


class StandardDescriptors(unittest.TestCase):
    def test_an_output_that_nobody_reads(self):
        """The URL does not fit any more: it is not printed, and the program serves."""
        with Pipe() as pipe:
            os.set_blocking(pipe.writer, False)
            try:
                while True:
                    os.write(pipe.writer, b"x")
            except BlockingIOError:
                pass
            os.set_blocking(pipe.writer, True)
            with Instrument(stdout=pipe.writer) as instrument:
                instrument.wait_for_log("standard output: the URL could not be written")
                instrument.process.send_signal(signal.SIGTERM)
                self.assertEqual(instrument.process.wait(timeout=15), 0)

    def test_an_output_whose_reader_is_gone(self):
        with Pipe() as pipe:
            pipe.close_reader()
            with Instrument(stdout=pipe.writer) as instrument:
                instrument.wait_for_log("standard output: the URL could not be written")
                self.assertEqual(instrument.end(), 0)

    def test_closed_ones_are_not_taken_by_other_files(self):
        """Else the log would be written into the state file."""
        with tempfile.TemporaryDirectory() as folder:
            state = pathlib.Path(folder) / "state"
            process = subprocess.Popen(
                [*SERVE, "--first-free-port", "--port", PORT, "--state", str(state)],
                preexec_fn=lambda: [os.close(descriptor) for descriptor in (0, 1, 2)])
            try:
                end = time.monotonic() + 20
                while not state.exists() and time.monotonic() < end:
                    time.sleep(0.02)
                targets = [os.readlink(f"/proc/{process.pid}/fd/{descriptor}")
                           for descriptor in (0, 1, 2)]
                self.assertEqual(targets, ["/dev/null"] * 3)
            finally:
                process.send_signal(signal.SIGTERM)
                self.assertEqual(process.wait(timeout=30), 0)


if __name__ == "__main__":
    unittest.main()
