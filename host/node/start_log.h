// SPDX-License-Identifier: Apache-2.0
//
// What the log says when an instrument has started.

#ifndef NMOS_INSTRUMENT_HOST_NODE_START_LOG_H
#define NMOS_INSTRUMENT_HOST_NODE_START_LOG_H

#include <optional>
#include <string>

#include "instrument/instrument.h"
#include "log/log.h"
#include "network/listen_at.h"

namespace nmos_instrument::host {

/// Names as messages call them; empty: there is none.
struct StartedFrom
{
    std::string configuration;
    std::string state_file;
    std::string place; ///< where it listens; empty: at nothing of its own
    unsigned connection_limit = 0;
};

/// What somebody who only has the log wants to know first.
void log_start(const Log& log, Instrument& instrument, const StartedFrom& from);

/// Says so if others cannot reach what is listened at, or what they are told.
/// `listen`: nothing if a server of the host does.
void log_reach(const Log& log, const std::optional<ListenAt>& listen, Instrument& instrument);

} // namespace nmos_instrument::host

#endif
