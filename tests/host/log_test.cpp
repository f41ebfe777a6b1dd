// SPDX-License-Identifier: Apache-2.0

#include "log/log.h"

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

/// Cannot be written: there is no memory for it, or it throws something else.
struct Unwritable
{
    bool for_lack_of_memory;
};

} // namespace
} // namespace nmos_instrument::host

template <>
struct fmt::formatter<nmos_instrument::host::Unwritable> : fmt::formatter<int>
{
    fmt::appender format(const nmos_instrument::host::Unwritable& value,
                         fmt::format_context& /*context*/) const
    {
        if (value.for_lack_of_memory)
            throw std::bad_alloc();
        throw std::runtime_error("it is unwritable");
    }
};

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;

using Line = std::pair<LogLevel, std::string>;
using Lines = std::vector<Line>;

Log log_into(Lines& lines, LogLevel least = LogLevel::debug)
{
    return {least,
            [&lines](LogLevel level, std::string_view line) { lines.emplace_back(level, line); }};
}

TEST(Log, WithoutAReaderWantsNothing)
{
    Log log;
    EXPECT_FALSE(log.wants(LogLevel::error));
    log.error("nobody reads this: {}", 1);
    log.line(LogLevel::error, "nor this");
    log.end();
    Log(LogLevel::debug, {}).error("nor this");
}

TEST(Log, WritesValuesWithTheirLevel)
{
    Lines lines;
    const Log log = log_into(lines);
    log.debug("{} requests", 3);
    log.info("{}: {:.3f} s", "receiver", 0.25);
    log.warning("no values");
    log.error("{}", std::string("a text"));
    log.formatted(LogLevel::info, "{1} {0}", "second", "first");
    log.line(LogLevel::warning, "{} as it is");
    EXPECT_EQ(lines, (Lines{{LogLevel::debug, "3 requests"},
                            {LogLevel::info, "receiver: 0.250 s"},
                            {LogLevel::warning, "no values"},
                            {LogLevel::error, "a text"},
                            {LogLevel::info, "first second"},
                            {LogLevel::warning, "{} as it is"}}));
}

TEST(Log, LeavesOutWhatIsLessImportant)
{
    Lines lines;
    const Log log = log_into(lines, LogLevel::warning);
    EXPECT_FALSE(log.wants(LogLevel::debug));
    EXPECT_FALSE(log.wants(LogLevel::info));
    EXPECT_TRUE(log.wants(LogLevel::warning));
    EXPECT_TRUE(log.wants(LogLevel::error));
    log.debug("1");
    log.info("2");
    log.warning("3");
    log.error("4");
    log.line(LogLevel::info, "5");
    EXPECT_EQ(lines, (Lines{{LogLevel::warning, "3"}, {LogLevel::error, "4"}}));
}

TEST(Log, LongLinesAreWhole)
{
    Lines lines;
    log_into(lines).info("{}|{}", std::string(10'000, 'a'), std::string(10'000, 'b'));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].second, std::string(10'000, 'a') + '|' + std::string(10'000, 'b'));
}

TEST(Log, CopiesShareOneDestination)
{
    Lines lines;
    Log log = log_into(lines);
    const Log copy = log;
    copy.info("1");
    log.info("2");
    log.end();
    copy.info("3");
    EXPECT_EQ(lines, (Lines{{LogLevel::info, "1"}, {LogLevel::info, "2"}}));
}

TEST(Log, SwallowsWhatItsReaderThrows)
{
    int calls = 0;
    const Log log(LogLevel::debug, [&calls](LogLevel, std::string_view) {
        if (++calls == 1)
            throw std::runtime_error("the disk is full");
        throw 1;
    });
    log.info("1");
    log.info("2");
    log.info("3");
    EXPECT_EQ(calls, 3);
}

TEST(Log, SaysThatALineIsLost)
{
    Lines lines;
    const Log log = log_into(lines);
    log.warning("{}", Unwritable{true});
    log.info("{}", Unwritable{false});
    EXPECT_EQ(lines, (Lines{{LogLevel::warning, "a line of the log was lost: no memory"},
                            {LogLevel::info,
                             "a line of the log was lost: one of its values cannot be written"}}));
}

TEST(Log, ItsReaderMayLogWhichIsLost)
{
    Lines lines;
    Log log;
    log = Log(LogLevel::debug, [&](LogLevel level, std::string_view line) {
        log.info("heard {}", line);
        lines.emplace_back(level, line);
    });
    log.info("1");
    log.info("2");
    EXPECT_EQ(lines, (Lines{{LogLevel::info, "1"}, {LogLevel::info, "2"}}));
}

TEST(Log, ItsReaderMayEndIt)
{
    Lines lines;
    Log log;
    log = Log(LogLevel::debug, [&](LogLevel level, std::string_view line) {
        log.end();
        lines.emplace_back(level, line);
    });
    log.info("1");
    log.info("2");
    EXPECT_EQ(lines, (Lines{{LogLevel::info, "1"}}));
}

TEST(Log, TellsOneLineAtATime)
{
    constexpr int lines_each = 1'000;
    std::atomic<int> inside = 0;
    bool was_alone = true;
    int count = 0;
    const Log log(LogLevel::debug, [&](LogLevel, std::string_view) {
        was_alone = was_alone && ++inside == 1;
        ++count;
        std::this_thread::yield();
        --inside;
    });
    const auto write_all = [&log] {
        for (int i = 0; i < lines_each; ++i)
            log.info("{}", i);
    };
    std::thread other(write_all);
    write_all();
    other.join();
    EXPECT_TRUE(was_alone);
    EXPECT_EQ(count, 2'000); // of both threads
}

TEST(Log, ItsEndWaitsForACallUnderWay)
{
    std::promise<void> begun;
    std::promise<void> may_return;
    std::atomic<bool> has_returned = false;
    std::atomic<int> calls = 0;
    Log log(LogLevel::debug, [&](LogLevel, std::string_view) {
        ++calls;
        begun.set_value();
        may_return.get_future().wait();
        has_returned = true;
    });
    std::thread left_behind([copy = log] {
        copy.info("1");
        copy.info("2");
    });
    begun.get_future().wait();
    std::future<bool> end = std::async(std::launch::async, [&] {
        log.end();
        return has_returned.load();
    });
    EXPECT_EQ(end.wait_for(50ms), std::future_status::timeout);
    may_return.set_value();
    EXPECT_TRUE(end.get());
    const int calls_at_end = calls;
    left_behind.join();
    EXPECT_EQ(calls, calls_at_end);
}

TEST(Log, ItsEndLetsItsReaderGo)
{
    const auto held = std::make_shared<int>(1);
    Log log(LogLevel::debug, [held](LogLevel, std::string_view) {});
    const Log of_a_thread_left_behind = log;
    EXPECT_EQ(held.use_count(), 2);
    log.end();
    EXPECT_EQ(held.use_count(), 1);
}

} // namespace
} // namespace nmos_instrument::host
