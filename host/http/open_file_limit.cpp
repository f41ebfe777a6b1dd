// SPDX-License-Identifier: Apache-2.0

#include "http/open_file_limit.h"

#include <algorithm>

#include <sys/resource.h>

namespace nmos_instrument::host {

unsigned make_room_for_connections(unsigned wanted)
{
    // The log, the state file, the manifests that are being fetched, and some of the server's own.
    constexpr rlim_t other_files = 128;

    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return wanted;
    const rlim_t needed = wanted + other_files;
    if (limit.rlim_cur != RLIM_INFINITY && limit.rlim_cur < needed) {
        rlimit raised{needed, std::max(limit.rlim_max, needed)};
        // The hard limit belongs to the administrator: only a privileged process may raise it.
        if (setrlimit(RLIMIT_NOFILE, &raised) != 0) {
            raised = {std::min(limit.rlim_max, needed), limit.rlim_max};
            if (setrlimit(RLIMIT_NOFILE, &raised) != 0)
                raised = limit;
        }
        limit = raised;
    }
    if (limit.rlim_cur == RLIM_INFINITY || limit.rlim_cur >= needed)
        return wanted;
    const rlim_t room =
        limit.rlim_cur > 2 * other_files ? limit.rlim_cur - other_files : limit.rlim_cur / 2;
    return static_cast<unsigned>(room);
}

} // namespace nmos_instrument::host
