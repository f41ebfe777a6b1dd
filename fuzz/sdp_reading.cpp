// SPDX-License-Identifier: Apache-2.0
//
// An SDP file as a controller may send it, read for each kind of receiver. A receiver never joins
// what the file does not name: the lines of every leg are looked for here a second time.

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz_input.h"
#include "sdp/read_sdp.h"

namespace {

using namespace nmos_instrument::host;

std::vector<std::string> lines_of(const std::string& sdp)
{
    std::vector<std::string> lines;
    std::string text = ConnectionApi::convertCRLF(sdp, "\n");
    std::size_t start = 0;
    for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(text.substr(start, end - start));
    lines.push_back(text.substr(start));
    return lines;
}

/// The lines from one that begins with "m=" to the next, or those in front of the first one.
using Section = std::span<const std::string>;

bool is_medium(const std::string& line)
{
    return line.starts_with("m=");
}

Section session_of(const std::vector<std::string>& lines)
{
    return {lines.begin(), std::find_if(lines.begin(), lines.end(), is_medium)};
}

Section medium_at(const std::vector<std::string>& lines, std::size_t first)
{
    const auto begin = lines.begin() + static_cast<std::ptrdiff_t>(first);
    return {begin, std::find_if(begin + 1, lines.end(), is_medium)};
}

/// Whether a line that begins with `start` holds `value` as one of the words behind it.
bool names(Section section, std::string_view start, std::string_view value,
           std::string_view separators)
{
    return std::any_of(section.begin(), section.end(), [&](std::string_view line) {
        if (!line.starts_with(start))
            return false;
        line.remove_prefix(start.size());
        while (true) {
            const std::size_t end = line.find_first_of(separators);
            if (line.substr(0, end) == value)
                return true;
            if (end == std::string_view::npos)
                return false;
            line.remove_prefix(end + 1);
        }
    });
}

/// What the medium says or, if it says nothing, the session.
bool named_for(Section medium, Section session, std::string_view start, std::string_view value,
               std::string_view separators)
{
    const bool own = std::any_of(medium.begin(), medium.end(), [start](const std::string& line) {
        return line.starts_with(start);
    });
    return names(own ? medium : session, start, value, separators);
}

/// The second word of an m= line up to a slash, without leading zeros.
std::string_view port_of(std::string_view line)
{
    line.remove_prefix(std::min(line.find_first_not_of(' ', 2), line.size()));
    line.remove_prefix(std::min(line.find(' '), line.size()));
    line.remove_prefix(std::min(line.find_first_not_of(" 0"), line.size()));
    return line.substr(0, line.find_first_of(" /"));
}

bool says_ssrc_group(Section medium)
{
    return std::any_of(medium.begin(), medium.end(),
                       [](const std::string& line) { return line.starts_with("a=ssrc-group:"); });
}

void check_leg(const SdpLeg& leg, const std::vector<std::string>& lines)
{
    REQUIRE(leg.line >= 1 && leg.line <= lines.size() && is_medium(lines[leg.line - 1]));
    const Section session = session_of(lines);
    const Section medium = medium_at(lines, leg.line - 1);
    REQUIRE(leg.port >= 1 && leg.port <= 65535);
    REQUIRE(port_of(medium.front()) == std::to_string(leg.port));
    REQUIRE(named_for(medium, session, "c=", leg.address, " /"));
    // One of the medium may be for another address; then those of the session count.
    REQUIRE(leg.source.empty() || names(medium, "a=source-filter:", leg.source, " ") ||
            names(session, "a=source-filter:", leg.source, " "));
}

bool is_visible(const std::string& text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char letter) { return letter >= ' ' && letter <= '~'; });
}

void check_findings(const SdpFindings& findings, std::size_t lines)
{
    std::size_t last = 0;
    for (const SdpFinding& finding : findings.shown()) {
        REQUIRE(finding.line >= last && finding.line <= lines);
        REQUIRE(!finding.found.empty());
        REQUIRE(is_visible(finding_text(finding)));
        last = finding.line;
    }
}

void check_legs(const SdpReading& reading, const std::vector<std::string>& lines)
{
    const std::optional<SdpLeg>& first = reading.legs[0];
    const std::optional<SdpLeg>& second = reading.legs[1];
    REQUIRE(reading.taken() == (first || second));
    for (const std::optional<SdpLeg>& leg : reading.legs) {
        if (leg)
            check_leg(*leg, lines);
    }
    // The legs follow the file; one medium is both only if it has two sources or a group of them.
    if (first && second) {
        REQUIRE(first->line <= second->line);
        REQUIRE(first->line < second->line || first->source != second->source ||
                says_ssrc_group(medium_at(lines, first->line - 1)));
    }
}

void check(const std::string& sdp, const SdpReceiver& receiver)
{
    const SdpReading reading = read_sdp(sdp, receiver);
    const std::vector<std::string> lines = lines_of(sdp);
    check_findings(reading.findings, lines.size());
    check_legs(reading, lines);
    const bool is_text = sdp.size() <= 4095 && sdp.find('\0') == std::string::npos;
    REQUIRE(is_text || !reading.taken());
    if (!is_text)
        return;

    // It does not matter how the lines end.
    const SdpReading unified = read_sdp(ConnectionApi::convertCRLF(sdp, "\n"), receiver);
    REQUIRE(unified.legs == reading.legs);
    REQUIRE(unified.findings.shown() == reading.findings.shown());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string sdp = FuzzInput(data, size).rest();
    SdpReceiver receiver;
    for (const char* media_type :
         {"video/raw", "audio/L24", "video/smpte291", "video/SMPTE2022-6"}) {
        receiver.media_types = {media_type};
        receiver.interface_addresses = {"192.0.2.10", std::nullopt};
        check(sdp, receiver);
    }
    return 0;
}
