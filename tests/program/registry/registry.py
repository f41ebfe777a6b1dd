#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A registry for tests: the Registration API of IS-04 v1.2, strict, and told to misbehave.

It is a process, so that it can be killed; it ends when its standard input does, so that it never
outlives a test. Its first line of output is the port where a test asks for all that it wants to
know, and says how the registry shall behave:

    GET    /resources    what is registered
    GET    /count        how many resources these are
    GET    /requests     what was asked, in order; ?since=N without the first N
    GET    /heartbeats   of each node
    GET    /history      what came and went
    GET    /violations   what a node must never do
    POST   /behave       a fault, as class Fault explains
    DELETE /behave       no fault any more
    POST   /forget       all nodes, as if their time were over
    POST   /front        {"front": index, "state": "open", "closed" or "deaf"}

Times are those of time.monotonic(), which is the same in all processes of a machine. With
NMOS_AMWA_DIR (see amwa_schemas.py) each resource is also checked against its JSON schema.
"""

import argparse
import http.server
import json
import os
import pathlib
import ssl
import sys
import threading
import urllib.parse

sys.dont_write_bytecode = True  # the tests may lie where nothing is to be written
sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent))

import amwa_schemas
from contents import Contents
from faults import Fault, Faults
from front_end import FrontEnd


class Registry:
    def __init__(self, options):
        schemas = None if amwa_schemas.why_missing() else amwa_schemas.Schemas(amwa_schemas.IS04)
        self.contents = Contents(options.expiry, options.restarted, schemas)
        self.faults = Faults()
        self.records = []
        tls = None
        if options.certificate:
            tls = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            tls.load_cert_chain(options.certificate)
        self.fronts = [FrontEnd((options.address, port), index, self.contents, self.faults,
                                self.records, tls)
                       for index, port in enumerate(options.port)]

    def answer(self, method, path, query, body):
        """Of the control port. Throws what is wrong with the request."""
        if method == "GET" and path == "/resources":
            return self.contents.listing()
        if method == "GET" and path == "/count":
            return self.contents.count()
        if method == "GET" and path == "/requests":
            return self.records[int(query.get("since", 0)):]
        if method == "GET" and path in ("/heartbeats", "/history", "/violations"):
            self.contents.expire()
            return getattr(self.contents, path[1:])
        if method == "POST" and path == "/behave":
            return self.faults.add(Fault(**json.loads(body)))
        if method == "DELETE" and path == "/behave":
            return self.faults.clear()
        if method == "POST" and path == "/forget":
            return self.contents.forget()
        if method == "POST" and path == "/front":
            order = json.loads(body)
            if order["state"] not in FrontEnd.STATES:
                raise ValueError(
                    f"state {order['state']!r} is none of {', '.join(FrontEnd.STATES)}")
            return self.fronts[order["front"]].set(order["state"])
        raise ValueError(f"{method} {path} is not known")


class ControlHandler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    disable_nagle_algorithm = True
    wbufsize = -1

    def answer_request(self):
        url = urllib.parse.urlsplit(self.path)
        body = self.rfile.read(int(self.headers.get("Content-Length") or 0))
        try:
            status, answer = 200, self.server.registry.answer(
                self.command, url.path, dict(urllib.parse.parse_qsl(url.query)), body)
        except (ValueError, TypeError, KeyError, IndexError, OSError) as error:
            status, answer = 400, repr(error)
        text = json.dumps(answer).encode()
        self.send_response_only(status)
        self.send_header("Content-Length", str(len(text)))
        self.end_headers()
        self.wfile.write(text)

    do_GET = do_POST = do_DELETE = answer_request

    def log_message(self, *_):
        pass


def main():
    parser = argparse.ArgumentParser(description="A registry for tests.")
    parser.add_argument("--address", default="127.0.0.1", help="of the Registration API")
    parser.add_argument("--port", type=int, action="append", required=True,
                        help="likewise; several are front ends of one registry")
    parser.add_argument("--expiry", type=float, default=12.0,
                        help="seconds after which a node without a heartbeat is removed")
    parser.add_argument("--restarted", action="store_true",
                        help="it is empty now, but it may have held something before")
    parser.add_argument("--certificate",
                        help="a PEM file with a certificate and its key, for https")
    control = http.server.ThreadingHTTPServer(("127.0.0.1", 0), ControlHandler)
    control.daemon_threads = True
    control.registry = Registry(parser.parse_args())
    threading.Thread(target=control.serve_forever, daemon=True).start()
    print(control.server_port, flush=True)
    sys.stdin.read()
    os._exit(0)  # nothing waits for what is on its way


if __name__ == "__main__":
    main()
