// SPDX-License-Identifier: Apache-2.0

#include "connection/activation_request.h"

#include <chrono>

#include <fmt/format.h>

#include "records/record_text.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {

std::string_view text_of(ActivationMode mode)
{
    switch (mode) {
    case ActivationMode::immediate:
        return "activate_immediate";
    case ActivationMode::scheduled_absolute:
        return "activate_scheduled_absolute";
    case ActivationMode::scheduled_relative:
        return "activate_scheduled_relative";
    case ActivationMode::none:
        break;
    }
    return null_text;
}

bool is_scheduled(ActivationMode mode)
{
    return mode == ActivationMode::scheduled_absolute || mode == ActivationMode::scheduled_relative;
}

std::optional<TaiTime> due_time(const ActivationRequest& request, const TaiTime& now)
{
    switch (request.mode) {
    case ActivationMode::scheduled_absolute:
        return request.requested_time;
    case ActivationMode::scheduled_relative:
        return sum_of(now, request.requested_time);
    case ActivationMode::none:
    case ActivationMode::immediate:
        break;
    }
    return now;
}

std::string lateness_of_request(const ActivationRequest& request, const TaiTime& now)
{
    if (request.mode != ActivationMode::scheduled_absolute || request.requested_time >= now)
        return "";
    const std::chrono::duration<double> late = span_between(request.requested_time, now);
    // A controller that sends UTC is 37 s behind. Less than a second is how long a request takes.
    const char* const hint = late >= std::chrono::seconds(1) ? " (UTC instead of TAI?)" : "";
    return fmt::format(", {:.3f} s after the requested time{}", late.count(), hint);
}

} // namespace nmos_instrument::host
