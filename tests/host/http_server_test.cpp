// SPDX-License-Identifier: Apache-2.0

#include "http/server.h"

#include <condition_variable>
#include <mutex>
#include <regex>
#include <stdexcept>
#include <system_error>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "http_test_client.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::MatchesRegex;
using testing::StartsWith;

const std::string end_of_headers = "Host: test\r\n\r\n";

std::string get(const std::string& target)
{
    return "GET " + target + " HTTP/1.1\r\n" + end_of_headers;
}

// Tells what the handler was given: "METHOD path type=... body=...".
void describe(const HttpRequest& request, const HttpReply& reply)
{
    HttpResponse response;
    response.body = request.method + ' ' + request.path;
    if (request.content_type)
        response.body += " type=" + *request.content_type;
    if (!request.body.empty())
        response.body += " body=" + request.body;
    reply(std::move(response));
}

// What describe() was given on a connection of its own.
std::string described(std::uint16_t port, const std::string& request)
{
    const auto response = fetch(port, request);
    return response ? response->body : "no answer";
}

TEST(HttpServer, AnswersWithWhatTheHandlerGives)
{
    HttpServer server({}, [](const HttpRequest&, const HttpReply& reply) {
        reply({201, "application/sdp", "v=0\r\n", {{"Cache-Control", "no-cache"}}});
    });
    const auto response = fetch(server.port(), get("/"));
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 201);
    EXPECT_EQ(response->body, "v=0\r\n");
    EXPECT_EQ(response->header("content-length"), "5");
    EXPECT_EQ(response->header("content-type"), "application/sdp");
    EXPECT_EQ(response->header("cache-control"), "no-cache");
    EXPECT_EQ(response->header("access-control-allow-origin"), "*");
    // RFC 9110 5.6.7
    EXPECT_TRUE(std::regex_match(
        response->header("date"),
        std::regex("(Mon|Tue|Wed|Thu|Fri|Sat|Sun), \\d\\d (Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|"
                   "Nov|Dec) \\d{4} \\d\\d:\\d\\d:\\d\\d GMT")))
        << response->header("date");
}

TEST(HttpServer, SendsNoContentTypeWhenThereIsNone)
{
    HttpServer server({}, [](const HttpRequest&, const HttpReply& reply) {
        reply({200, "", "", {{"Allow", "GET, HEAD"}}});
    });
    const auto response = fetch(server.port(), "OPTIONS / HTTP/1.1\r\n" + end_of_headers);
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 200);
    EXPECT_EQ(response->headers.count("content-type"), 0U);
    EXPECT_EQ(response->header("content-length"), "0");
    EXPECT_EQ(response->header("allow"), "GET, HEAD");
}

TEST(HttpServer, MakesHeadFromGet)
{
    HttpServer server({}, &describe);
    TestClient client(server.port());
    client.send("HEAD /x-nmos/ HTTP/1.1\r\n" + end_of_headers + get("/after"));
    const auto head = client.receive_head();
    ASSERT_TRUE(head);
    EXPECT_EQ(head->status, 200);
    EXPECT_EQ(head->header("content-length"), "12"); // "GET /x-nmos/"
    EXPECT_EQ(head->header("content-type"), "application/json");
    EXPECT_EQ(head->header("access-control-allow-origin"), "*");
    // The next byte belongs to the next answer.
    const auto next = client.receive();
    ASSERT_TRUE(next);
    EXPECT_EQ(next->body, "GET /after");
}

TEST(HttpServer, PassesEveryOtherMethodOn)
{
    HttpServer server({}, &describe);
    const std::string rest = " /a HTTP/1.1\r\n" + end_of_headers;
    for (const std::string method :
         {"GET", "POST", "PUT", "PATCH", "DELETE", "OPTIONS", "BREW", "get"})
        EXPECT_EQ(described(server.port(), method + rest), method + " /a");
    EXPECT_EQ(described(server.port(), "OPTIONS * HTTP/1.1\r\n" + end_of_headers), "OPTIONS *");
}

