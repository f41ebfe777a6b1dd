// SPDX-License-Identifier: Apache-2.0
//
// The server as a common client sees it.

#include "http/server.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include <curl/curl.h>
#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

struct CurlDeleter
{
    void operator()(CURL* curl) const { curl_easy_cleanup(curl); }
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

struct Answer
{
    CURLcode result = CURLE_OK;
    long status = 0;
    std::string body;
    std::string type;
    curl_off_t length = -1;
    long new_connections = 0;
};

size_t append(const char* data, size_t, size_t size, void* text)
{
    static_cast<std::string*>(text)->append(data, size);
    return size;
}

// Gives a body piece by piece, so that curl knows no length and sends it chunked.
struct Source
{
    std::size_t left;
};

size_t give(char* buffer, size_t, size_t size, void* source)
{
    std::size_t& left = static_cast<Source*>(source)->left;
    const std::size_t now = std::min(left, size);
    std::memset(buffer, 'x', now);
    left -= now;
    return now;
}

class HttpCurl : public testing::Test
{
protected:
    HttpCurl()
        : server_({}, [](const HttpRequest& request, const HttpReply& reply) {
              reply({200,
                     "text/plain",
                     request.method + ' ' + std::to_string(request.body.size()),
                     {}});
          })
    {
        curl_easy_setopt(curl_.get(), CURLOPT_URL, url().c_str());
        curl_easy_setopt(curl_.get(), CURLOPT_WRITEFUNCTION, &append);
        curl_easy_setopt(curl_.get(), CURLOPT_TIMEOUT, 20L);
        curl_easy_setopt(curl_.get(), CURLOPT_NOPROXY, "*");
        curl_easy_setopt(curl_.get(), CURLOPT_NOSIGNAL, 1L);
    }

    std::string url() const
    {
        return "http://127.0.0.1:" + std::to_string(server_.port()) + "/a?b";
    }

    CURL* curl() { return curl_.get(); }

    Answer perform()
    {
        Answer answer;
        curl_easy_setopt(curl_.get(), CURLOPT_WRITEDATA, &answer.body);
        answer.result = curl_easy_perform(curl_.get());
        char* type = nullptr;
        curl_easy_getinfo(curl_.get(), CURLINFO_RESPONSE_CODE, &answer.status);
        curl_easy_getinfo(curl_.get(), CURLINFO_CONTENT_TYPE, &type);
        curl_easy_getinfo(curl_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &answer.length);
        curl_easy_getinfo(curl_.get(), CURLINFO_NUM_CONNECTS, &answer.new_connections);
        if (type != nullptr)
            answer.type = type;
        return answer;
    }

private:
    HttpServer server_;
    std::unique_ptr<CURL, CurlDeleter> curl_{curl_easy_init()};
};

TEST_F(HttpCurl, KeepsItsConnection)
{
    EXPECT_EQ(perform().new_connections, 1);
    for (int i = 0; i < 10; ++i) {
        const Answer answer = perform();
        EXPECT_EQ(answer.status, 200);
        EXPECT_EQ(answer.body, "GET 0");
        EXPECT_EQ(answer.type, "text/plain");
        EXPECT_EQ(answer.new_connections, 0);
    }
}

TEST_F(HttpCurl, AsksForTheHead)
{
    curl_easy_setopt(curl(), CURLOPT_NOBODY, 1L);
    for (int i = 0; i < 2; ++i) {
        const Answer answer = perform();
        EXPECT_EQ(answer.result, CURLE_OK);
        EXPECT_EQ(answer.status, 200);
        EXPECT_EQ(answer.body, "");
        EXPECT_EQ(answer.length, 5);
        EXPECT_EQ(answer.new_connections, i == 0 ? 1 : 0);
    }
}

TEST_F(HttpCurl, SendsABodyOfAnyLengthChunked)
{
    const std::unique_ptr<curl_slist, CurlDeleter> no_expectation(
        curl_slist_append(nullptr, "Expect:"));
    curl_easy_setopt(curl(), CURLOPT_HTTPHEADER, no_expectation.get());
    curl_easy_setopt(curl(), CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(curl(), CURLOPT_READFUNCTION, &give);
    for (const std::size_t length : {0UL, 1UL, 100'000UL, 1'048'576UL, 1'048'577UL, 5'000'000UL}) {
        Source source{length};
        curl_easy_setopt(curl(), CURLOPT_READDATA, &source);
        const Answer answer = perform();
        EXPECT_EQ(answer.result, CURLE_OK) << length;
        if (length <= 1'048'576) {
            EXPECT_EQ(answer.status, 200) << length;
            EXPECT_EQ(answer.body, "PUT " + std::to_string(length));
        } else {
            EXPECT_EQ(answer.status, 413) << length;
        }
    }
}

// With its length, and "Expect: 100-continue", as curl sends long bodies.
TEST_F(HttpCurl, SendsALongBody)
{
    for (const std::size_t length : {1'048'576UL, 1'048'577UL, 5'000'000UL}) {
        const std::string body(length, 'x');
        curl_easy_setopt(curl(), CURLOPT_CUSTOMREQUEST, "PATCH");
        curl_easy_setopt(curl(), CURLOPT_POSTFIELDSIZE, static_cast<long>(length));
        curl_easy_setopt(curl(), CURLOPT_POSTFIELDS, body.data());
        const Answer answer = perform();
        EXPECT_EQ(answer.result, CURLE_OK) << length;
        EXPECT_EQ(answer.status, length <= 1'048'576 ? 200 : 413) << length;
    }
}

} // namespace
} // namespace nmos_instrument::host
