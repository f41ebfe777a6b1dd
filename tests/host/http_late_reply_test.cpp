// SPDX-License-Identifier: Apache-2.0
//
// Answers that come after the handler has returned, and the end of the server.

#include "http/server.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "http_test_client.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

std::string get(const std::string& path)
{
    return "GET " + path + " HTTP/1.1\r\nHost: test\r\n\r\n";
}

HttpResponse text(std::string body)
{
    return {200, "text/plain", std::move(body), {}};
}

// Holds the replies to paths that begin with "/late", answers the others at once.
class Keeper
{
public:
    HttpHandler handler()
    {
        return [this](const HttpRequest& request, HttpReply reply) {
            if (!request.path.starts_with("/late")) {
                reply(text(request.path));
                return;
            }
            const std::lock_guard lock(mutex_);
            kept_.push_back({request.path, std::move(reply)});
            changed_.notify_all();
        };
    }

    bool wait_for(std::size_t count)
    {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 10s, [&] { return kept_.size() >= count; });
    }

    struct Kept
    {
        std::string path;
        HttpReply reply;
    };

    std::vector<Kept> take()
    {
        const std::lock_guard lock(mutex_);
        return std::exchange(kept_, {});
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Kept> kept_;
};

HttpServerOptions one_thread()
{
    HttpServerOptions options;
    options.threads = 1;
    return options;
}

TEST(LateReply, HoldsNoServerThread)
{
    Keeper keeper;
    HttpServer server(one_thread(), keeper.handler());
    std::vector<TestClient> clients;
    for (int i = 0; i < 100; ++i) {
        clients.emplace_back(server.port());
        clients.back().send(get("/late" + std::to_string(i)));
    }
    ASSERT_TRUE(keeper.wait_for(100));
    const auto meanwhile = fetch(server.port(), get("/now"));
    ASSERT_TRUE(meanwhile);
    EXPECT_EQ(meanwhile->body, "/now");

    std::vector<Keeper::Kept> kept = keeper.take();
    std::reverse(kept.begin(), kept.end());
    for (const Keeper::Kept& late : kept)
        late.reply(text("answer to " + late.path));
    for (std::size_t i = 0; i < clients.size(); ++i) {
        const auto response = clients[i].receive();
        ASSERT_TRUE(response);
        EXPECT_EQ(response->body, "answer to /late" + std::to_string(i));
    }
}

TEST(LateReply, MayWaitForARequestToTheSameServer)
{
    std::vector<std::thread> threads;
    HttpServer* self = nullptr;
    HttpServer server(one_thread(), [&](const HttpRequest& request, HttpReply reply) {
        if (request.path == "/inner")
            return reply(text("inner"));
        threads.emplace_back([&self, reply = std::move(reply)] {
            const auto inner = fetch(self->port(), get("/inner"));
            reply(text(inner ? "outer of " + inner->body : "nothing"));
        });
    });
    self = &server;
    const auto response = fetch(server.port(), get("/outer"));
    for (std::thread& thread : threads)
        thread.join();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "outer of inner");
}

TEST(LateReply, KeepsTheOrderOfPipelinedRequests)
{
    Keeper keeper;
    HttpServer server({}, keeper.handler());
    TestClient client(server.port());
    client.send(get("/late1") + get("/now") + get("/late2"));
    ASSERT_TRUE(keeper.wait_for(1));
    EXPECT_FALSE(client.is_closed_within(50ms));
    EXPECT_EQ(client.rest(), "");
    keeper.take().front().reply(text("1"));
    for (const std::string expected : {"1", "/now"}) {
        const auto response = client.receive();
        ASSERT_TRUE(response);
        EXPECT_EQ(response->body, expected);
    }
    ASSERT_TRUE(keeper.wait_for(1));
    keeper.take().front().reply(text("2"));
    const auto response = client.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "2");
}

TEST(LateReply, ReachesAClientThatHasFinishedSending)
{
    Keeper keeper;
    HttpServer server(one_thread(), keeper.handler());
    TestClient other(server.port());
    other.send(get("/now"));
    ASSERT_TRUE(other.receive());
    TestClient client(server.port());
    client.send(get("/late"));
    client.finish_sending();
    ASSERT_TRUE(keeper.wait_for(1));
    std::this_thread::sleep_for(20ms);
    keeper.take().front().reply(text("still here"));
    const auto response = client.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "still here");
}