TEST(HttpServer, GivesThePathWithoutQueryAndWithoutNeedlessEncoding)
{
    HttpServer server({}, &describe);
    EXPECT_EQ(described(server.port(), get("/a?b=c?d=%41")), "GET /a");
    EXPECT_EQ(described(server.port(), get("/?")), "GET /");
    EXPECT_EQ(described(server.port(), get("/x%2Dnmos/%6Eode/a%2Fb%00c+d")),
              "GET /x-nmos/node/a%2Fb%00c+d");
    EXPECT_EQ(described(server.port(), get("//a/../b/")), "GET //a/../b/");
    EXPECT_EQ(described(server.port(), get("http://10.0.0.1:3000/a?b")), "GET /a");
    EXPECT_EQ(described(server.port(), get("/\xc3\xa9\xff")), "GET /\xc3\xa9\xff");
    EXPECT_EQ(described(server.port(), get('/' + std::string(7000, 'p'))),
              "GET /" + std::string(7000, 'p'));
}

TEST(HttpServer, TellsAnAbsentContentTypeFromAnEmptyOne)
{
    HttpServer server({}, &describe);
    const std::string begin = "PUT /a HTTP/1.1\r\nContent-Length: 2\r\n";
    const std::string end = end_of_headers + "{}";
    EXPECT_EQ(described(server.port(), begin + end), "PUT /a body={}");
    EXPECT_EQ(described(server.port(), begin + "Content-Type: \r\n" + end), "PUT /a type= body={}");
    EXPECT_EQ(
        described(server.port(), begin + "content-TYPE: application/json; charset=utf-8\r\n" + end),
        "PUT /a type=application/json; charset=utf-8 body={}");
}

TEST(HttpServer, GivesWholeBodies)
{
    HttpServer server({}, &describe);
    std::string bytes("a\0b\r\n\r\n\xff", 8);
    EXPECT_EQ(described(server.port(),
                        "PATCH /a HTTP/1.1\r\nContent-Length: 8\r\n" + end_of_headers + bytes),
              "PATCH /a body=" + bytes);
    EXPECT_EQ(described(server.port(),
                        "POST /a HTTP/1.1\r\nTransfer-Encoding: Chunked\r\n" + end_of_headers +
                            "3\r\n{\"a\r\n00A;x=y\r\n\":1234567}\r\n0\r\nX: y\r\n\r\n"),
              "POST /a body={\"a\":1234567}");
    EXPECT_EQ(
        described(server.port(), "GET /a HTTP/1.1\r\nContent-Length: 1\r\n" + end_of_headers + "x"),
        "GET /a body=x");
    const std::string large(1000'000, 'x');
    EXPECT_EQ(described(server.port(),
                        "PUT /a HTTP/1.1\r\nContent-Length: 1000000\r\n" + end_of_headers + large),
              "PUT /a body=" + large);
}

TEST(HttpServer, TakesRequestsInAnyPieces)
{
    HttpServer server({}, &describe);
    TestClient client(server.port());
    const std::string request = "PUT /a HTTP/1.1\r\nTransfer-Encoding: chunked\r\n" +
                                end_of_headers + "3\r\nabc\r\n0\r\n\r\n";
    for (const char byte : request)
        ASSERT_TRUE(client.send(std::string(1, byte)));
    const auto response = client.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "PUT /a body=abc");
}

TEST(HttpServer, AnswersPipelinedRequestsInTheirOrder)
{
    HttpServer server({}, &describe);
    TestClient client(server.port());
    client.send(get("/1") + "PUT /2 HTTP/1.1\r\nContent-Length: 3\r\n" + end_of_headers + "abc" +
                get("/3") + get("/4") + "PUT /5 HTTP/1.1\r\nTransfer-Encoding: chunked\r\n" +
                end_of_headers + "2\r\nde\r\n0\r\n\r\n");
    for (const std::string expected :
         {"GET /1", "PUT /2 body=abc", "GET /3", "GET /4", "PUT /5 body=de"}) {
        const auto response = client.receive();
        ASSERT_TRUE(response) << expected;
        EXPECT_EQ(response->body, expected);
    }
}

