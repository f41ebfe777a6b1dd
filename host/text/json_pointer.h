// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TEXT_JSON_POINTER_H
#define NMOS_INSTRUMENT_HOST_TEXT_JSON_POINTER_H

#include <string>

namespace nmos_instrument::host {

/// A key as a JSON pointer shows it (RFC 6901 3). A long one is shortened: otherwise an answer could
/// repeat 1 MiB of it.
std::string json_pointer_token(const std::string& key);

/// The end of a pointer, if it is long: that is where something is wrong.
std::string in_short(const std::string& pointer);

} // namespace nmos_instrument::host

#endif
