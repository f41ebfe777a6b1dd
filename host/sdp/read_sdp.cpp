// SPDX-License-Identifier: Apache-2.0

#include "sdp/read_sdp.h"

#include <algorithm>
#include <string_view>

#include "sdp/check_formats.h"
#include "sdp/normal_sdp.h"
#include "sdp/sdp_description.h"
#include "sdp/select_media.h"
#include "text/quoted_text.h"
#include "text/utf8.h"

namespace nmos_instrument::host {
namespace {

bool is_utf16(const std::string& sdp)
{
    return sdp.starts_with("\xff\xfe") || sdp.starts_with("\xfe\xff") ||
           sdp.starts_with(std::string("v\0=\0", 4)) || sdp.starts_with(std::string("\0v\0=", 4));
}

/// Whether the bytes are worth reading as text.
bool check_bytes(const std::string& sdp, SdpFindings& findings)
{
    constexpr std::size_t room = sizeof CONNECTION_HALF_IS05_ST::transport_file_data - 1;
    if (sdp.size() > room)
        findings.add(SdpCode::too_large, 0, std::to_string(sdp.size()) + " bytes",
                     "at most " + std::to_string(room));
    // What is far too large is not looked at: a request may hold it, and others wait meanwhile.
    constexpr std::size_t worth_reading = std::size_t{64} << 10;
    if (sdp.size() > worth_reading)
        return false;
    if (is_utf16(sdp)) {
        findings.add(SdpCode::not_text, 1, "text in UTF-16", "UTF-8");
        return false;
    }
    if (const std::size_t nul = sdp.find('\0'); nul != std::string::npos) {
        const std::string before = ConnectionApi::convertCRLF(sdp.substr(0, nul), "\n");
        const auto line = std::count(before.begin(), before.end(), '\n') + 1;
        findings.add(SdpCode::not_text, static_cast<std::size_t>(line),
                     "byte " + std::to_string(nul + 1) + " of the file is NUL", "text in UTF-8");
        return false;
    }
    return true;
}

/// Names the first line that is not UTF-8.
void check_utf8(std::string_view text, SdpFindings& findings)
{
    for (std::size_t line = 1; !text.empty(); ++line) {
        const std::size_t end = std::min(text.find('\n'), text.size() - 1);
        const std::string_view bytes = text.substr(0, end);
        if (!is_utf8(std::string(text.substr(0, end + 1)))) {
            findings.add(SdpCode::not_utf8, line, in_quotes(bytes), "text in UTF-8");
            return;
        }
        text.remove_prefix(end + 1);
    }
}

void read_legs(const SdpDescription& description, const SdpReceiver& receiver, SdpReading& reading)
{
    SelectedMedia selected = select_media(description, receiver.media_types, reading.findings);
    const LegMedia& media = selected.legs;
    if (!media[0] && !media[1])
        return;
    const SdpLegs legs =
        leg_paths(description.session, selected, receiver.interface_addresses, reading.findings);
    check_formats(media, receiver.media_types, reading.findings);
    ask_library(normal_sdp(media, legs), legs, receiver, reading.findings, reading.format);
    reading.legs = legs;
}

} // namespace

SdpReading read_sdp(const std::string& sdp, const SdpReceiver& receiver)
{
    SdpReading reading;
    if (!check_bytes(sdp, reading.findings))
        return reading;
    const std::string text = ConnectionApi::convertCRLF(sdp, "\n");
    check_utf8(text, reading.findings);
    const SdpDescription description = parse_sdp_description(text, reading.findings);
    reading.origin = description.origin;
    if (!reading.findings.has(SdpCode::empty))
        read_legs(description, receiver, reading);
    if (!reading.taken())
        reading.legs = {};
    reading.findings.put_in_order();
    return reading;
}

} // namespace nmos_instrument::host
