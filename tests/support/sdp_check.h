// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_SDP_CHECK_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_SDP_CHECK_H

#include <cstdint>
#include <ostream>
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

/// What one line does. Most do the same on both legs, but for bits and fields.
struct LineCase
{
    std::string line;
    std::uint32_t flags_on_leg_0;
    std::uint32_t flags_on_leg_1;
    Fields stored;
    std::string errors;
};

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
                   second ? row.flags_on_leg_1 : row.flags_on_leg_0, stored, row.errors);
    }
}

#endif
