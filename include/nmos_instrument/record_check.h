// SPDX-License-Identifier: Apache-2.0
//
// Tells a host what is wrong with its records before they reach the network.
//
// The operations of the API classes take every record as it is and never call these checks. A host
// calls them in its tests, or once when it has filled a record.
//
// ```cpp
// std::unique_ptr<NMOS_IS04_ST> node(new NMOS_IS04_ST()); // all zero
// node->clocks_count = 7;
// const std::vector<std::string> findings = nmos_instrument::check_record(*node);
// assert(findings[0] == "id is \"\", it must be a UUID in lower case");
// assert(std::find(findings.begin(), findings.end(),
//                  "clocks_count is 7, at most 6 are allowed") != findings.end());
//
// std::unique_ptr<NMOS_IS05_ST> connections(new NMOS_IS05_ST());
// assert(nmos_instrument::check_record(*connections).empty()); // no slot is in use
// ```
//
// default_records.h shows check_records, which looks at all records of an instrument together.
//
// A finding is one line of visible ASCII: the field's path, its value, the rule. The words of a
// rule may change between versions. Texts are in quotes, bytes other than visible ASCII as \xHH,
// and a text of more than 64 bytes is shortened:
//
//   receivers[4].subscription_count is 12, at most 10 are allowed
//   senders[0].flow_id is "a0a0", it must be a UUID in lower case
//   sources[1].clock_name is "clk7", no clock of the record has this name
//
// The findings are in the order of the record's fields, at most one for a field. What is checked:
// all entries within their count, even where a body shows the first of them only; of each entry the
// members that a body or an SDP file shows for its kind; the settings of all four streams. Nothing
// else is read. No record, whatever its bytes, makes a check read outside of it.
//
// In every text that is checked:
//
//   - there is a NUL within the field;
//   - the bytes are UTF-8, since JSON is (RFC 8259, 8.1) and the bodies carry them as they are.
//
// Words of the rules below:
//
//   UUID      lower case, version 1 to 5, as IS-04 and IS-05 write it
//   time      "<seconds>:<nanoseconds>", digits only, nanoseconds from 0 to 999999999
//   URI       scheme, colon, and visible ASCII without spaces
//   HTTP URL  a URI that begins with "http://" or "https://" and does not end there
//   IPv4      dotted quad, without leading zeros
//   media type
//             two parts of visible ASCII with one slash between, as "video/raw"
//   whole     finite and without fraction, not minus zero

#ifndef NMOS_INSTRUMENT_RECORD_CHECK_H
#define NMOS_INSTRUMENT_RECORD_CHECK_H

#include <string>
#include <vector>

#include "nmos_instrument/codes.h"
#include "nmos_instrument/connection_state.h"
#include "nmos_instrument/export.h"
#include "nmos_instrument/node_state.h"
#include "nmos_instrument/system_parameters.h"

