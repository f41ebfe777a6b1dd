// SPDX-License-Identifier: Apache-2.0

#include "connection/read_transport_file.h"

#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <nmos_instrument/nmos_instrument.h>

#include "connection/sdp_media.h"
#include "records/record_text.h"
#include "text/ipv4_address.h"
#include "text/quoted_text.h"
#include "text/word_list.h"

namespace nmos_instrument::host {
namespace {

/// The lines that the parser examines.
std::vector<std::string_view> lines_of(std::string_view text)
{
    std::vector<std::string_view> lines;
    for (std::size_t end;
         lines.size() < sdp_examined_lines && (end = text.find('\n')) != std::string_view::npos;
         text.remove_prefix(end + 1))
        lines.push_back(text.substr(0, end));
    return lines;
}

/// What the parser finds in `text`; nothing, with the reason in `refusal`, if it refuses.
std::optional<sdp_str> analyze(const std::string& text, const ConnectionFacts& receiver,
                               std::string& refusal)
{
    sdp_str found = sdp_str();
    try {
        const int status =
            ConnectionApi().analyze_sdp_file(text, receiver.switch_capable, receiver.current_format,
                                             receiver.switch_allowed, &refusal, &found);
        if (status == 200)
            return found;
    } catch (const std::out_of_range&) {
        refusal += "a line" + std::string(lacks_second_value) + '\n';
    }
    return std::nullopt;
}

/// The file without the parts that the parser would misunderstand:
///
/// - the `o=` line: its address says who made the file, not who sends, so it is not a source
///   filter;
/// - media with port 0, which are not sent. Their "mid:" lines stay, because there the parser goes
///   on to the second leg.
std::string reduced(const std::vector<std::string_view>& lines, const std::vector<SdpMedium>& media)
{
    std::vector<bool> absent(lines.size(), false);
    for (const SdpMedium& medium : media) {
        for (std::size_t i = medium.first_line; medium.absent && i < medium.end_line; ++i)
            absent[i] = true;
    }
    std::string text;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].starts_with("o=") || (absent[i] && !lines[i].starts_with("a=mid:")))
            continue;
        text += lines[i];
        text += '\n';
    }
    return text;
}

/// 0 if `text` is not a port.
int port_of(const std::string& text)
{
    const long port = std::strtol(text.c_str(), nullptr, 10);
    return port >= 1 && port <= 65535 ? static_cast<int>(port) : 0;
}

std::optional<LegPatch> leg_of(const sdp_str& found, std::size_t leg)
{
    const std::optional<std::uint32_t> address = found.multicast_ip[leg].empty()
                                                     ? std::nullopt
                                                     : ipv4_from_any_form(found.multicast_ip[leg]);
    const int port = port_of(found.destination_port[leg]);
    if (!address || port == 0)
        return std::nullopt;

    LegPatch patch;
    patch.rtp_enabled = true;
    patch.destination_port = port;
    patch.destination_ip = is_multicast(*address) ? dotted_quad(*address) : null_text;
    patch.interface_ip = is_multicast(*address) ? auto_text : dotted_quad(*address);
    patch.source_ip = null_text;
    if (!found.source_ip[leg].empty()) {
        if (const auto source = ipv4_from_any_form(found.source_ip[leg]))
            patch.source_ip = dotted_quad(*source);
    }
    return patch;
}

} // namespace

TransportFileReading read_transport_file(const std::string& sdp, const ConnectionFacts& receiver)
{
    TransportFileReading reading;
    std::string text = ConnectionApi::convertCRLF(sdp, "\n");
    // The parser would read a last line without a line break as a number.
    if (!text.ends_with('\n'))
        text += '\n';
    if (!analyze(text, receiver, reading.refusal))
        return reading;

    const std::vector<std::string_view> lines = lines_of(text);
    const std::vector<SdpMedium> media = media_of(lines);
    for (const SdpMedium& medium : media) {
        if (medium.absent || fits(medium, receiver.media_types))
            continue;
        reading.refusal += "line " + std::to_string(medium.first_line + 1) + ": found medium " +
                           in_quotes(medium.kind) + " with encoding " +
                           in_quotes(word_list(medium.encodings)) +
                           ", this receiver takes: " + word_list(receiver.media_types) + '\n';
    }
    if (!reading.refusal.empty())
        return reading;

    const std::optional<sdp_str> found = analyze(reduced(lines, media), receiver, reading.refusal);
    if (!found)
        return reading;
    bool any = false;
    for (std::size_t i = 0; i < leg_count; ++i) {
        if (const std::optional<LegPatch> leg = leg_of(*found, i)) {
            reading.legs[i] = *leg;
            any = true;
        } else {
            reading.legs[i].rtp_enabled = false;
        }
    }
    if (!any)
        reading.refusal = "no leg has both an address (c=) and a port from 1 to 65535 (m=)\n";
    return reading;
}

} // namespace nmos_instrument::host
