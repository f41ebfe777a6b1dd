// SPDX-License-Identifier: Apache-2.0
//
// The public interface of the host library, as an integrator sees it.

#include "nmos_instrument_host/instrument.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <future>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <sys/socket.h>

#include "host/http_test_client.h"
#include "nmos_instrument/default_records.h"
#include "nmos_instrument_host/tai.h"
#include "support/temporary_folder.h"

namespace nmos_instrument_host {
namespace {

using nmos_instrument::host::fetch;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

/// An instrument on loopback that nobody else hears of.
std::string configuration_of(const std::string& serial_number)
{
    return R"({"serial_number": ")" + serial_number +
           R"(", "node": {"label": "Rack 4"}, "registration": {"enabled": false}})";
}

Options without_server()
{
    Options options;
    options.http_server = false;
    return options;
}

Options at_a_free_port()
{
    Options options;
    options.first_free_port = true;
    return options;
}

/// The port in "http://127.0.0.1:3000/".
std::uint16_t port_of(const std::string& url)
{
    return static_cast<std::uint16_t>(std::stoi(url.substr(url.rfind(':') + 1)));
}

HttpAnswer ask(Instrument& instrument, HttpRequest request)
{
    std::promise<HttpAnswer> answered;
    instrument.answer(request, [&](HttpAnswer answer) { answered.set_value(std::move(answer)); });
    return answered.get_future().get();
}

HttpAnswer get(Instrument& instrument, const std::string& path)
{
    HttpRequest request;
    request.method = "GET";
    request.path = path;
    return ask(instrument, request);
}

std::string receiver_path(Instrument& instrument, std::size_t receiver)
{
    std::string id;
    instrument.records([&](Records& records) { id = records.node.receivers[receiver].id; });
    return "/x-nmos/connection/v1.0/single/receivers/" + id;
}

/// A PATCH that enables the receiver at once.
HttpRequest activation_of(Instrument& instrument, std::size_t receiver)
{
    HttpRequest request;
    request.method = "PATCH";
    request.path = receiver_path(instrument, receiver) + "/staged";
    request.content_type = "application/json";
    request.peer = "192.0.2.1:50123";
    request.body = R"({"master_enable": true, "activation": {"mode": "activate_immediate"},)"
                   R"("transport_params": [{"multicast_ip": "233.252.0.1"}, {}]})";
    return request;
}