namespace nmos_instrument {

/// What is wrong with the node; empty when nothing is. A cleared record has findings: an empty id
/// is not a UUID.
///
/// A record without findings gives bodies that the schemas of IS-04 v1.2 accept. The rules:
///
/// - every count (`..._count`): 0 to its capacity. At least 1: `endpoints_count`,
///   `subscription_count` of senders and receivers, `media_types_count`; IS-04 demands the members
///   that would be missing otherwise.
/// - every resource: `id` is a UUID that no resource before it has; `version` is a time.
/// - node: `href` is an HTTP URL; `version_nanoseconds` is 0 to 999999999.
/// - `versions`: like "v1.2".
/// - `endpoints`: `host` is IPv4; `port` is whole, 1 to 65535; `protocol` is "http" or "https".
/// - `clocks`: `name` is like "clk0" and no earlier clock has it; `ref_type` is "internal" or
///   "ptp". Only of a PTP clock: `version` is "IEEE1588-2008"; `gmid` is eight lower-case octets,
///   "00-00-5e-ff-fe-00-53-01".
/// - `interfaces`: `chassis_id` is not empty; `port_id` is a MAC address in lower case,
///   "00-00-5e-00-53-01"; `name` is not empty and no earlier interface has it.
/// - `device_id` of a source, flow, sender or receiver: the id of a device of the record.
/// - `sources`: `clock_name` is the name of a clock of the record; `format` is one of the four of
///   IS-04 (urn:x-nmos:format:video, audio, data, mux), audio for source 1 only, since no other
///   gets "channels".
/// - `flows`: `format` is one of the four, video for flow 0 only and audio for flow 1 only, since
///   no others get the members that IS-04 demands; `source_id` is the id of a source of the record;
///   `media_type` is a media type, of a video flow "video/...", of an audio flow "audio/...".
///   Flow 0: `frame_width` and `frame_height`, flow 1: `sample_rate_numerator`, both: `bit_depth`
///   and the grain rate: whole, 1 to 2147483647. Flow 0 with the video format: `interlace_mode`,
///   `colorspace` and `transfer_characteristic` are words of IS-04.
/// - `devices`: `type` is urn:x-nmos:device:generic or :pipeline, or a URI outside of urn:x-nmos:;
///   `node_id` is the node's id; `senders` and `receivers` are ids of senders and receivers of the
///   record; `href` and `type` of `controls` are URIs.
/// - `senders` and `receivers`: `transport` is urn:x-nmos:transport:rtp, :rtp.ucast, :rtp.mcast or
///   :dash, or a URI outside of urn:x-nmos:; `interface_bindings` are names of interfaces of the
///   record; `peer_id` of `subscription` is a UUID or "null".
/// - `senders`: `flow_id` is the id of a flow of the record ("null" is not: the sender body would
///   carry it as a string); `manifest_href` is an HTTP URL.
/// - `receivers`: `format` is one of the four; `media_types` are media types, of a video receiver
///   "video/...", of an audio receiver "audio/...".
NMOS_INSTRUMENT_EXPORT std::vector<std::string> check_record(const NMOS_IS04_ST& record);

/// What is wrong with the connections; empty when nothing is. All 24 receivers that the record
/// declares are checked. A sender or receiver whose halves are both as cleared (`leg_count` and
/// `master_enable` 0; `peer_id`, `mode` and both times empty) is not in use and has no findings, so
/// a cleared record has none. Of every other, both halves are checked:
///
/// - `leg_count`: 1 or 2.
/// - `peer_id`: a UUID or "null".
/// - `mode`: "activate_immediate", "activate_scheduled_absolute", "activate_scheduled_relative" or
///   "null".
/// - `requested_time`, `activation_time`: a time or "null".
/// - of a receiver `transport_file_type`: a media type or "null"; this and
///   `transport_file_data` are both "null" or neither is.
/// - of each leg in use `source_ip`, `destination_ip`, of a receiver `interface_ip` too: IPv4 or
///   "null". "auto" is allowed in a staged half only, since active parameters are resolved: in both
///   addresses of a sender and in `interface_ip` of a receiver.
/// - of each leg in use `destination_port`: whole, 1 to 65535. Of a staged leg of a sender that is
///   in use in the active half only: 0 to 65535, since the active body shows it as "source_port".
/// - of a leg of a sender's active half that is not in use, since the SDP file shows both legs:
///   `source_ip`, `destination_ip`: empty, IPv4 or "null"; `destination_port`: whole, 0 to 65535.
///
/// When a sender is in use, also the texts of its SDP file:
///
/// - `ptp_grandmaster_id`: eight octets in either case, "00-00-5E-FF-FE-00-53-01" (RFC 7273).
/// - `sdp_session_id`, `sdp_session_version`: digits (RFC 4566, 5.2).
NMOS_INSTRUMENT_EXPORT std::vector<std::string> check_record(const NMOS_IS05_ST& record);

/// What is wrong with the settings; empty when nothing is. The codes are the instrument's own, so
/// only these are checked, of all four streams (although the settings document shows stream 1 for
/// each) and of a stream's first audio entry, which is the only one that is read:
///
/// - octets of addresses (`..._addresses`): 0 to 255.
/// - low and high bytes of ports (`..._dst_port`): 0 to 255.
/// - VLAN identifiers (`..._vlan_id`): 0 to 4095.
/// - `sdp_rtp_payload_audio`, `sdp_rtp_payload_anc`, and while `sdp_st2110_mode` is not 0
///   `sdp_rtp_payload_video`: 96 to 127, the dynamic payload types (RFC 3551, 6). A cleared table
///   has findings here: its SDP files would name a static payload type.
NMOS_INSTRUMENT_EXPORT std::vector<std::string> check_record(const st_param_sys& record);

/// What is wrong with the three records of one instrument, alone and beside one another; empty when
/// nothing is. `selection` holds the selectors that the host passes to the operations.
///
/// The findings of check_record for each record come first, with a path that begins with "node.",
/// "connections." or "settings.". What the selectors hide is not looked at: senders and receivers
/// of the node, their ids in its devices, and their connections. So a node with one video and one
/// audio sender leaves the others cleared.
///
/// Then, as far as the node has what is named, and of what is shown only:
///
/// - `node.flows[0]` with the video format: `frame_width`, `frame_height`, the grain rate and
///   whether `interlace_mode` is "progressive" are those of the SDP file, see
///   `settings.sdp_video_system` and `settings.sdp_video_frame_rate`. The rest of the file is fixed
///   and not compared: a flow may be in BT2020.
/// - `connections.ptp_grandmaster_id`, when a sender is in use and the node has PTP clocks: the
///   `gmid` of one of them, in either case.
/// - `node.href`, when it names an IPv4 address: protocol, host and port are those of an endpoint.
/// - `manifest_href` of senders, and `href` of controls whose type is
///   urn:x-nmos:control:sr-ctrl/...: protocol, host and port are those of `node.href` or of an
///   endpoint. A Connection API at another port needs an endpoint of its own; only the first reaches
///   a body.
/// - a sender or receiver of the node: its connection is in use, or its bodies would show texts that
///   are empty.
/// - `leg_count` of both halves: the `interface_bindings_count` of the sender or receiver.
/// - `subscription[0]`: `active` says what `master_enable` of the active half says; `peer_id` is
///   that of the active half while that is enabled, else "null". A sender may say "null" at all
///   times, since IS-04 wants a receiver named only for unicast.
///
/// These may report a field that check_record has reported already. Since 1.0.
NMOS_INSTRUMENT_EXPORT std::vector<std::string> check_records(const NMOS_IS04_ST& node,
                                                              const NMOS_IS05_ST& connections,
                                                              const st_param_sys& settings,
                                                              const Selection& selection);

} // namespace nmos_instrument

#endif
