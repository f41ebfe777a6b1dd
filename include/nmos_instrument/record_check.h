// SPDX-License-Identifier: Apache-2.0
//
// Tells a host what is wrong with its records before they reach the network.
//
// The operations of the API classes take every record as it is and never call these checks. A host
// calls them in its tests, or once after it filled a record.

#ifndef NMOS_INSTRUMENT_RECORD_CHECK_H
#define NMOS_INSTRUMENT_RECORD_CHECK_H

#include <string>
#include <vector>

#include "nmos_instrument/connection_state.h"
#include "nmos_instrument/export.h"
#include "nmos_instrument/node_state.h"
#include "nmos_instrument/system_parameters.h"

namespace nmos_instrument {

/// One message per finding, in the order of the record's fields; empty when nothing is wrong. A
/// message names the field's path, its value and the rule:
/// "receivers[4].subscription_count is 12, at most 10 are allowed".
NMOS_INSTRUMENT_EXPORT std::vector<std::string> check_record(const NMOS_IS04_ST& record);

/// As above. All 24 receivers that the record declares are checked.
NMOS_INSTRUMENT_EXPORT std::vector<std::string> check_record(const NMOS_IS05_ST& record);

/// As above.
NMOS_INSTRUMENT_EXPORT std::vector<std::string> check_record(const st_param_sys& record);

} // namespace nmos_instrument

#endif
