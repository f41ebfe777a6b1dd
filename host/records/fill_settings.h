// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_FILL_SETTINGS_H
#define NMOS_INSTRUMENT_HOST_RECORDS_FILL_SETTINGS_H

#include <nmos_instrument/nmos_instrument.h>

#include "configuration/configuration.h"

namespace nmos_instrument::host {

/// The instrument's settings. `settings` is zero before: that is "off" or "none" for every setting
/// that the configuration does not know.
void fill_settings(const Configuration& configuration, st_param_sys& settings);

} // namespace nmos_instrument::host

#endif
