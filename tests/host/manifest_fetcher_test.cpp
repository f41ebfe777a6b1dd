// SPDX-License-Identifier: Apache-2.0

#include "http/manifest_fetcher.h"

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "http/server.h"
#include "scripted_server.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;
using Result = FetchedManifest::Result;

constexpr Ipv4Network loopback{0x7f000000, 24};
constexpr Ipv4Network elsewhere{0xc0000200, 24};

FetchedManifest fetch(ManifestFetcher& fetcher, const std::string& url)
{
    auto promise = std::make_shared<std::promise<FetchedManifest>>();
    fetcher.fetch(url, "192.0.2.1",
                  [promise](FetchedManifest manifest) { promise->set_value(std::move(manifest)); });
    std::future<FetchedManifest> manifest = promise->get_future();
    if (manifest.wait_for(20s) != std::future_status::ready)
        return {Result::failed, "", "nobody was called"};
    return manifest.get();
}

TEST(ManifestFetcher, FetchesFromTheHostsThatAreAllowedNow)
{
    ScriptedServer server("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nv=0\n");
    HttpClient client{Log()};
    ManifestFetcher fetcher(client, ManifestHosts({}, elsewhere, {}));
    FetchedManifest manifest = fetch(fetcher, server.url("/"));
    EXPECT_EQ(manifest.result, Result::failed);
    EXPECT_EQ(manifest.why, "127.0.0.1 is in no network that manifests are fetched from");

    fetcher.allow(ManifestHosts({}, loopback, {}));
    manifest = fetch(fetcher, server.url("/"));
    EXPECT_EQ(manifest.result, Result::fetched);
    EXPECT_EQ(manifest.content, "v=0\n");
    EXPECT_EQ(manifest.why, "");

    fetcher.allow(ManifestHosts({}, elsewhere, {}));
    EXPECT_EQ(fetch(fetcher, server.url("/")).result, Result::failed);
}

TEST(ManifestFetcher, FourPlacesForOneClient)
{
    ScriptedServer silent("", ScriptedServer::Then::stays_silent);
    std::atomic<int> failed{0};
    HttpClient client{Log()};
    ManifestFetcher fetcher(client, ManifestHosts({}, loopback, {}));
    for (int i = 0; i < 4; ++i)
        fetcher.fetch(silent.url("/"), "192.0.2.1", [&](const FetchedManifest&) { ++failed; });
    FetchedManifest manifest = fetch(fetcher, silent.url("/"));
    EXPECT_EQ(manifest.result, Result::too_many);
    EXPECT_EQ(manifest.why, "too many manifests are being fetched");
    EXPECT_EQ(failed, 0);
}

// The client goes on with the transfers, but nobody waits for them any more.
TEST(ManifestFetcher, EndsBeforeItsClient)
{
    ScriptedServer silent("", ScriptedServer::Then::stays_silent);
    HttpClient client{Log()};
    std::vector<std::string> reasons;
    {
        ManifestFetcher fetcher(client, ManifestHosts({}, loopback, {}));
        for (int i = 0; i < 4; ++i)
            fetcher.fetch(silent.url("/"), "192.0.2.1", [&](const FetchedManifest& manifest) {
                EXPECT_EQ(manifest.result, Result::failed);
                reasons.push_back(manifest.why);
            });
        EXPECT_EQ(silent.requests(4).size(), 4U);
    }
    EXPECT_EQ(reasons, std::vector<std::string>(4, "the instrument is stopping"));
}

TEST(ManifestFetcher, EndsAfterTheTransfersOfItsClient)
{
    ScriptedServer silent("", ScriptedServer::Then::stays_silent);
    auto client = std::make_unique<HttpClient>(Log());
    std::vector<std::string> reasons;
    ManifestFetcher fetcher(*client, ManifestHosts({}, loopback, {}));
    fetcher.fetch(silent.url("/"), "192.0.2.1",
                  [&](const FetchedManifest& manifest) { reasons.push_back(manifest.why); });
    EXPECT_EQ(silent.requests(1).size(), 1U);
    client.reset();
    EXPECT_THAT(reasons, testing::ElementsAre("the program is stopping"));
}

// Answers race with the end; each fetch is answered once, and none after the end.
TEST(ManifestFetcher, EndsAtAnyMoment)
{
    HttpServer server({}, [](const HttpRequest&, const HttpReply& reply) {
        reply({200, "application/sdp", "v=0\n", {}});
    });
    const std::string url = "http://127.0.0.1:" + std::to_string(server.port()) + '/';
    HttpClient client{Log()};
    for (int round = 0; round < 50; ++round) {
        std::atomic<int> answers{0};
        std::atomic<bool> ended{false};
        {
            ManifestFetcher fetcher(client, ManifestHosts({}, loopback, {}));
            for (const char* const who : {"192.0.2.1", "192.0.2.2", "192.0.2.3"})
                for (int i = 0; i < 4; ++i)
                    fetcher.fetch(url, who, [&](const FetchedManifest&) {
                        EXPECT_FALSE(ended);
                        ++answers;
                    });
            std::this_thread::sleep_for(std::chrono::microseconds(100 * round));
        }
        ended = true;
        EXPECT_EQ(answers, 12);
    }
}

} // namespace
} // namespace nmos_instrument::host
