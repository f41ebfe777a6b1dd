// SPDX-License-Identifier: Apache-2.0
//
// What this host supposes of every record beyond what the library checks: how many resources there
// are, and what belongs to what.

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_RECORD_SHAPE_H
#define NMOS_INSTRUMENT_HOST_RECORDS_RECORD_SHAPE_H

#include <cstddef>
#include <string>
#include <vector>

#include <nmos_instrument/nmos_instrument.h>

#include "configuration/configuration.h"
#include "records/fill_records.h"
#include "records/record_findings.h"

namespace nmos_instrument::host {

/// Whether there is a sender at this position. A slot that the selection hides may be cleared.
bool has_sender(const NMOS_IS04_ST& node, std::size_t sender);
bool has_receiver(const NMOS_IS04_ST& node, std::size_t receiver);

/// The selection and the number of senders in words.
StreamSettings streams_of(const Records& records, RecordFindings& findings);

/// The counts. Nothing else of the records may be read if there are findings.
void check_counts(const NMOS_IS04_ST& node, const StreamSettings& streams,
                  RecordFindings& findings);

/// What check_records finds, and check_record in the connections of slots that the selection hides: they
/// are saved like the others.
std::vector<std::string> findings_in(const Records& records);

/// The ids and names by which resources refer to each other.
void check_references(const NMOS_IS04_ST& node, RecordFindings& findings);

} // namespace nmos_instrument::host

#endif
