# SPDX-License-Identifier: Apache-2.0
"""The JSON schemas of IS-04 v1.2 and IS-05 v1.0.

NMOS_AMWA_DIR names a folder that holds is-04-v1.2/APIs/schemas and is-05-v1.0/APIs/schemas.
"""

import json
import os
import pathlib
import warnings

try:
    import jsonschema
except ImportError:
    jsonschema = None

IS04, IS05 = "is-04-v1.2", "is-05-v1.0"
AMWA = os.environ.get("NMOS_AMWA_DIR")


def why_missing():
    """Why nothing can be validated; empty if it can be."""
    if not AMWA:
        return "NMOS_AMWA_DIR is not set"
    if jsonschema is None:
        return "there is no python3-jsonschema"
    return ""


class Schemas:
    """The schema files of one API, which refer to one another by name."""

    def __init__(self, api):
        # Debian 12 has no other way to resolve references.
        warnings.filterwarnings("ignore", category=DeprecationWarning)
        folder = pathlib.Path(AMWA) / api / "APIs" / "schemas"
        self.by_name = {path.name: json.loads(path.read_text(encoding="utf-8"))
                        for path in folder.glob("*.json")}
        if not self.by_name:
            raise FileNotFoundError(f"{folder}: no schemas")

    def errors(self, name, instance):
        schema = self.by_name[name]
        resolver = jsonschema.RefResolver("", schema, store=self.by_name)
        validator = jsonschema.Draft4Validator(
            schema, resolver=resolver, format_checker=jsonschema.draft4_format_checker)
        return [f"{'/'.join(map(str, error.absolute_path))}: {error.message}"
                for error in validator.iter_errors(instance)]
