// SPDX-License-Identifier: Apache-2.0
//
// What check_record finds in each record, less what the selectors hide, for check_records too.

#ifndef NMOS_INSTRUMENT_SRC_RECORD_CHECK_CHECKS_H
#define NMOS_INSTRUMENT_SRC_RECORD_CHECK_CHECKS_H

#include "nmos_instrument/codes.h"
#include "nmos_instrument/connection_state.h"
#include "nmos_instrument/node_state.h"
#include "nmos_instrument/system_parameters.h"
#include "record_check/rules.h"

namespace nmos_instrument {

/// A host with fewer senders or receivers than the record can hold leaves the others cleared.
bool is_in_use(const CONNECTION_IS05_ST& connection);

/// Whether a sender that is shown is in use.
bool has_sdp_files(const NMOS_IS05_ST& record, const Selection& selection);

void check_node(const RecordPart& node, const NMOS_IS04_ST& record, const Selection& selection);
void check_connections(const RecordPart& whole, const NMOS_IS05_ST& record,
                       const Selection& selection);
void check_settings(const RecordPart& whole, const st_param_sys& record);

} // namespace nmos_instrument

#endif
