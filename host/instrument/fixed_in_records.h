// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_FIXED_IN_RECORDS_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_FIXED_IN_RECORDS_H

#include "records/fill_records.h"
#include "records/record_findings.h"

namespace nmos_instrument::host {

/// A finding for everything in `after` that cannot change while an instrument runs: how many resources
/// of each kind there are, their ids, what belongs to what, the selectors, and where it is reached.
void check_fixed(const Records& before, const Records& after, RecordFindings& findings);

/// Puts back what the instrument itself writes: all versions, the SDP sessions, and what a staged half
/// says of a scheduled activation.
void put_back_own(const Records& before, Records& after);

} // namespace nmos_instrument::host

#endif
