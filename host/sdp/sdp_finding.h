// SPDX-License-Identifier: Apache-2.0
//
// What is wrong, or worth knowing, about an SDP file that a receiver is offered.

#ifndef NMOS_INSTRUMENT_HOST_SDP_SDP_FINDING_H
#define NMOS_INSTRUMENT_HOST_SDP_SDP_FINDING_H

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nmos_instrument::host {

/// The kinds of findings. Their numbers never change: scripts and people look them up.
enum class SdpCode
{
    // the file
    empty = 1,
    not_text = 2,
    not_utf8 = 3,
    too_large = 4,
    // its lines
    not_a_line = 8,
    empty_line = 9,
    no_version = 10,
    other_version = 11,
    media_line = 12,
    connection_line = 13,
    no_connection = 14,
    group_line = 15,
    repeated_mid = 16,
    attribute = 17,
    wrong_level = 18,
    // which media are the legs
    no_medium = 20,
    several_media = 21,
    several_pairs = 22,
    dup_without_mid = 23,
    dup_pair = 24,
    part_of_picture = 25,
    port_zero = 26,
    media_beside_pair = 27,
    more_than_two = 28,
    inactive = 29,
    // how a leg is received
    address = 30,
    foreign_unicast = 31,
    several_addresses = 32,
    source_filter = 33,
    other_destination = 34,
    excluded_sources = 35,
    several_sources = 36,
    two_sources = 37,
    same_path = 38,
    // what a leg carries
    payload_type = 40,
    unknown_payload_type = 41,
    no_rtpmap = 42,
    clock_rate = 43,
    channels = 44,
    sampling = 45,
    size = 46,
    format_switch = 47,
    frame_rate = 48,
    transfer_characteristic = 49,
    colorimetry = 50,
    packing_mode = 51,
    standard = 52,
    traffic_profile = 53,
    no_format = 54,
    carriage = 55,
    misleading = 56,
    // the legs beside each other
    legs_differ = 60,
    legs_differ_slightly = 61,
};

/// What a code means, the same for every file.
struct SdpRule
{
    SdpCode code;
    bool refuses;                 ///< the file is not taken; otherwise it is a warning
    std::string_view title;       ///< a few words
    std::string_view explanation; ///< why, and what to do; some sentences
};

/// All of them, in the order of their codes.
std::span<const SdpRule> sdp_rules();

const SdpRule& rule_of(SdpCode code);

/// "SDP048"
std::string code_text(SdpCode code);

/// The rule of a text like "SDP048", whatever the case of its letters; nothing if there is none.
const SdpRule* find_sdp_rule(std::string_view code);

struct SdpFinding
{
    SdpCode code;
    std::size_t line;    ///< of the file, from 1; 0: the file as a whole
    std::string found;   ///< visible ASCII, like: frame rate "25/1"
    std::string allowed; ///< empty if nothing can be listed

    bool operator==(const SdpFinding&) const = default;
};

/// "line 9: SDP048: frame rate "25/1", allowed: ..."
std::string finding_text(const SdpFinding& finding);

/// What was found in one file, in the order of its lines.
class SdpFindings
{
public:
    void add(SdpCode code, std::size_t line, std::string found, std::string allowed = "");

    /// Whether one of them refuses the file.
    bool refuse() const { return refuse_; }

    /// The first `limit` of them, which are more than anybody reads.
    const std::vector<SdpFinding>& shown() const { return shown_; }
    std::size_t left_out() const { return left_out_; }

    /// Whether there is one with this code.
    bool has(SdpCode code) const;

    /// By line, each once: both legs may have met the same line of the session.
    void put_in_order();

    static constexpr std::size_t limit = 1000;

private:
    std::vector<SdpFinding> shown_;
    std::size_t left_out_ = 0;
    bool refuse_ = false;
};

} // namespace nmos_instrument::host

#endif
