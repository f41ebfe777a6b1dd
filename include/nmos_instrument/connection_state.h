// SPDX-License-Identifier: Apache-2.0
//
// NMOS_IS05_ST: the staged and active connection parameters of all senders and receivers (AMWA
// IS-05 v1.0), and sdp_str: what ConnectionApi::analyze_sdp_file found in an SDP file.
//
// NMOS_IS05_ST is flat like NMOS_IS04_ST (node_state.h): the host clears it, fills it and owns it;
// its layout is the same on every CPU. The library only reads it. With 24 receivers it takes 414 KB:
// keep it in static storage or on the heap, made once. It is too large for the stacks of many
// threads, also as a temporary: clear it by memset, or make it by `new NMOS_IS05_ST()`.
//
// In text fields marked "or null", the text "null" stands for the JSON value null (in a staged
// sender leg for "auto", see ConnectionApi::make_single_senderid_staged). Every other text is a
// JSON string, an empty one too.
//
// ```cpp
// std::unique_ptr<NMOS_IS05_ST> state(new NMOS_IS05_ST()); // all zero; about 400 KB
// CONNECTION_HALF_IS05_ST& staged = state->receivers[0].staged;
// staged.leg_count = 1;
// std::strcpy(staged.peer_id, "null");
// std::strcpy(staged.transport_params[0].destination_ip, "239.0.0.1");
// staged.transport_params[0].destination_port = 5004;
//
// ConnectionApi api;
// const std::string body = api.make_single_receiverid_staged(state.get(), 0);
// assert(body.find("\"sender_id\":null") != std::string::npos);
// assert(body.find("\"multicast_ip\":\"239.0.0.1\"") != std::string::npos);
//
// // A port that JSON cannot hold:
// staged.transport_params[0].destination_port = std::numeric_limits<double>::infinity();
// try {
//     api.make_single_receiverid_staged(state.get(), 0);
//     assert(false);
// } catch (const std::overflow_error&) {
// }
// ```

#ifndef NMOS_INSTRUMENT_CONNECTION_STATE_H
#define NMOS_INSTRUMENT_CONNECTION_STATE_H

#include <stdint.h>
#ifdef __cplusplus
#include <cstddef>
#include <cstdint>
#include <string>
#else
#include <stdalign.h>
#endif

#ifndef __cplusplus
// In C as in C++, the records are named without the word struct.
typedef struct CONNECTION_LEG_IS05_ST CONNECTION_LEG_IS05_ST;
typedef struct CONNECTION_HALF_IS05_ST CONNECTION_HALF_IS05_ST;
typedef struct CONNECTION_IS05_ST CONNECTION_IS05_ST;
typedef struct NMOS_IS05_ST NMOS_IS05_ST;
#endif

/// One transport leg (IS-05 v1.0, one element of "transport_params").
struct CONNECTION_LEG_IS05_ST
{
    /// "source_ip" or null: a sender's own address; a receiver's expected source (source-specific
    /// multicast)
    char source_ip[32];
    /// sender: "destination_ip" or null; receiver: "multicast_ip" or null
    char destination_ip[32];
    char interface_ip[32]; ///< receiver: "interface_ip" or null; not read on a sender
    /// "destination_port": UDP port, an integral value from 0 to 65535; must be finite for the
    /// JSON bodies, the SDP writer prints any value
    alignas(8) double destination_port;
    uint8_t reserved_after_port[120]; ///< not read; keeps the layout
    uint8_t rtp_enabled;              ///< flag, "rtp_enabled"
    uint8_t reserved_at_end[7];       ///< not read; keeps the layout
};

/// One half of a connection: its staged or its active parameters.
struct CONNECTION_HALF_IS05_ST
{
    /// Legs in use: 1, or 2 with redundancy (SMPTE ST 2022-7). Below 1 is none, above 2 is 2.
    int32_t leg_count;
    int32_t reserved_after_leg_count; ///< not read; keeps the layout
    /// sender: "receiver_id" or null; receiver: "sender_id" or null; a UUID
    char peer_id[48];
    uint8_t master_enable;    ///< flag, "master_enable"
    char mode[32];            ///< "activation"."mode" or null, as "activate_immediate"
    char requested_time[48];  ///< "activation"."requested_time" or null, "<seconds>:<nanoseconds>"
    char activation_time[48]; ///< "activation"."activation_time" or null, "<seconds>:<nanoseconds>"
    char transport_file_data[4096]; ///< receiver: "transport_file"."data" or null; SDP text
    char transport_file_type[39]; ///< receiver: "transport_file"."type" or null, "application/sdp"
    CONNECTION_LEG_IS05_ST transport_params[2]; ///< 0 is the primary leg, 1 the secondary
};

