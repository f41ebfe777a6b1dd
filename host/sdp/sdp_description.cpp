// SPDX-License-Identifier: Apache-2.0

#include "sdp/sdp_description.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>

#include "text/ascii.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

/// The letters that a line may begin with (RFC 4566 9).
constexpr std::string_view letters = "vosiuepcbtrzkam";

bool is_blank(std::string_view line)
{
    return line.find_first_not_of(" \t") == std::string_view::npos;
}

std::string_view cut_off(std::string_view& rest, char separator)
{
    const std::size_t end = std::min(rest.find(separator), rest.size());
    const std::string_view piece = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return piece;
}

/// Nothing if `text` is not a number from 0 to `most`.
std::optional<long> number_up_to(long most, std::string_view text)
{
    long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || !is_digit(text.front()) ||
        number > most)
        return std::nullopt;
    return number;
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
        const std::optional<long> number = number_up_to(65535, first_port);
        // What follows the slash is a number of ports.
        const std::optional<long> count = port.empty() ? 1 : number_up_to(65535, port);
        if (!number || !count || *count == 0)
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

std::vector<std::string_view> words_of(std::string_view text)
{
    std::vector<std::string_view> words;
    while (!text.empty()) {
        const std::string_view word = cut_off(text, ' ');
        if (!word.empty())
            words.push_back(word);
    }
    return words;
}

SdpDescription parse_sdp_description(std::string_view text, SdpFindings& findings)
{
    return Parser(findings).parse(text);
}

} // namespace nmos_instrument::host
