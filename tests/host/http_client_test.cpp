// SPDX-License-Identifier: Apache-2.0

#include "http/client.h"

#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <future>
#include <iterator>
#include <memory>
#include <mutex>
#include <numeric>
#include <set>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include "http/easy_handle.h"
#include "http/server.h"
#include "scripted_server.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

/// Far longer than anything takes here.
constexpr auto patience = 20s;

/// Sends a request and waits for its answer.
ClientAnswer answer_to(HttpClient& client, ClientRequest request)
{
    auto promise = std::make_shared<std::promise<ClientAnswer>>();
    client.send(std::move(request),
                [promise](const ClientAnswer& answer) { promise->set_value(answer); });
    std::future<ClientAnswer> answer = promise->get_future();
    if (answer.wait_for(patience) != std::future_status::ready)
        throw std::runtime_error("no answer");
    return answer.get();
}

ClientAnswer answer_to(ClientRequest request)
{
    HttpClient client{Log()};
    return answer_to(client, std::move(request));
}

ClientRequest get(std::string url)
{
    return {.method = "GET", .url = std::move(url)};
}

/// What came after the first line, without the line that has the port in it.
std::string headers_of(const std::string& request)
{
    const std::size_t host = request.find("Host: ");
    return request.substr(request.find("\r\n", host) + 2);
}

std::string first_line_of(const std::string& request)
{
    return request.substr(0, request.find("\r\n"));
}

/// A label has at most 63 letters (RFC 1035 2.3.4), so that no name server is asked for it.
const std::string unknown_host(64, 'x');

constexpr const char* created = "HTTP/1.1 201 Created\r\nContent-Length: 2\r\n\r\n{}";

HttpHandler with_text(std::string body)
{
    return [body = std::move(body)](const HttpRequest&, const HttpReply& reply) {
        reply({200, "text/plain", body, {}});
    };
}

std::string url_of(const HttpServer& server, const std::string& path = "/")
{
    return "http://127.0.0.1:" + std::to_string(server.port()) + path;
}

// What is sent.

TEST(HttpClientRequest, PostWithJson)
{
    ScriptedServer server(created);
    const ClientAnswer answer = answer_to(
        {.method = "POST", .url = server.url("/resource"), .json = R"({"data":{},"type":"node"})"});
    EXPECT_EQ(answer.status, 201);
    EXPECT_EQ(answer.body, "{}");
    EXPECT_EQ(answer.why, "");
    EXPECT_EQ(answer.location, "");
    const std::string request = server.requests(1).front();
    EXPECT_EQ(request, "POST /resource HTTP/1.1\r\n"
                       "Host: 127.0.0.1:" +
                           std::to_string(server.port()) +
                           "\r\n"
                           "User-Agent: nmos-instrument\r\n"
                           "Accept: */*\r\n"
                           "Content-Type: application/json\r\n"
                           "Content-Length: 25\r\n"
                           "\r\n"
                           R"({"data":{},"type":"node"})");
}

TEST(HttpClientRequest, PostWithoutABodyHasNoContentType)
{
    ScriptedServer server(created);
    EXPECT_EQ(answer_to({.method = "POST", .url = server.url("/health/nodes/1")}).status, 201);
    const std::string request = server.requests(1).front();
    EXPECT_EQ(first_line_of(request), "POST /health/nodes/1 HTTP/1.1");
    EXPECT_EQ(headers_of(request), "User-Agent: nmos-instrument\r\n"
                                   "Accept: */*\r\n"
                                   "Content-Length: 0\r\n"
                                   "\r\n");
}

TEST(HttpClientRequest, Delete)
{
    ScriptedServer server("HTTP/1.1 204 No Content\r\n\r\n");
    const ClientAnswer answer =
        answer_to({.method = "DELETE", .url = server.url("/resource/nodes/1")});
    EXPECT_EQ(answer.status, 204);
    EXPECT_EQ(answer.body, "");
    const std::string request = server.requests(1).front();
    EXPECT_EQ(first_line_of(request), "DELETE /resource/nodes/1 HTTP/1.1");
    EXPECT_EQ(headers_of(request), "User-Agent: nmos-instrument\r\n"
                                   "Accept: */*\r\n"
                                   "\r\n");
}

