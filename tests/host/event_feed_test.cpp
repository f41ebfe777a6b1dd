// SPDX-License-Identifier: Apache-2.0

#include "events/event_feed.h"

#include <map>
#include <new>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;

// Paths that say what the test says, and a clock that stands still until the test moves it.
struct World
{
    std::map<std::string, std::string> texts{{"/a", "1"}, {"/b", "2"}, {"/slow", "3"}};
    std::vector<std::string> reads;
    EventFeed::TimePoint now{std::chrono::hours(1)};

    EventFeed feed{{{.path = "/a"}, {.path = "/b"}, {.path = "/slow", .interval = 1s}},
                   [this](const std::string& path) -> std::optional<std::string> {
                       reads.push_back(path);
                       const auto found = texts.find(path);
                       if (found == texts.end())
                           return std::nullopt;
                       return found->second;
                   },
                   [this] { return now; }};
};

TEST(EventFeed, FirstTellsEverythingThenWhatChanges)
{
    World world;
    const auto watcher = world.feed.watch("192.0.2.1");
    ASSERT_TRUE(watcher);
    EXPECT_EQ(watcher->next(),
              "retry: 1000\nevent: all\ndata: {\"/a\":1,\"/b\":2,\"/slow\":3}\n\n");
    EXPECT_EQ(watcher->next(), "");
    world.texts["/b"] = "[\"two\"]";
    world.now += 200ms;
    EXPECT_EQ(watcher->next(), "event: changes\ndata: {\"/b\":[\"two\"]}\n\n");
    EXPECT_EQ(watcher->next(), "");
    world.now += 200ms;
    EXPECT_EQ(watcher->next(), "");
}

TEST(EventFeed, ReadsEachPathAtMostOnceInItsInterval)
{
    World world;
    const auto watcher = world.feed.watch("192.0.2.1");
    EXPECT_EQ(world.reads, (std::vector<std::string>{}));
    static_cast<void>(watcher->next());
    EXPECT_EQ(world.reads, (std::vector<std::string>{"/a", "/b", "/slow"}));
    world.reads.clear();
    world.now += 199ms;
    world.texts["/a"] = "10";
    world.texts["/slow"] = "30";
    EXPECT_EQ(watcher->next(), "");
    EXPECT_EQ(world.reads, (std::vector<std::string>{}));
    world.now += 1ms;
    EXPECT_EQ(watcher->next(), "event: changes\ndata: {\"/a\":10}\n\n");
    EXPECT_EQ(world.reads, (std::vector<std::string>{"/a", "/b"}));
    world.now += 799ms;
    EXPECT_EQ(watcher->next(), "");
    world.now += 1ms;
    EXPECT_EQ(watcher->next(), "event: changes\ndata: {\"/slow\":30}\n\n");
}

TEST(EventFeed, ReadsOnceForAllWatchers)
{
    World world;
    const auto first = world.feed.watch("192.0.2.1");
    const auto second = world.feed.watch("192.0.2.1");
    static_cast<void>(first->next());
    world.texts["/a"] = "10";
    world.now += 100ms;
    EXPECT_EQ(second->next(), "retry: 1000\nevent: all\ndata: {\"/a\":1,\"/b\":2,\"/slow\":3}\n\n");
    EXPECT_EQ(world.reads.size(), 3);
    world.now += 100ms;
    EXPECT_EQ(first->next(), "event: changes\ndata: {\"/a\":10}\n\n");
    EXPECT_EQ(second->next(), "event: changes\ndata: {\"/a\":10}\n\n");
    EXPECT_EQ(world.reads.size(), 5);
}

TEST(EventFeed, ASlowWatcherGetsTheLatestTexts)
{
    World world;
    const auto quick = world.feed.watch("192.0.2.1");
    const auto slow = world.feed.watch("192.0.2.1");
    static_cast<void>(quick->next());
    static_cast<void>(slow->next());
    for (const char* const text : {"10", "11", "12"}) {
        world.texts["/a"] = text;
        world.now += 200ms;
        EXPECT_EQ(quick->next(), std::string("event: changes\ndata: {\"/a\":") + text + "}\n\n");
    }
    world.texts["/b"] = "20";
    world.now += 200ms;
    EXPECT_EQ(slow->next(), "event: changes\ndata: {\"/a\":12,\"/b\":20}\n\n");
    EXPECT_EQ(slow->next(), "");
}

// Nobody has seen what was there between two looks.
TEST(EventFeed, WhatIsAsBeforeAgainIsNoChange)
{
    World world;
    const auto watcher = world.feed.watch("192.0.2.1");
    static_cast<void>(watcher->next());
    world.texts["/a"] = "10";
    world.now += 100ms;
    EXPECT_EQ(watcher->next(), "");
    world.texts["/a"] = "1";
    world.now += 100ms;
    EXPECT_EQ(watcher->next(), "");
}

