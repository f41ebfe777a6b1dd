// SPDX-License-Identifier: Apache-2.0

#include "sdp/sdp_description.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>

#include "text/ascii.h"
#include "text/pieces.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

/// The letters that a line may begin with (RFC 4566 9).
constexpr std::string_view letters = "vosiuepcbtrzkam";

bool is_blank(std::string_view line)
{
    return line.find_first_not_of(" \t") == std::string_view::npos;
}

/// Whether a name, but for blanks around it and the case of its letters, is one that tells what to
/// join. It must not be passed over as an unknown one.
bool is_known_name_in_disguise(std::string_view name)
{
    constexpr std::string_view known[] = {"fmtp",   "group",         "mid",
                                          "rtpmap", "source-filter", "ssrc-group"};
    const std::string_view plain = trimmed(name);
    return std::any_of(std::begin(known), std::end(known),
                       [&](std::string_view its) { return same_name(its, plain) && its != name; });
}

class Parser
{
public:
    explicit Parser(SdpFindings& findings) : findings_(findings) {}

    SdpDescription parse(std::string_view text)
    {
        while (!text.empty())
            read_line(cut_off(text, '\n'));
        if (first_value_line_ == 0)
            findings_.add(SdpCode::empty, 0, "no line", "lines, the first of which is v=0");
        return std::move(description_);
    }

private:
    void read_line(std::string_view line)
    {
        const std::size_t number = ++description_.line_count;
        if (is_blank(line)) {
            if (empty_line_ == 0)
                empty_line_ = number;
            return;
        }
        // Empty lines at the end do no harm.
        if (empty_line_ != 0 && !told_of_empty_line_) {
            told_of_empty_line_ = true;
            findings_.add(SdpCode::empty_line, empty_line_, "an empty line");
        }
        const bool first = first_value_line_ == 0;
        if (first)
            first_value_line_ = number;
        if (line.size() < 2 || line[1] != '=' || letters.find(line[0]) == std::string_view::npos) {
            findings_.add(SdpCode::not_a_line, number, in_quotes(line),
                          "one of the letters " + std::string(letters) + ", =, and a value");
            return;
        }
        if (first && line[0] != 'v')
            findings_.add(SdpCode::no_version, number, in_quotes(line), "v=0");
        read_value(line[0], {number, line.substr(2)});
    }

    void read_value(char letter, const SdpLine& line)
    {
        switch (letter) {
        case 'v':
            if (words_of(line.value) != std::vector<std::string_view>{"0"})
                findings_.add(SdpCode::other_version, line.number,
                              "version " + in_quotes(line.value), "0");
            break;
        case 'o':
            description_.origin = line.value;
            break;
        case 'c':
            section().connections.push_back(line);
            break;
        case 'm':
            read_medium(line);
            break;
        case 'a':
            read_attribute(line);
            break;
        default: // nothing that a receiver needs
            break;
        }
    }

    // RFC 4566 5.14
    void read_medium(const SdpLine& line)
    {
        description_.media.emplace_back();
        SdpMedium& medium = description_.media.back();
        medium.line = line.number;
        const std::vector<std::string_view> words = words_of(line.value);
        constexpr std::size_t first_format = 3;
        const bool rtp = words.size() >= first_format && words[2] == rtp_protocol;
        // Other protocols may have no formats; such a medium is not ours.
        if (words.size() < first_format || (rtp && words.size() == first_format)) {
            findings_.add(SdpCode::media_line, line.number, in_quotes(line.value),
                          "KIND PORT PROTOCOL PAYLOAD-TYPE");
            return;
        }
        std::string_view port = words[1];
        std::string_view first_port = cut_off(port, '/');
        const std::optional<long> number = number_from_to(0, 65535, first_port);
        // What follows the slash is a number of ports.
        const std::optional<long> count = port.empty() ? 1 : number_from_to(1, 65535, port);
        if (!number || !count)
            findings_.add(SdpCode::media_line, line.number, "port " + in_quotes(words[1]),
                          "1 to 65535, or 0 for a medium that is not sent");
        medium.kind = words[0];
        medium.port = number.value_or(unknown_port);
        medium.several_ports = count.value_or(1) > 1;
        medium.protocol = words[2];
        medium.formats.assign(words.begin() + first_format, words.end());
    }

    // RFC 4566 5.13
    void read_attribute(const SdpLine& line)
    {
        std::string_view value = line.value;
        const std::string_view name = cut_off(value, ':');
        if (is_known_name_in_disguise(name))
            findings_.add(SdpCode::attribute, line.number, "the name " + in_quotes(name),
                          "a name in lower case, without a blank in front of it or behind it");
        if (description_.media.empty() && (name == "rtpmap" || name == "fmtp" || name == "mid"))
            findings_.add(SdpCode::wrong_level, line.number, in_quotes(name) + " of no medium");
        section().attributes.push_back({line.number, name, value});
    }

    SdpSection& section()
    {
        if (description_.media.empty())
            return description_.session;
        return description_.media.back();
    }

    SdpFindings& findings_;
    SdpDescription description_;
    std::size_t first_value_line_ = 0;
    std::size_t empty_line_ = 0;
    bool told_of_empty_line_ = false;
};

} // namespace

SdpDescription parse_sdp_description(std::string_view text, SdpFindings& findings)
{
    return Parser(findings).parse(text);
}

} // namespace nmos_instrument::host
