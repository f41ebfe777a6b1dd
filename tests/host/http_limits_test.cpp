// SPDX-License-Identifier: Apache-2.0
//
// Clients that are slow, greedy or many.

#include "http/server.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <sstream>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "http_test_client.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

const std::string get = "GET / HTTP/1.1\r\nHost: test\r\n\r\n";
const std::string too_long =
    R"({"code":413,"error":"Request body too long","debug":"more than 1048576 bytes"})";

constexpr std::size_t mebibyte = std::size_t{1024} * 1024;

void count_body(const HttpRequest& request, const HttpReply& reply)
{
    reply({200, "text/plain", std::to_string(request.body.size()), {}});
}

std::string put_headers(const std::string& header)
{
    return "PUT / HTTP/1.1\r\nHost: test\r\n" + header + "\r\n\r\n";
}

std::string chunked(std::size_t length, std::size_t chunk)
{
    std::ostringstream text;
    text << std::hex;
    for (std::size_t done = 0; done < length; done += chunk) {
        const std::size_t now = std::min(chunk, length - done);
        text << now << "\r\n" << std::string(now, 'x') << "\r\n";
    }
    text << "0\r\n\r\n";
    return text.str();
}

// The files that a test needs at once, on top of the server's.
bool may_open(rlim_t files)
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::max(limit.rlim_cur, std::min(files, limit.rlim_max));
    setrlimit(RLIMIT_NOFILE, &limit);
    return limit.rlim_cur >= files;
}

TEST(HttpLimits, ABodyMayBeAsLongAsTheLimit)
{
    HttpServer server({}, &count_body);
    TestClient client(server.port());
    client.send(put_headers("Content-Length: 1048576") + std::string(mebibyte, 'x'));
    auto response = client.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "1048576");
    client.send(put_headers("Transfer-Encoding: chunked") + chunked(mebibyte, 5000));
    response = client.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "1048576");
}

TEST(HttpLimits, ALongerBodyIs413AndTheConnectionGoesOn)
{
    HttpServer server({}, &count_body);
    TestClient client(server.port());
    const std::vector<std::string> requests = {
        put_headers("Content-Length: 1048577") + std::string(mebibyte + 1, 'x'),
        put_headers("Content-Length: 8000000") + std::string(8'000'000, 'x'),
    };
    for (const std::string& request : requests) {
        ASSERT_TRUE(client.send(request + get)) << request.substr(0, 60);
        auto response = client.receive();
        ASSERT_TRUE(response) << request.substr(0, 60);
        EXPECT_EQ(response->status, 413);
        EXPECT_EQ(response->body, too_long);
        EXPECT_EQ(response->header("access-control-allow-origin"), "*");
        response = client.receive();
        ASSERT_TRUE(response) << request.substr(0, 60);
        EXPECT_EQ(response->status, 200);
    }
}

TEST(HttpLimits, ALongerChunkedBodyIs413AndTheConnectionEnds)
{
    HttpServer server({}, &count_body);
    for (const std::string& body : {chunked(mebibyte + 1, mebibyte + 1),
                                    chunked(mebibyte + 1, 1024), chunked(8'000'000, 3'000'000)}) {
        TestClient client(server.port());
        ASSERT_TRUE(client.send(put_headers("Transfer-Encoding: chunked") + body));
        const auto response = client.receive();
        ASSERT_TRUE(response);
        EXPECT_EQ(response->status, 413);
        EXPECT_EQ(response->body, too_long);
        EXPECT_TRUE(client.is_closed_within(5s));
    }
}

TEST(HttpLimits, WhoAsksBeforeSendingIsAnsweredAtOnce)
{
    HttpServer server({}, &count_body);
    TestClient refused(server.port());
    refused.send(put_headers("Content-Length: 1048577\r\nExpect: 100-continue"));
    auto response = refused.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 413);
    EXPECT_EQ(response->body, too_long);
    EXPECT_TRUE(refused.is_closed_within(5s));

    TestClient allowed(server.port());
    allowed.send(put_headers("Content-Length: 3\r\nExpect: 100-continue"));
    response = allowed.receive_head();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 100);
    allowed.send("abc");
    response = allowed.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "3");
}

