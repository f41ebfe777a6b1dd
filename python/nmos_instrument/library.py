# SPDX-License-Identifier: Apache-2.0
"""The C library: $NMOS_INSTRUMENT_C_LIBRARY, or the one that the system finds."""

import ctypes
import os

VARIABLE = "NMOS_INSTRUMENT_C_LIBRARY"
SONAME = "libnmos-instrument-c.so.1"


def _load() -> ctypes.CDLL:
    path = os.environ.get(VARIABLE) or SONAME
    try:
        return ctypes.CDLL(path)
    except OSError as error:
        raise ImportError(
            f"{error}. nmos_instrument needs {SONAME}: install it where the system looks for"
            f" libraries, or name the file in ${VARIABLE}") from error


library = _load()
