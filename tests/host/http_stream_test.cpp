// SPDX-License-Identifier: Apache-2.0
//
// Answers that go on, piece by piece.

#include "http/stream.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "http/server.h"
#include "http_test_client.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

std::string get(const std::string& path)
{
    return "GET " + path + " HTTP/1.1\r\nHost: test\r\n\r\n";
}

// What a test gives to a stream, and what became of it.
class Script
{
public:
    void say(std::string piece) { add(std::move(piece)); }
    void end() { add(std::nullopt); }

    std::optional<std::string> next()
    {
        const std::lock_guard lock(mutex_);
        ++asked_;
        changed_.notify_all();
        if (pieces_.empty())
            return "";
        std::optional<std::string> piece = std::move(pieces_.front());
        pieces_.pop_front();
        return piece;
    }

    void streams(int more)
    {
        const std::lock_guard lock(mutex_);
        streams_ += more;
        changed_.notify_all();
    }

    int asked()
    {
        const std::lock_guard lock(mutex_);
        return asked_;
    }

    bool wait_until_asked(int times)
    {
        return wait([&] { return asked_ >= times; });
    }

    bool wait_for_streams(int count)
    {
        return wait([&] { return streams_ == count; });
    }

private:
    void add(std::optional<std::string> piece)
    {
        const std::lock_guard lock(mutex_);
        pieces_.push_back(std::move(piece));
    }

    bool wait(const std::function<bool()>& condition)
    {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 10s, condition);
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::optional<std::string>> pieces_; ///< nothing: the end
    int asked_ = 0;
    int streams_ = 0;
};

class ScriptedStream : public HttpStream
{
public:
    explicit ScriptedStream(Script& script) : script_(script) { script_.streams(+1); }
    ~ScriptedStream() override { script_.streams(-1); }

    ScriptedStream(const ScriptedStream&) = delete;
    ScriptedStream& operator=(const ScriptedStream&) = delete;

    std::optional<std::string> next() override { return script_.next(); }

private:
    Script& script_;
};

class CalledStream : public HttpStream
{
public:
    explicit CalledStream(std::function<std::optional<std::string>()> call) : call_(std::move(call))
    {}

    std::optional<std::string> next() override { return call_(); }

private:
    std::function<std::optional<std::string>()> call_;
};

HttpResponse streamed(std::shared_ptr<HttpStream> stream)
{
    HttpResponse response;
    response.content_type = "text/event-stream";
    response.stream = std::move(stream);
    return response;
}

// Streams at "/stream", everything else is answered at once.
HttpHandler handler_of(Script& script)
{
    return [&script](const HttpRequest& request, const HttpReply& reply) {
        if (request.path == "/stream")
            reply(streamed(std::make_shared<ScriptedStream>(script)));
        else
            reply({200, "text/plain", request.path, {}});
    };
}

// Streams whatever `call` gives.
HttpHandler handler_of(std::function<std::optional<std::string>()> call)
{
    return [call = std::move(call)](const HttpRequest&, const HttpReply& reply) {
        reply(streamed(std::make_shared<CalledStream>(call)));
    };
}

HttpServerOptions one_thread()
{
    HttpServerOptions options;
    options.threads = 1;
    return options;
}

std::string received_until_closed(TestClient& client)
{
    EXPECT_TRUE(client.is_closed_within(10s));
    return client.rest();
}

TEST(HttpStream, SendsEachPieceWhenItComes)
{
    Script script;
    HttpServer server(one_thread(), handler_of(script));
    TestClient client(server.port());
    script.say("one");
    client.send(get("/stream") + get("/next"));
    const auto head = client.receive_head();
    ASSERT_TRUE(head);
    EXPECT_EQ(head->status, 200);
    EXPECT_EQ(head->header("content-type"), "text/event-stream");
    EXPECT_EQ(head->header("transfer-encoding"), "chunked");
    EXPECT_EQ(head->header("content-length"), "");
    EXPECT_EQ(client.receive_chunk(), "one");
    ASSERT_TRUE(script.wait_until_asked(3)); // it has been empty, and is asked again
    EXPECT_EQ(client.rest(), "");
    script.say("two");
    EXPECT_EQ(client.receive_chunk(), "two");
    script.say("three");
    script.end();
    EXPECT_EQ(client.receive_chunk(), "three");
    EXPECT_EQ(client.receive_chunk(), "");
    const auto next = client.receive();
    ASSERT_TRUE(next);
    EXPECT_EQ(next->body, "/next");
    EXPECT_TRUE(script.wait_for_streams(0));
}

TEST(HttpStream, MayEndBeforeItBegins)
{
    Script script;
    script.end();
    HttpServer server(one_thread(), handler_of(script));
    TestClient client(server.port());
    client.send(get("/stream"));
    ASSERT_TRUE(client.receive_head());
    EXPECT_EQ(client.receive_chunk(), "");
}

