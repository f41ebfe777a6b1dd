// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_SDP_CHECK_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_SDP_CHECK_H

#include <cstdint>
#include <ostream>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "nmos_instrument/ConnectionApi.h"

/// The instrument that an SDP file is checked for. As it stands it takes every size silently.
struct Instrument
{
    bool switch_capable = true;
    short current_format = 4;
    bool switch_allowed = true;
};

/// A record in which every field holds what no SDP file in the tests says.
inline sdp_str untouched_sdp_str()
{
    sdp_str found = sdp_str();
    found.found_flags = 0xFFFFFFFF;
    for (auto* text :
         {&found.source_ip[0], &found.source_ip[1], &found.multicast_ip[0], &found.multicast_ip[1],
          &found.destination_port[0], &found.destination_port[1], &found.rtp_payload_type,
          &found.sampling, &found.depth, &found.width, &found.height, &found.exactframerate,
          &found.colorimetry, &found.packing_mode, &found.tcs})
        *text = "untouched";
    found.size_interlaced = 77;
    found.rate_interlaced = 77;
    return found;
}

struct Field
{
    std::string name; ///< as in sdp_str; "#" stands for the leg
    std::string text;

    bool operator==(const Field& other) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Field& field)
{
    return out << field.name << " = \"" << field.text << "\"";
}

using Fields = std::vector<Field>;

/// The fields that differ from untouched_sdp_str(), in the order of the record.
inline Fields stored_fields(const sdp_str& found)
{
    Fields stored;
    const auto add_text = [&](const char* name, const std::string& text) {
        if (text != "untouched")
            stored.push_back({name, text});
    };
    const auto add_flag = [&](const char* name, std::uint8_t flag) {
        if (flag != 77)
            stored.push_back({name, std::to_string(flag)});
    };
    add_text("source_ip[0]", found.source_ip[0]);
    add_text("source_ip[1]", found.source_ip[1]);
    add_text("multicast_ip[0]", found.multicast_ip[0]);
    add_text("multicast_ip[1]", found.multicast_ip[1]);
    add_text("destination_port[0]", found.destination_port[0]);
    add_text("destination_port[1]", found.destination_port[1]);
    add_text("rtp_payload_type", found.rtp_payload_type);
    add_text("sampling", found.sampling);
    add_text("depth", found.depth);
    add_text("width", found.width);
    add_text("height", found.height);
    add_text("exactframerate", found.exactframerate);
    add_flag("size_interlaced", found.size_interlaced);
    add_flag("rate_interlaced", found.rate_interlaced);
    add_text("colorimetry", found.colorimetry);
    add_text("packing_mode", found.packing_mode);
    add_text("tcs", found.tcs);
    return stored;
}

/// Checks one file, the outcome, and that nothing but `stored` was written.
inline void expect_sdp(const std::string& sdp, std::uint32_t flags, const Fields& stored,
                       const std::string& errors, const Instrument& instrument = {})
{
    sdp_str found = untouched_sdp_str();
    std::string messages = "left over\n";
    const int status =
        ConnectionApi().analyze_sdp_file(sdp, instrument.switch_capable, instrument.current_format,
                                         instrument.switch_allowed, &messages, &found);
    SCOPED_TRACE("SDP file:\n" + sdp);
    EXPECT_EQ(messages, errors);
    EXPECT_EQ(status, errors.empty() ? 200 : 400);
    EXPECT_EQ(found.found_flags, flags);
    EXPECT_EQ(stored_fields(found), stored);
}

/// The bits of one thing that was found, on leg 0 and on leg 1. Most are the same on both.
struct LegFlags
{
    std::uint32_t leg0 = 0;
    std::uint32_t leg1 = 0;
};

constexpr LegFlags operator|(const LegFlags& one, const LegFlags& other)
{
    return {one.leg0 | other.leg0, one.leg1 | other.leg1};
}

namespace found {

constexpr LegFlags source_ip = {sdp_found_source_ip_leg0, sdp_found_source_ip_leg1};
constexpr LegFlags multicast_ip = {sdp_found_multicast_ip_leg0, sdp_found_multicast_ip_leg1};
constexpr LegFlags port = {sdp_found_destination_port_leg0, sdp_found_destination_port_leg1};
constexpr LegFlags payload_type = {sdp_found_rtp_payload_type, sdp_found_rtp_payload_type};
constexpr LegFlags sampling_and_depth = {sdp_found_sampling_and_depth,
                                         sdp_found_sampling_and_depth};
constexpr LegFlags size = {sdp_found_size, sdp_found_size};
constexpr LegFlags exactframerate = {sdp_found_exactframerate, sdp_found_exactframerate};
constexpr LegFlags colorimetry = {sdp_found_colorimetry, sdp_found_colorimetry};
constexpr LegFlags packing_mode = {sdp_found_packing_mode, sdp_found_packing_mode};
constexpr LegFlags tcs = {sdp_found_tcs, sdp_found_tcs};

} // namespace found

/// What one line does, on either leg.
struct LineCase
{
    std::string line;
    LegFlags found;
    Fields stored;
    std::string errors;
};

inline LineCase taken(const std::string& line, const LegFlags& found, const Fields& stored)
{
    return {line, found, stored, ""};
}

inline LineCase taken_in_part(const std::string& line, const LegFlags& found, const Fields& stored,
                              const std::string& errors)
{
    return {line, found, stored, errors};
}

inline LineCase refused(const std::string& line, const std::string& errors)
{
    return {line, {}, {}, errors};
}

inline LineCase ignored(const std::string& line)
{
    return {line, {}, {}, ""};
}

inline void expect_line(const LineCase& row)
{
    for (const char* leg : {"0", "1"}) {
        const bool second = leg[0] == '1';
        Fields stored = row.stored;
        for (Field& field : stored) {
            const std::size_t at = field.name.find('#');
            if (at != std::string::npos)
                field.name.replace(at, 1, leg);
        }
        // Without a DUP group the first "mid:" line ends leg 0.
        expect_sdp((second ? "a=mid:\n" : "") + row.line + "\n",
                   second ? row.found.leg1 : row.found.leg0, stored, row.errors);
    }
}

inline void expect_lines(std::span<const LineCase> rows)
{
    for (const LineCase& row : rows)
        expect_line(row);
}

#endif
