// SPDX-License-Identifier: Apache-2.0

#include "connection/sdp_media.h"

#include <algorithm>

#include "text/ascii.h"

namespace nmos_instrument::host {
namespace {

/// Upper and lower case are the same in encoding names (RFC 4855 3).
bool same_name(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return to_lower(x) == to_lower(y); });
}

/// Cuts the text before `separator`, and the separator, off the beginning of `rest`.
std::string_view take(std::string_view& rest, char separator)
{
    const std::size_t end = rest.find(separator);
    const std::string_view taken = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    return taken;
}

/// True for "0", "00" and "0/2", which means two ports starting at 0.
bool is_port_zero(std::string_view port)
{
    const std::string_view number = take(port, '/');
    return !number.empty() && number.find_first_not_of('0') == std::string_view::npos;
}

} // namespace

std::vector<SdpMedium> media_of(const std::vector<std::string_view>& lines)
{
    constexpr std::string_view rtpmap = "a=rtpmap:";
    std::vector<SdpMedium> media;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        std::string_view line = lines[i];
        if (line.starts_with("m=")) {
            line.remove_prefix(2);
            SdpMedium medium;
            medium.kind = take(line, ' ');
            medium.absent = is_port_zero(take(line, ' '));
            medium.first_line = i;
            media.push_back(medium);
        }
        if (media.empty())
            continue;
        media.back().end_line = i + 1;
        if (line.starts_with(rtpmap)) {
            // "96 raw/90000"
            line.remove_prefix(rtpmap.size());
            take(line, ' ');
            media.back().encodings.emplace_back(take(line, '/'));
        }
    }
    return media;
}

bool fits(const SdpMedium& medium, const std::vector<std::string>& media_types)
{
    return std::any_of(media_types.begin(), media_types.end(), [&](std::string_view type) {
        if (!same_name(take(type, '/'), medium.kind))
            return false;
        return medium.encodings.empty() ||
               std::any_of(medium.encodings.begin(), medium.encodings.end(),
                           [&](const std::string& encoding) { return same_name(encoding, type); });
    });
}

} // namespace nmos_instrument::host
