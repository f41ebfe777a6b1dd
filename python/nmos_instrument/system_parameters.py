# SPDX-License-Identifier: Apache-2.0
"""The records of system_parameters.h, which says what they are for and what the codes mean."""

import ctypes
from typing import Annotated

from .records import Array, Entries, Int16, Number, Record, record, require_size

__all__ = [
    "st_param_addresses",
    "st_param_masks",
    "st_param_sys",
]

ELEMENT = Number(ctypes.c_int16, -(2**15), 2**15 - 1)


@record
class st_param_masks(Record):
    """Masks of one video, audio or ancillary entry on one leg."""

    src_mask: Int16
    dst_mask: Int16


@record
class st_param_addresses(Record):
    """IPv4 addresses of one video, audio or ancillary entry on one leg"""

    src_ip: Annotated[Entries[int], Array(ELEMENT, 4)]
    dst_ip: Annotated[Entries[int], Array(ELEMENT, 4)]


Streams = Annotated[Entries[int], Array(ELEMENT, 4)]  # an entry for each IP stream
StreamsOfFour = Annotated[Entries[Entries[int]], Array(Array(ELEMENT, 4), 4)]
Masks = Annotated[Entries[st_param_masks], Array(st_param_masks, 4)]
Addresses = Annotated[Entries[st_param_addresses], Array(st_param_addresses, 4)]
AudioMasks = Annotated[Entries[Entries[st_param_masks]], Array(Array(st_param_masks, 4), 4)]
AudioAddresses = Annotated[
    Entries[Entries[st_param_addresses]], Array(Array(st_param_addresses, 4), 4)]


@record
class st_param_sys(Record):
    """The instrument's system settings. `pri_` is the primary network leg, `sec_` the secondary"""

    unread_0: Annotated[Entries[int], Array(ELEMENT, 66)]
    type: Int16
    redundancy: Int16
    unread_68: Annotated[Entries[int], Array(ELEMENT, 2)]

    pri_video_vlan_mask: Streams
    sec_video_vlan_mask: Streams
    pri_video_vlan_id: Streams
    sec_video_vlan_id: Streams
    pri_video_masks: Masks
    sec_video_masks: Masks
    pri_video_addresses: Addresses
    sec_video_addresses: Addresses
    unread_166: Annotated[Entries[int], Array(ELEMENT, 2)]
    pri_video_dst_port: StreamsOfFour
    sec_video_dst_port: Annotated[Entries[int], Array(ELEMENT, 14)]

    pri_audio_vlan_mask: StreamsOfFour
    sec_audio_vlan_mask: StreamsOfFour
    pri_audio_vlan_id: StreamsOfFour
    sec_audio_vlan_id: StreamsOfFour
    pri_audio_masks: AudioMasks
    sec_audio_masks: AudioMasks
    pri_audio_addresses: AudioAddresses
    sec_audio_addresses: AudioAddresses
    unread_582: Annotated[Entries[int], Array(ELEMENT, 2)]
    pri_audio_dst_port: Annotated[Entries[Entries[int]], Array(Array(ELEMENT, 16), 4)]
    sec_audio_dst_port: Annotated[Entries[int], Array(ELEMENT, 62)]

    pri_anc_vlan_mask: Streams
    sec_anc_vlan_mask: Streams
    pri_anc_vlan_id: Streams
    sec_anc_vlan_id: Streams
    pri_anc_masks: Masks
    sec_anc_masks: Masks
    pri_anc_addresses: Addresses
    sec_anc_addresses: Addresses
    unread_806: Annotated[Entries[int], Array(ELEMENT, 2)]
    pri_anc_dst_port: StreamsOfFour
    sec_anc_dst_port: StreamsOfFour
    unread_840: Annotated[Entries[int], Array(ELEMENT, 16)]

    ptp_profile: Int16
    unread_857: Int16
    ptp_domain_num_pri: Int16
    ptp_domain_num_sec: Int16
    ptp_comm_mode: Int16
    ptp_delay_msg_rate: Int16
    unread_862: Int16
    st2110_vfmt_auto_mode: Int16
    unread_864: Int16
    st2110_vfmt_rtp_payload_video: Streams
    st2110_vfmt_rtp_payload_audio: Streams
    st2110_vfmt_rtp_payload_anc: Streams
    st2110_vfmt_system: Streams
    st2110_vfmt_struct: Streams
    st2110_vfmt_frame_rate: Streams
    unread_889: Annotated[Entries[int], Array(ELEMENT, 8)]
    st2110_vfmt_timestamp_read: Streams
    unread_901: Annotated[Entries[int], Array(ELEMENT, 5)]

    sdp_st2110_mode: Int16
    unread_907: Int16
    sdp_video_system: Int16
    unread_909: Int16
    sdp_video_frame_rate: Int16
    unread_911: Annotated[Entries[int], Array(ELEMENT, 20)]
    sdp_audio_ptime: Int16
    unread_932: Annotated[Entries[int], Array(ELEMENT, 2)]
    sdp_rtp_payload_video: Int16
    sdp_rtp_payload_audio: Int16
    sdp_rtp_payload_anc: Int16


require_size(st_param_sys, 1874)
