// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONNECTION_ACTIVATION_REQUEST_H
#define NMOS_INSTRUMENT_HOST_CONNECTION_ACTIVATION_REQUEST_H

#include <optional>
#include <string>
#include <string_view>

#include "time/tai_time.h"

namespace nmos_instrument::host {

enum class ActivationMode
{
    none, ///< "mode": null; cancels what is scheduled
    immediate,
    scheduled_absolute,
    scheduled_relative
};

/// As IS-05 writes it; "null" for none.
std::string_view text_of(ActivationMode mode);

struct ActivationRequest
{
    ActivationMode mode = ActivationMode::none;
    TaiTime requested_time;          ///< scheduled modes only
    std::string requested_time_text; ///< as the controller wrote it

    bool operator==(const ActivationRequest&) const = default;
};

/// "activate_scheduled_absolute" and "activate_scheduled_relative"
bool is_scheduled(ActivationMode mode);

/// When an activation that is requested `now` has to happen; this may be in the past. Nothing if it
/// is later than a TAI clock can show.
std::optional<TaiTime> due_time(const ActivationRequest& request, const TaiTime& now);

/// For a log: how long ago a requested absolute time was, like ", 37.000 s after the requested time
/// (UTC instead of TAI?)". Empty if it is not in the past.
std::string lateness_of_request(const ActivationRequest& request, const TaiTime& now);

} // namespace nmos_instrument::host

#endif
