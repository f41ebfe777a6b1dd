# SPDX-License-Identifier: Apache-2.0
"""What serve puts right in the library's texts, and what it serves with --as-is."""

import json
import pathlib
import re
import subprocess
import tempfile
import unittest

from instrument import (EXAMPLES, IMMEDIATE, NODE, PROGRAM, SINGLE, Instrument, InstrumentTest,
                        StateTest, file_patch)

try:
    import gi
    gi.require_version("GstSdp", "1.0")
    from gi.repository import GstSdp
except (ImportError, ValueError):
    GstSdp = None

VIDEO, AUDIO, DATA, MUX = (f"urn:x-nmos:format:{name}"
                           for name in ("video", "audio", "data", "mux"))
INTERNAL_2022_6 = {"carriage": "ST 2022-6", "clock": {"reference": "internal"}}


def origin(sdp):
    """(the o= line without its version, the version)"""
    user, id, version, *address = re.search("^o=(.*)\r$", sdp, re.MULTILINE)[1].split(" ")
    return (user, id, *address), int(version)


class Served(InstrumentTest):
    """The defaults: ST 2110 and a PTP clock."""

    def test_sources_and_flows(self):
        video, audio, data = self.instrument.node("sources")
        rate = {"numerator": 60000, "denominator": 1001}
        self.assertEqual((video["grain_rate"], audio["grain_rate"]), (rate, rate))
        self.assertNotIn("grain_rate", data)
        self.assertEqual(audio["channels"], [{"label": f"Channel {i}"} for i in range(1, 17)])
        flow = self.instrument.node("flows")[0]
        self.assertEqual([(component["name"], component["width"], component["height"])
                          for component in flow["components"]],
                         [("Y", 1920, 1080), ("Cb", 960, 1080), ("Cr", 960, 1080)])
        for kind in ("sources", "flows", "receivers"):
            listed = self.instrument.node(kind)
            self.assertEqual([self.instrument.node(f"{kind}/{entry['id']}") for entry in listed],
                             listed)

    def test_the_source_port_is_the_active_one(self):
        sender = self.instrument.resources("senders")[3]
        ports = lambda half: [leg["source_port"] for leg in half["transport_params"]]
        answer = self.instrument.patch(sender,
                                       {"transport_params": [{"destination_port": 6000}, {}]})
        self.assertEqual(ports(answer.json), [6000, 5004])
        self.assertEqual(ports(self.instrument.active(sender)), [5004, 5004])
        self.instrument.patch(sender, IMMEDIATE)
        self.assertEqual(ports(self.instrument.active(sender)), [6000, 5004])

    def test_a_leg_that_is_switched_off(self):
        """Its file, which has a new version, is also what a receiver of our own is connected by."""
        sender = self.instrument.resources("senders")[4]
        receiver = self.instrument.resources("receivers")[4]
        before, version = origin(self.instrument.sdp(sender))
        self.instrument.patch(sender, {"transport_params": [
            {"rtp_enabled": False}, {"destination_ip": "233.252.0.99"}], **IMMEDIATE})
        sdp = self.instrument.sdp(sender)
        after, later = origin(sdp)
        self.assertEqual(after, before[:-1] + ("198.51.100.10",))
        self.assertGreater(later, version)
        self.assertEqual(re.findall("^(?:m|c|a=group|a=mid).*", sdp, re.MULTILINE),
                         ["m=audio 5004 RTP/AVP 97\r", "c=IN IP4 233.252.0.99/64\r"])
        answer = self.instrument.request("PUT", f"{NODE}/{receiver}/target",
                                         self.instrument.node(sender))
        self.assertEqual(answer.status, 202, answer)
        active = self.instrument.active(receiver)
        self.assertEqual(active["transport_file"]["data"], sdp)
        self.assertEqual([(leg["multicast_ip"], leg["rtp_enabled"])
                          for leg in active["transport_params"]],
                         [("233.252.0.99", True), (None, False)])
        # A switch alone is a change of the file too.
        self.instrument.patch(sender, {"transport_params": [{"rtp_enabled": True}, {}],
                                       **IMMEDIATE})
        self.assertGreater(origin(self.instrument.sdp(sender))[1], later)