TEST(HttpClientRequest, Get)
{
    ScriptedServer server(created);
    EXPECT_EQ(answer_to(get(server.url("/?a=b"))).status, 201);
    const std::string request = server.requests(1).front();
    EXPECT_EQ(first_line_of(request), "GET /?a=b HTTP/1.1");
    EXPECT_EQ(headers_of(request), "User-Agent: nmos-instrument\r\n"
                                   "Accept: */*\r\n"
                                   "\r\n");
}

TEST(HttpClientRequest, OtherMethodsWithJson)
{
    ScriptedServer server(created);
    EXPECT_EQ(answer_to({.method = "PATCH", .url = server.url("/"), .json = "[]"}).status, 201);
    const std::string request = server.requests(1).front();
    EXPECT_EQ(first_line_of(request), "PATCH / HTTP/1.1");
    EXPECT_EQ(headers_of(request), "User-Agent: nmos-instrument\r\n"
                                   "Accept: */*\r\n"
                                   "Content-Type: application/json\r\n"
                                   "Content-Length: 2\r\n"
                                   "\r\n"
                                   "[]");
}

// Longer than what libcurl would ask for with "Expect: 100-continue".
TEST(HttpClientRequest, LongJson)
{
    HttpServer server({}, [](const HttpRequest& request, const HttpReply& reply) {
        reply({200, "text/plain", std::to_string(request.body.size()), {}});
    });
    const ClientAnswer answer =
        answer_to({.method = "POST", .url = url_of(server), .json = std::string(1'000'000, ' ')});
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "1000000");
}

TEST(HttpClientRequest, TheAddressOfTheHost)
{
    ScriptedServer server(created);
    const std::string port = std::to_string(server.port());
    const ClientAnswer answer = answer_to({.method = "GET",
                                           .url = "http://" + unknown_host + ":" + port + "/a",
                                           .address = "127.0.0.1"});
    EXPECT_EQ(answer.status, 201);
    EXPECT_THAT(server.requests(1).front(),
                StartsWith("GET /a HTTP/1.1\r\nHost: " + unknown_host + ":" + port + "\r\n"));
}

TEST(HttpClientRequest, AnIpv6AddressOfTheHost)
{
    std::unique_ptr<ScriptedServer> server;
    try {
        server = std::make_unique<ScriptedServer>(created, ScriptedServer::Then::closes, "::1");
    } catch (const std::system_error& error) {
        GTEST_SKIP() << "this machine has no IPv6: " << error.what();
    }
    const std::string port = std::to_string(server->port());
    const ClientAnswer answer = answer_to(
        {.method = "GET", .url = "http://" + unknown_host + ":" + port + "/a", .address = "::1"});
    EXPECT_EQ(answer.status, 201) << answer.why;
    EXPECT_THAT(server->requests(1).front(),
                StartsWith("GET /a HTTP/1.1\r\nHost: " + unknown_host + ":" + port + "\r\n"));
    EXPECT_EQ(answer_to(get(server->url("/b"))).status, 201);
}

// Neither an open connection to another address nor the address of an earlier request is used.
TEST(HttpClientRequest, TheAddressCountsForItsRequestOnly)
{
    HttpServer first({}, with_text("first"));
    HttpServerOptions options;
    options.listen.address = "127.0.0.2";
    options.port = first.port();
    HttpServer second(options, with_text("second"));
    HttpClient client{Log()};
    const std::string url = "http://" + unknown_host + ":" + std::to_string(first.port()) + '/';
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(answer_to(client, {.method = "GET", .url = url, .address = "127.0.0.1"}).body,
                  "first");
        EXPECT_EQ(answer_to(client, {.method = "GET", .url = url, .address = "127.0.0.2"}).body,
                  "second");
    }
    const ClientAnswer nowhere = answer_to(client, get(url));
    EXPECT_EQ(nowhere.status, 0);
    EXPECT_THAT(nowhere.why, HasSubstr("resolve host: " + unknown_host));
}

// What is answered.

