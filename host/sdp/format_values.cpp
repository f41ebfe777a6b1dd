// SPDX-License-Identifier: Apache-2.0

#include "sdp/format_values.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace nmos_instrument::host {
namespace {

/// The leading integer of a text, as strtol reads it; empty if there is none.
std::string leading_number(std::string_view text)
{
    std::size_t begin = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
    std::size_t digits = begin;
    if (digits < text.size() && (text[digits] == '-' || text[digits] == '+'))
        ++digits;
    const std::size_t end = std::min(text.find_first_not_of("0123456789", digits), text.size());
    if (end == digits)
        return "";
    if (text[begin] == '+')
        ++begin;
    return std::string(text.substr(begin, end - begin));
}

std::string with_scan(const std::string& text, bool interlaced)
{
    return text.empty() || !interlaced ? text : text + " interlaced";
}

} // namespace

std::vector<FormatValue> format_values(const sdp_str& found)
{
    const std::string size = found.width.empty() ? "" : found.width + 'x' + found.height;
    return {
        {"payload_type", "payload type", leading_number(found.rtp_payload_type)},
        {"sampling", "sampling", found.sampling},
        {"depth", "depth", found.depth},
        {"size", "size", with_scan(size, found.size_interlaced != 0)},
        {"frame_rate", "frame rate", with_scan(found.exactframerate, found.rate_interlaced != 0)},
        {"colorimetry", "colorimetry", found.colorimetry},
        {"transfer_characteristic", "TCS", found.tcs},
        {"packing_mode", "packing mode", found.packing_mode},
    };
}

} // namespace nmos_instrument::host