/// One sender's or receiver's connection.
struct CONNECTION_IS05_ST
{
    uint8_t reserved_before_staged[4232]; ///< not read; keeps the layout
    CONNECTION_HALF_IS05_ST staged;       ///< what "staged/" answers
    CONNECTION_HALF_IS05_ST active;       ///< what "active/" answers and the SDP file describes
};

/// The whole IS-05 state of the device: 82,928 bytes and 13,800 for each receiver.
struct NMOS_IS05_ST
{
    uint8_t reserved_header[24];   ///< not read; keeps the layout
    CONNECTION_IS05_ST senders[6]; ///< 0 to 3 video, 4 audio, 5 ancillary data
    /// PTP grandmaster identity in the `a=ts-refclk` lines of every SDP file, upper case
    /// "00-00-00-FF-FE-00-00-00"
    char ptp_grandmaster_id[32];
    char sdp_session_id[32];              ///< session id in the `o=` line (RFC 4566 5.2), digits
    char sdp_session_version[32];         ///< session version in the `o=` line, digits
    uint8_t reserved_before_receivers[8]; ///< not read; keeps the layout
    /// 24 for this instrument. The library itself never assumes that number: a host that was built
    /// with another capacity passes its own record of the same layout.
    CONNECTION_IS05_ST receivers[24];
};

/// How many lines of an SDP file ConnectionApi::analyze_sdp_file examines. Since 1.0.
#ifdef __cplusplus
constexpr std::size_t sdp_examined_lines = 100;
#else
enum
{
    sdp_examined_lines = 100
};
#endif

/// Bits of sdp_str::found_flags. Leg 0 is the primary leg, leg 1 the secondary.
enum sdp_found_flag
#ifdef __cplusplus
    : uint32_t
#endif
{
    sdp_found_source_ip_leg0 = 0x1,
    sdp_found_source_ip_leg1 = 0x2,
    sdp_found_multicast_ip_leg0 = 0x4, ///< from a `c=` line only
    sdp_found_multicast_ip_leg1 = 0x8, ///< from a `c=` line only
    /// From an `m=` line, or from the destination address of a `source-filter` line. Intentional:
    /// that address is stored in `multicast_ip`, whose bit says that a `c=` line gave it; look at
    /// the texts to tell the two apart.
    sdp_found_destination_port_leg0 = 0x10,
    sdp_found_destination_port_leg1 = 0x20,
    sdp_found_rtp_payload_type = 0x40,
    sdp_found_sampling_and_depth = 0x80,
    sdp_found_size = 0x100,
    sdp_found_exactframerate = 0x200,
    sdp_found_colorimetry = 0x400,
    sdp_found_packing_mode = 0x800,
    sdp_found_tcs = 0x1000
};

#ifdef __cplusplus // C has nmos_sdp_found instead (nmos_instrument_c.h)

/// What an SDP file said. Filled by ConnectionApi::analyze_sdp_file.
///
/// A field whose bit in `found_flags` stays clear keeps what it held before the call, so use a
/// fresh one for each file: `sdp_str found = sdp_str();`. All values are the texts of the file, not
/// numbers.
struct sdp_str
{
    uint32_t found_flags; ///< bits of sdp_found_flag; set to 0 at the start of every call
    /// Source address of leg 0 and 1: from `o=`, then from `source-filter` (RFC 4570)
    std::string source_ip[2];
    /// Address of leg 0 and 1: from `c=` up to "/", then from `source-filter`
    std::string multicast_ip[2];
    std::string destination_port[2]; ///< port of leg 0 and 1 from `m=`
    /// Payload type from `m=`, `a=rtpmap` or `a=fmtp`. Intentional: it is the rest of that line, of
    /// which the host reads the leading integer.
    std::string rtp_payload_type;
    std::string sampling;       ///< "YCbCr-4:2:2"
    std::string depth;          ///< "10"
    std::string width;          ///< "1920", "1280" or "3840"
    std::string height;         ///< "1080", "720" or "2160"
    std::string exactframerate; ///< "60", "60000/1001", "50"; interlaced "30", "30000/1001", "25"
    uint8_t size_interlaced;    ///< 1 when the size came from a line that says "interlace"
    uint8_t rate_interlaced;    ///< 1 when the frame rate came from a line that says "interlace"
    std::string colorimetry;    ///< "BT709", "BT2020" or "BT2100"
    std::string packing_mode;   ///< "2110GPM", "2110BPM" or "2022-6"
    std::string tcs;            ///< "SDR", "HLG" or "PQ"
};

#endif // __cplusplus

#endif