// Holds the server thread that asks for "/hold" until it is released.
class HeldThread
{
public:
    HttpHandler handler()
    {
        return [this](const HttpRequest& request, const HttpReply& reply) {
            if (request.path == "/hold") {
                held_.set_value();
                released_.get_future().wait();
            }
            reply({200, "text/plain", "x", {}});
        };
    }

    void wait_until_held() { held_.get_future().wait(); }
    void release() { released_.set_value(); }

private:
    std::promise<void> held_;
    std::promise<void> released_;
};

class HttpReadyTogether : public testing::TestWithParam<std::size_t>
{};

// epoll hands out 128 events at a time to libmicrohttpd: a full buffer must not look like the end.
TEST_P(HttpReadyTogether, AllRequestsAreAnsweredAtOnce)
{
    HeldThread held;
    HttpServerOptions options;
    options.threads = 1;
    HttpServer server(options, held.handler());
    std::vector<TestClient> clients;
    for (std::size_t i = 0; i < GetParam(); ++i) {
        clients.emplace_back(server.port());
        clients.back().send(get);
        ASSERT_TRUE(clients.back().receive());
    }
    TestClient holder(server.port());
    holder.send("GET /hold HTTP/1.1\r\nHost: test\r\n\r\n");
    held.wait_until_held();
    for (TestClient& client : clients)
        client.send(get);
    const auto begin = Clock::now();
    held.release();
    ASSERT_TRUE(holder.receive());
    for (TestClient& client : clients)
        ASSERT_TRUE(client.receive());
    EXPECT_LT(Clock::now() - begin, 10s);
}

INSTANTIATE_TEST_SUITE_P(Counts, HttpReadyTogether, testing::Values(127, 128, 129, 256, 384),
                         testing::PrintToStringParamName());

TEST(HttpLimits, AllBodiesTogetherAreLimited)
{
    HttpServerOptions options;
    options.threads = 1; // so that what is sent first is read first
    options.memory = 1000;
    HttpServer server(options, &count_body);
    TestClient holder(server.port());
    holder.send(put_headers("Content-Length: 900") + std::string(800, 'x'));

    // Until the server has read the 800 bytes, there is room for 300.
    std::optional<TestResponse> response;
    const std::string request = put_headers("Content-Length: 300") + std::string(300, 'x');
    const auto end = Clock::now() + 5s;
    do
        response = fetch(server.port(), request);
    while (response && response->status == 200 && Clock::now() < end);
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 503);
    EXPECT_EQ(response->body,
              R"({"code":503,"error":"Too many request bodies at once","debug":null})");

    holder.send(std::string(100, 'x'));
    response = holder.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "900");
    response = fetch(server.port(), request);
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 200);
}

HttpServerOptions short_deadlines()
{
    HttpServerOptions options;
    options.header_deadline = 300ms;
    options.body_deadline = 300ms;
    options.answer_deadline = 300ms;
    options.idle_deadline = 300ms;
    return options;
}

// How long the server lets the client send `bytes`, one each 10 ms, over and over.
std::chrono::milliseconds trickle(TestClient& client, const std::string& bytes)
{
    const auto begin = Clock::now();
    for (std::size_t i = 0; !client.is_closed_within(10ms); ++i) {
        if (Clock::now() - begin > 10s || !client.send(bytes.substr(i % bytes.size(), 1)))
            break;
    }
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
}

void expect_deadline_of_300_ms(std::chrono::milliseconds time)
{
    EXPECT_GE(time, 250ms);
    EXPECT_LT(time, 2s);
}

TEST(HttpDeadlines, EndAnIdleConnection)
{
    HttpServer server(short_deadlines(), &count_body);
    TestClient client(server.port());
    const auto begin = Clock::now();
    EXPECT_TRUE(client.is_closed_within(10s));
    expect_deadline_of_300_ms(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin));
}

