// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_UNFINISHED_CHANGE_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_UNFINISHED_CHANGE_H

#include <array>
#include <cstdint>
#include <type_traits>

#include <nmos_instrument/nmos_instrument.h>

#include "connection/connection_patch.h"
#include "instrument/put_back.h"
#include "records/fill_records.h"

namespace nmos_instrument::host {

/// A change of one connection that is under way. Unless it is finished, all that it may touch is
/// put back at the end of the scope: a change that throws half-way, for want of memory or because
/// the hardware refuses, leaves the records as they were.
class UnfinishedChange
{
public:
    UnfinishedChange(Records& records, Nmos& counters, const ConnectionKey& key);

    /// From here on the change stays.
    void finish();

private:
    using Version = std::remove_reference_t<decltype(RECEIVER_IS04_ST::version)>;

    PutBack<CONNECTION_IS05_ST> connection_;
    PutBack<Version> version_;
    PutBack<SUBSCRIPTION_IS04_ST> subscription_;
    PutBack<decltype(NMOS_IS04_ST::version_seconds)> node_seconds_;
    PutBack<decltype(NMOS_IS04_ST::version_nanoseconds)> node_nanoseconds_;
    PutBack<decltype(Records::sdp_sessions)> sdp_sessions_;
    PutBack<int> counter_;
};

} // namespace nmos_instrument::host

#endif
