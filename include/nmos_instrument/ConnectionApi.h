// SPDX-License-Identifier: Apache-2.0
//
// ConnectionApi: the bodies of the IS-05 v1.0 Connection API, and SDP files written and checked.
//
// nmos_instrument.h says what holds for all operations. None writes into its records. The JSON
// bodies escape slashes ("\/").
//
// ```cpp
// ConnectionApi api;
// std::string errors;
// sdp_str found = sdp_str(); // a fresh one for each file
//
// // The instrument can switch between 2K and 4K, is in format 3, may not switch.
// int status = api.analyze_sdp_file("c=IN IP4 239.0.0.1/64\r\n"
//                                   "m=video 5004 RTP/AVP 96\r\n",
//                                   true, 3, false, &errors, &found);
// assert(status == 200 && errors.empty());
// assert(found.multicast_ip[0] == "239.0.0.1" && found.destination_port[0] == "5004");
// assert((found.found_flags & sdp_found_multicast_ip_leg0) != 0);
//
// // A refused file: the message names the value; what was accepted is stored all the same.
// found = sdp_str();
// status = api.analyze_sdp_file("m=video 65536 RTP/AVP 97\r\n", true, 3, false, &errors, &found);
// assert(status == 400);
// assert(errors == "Destination Port 65536 is range over.\n");
// assert(found.found_flags == sdp_found_rtp_payload_type && found.rtp_payload_type == "97");
// ```

#ifndef NMOS_INSTRUMENT_CONNECTIONAPI_H
#define NMOS_INSTRUMENT_CONNECTIONAPI_H

#include <string>

#include "nmos_instrument/connection_state.h"
#include "nmos_instrument/export.h"
#include "nmos_instrument/node_state.h"
#include "nmos_instrument/system_parameters.h"

class NMOS_INSTRUMENT_EXPORT ConnectionApi
{
public:
    ConnectionApi();
    ~ConnectionApi();

    /// Does nothing.
    void init();

    /// @name Root listings
    /// Fixed texts, four-space indent, each ends with a line feed. `state` is not read and may be
    /// null. The two bulk listings are empty arrays: bulk offers nothing to read.
    /// @{
    std::string make_version();                              ///< "v1.0/"
    std::string make_base(NMOS_IS05_ST* state);              ///< "bulk/", "single/"
    std::string make_bulk(NMOS_IS05_ST* state);              ///< "senders/", "receivers/"
    std::string make_bulk_senders(NMOS_IS05_ST* state);      ///< empty
    std::string make_bulk_receivers(NMOS_IS05_ST* state);    ///< empty
    std::string make_single(NMOS_IS05_ST* state);            ///< "senders/", "receivers/"
    std::string make_single_senderid(NMOS_IS05_ST* state);   ///< "constraints/" to "transportfile/"
    std::string make_single_receiverid(NMOS_IS05_ST* state); ///< "constraints/" to "active/"
    /// @}

    /// Listing of "single/senders/": the ids of `senders_count` senders of `node`, one a line.
    /// `all` is the selector all_senders of NodeApi.h. Ids are copied as they are, nothing is
    /// escaped.
    ///
    /// A line ends with a comma when its index is below the count minus one. Intentional: when the
    /// last entries are hidden, the last line keeps its comma and the text is not JSON. A host that
    /// serves it removes that comma.
    std::string make_single_senders(NMOS_IS04_ST* node, bool all);

    /// Listing of "single/receivers/": the ids of `receivers_count` receivers of `node`, one a
    /// line. `restricted` is the selector receiver_filter of NodeApi.h, `audio_mode` its
    /// audio_group_filter. Commas as in make_single_senders.
    std::string make_single_receivers(NMOS_IS04_ST* node, int restricted, int audio_mode);

    /// Body of "single/senders/{id}/constraints": source_ip of each leg may only be `*leg1_source`
    /// and `*leg2_source`, everything else is free. The two texts are copied as they are, nothing
    /// is escaped. Intentional: the indentation is irregular; compare the JSON value, not the text.
    /// `state` and `index` are not read.
    std::string make_single_senderid_constraints(NMOS_IS05_ST* state, int index,
                                                 std::string* leg1_source,
                                                 std::string* leg2_source);

    /// Body of "single/receivers/{id}/constraints": interface_ip of each leg may only be
    /// `*leg1_interface` and `*leg2_interface`, or "auto"; everything else is free. Otherwise as
    /// make_single_senderid_constraints.
    std::string make_single_receiverid_constraints(NMOS_IS05_ST* state, int index,
                                                   std::string* leg1_interface,
                                                   std::string* leg2_interface);

    /// Body of "single/receivers/{id}/staged" (IS-05 v1.0, v1.0-receiver-stage-schema.json) from
    /// `receivers[index].staged`.
    ///
    /// The index must be one that the host's record holds: how many receivers follow is decided by
    /// the host's build, so the library cannot check it. Only a negative one throws
    /// std::out_of_range. Throws std::overflow_error when the port of a leg in use is NaN or
    /// infinite.
    std::string make_single_receiverid_staged(NMOS_IS05_ST* state, int index);

