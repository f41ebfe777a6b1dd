// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_LOGGED_EXCEPTIONS_H
#define NMOS_INSTRUMENT_HOST_HTTP_LOGGED_EXCEPTIONS_H

#include <exception>

#include <spdlog/spdlog.h>

namespace nmos_instrument::host {

/// Calls what somebody else has given us. What it throws is logged, and goes no further.
template <class Call>
void with_exceptions_logged(const Call& call) noexcept
{
    const auto log = [](const char* what) noexcept {
        try {
            spdlog::error("HTTP client: {}", what);
        } catch (...) {
            return; // not even that is possible
        }
    };
    try {
        call();
    } catch (const std::exception& error) {
        log(error.what());
    } catch (...) {
        log("an exception of unknown type");
    }
}

} // namespace nmos_instrument::host

#endif