TEST(HttpClientAnswer, ErrorsHaveTheirBody)
{
    ScriptedServer server("HTTP/1.1 400 Bad Request\r\nContent-Length: 12\r\n\r\n{\"code\":400}");
    const ClientAnswer answer = answer_to(get(server.url("/")));
    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, "{\"code\":400}");
    EXPECT_EQ(answer.why, "");
    EXPECT_GT(answer.duration, 0us);
    EXPECT_LT(answer.duration, patience);
}

TEST(HttpClientAnswer, InterimAnswersAreNotTheAnswer)
{
    ScriptedServer server("HTTP/1.1 102 Processing\r\n\r\n"
                          "HTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\nx");
    const ClientAnswer answer = answer_to(get(server.url("/")));
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "x");
}

TEST(HttpClientAnswer, RedirectsAreNotFollowed)
{
    ScriptedServer server("HTTP/1.1 307 Temporary Redirect\r\nLocation: /elsewhere?a=b\r\n"
                          "Content-Length: 0\r\n\r\n");
    const ClientAnswer answer = answer_to({.method = "POST", .url = server.url("/here")});
    EXPECT_EQ(answer.status, 307);
    EXPECT_EQ(answer.location, server.url("/elsewhere?a=b"));
    EXPECT_EQ(answer.why, "");
    EXPECT_EQ(server.requests(1).size(), 1U);
}

TEST(HttpClientAnswer, TheBodyIsCutAt64KiB)
{
    HttpServer server({}, with_text(std::string(1024UL * 1024, 'x')));
    const ClientAnswer answer = answer_to(get(url_of(server)));
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, std::string(65'536, 'x'));
    EXPECT_EQ(answer.why, "");
}

TEST(HttpClientAnswer, MoreThanAMebibyteIsAFailure)
{
    HttpServer server({}, with_text(std::string(1024UL * 1024 + 1, 'x')));
    const ClientAnswer answer = answer_to(get(url_of(server)));
    EXPECT_EQ(answer.status, 0);
    EXPECT_EQ(answer.body, "");
    EXPECT_EQ(answer.why, "longer than 1048576 bytes");
}

TEST(HttpClientAnswer, WithoutALengthTheEndOfTheConnectionEndsIt)
{
    ScriptedServer server("HTTP/1.1 200 OK\r\n\r\nall of it");
    const ClientAnswer answer = answer_to(get(server.url("/")));
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "all of it");
}

struct Failing
{
    const char* name;
    const char* answer;
    const char* why; ///< a part of it: the words are libcurl's, and differ between its versions
};

class HttpClientFailure : public testing::TestWithParam<Failing>
{};

TEST_P(HttpClientFailure, HasNoStatusAndAReason)
{
    ScriptedServer server(GetParam().answer);
    const ClientAnswer answer = answer_to(get(server.url("/")));
    EXPECT_EQ(answer.status, 0);
    EXPECT_EQ(answer.body, "");
    EXPECT_EQ(answer.location, "");
    EXPECT_THAT(answer.why, HasSubstr(GetParam().why));
}