TEST(HttpStream, SendsALongPieceWhole)
{
    Script script;
    std::string piece;
    for (int i = 0; i < 200'000; ++i)
        piece += std::to_string(i) + ' ';
    script.say(piece);
    script.say("end");
    script.end();
    HttpServer server(one_thread(), handler_of(script));
    TestClient client(server.port());
    client.send(get("/stream"));
    ASSERT_TRUE(client.receive_head());
    std::string received;
    for (auto chunk = client.receive_chunk(); chunk && !chunk->empty();
         chunk = client.receive_chunk())
        received += *chunk;
    EXPECT_TRUE(received == piece + "end");
}

TEST(HttpStream, HoldsNoServerThread)
{
    Script script;
    HttpServer server(one_thread(), handler_of(script));
    std::vector<TestClient> clients;
    for (int i = 0; i < 100; ++i) {
        clients.emplace_back(server.port());
        clients.back().send(get("/stream"));
        ASSERT_TRUE(clients.back().receive_head());
    }
    const auto meanwhile = fetch(server.port(), get("/now"));
    ASSERT_TRUE(meanwhile);
    EXPECT_EQ(meanwhile->body, "/now");
    for (int i = 0; i < 100; ++i)
        script.say("piece");
    for (int i = 0; i < 100; ++i)
        script.end();
    std::string received;
    for (TestClient& client : clients)
        for (auto chunk = client.receive_chunk(); chunk && !chunk->empty();
             chunk = client.receive_chunk())
            received += *chunk + ' ';
    std::string expected;
    for (int i = 0; i < 100; ++i)
        expected += "piece ";
    EXPECT_EQ(received, expected);
    EXPECT_TRUE(script.wait_for_streams(0));
}

TEST(HttpStream, IsNotAskedForHead)
{
    Script script;
    script.say("body");
    HttpServer server(one_thread(), handler_of(script));
    TestClient client(server.port());
    client.send("HEAD /stream HTTP/1.1\r\nHost: test\r\n\r\n");
    const auto head = client.receive_head();
    ASSERT_TRUE(head);
    EXPECT_EQ(head->status, 200);
    EXPECT_EQ(head->header("content-type"), "text/event-stream");
    EXPECT_EQ(head->header("content-length"), ""); // nobody knows it
    EXPECT_EQ(head->header("connection"), "close");
    EXPECT_EQ(received_until_closed(client), "");
    EXPECT_EQ(script.asked(), 0);
    EXPECT_TRUE(script.wait_for_streams(0));
}

TEST(HttpStream, HasNoChunksForHttp10)
{
    Script script;
    script.say("one,");
    HttpServer server(one_thread(), handler_of(script));
    TestClient client(server.port());
    client.send("GET /stream HTTP/1.0\r\n\r\n");
    const auto head = client.receive_head();
    ASSERT_TRUE(head);
    EXPECT_EQ(head->header("transfer-encoding"), "");
    ASSERT_TRUE(script.wait_until_asked(3));
    script.say("two");
    script.end();
    EXPECT_EQ(received_until_closed(client), "one,two");
}

TEST(HttpStream, ThatThrowsEndsTheConnection)
{
    std::mutex mutex;
    std::vector<std::string> failures;
    HttpServerOptions options = one_thread();
    options.on_failure = [&](const std::string& failure) {
        const std::lock_guard lock(mutex);
        failures.push_back(failure.substr(failure.find(' ')));
    };
    int calls = 0;
    {
        HttpServer server(options, handler_of([&calls]() -> std::optional<std::string> {
                              if (++calls == 3)
                                  throw std::runtime_error("nothing more to say");
                              return calls == 2 ? "" : "piece";
                          }));
        TestClient client(server.port());
        client.send(get("/stream"));
        ASSERT_TRUE(client.receive_head());
        EXPECT_EQ(client.receive_chunk(), "piece");
        EXPECT_EQ(received_until_closed(client), "");
    }
    EXPECT_EQ(failures, (std::vector<std::string>{R"( "GET" "/stream": nothing more to say)"}));
}

TEST(HttpStream, WhoHasGoneIsNoticedAtTheNextPieces)
{
    Script script;
    HttpServer server(one_thread(), handler_of(script));
    {
        TestClient client(server.port());
        client.send(get("/stream"));
        ASSERT_TRUE(client.receive_head());
        ASSERT_TRUE(script.wait_until_asked(1));
    }
    // The first piece tells the system, the second one the server.
    script.say("piece");
    ASSERT_TRUE(script.wait_until_asked(4));
    script.say("piece");
    EXPECT_TRUE(script.wait_for_streams(0));
}

TEST(HttpStream, ReachesAClientThatHasFinishedSending)
{
    Script script;
    HttpServer server(one_thread(), handler_of(script));
    TestClient client(server.port());
    client.send(get("/stream"));
    client.finish_sending();
    ASSERT_TRUE(client.receive_head());
    ASSERT_TRUE(script.wait_until_asked(3));
    script.say("still here");
    EXPECT_EQ(client.receive_chunk(), "still here");
    ASSERT_TRUE(script.wait_until_asked(5));
    script.say("still");
    EXPECT_EQ(client.receive_chunk(), "still");
    script.end();
    EXPECT_EQ(client.receive_chunk(), "");
}

TEST(HttpStream, IsLoggedWithItsStatusWhoeverEndsIt)
{
    std::mutex mutex;
    std::vector<int> statuses;
    HttpServerOptions options = one_thread();
    options.on_request = [&](const HttpAccess& access) {
        const std::lock_guard lock(mutex);
        statuses.push_back(access.status);
    };
    Script script;
    HttpServer server(options, handler_of(script));
    {
        TestClient client(server.port());
        client.send(get("/stream"));
        ASSERT_TRUE(client.receive_head());
        script.end();
        EXPECT_EQ(client.receive_chunk(), "");
        client.send(get("/stream"));
        ASSERT_TRUE(client.receive_head());
    }
    for (int i = 0; i < 100; ++i)
        script.say("piece");
    EXPECT_TRUE(script.wait_for_streams(0));
    server.stop();
    EXPECT_EQ(statuses, (std::vector<int>{200, 200}));
}

HttpServerOptions short_deadlines()
{
    HttpServerOptions options = one_thread();
    options.header_deadline = 300ms;
    options.answer_deadline = 300ms;
    options.idle_deadline = 300ms;
    return options;
}

TEST(HttpStream, MayBeSilentForLongerThanAnyDeadline)
{
    Script script;
    HttpServer server(short_deadlines(), handler_of(script));
    TestClient client(server.port());
    client.send(get("/stream"));
    ASSERT_TRUE(client.receive_head());
    EXPECT_FALSE(client.is_closed_within(1s));
    script.say("at last");
    EXPECT_EQ(client.receive_chunk(), "at last");
    EXPECT_FALSE(client.is_closed_within(1s));
    script.end();
    EXPECT_EQ(client.receive_chunk(), "");
}

TEST(HttpStream, EndsForAClientThatDoesNotRead)
{
    Script script;
    HttpServer server(short_deadlines(), handler_of(script));
    TestClient client(server.port());
    std::string piece;
    piece.resize(15'000'000, 'x'); // more than the system keeps for it
    script.say(piece);
    client.send(get("/stream"));
    ASSERT_TRUE(script.wait_until_asked(1));
    EXPECT_TRUE(script.wait_for_streams(0));
}

TEST(HttpStream, GivesEachPieceADeadlineOfItsOwn)
{
    // 60 pieces take at least 600 ms, and no single one 300 ms.
    std::atomic<int> pieces{0};
    HttpServer server(short_deadlines(),
                      handler_of([&pieces, waits = false]() mutable -> std::optional<std::string> {
                          if (std::exchange(waits, !waits))
                              return "";
                          return ++pieces > 60 ? std::nullopt : std::optional<std::string>("piece");
                      }));
    TestClient client(server.port());
    client.send(get("/"));
    ASSERT_TRUE(client.receive_head());
    for (int i = 0; i < 60; ++i)
        ASSERT_EQ(client.receive_chunk(), "piece") << i;
    EXPECT_EQ(client.receive_chunk(), "");
}

TEST(HttpStream, ItsPiecesCountAsAnswersUnderWay)
{
    std::atomic<int> failures{0};
    HttpServerOptions options = one_thread();
    options.memory = 1000;
    options.on_failure = [&failures](const std::string&) { ++failures; };
    Script script;
    HttpServer server(options, handler_of(script));
    TestClient client(server.port());
    client.send(get("/stream"));
    ASSERT_TRUE(client.receive_head());
    for (int i = 0; i < 10; ++i) {
        script.say(std::string(900, 'x'));
        EXPECT_EQ(client.receive_chunk(), std::string(900, 'x')); // each gives its memory back
    }
    script.say(std::string(1001, 'x'));
    EXPECT_TRUE(client.is_closed_within(10s));
    EXPECT_TRUE(script.wait_for_streams(0));
    EXPECT_EQ(failures, 1);
    const auto other = fetch(server.port(), get("/other"));
    ASSERT_TRUE(other);
    EXPECT_EQ(other->status, 200);
}

TEST(HttpStream, MakesRoomForOthers)
{
    HttpServerOptions options = one_thread();
    options.connection_limit = 64;
    Script script;
    HttpServer server(options, handler_of(script));
    std::vector<TestClient> streams;
    for (int i = 0; i < 64; ++i) {
        streams.emplace_back(server.port());
        streams.back().send(get("/stream"));
        ASSERT_TRUE(streams.back().receive_head());
    }
    ASSERT_TRUE(script.wait_for_streams(64));
    TestClient newcomer(server.port(), "127.0.0.2");
    newcomer.send(get("/newcomer"));
    const auto response = newcomer.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "/newcomer");
    EXPECT_TRUE(streams.front().is_closed_within(10s));
    EXPECT_TRUE(script.wait_for_streams(63));
}