TEST(EventFeed, WhatCannotBeReadIsLeftOutUntilItCan)
{
    World world;
    world.texts.erase("/a");
    const auto watcher = world.feed.watch("192.0.2.1");
    EXPECT_EQ(watcher->next(), "retry: 1000\nevent: all\ndata: {\"/b\":2,\"/slow\":3}\n\n");
    world.texts["/a"] = "1";
    world.now += 200ms;
    EXPECT_EQ(watcher->next(), "event: changes\ndata: {\"/a\":1}\n\n");
    world.texts.erase("/a");
    world.now += 200ms;
    EXPECT_EQ(watcher->next(), "");
    world.texts["/a"] = "1";
    world.now += 200ms;
    EXPECT_EQ(watcher->next(), "");
}

TEST(EventFeed, NothingAtAllIsAnEmptyObject)
{
    World world;
    world.texts.clear();
    const auto watcher = world.feed.watch("192.0.2.1");
    EXPECT_EQ(watcher->next(), "retry: 1000\nevent: all\ndata: {}\n\n");
    EXPECT_EQ(watcher->next(), "");
}

// A line of an event ends at "\n", "\r" or both.
TEST(EventFeed, EachLineOfATextIsALineOfData)
{
    World world;
    world.texts = {{"/a", "{\n \"x\": 1\n}\n"}, {"/b", "[\r\n]"}};
    const auto watcher = world.feed.watch("192.0.2.1");
    EXPECT_EQ(watcher->next(), "retry: 1000\nevent: all\n"
                               "data: {\"/a\":{\n"
                               "data:  \"x\": 1\n"
                               "data: }\n"
                               "data: ,\"/b\":[\n"
                               "data: \n"
                               "data: ]}\n\n");
}

TEST(EventFeed, HasPlacesForSoManyWatchers)
{
    World world;
    std::vector<std::shared_ptr<HttpStream>> watchers;
    for (const char* const client : {"192.0.2.1", "192.0.2.2", "192.0.2.3", "192.0.2.4"}) {
        for (int i = 0; i < 32; ++i) {
            watchers.push_back(world.feed.watch(client));
            EXPECT_TRUE(watchers.back()) << client << ' ' << i;
        }
        EXPECT_FALSE(world.feed.watch(client));
    }
    EXPECT_FALSE(world.feed.watch("192.0.2.5"));
    watchers.pop_back();
    EXPECT_FALSE(world.feed.watch("192.0.2.1"));
    EXPECT_TRUE(world.feed.watch("192.0.2.5"));
}

// A watcher whose connection ends for want of memory has cost the others nothing.
TEST(EventFeed, AReadThatThrowsLosesNoChange)
{
    bool throws = false;
    std::map<std::string, std::string> texts{{"/a", "1"}, {"/b", "2"}};
    EventFeed::TimePoint now{std::chrono::hours(1)};
    EventFeed feed(
        {{.path = "/a"}, {.path = "/b"}},
        [&](const std::string& path) -> std::optional<std::string> {
            if (throws && path == "/b")
                throw std::bad_alloc();
            return texts[path];
        },
        [&] { return now; });
    const auto watcher = feed.watch("192.0.2.1");
    static_cast<void>(watcher->next());
    texts = {{"/a", "10"}, {"/b", "20"}};
    now += 200ms;
    throws = true;
    EXPECT_THROW(static_cast<void>(feed.watch("192.0.2.1")->next()), std::bad_alloc);
    throws = false;
    EXPECT_EQ(watcher->next(), "event: changes\ndata: {\"/a\":10,\"/b\":20}\n\n");
}

TEST(EventFeed, MayBeWatchedOnManyThreads)
{
    std::atomic<int> number{0};
    EventFeed feed({{.path = "/a", .interval = 0ms}}, [&](const std::string&) {
        return std::optional<std::string>(std::to_string(++number));
    });
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&feed] {
            for (int round = 0; round < 20; ++round) {
                const auto watcher = feed.watch("192.0.2.1");
                ASSERT_TRUE(watcher);
                ASSERT_TRUE(
                    watcher->next()->starts_with("retry: 1000\nevent: all\ndata: {\"/a\":"));
                for (int j = 0; j < 20; ++j)
                    ASSERT_TRUE(watcher->next()->starts_with("event: changes\ndata: {\"/a\":"));
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_GE(number, 4 * 20 * 21);
}

} // namespace
} // namespace nmos_instrument::host
