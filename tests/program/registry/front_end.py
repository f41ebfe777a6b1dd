# SPDX-License-Identifier: Apache-2.0
"""One port of a registry: HTTP/1.1 that a test can close, or have misbehave."""

import contextlib
import hashlib
import http.server
import itertools
import json
import re
import socket
import ssl
import threading
import time

from contents import BASE, PARENTS, Answer, refusal

KINDS = "|".join(PARENTS)


def target(method, path, body):
    """What a request is about, for faults and records: "receivers/<id>" for a resource however it
    is asked for, "health/<id>", or else the path."""
    if method == "POST" and path == BASE + "/resource":
        with contextlib.suppress(ValueError, TypeError, KeyError):
            envelope = json.loads(body)
            return f"{envelope['type']}s/{envelope['data']['id']}"
    for start in (BASE + "/resource/", BASE + "/health/nodes/"):
        if path.startswith(start):
            return path.replace(BASE + "/resource/", "").replace(BASE + "/health/nodes/", "health/")
    return path


def version(body):
    with contextlib.suppress(ValueError, TypeError, KeyError):
        return json.loads(body)["data"]["version"]
    return None


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    disable_nagle_algorithm = True
    wbufsize = -1  # an answer is one segment

    numbers = itertools.count()

    def setup(self):
        if isinstance(self.request, ssl.SSLSocket):
            self.request.do_handshake()
        super().setup()
        self.number = next(Handler.numbers)

    def answer_request(self):
        arrived = time.monotonic()
        body = self.rfile.read(int(self.headers.get("Content-Length") or 0))
        about = target(self.command, self.path, body)
        fault = self.server.faults.take(f"{self.command} {about}", self.server.index)
        record = {
            "time": arrived, "answered": None, "status": None, "front": self.server.index,
            "connection": self.number, "method": self.command, "path": self.path, "target": about,
            "content_type": self.headers.get("Content-Type"), "version": version(body),
            "sha256": hashlib.sha256(body).hexdigest(), "mode": fault.mode if fault else None,
        }
        self.server.records.append(record)
        answer = self.process(body) if not fault or fault.processed else None
        if fault:
            time.sleep(fault.delay)
            if fault.status:
                answer = Answer(fault.status, fault.body, fault.headers)
                if fault.body is None and fault.status >= 300:
                    answer.body = refusal(fault.status, "as a test asked for").body
            if fault.mode in ANSWERS:
                ANSWERS[fault.mode](self)
                return
        # Before it is sent: a test that knows of the answer also finds it in the record.
        record["status"] = answer.status
        record["answered"] = time.monotonic()
        self.send(answer, fault.mode if fault else None)

    do_GET = do_POST = do_PUT = do_PATCH = do_DELETE = do_HEAD = do_OPTIONS = answer_request

    def process(self, body):
        contents = self.server.contents
        if "Transfer-Encoding" in self.headers:
            return contents.refuse_violation(f"{self.command} {self.path} with Transfer-Encoding")
        if self.path != BASE + "/" and self.path.endswith("/") and self.command != "GET":
            # IS-04 v1.2, APIs, URLs: Approach to Trailing Slashes.
            contents.violation(f"{self.command} {self.path} ends with a slash")
            return refusal(404, "no slash there")
        if self.command == "POST" and self.path == BASE + "/resource":
            if self.headers.get("Content-Type") != "application/json":
                return contents.refuse_violation(
                    f"Content-Type {self.headers.get('Content-Type')!r} of a resource")
            return contents.post(body)
        # IS-04 v1.2, APIs: Client Side Implementation Notes, Empty Request Bodies.
        if body or self.headers.get("Content-Type") is not None:
            return contents.refuse_violation(
                f"{self.command} {self.path} with {len(body)} bytes of body and Content-Type "
                f"{self.headers.get('Content-Type')!r}")
        return self.process_empty()

    def process_empty(self):
        contents = self.server.contents
        path = self.path.rstrip("/") if self.command == "GET" else self.path
        resource = re.fullmatch(f"{BASE}/resource/({KINDS})s/([^/]+)", path)
        if resource and self.command == "DELETE":
            return contents.delete(*resource.groups())
        if resource and self.command == "GET":
            return contents.get(*resource.groups())
        health = re.fullmatch(f"{BASE}/health/nodes/([^/]+)", path)
        if health and self.command == "POST":
            return contents.heartbeat(health.group(1))
        if health and self.command == "GET":
            return contents.health(health.group(1))
        if path == BASE and self.command == "GET":
            return Answer(200, ["resource/", "health/"])
        contents.violation(f"{self.command} {self.path} is not in the Registration API")
        return refusal(404, "there is no such path or method")

    def send(self, answer, mode):
        body = b"" if answer.body is None else json.dumps(answer.body).encode()
        self.send_response_only(answer.status)
        if body:
            self.send_header("Content-Type", "application/json")
        if mode == "chunked" and body:
            self.send_header("Transfer-Encoding", "chunked")
            half = len(body) // 2
            body = b"".join(b"%x\r\n%s\r\n" % (len(each), each)
                            for each in (body[:half], body[half:], b""))
        elif answer.status != 204:
            self.send_header("Content-Length", str(len(body)))
        for name, value in answer.headers.items():
            self.send_header(name, value)
        if mode == "close":
            self.send_header("Connection", "close")
        self.end_headers()
        self.wfile.write(body)

    # What is no answer.

    def send_garbage(self):
        self.wfile.write(b"220 mail.example ESMTP\r\n\0\xff\r\n\r\n")
        self.close_connection = True

    def send_half(self):
        self.begin_body(100)
        self.wfile.write(b'{"half": ')
        self.close_connection = True

    def drop(self):
        self.close_connection = True

    def stall(self):
        while self.rfile.read1(1000):
            pass
        self.close_connection = True

    def trickle(self):
        self.send_for_ever(b" ", 0.2)

    def flood(self):
        self.send_for_ever(b" " * 10_000, 0)

    def send_for_ever(self, piece, pause):
        """Until the client has enough."""
        self.begin_body(10 ** 12)
        while True:
            self.wfile.write(piece)
            self.wfile.flush()
            time.sleep(pause)

    def begin_body(self, length):
        self.send_response_only(200)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(length))
        self.end_headers()
        self.wfile.flush()

    def log_message(self, *_):
        pass


