# SPDX-License-Identifier: Apache-2.0
# mypy: disable-error-code="empty-body"
"""The bodies of the IS-05 v1.0 Connection API, and SDP files: ConnectionApi.h says all."""

import ctypes
import functools

from .connection_state import NMOS_IS05_ST, nmos_sdp_found
from .library import library
from .node_state import NMOS_IS04_ST
from .operations import (
    ERROR_INCOMPLETE,
    ERROR_TOO_LONG,
    AnyText,
    data_of,
    error_text,
    int_argument,
    operation,
    raise_error,
    text_of,
)
from .records import ENCODING, ERRORS
from .system_parameters import st_param_sys

__all__ = [
    "SdpFileError",
    "connection_analyze_sdp_file",
    "connection_base",
    "connection_bulk",
    "connection_bulk_receivers",
    "connection_bulk_senders",
    "connection_convert_crlf",
    "connection_fullpath_from_request",
    "connection_single",
    "connection_single_receiverid",
    "connection_single_receiverid_active",
    "connection_single_receiverid_constraints",
    "connection_single_receiverid_staged",
    "connection_single_receivers",
    "connection_single_senderid",
    "connection_single_senderid_active",
    "connection_single_senderid_constraints",
    "connection_single_senderid_sdp",
    "connection_single_senderid_staged",
    "connection_single_senders",
    "connection_split_string",
    "connection_version",
]

_operation_on_receiver = functools.partial(operation, indexes=24)


@operation
def connection_version() -> str:
    """Listing of the API's versions."""


@operation
def connection_base() -> str:
    """Listing of the API's root: "bulk/" and "single/"."""


@operation
def connection_bulk() -> str:
    """Listing of "bulk/"."""


@operation
def connection_bulk_senders() -> str:
    """Listing of "bulk/senders/": empty."""


@operation
def connection_bulk_receivers() -> str:
    """Listing of "bulk/receivers/": empty."""


@operation
def connection_single() -> str:
    """Listing of "single/"."""


@operation
def connection_single_senderid() -> str:
    """Listing of "single/senders/{id}/"."""


@operation
def connection_single_receiverid() -> str:
    """Listing of "single/receivers/{id}/"."""


@operation
def connection_single_senders(node: NMOS_IS04_ST, all_senders: bool) -> str:
    """Listing of "single/senders/": the ids. When the last are hidden, a comma stays."""


@operation
def connection_single_receivers(node: NMOS_IS04_ST, receiver_filter: int, audio_group_filter:
                                int) -> str:
    """Listing of "single/receivers/": the ids. When the last are hidden, a comma stays."""


@operation
def connection_single_senderid_constraints(leg1_source: str, leg2_source: str) -> str:
    """Body of "single/senders/{id}/constraints"."""


@operation
def connection_single_receiverid_constraints(leg1_interface: str, leg2_interface: str) -> str:
    """Body of "single/receivers/{id}/constraints"."""


@_operation_on_receiver
def connection_single_receiverid_staged(connections: NMOS_IS05_ST, index: int) -> str:
    """Body of "single/receivers/{id}/staged", index 0 to 23."""


@_operation_on_receiver
def connection_single_receiverid_active(connections: NMOS_IS05_ST, index: int) -> str:
    """Body of "single/receivers/{id}/active", index 0 to 23."""


@operation
def connection_single_senderid_staged(connections: NMOS_IS05_ST, index: int) -> str:
    """Body of "single/senders/{id}/staged", index 0 to 5."""


@operation
def connection_single_senderid_active(connections: NMOS_IS05_ST, index: int) -> str:
    """Body of "single/senders/{id}/active", index 0 to 5."""


@operation
def connection_single_senderid_sdp(connections: NMOS_IS05_ST, index: int,
                                   settings: st_param_sys) -> str:
    """SDP file of a sender, index 0 to 5. Every line ends with CR LF."""


@operation
def connection_convert_crlf(text: AnyText, newline: str) -> str:
    """Copy of the text in which every line break is one `newline`."""


@operation
def connection_fullpath_from_request(request_line: AnyText) -> str:
    """Path of an HTTP request line. ValueError when there is no "/"."""


class SdpFileError(ValueError):
    """An SDP file that could not be read to its end, or has a text that is too long. `found` and
    `errors` are what was found all the same."""

    def __init__(self, message: str, found: nmos_sdp_found, errors: str) -> None:
        super().__init__(message)
        self.found = found
        self.errors = errors


def connection_analyze_sdp_file(sdp: AnyText, switch_capable: bool, current_format: int,
                                switch_allowed: bool) -> "tuple[nmos_sdp_found, str]":
    """Checks an SDP file that a controller sent to a receiver: what it says, and the messages, one
    a line. The file is accepted when `found.status` is 200; then there are none."""
    name = "nmos_connection_analyze_sdp_file"
    data = data_of(sdp)
    format_code = int_argument("current_format", current_format, bits=16)
    function = library[name]
    function.restype = ctypes.c_size_t
    size = 256 * 1024
    while True:
        found = nmos_sdp_found()
        buffer = ctypes.create_string_buffer(size)
        result: int = function(
            ctypes.c_char_p(data), ctypes.c_size_t(len(data)), ctypes.c_int(bool(switch_capable)),
            ctypes.c_short(format_code), ctypes.c_int(bool(switch_allowed)), ctypes.byref(found),
            buffer, ctypes.c_size_t(size))
        errors = buffer.value.decode(ENCODING, ERRORS)
        if result in (ERROR_INCOMPLETE, ERROR_TOO_LONG):
            raise SdpFileError(f"{name}: {error_text(result)}", found, errors)
        raise_error(name, result)
        if result < size:
            return found, errors
        size = result + 1


def connection_split_string(text: AnyText, delimiter: str,
                            max_parts: int) -> "tuple[int, list[str]]":
    """Cuts the text at each delimiter: how many pieces there are, and the entries of the table: the
    pieces and, if there is room for it, the number that follows."""
    data = data_of(text)
    cut = data_of(delimiter)
    if b"\0" in cut:
        raise ValueError(f"delimiter takes no NUL, here is one: {delimiter!r}")
    if b"\0" in data:
        raise ValueError("text takes no NUL here: it could not be told from the end of a piece")
    count = ctypes.c_int()
    entries = text_of(
        "nmos_connection_split_string", ctypes.c_char_p(data), ctypes.c_size_t(len(data)),
        ctypes.c_char_p(cut), ctypes.c_int(int_argument("max_parts", max_parts)),
        ctypes.byref(count))
    return count.value, entries.split("\0") if max_parts > 0 else []