std::size_t threads_of_this_process()
{
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

TEST(NodeTest, ServesItsApisFromStartToStop)
{
    Instrument instrument(configuration_of("NODE-1"), at_a_free_port());
    EXPECT_TRUE(instrument.start());
    const std::uint16_t port = port_of(instrument.url());
    const auto self = fetch(port, "GET /x-nmos/node/v1.2/self HTTP/1.1\r\nHost: a\r\n"
                                  "Connection: close\r\n\r\n");
    ASSERT_TRUE(self);
    EXPECT_EQ(self->status, 200);
    EXPECT_THAT(self->body, HasSubstr(R"("label":"Rack 4")"));
    EXPECT_THAT(self->body, HasSubstr(R"("href":")" + instrument.url() + '"'));

    EXPECT_TRUE(instrument.stop());
    EXPECT_THROW(fetch(port, "GET / HTTP/1.1\r\nHost: a\r\n\r\n"), std::system_error);
    EXPECT_TRUE(instrument.stop()); // nothing to do
}

TEST(NodeTest, StartsAgain)
{
    Instrument instrument(configuration_of("NODE-1"), at_a_free_port());
    EXPECT_TRUE(instrument.start());
    EXPECT_THROW(instrument.start(), std::logic_error);
    EXPECT_TRUE(instrument.stop());
    EXPECT_TRUE(instrument.start());
    const auto self =
        fetch(port_of(instrument.url()), "GET /x-nmos/node/v1.2/self HTTP/1.1\r\nHost: a\r\n"
                                         "Connection: close\r\n\r\n");
    ASSERT_TRUE(self);
    EXPECT_EQ(self->status, 200);
}

TEST(NodeTest, ARestartLosesNothing)
{
    const TemporaryFolder folder;
    Options options = without_server();
    options.state_file = folder.path() / "state.json";
    Instrument instrument(configuration_of("NODE-1"), options);
    instrument.start();
    HttpRequest later = activation_of(instrument, 0);
    later.body = R"({"activation": {"mode": "activate_scheduled_relative",)"
                 R"("requested_time": "3600:0"}})";
    EXPECT_EQ(ask(instrument, later).status, 202);
    EXPECT_TRUE(instrument.stop());
    instrument.records([](Records& records) {
        records.connections.receivers[1].staged.transport_params[0].destination_port = 5010;
    });

    instrument.start();
    EXPECT_THAT(get(instrument, receiver_path(instrument, 0) + "/staged").body,
                HasSubstr(R"("requested_time":"3600:0")"));
    EXPECT_EQ(ask(instrument, activation_of(instrument, 0)).status, 423);
    EXPECT_THAT(get(instrument, receiver_path(instrument, 1) + "/staged").body,
                HasSubstr(R"("destination_port":5010)"));
}

/// Empty if all have one.
std::string interface_without_ipv4()
{
    std::set<std::string> all;
    std::set<std::string> with_ipv4;
    ifaddrs* first = nullptr;
    if (getifaddrs(&first) != 0)
        return "";
    for (const ifaddrs* one = first; one != nullptr; one = one->ifa_next) {
        all.insert(one->ifa_name);
        if (one->ifa_addr != nullptr && one->ifa_addr->sa_family == AF_INET)
            with_ipv4.insert(one->ifa_name);
    }
    freeifaddrs(first);
    for (const std::string& name : all) {
        if (with_ipv4.count(name) == 0)
            return name;
    }
    return "";
}

TEST(NodeTest, ASignalReachesWhoeverWaitsForAnAddress)
{
    const std::string interface = interface_without_ipv4();
    if (interface.empty())
        GTEST_SKIP() << "all interfaces have an IPv4 address";
    Instrument instrument(R"({"registration": {"enabled": false}, "server": {"address": ")" +
                              interface + "\"}}",
                          without_server());
    EXPECT_THROW(instrument.start(), std::runtime_error);
    sigset_t blocked;
    sigfillset(&blocked);
    EXPECT_FALSE(instrument.start([&] {
        pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
        return false;
    }));
    EXPECT_EQ(sigismember(&blocked, SIGTERM), 0);
}

TEST(NodeTest, LeavesNoThreadAndNoSignalHandler)
{
    const std::size_t threads = threads_of_this_process();
    struct sigaction before = {};
    sigaction(SIGPIPE, nullptr, &before);
    {
        Instrument instrument(configuration_of("NODE-1"), at_a_free_port());
        instrument.start();
        EXPECT_GT(threads_of_this_process(), threads);
        struct sigaction meanwhile = {};
        sigaction(SIGPIPE, nullptr, &meanwhile);
        EXPECT_EQ(meanwhile.sa_handler, before.sa_handler);
    }
    EXPECT_EQ(threads_of_this_process(), threads);
}

TEST(NodeTest, TwoInOneProcessKnowNothingOfEachOther)
{
    std::vector<std::string> first_log;
    Callbacks first_callbacks;
    first_callbacks.log = [&](LogLevel, std::string_view line) { first_log.emplace_back(line); };
    Instrument first(configuration_of("NODE-1"), at_a_free_port(), first_callbacks);
    std::vector<std::string> second_log;
    Callbacks second_callbacks;
    second_callbacks.log = [&](LogLevel, std::string_view line) { second_log.emplace_back(line); };
    Instrument second(configuration_of("NODE-2"), at_a_free_port(), second_callbacks);
    first.start();
    second.start();
    EXPECT_NE(first.url(), second.url());
    EXPECT_NE(get(first, "/x-nmos/node/v1.2/self").body,
              get(second, "/x-nmos/node/v1.2/self").body);

    EXPECT_EQ(ask(second, activation_of(second, 0)).status, 200);
    first.stop();
    second.stop();
    const auto activations = [](const std::vector<std::string>& log) {
        return std::count_if(log.begin(), log.end(), [](const std::string& line) {
            return line.find("activated receivers/") != std::string::npos;
        });
    };
    EXPECT_EQ(activations(first_log), 0);
    EXPECT_EQ(activations(second_log), 1);
}

TEST(NodeTest, SaysWhatIsWrongWithTheConfiguration)
{
    Options options;
    options.configuration_name = "rack4.json";
    try {
        const Instrument instrument(R"({"server": {"port": 70000}, "colour": 1})", options);
        FAIL() << "it was taken";
    } catch (const std::invalid_argument& error) {
        EXPECT_THAT(error.what(), HasSubstr("rack4.json"));
        EXPECT_THAT(error.what(), HasSubstr("70000"));
        EXPECT_THAT(error.what(), HasSubstr("1 to 65535"));
        EXPECT_THAT(error.what(), HasSubstr("colour"));
    }
}

TEST(NodeTest, SaysWhichNetworkIsWrong)
{
    Options options;
    options.changes_from = {"192.0.2.0/24", "192.0.2.7/24"};
    try {
        const Instrument instrument("{}", options);
        FAIL() << "it was taken";
    } catch (const std::invalid_argument& error) {
        EXPECT_THAT(error.what(), HasSubstr("changes_from: found \"192.0.2.7/24\", allowed: "));
    }
}

TEST(NodeTest, SaysWhichDeadlineIsWrong)
{
    Options options;
    options.apply_deadline = std::chrono::milliseconds::max();
    try {
        Instrument("{}", options);
        FAIL() << "it was taken";
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "Options::apply_deadline: found 9223372036854775807 ms, "
                                   "allowed: 1 to 3600000 ms");
    }
    options.apply_deadline = std::chrono::milliseconds(0);
    EXPECT_THROW(Instrument("{}", options), std::invalid_argument);
}

