// SPDX-License-Identifier: Apache-2.0

#include "text/uuid.h"

#include <cstddef>

namespace nmos_instrument::host {

bool is_uuid(std::string_view text)
{
    // h: hexadecimal digit, v: version, n: variant (RFC 4122 4.1)
    constexpr std::string_view shape = "hhhhhhhh-hhhh-vhhh-nhhh-hhhhhhhhhhhh";
    if (text.size() != shape.size())
        return false;
    for (std::size_t i = 0; i < shape.size(); ++i) {
        const char c = text[i];
        const bool digit = c >= '0' && c <= '9';
        switch (shape[i]) {
        case 'h':
            if (!digit && (c < 'a' || c > 'f'))
                return false;
            break;
        case 'v':
            if (c < '1' || c > '5')
                return false;
            break;
        case 'n':
            if (c != '8' && c != '9' && c != 'a' && c != 'b')
                return false;
            break;
        default:
            if (c != '-')
                return false;
        }
    }
    return true;
}

} // namespace nmos_instrument::host