TEST(HttpStream, EndsAtOnceWhenTheServerStops)
{
    Script script;
    HttpServer server({}, handler_of(script));
    std::vector<TestClient> clients;
    for (int i = 0; i < 5; ++i) {
        clients.emplace_back(server.port());
        clients.back().send(get("/stream"));
        ASSERT_TRUE(clients.back().receive_head());
    }
    ASSERT_TRUE(script.wait_until_asked(5));
    const auto begin = Clock::now();
    server.stop();
    EXPECT_LT(Clock::now() - begin, 1500ms); // what requests get that do not end
    for (TestClient& client : clients)
        EXPECT_EQ(received_until_closed(client), "0\r\n\r\n");
    EXPECT_TRUE(script.wait_for_streams(0));
}

TEST(HttpStream, EndsAtOnceAlsoIfItsClientDoesNotRead)
{
    Script script;
    HttpServerOptions options;
    options.stop_deadline = 20s;
    HttpServer server(options, handler_of(script));
    TestClient client(server.port());
    script.say(std::string(15'000'000, 'x')); // more than the system keeps for it
    client.send(get("/stream"));
    ASSERT_TRUE(script.wait_until_asked(1));
    std::this_thread::sleep_for(1s); // until the system has all that it keeps
    const auto begin = Clock::now();
    server.stop();
    EXPECT_LT(Clock::now() - begin, 10s);
    EXPECT_TRUE(script.wait_for_streams(0));
}

