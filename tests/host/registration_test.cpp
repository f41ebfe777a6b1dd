// SPDX-License-Identifier: Apache-2.0
//
// The registration of one node with a network and a clock of the test's own.

#include "registration/registration.h"

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <malloc.h>
#include <nlohmann/json.hpp>

#include "records/record_text.h"
#include "registration/retry_pause.h"

namespace nmos_instrument::host {
namespace {

using namespace std::chrono_literals;

const std::string first = "http://192.0.2.1:80/x-nmos/registration/v1.2";
const std::string second = "http://192.0.2.2:80/x-nmos/registration/v1.2";

struct Sent
{
    ClientRequest request;
    HttpClient::Receive receive;
};

ClientAnswer answered(int status)
{
    return {.status = status, .duration = 1ms};
}

const ClientAnswer unreachable{.why = "connection refused"};

/// What is logged.
class LogText
{
public:
    LogText() = default;
    LogText(const LogText&) = delete;
    LogText& operator=(const LogText&) = delete;

    Log log()
    {
        return {LogLevel::info, [this](LogLevel /*level*/, std::string_view line) {
                    if (keeps_)
                        text_.append(line) += '\n';
                }};
    }

    /// What was logged before is not kept: some tests measure the memory of the registration.
    void keep() { keeps_ = true; }

    std::size_t count(const std::string& words) const
    {
        std::size_t count = 0;
        for (auto at = text_.find(words); at != std::string::npos; at = text_.find(words, at + 1))
            ++count;
        return count;
    }

    const std::string& text() const { return text_; }

private:
    bool keeps_ = false;
    std::string text_;
};

class RegistrationTest : public testing::Test
{
protected:
    /// "POST http://.../resource"; "" if nothing was sent.
    std::string next_request() const
    {
        return sent_.empty() ? "" : sent_.front().request.method + ' ' + sent_.front().request.url;
    }

    std::string next_type() const
    {
        return nlohmann::json::parse(sent_.front().request.json.value())["type"];
    }

    std::string next_id() const
    {
        return nlohmann::json::parse(sent_.front().request.json.value())["data"]["id"];
    }

    /// Answers the oldest request.
    void answer(const ClientAnswer& given)
    {
        ASSERT_FALSE(sent_.empty());
        const Sent one = std::move(sent_.front());
        sent_.pop_front();
        one.receive(given);
    }

    void answer(int status) { answer(answered(status)); }

    /// Answers posts until nothing is sent any more.
    std::size_t answer_all(int status)
    {
        std::size_t count = 0;
        for (; !sent_.empty(); ++count)
            answer(status);
        return count;
    }

    void pass(std::chrono::milliseconds time)
    {
        now_ += time;
        registration_.look();
    }

    void find(std::vector<std::string> urls)
    {
        std::vector<Registry> registries;
        for (std::size_t i = 0; i < urls.size(); ++i)
            registries.push_back({urls[i], "", static_cast<int>(i), "named"});
        registration_.found(registries);
    }

    void register_everything(std::vector<std::string> urls = {first})
    {
        registration_.start();
        find(std::move(urls));
        answer_all(201);
        ASSERT_EQ(registration_.status().state, "registered");
    }

    void activate(std::size_t receiver)
    {
        ConnectionPatch patch;
        patch.master_enable = true;
        patch.activation = ActivationRequest{ActivationMode::immediate, {}, "null"};
        now_tai_.seconds += 1;
        ASSERT_FALSE(instrument_.change({Side::receiver, receiver}, patch).is_refusal());
        registration_.changed();
    }

    std::string node_id() { return instrument_.shown_resources().front().id; }
    std::string heartbeat_at(const std::string& registry)
    {
        return "POST " + registry + "/health/nodes/" + node_id();
    }

