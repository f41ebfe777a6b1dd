// SPDX-License-Identifier: Apache-2.0
//
// "/metrics" and "/status" of an instrument whose registration is made up.

#include "routes/router.h"

#include <chrono>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "routes/routes.h"
#include "time/tai_clock.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::EndsWith;
using testing::Ge;
using testing::HasSubstr;
using testing::Le;
using testing::Not;
using Clock = std::chrono::steady_clock;

RegistrationStatus registered()
{
    RegistrationStatus status;
    status.state = "registered";
    status.registered = true;
    status.since = Clock::now() - 10s;
    status.registry = "http://192.0.2.7/x-nmos/registration/v1.2";
    status.origin = "DNS-SD in example.com";
    status.last_heartbeat = {Clock::now() - 3s, 1'234us, 56us};
    status.posts = 38;
    status.deletions = 1;
    status.heartbeats = 720;
    status.refusals = 2;
    status.failures = 3;
    status.fail_overs = 4;
    status.heartbeat_lateness = 1'500'042us;
    return status;
}

/// `text` with what is between the two put in place of it.
std::string with_replacement(std::string text, const std::string& before, const std::string& after)
{
    const std::size_t begin = text.find(before) + before.size();
    return text.replace(begin, text.find(after, begin) - begin, "...");
}

class StatusRoutes : public testing::Test
{
protected:
    /// Answers one request as the HTTP server does.
    HttpResponse answer(const Router& router, const std::string& method, const std::string& path)
    {
        HttpRequest request;
        request.method = method;
        request.path = path;
        request.peer = "192.0.2.99:1234";
        HttpResponse answer;
        router.handle(request, [&](HttpResponse response) { answer = std::move(response); });
        counts_.answered({method, path, request.peer, request.route, answer.status, {}});
        return answer;
    }

    Services services()
    {
        return {instrument_, manifests_, log_, counts_, refusals_, nullptr, ChangePermission()};
    }

    Services services(RegistrationStatus registration, AdvertisementStatus advertisement)
    {
        Services all = services();
        all.registration = [=] { return registration; };
        all.advertisement = [=] { return advertisement; };
        return all;
    }

    Instrument instrument_{Configuration(), NodeAddress(), tai_now, Log()};
    HttpClient client_{Log()};
    ManifestFetcher manifests_{client_, ManifestHosts({}, {0x7f000000, 8}, {})};
    ClientLog log_{Log()};
    RequestCounts counts_{all_routes().paths()};
    RecentRefusals refusals_;
};

TEST_F(StatusRoutes, Metrics)
{
    const Router router(
        services(registered(), {"withdrawn while registered", false, "/etc/x", ""}));
    static_cast<void>(answer(router, "GET", "/"));
    static_cast<void>(answer(router, "GET", "/nothing"));
    static_cast<void>(answer(router, "BREW", "/x-nmos/node/v1.2/self/"));
    static_cast<void>(answer(router, "BREW", "/x-nmos/node/v1.2/self"));
    const std::string target = "/x-nmos/node/v1.2/receivers/" +
                               instrument_.read([](const Records& records) {
                                   return std::string(records.node.receivers[0].id);
                               }) +
                               "/target";
    static_cast<void>(answer(router, "OPTIONS", target));
    const HttpResponse refusal = answer(router, "PUT", target); // an empty body is no JSON
    ASSERT_EQ(refusal.status, 400);

    const HttpResponse response = answer(router, "GET", "/metrics");
    EXPECT_EQ(response.status, 200);
    EXPECT_EQ(response.content_type, "text/plain; version=0.0.4; charset=utf-8");
    EXPECT_EQ(
        with_replacement(response.body, "\nnmos_instrument_uptime_seconds ", "\n"),
        "# HELP nmos_instrument_uptime_seconds Since the start of the program.\n"
        "# TYPE nmos_instrument_uptime_seconds gauge\n"
        "nmos_instrument_uptime_seconds ...\n"
        "# HELP nmos_instrument_http_requests_total HTTP requests that have ended.\n"
        "# TYPE nmos_instrument_http_requests_total counter\n"
        R"(nmos_instrument_http_requests_total{route="none",method="GET",status="404"} 1)"
        "\n"
        R"(nmos_instrument_http_requests_total{route="/",method="GET",status="200"} 1)"
        "\n"
        R"(nmos_instrument_http_requests_total{route="/x-nmos/node/v1.2/self",method="other",)"
        R"(status="404"} 1)"
        "\n"
        R"(nmos_instrument_http_requests_total{route="/x-nmos/node/v1.2/self",method="other",)"
        R"(status="405"} 1)"
        "\n"
        R"(nmos_instrument_http_requests_total{route="/x-nmos/node/v1.2/receivers/{receiver}/target",)"
        R"(method="PUT",status="400"} 1)"
        "\n"
        R"(nmos_instrument_http_requests_total{route="/x-nmos/node/v1.2/receivers/{receiver}/target",)"
        R"(method="OPTIONS",status="200"} 1)"
        "\n"
        "# HELP nmos_instrument_refusals_total Changes of connections that were refused.\n"
        "# TYPE nmos_instrument_refusals_total counter\n"
        "nmos_instrument_refusals_total{status=\"400\"} 1\n"
        "# HELP nmos_instrument_activations_total Activations of connections.\n"
        "# TYPE nmos_instrument_activations_total counter\n"
        "nmos_instrument_activations_total{result=\"done\"} 0\n"
        "nmos_instrument_activations_total{result=\"failed\"} 0\n"
        "# HELP nmos_instrument_registration_registered 1 while all resources are registered with "
        "a registry.\n"
        "# TYPE nmos_instrument_registration_registered gauge\n"
        "nmos_instrument_registration_registered 1\n"
        "# HELP nmos_instrument_registration_posts_total Resources sent to a registry, whatever it "
        "answered.\n"
        "# TYPE nmos_instrument_registration_posts_total counter\n"
        "nmos_instrument_registration_posts_total 38\n"
        "# HELP nmos_instrument_registration_deletions_total Deletions sent to a registry, "
        "whatever it answered.\n"
        "# TYPE nmos_instrument_registration_deletions_total counter\n"
        "nmos_instrument_registration_deletions_total 1\n"
        "# HELP nmos_instrument_registration_heartbeats_total Heartbeats sent to a registry, "
        "whatever it answered.\n"
        "# TYPE nmos_instrument_registration_heartbeats_total counter\n"
        "nmos_instrument_registration_heartbeats_total 720\n"
        "# HELP nmos_instrument_registration_refusals_total Resources that a registry did not "
        "take.\n"
        "# TYPE nmos_instrument_registration_refusals_total counter\n"
        "nmos_instrument_registration_refusals_total 2\n"
        "# HELP nmos_instrument_registration_failures_total Requests that a registry did not "
        "answer as a registry does.\n"
        "# TYPE nmos_instrument_registration_failures_total counter\n"
        "nmos_instrument_registration_failures_total 3\n"
        "# HELP nmos_instrument_registration_fail_overs_total Changes from one registry to "
        "another.\n"
        "# TYPE nmos_instrument_registration_fail_overs_total counter\n"
        "nmos_instrument_registration_fail_overs_total 4\n"
        "# HELP nmos_instrument_heartbeat_lateness_seconds How long after they were due heartbeats "
        "were sent.\n"
        "# TYPE nmos_instrument_heartbeat_lateness_seconds summary\n"
        "nmos_instrument_heartbeat_lateness_seconds_sum 1.500042\n"
        "nmos_instrument_heartbeat_lateness_seconds_count 720\n"
        "# HELP nmos_instrument_heartbeat_round_trip_seconds How long the last heartbeat took that "
        "a registry accepted.\n"
        "# TYPE nmos_instrument_heartbeat_round_trip_seconds gauge\n"
        "nmos_instrument_heartbeat_round_trip_seconds 0.001234\n"
        "# HELP nmos_instrument_advertisement_present 1 while the service file of Avahi is there.\n"
        "# TYPE nmos_instrument_advertisement_present gauge\n"
        "nmos_instrument_advertisement_present 0\n");
}

TEST_F(StatusRoutes, MetricsOfAnUnregisteredNode)
{
    RegistrationStatus status;
    status.state = "looking for a registry";
    const Router router(services(status, {"advertised", true, "/etc/x", ""}));
    const std::string page = answer(router, "GET", "/metrics").body;
    EXPECT_THAT(page, HasSubstr("\nnmos_instrument_registration_registered 0\n"));
    EXPECT_THAT(page, HasSubstr("\nnmos_instrument_heartbeat_lateness_seconds_sum 0.000000\n"));
    EXPECT_THAT(page, Not(HasSubstr("round_trip")));
    EXPECT_THAT(page, HasSubstr("\nnmos_instrument_advertisement_present 1\n"));
}

TEST_F(StatusRoutes, Uptime)
{
    Services all = services();
    all.started = Clock::now() - 24h;
    const Router router(all);
    EXPECT_THAT(answer(router, "GET", "/metrics").body,
                HasSubstr("\nnmos_instrument_uptime_seconds 8640"));
    EXPECT_THAT(answer(router, "GET", "/status").body, HasSubstr("\"uptime_seconds\": 8640"));
}

TEST_F(StatusRoutes, WithoutRegistrationNothingIsSaidOfIt)
{
    const Router router(services());
    const std::string page = answer(router, "GET", "/metrics").body;
    EXPECT_THAT(page, HasSubstr("\nnmos_instrument_activations_total{result=\"done\"} 0\n"));
    EXPECT_THAT(page, Not(HasSubstr("registration")));
    EXPECT_THAT(page, Not(HasSubstr("heartbeat")));
    EXPECT_THAT(page, Not(HasSubstr("advertisement")));
    const std::string status = answer(router, "GET", "/status").body;
    EXPECT_THAT(status, HasSubstr("\"last_failures\": []"));
    EXPECT_THAT(status, Not(HasSubstr("registration")));
    EXPECT_THAT(status, Not(HasSubstr("advertisement")));
}

/// The time in `text` behind `before`, minus now, rounded to seconds.
std::chrono::seconds from_now(const std::string& text, const std::string& before)
{
    const std::size_t begin = text.find(before) + before.size();
    const auto time = parse_tai_time(text.substr(begin, text.find('"', begin) - begin));
    if (!time)
        throw std::runtime_error("no time: " + text.substr(begin, 30));
    EXPECT_EQ(time->nanoseconds % 1'000'000, 0);
    return std::chrono::round<std::chrono::seconds>(span_between(tai_now(), *time));
}

TEST_F(StatusRoutes, StatusOfARegisteredNode)
{
    const Router router(services(registered(), {"withdrawn while registered", false, "", ""}));
    std::string status = answer(router, "GET", "/status").body;
    EXPECT_THAT(from_now(status, "\"since\": \""), AllOf(Ge(-15s), Le(-10s)));
    EXPECT_THAT(from_now(status, "\"sent\": \""), AllOf(Ge(-8s), Le(-3s)));
    status = with_replacement(status, "\"since\": \"", "\"");
    status = with_replacement(status, "\"sent\": \"", "\"");
    EXPECT_THAT(status, EndsWith(R"( "registration": {
  "state": "registered",
  "registered": true,
  "registry": "http://192.0.2.7/x-nmos/registration/v1.2",
  "origin": "DNS-SD in example.com",
  "since": "...",
  "last_heartbeat": {
   "sent": "...",
   "round_trip_us": 1234,
   "late_us": 56
  },
  "posts": 38,
  "deletions": 1,
  "heartbeats": 720,
  "refusals": 2,
  "failures": 3,
  "fail_overs": 4,
  "next_try_seconds": null
 },
 "advertisement": {
  "state": "withdrawn while registered",
  "file": null
 }
}
)"));
}

