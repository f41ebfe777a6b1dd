# SPDX-License-Identifier: Apache-2.0
"""PATCH of "staged" without activation: what is merged, what is refused."""


from instrument import INTERFACES, SINGLE, InstrumentTest

UUID = "5709255c-c0ae-4e1e-99a0-e872e83e48e0"
NO_ACTIVATION = {"mode": None, "requested_time": None, "activation_time": None}


class Staging(InstrumentTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.senders = cls.instrument.resources("senders")
        cls.receivers = cls.instrument.resources("receivers")

    def staged_after(self, resource, patch):
        """The answer to a PATCH, which is what GET shows afterwards."""
        answer = self.instrument.patch(resource, patch)
        self.assertEqual(answer.status, 200, answer)
        self.assertEqual(self.instrument.get(f"{SINGLE}/{resource}/staged").body, answer.body)
        self.assertEqual(answer.json["activation"], NO_ACTIVATION)
        return answer.json

    def test_nothing_named_nothing_changed(self):
        for resource in (self.senders[0], self.receivers[0]):
            for patch in ({}, {"transport_params": [{}, {}]}, {"activation": {"mode": None}}):
                with self.subTest(f"{resource} {patch}"):
                    before = self.instrument.staged(resource)
                    self.assertEqual(self.staged_after(resource, patch), before)

    def test_a_sender_is_merged(self):
        resource = self.senders[1]
        before = self.instrument.staged(resource)
        active = self.instrument.active(resource)
        after = self.staged_after(resource, {
            "receiver_id": UUID,
            "transport_params": [{"destination_port": 6000}, {"destination_ip": "232.1.2.3"}]})
        self.assertEqual(after["receiver_id"], UUID)
        self.assertEqual(after["master_enable"], before["master_enable"])
        first, second = after["transport_params"]
        # source_port repeats the destination port: the record has no other.
        self.assertEqual(first, before["transport_params"][0] |
                         {"destination_port": 6000, "source_port": 6000})
        self.assertEqual(second, before["transport_params"][1] | {"destination_ip": "232.1.2.3"})
        again = self.staged_after(resource, {"master_enable": False, "receiver_id": None})
        self.assertEqual(again, after | {"master_enable": False, "receiver_id": None})
        self.assertEqual(self.instrument.active(resource), active)

    def test_a_receiver_is_merged(self):
        resource = self.receivers[1]
        active = self.instrument.active(resource)
        leg = {"source_ip": "203.0.113.7", "multicast_ip": "232.1.2.3", "destination_port": 65535,
               "interface_ip": INTERFACES[0], "rtp_enabled": False}
        after = self.staged_after(resource, {"sender_id": UUID, "master_enable": True,
                                             "transport_params": [leg, {}]})
        self.assertEqual(after["transport_params"][0], leg)
        after = self.staged_after(resource, {"transport_params": [
            {"source_ip": None, "multicast_ip": None}, {"interface_ip": "auto"}]})
        self.assertEqual(after["transport_params"][0],
                         leg | {"source_ip": None, "multicast_ip": None})
        self.assertEqual(after["transport_params"][1]["interface_ip"], "auto")
        self.assertEqual(after["sender_id"], UUID)
        self.assertEqual(self.instrument.active(resource), active)

    def test_auto(self):
        """Addresses keep "auto", ports show 5004 at once."""
        after = self.staged_after(self.senders[2], {"transport_params": [
            {"source_ip": "auto", "destination_ip": "auto", "destination_port": "auto",
             "source_port": "auto"}, {}]})
        self.assertEqual(after["transport_params"][0],
                         {"source_ip": "auto", "destination_ip": "auto", "destination_port": 5004,
                          "source_port": 5004, "rtp_enabled": True})
        after = self.staged_after(self.receivers[2], {"transport_params": [
            {"interface_ip": "auto", "destination_port": "auto"}, {}]})
        self.assertEqual(after["transport_params"][0]["interface_ip"], "auto")
        self.assertEqual(after["transport_params"][0]["destination_port"], 5004)

    def test_a_source_port_of_its_own_is_not_kept(self):
        after = self.instrument.patch(self.senders[3], {"transport_params": [
            {"source_port": 7000, "destination_port": 6000}, {}]}, source="127.0.0.2").json
        self.assertEqual(after["transport_params"][0]["source_port"], 6000)
        self.instrument.wait_for_log("source_port 7000 of leg 1 is not kept")

    # Side, patch, path in "debug", a word of what is allowed.
    REFUSED = [
        ("both", [], "the document", "object"),
        ("both", None, "the document", "object"),
        ("both", 1, "the document", "object"),
        ("both", {"nothing": 1}, "/nothing", "master_enable"),
        ("both", {"a/b~c": 1}, "/a~1b~0c", "master_enable"),
        ("both", {"master_enable": 1}, "/master_enable", "true or false"),
        ("both", {"master_enable": None}, "/master_enable", "true or false"),
        ("sender", {"sender_id": None}, "/sender_id", "receiver_id"),
        ("sender", {"transport_file": {"data": None, "type": None}}, "/transport_file", "allowed"),
        ("sender", {"receiver_id": "no"}, "/receiver_id", "UUID"),
        ("sender", {"receiver_id": UUID.upper()}, "/receiver_id", "UUID"),
        ("sender", {"receiver_id": "null"}, "/receiver_id", "UUID"),
        ("receiver", {"receiver_id": None}, "/receiver_id", "sender_id"),
        ("receiver", {"sender_id": UUID[:-1]}, "/sender_id", "UUID"),
        ("receiver", {"sender_id": UUID.replace("-4", "-0")}, "/sender_id", "UUID"),
        ("receiver", {"sender_id": 5}, "/sender_id", "UUID"),
        ("both", {"transport_params": {}}, "/transport_params", "array of 2"),
        ("both", {"transport_params": []}, "/transport_params", "array of 2"),
        ("both", {"transport_params": [{}]}, "/transport_params", "array of 2"),
        ("both", {"transport_params": [{}, {}, {}]}, "/transport_params", "array of 2"),
        ("both", {"transport_params": [{}, 1]}, "/transport_params/1", "object"),
        ("both", {"transport_params": [{}, {"fec_enabled": True}]},
         "/transport_params/1/fec_enabled", "destination_port"),
        ("both", {"transport_params": [{"rtp_enabled": "yes"}, {}]},
         "/transport_params/0/rtp_enabled", "true or false"),
        ("sender", {"transport_params": [{"interface_ip": "auto"}, {}]},
         "/transport_params/0/interface_ip", "source_ip"),
        ("receiver", {"transport_params": [{"destination_ip": "232.0.0.1"}, {}]},
         "/transport_params/0/destination_ip", "multicast_ip"),
        ("receiver", {"transport_params": [{"source_port": 5004}, {}]},
         "/transport_params/0/source_port", "destination_port"),
        # What the constraints say.
        ("sender", {"transport_params": [{"source_ip": INTERFACES[1]}, {}]},
         "/transport_params/0/source_ip", INTERFACES[0]),
        ("sender", {"transport_params": [{}, {"source_ip": "203.0.113.1"}]},
         "/transport_params/1/source_ip", INTERFACES[1]),
        ("receiver", {"transport_params": [{"interface_ip": INTERFACES[1]}, {}]},
         "/transport_params/0/interface_ip", INTERFACES[0]),
        # null and "auto" only where IS-05 has them.
        ("sender", {"transport_params": [{"source_ip": None}, {}]},
         "/transport_params/0/source_ip", "auto"),
        ("sender", {"transport_params": [{"destination_ip": None}, {}]},
         "/transport_params/0/destination_ip", "auto"),
        ("receiver", {"transport_params": [{"interface_ip": None}, {}]},
         "/transport_params/0/interface_ip", "auto"),
        ("receiver", {"transport_params": [{"source_ip": "auto"}, {}]},
         "/transport_params/0/source_ip", "null"),
        ("receiver", {"transport_params": [{"multicast_ip": "auto"}, {}]},
         "/transport_params/0/multicast_ip", "null"),
        ("receiver", {"transport_params": [{"multicast_ip": "223.255.255.255"}, {}]},
         "/transport_params/0/multicast_ip", "224.0.0.0 to 239.255.255.255"),
        ("receiver", {"transport_params": [{"multicast_ip": "240.0.0.0"}, {}]},
         "/transport_params/0/multicast_ip", "224.0.0.0 to 239.255.255.255"),
        ("receiver", {"transport_params": [{"multicast_ip": "null"}, {}]},
         "/transport_params/0/multicast_ip", "null"),
        ("both", {"activation": None}, "/activation", "object"),
        ("both", {"activation": {}}, "/activation", "mode"),
        ("both", {"activation": {"requested_time": "1:0"}}, "/activation", "mode"),
        ("both", {"activation": {"mode": "now"}}, "/activation/mode", "activate_immediate"),
        ("both", {"activation": {"mode": 1}}, "/activation/mode", "activate_immediate"),
        ("both", {"activation": {"mode": None, "activation_time": None}},
         "/activation/activation_time", "requested_time"),
    ]
    # Of every address.
    NO_ADDRESSES = ["", "nonsense", "10.1", "192.0.2.010", "192.0.2.256", "192.0.2.1 ", " 192.0.2.1",
                    "192.0.2.1\u0000", "0xc0000201", 3221225985, True, [], {}]
    # Of every port.
    NO_PORTS = [0, -1, 65536, 2**31, 2**32 + 5004, 2**63, 2**64 - 1, -2**63, 5004.0, 5004.5, 1e300,
                "5004", "", None, True, [5004], {}]
    # Of the time of a scheduled activation.
    NO_TIMES = [None, "", ":", "1", "1:", ":1", "-1:0", "1:-1", "+1:0", "1 :0", "1:0 ", "1:1000000000",
                "1.5:0", "0x1:0", "281474976710656:0", "18446744073709551616:0",
                "99999999999999999999999999:0", "1:99999999999999999999", "1:0:0", 1, 1.5, {},
                "0" * 60 + "1:0"]

    def refused(self):
        yield from self.REFUSED
        legs = {"sender": ("source_ip", "destination_ip"),
                "receiver": ("source_ip", "multicast_ip", "interface_ip")}
        for side, members in legs.items():
            for member in members:
                for value in self.NO_ADDRESSES:
                    yield (side, {"transport_params": [{}, {member: value}]},
                           f"/transport_params/1/{member}", "IPv4 address")
                for value in ("::1", "2001:db8::1", "::ffff:192.0.2.1"):
                    yield (side, {"transport_params": [{}, {member: value}]},
                           f"/transport_params/1/{member}", "does not support IPv6")
        for side, members in (("sender", ("source_port", "destination_port")),
                              ("receiver", ("destination_port",))):
            for member in members:
                for value in self.NO_PORTS:
                    yield (side, {"transport_params": [{member: value}, {}]},
                           f"/transport_params/0/{member}", "1 to 65535")
        for mode in ("activate_scheduled_absolute", "activate_scheduled_relative"):
            yield "both", {"activation": {"mode": mode}}, "/activation", "requested_time"
            for value in self.NO_TIMES:
                path = "/activation" if value is None else "/activation/requested_time"
                yield ("both", {"activation": {"mode": mode, "requested_time": value}}, path,
                       "<seconds>:<nanoseconds>")
        yield ("both", {"activation": {"mode": "activate_scheduled_relative",
                                       "requested_time": "281474976710655:0"}},
               "/activation/requested_time", "TAI clock")
        yield ("both", {"activation": {"mode": "activate_immediate", "requested_time": "x"}},
               "/activation/requested_time", "<seconds>:<nanoseconds>")

    def test_refused(self):
        """Each is 400 with the path and what is allowed, and nothing has changed."""
        count = 0
        for side, patch, path, word in self.refused():
            for resource in ([self.senders[4]] if side != "receiver" else []) + \
                            ([self.receivers[4]] if side != "sender" else []):
                with self.subTest(f"{resource.split('/')[0]} {patch}"):
                    before = self.instrument.staged(resource)
                    # Something valid beside it must not get through.
                    if isinstance(patch, dict) and "master_enable" not in patch:
                        patch = {**patch, "master_enable": not before["master_enable"]}
                    answer = self.instrument.patch(resource, "null" if patch is None else patch)
                    self.assert_error(answer, 400, path, word)
                    self.assertEqual(self.instrument.staged(resource), before)
                    count += 1
        self.assertGreater(count, 200)

    def test_every_finding_is_named(self):
        answer = self.instrument.patch(self.receivers[5], {"master_enable": 1, "nothing": 2},
                                       source="127.0.0.3")
        self.assert_error(answer, 400, "/master_enable", "/nothing")
        self.instrument.wait_for_log(f"refused a change of {self.receivers[5]}: 400")

    def test_a_long_value_does_not_come_back_whole(self):
        long = "x" * 500_000
        answer = self.instrument.patch(self.receivers[5], {long: long})
        self.assert_error(answer, 400, "500000 bytes")
        self.assertLess(len(answer.body), 2000)