ANSWERS = {"garbage": Handler.send_garbage, "half": Handler.send_half, "drop": Handler.drop,
           "stall": Handler.stall, "trickle": Handler.trickle, "flood": Handler.flood}


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def __init__(self, place, index, contents, faults, records, tls):
        self.address_family = socket.AF_INET6 if ":" in place[0] else socket.AF_INET
        super().__init__(place, Handler)
        self.index = index
        self.contents = contents
        self.faults = faults
        self.records = records
        self.tls = tls
        self.connections = set()

    def get_request(self):
        connection, address = super().get_request()
        if self.tls:
            # The handshake is the handler's, on its thread: it may take long.
            connection = self.tls.wrap_socket(connection, server_side=True,
                                              do_handshake_on_connect=False)
        return connection, address

    def process_request(self, request, client_address):
        self.connections.add(request)
        super().process_request(request, client_address)

    def shutdown_request(self, request):
        self.connections.discard(request)
        super().shutdown_request(request)

    def drop_connections(self):
        for connection in list(self.connections):
            with contextlib.suppress(OSError):
                connection.shutdown(socket.SHUT_RDWR)

    def handle_error(self, request, client_address):
        """Clients may leave at any time."""


class FrontEnd:
    """A port in one of three states: "open"; "closed", where connections are refused; "deaf", where
    nobody accepts them. In the last two there are no connections."""

    STATES = ("open", "closed", "deaf")

    def __init__(self, *arguments):
        self.arguments = arguments
        self.server = None
        self.thread = None
        self.set("open")

    def set(self, state):
        if self.thread:
            self.server.shutdown()
            self.thread.join()
            self.thread = None
            self.server.drop_connections()
        if state == "deaf":
            # The system still accepts as many as the queue has room for.
            self.server.socket.listen(0)
            return
        if self.server:
            self.server.server_close()
            self.server = None
        if state == "open":
            self.server = Server(*self.arguments)
            self.thread = threading.Thread(target=self.server.serve_forever, args=(0.1,),
                                           daemon=True)
            self.thread.start()
