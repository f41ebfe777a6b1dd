// SPDX-License-Identifier: Apache-2.0

#ifndef VIRTUAL_INSTRUMENT_INSTRUMENT_FILL_SETTINGS_H
#define VIRTUAL_INSTRUMENT_INSTRUMENT_FILL_SETTINGS_H

#include <nmos_instrument/nmos_instrument.h>

#include "instrument/configuration.h"

namespace virtual_instrument {

/// The instrument's settings. `settings` is zero before: that is "off" or "none" for every setting
/// that the configuration does not know.
void fill_settings(const Configuration& configuration, st_param_sys& settings);

} // namespace virtual_instrument

#endif
