# SPDX-License-Identifier: Apache-2.0
"""Plain records in, NMOS texts out: nmos-instrument for Python.

The records are those of C++ and C, under their names (`NMOS_IS04_ST`, `NMOS_IS05_ST`,
`st_param_sys`), with their members. The functions are those of nmos_instrument_c.h without the
prefix `nmos_`: `node_receivers` is nmos_node_receivers, which is NodeApi::make_receivers. The
headers have what each of them does in full.

Errors are exceptions: IndexError for an index outside its array, OverflowError for a number that is
infinite, NaN or outside of its member's range, ValueError for a text that does not fit or lacks a
part, TypeError for a record of another kind, MemoryError.

Texts are UTF-8. Bytes that are not become surrogate escapes (PEP 383), in both directions.
"""

from .connection_api import *
from .connection_state import *
from .nmos import *
from .node_api import *
from .node_state import *
from .operations import error_text as error_text
from .operations import version as version
from .record_check import *
from .registration_api import *
from .system_parameters import *
