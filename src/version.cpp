// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/version.h"

#define TEXT_OF(number) #number
#define VERSION_TEXT(major, minor, patch) TEXT_OF(major) "." TEXT_OF(minor) "." TEXT_OF(patch)

namespace nmos_instrument {

const char* version() noexcept
{
    return VERSION_TEXT(NMOS_INSTRUMENT_VERSION_MAJOR, NMOS_INSTRUMENT_VERSION_MINOR,
                        NMOS_INSTRUMENT_VERSION_PATCH);
}

} // namespace nmos_instrument
