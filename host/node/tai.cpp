// SPDX-License-Identifier: Apache-2.0

#include <nmos_instrument_host/tai.h>

#include "time/tai_clock.h"

namespace nmos_instrument_host {

TaiTime tai_now()
{
    const nmos_instrument::host::TaiTime now = nmos_instrument::host::tai_now();
    return {now.seconds, now.nanoseconds};
}

} // namespace nmos_instrument_host
