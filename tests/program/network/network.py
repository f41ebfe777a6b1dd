# SPDX-License-Identifier: Apache-2.0
"""A network of two machines: the one of the instrument, which the tests run on, and a neighbour.
Both are namespaces, and so nothing of the real machine is touched or needed but its programs.
run.py makes the first; it ends with all processes in it.
"""

import contextlib
import os
import pathlib
import queue
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

WATCH = os.environ["NMOS_DISCOVERY_WATCH"]

ADDRESS = "192.0.2.10"
NEIGHBOUR_ADDRESS = "192.0.2.20"
NEIGHBOUR_IPV6_ADDRESS = "2001:db8::20"

# Registries run on the machine of the tests, which asks them what they saw, at addresses of their own.
REGISTRY_ADDRESSES = ("192.0.2.101", "192.0.2.102", "192.0.2.103")

SERVICES = pathlib.Path("/etc/avahi/services")
REGISTRATION = "_nmos-registration._tcp"
PATIENCE = 20  # seconds; only a test that fails waits so long

_logs = pathlib.Path(tempfile.mkdtemp())

BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>unix:path=/run/dbus/system_bus_socket</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
  </policy>
</busconfig>
"""

AVAHI_CONFIGURATION = """[server]
host-name={name}
use-ipv4={ipv4}
use-ipv6=yes
allow-interfaces=media,wire
enable-dbus={dbus}
ratelimit-interval-usec=0
[wide-area]
enable-wide-area=no
[publish]
publish-hinfo=no
publish-workstation=no
"""


def wait_until(condition, what):
    """Its value, when that is true. `what` may be a function that is called if it does not come."""
    end = time.monotonic() + PATIENCE
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(what() if callable(what) else what)
        time.sleep(0.02)


def need(*programs):
    """Skips the test if one of them is not installed."""
    for program in programs:
        if shutil.which(program) is None:
            raise unittest.SkipTest(f"{program} is not installed")


class Daemon:
    """A program at work, which logs to a file."""

    def __init__(self, *command, ready=None):
        self.name = f"{command[0]}-{len(list(_logs.iterdir()))}"
        self.log_path = _logs / self.name
        with self.log_path.open("wb") as log:
            self.process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=log,
                                            stderr=log)
        if ready:
            wait_until(lambda: ready in self.log, lambda: f"{self.name} does not start: {self.log}")

    @property
    def log(self):
        return self.log_path.read_text(encoding="utf-8", errors="replace")

    def send(self, number):
        self.process.send_signal(number)

    def stop(self, number=signal.SIGTERM):
        if self.process.poll() is None:
            self.send(number)
            self.process.wait(timeout=PATIENCE)


class Machine:
    """Where programs run and files are."""

    def __init__(self, name, enter=(), root="/"):
        self.name = name
        self.enter = list(enter)
        self.root = pathlib.Path(root)

    def run(self, *command, **more):
        return subprocess.run([*self.enter, *command], check=True, capture_output=True, text=True,
                              **more).stdout

    def mount_empty(self, *folders):
        for folder in folders:
            self.run("mount", "-t", "tmpfs", "tmpfs", folder)

    def start_avahi(self, dbus, ipv4="yes"):
        """`dbus`, `ipv4`: "yes" or "no"."""
        configuration = _logs / f"avahi-{self.name}.conf"
        configuration.write_text(AVAHI_CONFIGURATION.format(name=self.name, dbus=dbus, ipv4=ipv4))
        return Daemon(*self.enter, "avahi-daemon", "--no-drop-root", "--no-chroot", "--no-rlimits",
                      f"--file={configuration}", ready="Server startup complete")

    def write_service(self, name, *txt, port=8080, file=None, host=None):
        """Avahi's service file of a registry."""
        host_name = f"<host-name>{host}</host-name>" if host else ""
        records = "".join(f"<txt-record>{record}</txt-record>" for record in txt)
        text = f"""<?xml version="1.0" standalone='no'?>
<!DOCTYPE service-group SYSTEM "avahi-service.dtd">
<service-group><name>{name}</name><service><type>{REGISTRATION}</type>{host_name}
<port>{port}</port>{records}</service></service-group>"""
        path = self.service_path(file or name)
        # At once, or the daemon reads half of it.
        new = path.with_suffix(".new")
        new.write_text(text, encoding="utf-8")
        new.rename(path)

    def name_addresses(self, addresses):
        """{host: address}, for the daemon that starts then."""
        (self.root / "etc/avahi/hosts").write_text(
            "".join(f"{address} {host}\n" for host, address in addresses.items()))

    def remove_service(self, file):
        self.service_path(file).unlink()

    def service_path(self, file):
        return self.root / SERVICES.relative_to("/") / f"{file}.service"


