// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_REQUEST_PATH_H
#define NMOS_INSTRUMENT_HOST_HTTP_REQUEST_PATH_H

#include <string>
#include <string_view>

namespace nmos_instrument::host {

/// The path of a request target whose query is cut off already, as HttpRequest::path describes it.
std::string request_path(std::string_view target);

} // namespace nmos_instrument::host

#endif