TEST(HttpServer, KeepsTheConnectionAsTheClientWishes)
{
    HttpServer server({}, &describe);
    TestClient kept(server.port());
    for (int i = 0; i < 100; ++i) {
        kept.send(get("/a"));
        ASSERT_TRUE(kept.receive());
    }
    EXPECT_FALSE(kept.is_closed_within(50ms));

    TestClient closed(server.port());
    closed.send("GET / HTTP/1.1\r\nConnection: close\r\n" + end_of_headers);
    const auto last = closed.receive();
    ASSERT_TRUE(last);
    EXPECT_EQ(last->header("connection"), "close");
    EXPECT_TRUE(closed.is_closed_within(5s));

    TestClient old(server.port());
    old.send("GET / HTTP/1.0\r\n\r\n");
    ASSERT_TRUE(old.receive());
    EXPECT_TRUE(old.is_closed_within(5s));
}

TEST(HttpServer, AnswersAClientThatHasFinishedSending)
{
    HttpServer server({}, &describe);
    TestClient client(server.port());
    client.send(get("/a"));
    client.finish_sending();
    const auto response = client.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "GET /a");
    // Long before the idle deadline.
    EXPECT_TRUE(client.is_closed_within(5s));
}

TEST(HttpServer, TellsThePeer)
{
    HttpServer server({}, [](const HttpRequest& request, const HttpReply& reply) {
        reply({200, "text/plain", request.peer, {}});
    });
    TestClient client(server.port(), "127.0.0.7");
    client.send(get("/"));
    const auto response = client.receive();
    ASSERT_TRUE(response);
    EXPECT_THAT(response->body, MatchesRegex("127\\.0\\.0\\.7:[0-9]+"));
}

TEST(HttpServer, ServesIpv4AndIpv6AtOnce)
{
    HttpServerOptions options;
    options.listen = {};
    HttpServer server(options, [](const HttpRequest& request, const HttpReply& reply) {
        reply({200, "text/plain", request.peer, {}});
    });
    const auto peer_of_client_at = [&](const char* address) {
        TestClient client(server.port(), address);
        client.send(get("/"));
        const auto response = client.receive();
        return response ? response->body : "no answer";
    };
    EXPECT_THAT(peer_of_client_at("127.0.0.7"), MatchesRegex("127\\.0\\.0\\.7:[0-9]+"));
    try {
        EXPECT_THAT(peer_of_client_at("::1"), MatchesRegex("\\[::1\\]:[0-9]+"));
    } catch (const std::system_error& error) {
        GTEST_SKIP() << "this machine has no IPv6: " << error.what();
    }
}

TEST(HttpServer, SurvivesExceptionsOfTheHandler)
{
    std::mutex mutex;
    std::vector<std::string> remarks;
    HttpServerOptions options;
    options.on_failure = [&](const std::string& remark) {
        const std::lock_guard lock(mutex);
        remarks.push_back(remark);
    };
    HttpServer server(options, [](const HttpRequest& request, const HttpReply& reply) {
        if (request.path == "/standard")
            throw std::runtime_error("out of \"luck\"");
        if (request.path == "/other")
            throw 42;
        describe(request, reply);
    });
    TestClient client(server.port());
    client.send(get("/standard") + get("/other") + get("/fine"));
    auto response = client.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 500);
    EXPECT_EQ(response->body, R"({"code":500,"error":"Internal error","debug":"out of \"luck\""})");
    EXPECT_EQ(response->header("content-type"), "application/json");
    EXPECT_EQ(response->header("access-control-allow-origin"), "*");
    response = client.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 500);
    EXPECT_EQ(response->body,
              R"({"code":500,"error":"Internal error","debug":"an exception of unknown type"})");
    response = client.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "GET /fine");
    server.stop();
    EXPECT_THAT(remarks,
                ElementsAre(MatchesRegex(R"(127\.0\.0\.1:[0-9]+ "GET" "/standard": out of "luck")"),
                            MatchesRegex(R"(127\.0\.0\.1:[0-9]+ "GET" "/other": an exception of )"
                                         R"(unknown type)")));
}

