#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What clients that mean no good cost the instrument: the figures of docs/security.md.

Usage: abuse.py PROGRAM

Needs wrk. Prints a table.
"""

import json
import os
import pathlib
import re
import signal
import socket
import statistics
import subprocess
import sys
import threading
import time

NODE = "/x-nmos/node/v1.2"
CONNECTION = "/x-nmos/connection/v1.0"
MEBIBYTE = 1024 * 1024


def on_cpu(number):
    """The instrument has one CPU, the load another, as in scripts/bench-http."""
    cpus = sorted(os.sched_getaffinity(0))
    return ["taskset", "-c", str(cpus[number % len(cpus)])]


class Instrument:
    def __init__(self, program):
        self.process = subprocess.Popen(
            [*on_cpu(0), program, "serve", "--no-registration", "--first-free-port",
             "--port", "25500", "--log-level", "off",
             "--connections-per-address", "0"], stdout=subprocess.PIPE)
        self.url = self.process.stdout.readline().decode().strip()
        self.port = int(self.url.rstrip("/").rsplit(":", 1)[1])

    def connect(self):
        return socket.create_connection(("127.0.0.1", self.port))

    def request(self, method, path, body=b""):
        """Seconds from the last byte of the request to the end of the answer, and its body."""
        with self.connect() as connection:
            connection.sendall(head(method, path, body) + body)
            begin = time.perf_counter()
            answer = b""
            while piece := connection.recv(MEBIBYTE):
                answer += piece
            return time.perf_counter() - begin, answer.partition(b"\r\n\r\n")[2]

    def resident_mib(self):
        status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text(encoding="ascii")
        return int(re.search(r"VmRSS:\s+(\d+)", status)[1]) / 1024

    def end(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait(timeout=30)


def head(method, path, body=b"", more="Connection: close\r\n"):
    return (f"{method} {path} HTTP/1.1\r\nHost: a\r\nContent-Length: {len(body)}\r\n{more}"
            "\r\n").encode()


def hostile_bodies():
    """Each of 1 MiB, or a little less."""
    keys = ",".join(f'"{i:0100d}":0' for i in range(9000))
    entry = '{"id":"%s","params":{}},' % ("0" * 36)
    for text in ("[" * MEBIBYTE, "[" + "1," * (MEBIBYTE // 2 - 2) + "1]",
                 "[" + "{}," * (MEBIBYTE // 3 - 2) + "{}]", "{" + keys + "}",
                 '"' + "a" * (MEBIBYTE - 2) + '"', '"' + "\\n" * (MEBIBYTE // 2 - 2) + '"',
                 "1" * MEBIBYTE, "0." + "1" * (MEBIBYTE - 2), " " * (MEBIBYTE - 2) + "{}",
                 "[" + entry * (MEBIBYTE // len(entry) - 1) + "{}]"):
        yield text.encode()
    yield b'"' + b"a" * (MEBIBYTE - 2) + b"\xff"


def longest_request(instrument, receiver):
    paths = [("PATCH", f"{CONNECTION}/single/receivers/{receiver}/staged"),
             ("POST", f"{CONNECTION}/bulk/receivers"), ("PUT", f"{NODE}/receivers/{receiver}/target")]
    return max(instrument.request(method, path, body)[0]
               for method, path in paths for body in hostile_bodies())


def memory_of_clients_that_do_not_read(instrument, receiver):
    """120 clients, each with one of the longest answers: 1 MiB, which repeats the request."""
    sender = json.loads(instrument.request("GET", f"{NODE}/senders")[1])[0]
    sender["padding"] = ""
    sender["padding"] = "a" * (MEBIBYTE - len(json.dumps(sender)))
    body = json.dumps(sender).encode()
    request = head("PUT", f"{NODE}/receivers/{receiver}/target", body, more="") + body
    before = instrument.resident_mib()
    clients = []
    for _ in range(120):
        client = socket.socket()
        client.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        client.connect(("127.0.0.1", instrument.port))
        client.sendall(request)
        clients.append(client)
    time.sleep(2)
    grown = instrument.resident_mib() - before
    for client in clients:
        client.close()
    return grown


def latency(instrument, share, connections):
    """In ms; the median of five runs, since the kernel shares out connections and CPUs by chance."""
    return statistics.median(one_latency(instrument, share, connections) for _ in range(5))


def one_latency(instrument, share, connections):
    output = subprocess.run(
        [*on_cpu(1), "wrk", "-t1", f"-c{connections}", "-d2", "--latency",
         f"{instrument.url}{NODE[1:]}/self"], capture_output=True, check=True, text=True).stdout
    number, unit = re.search(rf"{share}%\s+([\d.]+)(us|ms|s)", output).groups()
    return float(number) * {"us": 0.001, "ms": 1, "s": 1000}[unit]


def latency_beside_slow_clients(instrument, receiver):
    path = f"{CONNECTION}/single/receivers/{receiver}/staged"
    slow = [instrument.connect() for _ in range(1000)]
    for client in slow[::2]:
        client.sendall(head("PATCH", path, b" " * 1000, more="") + b"{")
    ended = threading.Event()

    def trickle():
        while not ended.wait(1):
            for client in slow[::2]:
                client.send(b" ")

    thread = threading.Thread(target=trickle)
    thread.start()
    result = latency(instrument, 50, 16)
    ended.set()
    thread.join()
    for client in slow:
        client.close()
    return result


def growth_over_requests(instrument):
    """Resident memory in MiB after 500,000 requests, less that after the first 20,000."""
    def run(count):
        done = 0
        with instrument.connect() as connection:
            request = head("GET", f"{NODE}/self", more="")
            while done < count:
                connection.sendall(request * 100)
                seen = b""
                while seen.count(b"HTTP/1.1 200") < 100 or not seen.endswith(b"}"):
                    seen += connection.recv(MEBIBYTE)
                done += 100
    run(20_000)
    before = instrument.resident_mib()
    run(500_000)
    return instrument.resident_mib() - before


def main():
    instrument = Instrument(sys.argv[1])
    try:
        receiver = json.loads(instrument.request("GET", f"{NODE}/receivers")[1])[0]["id"]
        rows = [
            ("half of the requests at 16 connections", f"{latency(instrument, 50, 16):.2f} ms"),
            ("half of the requests at 16 connections, beside 1,000 slow clients",
             f"{latency_beside_slow_clients(instrument, receiver):.2f} ms"),
            ("the longest of 33 hostile bodies of 1 MiB",
             f"{1000 * longest_request(instrument, receiver):.0f} ms"),
            ("memory that 500,000 requests leave behind",
             f"{growth_over_requests(instrument):.1f} MiB"),
            ("memory of 120 clients that ask and do not read",
             f"{memory_of_clients_that_do_not_read(instrument, receiver):.0f} MiB"),
        ]
    finally:
        instrument.end()
    print("| What | Figure |\n|---|--:|")
    for what, figure in rows:
        print(f"| {what} | {figure} |")


if __name__ == "__main__":
    main()
