// SPDX-License-Identifier: Apache-2.0
//
// ConnectionApi: the bodies of the IS-05 v1.0 Connection API, and SDP files written and checked.
//
// What holds for all operations (JSON text, bounded fields and counts, exceptions, threads) stands
// in nmos_instrument.h. No operation writes into its records; the JSON bodies escape slashes
// ("\/").

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
    /// Fixed texts, four-blank indent, each ends with a line feed. `state` is not read and may be
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
    /// `all` false hides senders 1, 2 and 3. Texts are inserted as they are, nothing is escaped.
    ///
    /// A line ends with a comma when its index is below the count minus one, whether or not a later
    /// entry is listed. So when the last entries are hidden the last line keeps its comma, and the
    /// text is not JSON: it is meant so, and a host that serves it removes that comma.
    std::string make_single_senders(NMOS_IS04_ST* node, bool all);

    /// Listing of "single/receivers/": the ids of `receivers_count` receivers of `node`, one a
    /// line. `restricted` not 0 hides receivers 4 to 23. Else `audio_mode` 0 lists of receivers 4
    /// to 19 those of group G1 (index divisible by 4), 1 those of G1 and G2, any other value all.
    /// The comma is kept as in make_single_senders.
    std::string make_single_receivers(NMOS_IS04_ST* node, int restricted, int audio_mode);

    /// Body of "single/senders/{id}/constraints": source_ip of each leg may only be `*leg1_source`
    /// and `*leg2_source`, everything else is free. Fixed text with irregular indentation (meant
    /// so); the two texts are inserted as they are, nothing is escaped. `state` and `index` are not
    /// read.
    std::string make_single_senderid_constraints(NMOS_IS05_ST* state, int index,
                                                 std::string* leg1_source,
                                                 std::string* leg2_source);

    /// Body of "single/receivers/{id}/constraints": interface_ip of each leg may only be
    /// `*leg1_interface` and `*leg2_interface`, or "auto"; everything else is free. As
    /// make_single_senderid_constraints in all else.
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
    /// An address that holds "null" is written as "auto", where the active body has null; and
    /// "source_port" repeats the destination port, since the record holds no source port. Both are
    /// meant so. Throws std::out_of_range, std::overflow_error.
    std::string make_single_senderid_staged(NMOS_IS05_ST* state, int index);

    /// Body of "single/senders/{id}/active" from `senders[index].active`, index 0 to 5.
    ///
    /// "source_port" is the STAGED destination port of the same leg, also while the active one
    /// differs: meant so. Throws std::out_of_range, std::overflow_error (the staged port counts).
    std::string make_single_senderid_active(NMOS_IS05_ST* state, int index);

    /// SDP file of sender `index`, 0 to 5 (RFC 4566; SMPTE ST 2110-20, -30, -40; RFC 7104 for the
    /// DUP group, RFC 4570 for the source filter, RFC 7273 for the clock), from the sender's active
    /// half and the `sdp_` members of `sys`. Every line ends with CR LF.
    ///
    /// Meant so, whatever the records say: there are always two legs, also when `leg_count` is 1
    /// (the second from what leg 1 of the record holds); `master_enable` does not matter; the PTP
    /// domain is 127 and the TTL 64; video is YCbCr-4:2:2, 10 bit, BT709, SDR, narrow sender; in
    /// leg 1 the rtpmap line precedes the fmtp line, in leg 2 it follows; the video fmtp line ends
    /// with a blank. Addresses and ids are inserted as they are. Ports print like "%.0f", rounded to
    /// an integral value; NaN and infinity print as such and do not throw.
    ///
    /// Throws std::out_of_range.
    std::string make_single_senderid_sdp(NMOS_IS05_ST* state, int index, const st_param_sys* sys);

    /// Checks an SDP file that a controller sent to a receiver. Returns the HTTP status: 200 when
    /// there is nothing to say against it, else 400.
    ///
    /// - sdp: the file. Only its first 100 lines are examined. Let it end with a line break: what
    ///   stands behind the last line break is not examined as a line but replaced by its leading
    ///   integer (see split_string).
    /// - switch_capable: the instrument can switch between 2K and 4K formats.
    /// - current_format: the instrument's video format code; 9 and 10 are one class, 0, 1, 2, 7 and
    ///   8 another, all other values the third.
    /// - switch_allowed: its settings permit such a switch.
    /// - errors: cleared, then receives one line per problem, in the order found. Required.
    /// - out: its `found_flags` is cleared, then accepted values are stored. Required. A problem
    ///   does not keep other values from being stored: look at the status first.
    ///
    /// It is a line-oriented scanner, not an SDP grammar: a key counts wherever it stands in a
    /// line. A line with "mid:" and the first name of the DUP group makes leg 1 the current one for
    /// all that follows. A valid address is what inet_aton takes (short, octal and hexadecimal
    /// forms too). Numbers are read like strtol, base 10.
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
    /// `*count` is set to the number of pieces that a delimiter ended, at most `max_parts`. What
    /// follows the last delimiter is not stored as text: the entry after the last piece, if the
    /// table has one, receives its leading integer in decimal (base 10, saturating at 32 bits, "0"
    /// when there is none). It is meant so. Nothing is ever written behind the table; with
    /// `max_parts` 0 or less nothing is written at all, and an empty delimiter ends no piece.
    static int split_string(std::string text, std::string delimiter, std::string* parts,
                            int max_parts, int* count);

    /// Path of an HTTP request line: from its first "/" to its end less 9 characters, the length of
    /// " HTTP/1.1". Fewer than nine characters from the slash on give an empty text. Throws
    /// std::out_of_range when there is no "/".
    static std::string make_fullpath_from_request(std::string& request_line);
};

#endif