    TaiTime now_tai_{1000, 0};
    Registration::TimePoint now_{100s};
    std::deque<Sent> sent_;
    int searches_ = 0;
    std::vector<bool> has_registry_;
    LogText log_;
    Instrument instrument_{Configuration(), NodeAddress(), [this] { return now_tai_; }, Log()};
    Registration registration_{instrument_,
                               {.now = [this] { return now_; },
                                .random = [] { return 0.5; },
                                .send =
                                    [this](ClientRequest request, HttpClient::Receive receive) {
                                        sent_.push_back({std::move(request), std::move(receive)});
                                    },
                                .search = [this] { ++searches_; },
                                .has_registry = [this](bool yes) { has_registry_.push_back(yes); },
                                .ca_file = "ca.pem"},
                               log_.log()};
};

TEST_F(RegistrationTest, PostsParentsFirst)
{
    registration_.start();
    EXPECT_EQ(searches_, 1);
    EXPECT_EQ(registration_.status().state, "looking for a registry");
    find({first});
    std::vector<std::string> types;
    while (!sent_.empty()) {
        EXPECT_EQ(sent_.size(), 1U); // one at a time
        EXPECT_EQ(next_request(), "POST " + first + "/resource");
        EXPECT_EQ(sent_.front().request.ca_file, "ca.pem");
        EXPECT_EQ(sent_.front().request.time_limit, 5s);
        types.push_back(next_type());
        answer(201);
    }
    std::vector<std::string> expected = {"node",   "device", "source", "source", "source",
                                         "flow",   "flow",   "flow",   "sender", "sender",
                                         "sender", "sender", "sender", "sender"};
    expected.insert(expected.end(), 24, "receiver");
    EXPECT_EQ(types, expected);
    EXPECT_EQ(registration_.status().state, "registered");
    EXPECT_TRUE(registration_.status().registered);
    EXPECT_EQ(registration_.status().posts, 38U);
    EXPECT_EQ(has_registry_, std::vector<bool>{true});
}

TEST_F(RegistrationTest, PostsWhatTheNodeApiServes)
{
    registration_.start();
    find({first});
    const auto served = [this](auto&& make) {
        return nlohmann::json::parse(
            instrument_.read([&](Records& records) { return make(records.node); }));
    };
    const auto posted = [this] {
        return nlohmann::json::parse(sent_.front().request.json.value())["data"];
    };
    EXPECT_EQ(posted(), served([](auto& node) { return NodeApi().make_self(&node); }));
    for (int i = 0; i < 8; ++i)
        answer(201);
    EXPECT_EQ(posted(), served([](auto& node) { return NodeApi().make_senderid(&node, 0); }));
}

TEST_F(RegistrationTest, AFoundRegistryThatHearsOfLoopbackIsWarnedOfOnce)
{
    log_.keep();
    registration_.start();
    registration_.found({{"http://here.local:80/x-nmos/registration/v1.2", "127.0.0.1", 0, "mDNS"},
                         {first, "192.0.2.1", 1, "mDNS"},
                         {second, "192.0.2.2", 2, "mDNS"}});
    const std::string warning = "others hear of http://127.0.0.1:3000/ from ";
    EXPECT_EQ(log_.count(warning), 0U);
    answer(500);
    EXPECT_EQ(log_.count(warning + first), 1U);
    answer(500);
    EXPECT_EQ(next_request(), "POST " + second + "/resource");
    EXPECT_EQ(log_.count(warning), 1U);
}

TEST_F(RegistrationTest, TheSameFailureIsLoggedOnce)
{
    log_.keep();
    registration_.start();
    const auto fail_once_more = [this](const ClientAnswer& failure) {
        pass(30s);
        find({first});
        answer(failure);
    };
    fail_once_more({.why = "failed to connect after 3 ms"});
    fail_once_more({.why = "failed to connect after 12 ms"});
    EXPECT_EQ(log_.count("cannot be used"), 1U);
    fail_once_more({.status = 500, .body = "at 10:00"});
    fail_once_more({.status = 500, .body = "at 10:01"});
    EXPECT_EQ(log_.count("cannot be used"), 2U);
    fail_once_more({.status = 503});
    EXPECT_EQ(log_.count("cannot be used"), 3U);
}

TEST_F(RegistrationTest, HiddenResourcesAreNotRegistered)
{
    Configuration configuration;
    configuration.streams.senders = SenderStreams::stream_1;
    configuration.streams.receiver_essences = Essences::video_only;
    const Instrument instrument(
        configuration, NodeAddress(),
        [] {
            return TaiTime{1000, 0};
        },
        Log());
    std::vector<std::string_view> types;
    for (const NodeResource& resource : instrument.shown_resources())
        types.push_back(plural_of(resource.type));
    EXPECT_EQ(types, (std::vector<std::string_view>{"nodes", "devices", "sources", "sources",
                                                    "sources", "flows", "flows", "flows", "senders",
                                                    "senders", "senders", "receivers", "receivers",
                                                    "receivers", "receivers"}));
}

TEST_F(RegistrationTest, WhatIsLeftOverIsDeletedFirst)
{
    registration_.start();
    find({first});
    answer(200);
    EXPECT_EQ(next_request(), "DELETE " + first + "/resource/nodes/" + node_id());
    EXPECT_EQ(sent_.front().request.json, std::nullopt);
    answer(204);
    EXPECT_EQ(next_request(), "POST " + first + "/resource");
    EXPECT_EQ(next_type(), "node");
    answer_all(201);
    EXPECT_EQ(registration_.status().state, "registered");
    EXPECT_EQ(registration_.status().deletions, 1U);
}

TEST_F(RegistrationTest, ANodeThatIsNotDeletedIsRegisteredAsItIs)
{
    registration_.start();
    find({first});
    answer(200);
    answer(403);
    EXPECT_EQ(next_type(), "device");
}

TEST_F(RegistrationTest, ANodeThatExistsTwiceIsNotDeletedForEver)
{
    registration_.start();
    find({first});
    answer(200);
    answer(204);
    answer(200);
    EXPECT_EQ(next_type(), "device");
}

TEST_F(RegistrationTest, TheHeartBeatsEveryFiveSeconds)
{
    register_everything();
    pass(4'999ms);
    EXPECT_EQ(next_request(), "");
    pass(1ms);
    EXPECT_EQ(next_request(), heartbeat_at(first));
    EXPECT_EQ(sent_.front().request.json, std::nullopt);
    pass(1s);
    EXPECT_EQ(sent_.size(), 1U);
    answer(200);
    EXPECT_EQ(registration_.next_due(), now_ + 4s); // 5 s after the last one, not after its answer
    EXPECT_EQ(registration_.status().last_heartbeat->round_trip, 1ms);
}

TEST_F(RegistrationTest, LatenessDoesNotAddUp)
{
    register_everything();
    pass(5'300ms);
    EXPECT_EQ(next_request(), heartbeat_at(first));
    answer(200);
    EXPECT_EQ(registration_.status().last_heartbeat->late, 300ms);
    EXPECT_EQ(registration_.status().heartbeat_lateness, 300ms);
    EXPECT_EQ(registration_.next_due(), now_ + 4'700ms);
}

TEST_F(RegistrationTest, TheHeartBeatsWhileTheRestIsPosted)
{
    registration_.start();
    find({first});
    answer(201);
    EXPECT_EQ(next_type(), "device");
    pass(5s);
    ASSERT_EQ(sent_.size(), 2U);
    EXPECT_EQ(sent_.back().request.url, first + "/health/nodes/" + node_id());
}

TEST_F(RegistrationTest, ARegistryThatForgotTheNodeGetsEverythingAgain)
{
    register_everything();
    pass(5s);
    answer(404);
    EXPECT_EQ(next_type(), "node");
    EXPECT_EQ(registration_.status().state, "registering");
    EXPECT_EQ(answer_all(201), 38U);
    EXPECT_EQ(registration_.status().state, "registered");
}

TEST_F(RegistrationTest, AnotherRegistryIsAskedByAHeartbeatAndCarriesOn)
{
    register_everything({first, second});
    pass(5s);
    answer(unreachable);
    EXPECT_EQ(next_request(), heartbeat_at(second));
    answer(200);
    EXPECT_EQ(next_request(), "");
    EXPECT_EQ(registration_.status().state, "registered");
    EXPECT_EQ(registration_.status().registry, second);
    EXPECT_EQ(registration_.status().fail_overs, 1U);
    EXPECT_EQ(registration_.status().failures, 1U);
    pass(5s);
    EXPECT_EQ(next_request(), heartbeat_at(second));
}

TEST_F(RegistrationTest, AnotherRegistryThatDoesNotKnowTheNodeGetsEverything)
{
    register_everything({first, second});
    pass(5s);
    answer(503);
    EXPECT_EQ(next_request(), heartbeat_at(second));
    answer(404);
    EXPECT_EQ(next_request(), "POST " + second + "/resource");
    EXPECT_EQ(answer_all(201), 38U);
}

TEST_F(RegistrationTest, WhatChangedMeanwhileFollowsTheNodeToTheOtherRegistry)
{
    register_everything({first, second});
    activate(3);
    pass(750ms);
    answer(500);
    EXPECT_EQ(next_request(), heartbeat_at(second));
    answer(200);
    EXPECT_EQ(next_type(), "receiver");
    EXPECT_EQ(answer_all(200), 1U);
}

TEST_F(RegistrationTest, ARegistryThatWasLeftIsNotBelieved)
{
    register_everything({first, second});
    pass(5s);
    answer(unreachable); // first
    answer(200);         // second
    activate(3);
    pass(750ms);
    answer(200); // only second knows of it
    pass(4'250ms);
    answer(unreachable);                            // second
    EXPECT_EQ(next_request(), heartbeat_at(first)); // a new round began when it was registered
    answer(200);
    EXPECT_EQ(answer_all(200), 38U);
    EXPECT_EQ(registration_.status().state, "registered");
}

TEST_F(RegistrationTest, APostWithoutAnAnswerIsRepeated)
{
    register_everything({first, second});
    pass(5s);
    answer(unreachable); // first
    answer(200);         // second
    pass(5s);
    answer(unreachable); // second
    answer(200);         // first, which gets everything again
    EXPECT_EQ(next_type(), "node");
    answer(200);
    EXPECT_EQ(next_type(), "device");
    answer(500);
    EXPECT_EQ(next_request(), "");
    pass(2s);
    find({first});
    EXPECT_EQ(next_request(), heartbeat_at(first));
    answer(200);
    EXPECT_EQ(next_type(), "source");
    EXPECT_EQ(answer_all(200), 37U); // all but the node
}

TEST_F(RegistrationTest, ANodeWhoseAnswerWasLostIsNotTakenForComplete)
{
    register_everything({first, second});
    pass(5s);
    answer(500);         // first
    answer(404);         // second
    answer(unreachable); // which may have the node now, and nothing else
    pass(2s);
    find({first, second});
    answer_all(201);
    ASSERT_EQ(registration_.status().registry, first);
    pass(5s);
    answer(500);
    EXPECT_EQ(next_request(), heartbeat_at(second));
    answer(200);
    EXPECT_EQ(answer_all(200), 38U);
}

TEST_F(RegistrationTest, WhatARegistryTookThatFailedThenIsNotBelievedOfAnother)
{
    register_everything({first, second});
    activate(3);
    activate(4);
    pass(750ms);
    answer(500); // first
    answer(200); // second knows the node,
    answer(200); // takes one receiver,
    answer(500); // and fails
    pass(1'250ms);
    find({first, second});
    EXPECT_EQ(next_request(), heartbeat_at(first));
    answer(200);
    EXPECT_EQ(answer_all(200), 38U);
    EXPECT_EQ(registration_.status().state, "registered");
}

TEST_F(RegistrationTest, AnAnswerThatComesTooLateDoesNothing)
{
    register_everything({first, second});
    activate(0);
    pass(750ms);
    pass(4'250ms);
    ASSERT_EQ(sent_.size(), 2U); // the receiver, then the heartbeat
    const Sent late = sent_.front();
    sent_.pop_front();
    answer(500);
    EXPECT_EQ(next_request(), heartbeat_at(second));
    late.receive(answered(400));
    EXPECT_EQ(registration_.status().refusals, 0U);
    EXPECT_EQ(sent_.size(), 1U);
}

TEST_F(RegistrationTest, PausesGrowAndEachSearchIsFresh)
{
    registration_.start();
    find({});
    std::vector<std::int64_t> pauses;
    for (int i = 0; i < 8; ++i) {
        const auto pause = registration_.next_due().value() - now_;
        pauses.push_back(std::chrono::duration_cast<std::chrono::milliseconds>(pause).count());
        EXPECT_EQ(searches_, i + 1);
        pass(std::chrono::duration_cast<std::chrono::milliseconds>(pause));
        EXPECT_EQ(searches_, i + 2);
        find({});
    }
    EXPECT_EQ(pauses,
              (std::vector<std::int64_t>{1125, 2250, 4500, 9000, 18000, 27000, 27000, 27000}));
    EXPECT_EQ(has_registry_, std::vector<bool>(9, false));
}

TEST(RetryPauseTest, IsFrom1To30Seconds)
{
    RetryPause shortest;
    RetryPause longest;
    EXPECT_EQ(shortest.next(1.0), 1'000ms);
    EXPECT_EQ(longest.next(0.0), 1'250ms);
    for (int i = 0; i < 10; ++i) {
        shortest.next(1.0);
        longest.next(0.0);
    }
    EXPECT_EQ(shortest.next(1.0), 24'000ms);
    EXPECT_EQ(longest.next(0.0), 30'000ms);
    longest.reset();
    EXPECT_EQ(longest.next(0.0), 1'250ms);
}

TEST_F(RegistrationTest, EachRegistryIsTriedOnceInARound)
{
    registration_.start();
    find({first, second});
    EXPECT_EQ(next_request(), "POST " + first + "/resource");
    answer(500);
    EXPECT_EQ(next_request(), "POST " + second + "/resource");
    answer(unreachable);
    EXPECT_EQ(next_request(), "");
    find({first, second}); // the list again: nothing new
    EXPECT_EQ(next_request(), "");
    pass(1'250ms);
    find({first, second});
    EXPECT_EQ(next_request(), "POST " + first + "/resource");
}

/// In the log, which would grow for ever.
TEST_F(RegistrationTest, ManyDeadRegistriesAreToldOfOnce)
{
    log_.keep();
    std::vector<std::string> urls;
    urls.reserve(300);
    for (int i = 0; i < 300; ++i)
        urls.push_back("http://192.0.2.1:" + std::to_string(8000 + i));
    registration_.start();
    find(urls);
    for (int i = 0; i < 300; ++i)
        answer(unreachable);
    const std::string told = log_.text();
    EXPECT_NE(told.find("registry http://192.0.2.1:8299 cannot be used"), std::string::npos);
    pass(2s);
    find(urls);
    for (int i = 0; i < 300; ++i)
        answer(unreachable);
    EXPECT_EQ(log_.text(), told);
}

TEST_F(RegistrationTest, ANewRegistryEndsThePause)
{
    registration_.start();
    find({first});
    answer(500);
    find({first, second});
    EXPECT_EQ(next_request(), "POST " + second + "/resource");
}

TEST_F(RegistrationTest, ASearchWithoutAnAnswerIsBegunAgain)
{
    registration_.start();
    pass(20s);
    EXPECT_EQ(searches_, 2);
}

TEST_F(RegistrationTest, WhatARegistryRefusesIsNotPostedAgainUnchanged)
{
    register_everything();
    const std::string receiver = instrument_.shown_resources().back().id;
    activate(23);
    pass(750ms);
    EXPECT_EQ(next_id(), receiver);
    answer(400);
    EXPECT_EQ(next_request(), heartbeat_at(first)); // does it know the node at all?
    answer(200);
    EXPECT_EQ(registration_.status().refusals, 1U);
    registration_.changed();
    pass(750ms);
    EXPECT_EQ(next_request(), "");
    activate(23);
    pass(750ms);
    EXPECT_EQ(next_id(), receiver);
    answer(200);
    EXPECT_EQ(registration_.status().state, "registered");
}

TEST_F(RegistrationTest, AResourceThatKeepsChangingDoesNotHoldUpTheOthers)
{
    register_everything();
    activate(0);
    activate(20);
    pass(750ms);
    const std::vector<NodeResource>& resources = instrument_.shown_resources();
    EXPECT_EQ(next_id(), resources[14].id);
    activate(0);
    pass(750ms);
    answer(200);
    EXPECT_EQ(next_id(), resources[14 + 20].id);
    answer(200);
    EXPECT_EQ(next_id(), resources[14].id);
}

TEST_F(RegistrationTest, ItIsRegisteredWhenEverythingWasPostedOnce)
{
    registration_.start();
    find({first});
    int answers = 0;
    for (; answers < 100 && registration_.status().state != "registered"; ++answers) {
        answer(sent_.front().request.json ? 201 : 200);
        activate(0); // so that it always has to be posted again
        pass(750ms);
    }
    EXPECT_GE(answers, 38);
    EXPECT_LE(answers, 50); // heartbeats too
}

TEST_F(RegistrationTest, ManyRefusalsAreOneHeartbeat)
{
    register_everything();
    pass(5s);
    answer(200);
    pass(1'001ms);
    for (std::size_t i = 0; i < 24; ++i)
        activate(i);
    pass(750ms);
    std::size_t heartbeats = 0;
    std::size_t refusals = 0;
    while (!sent_.empty()) {
        const bool posts = sent_.front().request.json.has_value();
        ++(posts ? refusals : heartbeats);
        answer(posts ? 400 : 200);
    }
    EXPECT_EQ(refusals, 24U);
    EXPECT_EQ(heartbeats, 1U);
}

TEST_F(RegistrationTest, ARegistryThatNeverKnowsTheNodeIsNotHammered)
{
    registration_.start();
    find({first});
    const auto answer_by_path = [this] {
        const bool beats = !sent_.front().request.json;
        const int of_post = !beats && next_type() == "node" ? 201 : 400;
        answer(beats ? 404 : of_post);
    };
    constexpr std::size_t many = 100;
    std::size_t requests = 0;
    for (; !sent_.empty() && requests < many; ++requests)
        answer_by_path();
    // The node, the device, a heartbeat, and the first two once more.
    EXPECT_EQ(requests, 5U);
    pass(5s);
    EXPECT_EQ(next_request(), heartbeat_at(first));
}

TEST_F(RegistrationTest, WhatDependsOnARefusedResourceIsLeftOut)
{
    registration_.start();
    find({first});
    answer(201); // node
    answer(201); // device
    answer(201); // source for video
    answer(400); // source for audio
    std::vector<std::string> types;
    while (!sent_.empty()) {
        if (sent_.front().request.json)
            types.push_back(next_type());
        answer(sent_.front().request.json ? 201 : 200);
    }
    // Neither the flow nor the sender of audio.
    std::vector<std::string> expected = {"source", "flow",   "flow",   "sender",
                                         "sender", "sender", "sender", "sender"};
    expected.insert(expected.end(), 24, "receiver");
    EXPECT_EQ(types, expected);
    EXPECT_EQ(registration_.status().state, "registered");
}

TEST_F(RegistrationTest, ARefusedNodeGoesToTheNextRegistry)
{
    registration_.start();
    find({first, second});
    answer(400);
    EXPECT_EQ(next_request(), "POST " + second + "/resource");
    answer(400);
    EXPECT_EQ(next_request(), "");
    pass(1'250ms);
    find({first, second}); // neither gets the same again
    EXPECT_EQ(next_request(), "");
    EXPECT_EQ(registration_.status().refusals, 2U);
    pass(2'500ms);
    find({second}); // first is gone
    pass(5'000ms);
    find({first, second}); // and has come back
    EXPECT_EQ(next_request(), "POST " + first + "/resource");
}

TEST_F(RegistrationTest, ManyChangesAreOnePost)
{
    register_everything();
    activate(5);
    const std::string receiver = instrument_.shown_resources()[14 + 5].id;
    for (int i = 0; i < 99; ++i) {
        pass(7ms);
        activate(5);
        EXPECT_EQ(next_request(), "");
    }
    pass(57ms);
    EXPECT_EQ(next_id(), receiver);
    const std::string version =
        nlohmann::json::parse(sent_.front().request.json.value())["data"]["version"];
    EXPECT_EQ(version, "1100:0");
    EXPECT_EQ(answer_all(200), 1U);
}

TEST_F(RegistrationTest, VersionsNeverGoBack)
{
    activate(5); // 1001:0; the others have 1000:0
    registration_.start();
    find({first});
    std::vector<std::string> versions;
    while (!sent_.empty()) {
        const nlohmann::json body = nlohmann::json::parse(sent_.front().request.json.value());
        if (body["type"] == "node" || body["type"] == "device" || body["type"] == "receiver")
            versions.push_back(body["data"]["version"]);
        answer(201);
    }
    EXPECT_EQ(versions, std::vector<std::string>(26, "1001:0"));
    // Nothing has changed: to register again does not pretend that it has.
    pass(5s);
    answer(404);
    EXPECT_EQ(nlohmann::json::parse(sent_.front().request.json.value())["data"]["version"],
              "1001:0");
}

TEST_F(RegistrationTest, AnotherAddressIsPostedWithAllThatNamesIt)
{
    register_everything();
    instrument_.listen({.changed = [this] { registration_.changed(); }, .scheduled = {}});
    now_tai_.seconds = 2000;
    instrument_.move_to({"192.0.2.20", 3000});
    pass(750ms);
    std::vector<std::string> types;
    while (!sent_.empty()) {
        const nlohmann::json body = nlohmann::json::parse(sent_.front().request.json.value());
        types.push_back(body["type"]);
        EXPECT_EQ(body["data"]["version"], "2000:0") << body;
        answer(200);
    }
    // The receivers too, since they get the version of the node.
    std::vector<std::string> expected = {"node",   "device", "sender", "sender",
                                         "sender", "sender", "sender", "sender"};
    expected.insert(expected.end(), 24, "receiver");
    pass(750ms);
    while (!sent_.empty()) {
        types.push_back(next_type());
        answer(200);
    }
    EXPECT_EQ(types, expected);
    registration_.changed();
    pass(750ms);
    EXPECT_EQ(next_request(), "");
}

TEST_F(RegistrationTest, AnAddressThatChangesWhileTheNodeIsPostedIsPostedToo)
{
    registration_.start();
    find({first});
    instrument_.move_to({"192.0.2.20", 3000});
    registration_.changed();
    pass(750ms); // longer than the change waits
    answer(201);
    EXPECT_EQ(next_type(), "device");
    std::string last_href;
    while (!sent_.empty()) {
        const nlohmann::json body = nlohmann::json::parse(sent_.front().request.json.value());
        if (body["type"] == "node")
            last_href = body["data"]["href"];
        answer(body["type"] == "node" ? 200 : 201);
    }
    EXPECT_EQ(last_href, "http://192.0.2.20:3000/");
    EXPECT_EQ(registration_.status().state, "registered");
}

TEST_F(RegistrationTest, AnUpdateOfTheNodeThatCreatesItRegistersEverything)
{
    register_everything();
    now_tai_.seconds = 2000;
    instrument_.move_to({"192.0.2.20", 3000});
    registration_.changed();
    pass(750ms);
    EXPECT_EQ(next_type(), "node");
    answer(201);
    EXPECT_EQ(registration_.status().state, "registering");
    EXPECT_EQ(answer_all(201), 37U);
    EXPECT_EQ(registration_.status().state, "registered");
}

TEST_F(RegistrationTest, LeavesChildrenFirst)
{
    register_everything();
    registration_.stop();
    std::vector<std::string> kinds;
    while (!sent_.empty()) {
        EXPECT_EQ(sent_.size(), 1U);
        const std::string path =
            sent_.front().request.url.substr(first.size() + std::string("/resource/").size());
        EXPECT_EQ(sent_.front().request.method, "DELETE");
        kinds.push_back(path.substr(0, path.find('/')));
        answer(204);
    }
    std::vector<std::string> expected(24, "receivers");
    expected.insert(expected.end(), 6, "senders");
    expected.insert(expected.end(), 3, "flows");
    expected.insert(expected.end(), 3, "sources");
    expected.insert(expected.end(), {"devices", "nodes"});
    EXPECT_EQ(kinds, expected);
    EXPECT_TRUE(registration_.has_ended());
    EXPECT_EQ(registration_.next_due(), std::nullopt);
}

TEST_F(RegistrationTest, LeavesASlowRegistryByTheNodeAlone)
{
    register_everything();
    registration_.stop();
    pass(1'300ms);
    ASSERT_EQ(sent_.size(), 2U);
    EXPECT_EQ(sent_.back().request.url, first + "/resource/nodes/" + node_id());
    EXPECT_FALSE(registration_.has_ended());
    pass(500ms);
    EXPECT_TRUE(registration_.has_ended());
    answer_all(204); // too late
    EXPECT_EQ(sent_.size(), 0U);
}

TEST_F(RegistrationTest, LeavesADeadRegistryAtOnce)
{
    register_everything();
    registration_.stop();
    answer(unreachable);
    EXPECT_TRUE(registration_.has_ended());
}

TEST_F(RegistrationTest, ANodeWhosePostIsOnItsWayIsDeletedAfterIt)
{
    registration_.start();
    find({first});
    registration_.stop();
    EXPECT_EQ(sent_.size(), 1U);
    answer(201);
    EXPECT_EQ(next_request(), "DELETE " + first + "/resource/nodes/" + node_id());
    answer(204);
    EXPECT_TRUE(registration_.has_ended());
}

TEST_F(RegistrationTest, WithoutARegistryItEndsAtOnce)
{
    registration_.start();
    find({});
    registration_.stop();
    EXPECT_TRUE(registration_.has_ended());
}

TEST_F(RegistrationTest, AUsedRegistryMayDisappearFromTheList)
{
    register_everything();
    find({second});
    EXPECT_EQ(registration_.status().registry, first);
    pass(5s);
    EXPECT_EQ(next_request(), heartbeat_at(first));
    answer(unreachable);
    EXPECT_EQ(next_request(), heartbeat_at(second));
}

TEST_F(RegistrationTest, AfterWantOfMemoryItBeginsAgain)
{
    register_everything();
    registration_.begin_again();
    EXPECT_EQ(registration_.status().state, "lost its registry, looking for one");
    pass(1s);
    EXPECT_EQ(searches_, 2);
    find({first});
    EXPECT_EQ(next_request(), heartbeat_at(first));
    answer(200);
    EXPECT_EQ(registration_.status().state, "registered");
}

TEST_F(RegistrationTest, ADayOfLostRegistriesLeavesNothingBehind)
{
    register_everything({first, second});
    const auto lose = [this](int times) {
        for (int i = 0; i < times; ++i) {
            pass(5s);
            answer(unreachable);
            answer(404);
            answer_all(201);
            pass(5s);
            answer(500);
            answer(404);
            answer_all(201);
            ASSERT_EQ(registration_.status().state, "registered");
        }
    };
    lose(100);
    const std::size_t before = mallinfo2().uordblks;
    lose(1'000);
    EXPECT_LT(mallinfo2().uordblks, before + 10'000);
    EXPECT_EQ(registration_.status().fail_overs, 2'200U);
}

TEST_F(RegistrationTest, ADayOfHeartbeatsLeavesNothingBehind)
{
    register_everything();
    const auto beat = [this](int times) {
        for (int i = 0; i < times; ++i) {
            pass(5s);
            ASSERT_EQ(sent_.size(), 1U);
            answer(200);
            ASSERT_EQ(registration_.next_due(), now_ + 5s);
        }
    };
    constexpr int an_hour = 60 * 60 / 5;
    beat(an_hour);
    const std::size_t after_an_hour = mallinfo2().uordblks;
    beat(23 * an_hour);
    EXPECT_EQ(mallinfo2().uordblks, after_an_hour); // both 0 with the sanitizers' allocator
    EXPECT_EQ(registration_.status().heartbeats, 17'280U);
    EXPECT_EQ(registration_.status().posts, 38U);
}

} // namespace
} // namespace nmos_instrument::host
