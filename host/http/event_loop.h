// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_EVENT_LOOP_H
#define NMOS_INSTRUMENT_HOST_HTTP_EVENT_LOOP_H

#include <atomic>
#include <thread>

struct MHD_Daemon;

namespace nmos_instrument::host {

/// Runs a libmicrohttpd daemon on a thread of its own.
///
/// libmicrohttpd has such a thread too (MHD_USE_INTERNAL_POLLING_THREAD). With epoll, that one
/// takes 128 events at a time, and after exactly 128 of them it waits for the next event before it
/// looks at what it has: a fixed number of requests would stall. Here the waiting is done outside,
/// and MHD_run() never waits. See "microhttpd-event" and MHD_run() in
/// https://www.gnu.org/software/libmicrohttpd/manual/libmicrohttpd.html
class EventLoop
{
public:
    /// Throws std::system_error.
    EventLoop();

    /// Ends the thread, then the daemon. No connection may be suspended.
    ~EventLoop();

    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    /// The daemon must have been started with MHD_USE_EPOLL and without a thread of its own. From
    /// here on it belongs to the loop. Call it once.
    void start(MHD_Daemon* daemon);

    /// Makes the thread look at the daemon, from any thread: call it after MHD_resume_connection(),
    /// which does not tell a loop that is not libmicrohttpd's.
    void wake() const noexcept;

private:
    void run();
    void wait_for_events() const;

    const int wake_; ///< readable when there is a reason to look
    std::atomic<bool> ends_{false};
    MHD_Daemon* daemon_ = nullptr;
    std::thread thread_;
};

} // namespace nmos_instrument::host

#endif
