// SPDX-License-Identifier: Apache-2.0

#include "discovery/discovery.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "test_bus.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;

/// What a discovery tells.
class Told
{
public:
    void tell(const std::vector<Registry>& registries)
    {
        const std::lock_guard lock(mutex_);
        lists_.push_back(registries);
        told_.notify_all();
    }

    bool wait_for(std::size_t count)
    {
        std::unique_lock lock(mutex_);
        return told_.wait_for(lock, 20s, [&] { return lists_.size() >= count; });
    }

    std::size_t count()
    {
        const std::lock_guard lock(mutex_);
        return lists_.size();
    }

private:
    std::mutex mutex_;
    std::condition_variable told_;
    std::vector<std::vector<Registry>> lists_;
};

/// On a machine without a bus, in a domain that nobody has (RFC 6761 6.4).
class DiscoveryTest : public testing::Test
{
protected:
    void SetUp() override { test_bus_path(); }

    const DiscoveryOptions options_{.dns_domain = "invalid"};
    Told told_;
};

TEST_F(DiscoveryTest, EachSearchEndsWithAList)
{
    Discovery discovery(options_, Log(), [&](const auto& registries) { told_.tell(registries); });
    ASSERT_TRUE(told_.wait_for(1));
    discovery.search();
    ASSERT_TRUE(told_.wait_for(2));
}

TEST_F(DiscoveryTest, AfterItsEndNothingIsTold)
{
    for (int i = 0; i < 5; ++i) {
        {
            Discovery discovery(options_, Log(),
                                [&](const auto& registries) { told_.tell(registries); });
            discovery.search();
        }
        const auto told_until_its_end = told_.count();
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        EXPECT_EQ(told_.count(), told_until_its_end);
    }
}

TEST_F(DiscoveryTest, AFailureOfTheListenerIsTriedAgain)
{
    int calls = 0;
    Discovery discovery(options_, Log(), [&](const auto& registries) {
        if (++calls == 1)
            throw std::runtime_error("no memory, perhaps");
        told_.tell(registries);
    });
    EXPECT_TRUE(told_.wait_for(1));
}

} // namespace
} // namespace nmos_instrument::host
