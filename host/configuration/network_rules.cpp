// SPDX-License-Identifier: Apache-2.0

#include "configuration/network_rules.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "configuration/registry_url.h"
#include "text/ascii.h"
#include "text/ipv4_address.h"

namespace nmos_instrument::host {
namespace {

constexpr const char* interface_allowed = "or the name of an interface like \"eth0\"";

/// Linux allows more characters, but nobody uses them; and what looks like an address is none.
bool is_interface_name(std::string_view text)
{
    constexpr std::size_t longest = 15; // IFNAMSIZ, with its NUL
    const auto may_be_in_name = [](char c) { return c > ' ' && c < 0x7f && c != '/' && c != ':'; };
    const auto is_of_address = [](char c) { return is_digit(c) || c == '.'; };
    return text.size() <= longest && std::all_of(text.begin(), text.end(), may_be_in_name) &&
           !std::all_of(text.begin(), text.end(), is_of_address);
}

bool is_ipv4_to_listen_at(const std::string& text)
{
    const auto address = ipv4_from_dotted_quad(text);
    return address && (*address == 0 || is_unicast(*address));
}

void remove_brackets(std::string& text)
{
    if (text.starts_with('[') && text.ends_with(']') && is_ipv6(text.substr(1, text.size() - 2)))
        text = text.substr(1, text.size() - 2);
}

std::string_view last_name_of(std::string_view path)
{
    return path.substr(path.rfind('/') + 1); // npos + 1 is 0
}

} // namespace

TextRule listening_place()
{
    return {std::string("\"any\", an address like \"192.0.2.10\" or \"::1\", ") + interface_allowed,
            [](std::string& text) {
                remove_brackets(text);
                return is_ipv4_to_listen_at(text) || is_ipv6(text) || is_interface_name(text);
            }};
}

TextRule own_address()
{
    const TextRule ipv4 = unicast_address();
    return {ipv4.allowed + ", " + interface_allowed,
            [=](std::string& text) { return ipv4.accept(text) || is_interface_name(text); }};
}

TextRule registry_address()
{
    return {"URL like \"http://registry.example:8080\", http or https, without a path or with "
            "\"/x-nmos/registration/v1.2\"",
            [](std::string& text) {
                const std::optional<std::string> url = registry_url(text);
                text = url.value_or(text);
                return url.has_value();
            }};
}

TextRule domain_name()
{
    constexpr std::size_t longest = 253; // RFC 1035 3.1: 255 with the lengths of its labels
    const TextRule host_name = host_name_for_field(longest + 1);
    return {"domain name like \"example.com\"", [=](std::string& text) {
                if (text.ends_with('.'))
                    text.pop_back();
                return host_name.accept(text);
            }};
}

TextRule file_path()
{
    constexpr std::size_t longest = 4095; // PATH_MAX, with its NUL
    return {"path of a file", name_for_field(longest + 1).accept};
}

TextRule service_file_path()
{
    constexpr std::string_view ending = ".service";
    const TextRule path = file_path();
    return {"path of a file whose name ends in \".service\"", [=](std::string& text) {
                const std::string_view name = last_name_of(text);
                return path.accept(text) && name.size() > ending.size() && name.ends_with(ending);
            }};
}

} // namespace nmos_instrument::host
