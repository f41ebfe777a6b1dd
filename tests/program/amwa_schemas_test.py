#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Validates what the program prints against the JSON schemas of IS-04 v1.2 and IS-05 v1.0.

Usage: amwa_schemas_test.py PROGRAM EXAMPLES_DIRECTORY

NMOS_AMWA_DIR names a folder that holds is-04-v1.2/APIs/schemas and is-05-v1.0/APIs/schemas of the
two specifications. Without it, or without python3-jsonschema, the test is skipped (status 77).
"""

import json
import os
import pathlib
import subprocess
import sys
import warnings

SKIPPED = 77

# Text, and the schema that it keeps to.
IS04, IS05 = "is-04-v1.2", "is-05-v1.0"
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


class Schemas:
    """The schema files of one folder, which refer to one another by name."""

    def __init__(self, folder, jsonschema):
        self.jsonschema = jsonschema
        self.by_name = {path.name: json.loads(path.read_text(encoding="utf-8"))
                        for path in sorted(folder.glob("*.json"))}
        if not self.by_name:
            sys.exit(f"{folder}: no schemas")

    def errors(self, name, instance):
        schema = self.by_name[name]
        resolver = self.jsonschema.RefResolver("", schema, store=self.by_name)
        validator = self.jsonschema.Draft4Validator(
            schema, resolver=resolver, format_checker=self.jsonschema.draft4_format_checker)
        return [f"{'/'.join(map(str, error.absolute_path))}: {error.message}"
                for error in validator.iter_errors(instance)]


def main():
    program, examples = sys.argv[1], pathlib.Path(sys.argv[2])
    amwa = os.environ.get("NMOS_AMWA_DIR")
    if not amwa:
        print("skipped: NMOS_AMWA_DIR is not set")
        return SKIPPED
    try:
        import jsonschema
    except ImportError:
        print("skipped: there is no python3-jsonschema")
        return SKIPPED
    # Debian 12 has no other way to resolve references.
    warnings.filterwarnings("ignore", category=DeprecationWarning)
    schemas = {name: Schemas(pathlib.Path(amwa) / name / "APIs" / "schemas", jsonschema)
               for name in (IS04, IS05)}

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
