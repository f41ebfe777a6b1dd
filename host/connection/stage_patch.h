// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONNECTION_STAGE_PATCH_H
#define NMOS_INSTRUMENT_HOST_CONNECTION_STAGE_PATCH_H

#include <string_view>

#include <nmos_instrument/nmos_instrument.h>

#include "connection/connection_patch.h"

namespace nmos_instrument::host {

/// `staged` with a validated patch applied to it, except for its activation: see set_activation.
CONNECTION_HALF_IS05_ST stage_patch(const CONNECTION_HALF_IS05_ST& staged,
                                    const ConnectionPatch& patch);

/// The "activation" of a half; "null" stands for JSON null.
struct ActivationTexts
{
    std::string_view mode = "null";
    std::string_view requested_time = "null";
    std::string_view activation_time = "null";
};

void set_activation(CONNECTION_HALF_IS05_ST& half, const ActivationTexts& texts);

} // namespace nmos_instrument::host

#endif
