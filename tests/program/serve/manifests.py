# SPDX-License-Identifier: Apache-2.0
"""The senders of others, whose SDP files have to be fetched."""

import contextlib
import http.server
import threading
import time

from instrument import sdp_file, video_medium

SENDER = {
    "id": "5709255c-c0ae-4e1e-99a0-e872e83e48e0", "version": "1:2", "label": "", "description": "",
    "tags": {}, "flow_id": None, "transport": "urn:x-nmos:transport:rtp.mcast",
    "device_id": "6709255c-c0ae-4e1e-99a0-e872e83e48e0", "interface_bindings": [],
    "subscription": {"receiver_id": None, "active": True}, "caps": {}, "more": [1],
}


class Manifests(http.server.BaseHTTPRequestHandler):
    files = {
        "/good": sdp_file(video_medium(source="203.0.113.1"), video_medium("233.252.0.2")).encode(),
        "/audio": sdp_file(["m=audio 5004 RTP/AVP 97", "c=IN IP4 233.252.0.1",
                            "a=rtpmap:97 L24/48000"]).encode(),
        "/latin1": sdp_file(video_medium()).encode() + b"s=\xe9\r\n",
        "/nul": sdp_file(video_medium()).encode() + b"\0",
        "/empty": b"",
        "/long": sdp_file(video_medium()).encode() + b"x" * 5000,
        "/endless": b"x" * (1024 * 1024 + 1),
    }

    def do_GET(self):
        self.server.paths.append(self.path)
        if self.path.startswith("/to/"):
            self.answer(302, b"", [("Location", "http://" + self.path[len("/to/"):])])
        elif self.path.startswith("/redirect/"):
            count = int(self.path.split("/")[2])
            to = f"/redirect/{count - 1}" if count > 1 else "/good"
            self.answer(302, b"", [("Location", to)])
        elif self.path == "/to-a-file":
            self.answer(302, b"", [("Location", "file:///etc/hostname")])
        elif self.path == "/slow":
            time.sleep(5)
        elif self.path in self.files:
            self.answer(200, self.files[self.path])
        else:
            self.answer(404, b"no")

    def answer(self, status, body, headers=()):
        self.send_response(status)
        for name, value in headers:
            self.send_header(name, value)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        with contextlib.suppress(OSError):
            self.wfile.write(body)

    def log_message(self, *_):
        pass


class ManifestServer:
    """Serves manifests at this address; `with` ends it."""

    def __init__(self, address="127.0.0.1"):
        self.server = http.server.ThreadingHTTPServer((address, 0), Manifests)
        self.server.daemon_threads = True
        self.server.paths = []
        self.place = f"{address}:{self.server.server_port}"
        threading.Thread(target=self.server.serve_forever, daemon=True).start()

    def url(self, path):
        return f"http://{self.place}{path}"

    @property
    def paths(self):
        """What it was asked for."""
        return self.server.paths

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.server.shutdown()
        self.server.server_close()
