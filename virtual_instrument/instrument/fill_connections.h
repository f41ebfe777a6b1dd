// SPDX-License-Identifier: Apache-2.0

#ifndef VIRTUAL_INSTRUMENT_INSTRUMENT_FILL_CONNECTIONS_H
#define VIRTUAL_INSTRUMENT_INSTRUMENT_FILL_CONNECTIONS_H

#include <nmos_instrument/nmos_instrument.h>

#include "instrument/configuration.h"

namespace virtual_instrument {

/// The whole IS-05 state at the start, staged like active. All six senders are filled, shown or
/// not: no field is left without a meaning. `connections` is zero before.
void fill_connections(const Configuration& configuration, NMOS_IS05_ST& connections);

} // namespace virtual_instrument

#endif
