// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_RESOURCE_VERSION_H
#define NMOS_INSTRUMENT_HOST_RECORDS_RESOURCE_VERSION_H

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

} // namespace nmos_instrument::host

#endif
