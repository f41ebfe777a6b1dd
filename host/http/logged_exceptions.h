// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_LOGGED_EXCEPTIONS_H
#define NMOS_INSTRUMENT_HOST_HTTP_LOGGED_EXCEPTIONS_H

#include <exception>

#include "log/log.h"

namespace nmos_instrument::host {

/// Calls what somebody else has given us. What it throws is logged, and goes no further.
template <class Call>
void with_exceptions_logged(const Log& log, const Call& call) noexcept
{
    try {
        call();
    } catch (const std::exception& error) {
        log.error("HTTP client: {}", error.what());
    } catch (...) {
        log.error("HTTP client: an exception of unknown type");
    }
}

} // namespace nmos_instrument::host

#endif