class In2022_6(InstrumentTest):
    configuration = INTERNAL_2022_6

    def test_video_is_mux(self):
        for kind in ("sources", "flows"):
            self.assertEqual([entry["format"] for entry in self.instrument.node(kind)],
                             [MUX, AUDIO, DATA])
        flow = self.instrument.node("flows")[0]
        self.assertEqual(flow["media_type"], "video/SMPTE2022-6")
        self.assertEqual({"components", "colorspace", "frame_width"} & set(flow), set())
        for index, format, media_type in ((0, MUX, "video/SMPTE2022-6"),
                                          (3, MUX, "video/SMPTE2022-6"), (4, AUDIO, "audio/L24"),
                                          (20, DATA, "video/smpte291")):
            receiver = self.instrument.node(self.instrument.resources("receivers")[index])
            self.assertEqual((receiver["format"], receiver["caps"]["media_types"]),
                             (format, [media_type]))

    def test_its_receivers_take_its_files(self):
        senders, receivers = map(self.instrument.resources, ("senders", "receivers"))
        for sender, receiver in ((0, 3), (4, 7), (5, 21)):
            answer = self.instrument.patch(receivers[receiver],
                                           file_patch(self.instrument.sdp(senders[sender])))
            self.assertEqual(answer.status, 200, answer)
            self.assertEqual([leg["multicast_ip"] for leg in answer.json["transport_params"]],
                             [f"233.252.0.{11 + sender}", f"233.252.0.{21 + sender}"])


class AsIs(InstrumentTest):
    """What differs most from what the standards want."""

    options = ("--as-is",)
    configuration = INTERNAL_2022_6

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.file = pathlib.Path(cls.folder.name) / "configuration"
        cls.file.write_text(json.dumps(cls.configuration), encoding="utf-8")

    def printed(self, *text):
        return subprocess.run([PROGRAM, "print", *text, "--config", str(self.file)], check=True,
                              stdout=subprocess.PIPE).stdout.decode()

    @staticmethod
    def timeless(text):
        """Without the versions, which are the time of the start."""
        return re.sub(r'("version":")[0-9:]+|(o=HALDEN \d+ )\d+', r"\1\2", text)

    def assert_printed(self, path, *text):
        self.assertEqual(self.timeless(self.instrument.get(path).text),
                         self.timeless(self.printed(*text)))

    def test_every_text_is_what_print_shows(self):
        for kind in ("sources", "flows", "receivers"):
            self.assert_printed(f"{NODE}/{kind}", kind)
            for index, id in list(enumerate(self.instrument.ids(kind)))[:5]:
                self.assert_printed(f"{NODE}/{kind}/{id}", kind[:-1], str(index))
        for index in (1, 4, 5):
            sender = self.instrument.resources("senders")[index]
            self.assert_printed(f"{SINGLE}/{sender}/active", "senders-active", str(index))
            self.assert_printed(f"{SINGLE}/{sender}/transportfile", "sdp", str(index))

    def test_nothing_is_put_right_after_a_change(self):
        sender = self.instrument.resources("senders")[0]
        before = self.instrument.sdp(sender)
        answer = self.instrument.patch(
            sender, {"transport_params": [{"rtp_enabled": False}, {}], **IMMEDIATE})
        self.assertEqual(answer.status, 200)
        self.assertEqual(self.instrument.sdp(sender), before)
        self.instrument.patch(sender, {"transport_params": [{}, {"destination_port": 6000}]})
        self.assertEqual(self.instrument.active(sender)["transport_params"][1]["source_port"], 6000)
        self.instrument.patch(sender, {"transport_params": [
            {}, {"destination_ip": "203.0.113.9"}], **IMMEDIATE})
        sdp = self.instrument.sdp(sender)
        self.assertIn("c=IN IP4 203.0.113.9/64\r\n", sdp)
        self.assertIn("a=source-filter: incl IN IP4 203.0.113.9 198.51.100.10\r\n", sdp)


class Restart(StateTest):
    def test_what_reads_differently_has_a_new_version(self):
        versions = {}
        for options in ((), ("--as-is",)):
            with Instrument("--state", str(self.file), *options) as instrument:
                for kind in ("sources", "flows", "receivers"):
                    versions.setdefault(kind, []).append(
                        [entry["version"] for entry in instrument.node(kind)])
                versions.setdefault("sdp", []).append(
                    [instrument.sdp(sender) for sender in instrument.resources("senders")])
        new = lambda kind: [then != now for then, now in zip(*versions[kind])]
        self.assertEqual(new("sources"), [True, True, False])
        self.assertEqual(new("flows"), [True, False, False])
        self.assertEqual(new("receivers"), [False] * 24)
        self.assertEqual(new("sdp"), [False] * 6)