TEST(HttpServer, KeepsTheFirstAnswer)
{
    HttpServer server({}, [](const HttpRequest& request, const HttpReply& reply) {
        reply({200, "", "first", {}});
        reply({200, "", "second", {}});
        if (request.path == "/throw")
            throw std::runtime_error("too late");
    });
    EXPECT_EQ(described(server.port(), get("/")), "first");
    EXPECT_EQ(described(server.port(), get("/throw")), "first");
}

TEST(HttpServer, AnswersWhenTheHandlerForgetsTo)
{
    HttpServer server({}, [](const HttpRequest&, const HttpReply&) {});
    const auto response = fetch(server.port(), get("/"));
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 500);
    EXPECT_EQ(response->body,
              R"({"code":500,"error":"Internal error","debug":"the request was not answered"})");
}

TEST(HttpServer, SendsNothingThatHttpDoesNotAllow)
{
    HttpServer server({}, [](const HttpRequest& request, const HttpReply& reply) {
        HttpResponse response;
        if (request.path == "/status")
            response.status = 42;
        else if (request.path == "/interim")
            response.status = 100;
        else if (request.path == "/type")
            response.content_type = "text/plain\r\nSet-Cookie: a=b";
        else
            response.headers = {{"X-Name", "a\r\nSet-Cookie: a=b"}};
        reply(std::move(response));
    });
    for (const std::string path : {"/status", "/interim", "/type", "/header"}) {
        const auto response = fetch(server.port(), get(path));
        ASSERT_TRUE(response) << path;
        EXPECT_EQ(response->status, 500) << path;
        EXPECT_EQ(response->headers.count("set-cookie"), 0U) << path;
        EXPECT_EQ(response->body,
                  R"({"code":500,"error":"Internal error","debug":"the answer cannot be sent"})");
    }
}

TEST(HttpServer, SendsLongBodiesWhole)
{
    std::string body;
    for (int i = 0; i < 1'000'000; ++i)
        body += std::to_string(i);
    HttpServer server({}, [&](const HttpRequest&, const HttpReply& reply) {
        reply({200, "text/plain", body, {}});
    });
    const auto response = fetch(server.port(), get("/"));
    ASSERT_TRUE(response);
    EXPECT_TRUE(response->body == body);
}

TEST(HttpServer, TellsTheLogAboutEachRequest)
{
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<HttpAccess> accesses;
    HttpServerOptions options;
    options.body_deadline = 300ms;
    options.on_request = [&](const HttpAccess& access) {
        const std::lock_guard lock(mutex);
        accesses.push_back(access);
        changed.notify_all();
        throw std::runtime_error("disk full");
    };
    HttpServer server(options, [](HttpRequest& request, const HttpReply& reply) {
        request.route = request.method.size();
        std::this_thread::sleep_for(20ms);
        reply({404, "", "", {}});
    });
    TestClient client(server.port());
    client.send("HEAD /a?b HTTP/1.1\r\n" + end_of_headers +
                "PUT /%61 HTTP/1.1\r\nContent-Length: 1\r\n" + end_of_headers + "x");
    ASSERT_TRUE(client.receive_head());
    ASSERT_TRUE(client.receive_head());
    {
        // A request is told of when its answer is sent, so perhaps after the client has it.
        std::unique_lock lock(mutex);
        ASSERT_TRUE(changed.wait_for(lock, 5s, [&] { return accesses.size() == 2; }));
    }
    {
        TestClient gone(server.port());
        gone.send("PUT /gone HTTP/1.1\r\nContent-Length: 9\r\n" + end_of_headers + "x");
        gone.finish_sending();
        EXPECT_TRUE(gone.is_closed_within(5s));
    }
    server.stop();
    ASSERT_EQ(accesses.size(), 3U);
    EXPECT_EQ(accesses[0].method, "HEAD");
    EXPECT_EQ(accesses[0].path, "/a");
    EXPECT_EQ(accesses[0].route, 3U); // for the handler it is a GET
    EXPECT_EQ(accesses[0].status, 404);
    EXPECT_THAT(accesses[0].peer, StartsWith("127.0.0.1:"));
    EXPECT_GE(accesses[0].duration, 20ms);
    EXPECT_LT(accesses[0].duration, 5s);
    EXPECT_EQ(accesses[1].method, "PUT");
    EXPECT_EQ(accesses[1].path, "/a");
    EXPECT_EQ(accesses[1].status, 404);
    EXPECT_EQ(accesses[2].path, "/gone");
    EXPECT_EQ(accesses[2].route, 0U);
    EXPECT_EQ(accesses[2].status, 0);
}

