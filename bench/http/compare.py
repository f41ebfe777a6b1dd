# SPDX-License-Identifier: Apache-2.0
"""Requests per second of our server and of nginx by turns; scripts/bench-http explains the options."""

import argparse
import http.client
import json
import os
import pathlib
import re
import shutil
import signal
import socket
import statistics
import subprocess
import sys
import tempfile
import time
import urllib.parse

HERE = pathlib.Path(__file__).parent
UNITS = {"us": 1, "ms": 1000, "s": 1_000_000}


def on_cpu(number, command):
    """The command, kept on one CPU where there are several."""
    cpus = sorted(os.sched_getaffinity(0))
    if len(cpus) < 2 or not shutil.which("taskset"):
        return command
    return ["taskset", "-c", str(cpus[number]), *command]


class Server:
    """A child process that ends with the block."""

    def __init__(self, command, **options):
        self.process = subprocess.Popen(on_cpu(0, command), text=True, **options)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.send_signal(signal.SIGTERM)
        try:
            self.process.wait(timeout=10)
        except subprocess.TimeoutExpired:
            self.process.kill()


def cpu_seconds(process):
    """Of the process and its children, such as nginx's worker."""
    fields = pathlib.Path(f"/proc/{process}/stat").read_text(encoding="ascii").rpartition(")")[2].split()
    seconds = (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
    children = pathlib.Path(f"/proc/{process}/task/{process}/children").read_text(encoding="ascii")
    return seconds + sum(cpu_seconds(int(child)) for child in children.split())


def fetch(port, path):
    connection = http.client.HTTPConnection("127.0.0.1", port, timeout=10)
    connection.request("GET", path)
    response = connection.getresponse()
    body = response.read()
    if response.status != 200:
        sys.exit(f"{path}: status {response.status}")
    return body


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_for(port):
    end = time.monotonic() + 10
    while time.monotonic() < end:
        try:
            socket.create_connection(("127.0.0.1", port), timeout=1).close()
            return
        except OSError:
            time.sleep(0.05)
    sys.exit(f"nothing answers at port {port}")


def nginx(folder, body):
    """(server, port), serving the body at every path."""
    files = folder / "files"
    files.mkdir(exist_ok=True)
    (files / "body").write_bytes(body)
    # Its worker may be another user.
    for readable in (folder, files):
        readable.chmod(0o755)
    port = free_port()
    text = (HERE / "nginx.conf.in").read_text(encoding="utf-8")
    text = text.replace("@FOLDER@", str(folder)).replace("@PORT@", str(port))
    (folder / "nginx.conf").write_text(text, encoding="utf-8")
    program = shutil.which("nginx", path=os.environ["PATH"] + ":/usr/sbin")
    server = Server([program, "-c", str(folder / "nginx.conf"), "-e", str(folder / "nginx.log")])
    wait_for(port)
    return server, port


def measure(process, port, path, options):
    """{"rate": requests per second, "cpu": us per request, "50%": us, "99%": us}"""
    command = ["wrk", "-t1", f"-c{options.connections}", f"-d{options.seconds}s", "--latency",
               f"http://127.0.0.1:{port}{path}"]
    before = cpu_seconds(process)
    report = subprocess.run(on_cpu(1, command), text=True, capture_output=True, check=True,
                            timeout=options.seconds + 30).stdout
    cpu = cpu_seconds(process) - before
    if "Non-2xx" in report or "Socket errors" in report:
        sys.exit(f"{path}: not every request was answered:\n{report}")
    result = {"rate": float(re.search(r"Requests/sec: +([0-9.]+)", report)[1])}
    result["cpu"] = cpu * 1e6 / int(re.search(r"(\d+) requests in", report)[1])
    for share in ("50%", "99%"):
        value, unit = re.search(share + r" +([0-9.]+)(us|ms|s)\b", report).groups()
        result[share] = float(value) * UNITS[unit]
    return result


def compare(name, server, port, path, options):
    """Prints a row of the table."""
    body = fetch(port, path)
    ours, theirs = [], []
    with tempfile.TemporaryDirectory(prefix="bench-http-") as folder:
        other, other_port = nginx(pathlib.Path(folder), body)
        with other:
            if fetch(other_port, path) != body:
                sys.exit(f"{path}: nginx serves other bytes")
            for _ in range(options.rounds):
                ours.append(measure(server.process.pid, port, path, options))
                theirs.append(measure(other.process.pid, other_port, path, options))

    def median(runs, key):
        return statistics.median(run[key] for run in runs)

    def both(key, unit=1):
        return f"{median(ours, key) / unit:.1f} / {median(theirs, key) / unit:.1f}"

    def ratio(key):
        ratios = [a[key] / b[key] for a, b in zip(ours, theirs)]
        return f"{statistics.median(ratios):.2f} ({min(ratios):.2f} to {max(ratios):.2f})"

    print(f"| {name} | {len(body)} | {both('rate')} | {ratio('rate')} | {both('cpu')} | {ratio('cpu')} "
          f"| {both('50%', 1000)} | {both('99%', 1000)} |", flush=True)


def run_bare(options):
    with tempfile.TemporaryDirectory(prefix="bench-http-") as folder:
        body = pathlib.Path(folder) / "body"
        # As long as a list of 24 receivers.
        body.write_bytes((b'{"format":"urn:x-nmos:format:video"},' * 400)[:14_380])
        with Server([options.bare, str(body), "1"], stdout=subprocess.PIPE) as server:
            port = int(server.process.stdout.readline())
            compare("bare server", server, port, "/", options)


def run_program(options):
    command = [options.program, "serve", "--no-registration", "--port", str(free_port()),
               "--log-level", "error"]
    with Server(command, stdout=subprocess.PIPE) as server:
        url = server.process.stdout.readline().strip()
        if not url:
            sys.exit(f"{options.program} does not start")
        port = urllib.parse.urlsplit(url).port
        paths = options.path
        if not paths:
            receivers = json.loads(fetch(port, "/x-nmos/connection/v1.0/single/receivers/"))
            paths = ["/x-nmos/node/v1.2/receivers/",
                     f"/x-nmos/connection/v1.0/single/receivers/{receivers[0]}active"]
        for path in paths:
            compare(path, server, port, path, options)


def main():
    parser = argparse.ArgumentParser(prog="scripts/bench-http")
    parser.add_argument("--seconds", type=int, default=1)
    parser.add_argument("--rounds", type=int, default=15)
    parser.add_argument("--connections", type=int, default=32)
    parser.add_argument("--bare")
    parser.add_argument("--program")
    parser.add_argument("--path", action="append")
    options = parser.parse_args()
    print("Ours / nginx's:")
    print("| Served | bytes | requests/s | ratio | CPU us per request | ratio | median latency, ms "
          "| 99 %, ms |")
    print("|---|--:|--:|--:|--:|--:|--:|--:|", flush=True)
    if options.bare and not options.path:
        run_bare(options)
    if options.program:
        run_program(options)


main()