instrument = Machine("instrument")
neighbour = None


def set_up():
    """The two machines and the wire between them."""
    global neighbour
    need("ip", "nsenter", "mount")
    socket.sethostname("instrument")  # a domain in it would be searched
    holder = subprocess.Popen(["unshare", "--net", "--mount", "sleep", "infinity"])
    # Its own namespaces are there when it has become sleep.
    wait_until(lambda: _namespace("self") != _namespace(holder.pid), "no second namespace")
    neighbour = Machine("neighbour", ["nsenter", f"--target={holder.pid}", "--net", "--mount"],
                        f"/proc/{holder.pid}/root")
    try:
        instrument.run("ip", "link", "add", "media", "type", "veth", "peer", "name", "wire")
    except subprocess.CalledProcessError as error:
        raise unittest.SkipTest("no virtual Ethernet: " + error.stderr.strip()) from error
    instrument.run("ip", "link", "set", "wire", "netns", str(holder.pid))
    for machine, link, ipv4, ipv6 in (
            (instrument, "media", ADDRESS, "2001:db8::10"),
            (neighbour, "wire", NEIGHBOUR_ADDRESS, NEIGHBOUR_IPV6_ADDRESS)):
        machine.run("ip", "link", "set", "lo", "up")
        machine.run("ip", "address", "add", f"{ipv4}/24", "dev", link)
        machine.run("ip", "address", "add", f"{ipv6}/64", "dev", link, "nodad")
        machine.run("ip", "link", "set", link, "up")
    for address in REGISTRY_ADDRESSES:
        instrument.run("ip", "address", "add", f"{address}/32", "dev", "lo")


def _namespace(process):
    return os.readlink(f"/proc/{process}/ns/mnt")


def print_logs():
    for path in sorted(_logs.iterdir()):
        print(f"---- {path.name}")
        print(path.read_text(encoding="utf-8", errors="replace")[-5000:])


