// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_HEADER_LIST_H
#define NMOS_INSTRUMENT_HOST_HTTP_HEADER_LIST_H

#include <optional>
#include <string>

struct MHD_Connection;

namespace nmos_instrument::host {

/// The value of a header that is a list: its lines, with commas between them (RFC 9110 5.3). Nothing if
/// there is no such header.
std::optional<std::string> header_list(MHD_Connection* connection, const char* name);

} // namespace nmos_instrument::host

#endif
