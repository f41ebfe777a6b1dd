// SPDX-License-Identifier: Apache-2.0

#include "conformance/sdp_text.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "records/record_text.h"
#include "text/ascii.h"
#include "text/ipv4_address.h"

namespace nmos_instrument::host {
namespace {

using Lines = std::vector<std::string>;

constexpr std::string_view line_end = "\r\n";

struct Medium
{
    std::size_t leg;
    Lines lines;
};

struct SdpFile
{
    Lines session;
    std::vector<Medium> media;
};

/// The sender that the file describes.
struct Sender
{
    const SdpFacts& facts;
    const Essence essence;
    const CONNECTION_HALF_IS05_ST& active;
};

SdpFile parsed(std::string_view text)
{
    SdpFile file;
    while (!text.empty()) {
        const std::size_t end = text.find(line_end);
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(text.size(), line.size() + line_end.size()));
        if (line.starts_with("m="))
            file.media.push_back({file.media.size(), {}});
        (file.media.empty() ? file.session : file.media.back().lines).emplace_back(line);
    }
    return file;
}

std::string written(const SdpFile& file)
{
    std::string text;
    const auto add = [&](const Lines& lines) {
        for (const std::string& line : lines)
            text.append(line).append(line_end);
    };
    add(file.session);
    for (const Medium& medium : file.media)
        add(medium.lines);
    return text;
}

void drop(Lines& lines, std::string_view beginning)
{
    std::erase_if(lines, [&](const std::string& line) { return line.starts_with(beginning); });
}

/// The legs that are switched on; if none is, all that the sender has.
bool is_described(const CONNECTION_HALF_IS05_ST& active, std::size_t leg)
{
    const auto legs = static_cast<std::size_t>(std::clamp<int>(active.leg_count, 1, leg_count));
    const CONNECTION_LEG_IS05_ST* const first = active.transport_params;
    const bool none_is_on =
        std::none_of(first, first + legs,
                     [](const CONNECTION_LEG_IS05_ST& its) { return its.rtp_enabled != 0; });
    return leg < legs && (none_is_on || first[leg].rtp_enabled != 0);
}

/// IS-05 v1.0, sender_transport_params_rtp: a leg with "rtp_enabled" false sends nothing. A group
/// (RFC 7104 3) needs two media, and "mid" (RFC 5888 4) a group.
void describe_legs_in_use(SdpFile& file, const Sender& sender)
{
    std::erase_if(file.media,
                  [&](const Medium& medium) { return !is_described(sender.active, medium.leg); });
    if (file.media.size() != 1)
        return;
    drop(file.session, "a=group:DUP");
    drop(file.media.front().lines, "a=mid:");
}

/// RFC 4566 5.2: the address of the machine from which the session comes. It is that of the first
/// leg that the file describes.
void name_origin(SdpFile& file, const Sender& sender)
{
    const auto origin =
        std::find_if(file.session.begin(), file.session.end(),
                     [](const std::string& line) { return line.starts_with("o="); });
    if (origin == file.session.end() || file.media.empty())
        return;
    const CONNECTION_LEG_IS05_ST& leg = sender.active.transport_params[file.media.front().leg];
    origin->replace(origin->rfind(' ') + 1, std::string::npos, text_of(leg.source_ip));
}

bool goes_to_one_host(const CONNECTION_LEG_IS05_ST& leg)
{
    const std::optional<std::uint32_t> address =
        ipv4_from_any_form(std::string(text_of(leg.destination_ip)));
    return address && !is_multicast(*address);
}

/// RFC 4566 5.7: only a multicast address has a TTL. RFC 4570 3: a source filter tells which senders'
/// packets to take from a group; here no group is joined.
void describe_unicast(SdpFile& file, const Sender& sender)
{
    for (Medium& medium : file.media) {
        if (!goes_to_one_host(sender.active.transport_params[medium.leg]))
            continue;
        for (std::string& line : medium.lines) {
            if (line.starts_with("c="))
                line.resize(std::min(line.size(), line.find('/')));
        }
        drop(medium.lines, "a=source-filter:");
    }
}

/// SMPTE ST 2110-10 8.2: a sender that follows no common clock names itself by its hardware address,
/// in the form of RFC 7273 4.8.
void name_local_clock(SdpFile& file, const Sender& sender)
{
    constexpr std::string_view reference = "a=ts-refclk:";
    for (Medium& medium : file.media) {
        const std::string& address = sender.facts.local_clocks[medium.leg];
        if (address.empty())
            continue;
        for (std::string& line : medium.lines) {
            if (line.starts_with(reference))
                line = std::string(reference) + "localmac=" + upper_case(address);
        }
    }
}

/// "TP=2110TPN" from "a=fmtp:98 sampling=YCbCr-4:2:2; ... TP=2110TPN; PM=2022-6; "
std::string traffic_profile(std::string_view line)
{
    const std::size_t begin = std::min(line.size(), line.find("TP="));
    return std::string(line.substr(begin, line.find(';', begin) - begin));
}

/// SMPTE ST 2022-6: the encoding name and its clock of 27 MHz. SMPTE ST 2022-8: of the parameters of
/// ST 2110 those of ST 2110-21 remain, the others describe raw video.
void describe_2022_6(SdpFile& file, const Sender& sender)
{
    if (sender.facts.carriage != Carriage::st2022_6 || sender.essence != Essence::video)
        return;
    for (Medium& medium : file.media) {
        for (std::string& line : medium.lines) {
            const std::size_t value = line.find(' ') + 1; // behind the payload type
            if (line.starts_with("a=rtpmap:"))
                line.replace(value, std::string::npos, "SMPTE2022-6/27000000");
            else if (line.starts_with("a=fmtp:"))
                line.replace(value, std::string::npos, traffic_profile(line));
        }
    }
}

using SdpCorrection = void (*)(SdpFile& file, const Sender& sender);

/// In this order: the origin follows from the legs that remain.
constexpr SdpCorrection corrections[] = {describe_legs_in_use, name_origin, describe_unicast,
                                         name_local_clock, describe_2022_6};

} // namespace

SdpFacts sdp_facts(const Configuration& configuration)
{
    SdpFacts facts;
    facts.carriage = configuration.carriage;
    if (configuration.clock.reference == ClockReference::internal) {
        for (std::size_t i = 0; i < leg_count; ++i)
            facts.local_clocks[i] = configuration.interfaces[i].mac;
    }
    return facts;
}

std::string corrected_sdp(const std::string& text, const SdpFacts& facts, Essence essence,
                          const CONNECTION_HALF_IS05_ST& active)
{
    SdpFile file = parsed(text);
    for (const SdpCorrection correct : corrections)
        correct(file, {facts, essence, active});
    return written(file);
}

} // namespace nmos_instrument::host
