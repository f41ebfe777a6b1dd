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

    def legs_after(self, sdp, receiver=None, source="", **more):
        receiver = receiver or self.video
        answer = self.instrument.patch(receiver, file_patch(sdp, **more), source=source)
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
                                    "/transport_file/data", "SDP020", "allowed: ",
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
                ("unicast to our interface", sdp_file(video_medium(INTERFACES[0])),
                 [leg(None, interface=INTERFACES[0]),
                  {**leg("233.252.0.2", 6000), "rtp_enabled": False}]),
        ):
            with self.subTest(name):
                self.assertEqual(self.legs_after(sdp), expected)

    def test_shapes_of_other_makers(self):
        """The legs that the RFCs give to a file; what is odd about it is in the log."""
        def medium(number, mid=None, **more):
            lines = video_medium(f"233.252.0.{number}", 5000 + number,
                                 source=f"203.0.113.{number}", **more)
            return lines + ([f"a=mid:{mid}"] if mid else [])

        def mid_at(place, number, mid):
            lines = medium(number)
            lines.insert(place, "a=mid:" + mid)
            return lines

        def path(number, port=None, source=None):
            return leg(f"233.252.0.{number}", port or 5000 + number, f"203.0.113.{source or number}")

        def file(*media, session="a=group:DUP one two"):
            return sdp_file(sum(media, []), session=session)

        before = file(medium(8, "one"), medium(9, "two"))
        both = [path(1), path(2)]
        alone = [path(1), {**path(9), "rtp_enabled": False}]
        two_sources = "a=source-filter: incl IN IP4 233.252.0.1 203.0.113.1 203.0.113.2"
        for number, (name, sdp, expected, codes) in enumerate((
                ("one path", file(medium(1), session=""), alone, []),
                ("an unknown host in o=",
                 file(medium(1), session="").replace("203.0.113.9", "camera.example.com"), alone, []),
                ("audio and ancillary data beside it", file(AUDIO, ANCILLARY, medium(1), session=""),
                 alone, []),
                ("another medium", file(medium(1), ["m=application 5006 RTP/AVP 99"], session=""),
                 alone, []),
                ("mid at the end", file(medium(1, "one"), medium(2, "two")), both, []),
                ("mid behind m=", file(mid_at(1, 1, "one"), mid_at(1, 2, "two")), both, []),
                ("mid between c= and the filter", file(mid_at(3, 1, "one"), mid_at(3, 2, "two")),
                 both, []),
                ("mid behind m=, no filter in the second medium",
                 file(mid_at(1, 1, "one"), video_medium("233.252.0.2", 5002) + ["a=mid:two"]),
                 [path(1), {**path(2), "source_ip": None}], []),
                ("names in the other order",
                 file(medium(1, "one"), medium(2, "two"), session="a=group:DUP two one"), both, []),
                ("DUP without mid", file(medium(1), medium(2)), both, ["SDP023"]),
                ("two pairs", file(medium(1, "one"), medium(2, "two"), medium(3, "three"),
                                   medium(4, "four"),
                                   session="a=group:DUP one two\r\na=group:DUP three four"),
                 both, ["SDP022"]),
                ("a third medium", file(medium(1, "one"), medium(2, "two"), medium(3, "three")),
                 both, ["SDP027"]),
                ("filter for the session",
                 file(video_medium() + ["a=mid:one"], video_medium("233.252.0.2", 5002) + ["a=mid:two"],
                      session="a=group:DUP one two\r\na=source-filter: incl IN IP4 * 203.0.113.7"),
                 [path(1, 5004, 7), path(2, 5002, 7)], []),
                ("address for the session",
                 file(["m=video 5001 RTP/AVP 96", "a=rtpmap:96 raw/90000", "a=mid:one",
                       "a=source-filter: incl IN IP4 233.252.0.1 203.0.113.1"],
                      ["m=video 5002 RTP/AVP 96", "a=rtpmap:96 raw/90000", "a=mid:two",
                       "a=source-filter: incl IN IP4 233.252.0.1 203.0.113.2"],
                      session="c=IN IP4 233.252.0.1/64\r\na=group:DUP one two"),
                 [path(1), path(1, 5002, 2)], []),
                ("one filter with two sources", file(video_medium() + [two_sources], session=""),
                 [path(1, 5004, 1), path(1, 5004, 2)], ["SDP037"]),
                ("both paths the same", file(medium(1, "one"), medium(1, "two")),
                 [path(1), path(1)], ["SDP038"]),
        )):
            with self.subTest(name):
                # The log has room for some lines of each client.
                client = f"127.0.1.{number + 1}"
                self.legs_after(before)
                self.assertEqual(self.legs_after(sdp, source=client), expected)
                for code in codes:
                    self.instrument.wait_for_log(code)
                self.instrument.wait_for_log(client + ":")

    def test_what_is_logged_of_a_file(self):
        """The findings of a file that is taken are in the line that tells of the change."""
        client = "127.0.0.91"
        odd = sdp_file(video_medium() + ["a=source-filter: excl IN IP4 233.252.0.1 203.0.113.1",
                                         FMTP.format(1920, 1080)])
        self.legs_after(odd, source=client)
        log = self.instrument.wait_for_log("line 8: SDP035: ")
        line, = (line for line in log.splitlines() if "line 8: SDP035: " in line)
        self.assertIn(client, line)
        self.assertIn(self.video, line)
        plain = sdp_file(video_medium() + [FMTP.format(1920, 1080)])
        self.legs_after(plain, source="127.0.0.92")
        log = self.instrument.wait_for_log("127.0.0.92:")
        self.assertNotIn("SDP", "".join(line for line in log.splitlines() if "127.0.0.92:" in line))

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
                ("empty", "", ["SDP001"]),
                ("nothing in it", "v=0\r\n", ["SDP020", "allowed: video/raw"]),
                ("no JSON null", "null", []),
                ("no line", "camera", ["line 1: SDP008"]),
                ("no address", sdp_file(["m=video 5004 RTP/AVP 96"]), ["line 5: SDP014"]),
                ("no medium", sdp_file(["c=IN IP4 233.252.0.1/64"]), ["SDP020"]),
                ("port 0 alone", sdp_file(video_medium(port=0)), ["SDP020"]),
                ("port too large", sdp_file(video_medium(port=65536)),
                 ["line 5: SDP012", "65536"]),
                ("address", sdp_file(video_medium("233.252.0.256")),
                 ["line 6: SDP030", "233.252.0.256"]),
                ("address in octal", sdp_file(video_medium("233.0374.0.3")),
                 ["line 6: SDP030", "233.0374.0.3"]),
                ("address in hexadecimal", sdp_file(video_medium("0xe9fc0003")),
                 ["line 6: SDP030", "0xe9fc0003"]),
                ("address as a name", sdp_file(video_medium("camera.example.com")),
                 ["line 6: SDP030", "camera.example.com"]),
                ("payload type", sdp_file(["m=video 5004 RTP/AVP 33", "c=IN IP4 233.252.0.1"]),
                 ["line 5: SDP040", "33", "96", "127"]),
                ("two mistakes",
                 sdp_file(video_medium("x") + ["a=fmtp:96 exactframerate=25/1"]),
                 ["line 6: SDP030", '"x"', "line 8: SDP048", '"25/1"',
                  "allowed: progressive: 60, 60000/1001, 50; interlaced: 30, 30000/1001, 25"]),
                ("DUP with one name", sdp_file(medium, session="a=group:DUP one"),
                 ["line 5: SDP015"]),
                ("filter with one address",
                 sdp_file(medium + ["a=source-filter: incl IN IP4 233.252.0.1"]),
                 ["line 8: SDP033"]),
                ("depth", sdp_file(medium + ["a=fmtp:96 sampling=YCbCr-4:4:4; depth=12;"]),
                 ["line 8: SDP045", "YCbCr-4:4:4", "12"]),
                ("audio", sdp_file(AUDIO), ["SDP020", "audio", "L24", "allowed: video/raw"]),
                ("ancillary data", sdp_file(ANCILLARY),
                 ["SDP020", "smpte291", "allowed: video/raw"]),
                ("compressed video", sdp_file(video_medium(encoding="jxsv/90000")),
                 ["SDP020", "jxsv"]),
                ("text", sdp_file(["m=text 5004 RTP/AVP 96", "c=IN IP4 233.252.0.1"]),
                 ["SDP020", "text"]),
                ("two media without a group", sdp_file(medium + video_medium("233.252.0.2", 6000)),
                 ["line 8: SDP021", "line 5: video raw, line 8: video raw"]),
                ("four parts of a picture",
                 sdp_file(sum((video_medium(f"233.252.0.{i}") + [f"a=mid:{i}"]
                               for i in range(1, 5)), []), session="a=group:MULTI-2SI 1 2 3 4"),
                 ["line 6: SDP025", "line 18: video raw"]),
                ("a name that no medium has",
                 sdp_file(medium + ["a=mid:one"], session="a=group:DUP one two"),
                 ["line 5: SDP024", "two"]),
                ("unicast to another host", sdp_file(video_medium("203.0.113.1")),
                 ["line 6: SDP031", "203.0.113.1", f'allowed: "{INTERFACES[0]}"']),
                ("NUL", sdp_file(medium) + "\u0000", ["NUL"]),
                ("too long", sdp_file(medium) + "a=" + "x" * room, [str(room)]),
        ):
            with self.subTest(name):
                self.assert_refused(file_patch(sdp), "/transport_file/data", *words)
        for receiver, medium in ((self.audio, video_medium()), (self.audio, ANCILLARY),
                                 (self.audio, [line.replace("L24", "L16") for line in AUDIO]),
                                 (self.ancillary, video_medium()), (self.ancillary, AUDIO)):
            self.assert_refused(file_patch(sdp_file(medium)), "SDP020", receiver=receiver)

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

    def test_some_reasons_are_shown_however_many_there_are(self):
        sdp = sdp_file(video_medium() + ["a=fmtp:96 TP=x"] * 1500)
        answer = self.instrument.patch(self.video, file_patch(sdp))
        self.assertEqual(answer.status, 400, answer)
        first, *reasons, last = answer.json["debug"].split("\n")
        self.assertIn("does not take the file", first)
        self.assertEqual(len(reasons), 20)
        self.assertTrue(reasons[0].startswith("SDP004"), reasons)
        self.assertTrue(reasons[19].startswith("line 26: SDP053"), reasons)
        self.assertEqual(last, "and 1481 more")

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


