// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_RESTORE_FROM_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_RESTORE_FROM_H

#include "instrument/instrument.h"
#include "instrument/replaced_file.h"
#include "log/log.h"

namespace nmos_instrument::host {

enum class StateReset
{
    no,
    yes ///< the file becomes <file>.previous, and nothing is restored
};

/// Restores the state in the file to the instrument. A missing file means a first start; a damaged
/// one is renamed, and the log says so. If the configuration lacks some of the saved senders and
/// receivers, <file>.previous keeps a copy. Throws std::runtime_error for a file that cannot be
/// read, and for one of another instrument: the configuration has none of its senders and receivers.
void restore_from(const ReplacedFile& file, Instrument& instrument, StateReset reset,
                  const Log& log);

} // namespace nmos_instrument::host

#endif
