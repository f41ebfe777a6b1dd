// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_FILL_NODE_H
#define NMOS_INSTRUMENT_HOST_RECORDS_FILL_NODE_H

#include <nmos_instrument/nmos_instrument.h>

#include "configuration/configuration.h"
#include "records/addresses.h"
#include "records/identity.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {

/// The whole IS-04 state at the start: senders enabled, receivers disabled, every version `now`.
/// `node` must be zero.
void fill_node(const Configuration& configuration, const NodeAddress& address,
               const Identity& identity, const TaiTime& now, NMOS_IS04_ST& node);

} // namespace nmos_instrument::host

#endif
