// SPDX-License-Identifier: Apache-2.0

#include "routes/request_counts.h"

#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

using testing::ElementsAre;

HttpAccess access(std::size_t route, std::string method, int status)
{
    return {std::move(method), "/any", "192.0.2.1:1", route, status, {}};
}

/// "/a GET 200 3"
std::vector<std::string> requests(const RequestCounts& counts)
{
    std::vector<std::string> lines;
    counts.visit_requests([&](std::string_view route, std::string_view method,
                              std::string_view status, std::uint64_t count) {
        lines.push_back(std::string(route) + ' ' + std::string(method) + ' ' + std::string(status) +
                        ' ' + std::to_string(count));
    });
    return lines;
}

TEST(RequestCounts, ByRouteMethodAndStatus)
{
    RequestCounts counts({"/a", "/b/{receiver}"});
    EXPECT_THAT(requests(counts), ElementsAre());
    counts.answered(access(1, "GET", 200));
    counts.answered(access(2, "PUT", 503));
    counts.answered(access(1, "GET", 200));
    counts.answered(access(1, "HEAD", 200));
    counts.answered(access(0, "OPTIONS", 404));
    EXPECT_THAT(requests(counts), ElementsAre("none OPTIONS 404 1", "/a GET 200 2", "/a HEAD 200 1",
                                              "/b/{receiver} PUT 503 1"));
}

TEST(RequestCounts, StrangeMethodsAndStatusesCountTogether)
{
    RequestCounts counts({"/a"});
    for (const char* const method : {"BREW", "get", "", "GETT", "CONNECT"})
        counts.answered(access(1, method, 405));
    counts.answered(access(1, "GET", 0)); // the client went away
    counts.answered(access(1, "GET", 418));
    counts.answered(access(1, "GET", -1));
    EXPECT_THAT(requests(counts), ElementsAre("/a GET none 1", "/a GET other 2", "/a other 405 5"));
}

TEST(RequestCounts, OfAllThreads)
{
    RequestCounts counts({"/a"});
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int j = 0; j < 10'000; ++j)
                counts.answered(access(1, "PATCH", 423));
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_THAT(requests(counts), ElementsAre("/a PATCH 423 40000"));
}

TEST(RequestCounts, RefusedChanges)
{
    RequestCounts counts({"/a"});
    counts.refused_change(400);
    counts.refused_change(423);
    counts.refused_change(400);
    std::vector<std::string> lines;
    counts.refusals().visit([&](std::string_view status, std::uint64_t count) {
        lines.push_back(std::string(status) + ' ' + std::to_string(count));
    });
    EXPECT_THAT(lines, ElementsAre("400 2", "423 1"));
    EXPECT_THAT(requests(counts), ElementsAre());
}

} // namespace
} // namespace nmos_instrument::host
