// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TEXT_UTF8_H
#define NMOS_INSTRUMENT_HOST_TEXT_UTF8_H

#include <string>

namespace nmos_instrument::host {

bool is_utf8(const std::string& text);

/// `text` with U+FFFD in place of bytes that are not UTF-8.
std::string with_valid_utf8(const std::string& text);

} // namespace nmos_instrument::host

#endif
