// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_FILL_CONNECTIONS_H
#define NMOS_INSTRUMENT_HOST_RECORDS_FILL_CONNECTIONS_H

#include <nmos_instrument/nmos_instrument.h>

#include "configuration/configuration.h"

namespace nmos_instrument::host {

/// The whole IS-05 state at the start; staged and active are the same. All six senders are filled,
/// also those that are not shown, so that every field has a meaning. `connections` must be zero.
void fill_connections(const Configuration& configuration, NMOS_IS05_ST& connections);

} // namespace nmos_instrument::host

#endif
