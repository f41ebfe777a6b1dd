// SPDX-License-Identifier: Apache-2.0

#ifndef VIRTUAL_INSTRUMENT_HTTP_REQUEST_PATH_H
#define VIRTUAL_INSTRUMENT_HTTP_REQUEST_PATH_H

#include <string>
#include <string_view>

namespace virtual_instrument {

/// The path of a request target whose query is cut off already, as HttpRequest::path describes it.
std::string request_path(std::string_view target);

} // namespace virtual_instrument

#endif
