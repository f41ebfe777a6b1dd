// SPDX-License-Identifier: Apache-2.0

#include "sdp/rtp_format.h"

#include <algorithm>
#include <map>
#include <set>

#include "text/ascii.h"
#include "text/pieces.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

/// The payload type in front of the value of an a=rtpmap or a=fmtp line.
std::string_view payload_type_of(const SdpAttribute& attribute)
{
    const std::string_view value = attribute.value;
    const std::size_t begin = std::min(value.find_first_not_of(' '), value.size());
    return value.substr(begin, value.find(' ', begin) - begin);
}

/// "raw/90000" or "L24/48000/16" behind the payload type.
void read_encoding(const SdpAttribute& rtpmap, RtpFormat& format)
{
    const std::vector<std::string_view> words = words_of(rtpmap.value);
    std::string_view rest = words.size() < 2 ? std::string_view() : words[1];
    const std::string_view encoding = cut_off(rest, '/');
    if (encoding.empty())
        return; // malformed, as check_rtp_format says
    format.rtpmap_line = rtpmap.line;
    format.encoding = encoding;
    format.clock_rate = cut_off(rest, '/');
    format.channels = cut_off(rest, '/');
}

bool says_2022_6(const RtpFormat& format)
{
    const std::vector<FormatParameter> parameters = parameters_of(format);
    return std::any_of(parameters.begin(), parameters.end(), [](const FormatParameter& parameter) {
        return parameter.name == "PM" && parameter.value == "2022-6";
    });
}

Fit fit_of(const SdpMedium& medium, const RtpFormat& format, const std::string& media_type)
{
    const std::size_t slash = media_type.find('/');
    if (medium.protocol != rtp_protocol || !same_name(medium.kind, media_type.substr(0, slash)))
        return Fit::no;
    if (format.rtpmap_line == 0)
        return Fit::unknown;
    // RFC 4855 3: upper and lower case are the same.
    if (same_name(format.encoding, media_type.substr(slash + 1)))
        return Fit::yes;
    // The library writes SMPTE ST 2022-6 like this.
    const bool as_written_here = media_type == st2022_6_media_type &&
                                 same_name(format.encoding, "raw") && says_2022_6(format);
    return as_written_here ? Fit::yes : Fit::no;
}

struct ClockRate
{
    std::string_view encoding;
    std::string_view rate;
};

constexpr ClockRate clock_rates[] = {
    {"raw", "90000"}, {"smpte291", "90000"}, {"SMPTE2022-6", "27000000"}, {"L24", "48000"}};

void check_rtpmap(const RtpFormat& format, SdpFindings& findings)
{
    for (const ClockRate& row : clock_rates) {
        if (same_name(row.encoding, format.encoding) && row.rate != format.clock_rate)
            findings.add(SdpCode::clock_rate, format.rtpmap_line,
                         "clock rate " + in_quotes(format.clock_rate), std::string(row.rate));
    }
    constexpr long most_channels = 64;
    if (!format.channels.empty() && !number_from_to(1, most_channels, format.channels))
        findings.add(SdpCode::channels, format.rtpmap_line,
                     in_quotes(format.channels) + " channels",
                     "1 to " + std::to_string(most_channels));
}

bool is(const SdpAttribute& attribute, std::string_view name)
{
    return attribute.name == name;
}

} // namespace

RtpFormat format_for(const SdpMedium& medium, const std::vector<std::string>& media_types)
{
    std::map<std::string_view, RtpFormat> described;
    for (const SdpAttribute& attribute : medium.attributes) {
        if (is(attribute, "rtpmap")) {
            RtpFormat& format = described[payload_type_of(attribute)];
            if (format.rtpmap_line == 0)
                read_encoding(attribute, format);
        } else if (is(attribute, "fmtp")) {
            described[payload_type_of(attribute)].fmtp.push_back(&attribute);
        }
    }
    RtpFormat best;
    for (const std::string_view payload_type : medium.formats) {
        RtpFormat& format = described[payload_type];
        if (!format.payload_type.empty())
            continue; // named twice
        format.payload_type = payload_type;
        for (const std::string& media_type : media_types)
            format.fit = std::max(format.fit, fit_of(medium, format, media_type));
        if (best.payload_type.empty() || format.fit > best.fit)
            best = format;
        if (best.fit == Fit::yes)
            break;
    }
    return best;
}

void check_rtp_format(const SdpMedium& medium, const RtpFormat& format, SdpFindings& findings)
{
    const std::set<std::string_view> known(medium.formats.begin(), medium.formats.end());
    for (const SdpAttribute& attribute : medium.attributes) {
        const bool rtpmap = is(attribute, "rtpmap");
        if (!rtpmap && !is(attribute, "fmtp"))
            continue;
        const std::string_view payload_type = payload_type_of(attribute);
        const std::string name = rtpmap ? "a=rtpmap" : "a=fmtp";
        const std::vector<std::string_view> words = words_of(attribute.value);
        if (rtpmap && (words.size() < 2 || words[1].starts_with('/')))
            findings.add(SdpCode::attribute, attribute.line,
                         name + ' ' + in_quotes(attribute.value),
                         "PAYLOAD-TYPE ENCODING/CLOCK-RATE");
        else if (known.count(payload_type) == 0)
            findings.add(SdpCode::unknown_payload_type, attribute.line,
                         name + " of payload type " + in_quotes(payload_type),
                         "those of line " + std::to_string(medium.line) + ", like " +
                             in_quotes(format.payload_type));
        else if (rtpmap && payload_type == format.payload_type &&
                 attribute.line != format.rtpmap_line)
            findings.add(SdpCode::attribute, attribute.line,
                         "a second a=rtpmap of payload type " + in_quotes(payload_type),
                         "one, as in line " + std::to_string(format.rtpmap_line));
    }
    if (format.rtpmap_line != 0)
        check_rtpmap(format, findings);
    else if (!findings.has(SdpCode::unknown_payload_type) && !findings.has(SdpCode::attribute))
        findings.add(SdpCode::no_rtpmap, medium.line,
                     "no a=rtpmap of payload type " + in_quotes(format.payload_type));
}

std::vector<FormatParameter> parameters_of(const RtpFormat& format)
{
    std::vector<FormatParameter> parameters;
    for (const SdpAttribute* const fmtp : format.fmtp) {
        std::string_view rest = fmtp->value;
        const std::string_view payload_type = payload_type_of(*fmtp);
        rest.remove_prefix(static_cast<std::size_t>(payload_type.data() - rest.data()) +
                           payload_type.size());
        while (!rest.empty()) {
            std::string_view value = trimmed(cut_off(rest, ';'));
            if (value.empty())
                continue;
            const std::string_view name = trimmed(cut_off(value, '='));
            parameters.push_back({name, trimmed(value)});
        }
    }
    return parameters;
}

} // namespace nmos_instrument::host
