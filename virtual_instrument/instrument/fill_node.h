// SPDX-License-Identifier: Apache-2.0

#ifndef VIRTUAL_INSTRUMENT_INSTRUMENT_FILL_NODE_H
#define VIRTUAL_INSTRUMENT_INSTRUMENT_FILL_NODE_H

#include <nmos_instrument/nmos_instrument.h>

#include "instrument/configuration.h"
#include "instrument/identity.h"
#include "instrument/tai_time.h"

namespace virtual_instrument {

/// The whole IS-04 state at the start: senders enabled, receivers disabled, every version `now`.
/// `node` is zero before.
void fill_node(const Configuration& configuration, const Identity& identity, const TaiTime& now,
               NMOS_IS04_ST& node);

} // namespace virtual_instrument

#endif