TEST(HttpStream, ThatBeginsWhileTheServerStopsEndsAtOnce)
{
    std::mutex mutex;
    std::condition_variable changed;
    HttpReply kept;
    HttpServer server({}, [&](const HttpRequest&, HttpReply reply) {
        const std::lock_guard lock(mutex);
        kept = std::move(reply);
        changed.notify_all();
    });
    TestClient client(server.port());
    client.send(get("/late"));
    {
        std::unique_lock lock(mutex);
        ASSERT_TRUE(changed.wait_for(lock, 10s, [&] { return kept != nullptr; }));
    }
    std::thread stopping([&] { server.stop(); });
    std::this_thread::sleep_for(100ms);
    Script script;
    kept(streamed(std::make_shared<ScriptedStream>(script)));
    kept = nullptr;
    const auto head = client.receive_head();
    EXPECT_TRUE(head && head->header("connection") == "close");
    EXPECT_EQ(client.receive_chunk(), "");
    stopping.join();
    EXPECT_EQ(script.asked(), 0);
}

// Clients come and go, pieces come and are missing, and in the middle of it the server stops.
TEST(HttpStream, SurvivesWhateverHappensAtOnce)
{
    for (int round = 0; round < 5; ++round) {
        HttpServerOptions options;
        options.idle_deadline = 40ms; // so the watchdog looks every 5 ms
        options.stop_deadline = std::chrono::milliseconds(10 * round);
        std::atomic<unsigned> asked{0};
        HttpServer server(options, handler_of([&asked]() -> std::optional<std::string> {
                              switch (++asked % 7) {
                              case 0:
                              case 1:
                              case 2:
                                  return "";
                              case 3:
                                  return std::string(100'000, 'x');
                              case 4:
                                  return std::nullopt;
                              default:
                                  return "piece";
                              }
                          }));
        std::vector<std::thread> clients;
        clients.reserve(4);
        for (int i = 0; i < 4; ++i)
            clients.emplace_back([&server, i] {
                try {
                    for (int j = 0; j < 50; ++j) {
                        TestClient client(server.port());
                        client.send(get("/stream"));
                        if (!client.receive_head())
                            continue;
                        for (int chunks = 0; chunks < (i + j) % 5; ++chunks)
                            if (!client.receive_chunk())
                                break;
                    }
                } catch (const std::system_error&) {
                    // The server has gone.
                }
            });
        const auto end = Clock::now() + 10s;
        while (asked < 50 && Clock::now() < end)
            std::this_thread::sleep_for(1ms);
        server.stop();
        for (std::thread& client : clients)
            client.join();
        EXPECT_GE(asked, 50U);
    }
}

} // namespace
} // namespace nmos_instrument::host
