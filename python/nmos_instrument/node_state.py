# SPDX-License-Identifier: Apache-2.0
"""The records of node_state.h, which says what they are for."""

from typing import Annotated

from .records import (Array, Bytes, Double, Entries, Flag, Int32, Record, Text, UInt64, record,
                      require_size)

__all__ = [
    "CLOCK_IS04_ST",
    "CONTROL_IS04_ST",
    "DEVICE_IS04_ST",
    "ENDPOINT_IS04_ST",
    "FLOW_IS04_ST",
    "INTERFACE_IS04_ST",
    "NMOS_IS04_ST",
    "RECEIVER_IS04_ST",
    "SENDER_IS04_ST",
    "SOURCE_IS04_ST",
    "SUBSCRIPTION_IS04_ST",
]


@record
class SUBSCRIPTION_IS04_ST(Record):
    """One subscription entry of a sender or a receiver."""

    peer_id: Annotated[str, Text(48)]
    active: Flag


@record
class ENDPOINT_IS04_ST(Record):
    """One endpoint of the Node API (IS-04 v1.2, node.json, "api"."endpoints")."""

    host: Annotated[str, Text(16)]
    port: Double
    protocol: Annotated[str, Text(16)]


@record
class CLOCK_IS04_ST(Record):
    """One clock of the node (IS-04 v1.2, clock_internal.json and clock_ptp.json)."""

    name: Annotated[str, Text(32)]
    ref_type: Annotated[str, Text(16)]
    traceable: Flag
    version: Annotated[str, Text(16)]
    gmid: Annotated[str, Text(32)]
    locked: Flag


@record
class INTERFACE_IS04_ST(Record):
    """One network interface of the node (IS-04 v1.2, node.json, "interfaces")."""

    chassis_id: Annotated[str, Text(48)]
    port_id: Annotated[str, Text(48)]
    name: Annotated[str, Text(48)]


@record
class SOURCE_IS04_ST(Record):
    """One source (IS-04 v1.2, source.json)."""

    id: Annotated[str, Text(48)]
    version: Annotated[str, Text(48)]
    label: Annotated[str, Text(64)]
    description: Annotated[str, Text(144)]
    device_id: Annotated[str, Text(96)]
    clock_name: Annotated[str, Text(20)]
    format: Annotated[str, Text(2080)]


@record
class FLOW_IS04_ST(Record):
    """One flow (IS-04 v1.2, flow_video_raw.json, flow_audio_raw.json, flow_sdianc_data.json)."""

    id: Annotated[str, Text(48)]
    version: Annotated[str, Text(48)]
    label: Annotated[str, Text(64)]
    description: Annotated[str, Text(128)]
    format: Annotated[str, Text(32)]
    frame_width: Double
    frame_height: Double
    interlace_mode: Annotated[str, Text(32)]
    colorspace: Annotated[str, Text(32)]
    transfer_characteristic: Annotated[str, Text(32)]
    media_type: Annotated[str, Text(32)]
    bit_depth: Double
    grain_rate_denominator: Double
    grain_rate_numerator: Double
    sample_rate_numerator: Double
    source_id: Annotated[str, Text(48)]
    device_id: Annotated[str, Text(96)]


@record
class CONTROL_IS04_ST(Record):
    """One control endpoint of a device (IS-04 v1.2, device.json, "controls")."""

    href: Annotated[str, Text(64)]
    type: Annotated[str, Text(64)]


@record
class DEVICE_IS04_ST(Record):
    """One device (IS-04 v1.2, device.json)."""

    id: Annotated[str, Text(48)]
    version: Annotated[str, Text(48)]
    label: Annotated[str, Text(64)]
    description: Annotated[str, Text(128)]
    receiver_ids_count: Int32
    sender_ids_count: Int32
    controls_count: Int32
    type: Annotated[str, Text(32)]
    node_id: Annotated[str, Text(48)]
    senders: Annotated[Entries[str], Array(Text(48), 6)]
    receivers: Annotated[Entries[str], Array(Text(48), 24)]
    controls: Annotated[Entries[CONTROL_IS04_ST], Array(CONTROL_IS04_ST, 8)]


@record
class SENDER_IS04_ST(Record):
    """One sender (IS-04 v1.2, sender.json)."""

    id: Annotated[str, Text(48)]
    version: Annotated[str, Text(48)]
    label: Annotated[str, Text(64)]
    description: Annotated[str, Text(128)]
    interface_bindings_count: Int32
    subscription_count: Int32
    reserved_before_flow_id: Annotated[bytes, Bytes(16)]
    flow_id: Annotated[str, Text(48)]
    transport: Annotated[str, Text(32)]
    device_id: Annotated[str, Text(48)]
    manifest_href: Annotated[str, Text(128)]
    interface_bindings: Annotated[Entries[str], Array(Text(64), 10)]
    subscription: Annotated[Entries[SUBSCRIPTION_IS04_ST], Array(SUBSCRIPTION_IS04_ST, 9)]
    reserved_at_end: Annotated[bytes, Bytes(51)]


@record
class RECEIVER_IS04_ST(Record):
    """One receiver (IS-04 v1.2, receiver.json)."""

    id: Annotated[str, Text(48)]
    version: Annotated[str, Text(48)]
    label: Annotated[str, Text(64)]
    description: Annotated[str, Text(128)]
    interface_bindings_count: Int32
    subscription_count: Int32
    device_id: Annotated[str, Text(48)]
    transport: Annotated[str, Text(32)]
    interface_bindings: Annotated[Entries[str], Array(Text(64), 10)]
    subscription: Annotated[Entries[SUBSCRIPTION_IS04_ST], Array(SUBSCRIPTION_IS04_ST, 10)]
    media_types_count: Int32
    format: Annotated[str, Text(32)]
    media_types: Annotated[Entries[str], Array(Text(16), 12)]


@record
class NMOS_IS04_ST(Record):
    """The whole IS-04 state of the node."""

    id: Annotated[str, Text(48)]
    version: Annotated[str, Text(48)]
    label: Annotated[str, Text(64)]
    description: Annotated[str, Text(128)]
    href: Annotated[str, Text(64)]
    hostname: Annotated[str, Text(32)]

    versions_count: Int32
    endpoints_count: Int32
    versions: Annotated[Entries[str], Array(Text(16), 16)]
    endpoints: Annotated[Entries[ENDPOINT_IS04_ST], Array(ENDPOINT_IS04_ST, 26)]

    reserved_before_clocks: Int32
    clocks_count: Int32
    clocks: Annotated[Entries[CLOCK_IS04_ST], Array(CLOCK_IS04_ST, 6)]

    interfaces_count: Int32
    interfaces: Annotated[Entries[INTERFACE_IS04_ST], Array(INTERFACE_IS04_ST, 12)]

    sources_count: Int32
    sources: Annotated[Entries[SOURCE_IS04_ST], Array(SOURCE_IS04_ST, 4)]

    reserved_before_flows: Int32
    flows_count: Int32
    flows: Annotated[Entries[FLOW_IS04_ST], Array(FLOW_IS04_ST, 4)]

    devices_count: Int32
    devices: Annotated[Entries[DEVICE_IS04_ST], Array(DEVICE_IS04_ST, 4)]

    senders_count: Int32
    senders: Annotated[Entries[SENDER_IS04_ST], Array(SENDER_IS04_ST, 6)]

    receivers_count: Int32
    receivers: Annotated[Entries[RECEIVER_IS04_ST], Array(RECEIVER_IS04_ST, 24)]

    version_seconds: UInt64
    version_nanoseconds: Int32


require_size(NMOS_IS04_ST, 79864)
