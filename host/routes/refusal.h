// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_REFUSAL_H
#define NMOS_INSTRUMENT_HOST_ROUTES_REFUSAL_H

#include <string>

namespace nmos_instrument::host {

/// Why a client does not get the change that it asks for.
struct Refusal
{
    int status = 0;
    std::string error;
    std::string debug; ///< may have several lines; empty: nothing

    bool operator==(const Refusal&) const = default;
};

} // namespace nmos_instrument::host

#endif
