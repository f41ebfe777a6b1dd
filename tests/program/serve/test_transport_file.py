# SPDX-License-Identifier: Apache-2.0
"""SDP files that a controller sends to a receiver, and those that the senders offer."""

from instrument import (IMMEDIATE, INTERFACES, Instrument, InstrumentTest, file_patch, sdp_file,
                        video_medium)

AUDIO = ["m=audio 5004 RTP/AVP 97", "c=IN IP4 233.252.0.1/64", "a=rtpmap:97 L24/48000/16",
         "a=ptime:0.125"]
ANCILLARY = ["m=video 5004 RTP/AVP 100", "c=IN IP4 233.252.0.1/64", "a=rtpmap:100 smpte291/90000"]
FMTP = ("a=fmtp:96 sampling=YCbCr-4:2:2; width={}; height={}; depth=10; exactframerate=50; "
        "colorimetry=BT709; TCS=SDR; SSN=ST2110-20:2017; TP=2110TPN; PM=2110BPM; ")
UUID = "5709255c-c0ae-4e1e-99a0-e872e83e48e0"


def leg(multicast_ip, port=5004, source=None, interface="auto", on=True):
    return {"multicast_ip": multicast_ip, "destination_port": port, "source_ip": source,
            "interface_ip": interface, "rtp_enabled": on}