TEST(HttpDeadlines, EndATricklingRequestLine)
{
    HttpServer server(short_deadlines(), &count_body);
    TestClient client(server.port());
    client.send("GET /");
    expect_deadline_of_300_ms(trickle(client, "a"));
}

TEST(HttpDeadlines, EndTricklingEmptyLines)
{
    HttpServer server(short_deadlines(), &count_body);
    TestClient client(server.port());
    expect_deadline_of_300_ms(trickle(client, "\r\n"));
}

TEST(HttpDeadlines, EndTricklingHeaders)
{
    HttpServer server(short_deadlines(), &count_body);
    TestClient client(server.port());
    client.send("GET / HTTP/1.1\r\n");
    expect_deadline_of_300_ms(trickle(client, "X: y\r\n"));
}

TEST(HttpDeadlines, EndTricklingHeadersOfALaterRequest)
{
    HttpServer server(short_deadlines(), &count_body);
    TestClient client(server.port());
    client.send(get);
    ASSERT_TRUE(client.receive());
    client.send("GET / HTTP/1.1\r\n");
    expect_deadline_of_300_ms(trickle(client, "X: y\r\n"));
}

TEST(HttpDeadlines, EndATricklingBody)
{
    HttpServer server(short_deadlines(), &count_body);
    TestClient client(server.port());
    client.send(put_headers("Content-Length: 100000"));
    expect_deadline_of_300_ms(trickle(client, "x"));
}

TEST(HttpDeadlines, EndATricklingChunkedBody)
{
    HttpServer server(short_deadlines(), &count_body);
    TestClient client(server.port());
    client.send(put_headers("Transfer-Encoding: chunked"));
    expect_deadline_of_300_ms(trickle(client, "1\r\nx\r\n"));
}

TEST(HttpDeadlines, EndABodyThatIsThrownAway)
{
    HttpServer server(short_deadlines(), &count_body);
    TestClient client(server.port());
    client.send(put_headers("Content-Length: 1000000000000"));
    expect_deadline_of_300_ms(trickle(client, "x"));
}

TEST(HttpDeadlines, EndAConnectionThatIsKeptForNothing)
{
    HttpServer server(short_deadlines(), &count_body);
    TestClient client(server.port());
    client.send(get);
    ASSERT_TRUE(client.receive());
    const auto begin = Clock::now();
    EXPECT_TRUE(client.is_closed_within(10s));
    expect_deadline_of_300_ms(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin));
}

TEST(HttpDeadlines, EndAClientThatDoesNotReadItsAnswer)
{
    std::atomic<int> status{-1};
    HttpServerOptions options = short_deadlines();
    options.memory_per_address = 100 * mebibyte;
    options.on_request = [&](const HttpAccess& access) { status = access.status; };
    HttpServer server(options, [](const HttpRequest&, const HttpReply& reply) {
        reply({200, "text/plain", std::string(50 * mebibyte, 'x'), {}});
    });
    TestClient client(server.port());
    client.send(get);
    const auto end = Clock::now() + 10s;
    while (status == -1 && Clock::now() < end)
        std::this_thread::sleep_for(10ms);
    EXPECT_EQ(status, 0);
}

TEST(HttpDeadlines, LeaveABusyConnectionAlone)
{
    HttpServer server(short_deadlines(), &count_body);
    TestClient client(server.port());
    const auto end = Clock::now() + 1s;
    while (Clock::now() < end) {
        client.send(put_headers("Content-Length: 3"));
        std::this_thread::sleep_for(50ms);
        client.send("abc");
        ASSERT_TRUE(client.receive());
        std::this_thread::sleep_for(50ms);
    }
}

TEST(HttpDeadlines, LeaveTheHandlerItsTime)
{
    std::vector<std::thread> threads;
    HttpServer server(short_deadlines(), [&](const HttpRequest&, HttpReply reply) {
        threads.emplace_back([reply = std::move(reply)] {
            std::this_thread::sleep_for(1s);
            reply({200, "", "late", {}});
        });
    });
    const auto response = fetch(server.port(), get);
    for (std::thread& thread : threads)
        thread.join();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "late");
}

