// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_DISCOVERY_STOP_REQUEST_H
#define NMOS_INSTRUMENT_HOST_DISCOVERY_STOP_REQUEST_H

#include <atomic>
#include <chrono>

namespace nmos_instrument::host {

/// Asks a thread that waits for descriptors to stop; once made it stays.
class StopRequest
{
public:
    /// Throws std::system_error if the system has no more descriptors.
    StopRequest();
    ~StopRequest();

    StopRequest(const StopRequest&) = delete;
    StopRequest& operator=(const StopRequest&) = delete;

    void make() noexcept;
    bool is_made() const noexcept { return made_; }

    /// Readable from the request on; nobody may read from it.
    int descriptor() const noexcept { return descriptor_; }

    /// Waits for the request, at most this long; true if it has been made.
    bool made_within(std::chrono::milliseconds time) const noexcept;

private:
    const int descriptor_;
    std::atomic<bool> made_{false};
};

} // namespace nmos_instrument::host

#endif
