// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_SRC_SDP_IPV4_TEXT_H
#define NMOS_INSTRUMENT_SRC_SDP_IPV4_TEXT_H

#include <string_view>

namespace nmos_instrument {

/// Whether inet_aton takes the text, up to its first NUL, as an address. That includes short,
/// octal and hexadecimal forms, and anything behind a blank.
bool is_ipv4_address(std::string_view text);

} // namespace nmos_instrument

#endif
