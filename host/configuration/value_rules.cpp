// SPDX-License-Identifier: Apache-2.0

#include "configuration/value_rules.h"

#include <algorithm>
#include <string_view>

#include "text/ascii.h"
#include "text/ipv4_address.h"

namespace nmos_instrument::host {
namespace {

bool is_control(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
}

bool is_plain_text(std::string_view text, std::size_t field_size)
{
    return text.size() < field_size && std::none_of(text.begin(), text.end(), is_control);
}

bool is_host_name_part(std::string_view part)
{
    return !part.empty() && part.size() <= 63 && part.front() != '-' && part.back() != '-' &&
           std::all_of(part.begin(), part.end(),
                       [](char c) { return is_letter(c) || is_digit(c) || c == '-'; });
}

bool is_host_name(std::string_view text)
{
    for (;;) {
        const std::size_t dot = text.find('.');
        if (!is_host_name_part(text.substr(0, dot)))
            return false;
        if (dot == std::string_view::npos)
            return true;
        text.remove_prefix(dot + 1);
    }
}

bool rewrite_octets(std::string& text, int octets)
{
    if (text.size() != static_cast<std::size_t>(octets) * 3 - 1)
        return false;
    std::string rewritten;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (i % 3 == 2) {
            if (c != '-' && c != ':')
                return false;
            rewritten += '-';
        } else {
            if (!is_hexadecimal_digit(c))
                return false;
            rewritten += to_lower(c);
        }
    }
    text = rewritten;
    return true;
}

std::string at_most_bytes(std::size_t field_size)
{
    return "at most " + std::to_string(field_size - 1) + " bytes";
}

} // namespace

TextRule text_for_field(std::size_t field_size)
{
    return {"text of " + at_most_bytes(field_size) + ", no control characters",
            [=](const std::string& text) { return is_plain_text(text, field_size); }};
}

TextRule name_for_field(std::size_t field_size)
{
    return {
        "text of 1 to " + std::to_string(field_size - 1) + " bytes, no control characters",
        [=](const std::string& text) { return !text.empty() && is_plain_text(text, field_size); }};
}

TextRule host_name_for_field(std::size_t field_size)
{
    return {
        "host name of " + at_most_bytes(field_size) + ": letters, digits, \"-\" and \".\"",
        [=](const std::string& text) { return text.size() < field_size && is_host_name(text); }};
}

TextRule clock_name_for_field(std::size_t field_size)
{
    return {"\"clk\" and digits, " + at_most_bytes(field_size), [=](const std::string& text) {
                return text.size() < field_size && text.size() > 3 && text.starts_with("clk") &&
                       std::all_of(text.begin() + 3, text.end(), is_digit);
            }};
}

TextRule octets(int octets, const std::string& example)
{
    return {std::to_string(octets) + " octets like \"" + example + "\"",
            [=](std::string& text) { return rewrite_octets(text, octets); }};
}

TextRule unicast_address()
{
    return {"unicast IPv4 address like \"192.0.2.10\"", [](const std::string& text) {
                const auto address = ipv4_from_dotted_quad(text);
                return address && is_unicast(*address);
            }};
}

TextRule multicast_address()
{
    return {"multicast IPv4 address, \"224.0.0.0\" to \"239.255.255.255\"",
            [](const std::string& text) {
                const auto address = ipv4_from_dotted_quad(text);
                return address && is_multicast(*address);
            }};
}

TextRule exactly(const std::string& text)
{
    return {'"' + text + '"', [=](const std::string& found) { return found == text; }};
}

std::string number_range(int lowest, int highest)
{
    if (lowest == highest)
        return std::to_string(lowest);
    return std::to_string(lowest) + " to " + std::to_string(highest);
}

} // namespace nmos_instrument::host
