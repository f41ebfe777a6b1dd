// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_FILL_SETTINGS_H
#define NMOS_INSTRUMENT_HOST_RECORDS_FILL_SETTINGS_H

#include <nmos_instrument/nmos_instrument.h>

#include "configuration/configuration.h"

namespace nmos_instrument::host {

/// The instrument's settings. `settings` must be zero, which means "off" or "none" for every
/// setting that is not in the configuration.
void fill_settings(const Configuration& configuration, st_param_sys& settings);

} // namespace nmos_instrument::host

#endif
