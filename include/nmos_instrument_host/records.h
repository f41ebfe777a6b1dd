// SPDX-License-Identifier: Apache-2.0
//
// The records of an instrument, as the host library hands them out and takes them in.

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_H
#define NMOS_INSTRUMENT_HOST_RECORDS_H

#include "nmos_instrument/codes.h"
#include "nmos_instrument/connection_state.h"
#include "nmos_instrument/node_state.h"
#include "nmos_instrument/system_parameters.h"

namespace nmos_instrument_host {

/// The records of a running instrument; see Instrument::records.
struct Records
{
    NMOS_IS04_ST& node;
    NMOS_IS05_ST& connections;
    st_param_sys& settings;
};

/// Records that you have filled, for example by default_records.h. They are copied.
///
/// The host needs of them: ids of your own; API version "v1.2"; one clock; two interfaces; one device
/// whose first control is the Connection API; 3 sources and flows (video, audio, ancillary data) and 6
/// senders, or 1 and 4, video only; 24 receivers. What the selectors hide may be cleared, or left out
/// at the end of its array. `endpoints`, `href`, the hrefs of the device and the senders, subscriptions,
/// SDP sessions and all versions are the host's: it writes them.
struct FilledRecords
{
    const NMOS_IS04_ST& node;
    const NMOS_IS05_ST& connections;
    const st_param_sys& settings;
    nmos_instrument::Selection selection;
};

} // namespace nmos_instrument_host

#endif
