// SPDX-License-Identifier: Apache-2.0

#include "text/ipv4_text.h"

#include <arpa/inet.h>
#include <string>

#include "text/scanning.h"

namespace nmos_instrument {

bool is_dotted_quad(std::string_view text)
{
    for (int octet = 0; octet < 4; ++octet) {
        if (octet != 0 && !take_prefix(text, "."))
            return false;
        const std::string_view number = take_digits(text);
        if (number.empty() || number.size() > 3)
            return false;
        if (number.size() > 1 && number.front() == '0')
            return false;
        // Of two numbers with three digits the text order is the order of the values.
        if (number.size() == 3 && number > "255")
            return false;
    }
    return text.empty();
}

bool is_inet_aton_address(std::string_view text)
{
    if (is_dotted_quad(text)) // nearly all are, and it is faster
        return true;
    in_addr address{};
    return inet_aton(std::string(text).c_str(), &address) != 0;
}

} // namespace nmos_instrument
