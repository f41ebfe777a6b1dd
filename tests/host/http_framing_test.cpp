// SPDX-License-Identifier: Apache-2.0
//
// Requests whose end or meaning is doubtful (RFC 9112 11.2).

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "http/server.h"
#include "http_test_client.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

struct Doubtful
{
    std::string name;
    std::string request;
    std::string debug; ///< of the answer
};

void PrintTo(const Doubtful& doubtful, std::ostream* out) // NOLINT(readability-identifier-naming)
{
    *out << doubtful.name;
}

class HttpFraming : public testing::TestWithParam<Doubtful>
{};

TEST_P(HttpFraming, IsRefusedAndTheConnectionClosed)
{
    bool asked = false;
    HttpServer server({}, [&](const HttpRequest&, const HttpReply& reply) {
        asked = true;
        reply({});
    });
    TestClient client(server.port());
    client.send(GetParam().request);
    const auto response = client.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 400);
    EXPECT_EQ(response->body,
              R"({"code":400,"error":"Malformed request","debug":")" + GetParam().debug + "\"}");
    EXPECT_EQ(response->header("content-type"), "application/json");
    EXPECT_EQ(response->header("access-control-allow-origin"), "*");
    EXPECT_EQ(response->header("x-content-type-options"), "nosniff");
    EXPECT_EQ(response->header("connection"), "close");
    EXPECT_TRUE(client.is_closed_within(5s));
    EXPECT_FALSE(asked);
}

const std::string lines_allowed = ", allowed: a name, a colon and a value without NUL, in one line";
const std::string blanks_allowed =
    "request line: found a NUL or more than one blank in a row, allowed: method, target and "
    "version with one blank between them";

const Doubtful doubtful[] = {
    {"TwoLengths", "PUT / HTTP/1.1\r\nHost: a\r\nContent-Length: 2\r\nContent-Length: 3\r\n\r\n{}",
     "Content-Length: found 2, allowed: one"},
    {"TheSameLengthTwice",
     "PUT / HTTP/1.1\r\nHost: a\r\nContent-Length: 2\r\ncontent-length: 2\r\n\r\n{}",
     "Content-Length: found 2, allowed: one"},
    {"ABlankBeforeTheColon", "PUT / HTTP/1.1\r\nHost: a\r\nContent-Length : 2\r\n\r\n{}",
     R"(header line 2: found the name \"Content-Length \")" + lines_allowed},
    {"ATabBeforeTheColon", "GET / HTTP/1.1\r\nHost: a\r\nX\t: 2\r\n\r\n",
     R"(header line 2: found the name \"X\\x09\")" + lines_allowed},
    {"TwoHosts", "GET / HTTP/1.1\r\nHost: a\r\nHost: a\r\n\r\n", "Host: found 2, allowed: one"},
    {"NoHost", "GET / HTTP/1.1\r\nX: a\r\n\r\n", "Host: found none, allowed: one"},
    {"LengthAndCoding",
     "PUT / HTTP/1.1\r\nHost: a\r\nContent-Length: 2\r\nTransfer-Encoding: chunked\r\n\r\n"
     "0\r\n\r\n",
     "Content-Length: found with Transfer-Encoding, allowed: one of them"},
    {"CodingAndLength",
     "PUT / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\nContent-Length: 2\r\n\r\n"
     "0\r\n\r\n",
     "Content-Length: found with Transfer-Encoding, allowed: one of them"},
    {"TwoCodings",
     "PUT / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\nTransfer-Encoding: identity\r\n"
     "\r\n0\r\n\r\n",
     "Transfer-Encoding: found 2, allowed: one"},
    {"CodingInHttp10", "PUT / HTTP/1.0\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n",
     R"(Transfer-Encoding: found with \"HTTP/1.0\", allowed: with HTTP/1.1)"},
    {"NulInThePath", "GET /a\0b HTTP/1.1\r\nHost: a\r\n\r\n"s, blanks_allowed},
    {"NulInTheQuery", "GET /a?b\0c HTTP/1.1\r\nHost: a\r\n\r\n"s, blanks_allowed},
    {"NulInTheMethod", "GE\0T / HTTP/1.1\r\nHost: a\r\n\r\n"s, blanks_allowed},
    {"NulAfterTheMethod", "GET\0 / HTTP/1.1\r\nHost: a\r\n\r\n"s, blanks_allowed},
    {"NulInALength", "PUT / HTTP/1.1\r\nHost: a\r\nContent-Length: 2\0 3\r\n\r\n{}"s,
     "near header line 2: found something else" + lines_allowed},
    {"NulInAValue", "GET / HTTP/1.1\r\nHost: a\r\nX: b\0c\r\nY: d\r\n\r\n"s,
     "near header line 3: found something else" + lines_allowed},
    {"NulInTheLastValue", "GET / HTTP/1.1\r\nHost: a\r\nX: b\0c\r\n\r\n"s,
     "near header line 2: found something else" + lines_allowed},
    {"NulAtTheEndOfAValue", "GET / HTTP/1.1\r\nHost: a\r\nX: b\0\r\nY: d\r\n\r\n"s,
     "near header line 3: found something else" + lines_allowed},
    {"AFoldedLine", "GET / HTTP/1.1\r\nHost: a\r\nX: b\r\n c\r\n\r\n",
     "near header line 2: found something else" + lines_allowed},
    {"AFoldedFirstLine", "GET / HTTP/1.1\r\n X: b\r\nHost: a\r\n\r\n",
     R"(header line 1: found the name \" X\")" + lines_allowed},
    {"ALineWithoutName", "GET / HTTP/1.1\r\nHost: a\r\n: b\r\n\r\n",
     "near header line 1: found something else" + lines_allowed},
    {"ACrInAValue", "GET / HTTP/1.1\r\nHost: a\r\nX: b\rc\r\n\r\n",
     R"(header line 2: found a CR in the value of \"X\")" + lines_allowed},
    {"ABlankInTheTarget", "GET /a b HTTP/1.1\r\nHost: a\r\n\r\n",
     "request line: found a blank or control character in the target, allowed: %20"},
    {"ACrInTheTarget", "GET /a\rb HTTP/1.1\r\nHost: a\r\n\r\n",
     "request line: found a blank or control character in the target, allowed: %20"},
    {"ACrInTheQuery", "GET /a?\r HTTP/1.1\r\nHost: a\r\n\r\n",
     "request line: found a blank or control character in the target, allowed: %20"},
    {"AMethodThatIsNoToken", "\tGET / HTTP/1.1\r\nHost: a\r\n\r\n",
     R"(request line: found the method \"\\x09GET\", allowed: a token)"},
    {"NoHostInALaterVersion", "GET / HTTP/1.2\r\n\r\n", "Host: found none, allowed: one"},
};

