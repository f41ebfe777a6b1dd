# SPDX-License-Identifier: Apache-2.0
"""The records of connection_state.h, which says what they are for."""

import enum
from typing import Annotated

from .records import (Array, Bytes, Double, Entries, Flag, Int32, Record, Struct, Text, UInt32,
                      record, require_size)

__all__ = [
    "CONNECTION_HALF_IS05_ST",
    "CONNECTION_IS05_ST",
    "CONNECTION_LEG_IS05_ST",
    "NMOS_IS05_ST",
    "SdpFoundFlag",
    "nmos_sdp_found",
    "sdp_examined_lines",
]


@record
class CONNECTION_LEG_IS05_ST(Record):
    """One transport leg (IS-05 v1.0, one element of "transport_params")."""

    source_ip: Annotated[str, Text(32)]
    destination_ip: Annotated[str, Text(32)]
    interface_ip: Annotated[str, Text(32)]
    destination_port: Double
    reserved_after_port: Annotated[bytes, Bytes(120)]
    rtp_enabled: Flag
    reserved_at_end: Annotated[bytes, Bytes(7)]


@record
class CONNECTION_HALF_IS05_ST(Record):
    """One half of a connection: its staged or its active parameters."""

    leg_count: Int32
    reserved_after_leg_count: Int32
    peer_id: Annotated[str, Text(48)]
    master_enable: Flag
    mode: Annotated[str, Text(32)]
    requested_time: Annotated[str, Text(48)]
    activation_time: Annotated[str, Text(48)]
    transport_file_data: Annotated[str, Text(4096)]
    transport_file_type: Annotated[str, Text(39)]
    transport_params: Annotated[Entries[CONNECTION_LEG_IS05_ST], Array(CONNECTION_LEG_IS05_ST, 2)]


@record
class CONNECTION_IS05_ST(Record):
    """One sender's or receiver's connection."""

    reserved_before_staged: Annotated[bytes, Bytes(4232)]
    staged: Annotated[CONNECTION_HALF_IS05_ST, Struct(CONNECTION_HALF_IS05_ST)]
    active: Annotated[CONNECTION_HALF_IS05_ST, Struct(CONNECTION_HALF_IS05_ST)]


@record
class NMOS_IS05_ST(Record):
    """The whole IS-05 state of the device: 82,928 bytes and 13,800 for each receiver."""

    reserved_header: Annotated[bytes, Bytes(24)]
    senders: Annotated[Entries[CONNECTION_IS05_ST], Array(CONNECTION_IS05_ST, 6)]
    ptp_grandmaster_id: Annotated[str, Text(32)]
    sdp_session_id: Annotated[str, Text(32)]
    sdp_session_version: Annotated[str, Text(32)]
    reserved_before_receivers: Annotated[bytes, Bytes(8)]
    receivers: Annotated[Entries[CONNECTION_IS05_ST], Array(CONNECTION_IS05_ST, 24)]


require_size(NMOS_IS05_ST, 414128)

sdp_examined_lines = 100


class SdpFoundFlag(enum.IntFlag):
    """Bits of nmos_sdp_found.found_flags: sdp_found_flag of C without the prefix."""

    source_ip_leg0 = 0x1
    source_ip_leg1 = 0x2
    multicast_ip_leg0 = 0x4
    multicast_ip_leg1 = 0x8
    destination_port_leg0 = 0x10
    destination_port_leg1 = 0x20
    rtp_payload_type = 0x40
    sampling_and_depth = 0x80
    size = 0x100
    exactframerate = 0x200
    colorimetry = 0x400
    packing_mode = 0x800
    tcs = 0x1000


ShortText = Annotated[str, Text(64)]
BothLegs = Annotated[Entries[str], Array(Text(64), 2)]


@record
class nmos_sdp_found(Record):
    """What an SDP file said: the struct of nmos_instrument_c.h."""

    found_flags: UInt32
    status: Int32
    rtp_payload_type: Int32
    size_interlaced: Flag
    rate_interlaced: Flag
    reserved: Annotated[bytes, Bytes(2)]
    source_ip: BothLegs
    multicast_ip: BothLegs
    destination_port: BothLegs
    sampling: ShortText
    depth: ShortText
    width: ShortText
    height: ShortText
    exactframerate: ShortText
    colorimetry: ShortText
    packing_mode: ShortText
    tcs: ShortText
