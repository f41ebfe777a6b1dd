// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_STATIC_FILE_H
#define NMOS_INSTRUMENT_HOST_ROUTES_STATIC_FILE_H

#include <optional>
#include <string>
#include <string_view>

#include "http/message.h"

namespace nmos_instrument::host {

/// A file of a page, which is part of the program.
struct StaticFile
{
    std::string_view content_type;
    std::string_view etag; ///< in quotes; another one for every other content
    std::string_view content;
};

/// The file; or 304 without it, if the client says that it has it.
HttpResponse file_response(const StaticFile& file, const std::optional<std::string>& if_none_match);

/// Whether the client has what `etag` stands for, by the weak comparison of RFC 9110 13.1.2. The value of
/// If-None-Match is "*" or a list of entity tags; behind what is neither, nothing is read.
bool none_match_names(std::string_view if_none_match, std::string_view etag);

} // namespace nmos_instrument::host

#endif
