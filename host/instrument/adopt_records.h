// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_ADOPT_RECORDS_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_ADOPT_RECORDS_H

#include <memory>

#include <nmos_instrument/nmos_instrument.h>

#include "configuration/configuration.h"
#include "records/addresses.h"
#include "records/fill_records.h"
#include "records/stream_selection.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {

/// Records that fit a configuration, and the other way round: what an instrument is made of.
struct FilledRecords
{
    std::unique_ptr<Records> records;
    Configuration configuration;
};

/// Those of a configuration.
FilledRecords filled_records(const Configuration& configuration, const NodeAddress& address,
                             const TaiTime& now);

/// Those that somebody else has filled, their ids included. `rest` has what no record says. The host
/// writes into them what is its own: where it is reached, all versions (`now`), the SDP sessions, the
/// subscriptions of senders and receivers, whose active halves say what they are; of a receiver that
/// has no interface yet ("null") the one of each leg. Nothing is scheduled.
///
/// Throws std::invalid_argument as configuration_of does.
FilledRecords adopt_records(const NMOS_IS04_ST& node, const NMOS_IS05_ST& connections,
                            const st_param_sys& settings, const StreamSelection& selection,
                            const Configuration& rest, const NodeAddress& address,
                            const TaiTime& now);

/// What the active halves of the connections say, in the node.
void follow_connections(Records& records);

} // namespace nmos_instrument::host

#endif
