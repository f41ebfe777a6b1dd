# SPDX-License-Identifier: Apache-2.0
"""The state file: what survives a restart, a kill, damage, and another configuration."""

import http.client
import json
import os
import pathlib
import random
import signal
import subprocess
import tempfile
import threading

from instrument import IMMEDIATE, PORT, SERVE, Instrument, StateTest, file_patch, sdp_file, seconds, \
    video_medium

UUID = "5709255c-c0ae-4e1e-99a0-e872e83e48e0"
KILLS = int(os.environ.get("NMOS_KILLS", "100"))


class Durability(StateTest):
    def start(self, configuration=None):
        return Instrument("--state", str(self.file), configuration=configuration)

    def refused(self, file, configuration=None):
        """What a start says that ends at once with status 2."""
        options = []
        if configuration is not None:
            path = pathlib.Path(tempfile.mkstemp(suffix=".json")[1])
            self.addCleanup(path.unlink)
            path.write_text(json.dumps(configuration), encoding="utf-8")
            options = ["--config", str(path)]
        run = subprocess.run([*SERVE, "--first-free-port", "--port", PORT, *options,
                              "--state", file],
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=20)
        self.assertEqual(run.returncode, 2, run.stderr)
        return run.stderr.decode()

    @staticmethod
    def everything(instrument):
        """All that a controller can read."""
        texts = {}
        for kind in ("self", "sources", "flows", "devices", "senders", "receivers"):
            texts[kind] = instrument.node(kind)
        for resource in instrument.resources("senders") + instrument.resources("receivers"):
            texts[resource] = instrument.staged(resource), instrument.active(resource)
            if resource.startswith("senders"):
                texts[resource] += (instrument.sdp(resource),)
        return texts

    @staticmethod
    def change_much(instrument):
        senders, receivers = instrument.resources("senders"), instrument.resources("receivers")
        auto = {"source_ip": "auto", "destination_ip": "auto"}
        patches = [
            (senders[0], {"transport_params": [{"destination_ip": "232.1.1.1"}, {}], **IMMEDIATE}),
            (senders[1], {"transport_params": [auto, auto], "master_enable": False, **IMMEDIATE}),
            (senders[2], {"receiver_id": UUID, "transport_params": [{"destination_port": 9}, {}]}),
            (receivers[0], file_patch(sdp_file(video_medium(source="203.0.113.1"))
                                      + "i=\u00e4\"\\/\r\n",
                                      sender_id=UUID, master_enable=True, **IMMEDIATE)),
            (receivers[1], {"transport_params": [{"interface_ip": "auto"}, {"rtp_enabled": False}]}),
        ]
        for resource, patch in patches:
            answer = instrument.patch(resource, patch)
            assert answer.status == 200, answer

    def test_a_restart_changes_nothing(self):
        with self.start() as instrument:
            port = instrument.port
            self.change_much(instrument)
            before = self.everything(instrument)
        with self.start() as instrument:
            self.assertEqual(instrument.port, port, "the port is in use, and is part of the bodies")
            self.assertEqual(self.everything(instrument), before)
        self.assertEqual(self.names(), ["state"])

    def test_a_kill_loses_nothing_that_was_answered(self):
        with self.start() as instrument:
            self.change_much(instrument)
            before = self.everything(instrument)
            instrument.end(signal.SIGKILL)
        with self.start() as instrument:
            self.assertEqual(self.everything(instrument), before)

    def test_versions_move_forward_over_restarts(self):
        with self.start() as instrument:
            receiver = instrument.resources("receivers")[0]
            before = instrument.node("receivers")
        # Another label is another resource body; the others stay as they were.
        labels = [entry["label"] for entry in before]
        labels[3] = "renamed"
        with self.start({"labels": {"receivers": labels}}) as instrument:
            after = instrument.node("receivers")
            changed = [i for i in range(24) if after[i]["version"] != before[i]["version"]]
            self.assertEqual(changed, [3])
            self.assertGreater(seconds(after[3]["version"]), seconds(before[3]["version"]))
            instrument.patch(receiver, IMMEDIATE)
            self.assertGreater(seconds(instrument.node(receiver)["version"]),
                               seconds(before[0]["version"]))

    def test_counters_are_kept(self):
        def counters():
            return json.loads(self.file.read_text())["state"]["counters"]

        with self.start() as instrument:
            start = counters()
            self.change_much(instrument)
            changed = counters()
        self.assertEqual(changed["senders"], start["senders"] + 2)
        self.assertEqual(changed["receivers"], start["receivers"] + 1)
        with self.start():
            self.assertEqual(counters(), changed)

    def test_pending_activations_do_not_survive(self):
        with self.start() as instrument:
            receiver = instrument.resources("receivers")[2]
            answer = instrument.patch(receiver, {
                "transport_params": [{"destination_port": 9}, {}],
                "activation": {"mode": "activate_scheduled_relative", "requested_time": "3600:0"}})
            self.assertEqual(answer.status, 202)
        with self.start() as instrument:
            staged = instrument.staged(receiver)
            self.assertEqual(staged["activation"],
                             {"mode": None, "requested_time": None, "activation_time": None})
            self.assertEqual(staged["transport_params"][0]["destination_port"], 9)
            self.assertEqual(instrument.status()["pending_activations"], [])
            self.assertEqual(instrument.patch(receiver, {}).status, 200)

    def test_another_configuration(self):
        with self.start() as instrument:
            self.change_much(instrument)
            senders = instrument.resources("senders")
            sdp = instrument.sdp(senders[0])
        # The video format comes from the configuration, the destination from the state.
        with self.start({"video": {"lines": 2160}}) as instrument:
            after = instrument.sdp(senders[0])
            self.assertIn("width=3840", after)
            self.assertIn("c=IN IP4 232.1.1.1/64", after)
            self.assertGreater(int(after.split()[3]), int(sdp.split()[3]))
        # Without audio and ancillary data, their senders are dropped.
        with self.start({"streams": {"sender_essences": "video only"}}) as instrument:
            instrument.wait_for_log("dropped the saved parameters of 2")
            self.assertEqual(instrument.resources("senders"), senders[:4])

    def test_what_another_configuration_drops_is_kept_as_previous(self):
        previous = self.folder / "state.previous"
        with self.start() as instrument:
            self.change_much(instrument)
        before = self.file.read_bytes()
        with self.start({"streams": {"sender_essences": "video only"}}) as instrument:
            instrument.wait_for_log(f"{previous} keeps the file as it was")
        self.assertEqual(previous.read_bytes(), before)
        # Nothing more is dropped: the copy stays.
        with self.start({"streams": {"sender_essences": "video only"}}):
            pass
        self.assertEqual(previous.read_bytes(), before)

    def test_the_state_of_another_instrument_is_not_discarded(self):
        with self.start() as instrument:
            self.change_much(instrument)
            count = len(instrument.resources("senders") + instrument.resources("receivers"))
        before = self.file.read_bytes()
        other = {"serial_number": "other"}
        said = self.refused(str(self.file), configuration=other)
        for words in (f"state file {self.file}: it has the parameters of {count} senders and "
                      "receivers, and none of them is in the configuration", "--state-reset"):
            self.assertIn(words, said)
        self.assertEqual(self.file.read_bytes(), before)
        self.assertEqual(self.names(), ["state"])
        with Instrument("--state", str(self.file), "--state-reset",
                        configuration=other) as instrument:
            self.assertFalse(instrument.active(instrument.resources("receivers")[0])["master_enable"])
            instrument.wait_for_log("state.previous")
        self.assertEqual((self.folder / "state.previous").read_bytes(), before)
        with self.start(other) as instrument:
            instrument.wait_for_log("state restored")

    def test_other_interfaces(self):
        with self.start() as instrument:
            self.change_much(instrument)
            resources = instrument.resources("senders") + instrument.resources("receivers")
        interfaces = [
            {"name": "media1", "mac": "00-00-5e-00-53-01", "address": "192.0.2.77"},
            {"name": "media2", "mac": "00-00-5e-00-53-02", "address": "198.51.100.77"}]
        with self.start({"interfaces": interfaces}) as instrument:
            for resource in resources:
                for leg, interface in zip(instrument.active(resource)["transport_params"],
                                          interfaces):
                    own = leg["source_ip" if resource.startswith("senders") else "interface_ip"]
                    self.assertEqual(own, interface["address"])
            instrument.wait_for_log("is now 192.0.2.77")

    def test_damaged_files_are_set_aside(self):
        with self.start() as instrument:
            self.change_much(instrument)
            fresh = None
        good = self.file.read_bytes()
        damages = [b"", b"{}", b"[]", b"\0" * 100, good[:len(good) // 2], good[:-3],
                   good.replace(b"232.1.1.1", b"232.1.1.2"), good.replace(b'"format": 1', b'"format": 2'),
                   b"[" * 100_000, os.urandom(1000)]
        with Instrument() as instrument:
            fresh = [instrument.active(resource) for resource in instrument.resources("receivers")]
        for number, damage in enumerate(damages):
            with self.subTest(number):
                for path in self.folder.iterdir():
                    path.unlink()
                self.file.write_bytes(damage)
                with self.start() as instrument:
                    self.assertEqual([instrument.active(resource)
                                      for resource in instrument.resources("receivers")], fresh)
                    instrument.wait_for_log("is damaged")
                aside = [path for path in self.folder.iterdir() if "damaged" in path.name]
                self.assertEqual([path.read_bytes() for path in aside], [damage])
                with self.start() as instrument:
                    self.assertNotIn("is damaged", instrument.log)

    def test_a_place_that_cannot_be_written(self):
        file = self.folder / "nothing" / "state"
        self.assertIn(f"state file {file}: cannot be written: ", self.refused(str(file)))

    def test_killed_again_and_again(self):
        """After each kill the last answered change is there, or the one that was on its way."""
        randomness = random.Random(1)
        last = None  # the port of the last change that was answered
        sent = None
        next_port = 1
        for _ in range(KILLS):
            instrument = self.start()
            self.assertNotIn("damaged", instrument.log)
            receiver = instrument.resources("receivers")[0]
            found = instrument.active(receiver)["transport_params"][0]["destination_port"]
            if last is not None:
                self.assertIn(found, (last, sent))
            last = found
            kill = threading.Timer(randomness.uniform(0, 0.15), instrument.process.kill)
            kill.start()
            try:
                while True:
                    next_port = next_port % 65535 + 1
                    sent = next_port
                    answer = instrument.patch(receiver, {
                        "transport_params": [{"destination_port": sent}, {}], **IMMEDIATE})
                    self.assertEqual(answer.status, 200)
                    last = sent
            except (OSError, http.client.HTTPException):
                pass
            kill.join()
            instrument.end()
        print(f"{KILLS} kills, {next_port} changes")
        # What the last kill left behind is removed at the next start.
        with self.start():
            pass
        self.assertEqual(self.names(), ["state"])