TEST(LateReply, ToAClientThatHasGoneIsHarmless)
{
    Keeper keeper;
    HttpServer server(one_thread(), keeper.handler());
    {
        TestClient client(server.port());
        client.send(get("/late"));
        ASSERT_TRUE(keeper.wait_for(1));
    }
    keeper.take().front().reply(text(std::string(1'000'000, 'x')));
    const auto response = fetch(server.port(), get("/now"));
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "/now");
}

TEST(LateReply, ThatNeverComesIsA500)
{
    Keeper keeper;
    HttpServer server({}, keeper.handler());
    TestClient client(server.port());
    client.send(get("/late"));
    ASSERT_TRUE(keeper.wait_for(1));
    static_cast<void>(keeper.take());
    const auto response = client.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 500);
    EXPECT_EQ(response->body,
              R"({"code":500,"error":"Internal error","debug":"the request was not answered"})");
}

TEST(LateReply, AfterTheServerHasGoneIsHarmless)
{
    Keeper keeper;
    {
        HttpServerOptions options;
        options.stop_deadline = 50ms;
        HttpServer server(options, keeper.handler());
        TestClient client(server.port());
        client.send(get("/late"));
        ASSERT_TRUE(keeper.wait_for(1));
        server.stop();
    }
    for (Keeper::Kept& late : keeper.take())
        late.reply(text("too late"));
}

// The answer races with the handler's return and the suspension.
TEST(LateReply, MayComeAtAnyMoment)
{
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<HttpReply> replies;
    bool done = false;
    std::vector<std::thread> repliers;
    repliers.reserve(2);
    for (int i = 0; i < 2; ++i)
        repliers.emplace_back([&] {
            std::unique_lock lock(mutex);
            while (!done) {
                changed.wait(lock, [&] { return done || !replies.empty(); });
                std::vector<HttpReply> taken = std::move(replies);
                replies.clear();
                lock.unlock();
                for (const HttpReply& reply : taken)
                    reply(text("late"));
                taken.clear();
                lock.lock();
            }
        });
    {
        HttpServer server({}, [&](const HttpRequest&, HttpReply reply) {
            const std::lock_guard lock(mutex);
            replies.push_back(std::move(reply));
            changed.notify_one();
        });
        std::vector<std::thread> clients;
        clients.reserve(4);
        std::atomic<int> answers{0};
        for (int i = 0; i < 4; ++i)
            clients.emplace_back([&] {
                TestClient client(server.port());
                for (int j = 0; j < 500; ++j) {
                    client.send(get("/"));
                    const auto response = client.receive();
                    if (response && response->body == "late")
                        ++answers;
                }
            });
        for (std::thread& client : clients)
            client.join();
        EXPECT_EQ(answers, 4 * 500);
    }
    {
        const std::lock_guard lock(mutex);
        done = true;
    }
    changed.notify_all();
    for (std::thread& replier : repliers)
        replier.join();
}

TEST(HttpStop, ClosesIdleConnectionsAtOnce)
{
    Keeper keeper;
    HttpServer server({}, keeper.handler());
    const std::uint16_t port = server.port();
    TestClient fresh(port);
    TestClient kept(port);
    kept.send(get("/now"));
    ASSERT_TRUE(kept.receive());
    TestClient half(port);
    half.send("GET / HT");

    const auto begin = Clock::now();
    server.stop();
    EXPECT_LT(Clock::now() - begin, 1s);
    EXPECT_TRUE(fresh.is_closed_within(1s));
    EXPECT_TRUE(kept.is_closed_within(1s));
    EXPECT_TRUE(half.is_closed_within(1s));
    EXPECT_THROW(TestClient{port}, std::system_error);
    server.stop();

    HttpServerOptions again;
    again.port = port;
    EXPECT_NO_THROW(HttpServer(again, keeper.handler()));
}

