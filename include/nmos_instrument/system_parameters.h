// SPDX-License-Identifier: Apache-2.0
//
// st_param_sys: the instrument's system settings, a flat table of 937 signed 16-bit elements.
//
// The members lie exactly on the instrument's element numbers (in brackets), so a host may write
// members by name or walk the table by element. Two operations read it: Nmos::make_param_json (the
// members from `type` to `st2110_vfmt_timestamp_read`) and ConnectionApi::make_single_senderid_sdp
// (the members whose names begin with `sdp_`). No value is validated; the meaning of the codes is
// the instrument's own, except where a comment says how the library reads one.
//
// Encodings:
//
//   address   four elements, one octet each, the first number of the dotted text first
//   port      two elements, low byte then high byte: port = low | high << 8
//   [4]       one entry for each of the IP streams 1 to 4; texts show those of stream 1 only
//   [4][4]    masks and addresses of audio: stream, then audio entry; only audio entry 0 is read
//
// Ports have a stride of 4 elements a stream (audio: 16), of which the first two are read. The
// secondary video and audio port tables are shorter than four strides, since the next section
// begins inside the last one; they are flat arrays: stream s (0 to 3) has its port at [s * 4]
// (audio: [s * 16]) and the element after it.
//
// ```cpp
// st_param_sys settings = st_param_sys(); // all zero
// settings.redundancy = 1;
// settings.pri_video_dst_port[0][0] = 5004 & 0xFF; // low byte
// settings.pri_video_dst_port[0][1] = 5004 >> 8;   // high byte
//
// // The same table by element number:
// std::int16_t element = 0;
// std::memcpy(&element, reinterpret_cast<const char*>(&settings) + 67 * sizeof element,
//             sizeof element);
// assert(element == 1);
//
// const std::string document = Nmos().make_param_json(&settings, 0);
// assert(document.find("\"redundancy\":1,") != std::string::npos);
// assert(document.find("\"pri_video_dst_port\":5004,") != std::string::npos);
//
// // A byte out of range is shown as it is; check_record reports it.
// settings.pri_video_dst_port[0][1] = -1;
// assert(nmos_instrument::check_record(settings)[0] ==
//        "pri_video_dst_port[0][1] is -1, it must be a whole number from 0 to 255");
// ```

#ifndef NMOS_INSTRUMENT_SYSTEM_PARAMETERS_H
#define NMOS_INSTRUMENT_SYSTEM_PARAMETERS_H

#include <stdint.h>
#ifdef __cplusplus
#include <cstdint>
#endif

#ifndef __cplusplus
// In C as in C++, the records are named without the word struct.
typedef struct st_param_masks st_param_masks;
typedef struct st_param_addresses st_param_addresses;
typedef struct st_param_sys st_param_sys;
#endif

/// Masks of one video, audio or ancillary entry on one leg.
struct st_param_masks
{
    int16_t src_mask; ///< source address mask, as "pri_video_src_mask"
    int16_t dst_mask; ///< destination address mask, as "pri_video_dst_mask"
};

/// IPv4 addresses of one video, audio or ancillary entry on one leg; octets from 0 to 255.
struct st_param_addresses
{
    int16_t src_ip[4]; ///< source address, as "pri_video_src_ip"
    int16_t dst_ip[4]; ///< destination address, as "pri_video_dst_ip"
};

/// The instrument's system settings. `pri_` is the primary network leg, `sec_` the secondary;
/// `anc` is ancillary data. Members named `unread_N` begin at element N and are never read.
struct st_param_sys
{
    int16_t unread_0[66];
    int16_t type;       ///< [66] instrument type code, "type"
    int16_t redundancy; ///< [67] redundancy setting of the legs, "redundancy"
    int16_t unread_68[2];

    int16_t pri_video_vlan_mask[4];            ///< [70]
    int16_t sec_video_vlan_mask[4];            ///< [74]
    int16_t pri_video_vlan_id[4];              ///< [78] VLAN identifier, 0 to 4095
    int16_t sec_video_vlan_id[4];              ///< [82]
    st_param_masks pri_video_masks[4];         ///< [86]
    st_param_masks sec_video_masks[4];         ///< [94]
    st_param_addresses pri_video_addresses[4]; ///< [102]
    st_param_addresses sec_video_addresses[4]; ///< [134]
    int16_t unread_166[2];
    int16_t pri_video_dst_port[4][4]; ///< [168] low byte, high byte, two unread
    int16_t sec_video_dst_port[14];   ///< [184] stream s at [s * 4]: low byte, high byte