@unittest.skipUnless(GstSdp, "there is no GstSdp (gir1.2-gst-plugins-base-1.0, python3-gi)")
class IndependentReader(unittest.TestCase):
    """GStreamer reads the SDP files. What it finds has to be what IS-04 and IS-05 say."""

    CLOCK_RATES = {"video/raw": 90000, "video/smpte291": 90000, "audio/L24": 48000,
                   "video/SMPTE2022-6": 27000000}

    def read(self, sdp):
        result, message = GstSdp.SDPMessage.new_from_text(sdp)
        self.assertEqual(result, GstSdp.SDPResult.OK)
        return message

    def media(self, message):
        return [message.get_media(i) for i in range(message.medias_len())]

    def check_leg(self, medium, leg):
        """Against what is active."""
        address = leg["destination_ip"]
        multicast = 224 <= int(address.split(".")[0]) < 240
        self.assertEqual((medium.get_port(), medium.get_proto()),
                         (leg["destination_port"], "RTP/AVP"))
        self.assertEqual(medium.connections_len(), 1)
        connection = medium.get_connection(0)
        self.assertEqual((connection.nettype, connection.addrtype, connection.address,
                          connection.ttl, connection.addr_number),
                         ("IN", "IP4", address, 64 if multicast else 0, 0))
        filter = medium.get_attribute_val("source-filter")
        self.assertEqual(filter and filter.split(),
                         ["incl", "IN", "IP4", address, leg["source_ip"]] if multicast else None)

    def check_essence(self, medium, flow, source):
        caps = medium.get_caps_from_media(int(medium.get_format(0))).get_structure(0)
        kind, encoding = flow["media_type"].split("/")
        self.assertEqual((medium.get_media(), caps.get_string("encoding-name"),
                          caps.get_int("clock-rate").value),
                         (kind, encoding.upper(), self.CLOCK_RATES[flow["media_type"]]))
        rate = flow.get("grain_rate")
        self.assertEqual(source.get("grain_rate"), rate)
        self.assertEqual(source["format"], flow["format"])
        if flow["format"] == VIDEO:
            parts = (rate["numerator"], rate["denominator"])
            self.assertEqual([caps.get_string(name) for name in (
                "sampling", "width", "height", "depth", "exactframerate", "colorimetry", "tp")],
                ["YCbCr-4:2:2", str(flow["frame_width"]), str(flow["frame_height"]),
                 str(flow["components"][0]["bit_depth"]),
                 "/".join(map(str, parts[:1] if parts[1] == 1 else parts)), flow["colorspace"],
                 "2110TPN"])
            self.assertEqual(caps.get_string("interlace"),
                             None if flow["interlace_mode"] == "progressive" else "1")
        elif flow["format"] == MUX:
            self.assertEqual((caps.get_string("tp"), caps.get_string("sampling")),
                             ("2110TPN", None))
        elif flow["format"] == AUDIO:
            self.assertEqual(int(caps.get_string("encoding-params")), len(source["channels"]))

    def check_sender(self, instrument, id, flows, sources):
        message = self.read(instrument.sdp(f"senders/{id}"))
        media = self.media(message)
        legs = [leg for leg in instrument.active(f"senders/{id}")["transport_params"]
                if leg["rtp_enabled"]]
        self.assertEqual(len(media), len(legs))
        self.assertEqual(message.get_origin().addr, legs[0]["source_ip"])
        names = [medium.get_attribute_val("mid") for medium in media]
        group = message.get_attribute_val("group")
        self.assertEqual((group, names), ("DUP " + " ".join(names), ["primary", "secondary"])
                         if len(legs) == 2 else (None, [None]))
        node = instrument.node("self")
        clock = node["clocks"][0]
        bindings = instrument.node(f"senders/{id}")["interface_bindings"]
        flow = flows[instrument.node(f"senders/{id}")["flow_id"]]
        for medium, leg in zip(media, legs):
            self.check_leg(medium, leg)
            self.check_essence(medium, flow, sources[flow["source_id"]])
            self.assertEqual(medium.get_attribute_val("mediaclk"), "direct=0")
            interface = node["interfaces"][
                ["192.0.2.10", "198.51.100.10"].index(leg["source_ip"])]
            self.assertIn(interface["name"], bindings)
            self.assertEqual(medium.get_attribute_val("ts-refclk"),
                             "localmac=" + interface["port_id"].upper()
                             if clock["ref_type"] == "internal"
                             else f"ptp=IEEE1588-2008:{clock['gmid'].upper()}:127")

    def check_all(self, instrument):
        by_id = lambda kind: {entry["id"]: entry for entry in instrument.node(kind)}
        flows, sources = by_id("flows"), by_id("sources")
        ids = instrument.ids("senders")
        self.assertNotEqual(ids, [])
        for id in ids:
            with self.subTest(id):
                self.check_sender(instrument, id, flows, sources)
        return flows

    def test_each_example(self):
        formats = set()
        for example in sorted(EXAMPLES.glob("*.json")):
            with self.subTest(example.name), Instrument("--config", str(example)) as instrument:
                formats |= {flow["format"] for flow in self.check_all(instrument).values()}
        self.assertEqual(formats, {VIDEO, AUDIO, DATA, MUX})

    def test_after_changes(self):
        with Instrument(configuration=INTERNAL_2022_6) as instrument:
            unicast, off = {"destination_ip": "203.0.113.9"}, {"rtp_enabled": False}
            for index, legs in enumerate(([unicast, {}], [off, unicast], [unicast, off], [{}, off],
                                          [off, {"destination_port": 6000}])):
                answer = instrument.patch(instrument.resources("senders")[index],
                                          {"transport_params": legs, **IMMEDIATE})
                self.assertEqual(answer.status, 200, answer)
            self.check_all(instrument)
