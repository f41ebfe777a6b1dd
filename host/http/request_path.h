// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_REQUEST_PATH_H
#define NMOS_INSTRUMENT_HOST_HTTP_REQUEST_PATH_H

#include <string>
#include <string_view>

namespace nmos_instrument::host {

/// The path of a request target without its query, in the form that HttpRequest::path describes.
std::string request_path(std::string_view target);

} // namespace nmos_instrument::host

#endif
