# SPDX-License-Identifier: Apache-2.0
"""What is served against the JSON schemas of IS-04 v1.2 and IS-05 v1.0."""

import json
import pathlib
import unittest

from amwa_schemas import AMWA, IS04, IS05, Schemas, why_missing
from instrument import (CONNECTION, EXAMPLES, IMMEDIATE, INTERFACES, NODE, SINGLE, Instrument,
                        file_patch)

UUID = "5709255c-c0ae-4e1e-99a0-e872e83e48e0"


@unittest.skipIf(why_missing(), why_missing())
class ServedBodies(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.schemas = {api: Schemas(api) for api in (IS04, IS05)}
        cls.validated = 0

    def validate(self, api, schema, instance):
        ServedBodies.validated += 1
        self.assertEqual(self.schemas[api].errors(schema, instance), [], instance)

    def validate_everything(self, instrument):
        get = lambda path: instrument.get(path).json
        for path, api, schema in (
                (NODE, IS04, "nodeapi-base.json"), (NODE + "/self", IS04, "node.json"),
                (NODE + "/sources", IS04, "sources.json"), (NODE + "/flows", IS04, "flows.json"),
                (NODE + "/devices", IS04, "devices.json"), (NODE + "/senders", IS04, "senders.json"),
                (NODE + "/receivers", IS04, "receivers.json"),
                ("/x-nmos/registration/v1.2", IS04, "registrationapi-base.json"),
                (CONNECTION, IS05, "connectionapi-base.json"),
                (CONNECTION + "/bulk", IS05, "connectionapi-bulk.json"),
                (SINGLE, IS05, "connectionapi-single.json"),
                (SINGLE + "/senders", IS05, "sender-receiver-base.json"),
                (SINGLE + "/receivers", IS05, "sender-receiver-base.json")):
            self.validate(api, schema, get(path))
        for kind in ("source", "flow", "device", "sender", "receiver"):
            for entry in instrument.node(kind + "s"):
                self.validate(IS04, kind + ".json", get(f"{NODE}/{kind}s/{entry['id']}"))
        for kind in ("sender", "receiver"):
            for resource in instrument.resources(kind + "s"):
                path = f"{SINGLE}/{resource}"
                self.validate(IS05, f"connectionapi-{kind}.json", get(path))
                self.validate(IS05, "v1.0-constraints-schema.json", get(path + "/constraints"))
                for half in ("staged", "active"):
                    self.validate(IS05, f"v1.0-{kind}-response-schema.json", get(f"{path}/{half}"))

    def test_each_example(self):
        for example in sorted(EXAMPLES.glob("*.json")):
            with self.subTest(example.name), Instrument("--config", str(example)) as instrument:
                self.validate_everything(instrument)
        print(f"{self.validated} bodies validated")

    def test_after_changes(self):
        with Instrument() as instrument:
            senders, receivers = instrument.resources("senders"), instrument.resources("receivers")
            later = {"activation": {"mode": "activate_scheduled_relative",
                                    "requested_time": "3600:0"}}
            auto = {"source_ip": "auto", "destination_ip": "auto", "destination_port": "auto"}
            unicast = {"destination_ip": "203.0.113.1"}
            for resource, patch in (
                    (senders[0], {"transport_params": [auto, auto], **IMMEDIATE}),
                    (senders[1], {"transport_params": [unicast, unicast], "receiver_id": UUID,
                                  **IMMEDIATE}),
                    (senders[2], later),
                    (receivers[0], file_patch(instrument.sdp(senders[0]), sender_id=UUID,
                                              master_enable=True, **IMMEDIATE)),
                    (receivers[1], file_patch(instrument.sdp(senders[1]).replace(
                        "203.0.113.1", INTERFACES[0], 1), **IMMEDIATE)),
                    (receivers[2], later)):
                answer = instrument.patch(resource, patch)
                kind = resource.split("s/")[0]
                if answer.status == 400:
                    self.validate(IS05, "error.json", answer.json)
                else:
                    self.validate(IS05, f"v1.0-{kind}-response-schema.json", answer.json)
            self.validate_everything(instrument)
            bulk = instrument.request("POST", CONNECTION + "/bulk/receivers", [
                {"id": receivers[3].split("/")[1], "params": {}}, {"id": UUID, "params": {}},
                {"id": receivers[2].split("/")[1], "params": {"a": 1}}])
            self.validate(IS05, "v1.0-bulk-response-schema.json", bulk.json)

    def test_errors(self):
        with Instrument() as instrument:
            receiver = instrument.resources("receivers")[0]
            for answer in (instrument.get("/nothing"),
                           instrument.request("DELETE", NODE + "/self"),
                           instrument.request("PATCH", f"{SINGLE}/{receiver}/staged", "{"),
                           instrument.request("PATCH", f"{SINGLE}/{receiver}/staged", "{}",
                                              {"Content-Type": "text/plain"}),
                           instrument.patch(receiver, {"a": 1}),
                           instrument.request("PUT", f"{NODE}/{receiver}/target", {"a": 1})):
                for api in (IS04, IS05):
                    self.validate(api, "error.json", answer.json)

    def test_what_is_accepted_is_in_the_schema(self):
        """The examples of IS-05 are read as far as this instrument has what they name."""
        folder = pathlib.Path(AMWA) / IS05 / "examples"
        with Instrument() as instrument:
            for example in sorted(folder.glob("v1.0-*-patch*.json")):
                kind = "sender" if "-sender-" in example.name else "receiver"
                patch = json.loads(example.read_text(encoding="utf-8"))
                self.validate(IS05, f"v1.0-{kind}-stage-schema.json", patch)
                answer = instrument.patch(instrument.resources(kind + "s")[0], patch)
                with self.subTest(example.name):
                    if "activation-only" in example.name or "transportfile" in example.name:
                        self.assertEqual(answer.status, 200, answer)
                    else:
                        # They have one leg, other interfaces or FEC.
                        self.assertEqual(answer.status, 400, answer)
                        self.assertIn("/transport_params", answer.json["debug"])