INSTANTIATE_TEST_SUITE_P(
    Answers, HttpClientFailure,
    testing::Values(
        Failing{"HalfABody", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf", "5 bytes"},
        Failing{"HalfAChunk", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n9\r\nhalf",
                "transfer closed"},
        Failing{"NoLastChunk", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nhalf\r\n",
                "transfer closed"},
        Failing{"NotHttp", "SSH-2.0-none\r\n", "HTTP/0.9"},
        Failing{"NoText", "\x16\x03\x01\x02\x03", "HTTP/0.9"},
        Failing{"NoStatus", "HTTP/1.1 OK\r\n\r\n", "HTTP"},
        Failing{"TwoLengths", "HTTP/1.1 200 OK\r\nContent-Length: 2\r\nContent-Length: x\r\n\r\n{}",
                "Content-Length"}),
    [](const auto& one) { return std::string(one.param.name); });

TEST(HttpClientFailures, TheHeadersHaveALimit)
{
    ScriptedServer server("HTTP/1.1 200 OK\r\nA: " + std::string(1'000'000, 'x') + "\r\n\r\n");
    const ClientAnswer answer = answer_to(get(server.url("/")));
    EXPECT_EQ(answer.status, 0);
    EXPECT_NE(answer.why, "");
}

TEST(HttpClientFailures, RefusedConnection)
{
    std::uint16_t port = 0;
    {
        const ScriptedServer server(created);
        port = server.port();
    }
    const ClientAnswer answer =
        answer_to(get("http://127.0.0.1:" + std::to_string(port) + "/resource"));
    EXPECT_EQ(answer.status, 0);
    EXPECT_THAT(answer.why, HasSubstr("onnect to 127.0.0.1 port "));
}

TEST(HttpClientFailures, NoAnswerInTime)
{
    ScriptedServer server("", ScriptedServer::Then::stays_silent);
    const auto begin = Clock::now();
    const ClientAnswer answer =
        answer_to({.method = "POST", .url = server.url("/"), .time_limit = 200ms});
    EXPECT_GE(Clock::now() - begin, 200ms);
    EXPECT_EQ(answer.status, 0);
    EXPECT_THAT(answer.why, HasSubstr("timed out after 2"));
    EXPECT_GE(answer.duration, 200ms);
    EXPECT_EQ(server.requests(1).size(), 1U);
}

TEST(HttpClientFailures, HalfAnAnswerInTime)
{
    ScriptedServer server("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf",
                          ScriptedServer::Then::stays_silent);
    const ClientAnswer answer =
        answer_to({.method = "GET", .url = server.url("/"), .time_limit = 100ms});
    EXPECT_EQ(answer.status, 0);
    EXPECT_EQ(answer.body, "");
    EXPECT_THAT(answer.why, HasSubstr("timed out after 1"));
}

TEST(HttpClientFailures, UrlsThatCannotBeUsed)
{
    HttpClient client{Log()};
    for (const auto& [url, why] : std::vector<std::pair<std::string, std::string>>{
             {"", "URL"},
             {"http://", "URL"},
             {"http://127.0.0.1:100000/", "URL"},
             {"file:///etc/hostname", "\"file\""},
             {"ftp://127.0.0.1/", "\"ftp\""},
             {"http://" + unknown_host, "resolve host: " + unknown_host}}) {
        const ClientAnswer answer = answer_to(client, get(url));
        EXPECT_EQ(answer.status, 0) << url;
        EXPECT_THAT(answer.why, HasSubstr(why)) << url;
    }
}

TEST(HttpClientFailures, HttpsWithOneWhoHasNone)
{
    HttpServer server({}, with_text("plain"));
    const ClientAnswer answer =
        answer_to(get("https://127.0.0.1:" + std::to_string(server.port()) + '/'));
    EXPECT_EQ(answer.status, 0);
    EXPECT_THAT(answer.why, HasSubstr("SSL"));
}

TEST(HttpClientFailures, NoFileOfCertificates)
{
    ClientRequest request = get("https://127.0.0.1:1/");
    HttpServer server({}, with_text("plain"));
    request.url = "https://127.0.0.1:" + std::to_string(server.port()) + '/';
    request.ca_file = "/nowhere/ca.pem";
    const ClientAnswer answer = answer_to(request);
    EXPECT_EQ(answer.status, 0);
    EXPECT_THAT(answer.why, HasSubstr("/nowhere/ca.pem"));
}

// Connections.

TEST(HttpClientConnections, AreKept)
{
    std::mutex mutex;
    std::set<std::string> peers;
    HttpServer server({}, [&](const HttpRequest& request, const HttpReply& reply) {
        {
            const std::lock_guard lock(mutex);
            peers.insert(request.peer);
        }
        reply({200, "text/plain", "", {}});
    });
    HttpClient client{Log()};
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(answer_to(client, {.method = "POST", .url = url_of(server)}).status, 200);
    EXPECT_EQ(peers.size(), 1U);
}

TEST(HttpClientConnections, ThatTheServerHasClosedAreMadeAgain)
{
    HttpServerOptions options;
    options.idle_deadline = 50ms;
    HttpServer server(options, with_text("again"));
    HttpClient client{Log()};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(answer_to(client, {.method = "POST", .url = url_of(server), .json = "{}"}).body,
                  "again");
        std::this_thread::sleep_for(300ms);
    }
}