TEST(NodeTest, APortInUseIsSaidAndNothingIsKept)
{
    Instrument first(configuration_of("NODE-1"), at_a_free_port());
    first.start();
    const TemporaryFolder folder;
    const std::string configuration =
        R"({"registration": {"enabled": false}, "server": {"port": )" +
        std::to_string(port_of(first.url())) + "}}";
    Options options;
    options.state_file = folder.path() / "state.json";
    Instrument second(configuration, options);
    try {
        second.start();
        FAIL() << "it has started";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::address_in_use);
    }
    first.stop();
    EXPECT_TRUE(second.start()); // the state file is not locked by what failed
}

TEST(NodeTest, AnInterfaceThatIsNotThereIsSaid)
{
    Instrument instrument(
        R"({"registration": {"enabled": false}, "server": {"listen": "nmostest7"}})");
    try {
        instrument.start();
        FAIL() << "it has started";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr("no network interface \"nmostest7\"; there are "));
    }
}

TEST(NodeTest, AnswersForAServerOfTheHost)
{
    Instrument instrument(configuration_of("NODE-1"), without_server());
    EXPECT_EQ(get(instrument, "/x-nmos/node/v1.2/self").status, 503);
    instrument.start();

    const HttpAnswer self = get(instrument, "/x-nmos/node/v1.2/self");
    EXPECT_EQ(self.status, 200);
    EXPECT_EQ(self.content_type, "application/json");
    EXPECT_THAT(self.body, HasSubstr(R"("label":"Rack 4")"));

    HttpRequest wrong_method;
    wrong_method.method = "DELETE";
    wrong_method.path = "/x-nmos/node/v1.2/self";
    const HttpAnswer refusal = ask(instrument, wrong_method);
    EXPECT_EQ(refusal.status, 405);
    EXPECT_THAT(refusal.headers,
                ElementsAre(std::pair<std::string, std::string>("Allow", "GET, HEAD, OPTIONS")));

    EXPECT_EQ(get(instrument, "/x-nmos/node/v1.2/%73elf?pretty").body, self.body);
    HttpRequest head;
    head.method = "HEAD";
    head.path = "/x-nmos/node/v1.2/self";
    EXPECT_EQ(ask(instrument, head).status, 200);

    EXPECT_EQ(get(instrument, "/events").status, 404);
    EXPECT_EQ(get(instrument, "/nowhere").status, 404);
    EXPECT_EQ(ask(instrument, activation_of(instrument, 0)).status, 200);
}

