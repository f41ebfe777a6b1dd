# SPDX-License-Identifier: Apache-2.0
"""What the C headers declare."""

import re

from conftest import ROOT

INCLUDE = ROOT / "include"
RECORD_HEADERS = ("node_state.h", "connection_state.h", "system_parameters.h")


def without_comments(text):
    return re.sub(r"//[^\n]*", "", text)


def text_of_c(name):
    """A header as C sees it."""
    text = without_comments((INCLUDE / name).read_text())
    return re.sub(r"^#ifdef __cplusplus *\n((?:(?!^#endif|^#else).*\n)*?)(?=^#endif|^#else)", "",
                  text, flags=re.MULTILINE)


def records():
    """{record: [member, ...]} of all headers."""
    found = {}
    for name in [f"nmos_instrument/{header}" for header in RECORD_HEADERS] + ["nmos_instrument_c.h"]:
        for record, body in re.findall(r"^(?:typedef )?struct (\w+)\s*\{(.*?)^\}", text_of_c(name),
                                       re.MULTILINE | re.DOTALL):
            found[record] = re.findall(r"(\w+)\s*(?:\[\d+\]\s*)*;", body)
    return found


def functions():
    """The names of all functions of the C interface, without `nmos_`."""
    text = without_comments((INCLUDE / "nmos_instrument_c.h").read_text())
    return re.findall(r"NMOS_INSTRUMENT_EXPORT\s+[\w\s*]+?\bnmos_(\w+)\(", text)