TEST(HttpClientConnections, ServeManyThreads)
{
    HttpServer server({}, [](const HttpRequest& request, const HttpReply& reply) {
        reply({200, "text/plain", request.path, {}});
    });
    HttpClient client{Log()};
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            for (int j = 0; j < 100; ++j) {
                const std::string path = '/' + std::to_string(i) + '/' + std::to_string(j);
                if (answer_to(client, get(url_of(server, path))).body == path)
                    ++right;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(right, 400);
}

TEST(HttpClientConnections, ServeManyRequestsAtOnce)
{
    HttpServer server({}, with_text("one of them"));
    std::atomic<int> answered{0};
    std::promise<void> all;
    HttpClient client{Log()};
    for (int i = 0; i < 200; ++i)
        client.send({.method = "POST", .url = url_of(server)}, [&](const ClientAnswer& answer) {
            EXPECT_EQ(answer.body, "one of them") << answer.why;
            if (++answered == 200)
                all.set_value();
        });
    EXPECT_EQ(all.get_future().wait_for(patience), std::future_status::ready);
}

/// Of this process.
std::ptrdiff_t open_files()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                         std::filesystem::directory_iterator());
}

TEST(HttpClientConnections, TenThousandRequestsLeaveNothingBehind)
{
    HttpServer server({}, with_text("once more"));
    HttpClient client{Log()};
    const auto send = [&](int count) {
        const auto done = std::make_shared<std::promise<void>>();
        int left = count;
        // Each answer sends the next request, as a heartbeat does.
        std::function<void()> next = [&] {
            client.send({.method = "POST", .url = url_of(server), .json = "{}"},
                        [&, done](const ClientAnswer& answer) {
                            EXPECT_EQ(answer.status, 200);
                            if (--left == 0)
                                done->set_value();
                            else
                                next();
                        });
        };
        next();
        ASSERT_EQ(done->get_future().wait_for(120s), std::future_status::ready);
    };
    send(100);
    const std::ptrdiff_t files = open_files();
    const std::size_t memory = mallinfo2().uordblks;
    send(10'000);
    EXPECT_EQ(open_files(), files);
    EXPECT_LT(mallinfo2().uordblks, memory + 50'000); // 5 bytes for each would be noticed
}

// Tasks.

/// What has run, in its order.
class Runs
{
public:
    HttpClient::Task note(int which)
    {
        return [this, which] {
            const std::lock_guard lock(mutex_);
            which_.push_back(which);
            changed_.notify_all();
        };
    }

    std::vector<int> wait_for(std::size_t count)
    {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, patience, [&] { return which_.size() >= count; });
        return which_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<int> which_;
};

TEST(HttpClientTasks, RunInTheOrderOfTheirTimes)
{
    Runs runs;
    HttpClient client{Log()};
    const auto soon = Clock::now() + 100ms;
    client.run_at(soon + 30ms, runs.note(5));
    client.run_at(soon + 10ms, runs.note(3));
    client.run_at(soon + 20ms, runs.note(4));
    client.run_at(soon - 1h, runs.note(1)); // overdue: at once
    EXPECT_THAT(runs.wait_for(1), ElementsAre(1));
    client.run(runs.note(2));
    EXPECT_THAT(runs.wait_for(5), ElementsAre(1, 2, 3, 4, 5));
    EXPECT_GE(Clock::now(), soon + 30ms);
}

TEST(HttpClientTasks, OfOneTimeRunInTheOrderOfTheirArrival)
{
    Runs runs;
    std::vector<int> expected;
    HttpClient client{Log()};
    const auto soon = Clock::now() + 50ms;
    for (int i = 0; i < 1000; ++i) {
        client.run_at(soon, runs.note(i));
        expected.push_back(i);
    }
    EXPECT_EQ(runs.wait_for(1000), expected);
}

TEST(HttpClientTasks, OfAllKindsOfTimes)
{
    Runs runs;
    HttpClient client{Log()};
    client.run_at(HttpClient::TimePoint::max(), runs.note(9));
    client.run_at(HttpClient::TimePoint::min(), runs.note(1));
    EXPECT_THAT(runs.wait_for(1), ElementsAre(1));
    client.run_at(HttpClient::TimePoint(), runs.note(2));
    EXPECT_THAT(runs.wait_for(2), ElementsAre(1, 2));
}

TEST(HttpClientTasks, ManyWaitForTheirTimes)
{
    constexpr int count = 10'000;
    std::vector<int> order; // of the client's thread, until all have run
    int early = 0;
    std::vector<int> expected(count);
    std::iota(expected.begin(), expected.end(), 0);
    std::promise<void> all;
    HttpClient client{Log()};
    client.run([&] {
        const auto begin = Clock::now();
        for (int i = 0; i < count; ++i) {
            const int place = (i * 7919) % count; // each place once, in another order
            const auto due = begin + std::chrono::microseconds(20 * place);
            client.run_at(due, [&, place, due] {
                if (Clock::now() < due)
                    ++early;
                order.push_back(place);
                if (order.size() == count)
                    all.set_value();
            });
        }
    });
    ASSERT_EQ(all.get_future().wait_for(patience), std::future_status::ready);
    EXPECT_EQ(early, 0);
    EXPECT_EQ(order, expected);
}

TEST(HttpClientTasks, MayAddTasksAndSendRequests)
{
    HttpServer server({}, with_text("from a task"));
    std::promise<std::string> body;
    HttpClient client{Log()};
    client.run([&] {
        client.run_at(Clock::now() + 10ms, [&] {
            client.send(get(url_of(server)),
                        [&](const ClientAnswer& answer) { body.set_value(answer.body); });
        });
    });
    EXPECT_EQ(body.get_future().get(), "from a task");
}

// A task that asks for itself again and again does not keep the requests waiting.
TEST(HttpClientTasks, WithoutAnEnd)
{
    HttpServer server({}, with_text("meanwhile"));
    std::atomic<bool> ends{false};
    std::function<void()> again;
    HttpClient client{Log()};
    again = [&] {
        if (!ends)
            client.run_at(HttpClient::TimePoint::min(), again);
    };
    client.run(again);
    EXPECT_EQ(answer_to(client, get(url_of(server))).body, "meanwhile");
    ends = true;
}

TEST(HttpClientTasks, ThatThrowStopNothing)
{
    HttpServer server({}, with_text("still here"));
    HttpClient client{Log()};
    client.run([] { throw std::runtime_error("from a task of this test"); });
    client.run([] { throw 5; });
    client.run({});
    client.send(get(url_of(server)), [](const ClientAnswer&) { throw std::bad_alloc(); });
    EXPECT_EQ(answer_to(client, get(url_of(server))).body, "still here");
}

TEST(HttpClientTasks, OfSeveralThreads)
{
    std::atomic<int> runs{0};
    std::promise<void> all;
    HttpClient client{Log()};
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int j = 0; j < 1000; ++j)
                client.run([&] {
                    if (++runs == 4000)
                        all.set_value();
                });
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(all.get_future().wait_for(patience), std::future_status::ready);
}

// The end.

TEST(HttpClientEnd, GivesUpWhatRunsAndDropsTasks)
{
    ScriptedServer silent("", ScriptedServer::Then::stays_silent);
    std::mutex mutex;
    std::vector<std::string> reasons;
    bool task_has_run = false;
    const auto begin = Clock::now();
    {
        HttpClient client{Log()};
        client.run_at(Clock::now() + 1h, [&] { task_has_run = true; });
        for (int i = 0; i < 20; ++i)
            client.send({.method = "POST", .url = silent.url("/"), .time_limit = 60s},
                        [&](const ClientAnswer& answer) {
                            const std::lock_guard lock(mutex);
                            EXPECT_EQ(answer.status, 0);
                            reasons.push_back(answer.why);
                        });
        EXPECT_EQ(silent.requests(20).size(), 20U);
        for (int i = 0; i < 5; ++i) // which may not have begun
            client.send({.method = "POST", .url = silent.url("/"), .time_limit = 60s},
                        [&](const ClientAnswer& answer) {
                            const std::lock_guard lock(mutex);
                            reasons.push_back(answer.why);
                        });
    }
    EXPECT_LT(Clock::now() - begin, 10s);
    EXPECT_EQ(reasons, std::vector<std::string>(25, "the program is stopping"));
    EXPECT_FALSE(task_has_run);
}

// Whoever sends again what fails would keep the client alive for ever.
TEST(HttpClientEnd, RefusesToSendAgain)
{
    ScriptedServer silent("", ScriptedServer::Then::stays_silent);
    int answers = 0;
    std::string refusal;
    {
        HttpClient client{Log()};
        client.send({.method = "POST", .url = silent.url("/")}, [&](const ClientAnswer&) {
            ++answers;
            try {
                client.send(get(silent.url("/")), [&](const ClientAnswer&) { ++answers; });
            } catch (const std::runtime_error& error) {
                refusal = error.what();
            }
        });
        EXPECT_EQ(silent.requests(1).size(), 1U);
    }
    EXPECT_EQ(answers, 1);
    EXPECT_EQ(refusal, "the program is stopping");
}

TEST(HttpClientEnd, AtAnyMoment)
{
    HttpServer server({}, with_text("in time"));
    for (int round = 0; round < 50; ++round) {
        std::atomic<int> answers{0};
        {
            HttpClient client{Log()};
            for (int i = 0; i < 10; ++i)
                client.send(get(url_of(server)), [&](const ClientAnswer&) { ++answers; });
            std::this_thread::sleep_for(std::chrono::microseconds(100 * round));
        }
        EXPECT_EQ(answers, 10);
    }
}

// Transfers of others.

/// What was called, in its order.
struct Calls
{
    std::vector<std::string> calls;
    std::promise<void> gone;
};

class NotingTransfer : public ClientTransfer
{
public:
    NotingTransfer(Calls& calls, std::string url, std::string throws_in)
        : calls_(calls), url_(std::move(url)), throws_in_(std::move(throws_in))
    {}

    ~NotingTransfer() override
    {
        handle_.reset();
        calls_.gone.set_value();
    }

    CURL* begin() override
    {
        note("begin");
        handle_ = new_easy_handle(url_);
        return handle_.get();
    }

    void end(CURLcode result) override { note("end " + std::to_string(result)); }

    void give_up(const char* why) noexcept override
    {
        calls_.calls.push_back("give up: " + std::string(why));
    }

private:
    void note(const std::string& call)
    {
        calls_.calls.push_back(call);
        if (call.starts_with(throws_in_))
            throw std::runtime_error("thrown in " + throws_in_);
    }

    Calls& calls_;
    const std::string url_;
    const std::string throws_in_;
    EasyHandle handle_;
};

std::vector<std::string> calls_of(const std::string& url, const std::string& throws_in)
{
    Calls calls;
    HttpClient client{Log()};
    client.start(std::make_unique<NotingTransfer>(calls, url, throws_in));
    EXPECT_EQ(calls.gone.get_future().wait_for(patience), std::future_status::ready);
    return calls.calls;
}

TEST(HttpClientTransfer, EndsOrIsGivenUp)
{
    ScriptedServer server("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    EXPECT_THAT(calls_of(server.url("/"), "nothing"), ElementsAre("begin", "end 0"));
    EXPECT_THAT(calls_of("http://" + unknown_host, "nothing"), ElementsAre("begin", "end 6"));
    EXPECT_THAT(calls_of(server.url("/"), "begin"),
                ElementsAre("begin", "give up: thrown in begin"));
    EXPECT_THAT(calls_of(server.url("/"), "end"),
                ElementsAre("begin", "end 0", "give up: thrown in end"));
}

TEST(HttpClientTransfer, WithoutAHandleIsGivenUp)
{
    class Empty : public NotingTransfer
    {
    public:
        using NotingTransfer::NotingTransfer;
        CURL* begin() override { return nullptr; }
    };
    Calls calls;
    HttpClient client{Log()};
    client.start(std::make_unique<Empty>(calls, "", "nothing"));
    EXPECT_EQ(calls.gone.get_future().wait_for(patience), std::future_status::ready);
    EXPECT_THAT(calls.calls, ElementsAre("give up: Invalid easy handle"));
}

} // namespace
} // namespace nmos_instrument::host
