// SPDX-License-Identifier: Apache-2.0
//
// Many instruments at one registry, over loopback.

#include "registration/registration_client.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "http/server.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;

/// Takes everything, and knows what it took.
class TakingRegistry
{
public:
    std::string url() const
    {
        return "http://127.0.0.1:" + std::to_string(server_.port()) + "/x-nmos/registration/v1.2";
    }

    std::size_t size()
    {
        const std::lock_guard lock(mutex_);
        return ids_.size();
    }

private:
    static HttpResponse response(int status)
    {
        HttpResponse response;
        response.status = status;
        return response;
    }

    HttpResponse answer(const HttpRequest& request)
    {
        const std::lock_guard lock(mutex_);
        if (request.method == "DELETE") {
            ids_.erase(request.path.substr(request.path.rfind('/') + 1));
            return response(204);
        }
        if (request.path.find("/health/") != std::string::npos)
            return response(200);
        const nlohmann::json body = nlohmann::json::parse(request.body);
        return response(ids_.insert(body["data"]["id"]).second ? 201 : 200);
    }

    std::mutex mutex_;
    std::set<std::string> ids_;
    HttpServer server_{
        {}, [this](const HttpRequest& request, const HttpReply& reply) { reply(answer(request)); }};
};

std::size_t threads_of_this_process()
{
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

std::unique_ptr<Instrument> instrument(int number)
{
    Configuration configuration;
    configuration.serial_number = "QX" + std::to_string(number);
    return std::make_unique<Instrument>(
        configuration, NodeAddress(),
        [] {
            return TaiTime{1000, 0};
        },
        Log());
}

bool wait_until(const std::function<bool()>& true_at_last)
{
    const auto end = std::chrono::steady_clock::now() + 60s;
    while (!true_at_last()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

class RegistrationClientTest : public testing::Test
{
protected:
    RegistrationClientTest() { settings_.registries = {registry_.url()}; }

    TakingRegistry registry_;
    RegistrationSettings settings_;
};

TEST_F(RegistrationClientTest, ManyInstrumentsShareOneThread)
{
    constexpr std::size_t count = 30;
    constexpr std::size_t resources = 38;
    HttpClient client{Log()};
    RegistrySource source(settings_, Log());
    std::vector<std::unique_ptr<Instrument>> instruments;
    std::vector<std::unique_ptr<RegistrationClient>> registrations;
    const std::size_t threads = threads_of_this_process();
    for (std::size_t i = 0; i < count; ++i) {
        instruments.push_back(instrument(static_cast<int>(i)));
        registrations.push_back(std::make_unique<RegistrationClient>(
            client, source, *instruments.back(), RegistrationClient::Options{}, Log()));
        registrations.back()->start();
    }
    EXPECT_TRUE(wait_until([&] { return registry_.size() == count * resources; }));
    EXPECT_EQ(threads_of_this_process(), threads);
    for (const auto& registration : registrations) {
        EXPECT_TRUE(wait_until([&] { return registration->status().registered; }));
        registration->leave();
    }
    EXPECT_EQ(registry_.size(), 0U);
}

TEST_F(RegistrationClientTest, MayEndAtAnyMoment)
{
    HttpClient client{Log()};
    RegistrySource source(settings_, Log());
    for (int i = 0; i < 100; ++i) {
        const std::unique_ptr<Instrument> own = instrument(0);
        RegistrationClient registration(client, source, *own, {}, Log());
        registration.start();
        registration.changed();
        std::this_thread::sleep_for(std::chrono::microseconds(97 * i));
    }
}

TEST_F(RegistrationClientTest, TellsWhetherThereIsARegistry)
{
    std::atomic<int> yes = 0;
    std::atomic<int> no = 0;
    HttpClient client{Log()};
    const std::unique_ptr<Instrument> own = instrument(0);
    RegistrySource source(settings_, Log());
    RegistrationClient registration(client, source, *own,
                                    {.has_registry = [&](bool has) { ++(has ? yes : no); }}, Log());
    registration.start();
    EXPECT_TRUE(wait_until([&] { return yes == 1; }));
    EXPECT_EQ(no, 0);

    settings_.registries = {"http://127.0.0.1:1/x-nmos/registration/v1.2"};
    RegistrySource nowhere(settings_, Log());
    RegistrationClient lonely(client, nowhere, *own,
                              {.has_registry = [&](bool has) { ++(has ? yes : no); }}, Log());
    lonely.start();
    EXPECT_TRUE(wait_until([&] { return no >= 1; }));
    EXPECT_EQ(yes, 1);
}

} // namespace
} // namespace nmos_instrument::host
