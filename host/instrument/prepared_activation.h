// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_PREPARED_ACTIVATION_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_PREPARED_ACTIVATION_H

#include <array>
#include <string>

#include <nmos_instrument/nmos_instrument.h>

#include "configuration/resource_counts.h"
#include "instrument/activations.h"
#include "instrument/change_outcome.h"

namespace nmos_instrument::host {

/// An activation that has been checked, and has changed nothing yet.
struct PreparedActivation
{
    ScheduledActivation what; ///< due when it was requested, if it was not scheduled
    bool was_scheduled = false;
    std::string requested_time;       ///< as the controller wrote it; "null" for none
    CONNECTION_HALF_IS05_ST staged{}; ///< from its end on
    CONNECTION_HALF_IS05_ST active{}; ///< likewise; the time of its activation may still change
    std::array<std::string, leg_count> interface_addresses; ///< with which both fit the records
    ActivationReport report;                                ///< but for its end
    ChangeLog log;
    std::string remark; ///< for the line of what was done
};

} // namespace nmos_instrument::host

#endif
