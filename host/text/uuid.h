// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TEXT_UUID_H
#define NMOS_INSTRUMENT_HOST_TEXT_UUID_H

#include <string_view>

namespace nmos_instrument::host {

/// The form that IS-04 and IS-05 require of ids: lower case, version 1 to 5 (RFC 4122 4.1).
bool is_uuid(std::string_view text);

} // namespace nmos_instrument::host

#endif
