#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Validates the bodies of the default records against the JSON schemas of IS-04 v1.2 and IS-05 v1.0.

Usage: default_records_schemas_test.py DEFAULT_RECORDS_BODIES

Without the schemas, or without python3-jsonschema, the test is skipped (status 77).
"""

import json
import pathlib
import subprocess
import sys

sys.dont_write_bytecode = True  # the tests may lie where nothing is to be written
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "program"))

from amwa_schemas import IS04, IS05, Schemas, why_missing

SKIPPED = 77


def main():
    if why_missing():
        print("skipped:", why_missing())
        return SKIPPED
    schemas = {name: Schemas(name) for name in (IS04, IS05)}
    printed = subprocess.run([sys.argv[1]], check=True, stdout=subprocess.PIPE,
                             encoding="utf-8").stdout
    failures = 0
    for line in printed.splitlines():
        api, schema, body = line.split("\t")
        for error in schemas[api].errors(schema, json.loads(body)):
            failures += 1
            print(f"{schema}: {error}: {body}")
    print(f"{len(printed.splitlines())} bodies validated, {failures} errors")
    return 1 if failures or len(printed.splitlines()) != 96 else 0


if __name__ == "__main__":
    sys.exit(main())
