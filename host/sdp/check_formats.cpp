// SPDX-License-Identifier: Apache-2.0

#include "sdp/check_formats.h"

#include <algorithm>
#include <map>
#include <string_view>

#include "text/ascii.h"
#include "text/pieces.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

/// 96 to 127 (RFC 3551 6)
bool is_dynamic(std::string_view payload_type)
{
    return number_from_to(96, 127, payload_type).has_value();
}

void check_leg(const LegMedium& leg, const std::vector<std::string>& media_types,
               SdpFindings& findings)
{
    const RtpFormat& format = leg.format;
    if (!is_dynamic(format.payload_type))
        findings.add(SdpCode::payload_type, leg.medium->line,
                     "payload type " + in_quotes(format.payload_type), "96 to 127");
    check_rtp_format(*leg.medium, format, findings);
    if (same_name(format.encoding, "raw") && format.fmtp.empty())
        findings.add(SdpCode::no_format, leg.medium->line,
                     "no a=fmtp of payload type " + in_quotes(format.payload_type));
    const bool for_st2022_6 =
        std::find(media_types.begin(), media_types.end(), st2022_6_media_type) != media_types.end();
    for (const FormatParameter& parameter : parameters_of(format)) {
        if (!for_st2022_6 && parameter.name == "PM" && parameter.value == "2022-6")
            findings.add(SdpCode::carriage, format.fmtp.front()->line, "PM \"2022-6\"",
                         "2110GPM, 2110BPM");
    }
}

/// What makes a picture another one. The rest is about packets and timing.
bool describes_picture(std::string_view name)
{
    constexpr std::string_view names[] = {
        "sampling",  "depth",     "width",       "height", "exactframerate",
        "interlace", "segmented", "colorimetry", "TCS",    "PM"};
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

using Parameters = std::map<std::string_view, std::string_view>;

Parameters map_of(const RtpFormat& format)
{
    Parameters parameters;
    for (const FormatParameter& parameter : parameters_of(format))
        parameters.emplace(parameter.name, parameter.value);
    return parameters;
}

std::string shown(const Parameters& parameters, std::string_view name)
{
    const auto found = parameters.find(name);
    if (found == parameters.end())
        return "nothing";
    return found->second.empty() ? "the flag" : in_quotes(found->second);
}

class Comparison
{
public:
    Comparison(const LegMedium& one, const LegMedium& two, SdpFindings& findings)
        : one_(one.format), two_(two.format), line_(two.medium->line), findings_(findings)
    {}

    void run()
    {
        if (one_.rtpmap_line != 0 && two_.rtpmap_line != 0) {
            compare_name("encoding", one_.encoding, two_.encoding);
            compare_name("clock rate", one_.clock_rate, two_.clock_rate);
            compare_name("channels", one_.channels.empty() ? "1" : one_.channels,
                         two_.channels.empty() ? "1" : two_.channels);
        }
        if (one_.payload_type != two_.payload_type)
            differ(SdpCode::legs_differ_slightly, line_, "payload type",
                   in_quotes(one_.payload_type), in_quotes(two_.payload_type));
        if (!one_.fmtp.empty() && !two_.fmtp.empty())
            compare_parameters();
    }

private:
    void compare_name(const std::string& what, std::string_view one, std::string_view two)
    {
        if (!same_name(one, two))
            differ(SdpCode::legs_differ, two_.rtpmap_line, what, in_quotes(one), in_quotes(two));
    }

    void compare_parameters()
    {
        const Parameters one = map_of(one_);
        const Parameters two = map_of(two_);
        Parameters all = one;
        all.insert(two.begin(), two.end());
        for (const auto& [name, value] : all) {
            const auto in_one = one.find(name);
            const auto in_two = two.find(name);
            const bool same =
                in_one != one.end() && in_two != two.end() && in_one->second == in_two->second;
            if (!same)
                differ(
                    describes_picture(name) ? SdpCode::legs_differ : SdpCode::legs_differ_slightly,
                    two_.fmtp.front()->line, in_quotes(name), shown(one, name), shown(two, name));
        }
    }

    void differ(SdpCode code, std::size_t line, const std::string& what, const std::string& one,
                const std::string& two)
    {
        findings_.add(code, line, what + ": leg 1 has " + one + ", leg 2 has " + two);
    }

    const RtpFormat& one_;
    const RtpFormat& two_;
    std::size_t line_;
    SdpFindings& findings_;
};

} // namespace

void check_formats(const LegMedia& media, const std::vector<std::string>& media_types,
                   SdpFindings& findings)
{
    const bool one_medium = media[0] && media[1] && media[0]->medium == media[1]->medium;
    for (const std::optional<LegMedium>& leg : media) {
        if (leg && !(one_medium && &leg == &media[1]))
            check_leg(*leg, media_types, findings);
    }
    if (media[0] && media[1] && !one_medium)
        Comparison(*media[0], *media[1], findings).run();
}

} // namespace nmos_instrument::host
