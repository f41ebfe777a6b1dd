// SPDX-License-Identifier: Apache-2.0

#include "sdp/normal_sdp.h"

#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "text/ascii.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

void add_path(const LegMedium& medium, const SdpLeg& leg, std::vector<NormalLine>& lines)
{
    lines.push_back({"m=" + lower_case(std::string(medium.medium->kind)) + ' ' +
                         std::to_string(leg.port) + " RTP/AVP " +
                         std::string(medium.format.payload_type),
                     leg.line, false});
    lines.push_back({"c=IN IP4 " + leg.address, leg.line, false});
    if (!leg.source.empty())
        lines.push_back(
            {"a=source-filter: incl IN IP4 " + leg.address + ' ' + leg.source, leg.line, false});
}

void add_format(const LegMedium& medium, std::vector<NormalLine>& lines)
{
    for (const SdpAttribute& attribute : medium.medium->attributes) {
        if (attribute.line == medium.format.rtpmap_line)
            lines.push_back({"a=rtpmap:" + std::string(attribute.value), attribute.line, true});
    }
    for (const SdpAttribute* const fmtp : medium.format.fmtp)
        lines.push_back({"a=fmtp:" + std::string(fmtp->value), fmtp->line, true});
}

/// A message of the library's parser about a format parameter, and what it means to people.
struct ParameterMessage
{
    std::string_view beginning;
    SdpCode code;
    std::string_view keys[2]; ///< the parameters that it is about; the second may be empty
    std::string_view allowed;
};

constexpr ParameterMessage parameter_messages[] = {
    {"(sampling= ", SdpCode::sampling, {"sampling", "depth"}, "YCbCr-4:2:2 with depth 10"},
    {"(width= ",
     SdpCode::size,
     {"width", "height"},
     "1920 and 1080, 1280 and 720; progressive only: 3840 and 2160"},
    {"Switching ", SdpCode::format_switch, {"width", "height"}, ""},
    {"exactframerate: ",
     SdpCode::frame_rate,
     {"exactframerate", ""},
     "progressive: 60, 60000/1001, 50; interlaced: 30, 30000/1001, 25"},
    {"TCS= ", SdpCode::transfer_characteristic, {"TCS", ""}, "SDR, HLG, PQ"},
    {"colorimetry: ", SdpCode::colorimetry, {"colorimetry", ""}, "BT709, BT2020, BT2100"},
    {"PM= ", SdpCode::packing_mode, {"PM", ""}, "2110GPM, 2110BPM, 2022-6"},
    {"SSN= ", SdpCode::standard, {"SSN", ""}, "ST2110-20:2017, ST2110-30:2017, ST2110-40:2017"},
    {"TP= ", SdpCode::traffic_profile, {"TP", ""}, "2110TPNL, 2110TPN, 2110TPW"},
};

/// The value as the parser cuts it, with every blank.
std::string_view value_of(std::string_view line, std::string_view name)
{
    const std::size_t at = line.find(std::string(name) + '=');
    if (at == std::string_view::npos)
        return "";
    const std::string_view rest = line.substr(at + name.size() + 1);
    return rest.substr(0, rest.find(';'));
}

/// What the eye does not see.
std::string remark_about(std::string_view value)
{
    if (value.starts_with('"') && value.ends_with('"'))
        return " with quotation marks";
    if (value.ends_with(' ') || value.ends_with('\t'))
        return " with a blank behind it";
    if (value.starts_with(' ') || value.starts_with('\t'))
        return " with a blank in front of it";
    return "";
}

class LibraryAnswer
{
public:
    LibraryAnswer(const SdpReceiver& receiver, SdpFindings& findings)
        : receiver_(receiver), findings_(findings)
    {}

