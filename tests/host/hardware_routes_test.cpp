// SPDX-License-Identifier: Apache-2.0
//
// PATCH, bulk requests and targets of an instrument whose hardware takes its time: the router returns
// before it has ended, and answers once when it has.

#include "routes/router.h"

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "held_hardware.h"
#include "routes/routes.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;

constexpr const char* patch =
    R"({"master_enable":true,"activation":{"mode":"activate_immediate"}})";

class HardwareRoutes : public testing::Test
{
protected:
    ~HardwareRoutes() override { instrument_.end_hardware(); }

    /// The answer once there is one. A second one would throw.
    std::future<HttpResponse> send(const std::string& method, const std::string& path,
                                   const std::string& body)
    {
        const auto answer = std::make_shared<std::promise<HttpResponse>>();
        HttpRequest request;
        request.method = method;
        request.path = path;
        request.peer = "192.0.2.99:1234";
        request.body = body;
        router_.handle(request,
                       [answer](HttpResponse response) { answer->set_value(std::move(response)); });
        return answer->get_future();
    }

    static bool is_there(const std::future<HttpResponse>& answer)
    {
        return answer.wait_for(0s) == std::future_status::ready;
    }

    static HttpResponse taken(std::future<HttpResponse> answer)
    {
        if (answer.wait_for(20s) != std::future_status::ready)
            return {};
        return answer.get();
    }

    std::string id(std::size_t receiver) const
    {
        return instrument_.resource_name({Side::receiver, receiver}).substr(10);
    }

    std::string staged(std::size_t receiver) const
    {
        return "/x-nmos/connection/v1.0/single/receivers/" + id(receiver) + "/staged";
    }

    HeldHardware hardware_;
    Instrument instrument_{Configuration(), NodeAddress(),
                           [] {
                               return TaiTime{1000, 0};
                           },
                           Log(), hardware_.options()};
    HttpClient client_{Log()};
    ManifestFetcher manifests_{client_, ManifestHosts({}, {0x7f000000, 8}, {})};
    ClientLog log_{Log()};
    RequestCounts counts_{all_routes().paths()};
    RecentRefusals refusals_;
    const Router router_{
        {instrument_, manifests_, log_, counts_, refusals_, nullptr, ChangePermission()}};
};

TEST_F(HardwareRoutes, APatchIsAnsweredWhenTheHardwareHasApplied)
{
    std::future<HttpResponse> answer = send("PATCH", staged(0), patch);
    ASSERT_TRUE(hardware_.has_calls(1));
    EXPECT_FALSE(is_there(answer));
    const HttpResponse read = taken(send("GET", staged(0), ""));
    EXPECT_EQ(read.status, 200);
    EXPECT_EQ(nlohmann::json::parse(read.body)["master_enable"], false);
    EXPECT_EQ(taken(send("PATCH", staged(0), patch)).status, 423);
    EXPECT_EQ(taken(send("PATCH", staged(1), "{}")).status, 200);
    EXPECT_FALSE(is_there(answer));
    hardware_.apply();
    const HttpResponse done = taken(std::move(answer));
    EXPECT_EQ(done.status, 200);
    EXPECT_EQ(nlohmann::json::parse(done.body)["activation"]["activation_time"], "1000:0");
}

TEST_F(HardwareRoutes, APatchThatTheHardwareRefuses)
{
    hardware_.refuse("no lock on the reference");
    const HttpResponse refused = taken(send("PATCH", staged(0), patch));
    EXPECT_EQ(refused.status, 500);
    EXPECT_EQ(refused.body, R"({"code":500,"error":"The activation failed, nothing has changed",)"
                            R"("debug":"no lock on the reference"})");
    ASSERT_EQ(refusals_.all().size(), 1U);
    EXPECT_EQ(
        refusals_.all()[0].refusal,
        (Refusal{500, "The activation failed, nothing has changed", "no lock on the reference"}));
}

TEST_F(HardwareRoutes, ABulkRequestIsAnsweredWhenItsLastEntryHasEnded)
{
    const std::string nobody = "11111111-2222-4333-8444-555555555555";
    const auto entry = [](const std::string& id, const std::string& params) {
        return R"({"id":")" + id + R"(","params":)" + params + "}";
    };
    std::future<HttpResponse> answer =
        send("POST", "/x-nmos/connection/v1.0/bulk/receivers",
             "[" + entry(id(0), patch) + "," + entry(nobody, "{}") + "," + entry(id(1), patch) +
                 "," + entry(id(2), "{}") + "," + entry(id(3), patch) + "]");
    ASSERT_TRUE(hardware_.has_calls(1));
    hardware_.apply();
    ASSERT_TRUE(hardware_.has_calls(2));
    hardware_.refuse("no lock on the reference");
    ASSERT_TRUE(hardware_.has_calls(3));
    EXPECT_FALSE(is_there(answer));
    hardware_.apply();
    const HttpResponse response = taken(std::move(answer));
    EXPECT_EQ(response.status, 200);
    EXPECT_EQ(response.body,
              R"([{"code":200,"id":")" + id(0) +
                  R"("},{"code":404,"debug":"no resource has this id","error":"Not found","id":")" +
                  nobody +
                  R"("},{"code":500,"debug":"no lock on the reference",)"
                  R"("error":"The activation failed, nothing has changed","id":")" +
                  id(1) + R"("},{"code":200,"id":")" + id(2) + R"("},{"code":200,"id":")" + id(3) +
                  R"("}])");
    EXPECT_EQ(taken(send("POST", "/x-nmos/connection/v1.0/bulk/receivers", "[]")).body, "[]");
}

TEST_F(HardwareRoutes, ATargetIsAnsweredWhenTheHardwareHasApplied)
{
    const std::string target = "/x-nmos/node/v1.2/receivers/" + id(0) + "/target";
    std::future<HttpResponse> answer = send("PUT", target, "{}");
    ASSERT_TRUE(hardware_.has_calls(1));
    EXPECT_FALSE(is_there(answer));
    EXPECT_EQ(taken(send("PUT", target, "{}")).status, 423);
    hardware_.apply();
    const HttpResponse done = taken(std::move(answer));
    EXPECT_EQ(done.status, 202);
    EXPECT_EQ(done.body, "{}");
}

} // namespace
} // namespace nmos_instrument::host