TEST(HttpLimits, AnAddressHasSoManyConnections)
{
    HttpServerOptions options;
    options.connections_per_address = 3;
    HttpServer server(options, &count_body);
    std::vector<TestClient> greedy;
    for (int i = 0; i < 3; ++i) {
        greedy.emplace_back(server.port(), "127.0.0.2");
        greedy.back().send(get);
        ASSERT_TRUE(greedy.back().receive());
    }
    TestClient fourth(server.port(), "127.0.0.2");
    EXPECT_TRUE(fourth.is_closed_within(5s));

    TestClient other(server.port(), "127.0.0.3");
    other.send(get);
    EXPECT_TRUE(other.receive());
    greedy.back().send(get);
    EXPECT_TRUE(greedy.back().receive());

    // Who leaves makes room.
    greedy.pop_back();
    std::optional<TestResponse> response;
    for (const auto end = Clock::now() + 5s; !response && Clock::now() < end;) {
        TestClient next(server.port(), "127.0.0.2");
        next.send(get);
        response = next.receive();
    }
    EXPECT_TRUE(response);
}

TEST(HttpLimits, WhoComesWhenAllConnectionsAreTakenWaits)
{
    HttpServerOptions options;
    options.threads = 1;
    options.connection_limit = 4;
    HttpServer server(options, &count_body);
    EXPECT_EQ(server.connection_limit(), 4U);
    std::vector<TestClient> taken;
    for (int i = 0; i < 4; ++i) {
        taken.emplace_back(server.port());
        taken.back().send(get);
        ASSERT_TRUE(taken.back().receive());
    }
    TestClient waiting(server.port());
    waiting.send(get);
    EXPECT_FALSE(waiting.is_closed_within(200ms));
    EXPECT_EQ(waiting.rest(), "");
    taken.pop_back();
    EXPECT_TRUE(waiting.receive());
}

// Two addresses must not lock out a third.
TEST(HttpLimits, WhoComesLastTakesThePlaceOfTheGreediest)
{
    HttpServerOptions options;
    options.connection_limit = 64;
    HttpServer server(options, &count_body);
    std::vector<TestClient> clients;
    const auto take = [&](int count, const char* address) {
        for (int i = 0; i < count; ++i) {
            clients.emplace_back(server.port(), address);
            clients.back().send(get);
            ASSERT_TRUE(clients.back().receive());
        }
    };
    take(30, "127.0.0.2");
    take(34, "127.0.0.3");
    take(10, "127.0.0.4");
    // 127.0.0.3 gives up its four oldest, then both addresses three each.
    const auto is_open = [](TestClient& client) { return client.send(get) && client.receive(); };
    for (std::size_t i = 0; i < clients.size(); ++i) {
        const bool gone = i < 3 || (i >= 30 && i < 37);
        EXPECT_EQ(is_open(clients[i]), !gone) << i;
    }
}

TEST(HttpLimits, WhoHasARequestUnderWayKeepsItsPlace)
{
    HttpServerOptions options;
    options.connection_limit = 32;
    HttpServer server(options, &count_body);
    TestClient busy(server.port(), "127.0.0.2");
    busy.send(put_headers("Content-Length: 3"));
    std::vector<TestClient> idle;
    for (int i = 0; i < 40; ++i) {
        idle.emplace_back(server.port(), "127.0.0.2");
        idle.back().send(get);
        ASSERT_TRUE(idle.back().receive()) << i;
    }
    busy.send("abc");
    const auto response = busy.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "3");
}

// The answers that one address does not read cost no more than its share, and nobody else is cut.
TEST(HttpLimits, AnswersThatNobodyReadsAreLimited)
{
    HttpServerOptions options;
    options.memory_per_address = 20 * mebibyte;
    HttpServer server(options, [](const HttpRequest&, const HttpReply& reply) {
        reply({200, "text/plain", std::string(8 * mebibyte, 'x'), {}});
    });
    TestClient first(server.port(), "127.0.0.2");
    TestClient second(server.port(), "127.0.0.2");
    first.send(get);
    second.send(get);
    // Their headers come, but the rest does not fit into any socket's buffers.
    ASSERT_TRUE(first.receive_head());
    ASSERT_TRUE(second.receive_head());
    TestClient third(server.port(), "127.0.0.2");
    third.send(get);
    const auto refused = third.receive();
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->status, 503);
    EXPECT_EQ(refused->body,
              R"({"code":503,"error":"Too many answers wait to be read","debug":null})");
    EXPECT_TRUE(third.is_closed_within(5s));

    TestClient other(server.port(), "127.0.0.3");
    other.send(get);
    const auto response = other.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body.size(), 8 * mebibyte);
}

