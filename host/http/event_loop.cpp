// SPDX-License-Identifier: Apache-2.0

#include "http/event_loop.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <system_error>

#include <microhttpd.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace nmos_instrument::host {

EventLoop::EventLoop() : wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (wake_ < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
}

EventLoop::~EventLoop()
{
    ends_ = true;
    wake();
    if (thread_.joinable())
        thread_.join();
    if (daemon_ != nullptr)
        MHD_stop_daemon(daemon_);
    close(wake_);
}

void EventLoop::start(MHD_Daemon* daemon)
{
    daemon_ = daemon;
    thread_ = std::thread([this] { run(); });
}

void EventLoop::wake() const noexcept
{
    // It fails only if it is readable anyway.
    eventfd_write(wake_, 1);
}

void EventLoop::run()
{
    while (!ends_) {
        wait_for_events();
        // What fails again and again does not take a CPU.
        if (MHD_run(daemon_) != MHD_YES)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

void EventLoop::wait_for_events() const
{
    MHD_UNSIGNED_LONG_LONG limit = 0;
    // Such as a connection that has more to do although nothing has arrived for it.
    const bool limited = MHD_get_timeout(daemon_, &limit) == MHD_YES;
    const int longest =
        limited ? static_cast<int>(std::min<MHD_UNSIGNED_LONG_LONG>(limit, INT_MAX)) : -1;
    const int events = MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd;
    std::array<pollfd, 2> both{{{events, POLLIN, 0}, {wake_, POLLIN, 0}}};
    // A failure, such as the interruption by a signal, is an occasion to look as well.
    if (poll(both.data(), both.size(), longest) > 0 && both[1].revents != 0) {
        eventfd_t count = 0;
        eventfd_read(wake_, &count);
    }
}

} // namespace nmos_instrument::host
