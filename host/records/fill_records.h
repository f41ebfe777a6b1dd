// SPDX-License-Identifier: Apache-2.0
//
// Makes the records that the library reads from the configuration. The node, the connections and
// the settings get their first values here only, so that they agree.

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_FILL_RECORDS_H
#define NMOS_INSTRUMENT_HOST_RECORDS_FILL_RECORDS_H

#include <array>
#include <cstdint>
#include <limits>
#include <memory>

#include <nmos_instrument/nmos_instrument.h>

#include "configuration/configuration.h"
#include "records/addresses.h"
#include "records/stream_selection.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {

/// Far more than any clock shows, and far from where the number would begin again at 0.
constexpr std::uint64_t last_sdp_version = std::numeric_limits<std::int64_t>::max();

/// The `o=` line of one sender's SDP file (RFC 4566 5.2).
struct SdpSession
{
    std::uint64_t id = 0;
    std::uint64_t version = 0; ///< increases whenever the file changes, to last_sdp_version

    bool operator==(const SdpSession&) const = default;
};

/// Everything that the library reads about one instrument. About 400 kB: keep it on the heap.
struct Records
{
    NMOS_IS04_ST node;
    NMOS_IS05_ST connections;
    st_param_sys settings;
    StreamSelection selection;
    /// One for each sender. The library's record has room for only one, see set_sdp_session.
    std::array<SdpSession, sender_count> sdp_sessions;
};

/// The records at the start: senders enabled, receivers disabled, all versions `now`.
/// `configuration` comes from parse_configuration, or is the default. Throws std::logic_error if
/// the library finds anything wrong with the records: that is a mistake of this program.
std::unique_ptr<Records> make_records(const Configuration& configuration,
                                      const NodeAddress& address, const TaiTime& now);

/// Call it before ConnectionApi::make_single_senderid_sdp for `sender`.
void set_sdp_session(Records& records, std::size_t sender);

/// The video format code for ConnectionApi::analyze_sdp_file: only its class matters.
short current_format(const Configuration& configuration);

} // namespace nmos_instrument::host

#endif
