// SPDX-License-Identifier: Apache-2.0

#include "discovery/mdns_browser.h"

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "test_bus.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// A bus that takes connections and says nothing.
class SilentBus
{
public:
    SilentBus() : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        test_bus_path().string().copy(address.sun_path, sizeof address.sun_path - 1);
        bound_ = bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
                 listen(socket_, 10) == 0;
    }
    ~SilentBus()
    {
        close(socket_);
        unlink(test_bus_path().c_str());
    }
    SilentBus(const SilentBus&) = delete;
    SilentBus& operator=(const SilentBus&) = delete;

    bool is_bound() const { return bound_; }

private:
    int socket_;
    bool bound_ = false;
};

TEST(MdnsBrowser, WithoutABusThereIsNothingToWaitFor)
{
    test_bus_path();
    std::promise<void> changed;
    const auto before = Clock::now();
    {
        const MdnsBrowser browser([&] { changed.set_value(); }, Log());
        ASSERT_EQ(changed.get_future().wait_for(10s), std::future_status::ready);
        EXPECT_TRUE(browser.has_looked());
        EXPECT_TRUE(browser.found().empty());
    }
    EXPECT_LT(Clock::now() - before, 5s);
}

TEST(MdnsBrowser, ABusThatHangsHoldsUpNobody)
{
    const SilentBus bus;
    ASSERT_TRUE(bus.is_bound());
    std::atomic<int> changes = 0;
    auto browser = std::make_unique<MdnsBrowser>([&] { ++changes; }, Log());
    std::this_thread::sleep_for(200ms);
    EXPECT_FALSE(browser->has_looked());
    const auto before = Clock::now();
    browser.reset();
    EXPECT_LT(Clock::now() - before, 5s);
    EXPECT_EQ(changes, 0);
}

} // namespace
} // namespace nmos_instrument::host
