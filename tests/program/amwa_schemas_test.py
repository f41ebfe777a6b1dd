#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Validates what the program prints against the JSON schemas of IS-04 v1.2 and IS-05 v1.0.

Usage: amwa_schemas_test.py PROGRAM EXAMPLES_DIRECTORY

Without the schemas, or without python3-jsonschema, the test is skipped (status 77).
"""

import json
import pathlib
import subprocess
import sys

sys.dont_write_bytecode = True  # the tests may lie where nothing is to be written

from amwa_schemas import IS04, IS05, Schemas, why_missing

SKIPPED = 77

# Text, and the schema that it keeps to.
WITHOUT_INDEX = [
    (["self"], IS04, "node.json"),
    (["sources"], IS04, "sources.json"),
    (["flows"], IS04, "flows.json"),
    (["devices"], IS04, "devices.json"),
    (["senders"], IS04, "senders.json"),
    (["receivers"], IS04, "receivers.json"),
    (["resource-node"], IS04, "registrationapi-resource-post-request.json"),
    (["root", "node/v1.2"], IS04, "nodeapi-base.json"),
    (["root", "registration/v1.2"], IS04, "registrationapi-base.json"),
    (["root", "connection/v1.0"], IS05, "connectionapi-base.json"),
    (["root", "connection/v1.0/bulk"], IS05, "connectionapi-bulk.json"),
    (["root", "connection/v1.0/single"], IS05, "connectionapi-single.json"),
    (["root", "connection/v1.0/single/senders/id"], IS05, "connectionapi-sender.json"),
    (["root", "connection/v1.0/single/receivers/id"], IS05, "connectionapi-receiver.json"),
]
# Text, the text that lists what it can be asked for, and the schema of each.
WITH_INDEX = [
    ("source", "sources", IS04, "source.json"),
    ("flow", "flows", IS04, "flow.json"),
    ("device", "devices", IS04, "device.json"),
    ("sender", "resource-senders", IS04, "sender.json"),
    ("target", "resource-senders", IS04, "nodeapi-receiver-target.json"),
    ("receiver", "resource-receivers", IS04, "receiver.json"),
    ("resource-source", "sources", IS04, "registrationapi-resource-post-request.json"),
    ("resource-flow", "flows", IS04, "registrationapi-resource-post-request.json"),
    ("resource-device", "devices", IS04, "registrationapi-resource-post-request.json"),
    ("resource-sender", "resource-senders", IS04, "registrationapi-resource-post-request.json"),
    ("resource-receiver", "resource-receivers", IS04,
     "registrationapi-resource-post-request.json"),
    ("senders-constraints", "resource-senders", IS05, "v1.0-constraints-schema.json"),
    ("senders-staged", "resource-senders", IS05, "v1.0-sender-response-schema.json"),
    ("senders-active", "resource-senders", IS05, "v1.0-sender-response-schema.json"),
    ("receivers-constraints", "resource-receivers", IS05, "v1.0-constraints-schema.json"),
    ("receivers-staged", "resource-receivers", IS05, "v1.0-receiver-response-schema.json"),
    ("receivers-active", "resource-receivers", IS05, "v1.0-receiver-response-schema.json"),
]


def main():
    program, examples = sys.argv[1], pathlib.Path(sys.argv[2])
    if why_missing():
        print("skipped:", why_missing())
        return SKIPPED
    schemas = {name: Schemas(name) for name in (IS04, IS05)}

    def printed(text, options):
        run = subprocess.run([program, "print", *text, *options], check=True,
                             stdout=subprocess.PIPE)
        return json.loads(run.stdout)

    validated = 0
    failures = 0

    def validate(text, options, api, schema):
        nonlocal validated, failures
        validated += 1
        for error in schemas[api].errors(schema, printed(text, options)):
            failures += 1
            print(f"print {' '.join([*text, *options])}: {schema}: {error}")

    for example in sorted(examples.glob("*.json")):
        for text, api, schema in WITHOUT_INDEX:
            validate(text, ["--config", str(example)], api, schema)
    for text, listing, api, schema in WITH_INDEX:
        for index in range(len(printed([listing], []))):
            validate([text, str(index)], [], api, schema)

    # The validator must see something: a body that lacks a member is refused.
    node = printed(["self"], [])
    del node["href"]
    if not schemas[IS04].errors("node.json", node):
        print("the validation accepts everything")
        return 1

    print(f"{validated} bodies validated, {failures} errors")
    return 1 if failures or not validated else 0


if __name__ == "__main__":
    sys.exit(main())
