// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_SRC_BODIES_PARAMETERS_BODY_H
#define NMOS_INSTRUMENT_SRC_BODIES_PARAMETERS_BODY_H

#include "json/json_writer.h"
#include "nmos_instrument/system_parameters.h"

namespace nmos_instrument {

/// The document of the instrument's settings.
void write_parameters(JsonText& text, const st_param_sys& sys);

} // namespace nmos_instrument

#endif
