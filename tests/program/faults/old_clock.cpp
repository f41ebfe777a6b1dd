// SPDX-License-Identifier: Apache-2.0
//
// A machine without a battery for its clock: preloaded, it makes the system clock an hour before
// 1970. All other clocks are as they are.

#include <ctime>

#include <dlfcn.h>

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    using Function = int (*)(clockid_t, timespec*);
    static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "clock_gettime"));
    const int result = next(clock, time);
    if (result == 0 && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE))
        *time = {-3600, 5};
    return result;
}