class St20226(InstrumentTest):
    """In the other carriage the receivers take what other makers send, and what the senders offer."""

    configuration = {"carriage": "ST 2022-6"}

    def test_files(self):
        receiver = self.instrument.resources("receivers")[0]
        medium = video_medium(encoding="SMPTE2022-6/27000000", source="203.0.113.1")
        answer = self.instrument.patch(receiver, file_patch(sdp_file(medium)))
        self.assertEqual(answer.status, 200, answer)
        self.assertEqual(answer.json["transport_params"][0],
                         leg("233.252.0.1", source="203.0.113.1"))
        self.assert_takes(self.instrument, receiver, "SMPTE2022-6/27000000")
        # As the library writes it.
        with Instrument("--as-is", configuration=self.configuration) as other:
            self.assert_takes(other, receiver, "PM=2022-6")
        self.assert_error(self.instrument.patch(receiver, file_patch(sdp_file(
            video_medium() + [FMTP.format(1920, 1080)]))), 400, "SDP020", "SMPTE2022-6")

    def assert_takes(self, instrument, receiver, words):
        """The receiver takes the SDP file of `instrument`'s first sender, which has `words`."""
        sender = instrument.resources("senders")[0]
        sdp = instrument.sdp(sender)
        self.assertIn(words, sdp)
        answer = self.instrument.patch(receiver, file_patch(sdp))
        self.assertEqual(answer.status, 200, answer)
        active = instrument.active(sender)["transport_params"]
        self.assertEqual(answer.json["transport_params"],
                         [leg(its["destination_ip"], source=its["source_ip"]) for its in active])


class FormatSwitching(InstrumentTest):
    """Files in another class of format, as the configuration has it."""

    configuration = {"format_switching": {"capable": False, "allowed": False}}

    def test_switching(self):
        receiver = self.instrument.resources("receivers")[0]
        uhd = sdp_file(video_medium() + [FMTP.format(3840, 2160)])
        hd = sdp_file(video_medium() + [FMTP.format(1920, 1080)])
        self.assertEqual(self.instrument.patch(receiver, file_patch(hd)).status, 200)
        self.assert_error(self.instrument.patch(receiver, file_patch(uhd)), 400,
                          "line 8: SDP047: ")
        for allowed, status in ((True, 200), (False, 400)):
            switching = {"format_switching": {"capable": True, "allowed": allowed}}
            with Instrument(configuration=switching) as instrument:
                answer = instrument.patch(instrument.resources("receivers")[0], file_patch(uhd))
                self.assertEqual(answer.status, status)