TEST(NodeTest, PageFilesAreServed)
{
    Options options = without_server();
    options.page = {{"/page/a.js", "text/javascript", "\"1\"", "let a;"},
                    {"/page/index.html", "text/html", "\"2\"", "<p>", true}};
    Instrument instrument(configuration_of("NODE-1"), options);
    instrument.start();
    EXPECT_EQ(get(instrument, "/page/a.js").body, "let a;");
    EXPECT_EQ(get(instrument, "/").content_type, "application/json");
    HttpRequest browser;
    browser.method = "GET";
    browser.path = "/";
    browser.accept = "text/html";
    EXPECT_EQ(ask(instrument, browser).body, "<p>");
}

TEST(NodeTest, RecordsMayChangeWhileItStops)
{
    const TemporaryFolder folder;
    Options options = without_server();
    options.state_file = folder.path() / "state.json";
    Instrument instrument(configuration_of("NODE-1"), options);
    std::atomic<bool> ends{false};
    std::thread changing([&] {
        for (int i = 0; !ends; ++i) {
            instrument.records([&](Records& records) {
                std::strcpy(records.node.label, std::to_string(i).c_str());
            });
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    for (int i = 0; i < 20; ++i) {
        instrument.start();
        EXPECT_TRUE(instrument.stop());
    }
    ends = true;
    changing.join();
}

TEST(NodeTest, AHeadIsAnsweredAsAGet)
{
    Instrument instrument(configuration_of("NODE-1"), without_server());
    instrument.start();
    HttpRequest head;
    head.method = "HEAD";
    head.path = "/x-nmos/node/v1.2/self";
    EXPECT_EQ(ask(instrument, head).status, 200);
}

TEST(NodeTest, APeerOfAnyBytesForgesNoLineAndLeavesStatusJson)
{
    std::vector<std::string> log;
    Callbacks callbacks;
    callbacks.log = [&](LogLevel, std::string_view line) { log.emplace_back(line); };
    Options options = without_server();
    options.changes_from = {"198.51.100.0/24"};
    Instrument instrument(configuration_of("NODE-1"), options, callbacks);
    instrument.start();
    HttpRequest patch = activation_of(instrument, 0);
    patch.peer = "192.0.2.1:1\nforged \xff" + std::string(1'000'000, 'x');
    EXPECT_EQ(ask(instrument, patch).status, 403);
    const std::string status = get(instrument, "/status").body;
    EXPECT_THAT(status, HasSubstr(R"(192.0.2.1:1\\x0aforged \\xffx)"));
    EXPECT_THAT(status, Not(HasSubstr(std::string(100, 'x'))));
    instrument.stop();
    for (const std::string& line : log) {
        EXPECT_EQ(line.find('\n'), std::string::npos) << line;
        EXPECT_LT(line.size(), 1000U);
    }
}

TEST(NodeTest, ALineOfTheLogHasNoLineBreak)
{
    std::vector<std::string> log;
    Callbacks callbacks;
    callbacks.log = [&](LogLevel, std::string_view line) { log.emplace_back(line); };
    Options options = without_server();
    options.configuration_name = "rack\n4\xc3\xa4.json";
    Instrument instrument(configuration_of("NODE-1"), options, callbacks);
    instrument.start();
    instrument.stop();
    EXPECT_THAT(log, Contains(HasSubstr("configuration rack\\x0a4\xc3\xa4.json, ")));
}

TEST(NodeTest, APageFileThatNobodyCouldGetIsRefused)
{
    for (const char* path :
         {"", "/", "a.js", "/page/", "/{sender}", "/x-nmos/node/v1.2/self", "/page/a.js"}) {
        Options options = without_server();
        options.page = {{"/page/a.js", "text/javascript", "\"1\"", "let a;"},
                        {path, "text/html", "\"2\"", "<p>"}};
        try {
            Instrument(configuration_of("NODE-1"), options);
            ADD_FAILURE() << path << " was taken";
        } catch (const std::invalid_argument& error) {
            EXPECT_THAT(error.what(), HasSubstr(std::string("Options::page: found \"") + path));
        }
    }
}

TEST(NodeTest, OnlyWhoMayChangesSomething)
{
    Options options = without_server();
    options.changes_from = {"198.51.100.0/24"};
    Instrument instrument(configuration_of("NODE-1"), options);
    instrument.start();
    HttpRequest patch = activation_of(instrument, 0);
    EXPECT_EQ(ask(instrument, patch).status, 403);
    patch.peer = "198.51.100.7:1024";
    EXPECT_EQ(ask(instrument, patch).status, 200);
}

TEST(NodeTest, AChangedLabelIsShownWithANewVersion)
{
    std::atomic<int> changes{0};
    Callbacks callbacks;
    callbacks.resources_changed = [&] { ++changes; };
    Instrument instrument(configuration_of("NODE-1"), without_server(), callbacks);
    instrument.start();
    std::string version;
    instrument.records([&](Records& records) { version = records.node.version; });
    EXPECT_EQ(changes, 0); // it was only read

    instrument.records([](Records& records) { std::strcpy(records.node.label, "Rack 5"); });
    EXPECT_EQ(changes, 1);
    const std::string self = get(instrument, "/x-nmos/node/v1.2/self").body;
    EXPECT_THAT(self, HasSubstr(R"("label":"Rack 5")"));
    EXPECT_THAT(self, Not(HasSubstr(version)));
}

TEST(NodeTest, WhatResourcesChangedThrowsStopsNobody)
{
    std::vector<std::string> log;
    Callbacks callbacks;
    callbacks.resources_changed = [] { throw std::runtime_error("no display"); };
    callbacks.log = [&](LogLevel level, std::string_view line) {
        if (level == LogLevel::error)
            log.emplace_back(line);
    };
    Instrument instrument(configuration_of("NODE-1"), without_server(), callbacks);
    instrument.start();
    EXPECT_NO_THROW(
        instrument.records([](Records& records) { std::strcpy(records.node.label, "Rack 5"); }));
    EXPECT_EQ(ask(instrument, activation_of(instrument, 0)).status, 200);
    instrument.stop();
    EXPECT_THAT(log, ElementsAre("resources_changed has thrown: no display",
                                 "resources_changed has thrown: no display"));
}

TEST(NodeTest, TheLogOfAServerOfTheHostNamesNoPortOfOurs)
{
    std::vector<std::string> log;
    Callbacks callbacks;
    callbacks.log = [&](LogLevel, std::string_view line) { log.emplace_back(line); };
    Instrument instrument(configuration_of("NODE-1"), without_server(), callbacks);
    instrument.start();
    instrument.stop();
    EXPECT_THAT(log,
                Contains(HasSubstr("serving http://127.0.0.1:3000/ (by a server of the host)")));
    EXPECT_THAT(log, Not(Contains(HasSubstr("only this machine can reach"))));
}

TEST(NodeTest, AChangedIdIsRefused)
{
    Instrument instrument(configuration_of("NODE-1"), without_server());
    instrument.start();
    const std::string before = get(instrument, "/x-nmos/node/v1.2/self").body;
    EXPECT_THROW(instrument.records([](Records& records) {
        std::strcpy(records.node.id, "3b8be755-08ff-452b-b217-c9151eb21193");
    }),
                 std::invalid_argument);
    EXPECT_THROW(instrument.records([](Records&) { throw std::runtime_error("the host's own"); }),
                 std::runtime_error);
    EXPECT_EQ(get(instrument, "/x-nmos/node/v1.2/self").body, before);
}

TEST(NodeTest, TheHardwareIsAskedAndMayRefuse)
{
    std::mutex mutex;
    std::vector<std::string> asked;
    Callbacks callbacks;
    callbacks.apply_connection = [&](const Connection& connection,
                                     const CONNECTION_HALF_IS05_ST& active) {
        if (connection.side == Connection::Side::sender)
            return applied(); // those that send from the start
        const std::lock_guard<std::mutex> lock(mutex);
        asked.push_back("receiver " + std::to_string(connection.index) + ' ' +
                        active.transport_params[0].destination_ip);
        return connection.index == 1 ? refused("all paths are in use") : applied();
    };
    Instrument instrument(configuration_of("NODE-1"), without_server(), callbacks);
    instrument.start();
    EXPECT_EQ(ask(instrument, activation_of(instrument, 0)).status, 200);
    EXPECT_THAT(get(instrument, receiver_path(instrument, 0) + "/active").body,
                HasSubstr(R"("multicast_ip":"233.252.0.1")"));

    const HttpAnswer refusal = ask(instrument, activation_of(instrument, 1));
    EXPECT_EQ(refusal.status, 500);
    EXPECT_THAT(refusal.body, HasSubstr("all paths are in use"));
    EXPECT_THAT(get(instrument, receiver_path(instrument, 1) + "/active").body,
                HasSubstr(R"("multicast_ip":null)"));
    EXPECT_THAT(asked, ElementsAre("receiver 0 233.252.0.1", "receiver 1 233.252.0.1"));
}

TEST(NodeTest, SlowHardwareHoldsNobodyUp)
{
    std::promise<void> released;
    std::shared_future<void> release = released.get_future().share();
    std::promise<void> begun;
    Callbacks callbacks;
    callbacks.apply_connection = [&](const Connection& connection, const CONNECTION_HALF_IS05_ST&) {
        if (connection.side == Connection::Side::sender)
            return applied(); // those that send from the start
        begun.set_value();
        release.wait();
        return applied();
    };
    Instrument instrument(configuration_of("NODE-1"), without_server(), callbacks);
    instrument.start();
    std::promise<HttpAnswer> answered;
    instrument.answer(activation_of(instrument, 0),
                      [&](HttpAnswer answer) { answered.set_value(std::move(answer)); });
    begun.get_future().wait();
    EXPECT_EQ(get(instrument, "/x-nmos/node/v1.2/self").status, 200);
    EXPECT_EQ(ask(instrument, activation_of(instrument, 0)).status, 423);
    instrument.records([](Records& records) { std::strcpy(records.node.label, "Rack 5"); });
    released.set_value();
    EXPECT_EQ(answered.get_future().get().status, 200);
}

TEST(NodeTest, StoppingAnswersWhoWaitsForTheHardware)
{
    std::promise<void> released;
    // The call outlasts the test's variables: it has its own.
    const auto begun = std::make_shared<std::promise<void>>();
    Callbacks callbacks;
    callbacks.apply_connection = [begun, release = released.get_future().share()](
                                     const Connection& connection, const CONNECTION_HALF_IS05_ST&) {
        if (connection.side == Connection::Side::sender)
            return applied(); // those that send from the start
        begun->set_value();
        release.wait();
        return applied();
    };
    Options options = without_server();
    options.apply_deadline = std::chrono::milliseconds(200);
    Instrument instrument(configuration_of("NODE-1"), options, callbacks);
    instrument.start();
    const std::string path = receiver_path(instrument, 0);
    std::promise<HttpAnswer> answered;
    instrument.answer(activation_of(instrument, 0),
                      [&](HttpAnswer answer) { answered.set_value(std::move(answer)); });
    begun->get_future().wait();
    EXPECT_TRUE(instrument.stop());
    std::future<HttpAnswer> answer = answered.get_future();
    ASSERT_EQ(answer.wait_for(std::chrono::seconds(0)), std::future_status::ready);
    EXPECT_EQ(answer.get().status, 500);

    instrument.start(); // nobody is locked by the call that was left behind
    HttpRequest stage = activation_of(instrument, 0);
    stage.body = R"({"master_enable": false})";
    EXPECT_EQ(ask(instrument, stage).status, 200);
    EXPECT_THAT(get(instrument, path + "/active").body, HasSubstr(R"("multicast_ip":null)"));
    released.set_value();
}

TEST(NodeTest, AStateSurvivesAndTheHardwareFollowsIt)
{
    const TemporaryFolder folder;
    Options options = without_server();
    options.state_file = folder.path() / "state.json";
    {
        Instrument instrument(configuration_of("NODE-1"), options);
        instrument.start();
        EXPECT_EQ(ask(instrument, activation_of(instrument, 2)).status, 200);
        EXPECT_TRUE(instrument.stop());
    }
    std::promise<int> receiver;
    Callbacks callbacks;
    callbacks.apply_connection = [&](const Connection& connection,
                                     const CONNECTION_HALF_IS05_ST& active) {
        if (connection.side == Connection::Side::receiver && active.master_enable != 0)
            receiver.set_value(connection.index); // a second one would throw
        return applied();
    };
    Instrument instrument(configuration_of("NODE-1"), options, callbacks);
    instrument.start();
    EXPECT_EQ(receiver.get_future().get(), 2);
    EXPECT_THAT(get(instrument, receiver_path(instrument, 2) + "/active").body,
                HasSubstr(R"("multicast_ip":"233.252.0.1")"));
}

TEST(NodeTest, IsMadeOfRecordsOfTheHost)
{
    nmos_instrument::RecordsDescription about;
    about.seed = "QX0000001";
    about.label = "Rack 7";
    about.interfaces[0] = {"media1", "00-00-5e-00-53-01", "192.0.2.10"};
    about.interfaces[1] = {"media2", "00-00-5e-00-53-02", "198.51.100.10"};
    about.address = "192.0.2.1";
    about.grandmaster = "00-00-5e-ff-fe-00-53-01";
    about.version_seconds = 1541234567;
    const auto node = std::make_unique<NMOS_IS04_ST>();
    const auto connections = std::make_unique<NMOS_IS05_ST>();
    st_param_sys settings;
    nmos_instrument::Selection selection;
    ASSERT_THAT(
        nmos_instrument::fill_default_records(about, *node, *connections, settings, selection),
        ElementsAre());

    Instrument instrument({*node, *connections, settings, selection},
                          R"({"registration": {"enabled": false}})", without_server());
    instrument.start();
    const std::string self = get(instrument, "/x-nmos/node/v1.2/self").body;
    EXPECT_THAT(self, HasSubstr(R"("label":"Rack 7")"));
    EXPECT_THAT(self, HasSubstr(std::string(R"("id":")") + node->id + '"'));
    EXPECT_THAT(self, HasSubstr(R"("href":"http://127.0.0.1:3000/")")); // the host's
    EXPECT_EQ(
        get(instrument, std::string("/x-nmos/node/v1.2/senders/") + node->senders[0].id).status,
        200);
    EXPECT_EQ(
        get(instrument, std::string("/x-nmos/node/v1.2/senders/") + node->senders[1].id).status,
        404); // the selection hides it
    EXPECT_EQ(ask(instrument, activation_of(instrument, 0)).status, 200);
}

TEST(NodeTest, SaysWhatIsWrongWithRecords)
{
    const auto node = std::make_unique<NMOS_IS04_ST>(); // all zero
    const auto connections = std::make_unique<NMOS_IS05_ST>();
    const st_param_sys settings{};
    try {
        const Instrument instrument({*node, *connections, settings, {}}, "{}");
        FAIL() << "they were taken";
    } catch (const std::invalid_argument& error) {
        EXPECT_THAT(error.what(), HasSubstr("records: node.clocks_count is 0, allowed is 1\n"));
    }
}

TEST(NodeTest, TellsTheTimeAsTai)
{
    const TaiTime now = tai_now();
    const auto utc = std::chrono::duration_cast<std::chrono::seconds>(
        std::chrono::system_clock::now().time_since_epoch());
    EXPECT_NEAR(static_cast<double>(now.seconds), static_cast<double>(utc.count()) + 37, 2);
    EXPECT_GE(now.nanoseconds, 0);
    EXPECT_LE(now.nanoseconds, 999'999'999);
}

} // namespace
} // namespace nmos_instrument_host