    /// Body of "single/receivers/{id}/active", from `receivers[index].active`; otherwise as
    /// make_single_receiverid_staged.
    std::string make_single_receiverid_active(NMOS_IS05_ST* state, int index);

    /// Body of "single/senders/{id}/staged" (IS-05 v1.0, v1.0-sender-stage-schema.json) from
    /// `senders[index].staged`, index 0 to 5.
    ///
    /// Intentional: an address that holds "null" is "auto", which only a staged body may say (the
    /// active body has null); "source_port" repeats the destination port, since the record holds no
    /// source port. Throws std::out_of_range, std::overflow_error.
    std::string make_single_senderid_staged(NMOS_IS05_ST* state, int index);

    /// Body of "single/senders/{id}/active" from `senders[index].active`, index 0 to 5.
    ///
    /// Intentional: "source_port" is the STAGED destination port of the same leg, so that both
    /// bodies show the same port. Throws std::out_of_range, std::overflow_error (for the staged
    /// port too).
    std::string make_single_senderid_active(NMOS_IS05_ST* state, int index);

    /// SDP file of sender `index`, 0 to 5 (RFC 4566; SMPTE ST 2110-20, -30, -40; RFC 7104 for the
    /// DUP group, RFC 4570 for the source filter, RFC 7273 for the clock), from the sender's active
    /// half and the `sdp_` members of `sys`. Every line ends with CR LF.
    ///
    /// Intentional: much does not depend on the records, so a receiver always sees the same form.
    /// "o=HALDEN" and "s=QX3100 OPT21/22" name the instrument; a host that needs other names replaces
    /// them in the text.
    /// There are two legs (the second is what leg 1 of the record holds, even if `leg_count` is
    /// 1); `master_enable` does not matter; the PTP domain is 127 and the TTL 64; video is
    /// YCbCr-4:2:2, 10 bit, BT709, SDR, narrow sender. In the first leg rtpmap precedes fmtp, in
    /// the second it follows; the video fmtp line ends with a space.
    /// Addresses and ids are copied as they are. Ports are rounded and print like "%.0f"; NaN and
    /// infinity print as such and do not throw.
    ///
    /// Throws std::out_of_range.
    std::string make_single_senderid_sdp(NMOS_IS05_ST* state, int index, const st_param_sys* sys);

    /// Checks an SDP file that a controller sent to a receiver. Returns the HTTP status: 200, or
    /// 400 when there is a problem.
    ///
    /// - sdp: the file. Only its first `sdp_examined_lines` lines are examined. It must end with a
    ///   line break: what follows the last one is ignored.
    /// - switch_capable: the instrument can switch between 2K and 4K formats.
    /// - current_format: the instrument's video format code. In 9 and 10, 2160 lines are its own
    ///   size and 720 and 1080 would be a switch; 0, 1, 2, 7 and 8 never take 2160 lines; in all
    ///   other formats 720 and 1080 are its own and 2160 would be a switch.
    /// - switch_allowed: its settings permit such a switch.
    /// - errors: cleared, then receives one line for each problem, in the order found. Required.
    /// - out: its `found_flags` is cleared, then accepted values are stored. Required. Values are
    ///   stored although there are problems: look at the status first.
    ///
    /// It is a line-oriented scanner, not an SDP grammar: a key counts anywhere in a line.
    /// After a line with "mid:" and the first name of the DUP group, everything belongs to leg 1.
    /// An address is valid when inet_aton takes it (short, octal and hexadecimal forms too).
    /// Numbers are read like strtol, base 10.
    ///
    /// A message of 256 bytes or more becomes its first 254 bytes and the line break.
    ///
    /// Throws std::out_of_range with a text that begins with "basic_string::substr" when a
    /// `group:DUP` line holds one name only, or a `source-filter` line one address only; `errors`
    /// holds the messages so far and `out` the values so far.
    int analyze_sdp_file(std::string sdp, bool switch_capable, short current_format,
                         bool switch_allowed, std::string* errors, sdp_str* out);

    /// Copy of `text` in which every line break (CR LF, LF CR, lone CR, lone LF) is one `newline`.
    /// Breaks in a row are taken greedily from the left: LF CR LF is two.
    static std::string convertCRLF(std::string text, std::string newline);

    /// Cuts `text` at each `delimiter` into `parts`, which holds `max_parts` entries. Always
    /// returns 0.
    ///
    /// `*count` becomes the number of pieces that a delimiter ended, at most `max_parts`; 0 when
    /// `max_parts` is 0 or less. Nothing is ever written past the table. An empty delimiter ends
    /// no piece.
    ///
    /// What follows the last delimiter is not stored as text: the entry after the last piece, if
    /// the table has one, receives its leading integer in decimal (saturating at 32 bits; "0" when
    /// there is none). Intentional: a text that ends with a delimiter leaves a defined entry, "0".
    static int split_string(std::string text, std::string delimiter, std::string* parts,
                            int max_parts, int* count);

    /// Path of an HTTP request line: from its first "/" to its end, less the 9 characters of
    /// " HTTP/1.1". Fewer than nine characters from the slash on give an empty text. Throws
    /// std::out_of_range when there is no "/".
    static std::string make_fullpath_from_request(std::string& request_line);
};

#endif