TEST_F(StatusRoutes, StatusOfANodeWithoutARegistry)
{
    RegistrationStatus waiting;
    waiting.state = "waiting: no registry is known";
    waiting.since = Clock::now();
    waiting.next_try = Clock::now() - 1s; // overdue
    const Router router(services(
        waiting, {"advertised", true, "/etc/avahi/services/x.service", "cannot be\nwritten"}));
    const std::string status =
        with_replacement(answer(router, "GET", "/status").body, "\"since\": \"", "\"");
    EXPECT_THAT(status, EndsWith(R"( "registration": {
  "state": "waiting: no registry is known",
  "registered": false,
  "registry": null,
  "origin": null,
  "since": "...",
  "last_heartbeat": null,
  "posts": 0,
  "deletions": 0,
  "heartbeats": 0,
  "refusals": 0,
  "failures": 0,
  "fail_overs": 0,
  "next_try_seconds": 0
 },
 "advertisement": {
  "state": "advertised",
  "file": "/etc/avahi/services/x.service",
  "trouble": "cannot be\\x0awritten"
 }
}
)"));
}

TEST_F(StatusRoutes, TheNextTryIsRoundedUp)
{
    RegistrationStatus waiting;
    waiting.next_try = Clock::now() + 1h - 500ms;
    const Router router(services(waiting, {}));
    EXPECT_THAT(answer(router, "GET", "/status").body, HasSubstr("\"next_try_seconds\": 3600\n"));
}

} // namespace
} // namespace nmos_instrument::host
