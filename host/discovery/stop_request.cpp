// SPDX-License-Identifier: Apache-2.0

#include "discovery/stop_request.h"

#include <cerrno>
#include <system_error>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace nmos_instrument::host {

StopRequest::StopRequest() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (descriptor_ < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
}

StopRequest::~StopRequest()
{
    close(descriptor_);
}

void StopRequest::make() noexcept
{
    made_ = true;
    // It fails only if it is readable anyway.
    eventfd_write(descriptor_, 1);
}

bool StopRequest::made_within(std::chrono::milliseconds time) const noexcept
{
    pollfd event{descriptor_, POLLIN, 0};
    // If a signal ends it early the caller looks once more than needed.
    poll(&event, 1, static_cast<int>(time.count()));
    return made_;
}

} // namespace nmos_instrument::host
