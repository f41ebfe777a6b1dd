// SPDX-License-Identifier: Apache-2.0
//
// What the log says when an instrument has started.

#ifndef NMOS_INSTRUMENT_HOST_NODE_START_LOG_H
#define NMOS_INSTRUMENT_HOST_NODE_START_LOG_H

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
    std::string place; ///< where it listens
    unsigned connection_limit = 0;
};

/// What somebody who only has the log wants to know first.
void log_start(const Log& log, Instrument& instrument, const StartedFrom& from);

/// Says so if others cannot reach what is listened at, or what they are told.
void log_reach(const Log& log, const ListenAt& listen, Instrument& instrument);

} // namespace nmos_instrument::host

#endif