class NetworkTest(unittest.TestCase):
    """Each test has a machine with a bus, but without any other daemon, and an empty neighbour."""

    def setUp(self):
        need("dbus-daemon", "avahi-daemon")
        for machine in (instrument, neighbour):
            machine.mount_empty("/run", "/etc/avahi")
            self.addCleanup(machine.run, "umount", "/run", "/etc/avahi")
            (machine.root / "run/dbus").mkdir()
            (machine.root / "etc/avahi/services").mkdir()
        self.set_resolv_conf("")
        self.daemons = []
        self.addCleanup(self.stop_daemons)

    def stop_daemons(self):
        for daemon in reversed(self.daemons):
            daemon.stop(signal.SIGKILL)

    def keep(self, daemon):
        """Until the end of the test."""
        self.daemons.append(daemon)
        return daemon

    def start_bus(self, machine=None):
        machine = machine or instrument
        path = _logs / "bus.conf"
        path.write_text(BUS_CONFIGURATION)
        bus = self.keep(Daemon(*machine.enter, "dbus-daemon", f"--config-file={path}", "--nofork",
                               "--nopidfile"))
        wait_until((machine.root / "run/dbus/system_bus_socket").exists, "no D-Bus")
        return bus

    def start_avahi(self):
        """On the instrument's machine."""
        return self.keep(instrument.start_avahi(dbus="yes"))

    def start_neighbour(self, dbus="no", ipv4="yes"):
        return self.keep(neighbour.start_avahi(dbus=dbus, ipv4=ipv4))

    def start_dnsmasq(self, *options):
        need("dnsmasq")
        return self.keep(Daemon(
            "dnsmasq", "--keep-in-foreground", "--conf-file=/dev/null", "--no-resolv", "--no-hosts",
            "--user=root", "--group=root", "--log-facility=-", "--log-queries", "--pid-file",
            "--listen-address=127.0.0.1", "--bind-interfaces", *options, ready="started"))

    def set_resolv_conf(self, text):
        path = _logs / "resolv.conf"
        path.write_text(text)
        # Often a link into /run, which is empty here.
        target = pathlib.Path("/etc/resolv.conf").resolve()
        if not target.exists():
            target.parent.mkdir(parents=True, exist_ok=True)
            target.touch()
        instrument.run("mount", "--bind", str(path), str(target))
        self.addCleanup(instrument.run, "umount", str(target))

    def send_mdns(self, *messages):
        """By the neighbour, which is not avahi then."""
        neighbour.run(sys.executable, str(pathlib.Path(__file__).with_name("mdns_stranger.py")),
                      NEIGHBOUR_ADDRESS, input="".join(message.hex() + "\n" for message in messages))

    def watch(self, *options):
        watch = Watch(*options)
        self.addCleanup(watch.end)
        return watch


class Watch:
    """discovery_watch at work."""

    def __init__(self, *options, environment=None):
        self.log_path = _logs / f"watch-{len(list(_logs.iterdir()))}"
        with self.log_path.open("wb") as log:
            self.process = subprocess.Popen([WATCH, *options], stdin=subprocess.PIPE,
                                            stdout=subprocess.PIPE, stderr=log, text=True,
                                            env=environment)
        self._lists = queue.Queue()
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self):
        for line in self.process.stdout:
            rows = [registry.split("|") for registry in line.rstrip("\n").split("\t")[:-1]]
            self._lists.put([{"url": url, "address": address, "priority": int(priority),
                              "origin": origin} for url, address, priority, origin in rows])

    @property
    def log(self):
        return self.log_path.read_text(encoding="utf-8", errors="replace")

    def wait_for_log(self, text, count=1):
        wait_until(lambda: self.log.count(text) >= count,
                   lambda: f"not in the log: {text!r}\n{self.log}")

    def search(self):
        self.process.stdin.write("\n")
        self.process.stdin.flush()

    def next(self):
        """The next list of registries."""
        try:
            return self._lists.get(timeout=PATIENCE)
        except queue.Empty:
            raise AssertionError(f"no list\n{self.log}") from None

    def wait_for(self, *urls):
        """Until a list has exactly these URLs (short: see short_url), in this order. That list."""
        lists = []
        while True:
            try:
                lists.append(self._lists.get(timeout=PATIENCE))
            except queue.Empty:
                raise AssertionError(f"no list {urls} but {lists}\n{self.log}") from None
            if [short_url(registry) for registry in lists[-1]] == list(urls):
                return lists[-1]

    def drop_lists(self):
        """Those that came until now."""
        while not self._lists.empty():
            self._lists.get()

    def end(self):
        """The seconds that it takes."""
        begin = time.monotonic()
        if not self.process.stdin.closed:
            with contextlib.suppress(BrokenPipeError):
                self.process.stdin.close()
            status = self.process.wait(timeout=PATIENCE)
            self._reader.join()
            self.process.stdout.close()
            if status != 0:
                raise AssertionError(f"status {status}\n{self.log}")
        return time.monotonic() - begin


def short_url(registry):
    """Without what is the same for all."""
    return registry["url"].removesuffix("/x-nmos/registration/v1.2")
