// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_ERROR_RESPONSE_H
#define NMOS_INSTRUMENT_HOST_HTTP_ERROR_RESPONSE_H

#include <optional>
#include <string>
#include <string_view>

#include "http/message.h"

namespace nmos_instrument::host {

/// `text` in quotes and escaped. Bytes that are not UTF-8 become U+FFFD.
std::string json_string(std::string_view text);

/// `{"code":404,"error":"...","debug":"..."}`, the body of every error in IS-04 and IS-05; without
/// `debug` its value is null. Bytes that are not UTF-8 become U+FFFD, so that it may quote anything
/// that a client sent.
std::string error_body(int code, std::string_view error,
                       const std::optional<std::string>& debug = std::nullopt);

/// The answer with that body and the status `code`.
HttpResponse error_response(int code, std::string_view error,
                            const std::optional<std::string>& debug = std::nullopt);

} // namespace nmos_instrument::host

#endif