class TransportFile(InstrumentTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.senders = cls.instrument.resources("senders")
        cls.receivers = cls.instrument.resources("receivers")
        cls.video, cls.audio, cls.ancillary = (cls.receivers[i] for i in (0, 4, 20))

    def legs_after(self, sdp, receiver=None, **more):
        receiver = receiver or self.video
        answer = self.instrument.patch(receiver, file_patch(sdp, **more))
        self.assertEqual(answer.status, 200, answer)
        self.assertEqual(answer.json["transport_file"], {"data": sdp, "type": "application/sdp"})
        self.assertEqual(self.instrument.staged(receiver), answer.json)
        return answer.json["transport_params"]

    def assert_refused(self, patch, *words, receiver=None):
        receiver = receiver or self.video
        before = self.instrument.staged(receiver)
        patch = {**patch, "master_enable": not before["master_enable"]}
        self.assert_error(self.instrument.patch(receiver, patch), 400, *words)
        self.assertEqual(self.instrument.staged(receiver), before)

    def test_own_files(self):
        """A receiver takes the file of a sender of its kind, no other."""
        for sender, receiver in ((0, 0), (3, 1), (4, 4), (4, 19), (5, 20)):
            legs = self.legs_after(self.instrument.sdp(self.senders[sender]),
                                   self.receivers[receiver])
            active = self.instrument.active(self.senders[sender])["transport_params"]
            self.assertEqual(legs, [leg(its["destination_ip"], source=its["source_ip"])
                                    for its in active])
        for sender, receiver in ((0, 4), (0, 20), (4, 0), (4, 20), (5, 0), (5, 4)):
            with self.subTest(f"sender {sender}, receiver {receiver}"):
                self.assert_refused(file_patch(self.instrument.sdp(self.senders[sender])),
                                    "/transport_file/data", "this receiver takes",
                                    receiver=self.receivers[receiver])

    def test_legs(self):
        one, two = video_medium("233.252.0.1"), video_medium("233.252.0.2", 6000)
        second = self.legs_after(sdp_file(one, two))[1]
        off = {**second, "rtp_enabled": False}
        for name, sdp, expected in (
                ("two legs", sdp_file(one, two), [leg("233.252.0.1"), leg("233.252.0.2", 6000)]),
                ("one leg", sdp_file(one), [leg("233.252.0.1"), off]),
                ("source filter", sdp_file(video_medium(source="203.0.113.1"), two),
                 [leg("233.252.0.1", source="203.0.113.1"), leg("233.252.0.2", 6000)]),
                ("source filter of the second leg alone",
                 sdp_file(one, video_medium("233.252.0.2", 6000, source="203.0.113.1")),
                 [leg("233.252.0.1"), leg("233.252.0.2", 6000, source="203.0.113.1")]),
                ("second medium with port 0", sdp_file(one, video_medium(port=0)),
                 [leg("233.252.0.1"), {**leg("233.252.0.2", 6000), "rtp_enabled": False,
                                       "source_ip": "203.0.113.1"}]),
                ("first medium with port 0", sdp_file(video_medium(port=0), two),
                 [{**leg("233.252.0.1"), "rtp_enabled": False}, leg("233.252.0.2", 6000)]),
                ("another medium with port 0 behind it",
                 sdp_file(one + ["m=audio 0 RTP/AVP 97", "c=IN IP4 233.252.0.9/64",
                                 "a=rtpmap:97 L16/48000"]),
                 [leg("233.252.0.1"), {**leg("233.252.0.2", 6000), "rtp_enabled": False}]),
                ("encoding in other case", sdp_file(video_medium(encoding="RAW/90000")),
                 [leg("233.252.0.1"), {**leg("233.252.0.2", 6000), "rtp_enabled": False}]),
                ("addresses in other forms", sdp_file(video_medium("0xe9fc0003", "05004")),
                 [leg("233.252.0.3"), {**leg("233.252.0.2", 6000), "rtp_enabled": False}]),
                ("unicast to our interface", sdp_file(video_medium(INTERFACES[0])),
                 [leg(None, interface=INTERFACES[0]),
                  {**leg("233.252.0.2", 6000), "rtp_enabled": False}]),
        ):
            with self.subTest(name):
                self.assertEqual(self.legs_after(sdp), expected)

    def test_explicit_parameters_win(self):
        legs = self.legs_after(
            sdp_file(video_medium(source="203.0.113.1"), video_medium("233.252.0.2", 6000)),
            transport_params=[{"destination_port": 7000, "source_ip": None,
                               "interface_ip": INTERFACES[0]}, {"rtp_enabled": False}])
        self.assertEqual(legs, [leg("233.252.0.1", 7000, interface=INTERFACES[0]),
                                leg("233.252.0.2", 6000, on=False)])
        # An explicit interface replaces the one that the constraints would not allow.
        self.assertEqual(
            self.legs_after(sdp_file(video_medium("203.0.113.1")),
                            transport_params=[{"interface_ip": "auto"}, {}])[0], leg(None))

    def test_line_breaks(self):
        text = sdp_file(video_medium())
        for name, sdp in (("LF", text.replace("\r\n", "\n")), ("CR", text.replace("\r\n", "\r")),
                          ("unfinished last line", "\r\n".join(
                              ["v=0", "a=x", "m=video 5004 RTP/AVP 96", "c=IN IP4 233.252.0.7"]))):
            with self.subTest(name):
                legs = self.legs_after(sdp)
                self.assertTrue(legs[0]["rtp_enabled"])
        self.assertEqual(legs[0]["multicast_ip"], "233.252.0.7")

    def test_null_clears_the_file_alone(self):
        legs = self.legs_after(sdp_file(video_medium()), sender_id=UUID)
        answer = self.instrument.patch(self.video, {"transport_file": {"data": None, "type": None}})
        self.assertEqual(answer.status, 200)
        self.assertEqual(answer.json["transport_file"], {"data": None, "type": None})
        self.assertEqual(answer.json["transport_params"], legs)
        self.assertEqual(answer.json["sender_id"], UUID)

    def test_a_file_counts_each_time_it_is_sent(self):
        sdp = sdp_file(video_medium())
        self.legs_after(sdp)
        self.instrument.patch(self.video, {"transport_params": [{"destination_port": 9}, {}]})
        self.assertEqual(self.legs_after(sdp)[0]["destination_port"], 5004)

    def test_refused_files(self):
        room = 4095
        medium = video_medium()
        for name, sdp, words in (
                ("empty", "", ["no leg"]),
                ("nothing in it", "v=0\r\n", ["no leg"]),
                ("no JSON null", "null", []),
                ("no address", sdp_file(["m=video 5004 RTP/AVP 96"]), ["no leg"]),
                ("no port", sdp_file(["c=IN IP4 233.252.0.1/64"]), ["no leg"]),
                ("port 0 alone", sdp_file(video_medium(port=0)), ["no leg"]),
                ("port too large", sdp_file(video_medium(port=65536)),
                 ["Destination Port 65536 is range over."]),
                ("address", sdp_file(video_medium("233.252.0.256")),
                 ["IN IP4 233.252.0.256 is invalid multicast address."]),
                ("payload type", sdp_file(["m=video 5004 RTP/AVP 33", "c=IN IP4 233.252.0.1"]),
                 ["RTP/AVP 33 is range over."]),
                ("two mistakes", sdp_file(video_medium("x", port=70000)),
                 ["Destination Port 70000 is range over.", "IN IP4 x is invalid multicast address."]),
                ("DUP with one name", "a=group:DUP one\r\n" + sdp_file(medium), ["group:DUP"]),
                ("filter with one address",
                 sdp_file(medium + ["a=source-filter: incl IN IP4 233.252.0.1"]), ["source-filter"]),
                ("depth", sdp_file(medium + ["a=fmtp:96 sampling=YCbCr-4:4:4; depth=12;"]),
                 ["no support parameter"]),
                ("audio", sdp_file(AUDIO), ['"audio"', '"L24"', "video/raw"]),
                ("ancillary data", sdp_file(ANCILLARY), ['"smpte291"', "video/raw"]),
                ("audio beside video", sdp_file(medium + AUDIO), ['"audio"']),
                ("compressed video", sdp_file(video_medium(encoding="jxsv/90000")), ['"jxsv"']),
                ("text", sdp_file(["m=text 5004 RTP/AVP 96", "c=IN IP4 233.252.0.1"]), ['"text"']),
                ("another medium", sdp_file(medium + ["m=application 5006 RTP/AVP 99"]),
                 ['"application"']),
                ("unicast to another host", sdp_file(video_medium("203.0.113.1")),
                 ["203.0.113.1", INTERFACES[0]]),
                ("NUL", sdp_file(medium) + "\u0000", ["NUL"]),
                ("too long", sdp_file(medium) + "a=" + "x" * room, [str(room)]),
        ):
            with self.subTest(name):
                self.assert_refused(file_patch(sdp), "/transport_file/data", *words)
        for receiver, medium in ((self.audio, video_medium()), (self.audio, ANCILLARY),
                                 (self.audio, [line.replace("L24", "L16") for line in AUDIO]),
                                 (self.ancillary, video_medium()), (self.ancillary, AUDIO)):
            self.assert_refused(file_patch(sdp_file(medium)), "this receiver takes",
                                receiver=receiver)

    def test_the_longest_file(self):
        sdp = sdp_file(video_medium())
        sdp += "a=" + "x" * (4095 - len(sdp) - 4) + "\r\n"
        self.assertEqual(len(sdp), 4095)
        self.legs_after(sdp)
        self.assert_refused(file_patch(sdp + "\n"), "4096 bytes", "4095")

    def test_both_or_none(self):
        self.instrument.patch(self.video, {"transport_file": {"data": None, "type": None}})
        sdp = sdp_file(video_medium())
        for file, path in (({"data": sdp}, "/transport_file"), ({"type": "application/sdp"}, "/transport_file"),
                           ({"data": sdp, "type": None}, "/transport_file"),
                           ({"data": None, "type": "application/sdp"}, "/transport_file"),
                           ({"data": sdp, "type": "text/plain"}, "/transport_file/type"),
                           ({"data": sdp, "type": "application/SDP"}, "/transport_file/type"),
                           ({"data": sdp, "type": ""}, "/transport_file/type"),
                           ({"data": sdp, "type": "null"}, "/transport_file/type"),
                           ({"data": 1, "type": "application/sdp"}, "/transport_file/data"),
                           ({"data": sdp, "type": 1}, "/transport_file/type"),
                           ({"more": 1}, "/transport_file/more"), ("", "/transport_file")):
            with self.subTest(file):
                self.assert_refused({"transport_file": file}, path)
        # What is not named stays, here too.
        self.legs_after(sdp)
        answer = self.instrument.patch(self.video, {"transport_file": {"data": sdp}})
        self.assertEqual(answer.status, 200)
        self.assert_refused({"transport_file": {"data": None}}, "/transport_file")

    def test_senders_offer_their_files_enabled_or_not(self):
        sender = self.senders[1]
        before = self.instrument.sdp(sender)
        answer = self.instrument.patch(sender, {"master_enable": False, **IMMEDIATE})
        self.assertEqual(answer.status, 200)
        self.assertEqual(self.instrument.sdp(sender), before)
        manifest = self.instrument.node(sender)["manifest_href"]
        answer = self.instrument.get(manifest[len(self.instrument.url) - 1:])
        self.assertEqual(answer.text, before)
        self.assertEqual(answer.headers["content-type"], "application/sdp")
        self.assertEqual(answer.headers["cache-control"], "no-cache")

    def test_the_file_follows_active(self):
        def origin(sdp):
            line = next(line for line in sdp.split("\r\n") if line.startswith("o="))
            _, id, version, *_ = line.split(" ")
            return id, int(version)

        sender = self.senders[2]
        before = self.instrument.sdp(sender)
        patch = {"transport_params": [{"destination_ip": "232.9.9.9", "destination_port": 7000}, {}]}
        self.instrument.patch(sender, patch)
        self.assertEqual(self.instrument.sdp(sender), before)
        self.instrument.patch(sender, IMMEDIATE)
        after = self.instrument.sdp(sender)
        self.assertIn("m=video 7000 RTP/AVP 96\r\nc=IN IP4 232.9.9.9/64\r\n", after)
        self.assertEqual(origin(after)[0], origin(before)[0])
        self.assertGreater(origin(after)[1], origin(before)[1])
        # The same file again has the same version; another sender's file is another session.
        self.instrument.patch(sender, IMMEDIATE)
        self.assertEqual(self.instrument.sdp(sender), after)
        self.assertEqual(len({origin(self.instrument.sdp(other))[0] for other in self.senders}), 6)


class FormatSwitching(InstrumentTest):
    """Files in another class of format, as the configuration has it."""

    configuration = {"format_switching": {"capable": False, "allowed": False}}

    def test_switching(self):
        receiver = self.instrument.resources("receivers")[0]
        uhd = sdp_file(video_medium() + [FMTP.format(3840, 2160)])
        hd = sdp_file(video_medium() + [FMTP.format(1920, 1080)])
        self.assertEqual(self.instrument.patch(receiver, file_patch(hd)).status, 200)
        self.assert_error(self.instrument.patch(receiver, file_patch(uhd)), 400,
                          "Switching 2K/4K is not supported.")
        for allowed, status in ((True, 200), (False, 400)):
            switching = {"format_switching": {"capable": True, "allowed": allowed}}
            with Instrument(configuration=switching) as instrument:
                answer = instrument.patch(instrument.resources("receivers")[0], file_patch(uhd))
                self.assertEqual(answer.status, status)
