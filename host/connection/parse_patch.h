// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONNECTION_PARSE_PATCH_H
#define NMOS_INSTRUMENT_HOST_CONNECTION_PARSE_PATCH_H

#include <nlohmann/json_fwd.hpp>

#include "connection/connection_patch.h"
#include "connection/findings.h"

namespace nmos_instrument::host {

/// A PATCH document for one sender or receiver (v1.0-sender-stage-schema.json,
/// v1.0-receiver-stage-schema.json). Adds to `findings` what is not allowed; use the result only if
/// there are none.
ConnectionPatch parse_patch(const nlohmann::json& document, Side side, Findings& findings);

} // namespace nmos_instrument::host

#endif
