// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_SRC_JSON_SLASHES_H
#define NMOS_INSTRUMENT_SRC_JSON_SLASHES_H

namespace nmos_instrument {

/// How '/' is written in JSON text: both forms are the same JSON value.
enum class Slashes
{
    plain,
    escaped
};

} // namespace nmos_instrument

#endif