INSTANTIATE_TEST_SUITE_P(Requests, HttpFraming, testing::ValuesIn(doubtful),
                         [](const auto& test) { return test.param.name; });

// What is unusual and clear all the same.
TEST(HttpFraming, LeavesWhatIsClear)
{
    HttpServer server({}, [](const HttpRequest& request, const HttpReply& reply) {
        reply({200, "text/plain", request.path + ' ' + request.body, {}});
    });
    const std::pair<std::string, std::string> requests[] = {
        {"PUT /a?b=c&d HTTP/1.1\r\nHost: a\r\nContent-Length: 2\r\n\r\n{}", "/a {}"},
        {"GET /a?b+c=d+e&f=%20+ HTTP/1.1\r\nHost: a\r\n\r\n", "/a "},
        {"GET /a+b HTTP/1.1\r\nHost: a\r\n\r\n", "/a+b "},
        {"PUT http://h/a HTTP/1.1\r\nHost:a\r\ncontent-length:\t2\r\n\r\n{}", "/a {}"},
        {"PUT /a HTTP/1.1\r\nHost: \r\nTransfer-Encoding: chunked\r\n\r\n2\r\n{}\r\n0\r\n\r\n",
         "/a {}"},
        {"GET /a HTTP/1.1\r\nHost:\r\nX:\r\nY: \r\nZ:  b  c  \r\n\r\n", "/a "},
        {"\r\nGET /a HTTP/1.1\r\nHost: a\r\nCookie: a=b; c\r\nX: 1\r\nX: 2\r\n\r\n", "/a "},
        {"GET /a HTTP/1.1\nHost: a\nX: b\n\n", "/a "},
        {"GET /%00 HTTP/1.1\r\nHost: a\r\nX: \x01\xff:\r\n\r\n", "/%00 "},
        {"GET /a HTTP/1.0\r\n\r\n", "/a "},
    };
    for (const auto& [request, body] : requests) {
        const auto response = fetch(server.port(), request);
        ASSERT_TRUE(response) << request;
        EXPECT_EQ(response->body, body) << request;
    }
}

// Others may see another end of its body, so nothing behind it is taken for a request.
TEST(HttpFraming, AChunkedRequestIsTheLastOfItsConnection)
{
    HttpServer server({}, [](const HttpRequest& request, const HttpReply& reply) {
        reply({200, "text/plain", request.body, {}});
    });
    TestClient client(server.port());
    client.send("PUT / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\n2;a\n{}\r\n0\r\n"
                "A : b\r\n\r\nGET / HTTP/1.1\r\nHost: a\r\n\r\n");
    const auto response = client.receive();
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "{}");
    EXPECT_EQ(response->header("connection"), "close");
    EXPECT_TRUE(client.is_closed_within(5s));
    EXPECT_EQ(client.rest(), "");
}

// libmicrohttpd has no room for them, nor for an answer that says so.
TEST(HttpFraming, TooManyArgumentsEndTheConnectionAtOnce)
{
    HttpServer server({}, [](const HttpRequest&, const HttpReply& reply) { reply({}); });
    std::string request = "GET /?";
    for (int i = 0; i < 1000; ++i)
        request += "a&";
    TestClient client(server.port());
    client.send(request + " HTTP/1.1\r\nHost: a\r\n\r\n");
    EXPECT_TRUE(client.is_closed_within(8s));
}

TEST(HttpFraming, LeavesManyHeaders)
{
    HttpServer server({}, [](const HttpRequest&, const HttpReply& reply) { reply({}); });
    std::string request = "GET / HTTP/1.1\r\nHost: a\r\n";
    for (int i = 0; i < 100; ++i)
        request += "X-" + std::to_string(i) + ": " + std::string(20, 'x') + "\r\n";
    const auto response = fetch(server.port(), request + "\r\n");
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 200);
}

} // namespace
} // namespace nmos_instrument::host
