// SPDX-License-Identifier: Apache-2.0

#include "sdp/ipv4_text.h"

#include <arpa/inet.h>
#include <cstddef>
#include <string>

namespace nmos_instrument {
namespace {

/// Four numbers of one to three digits up to 255, none of them with a leading zero: the form that
/// nearly all addresses have, and one that inet_aton always takes.
bool is_plain_dotted_quad(std::string_view text)
{
    std::size_t at = 0;
    for (int octet = 0; octet < 4; ++octet) {
        if (octet > 0) {
            if (at == text.size() || text[at] != '.')
                return false;
            ++at;
        }
        const std::size_t first = at;
        unsigned value = 0;
        while (at < text.size() && at - first < 3 && text[at] >= '0' && text[at] <= '9')
            value = value * 10 + static_cast<unsigned>(text[at++] - '0');
        const std::size_t digits = at - first;
        if (digits == 0 || value > 255 || (digits > 1 && text[first] == '0'))
            return false;
    }
    return at == text.size();
}

} // namespace

bool is_ipv4_address(std::string_view text)
{
    if (is_plain_dotted_quad(text))
        return true;
    in_addr address{};
    return inet_aton(std::string(text).c_str(), &address) != 0;
}

} // namespace nmos_instrument