    int16_t pri_audio_vlan_mask[4][4];            ///< [198]
    int16_t sec_audio_vlan_mask[4][4];            ///< [214]
    int16_t pri_audio_vlan_id[4][4];              ///< [230]
    int16_t sec_audio_vlan_id[4][4];              ///< [246]
    st_param_masks pri_audio_masks[4][4];         ///< [262]
    st_param_masks sec_audio_masks[4][4];         ///< [294]
    st_param_addresses pri_audio_addresses[4][4]; ///< [326]
    st_param_addresses sec_audio_addresses[4][4]; ///< [454]
    int16_t unread_582[2];
    int16_t pri_audio_dst_port[4][16]; ///< [584] low byte, high byte, fourteen unread
    int16_t sec_audio_dst_port[62];    ///< [648] stream s at [s * 16]: low byte, high byte

    int16_t pri_anc_vlan_mask[4];            ///< [710]
    int16_t sec_anc_vlan_mask[4];            ///< [714]
    int16_t pri_anc_vlan_id[4];              ///< [718]
    int16_t sec_anc_vlan_id[4];              ///< [722]
    st_param_masks pri_anc_masks[4];         ///< [726]
    st_param_masks sec_anc_masks[4];         ///< [734]
    st_param_addresses pri_anc_addresses[4]; ///< [742]
    st_param_addresses sec_anc_addresses[4]; ///< [774]
    int16_t unread_806[2];
    int16_t pri_anc_dst_port[4][4]; ///< [808] low byte, high byte, two unread
    int16_t sec_anc_dst_port[4][4]; ///< [824] low byte, high byte, two unread
    int16_t unread_840[16];

    int16_t ptp_profile; ///< [856] PTP (IEEE 1588) profile code
    int16_t unread_857;
    int16_t ptp_domain_num_pri; ///< [858] PTP domain number of the primary leg
    int16_t ptp_domain_num_sec; ///< [859] PTP domain number of the secondary leg
    int16_t ptp_comm_mode;      ///< [860] PTP communication mode code
    int16_t ptp_delay_msg_rate; ///< [861] PTP delay request message rate code
    int16_t unread_862;
    int16_t st2110_vfmt_auto_mode; ///< [863] automatic detection of the video format
    int16_t unread_864;
    int16_t st2110_vfmt_rtp_payload_video[4]; ///< [865] video RTP payload type
    int16_t st2110_vfmt_rtp_payload_audio[4]; ///< [869] audio RTP payload type
    int16_t st2110_vfmt_rtp_payload_anc[4];   ///< [873] ancillary RTP payload type
    int16_t st2110_vfmt_system[4];            ///< [877] video system code
    int16_t st2110_vfmt_struct[4];            ///< [881] picture structure code
    int16_t st2110_vfmt_frame_rate[4];        ///< [885] frame-rate code
    int16_t unread_889[8];
    int16_t st2110_vfmt_timestamp_read[4]; ///< [897] timestamp-read setting
    int16_t unread_901[5];

    /// [906] 0 is SMPTE ST 2022-6 carriage, any other value SMPTE ST 2110
    int16_t sdp_st2110_mode;
    int16_t unread_907;
    /// [908] video system in the SDP file: 0 and 1 are 3840x2160, 4 is 1280x720, any other value
    /// is 1920x1080
    int16_t sdp_video_system;
    int16_t unread_909;
    /// [910] frame rate in the SDP file: 1 is 60000/1001, 2 is 50; interlaced 10 is 30, 11 is
    /// 30000/1001, 12 is 25; any other value is 60
    int16_t sdp_video_frame_rate;
    int16_t unread_911[20];
    /// [931] packet time of audio in the SDP file: 0 is 8 ms, 2 is 0.125 ms, any other value is
    /// 1 ms. Intentional: no level of SMPTE ST 2110-30 has 8 ms, but the instrument's code 0 has
    int16_t sdp_audio_ptime;
    int16_t unread_932[2];
    /// [934] video RTP payload type in the SDP file, 96 to 127; read while sdp_st2110_mode is not 0
    int16_t sdp_rtp_payload_video;
    int16_t sdp_rtp_payload_audio; ///< [935] audio RTP payload type in the SDP file, 96 to 127
    int16_t sdp_rtp_payload_anc;   ///< [936] ancillary RTP payload type in the SDP file, 96 to 127
};

#endif
