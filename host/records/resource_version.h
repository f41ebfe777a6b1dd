// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_RESOURCE_VERSION_H
#define NMOS_INSTRUMENT_HOST_RECORDS_RESOURCE_VERSION_H

#include <algorithm>

#include "records/fill_records.h"
#include "records/record_text.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {

/// Gives a resource of IS-04 that has changed its next version.
template <class Resource>
void advance_version(Resource& resource, const TaiTime& now)
{
    const TaiTime previous = parse_tai_time(text_of(resource.version)).value_or(TaiTime());
    set_text(resource.version, to_text(later_than(previous, now)));
}

/// Gives an SDP file that has changed its next version: RFC 4566 5.2 recommends a time and requires
/// that the number increases.
inline void raise_version(SdpSession& session, const TaiTime& now)
{
    session.version = std::min(std::max(session.version + 1, now.seconds), last_sdp_version);
}

} // namespace nmos_instrument::host

#endif