    /// A line alone, so that every message has its line.
    void ask_about(const NormalLine& line)
    {
        sdp_str found = sdp_str();
        std::string messages;
        const bool read = analyze(line.text + '\n', messages, found);
        constexpr std::uint32_t path_flags =
            sdp_found_source_ip_leg0 | sdp_found_source_ip_leg1 | sdp_found_multicast_ip_leg0 |
            sdp_found_multicast_ip_leg1 | sdp_found_destination_port_leg0 |
            sdp_found_destination_port_leg1;
        if (!read || (found.found_flags & path_flags) != 0)
            findings_.add(SdpCode::misleading, line.line, in_quotes(line.text),
                          "the parameters of a format");
        for (std::string_view rest = messages; !rest.empty();) {
            const std::size_t end = rest.find('\n');
            explain(line, rest.substr(0, end));
            rest.remove_prefix(end + 1);
        }
    }

    void ask_about_all(const std::vector<NormalLine>& lines, const SdpLegs& legs, sdp_str& found)
    {
        std::string text;
        for (const NormalLine& line : lines)
            text += line.text + '\n';
        std::string messages;
        const bool read = analyze(text, messages, found);
        if (!findings_.refuse() && (!read || !messages.empty() || !agrees(found, legs)))
            findings_.add(SdpCode::misleading, 0,
                          "the parser reads other legs: " + in_quotes(messages));
    }

private:
    /// False if the parser gives up.
    bool analyze(const std::string& text, std::string& messages, sdp_str& found) const
    {
        try {
            ConnectionApi().analyze_sdp_file(text, receiver_.switch_capable,
                                             receiver_.current_format, receiver_.switch_allowed,
                                             &messages, &found);
            return true;
        } catch (const std::out_of_range&) {
            return false;
        }
    }

    void explain(const NormalLine& line, std::string_view message)
    {
        for (const ParameterMessage& row : parameter_messages) {
            if (!message.starts_with(row.beginning))
                continue;
            std::string found;
            for (const std::string_view key : row.keys) {
                const std::string_view value = value_of(line.text, key);
                if (!key.empty())
                    found += (found.empty() ? "" : ", ") + std::string(key) + ' ' +
                             in_quotes(value) + remark_about(value);
            }
            if (row.code == SdpCode::format_switch)
                found += ": " + std::string(message.substr(0, message.find_last_not_of(' ') + 1));
            if (row.code == SdpCode::frame_rate)
                found += line.text.find("interlace") == std::string::npos ? " (progressive)"
                                                                          : " (interlaced)";
            findings_.add(row.code, line.line, found, std::string(row.allowed));
            return;
        }
        // About payload types there is more to say, and check_formats says it.
        if (!findings_.has(SdpCode::payload_type) && !findings_.has(SdpCode::misleading))
            findings_.add(SdpCode::misleading, line.line, in_quotes(message));
    }

    static bool agrees(const sdp_str& found, const SdpLegs& legs)
    {
        for (std::size_t i = 0; i < leg_count; ++i) {
            const SdpLeg leg = legs[i].value_or(SdpLeg());
            const std::string port = leg.port == 0 ? "" : std::to_string(leg.port);
            if (found.multicast_ip[i] != leg.address || found.source_ip[i] != leg.source ||
                found.destination_port[i] != port)
                return false;
        }
        return true;
    }

    const SdpReceiver& receiver_;
    SdpFindings& findings_;
};

} // namespace

std::vector<NormalLine> normal_sdp(const LegMedia& media, const SdpLegs& legs)
{
    std::vector<NormalLine> lines = {
        {"v=0", 0, false}, {"s=-", 0, false}, {"t=0 0", 0, false}, {"a=group:DUP 1 2", 0, false}};
    for (std::size_t i = 0; i < leg_count; ++i) {
        if (media[i] && legs[i])
            add_path(*media[i], *legs[i], lines);
        if (media[i])
            add_format(*media[i], lines);
        lines.push_back({"a=mid:" + std::to_string(i + 1), 0, false});
    }
    return lines;
}

void ask_library(const std::vector<NormalLine>& lines, const SdpLegs& legs,
                 const SdpReceiver& receiver, SdpFindings& findings, sdp_str& found)
{
    LibraryAnswer answer(receiver, findings);
    std::set<std::size_t> asked; // both legs may be the same medium
    for (const NormalLine& line : lines) {
        if (line.describes_format && asked.insert(line.line).second)
            answer.ask_about(line);
    }
    answer.ask_about_all(lines, legs, found);
}

} // namespace nmos_instrument::host