TEST(HttpServer, SurvivesWhatIsNoHttp)
{
    HttpServerOptions options;
    options.header_deadline = 300ms;
    options.body_deadline = 300ms;
    HttpServer server(options, &describe);
    using namespace std::string_literals;
    const std::vector<std::string> requests = {
        "\r\n\r\n\r\n",
        "\0\0\0\0\r\n\r\n"s,
        "GET\r\n\r\n",
        "GET /\r\n\r\n",
        "GET  \r\n\r\n",
        " / HTTP/1.1\r\n\r\n",
        "GET /a\0b HTTP/1.1\r\n"s + end_of_headers,
        "GET /a b HTTP/1.1\r\n" + end_of_headers,
        "GET / HTTP/9.9\r\n" + end_of_headers,
        "GET / HTTP/1.1\r\n\r\n", // no Host
        "GET / HTTP/1.1\r\n: x\r\n" + end_of_headers,
        "GET / HTTP/1.1\r\nnonsense\r\n" + end_of_headers,
        "GET / HTTP/1.1\r\n" + std::string(100'000, 'h') + ": x\r\n" + end_of_headers,
        "GET /" + std::string(100'000, 'p') + " HTTP/1.1\r\n" + end_of_headers,
        "PUT / HTTP/1.1\r\nContent-Length: -1\r\n" + end_of_headers,
        "PUT / HTTP/1.1\r\nContent-Length: 1x\r\n" + end_of_headers + "a",
        "PUT / HTTP/1.1\r\nContent-Length: 99999999999999999999999\r\n" + end_of_headers + "a",
        "PUT / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n" + end_of_headers +
            "zz\r\na\r\n0\r\n\r\n",
        "PUT / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n" + end_of_headers +
            "-1\r\na\r\n0\r\n\r\n",
        "PUT / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n" + end_of_headers +
            "fffffffffffffffffff\r\na\r\n0\r\n\r\n",
        "PUT / HTTP/1.1\r\nTransfer-Encoding: gzip\r\n" + end_of_headers + "abc",
        "\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03"s, // TLS
    };
    for (const std::string& request : requests) {
        TestClient client(server.port());
        client.send(request);
        client.finish_sending();
        EXPECT_TRUE(client.is_closed_within(5s)) << request.substr(0, 100);
        EXPECT_EQ(described(server.port(), get("/alive")), "GET /alive") << request.substr(0, 100);
    }
}

TEST(HttpServer, KnowsNoOtherTransferCodingThanChunked)
{
    HttpServer server({}, &describe);
    TestClient client(server.port());
    client.send("PUT / HTTP/1.1\r\nTransfer-Encoding: gzip\r\n" + end_of_headers);
    const auto response = client.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 501);
    EXPECT_EQ(response->body, R"({"code":501,"error":"Transfer coding not supported",)"
                              R"("debug":"Transfer-Encoding: found \"gzip\", allowed: chunked"})");
    EXPECT_TRUE(client.is_closed_within(5s));
}

TEST(HttpServer, SaysWhyItCannotStart)
{
    HttpServer first({}, &describe);
    HttpServerOptions options;
    options.port = first.port();
    try {
        HttpServer second(options, &describe);
        FAIL() << "two servers on one port";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::address_in_use);
        EXPECT_THAT(error.what(), StartsWith("127.0.0.1:" + std::to_string(first.port()) + ": "));
    }
    options = {};
    options.listen.address = "192.0.2.1"; // TEST-NET-1, nobody's
    EXPECT_THROW(HttpServer(options, &describe), std::system_error);
    for (const char* address : {"localhost", "[::1]", "10.1", "127.0.0.1 "}) {
        options.listen.address = address;
        EXPECT_THROW(HttpServer(options, &describe), std::invalid_argument) << address;
    }
}

} // namespace
} // namespace nmos_instrument::host