TEST(HttpStop, FinishesWhatRuns)
{
    Keeper keeper;
    HttpServer server({}, keeper.handler());
    TestClient late(server.port());
    late.send(get("/late"));
    ASSERT_TRUE(keeper.wait_for(1));
    TestClient uploading(server.port());
    uploading.send("PUT /put HTTP/1.1\r\nHost: test\r\nContent-Length: 3\r\n\r\na");
    std::this_thread::sleep_for(50ms);

    std::thread stopping([&] { server.stop(); });
    std::this_thread::sleep_for(200ms);
    EXPECT_FALSE(late.is_closed_within(0ms));
    uploading.send("bc");
    auto response = uploading.receive();
    EXPECT_TRUE(response);
    if (response) {
        EXPECT_EQ(response->body, "/put");
        EXPECT_EQ(response->header("connection"), "close");
    }
    keeper.take().front().reply(text("in time"));
    response = late.receive();
    EXPECT_TRUE(response);
    if (response) {
        EXPECT_EQ(response->body, "in time");
        EXPECT_EQ(response->header("connection"), "close");
    }
    const auto begin = Clock::now();
    stopping.join();
    EXPECT_LT(Clock::now() - begin, 1s);
    EXPECT_TRUE(late.is_closed_within(1s));
    EXPECT_TRUE(uploading.is_closed_within(1s));
}

TEST(HttpStop, TurnsNewConnectionsAway)
{
    Keeper keeper;
    HttpServer server({}, keeper.handler());
    TestClient late(server.port());
    late.send(get("/late"));
    ASSERT_TRUE(keeper.wait_for(1));
    std::thread stopping([&] { server.stop(); });
    std::this_thread::sleep_for(100ms);
    try {
        TestClient newcomer(server.port());
        newcomer.send(get("/now"));
        EXPECT_TRUE(newcomer.is_closed_within(1s));
        EXPECT_EQ(newcomer.rest(), "");
    } catch (const std::system_error&) {
        // Refused: as good.
    }
    keeper.take().front().reply(text("done"));
    stopping.join();
}

TEST(HttpStop, TakesLessThanTwoSecondsWhateverRuns)
{
    Keeper keeper;
    HttpServer server({}, keeper.handler());
    TestClient late(server.port());
    late.send(get("/late"));
    ASSERT_TRUE(keeper.wait_for(1));
    TestClient uploading(server.port());
    uploading.send("PUT /put HTTP/1.1\r\nHost: test\r\nContent-Length: 3\r\n\r\na");
    std::this_thread::sleep_for(50ms);

    const auto begin = Clock::now();
    server.stop();
    EXPECT_LT(Clock::now() - begin, 2s);
    const auto response = late.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 503);
    EXPECT_EQ(response->body, R"({"code":503,"error":"The server is stopping","debug":null})");
    EXPECT_TRUE(uploading.is_closed_within(1s));
    EXPECT_EQ(uploading.rest(), "");
    keeper.take().front().reply(text("too late"));
}

// Late answers come while the server gives up waiting for them.
TEST(HttpStop, RacesWithLateReplies)
{
    for (int round = 0; round < 20; ++round) {
        std::mutex mutex;
        std::vector<std::thread> repliers;
        HttpServerOptions options;
        options.stop_deadline = std::chrono::milliseconds(round);
        HttpServer server(options, [&](const HttpRequest&, HttpReply reply) {
            const std::lock_guard lock(mutex);
            repliers.emplace_back([reply = std::move(reply), delay = repliers.size() % 25] {
                std::this_thread::sleep_for(std::chrono::milliseconds(delay));
                reply(text("late"));
            });
        });
        std::vector<std::thread> clients;
        clients.reserve(4);
        std::atomic<bool> wrong{false};
        for (int i = 0; i < 4; ++i)
            clients.emplace_back([&] {
                try {
                    for (int j = 0; j < 100; ++j) {
                        TestClient client(server.port());
                        client.send(get("/late"));
                        const auto response = client.receive();
                        if (!response)
                            return;
                        if (response->status != 503 && response->body != "late")
                            wrong = true;
                    }
                } catch (const std::system_error&) {
                    // The server has gone.
                }
            });
        std::this_thread::sleep_for(10ms);
        std::thread other([&] { server.stop(); });
        server.stop();
        other.join();
        for (std::thread& client : clients)
            client.join();
        for (std::thread& replier : repliers)
            replier.join();
        EXPECT_FALSE(wrong);
    }
}

} // namespace
} // namespace nmos_instrument::host
