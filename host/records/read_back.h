// SPDX-License-Identifier: Apache-2.0
//
// Records made into a configuration again: the way back from fill_node, fill_connections and
// fill_settings, for records that somebody else has filled or changed.

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_READ_BACK_H
#define NMOS_INSTRUMENT_HOST_RECORDS_READ_BACK_H

#include "configuration/configuration.h"
#include "records/fill_records.h"

namespace nmos_instrument::host {

/// `rest` with what the records say in place of what it says. What no record says stays: the serial
/// number, where the instrument is reached, registration, advertisement, what receivers may switch
/// to; and the labels and destinations of slots that the selection hides and that are cleared.
///
/// Throws std::invalid_argument with a line for each thing that check_record finds, and for each that
/// this host cannot do: "records: settings.sdp_video_system is 7, allowed are 0 (2160 lines), ...".
Configuration configuration_of(const Records& records, const Configuration& rest);

} // namespace nmos_instrument::host

#endif
