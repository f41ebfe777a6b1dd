# SPDX-License-Identifier: Apache-2.0
"""What a neighbour's avahi-daemon hears of the instrument (IS-04 v1.2, peer to peer operation)."""

import re

from instrument import IMMEDIATE, Instrument
from network import ADDRESS, NetworkTest, instrument as machine, need, neighbour, wait_until

SERVICE_FILE = "/etc/avahi/services/nmos-node.service"

# Node API, DNS-SD TXT Records: those that a node must have.
COUNTERS = ("ver_slf", "ver_src", "ver_flw", "ver_dvc", "ver_snd", "ver_rcv")
AT_FIRST = {"api_proto": "http", "api_ver": "v1.2", **{counter: "0" for counter in COUNTERS}}


class Neighbours(NetworkTest):
    def setUp(self):
        super().setUp()
        need("avahi-browse")
        self.start_bus()
        self.start_avahi()
        self.start_bus(neighbour)
        self.start_neighbour(dbus="yes")

    def start(self, *options):
        instrument = Instrument("--listen", "media", "--service-file", SERVICE_FILE, *options)
        self.addCleanup(instrument.end)
        return instrument

    def heard(self):
        """(name, address, port, {key: value}) of each node that the neighbour hears of by IPv4."""
        rows = neighbour.run("avahi-browse", "--resolve", "--parsable", "--terminate",
                             "_nmos-node._tcp").splitlines()
        resolved = [row.split(";") for row in rows if row.startswith("=;wire;IPv4;")]
        return [(name, address, int(port), dict(re.findall(r'"([^="]*)=([^"]*)"', txt)))
                for _, _, _, name, _, _, _, address, port, txt in resolved]

    def wait_heard(self, *nodes):
        wait_until(lambda: self.heard() == list(nodes), lambda: f"{self.heard()}, not {nodes}")

    def node(self, instrument, **changed):
        return (machine.name, ADDRESS, instrument.port, {**AT_FIRST, **changed})

    def test_it_appears_changes_and_goes(self):
        instrument = self.start("--advertise", "always")
        self.wait_heard(self.node(instrument))
        receiver, other = instrument.resources("receivers")[:2]
        instrument.patch(receiver, IMMEDIATE)
        self.wait_heard(self.node(instrument, ver_rcv="1"))
        # One write for both; avahi-daemon notices that too.
        instrument.patch(receiver, IMMEDIATE)
        instrument.patch(other, IMMEDIATE)
        instrument.patch(instrument.resources("senders")[0], IMMEDIATE)
        self.wait_heard(self.node(instrument, ver_rcv="3", ver_snd="1"))
        instrument.end_program()
        self.wait_heard()

    def test_the_advertised_port(self):
        instrument = self.start("--advertise", "always", "--advertised-port", "8123")
        self.wait_heard((machine.name, ADDRESS, 8123, AT_FIRST))
        instrument.end_program()

    def test_never(self):
        self.start("--advertise", "never")
        # As long as another needs to be heard.
        self.start_other()
        wait_until(self.heard, "another node")
        self.assertEqual([name for name, *_ in self.heard()], ["other"])

    def start_other(self):
        text = ("<service-group><name>other</name><service><type>_nmos-node._tcp</type>"
                "<port>80</port></service></service-group>")
        new = machine.service_path("other").with_suffix(".new")
        new.write_text(text, encoding="ascii")
        new.rename(machine.service_path("other"))