TEST(HttpLimits, FourThousandConnectionsAreServed)
{
    constexpr std::size_t many = 4096;
    if (!may_open(2 * many + 500))
        GTEST_SKIP() << "the hard limit of open files is below " << 2 * many + 500;
    HttpServerOptions options;
    options.connections_per_address = 0;
    options.header_deadline = 60s; // sanitizers are slow
    HttpServer server(options, &count_body);
    ASSERT_EQ(server.connection_limit(), many);
    std::vector<TestClient> clients;
    clients.reserve(many);
    for (std::size_t i = 0; i < many; ++i)
        clients.emplace_back(server.port());
    for (TestClient& client : clients)
        ASSERT_TRUE(client.send(get));
    for (TestClient& client : clients)
        ASSERT_TRUE(client.receive());
}

TEST(HttpLimits, TheFileLimitIsRaisedForTheConnections)
{
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    if (before.rlim_max < 6000)
        GTEST_SKIP() << "the hard limit of open files is " << before.rlim_max;
    const rlimit low{1024, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &low), 0);
    HttpServer server({}, &count_body);
    rlimit after{};
    getrlimit(RLIMIT_NOFILE, &after);
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_GT(after.rlim_cur, 4096U);
    EXPECT_EQ(after.rlim_max, before.rlim_max);
    EXPECT_EQ(server.connection_limit(), 4096U);
}

// 1,000 idle connections, and 1,000 that send a byte each second, never a whole request.
TEST(HttpLimits, SlowClientsDoNotKeepOthersWaiting)
{
    constexpr std::size_t many = 1000;
    if (!may_open(4 * many + 500))
        GTEST_SKIP() << "the hard limit of open files is below " << 4 * many + 500;
    HttpServerOptions options;
    options.connections_per_address = 4000;
    HttpServer server(options, &count_body);
    std::vector<TestClient> idle;
    std::vector<TestClient> slow;
    idle.reserve(many);
    slow.reserve(many);
    for (std::size_t i = 0; i < many; ++i) {
        idle.emplace_back(server.port());
        slow.emplace_back(server.port());
        if (i % 2 == 0)
            slow.back().send(put_headers("Content-Length: 100000"));
        else
            slow.back().send("GET / HTTP/1.1\r\nX-Slow: ");
    }
    std::atomic<bool> done{false};
    std::thread trickling([&] {
        for (auto next = Clock::now(); !done; next += 1s) {
            for (TestClient& client : slow)
                client.send("x");
            while (!done && Clock::now() < next + 1s)
                std::this_thread::sleep_for(10ms);
        }
    });
    Clock::duration longest{};
    const auto end = Clock::now() + 3s;
    int answers = 0;
    while (Clock::now() < end) {
        const auto begin = Clock::now();
        const auto response = fetch(server.port(), get);
        longest = std::max(longest, Clock::now() - begin);
        if (!response || response->status != 200)
            break;
        ++answers;
        std::this_thread::sleep_for(5ms);
    }
    done = true;
    trickling.join();
    EXPECT_GT(answers, 10);
    EXPECT_LT(longest, 1s);
    RecordProperty("answers", answers);
    RecordProperty(
        "longest_us",
        static_cast<int>(std::chrono::duration_cast<std::chrono::microseconds>(longest).count()));
    // All of them are still connected.
    EXPECT_FALSE(idle.back().is_closed_within(0ms));
    EXPECT_FALSE(slow.back().is_closed_within(0ms));
}

} // namespace
} // namespace nmos_instrument::host
