// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/NodeApi.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <ostream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/all_node_bodies.h"
#include "support/body_parts.h"
#include "support/example_node.h"
#include "support/example_node_texts.h"
#include "support/node_operations.h"
#include "support/same_bytes.h"
#include "support/set_text.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

// --- Listings ------------------------------------------------------------------------------------

TEST(NodeApiListings, VersionIsOneEntry)
{
    EXPECT_EQ(NodeApi().make_version(), "[\n    \"v1.2/\"\n]\n");
}

TEST(NodeApiListings, BaseNamesTheSixResourcesWithoutReadingTheRecord)
{
    EXPECT_EQ(NodeApi().make_base(nullptr), "[\n"
                                            "    \"self/\",\n"
                                            "    \"sources/\",\n"
                                            "    \"flows/\",\n"
                                            "    \"devices/\",\n"
                                            "    \"senders/\",\n"
                                            "    \"receivers/\"\n"
                                            "]\n");
}

TEST(NodeApiListings, BaseIsTheSameForAnyRecord)
{
    const auto rec = example_node();
    EXPECT_EQ(NodeApi().make_base(rec.get()), NodeApi().make_base(nullptr));
}

TEST(NodeApiInit, DoesNothingThatABodyShows)
{
    const auto rec = example_node();
    NodeApi api;
    const std::string before = api.make_self(rec.get());
    api.init();
    EXPECT_EQ(api.make_self(rec.get()), before);
}

// --- Whole bodies --------------------------------------------------------------------------------

/// The parameter is what stands wherever a body must not look.
class NodeApiBodies : public ::testing::TestWithParam<int>
{
protected:
    NodeApi api;
    std::unique_ptr<NMOS_IS04_ST> rec = example_node(static_cast<unsigned char>(GetParam()));
};

INSTANTIATE_TEST_SUITE_P(Background, NodeApiBodies, ::testing::Values(0x00, 0x2F, 0xFF));

TEST_P(NodeApiBodies, Self)
{
    EXPECT_EQ(api.make_self(rec.get()),
              R"({"api":{"endpoints":[{"host":"192.0.2.10","port":3212,"protocol":"http"}],)"
              R"("versions":["v1.1/","v1.2/"]},"caps":{},)"
              R"("clocks":[{"gmid":"00-00-5e-ff-fe-00-53-01","locked":false,"name":"clk/0",)"
              R"("ref_type":"ptp","traceable":true,"version":"IEEE1588-2008"},)"
              R"({"name":"clk/1","ref_type":"internal"},)"
              R"({"gmid":"gmid/2","locked":true,"name":"clk/2","ref_type":"ptp",)"
              R"("traceable":false,"version":"profile/2"}],)"
              R"("description":"node/description","hostname":"node/hostname",)"
              R"("href":"http://192.0.2.10:3212/","id":"node/id",)"
              R"("interfaces":[{"chassis_id":null,"name":"eth/0","port_id":"port/0"},)"
              R"({"chassis_id":"chassis/1","name":"eth/1","port_id":"port/1"}],)"
              R"("label":"node/label","services":[],"tags":{},"version":"node/version"})");
}

TEST_P(NodeApiBodies, Sources)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_sources(rec.get()), "[" + source_0_plain + "," + source_1_plain + "," +
                                               source_2_plain + "," + source_3_plain + "]");
}

TEST_P(NodeApiBodies, SourceById)
{
    EXPECT_EQ(api.make_sourceid(rec.get(), 0), example_texts::source_0_escaped);
    EXPECT_EQ(api.make_sourceid(rec.get(), 1), example_texts::source_1_escaped);
    EXPECT_EQ(api.make_sourceid(rec.get(), 2), example_texts::source_2_escaped);
    EXPECT_EQ(api.make_sourceid(rec.get(), 3), example_texts::source_3_escaped);
}

TEST_P(NodeApiBodies, Flows)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_flows(rec.get()), "[" + flow_0_plain + "," + flow_1_plain + "," +
                                             flow_2_plain + "," + flow_3_plain + "]");
}

TEST_P(NodeApiBodies, FlowById)
{
    EXPECT_EQ(api.make_flowid(rec.get(), 0), example_texts::flow_0_plain);
    EXPECT_EQ(api.make_flowid(rec.get(), 1), example_texts::flow_1_plain);
    EXPECT_EQ(api.make_flowid(rec.get(), 2), example_texts::flow_2_plain);
    EXPECT_EQ(api.make_flowid(rec.get(), 3), example_texts::flow_3_plain);
}

TEST_P(NodeApiBodies, Devices)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_devices(rec.get(), 0, 2, 1), "[" + device_0 + "," + device_1 + "]");
}

TEST_P(NodeApiBodies, DeviceById)
{
    EXPECT_EQ(api.make_deviceid(rec.get(), 0, 0, 2, 1), example_texts::device_0);
    EXPECT_EQ(api.make_deviceid(rec.get(), 1, 0, 2, 1), example_texts::device_1);
}

TEST_P(NodeApiBodies, Senders)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_senders(rec.get(), 1), "[" + sender_0 + "," + sender_1 + "," + sender_2 +
                                                  "," + sender_3 + "," + sender_4 + "," + sender_5 +
                                                  "]");
}

TEST_P(NodeApiBodies, SenderById)
{
    EXPECT_EQ(api.make_senderid(rec.get(), 0), example_texts::sender_0);
    EXPECT_EQ(api.make_senderid(rec.get(), 1), example_texts::sender_1);
    EXPECT_EQ(api.make_senderid(rec.get(), 2), example_texts::sender_2);
    EXPECT_EQ(api.make_senderid(rec.get(), 3), example_texts::sender_3);
    EXPECT_EQ(api.make_senderid(rec.get(), 4), example_texts::sender_4);
    EXPECT_EQ(api.make_senderid(rec.get(), 5), example_texts::sender_5);
}

TEST_P(NodeApiBodies, Receivers)
{
    using namespace example_texts;
    rec->receivers_count = 3;
    EXPECT_EQ(api.make_receivers(rec.get(), 0, 2),
              "[" + receiver_0 + "," + receiver_1 + "," + receiver_2 + "]");
}

TEST_P(NodeApiBodies, ReceiverById)
{
    EXPECT_EQ(api.make_receiverid(rec.get(), 0), example_texts::receiver_0);
    EXPECT_EQ(api.make_receiverid(rec.get(), 1), example_texts::receiver_1);
    EXPECT_EQ(api.make_receiverid(rec.get(), 2), example_texts::receiver_2);
    EXPECT_EQ(api.make_receiverid(rec.get(), 23), example_texts::receiver_23);
}

TEST_P(NodeApiBodies, ReceiverTarget)
{
    EXPECT_EQ(
        api.make_receiverid_target(&rec->senders[0]),
        R"({"caps":{},"description":"sender/0/description","device_id":"sender/0/device",)"
        R"("flow_id":"sender/0/flow","id":"sender/0/id","interface_bindings":["eth/0","eth/1"],)"
        R"("label":"sender/0/label","manifest_href":"http://192.0.2.10/sender/0/sdp",)"
        R"("subscription":{"active":false,"receiver_id":null},"tags":{},)"
        R"("transport":"sender/0/transport","version":"sender/0/version"})");
    EXPECT_EQ(api.make_receiverid_target(&rec->senders[1]),
              R"({"caps":{},"description":"sender/1/description","device_id":"sender/1/device",)"
              R"("flow_id":"sender/1/flow","id":"sender/1/id","interface_bindings":["eth/1"],)"
              R"("label":"sender/1/label","manifest_href":"http://192.0.2.10/sender/1/sdp",)"
              R"("subscription":{"active":true,"receiver_id":"sender/1/peer"},"tags":{},)"
              R"("transport":"sender/1/transport","version":"sender/1/version"})");
    EXPECT_EQ(api.make_receiverid_target(&rec->senders[3]),
              R"({"caps":{},"description":"sender/3/description","device_id":null,)"
              R"("flow_id":null,"id":null,"interface_bindings":[],"label":"sender/3/label",)"
              R"("manifest_href":"http://192.0.2.10/sender/3/sdp","subscription":{},"tags":{},)"
              R"("transport":"sender/3/transport","version":"sender/3/version"})");
}

TEST(NodeApi, NeverWritesIntoTheRecord)
{
    const auto rec = example_node();
    const auto before = std::make_unique<NMOS_IS04_ST>();
    std::memcpy(before.get(), rec.get(), sizeof *rec);
    all_node_bodies(rec.get());
    EXPECT_TRUE(same_bytes(*rec, *before));
}

TEST(NodeApi, GivesTheSameTextsAgainAndFromAnyObject)
{
    const auto rec = example_node();
    EXPECT_EQ(all_node_bodies(rec.get()), all_node_bodies(rec.get()));
}

TEST(NodeApi, KnowsOnlyCompactJson)
{
    const auto rec = empty_node();
    EXPECT_EQ(NodeApi().make_self(rec.get()),
              R"({"api":{"versions":[]},"caps":{},"clocks":[],"description":"","hostname":"",)"
              R"("href":"","id":"","interfaces":[],"label":"","services":[],"tags":{},)"
              R"("version":""})");
    EXPECT_EQ(NodeApi().make_sources(rec.get()), "[]");
    EXPECT_EQ(NodeApi().make_flows(rec.get()), "[]");
    EXPECT_EQ(NodeApi().make_devices(rec.get(), 0, 0, 0), "[]");
    EXPECT_EQ(NodeApi().make_senders(rec.get(), 1), "[]");
    EXPECT_EQ(NodeApi().make_receivers(rec.get(), 0, 2), "[]");
}

// --- Slashes -------------------------------------------------------------------------------------

class NodeApiSlashes : public ::testing::TestWithParam<LabelledOperation>
{};

const LabelledOperation labelled_operations[] = {
    {"make_self", true, [](NMOS_IS04_ST* rec) { return NodeApi().make_self(rec); }},
    {"make_sources", true, [](NMOS_IS04_ST* rec) { return NodeApi().make_sources(rec); }},
    {"make_sourceid", false, [](NMOS_IS04_ST* rec) { return NodeApi().make_sourceid(rec, 0); }},
    {"make_flows", true, [](NMOS_IS04_ST* rec) { return NodeApi().make_flows(rec); }},
    {"make_flowid", true, [](NMOS_IS04_ST* rec) { return NodeApi().make_flowid(rec, 0); }},
    {"make_devices", true, [](NMOS_IS04_ST* rec) { return NodeApi().make_devices(rec, 0, 0, 0); }},
    {"make_deviceid", true,
     [](NMOS_IS04_ST* rec) { return NodeApi().make_deviceid(rec, 0, 0, 0, 0); }},
    {"make_senders", true, [](NMOS_IS04_ST* rec) { return NodeApi().make_senders(rec, 0); }},
    {"make_senderid", true, [](NMOS_IS04_ST* rec) { return NodeApi().make_senderid(rec, 0); }},
    {"make_receivers", true, [](NMOS_IS04_ST* rec) { return NodeApi().make_receivers(rec, 0, 0); }},
    {"make_receiverid", true, [](NMOS_IS04_ST* rec) { return NodeApi().make_receiverid(rec, 0); }},
    {"make_receiverid_target", true,
     [](NMOS_IS04_ST* rec) { return NodeApi().make_receiverid_target(&rec->senders[0]); }},
};

INSTANTIATE_TEST_SUITE_P(Each, NodeApiSlashes, ::testing::ValuesIn(labelled_operations),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(NodeApiSlashes, AreWrittenAsTheOperationSays)
{
    expect_slashes(GetParam());
}

TEST_P(NodeApiSlashes, BehindBackslashesLoseOnlyTheirOwnEscape)
{
    expect_slashes_behind_backslashes(GetParam());
}

// --- Node ----------------------------------------------------------------------------------------

TEST(NodeApiSelf, HasTheFirstEndpointAlone)
{
    const auto rec = example_node();
    for (const int count : {1, 2, 3, 26}) {
        SCOPED_TRACE(count);
        rec->endpoints_count = count;
        EXPECT_THAT(NodeApi().make_self(rec.get()),
                    StartsWith(R"({"api":{"endpoints":[{"host":"192.0.2.10","port":3212,)"
                               R"("protocol":"http"}],"versions":["v1.1/","v1.2/"]},"caps":{},)"));
    }
}

TEST(NodeApiSelf, HasNoEndpointsMemberWithoutEndpoints)
{
    const auto rec = example_node();
    for (const int count : no_entries) {
        SCOPED_TRACE(count);
        rec->endpoints_count = count;
        EXPECT_THAT(NodeApi().make_self(rec.get()),
                    StartsWith(R"({"api":{"versions":["v1.1/","v1.2/"]},"caps":{},)"));
    }
}

TEST(NodeApiSelf, HasEmptyServicesOnce)
{
    const auto rec = example_node();
    const std::string body = NodeApi().make_self(rec.get());
    const std::size_t first = body.find(R"("services":[])");
    ASSERT_NE(first, body.npos);
    EXPECT_EQ(body.find("services", first + 10), body.npos);
}

TEST(NodeApiSelf, HasPtpMembersOnlyInAClockThatIsExactlyPtp)
{
    const auto rec = empty_node();
    rec->clocks_count = 1;
    set_text(rec->clocks[0].name, "clk0");
    rec->clocks[0].locked = 1;

    set_text(rec->clocks[0].ref_type, "ptp");
    EXPECT_THAT(NodeApi().make_self(rec.get()),
                HasSubstr(R"("clocks":[{"gmid":"","locked":true,"name":"clk0",)"
                          R"("ref_type":"ptp","traceable":false,"version":""}],)"));
    for (const std::string ref_type : {"", "p", "pt", "pt ", "PTP", "Ptp", "ptP", "ptp1", "ptp ",
                                       " ptp", "ptpptp", "internal"}) {
        set_text(rec->clocks[0].ref_type, ref_type);
        EXPECT_THAT(NodeApi().make_self(rec.get()),
                    HasSubstr(R"("clocks":[{"name":"clk0","ref_type":")" + ref_type + R"("}],)"));
    }
}

TEST(NodeApiSelf, HasNullAsChassisOnlyForExactlyNull)
{
    const auto rec = empty_node();
    rec->interfaces_count = 1;
    set_text(rec->interfaces[0].chassis_id, "null");
    set_text(rec->interfaces[0].port_id, "null");
    set_text(rec->interfaces[0].name, "null");
    EXPECT_THAT(NodeApi().make_self(rec.get()),
                HasSubstr(R"("interfaces":[{"chassis_id":null,"name":"null","port_id":"null"}],)"));
    for (const std::string chassis :
         {"", "n", "nul", "Null", "NULL", "nulL", "null ", " null", "nulll", "nullnull"}) {
        set_text(rec->interfaces[0].chassis_id, chassis);
        EXPECT_THAT(NodeApi().make_self(rec.get()),
                    HasSubstr(R"([{"chassis_id":")" + chassis + R"(","name")"));
    }
}

TEST(NodeApiSelf, HasTrueForEveryFlagButZero)
{
    const auto rec = empty_node();
    rec->clocks_count = 1;
    set_text(rec->clocks[0].ref_type, "ptp");
    for (int flag = 1; flag <= 255; ++flag) {
        rec->clocks[0].locked = static_cast<std::uint8_t>(flag);
        rec->clocks[0].traceable = 0;
        EXPECT_THAT(NodeApi().make_self(rec.get()),
                    AllOf(HasSubstr(R"("locked":true,)"), HasSubstr(R"("traceable":false,)")));
        rec->clocks[0].locked = 0;
        rec->clocks[0].traceable = static_cast<std::uint8_t>(flag);
        EXPECT_THAT(NodeApi().make_self(rec.get()),
                    AllOf(HasSubstr(R"("locked":false,)"), HasSubstr(R"("traceable":true,)")));
    }
}

TEST(NodeApiSelf, ShowsAFullRecord)
{
    const auto rec = empty_node();
    rec->versions_count = 16;
    rec->clocks_count = 6;
    rec->interfaces_count = 12;
    for (int i = 0; i < 16; ++i)
        set_text(rec->versions[i], "v" + std::to_string(i));
    for (int i = 0; i < 6; ++i)
        set_text(rec->clocks[i].name, "c" + std::to_string(i));
    for (int i = 0; i < 12; ++i)
        set_text(rec->interfaces[i].name, "i" + std::to_string(i));
    EXPECT_EQ(NodeApi().make_self(rec.get()),
              R"({"api":{"versions":["v0","v1","v2","v3","v4","v5","v6","v7","v8","v9","v10",)"
              R"("v11","v12","v13","v14","v15"]},"caps":{},)"
              R"("clocks":[{"name":"c0","ref_type":""},{"name":"c1","ref_type":""},)"
              R"({"name":"c2","ref_type":""},{"name":"c3","ref_type":""},)"
              R"({"name":"c4","ref_type":""},{"name":"c5","ref_type":""}],)"
              R"("description":"","hostname":"","href":"","id":"",)"
              R"("interfaces":[{"chassis_id":"","name":"i0","port_id":""},)"
              R"({"chassis_id":"","name":"i1","port_id":""},)"
              R"({"chassis_id":"","name":"i2","port_id":""},)"
              R"({"chassis_id":"","name":"i3","port_id":""},)"
              R"({"chassis_id":"","name":"i4","port_id":""},)"
              R"({"chassis_id":"","name":"i5","port_id":""},)"
              R"({"chassis_id":"","name":"i6","port_id":""},)"
              R"({"chassis_id":"","name":"i7","port_id":""},)"
              R"({"chassis_id":"","name":"i8","port_id":""},)"
              R"({"chassis_id":"","name":"i9","port_id":""},)"
              R"({"chassis_id":"","name":"i10","port_id":""},)"
              R"({"chassis_id":"","name":"i11","port_id":""}],)"
              R"("label":"","services":[],"tags":{},"version":""})");
}

// --- Sources and flows ---------------------------------------------------------------------------

TEST(NodeApiSources, HaveChannelsInEntryOneAlone)
{
    const auto rec = empty_node();
    rec->sources_count = 4;
    for (auto& source : rec->sources)
        set_text(source.format, "urn:x-nmos:format:audio");
    EXPECT_THAT(NodeApi().make_sourceid(rec.get(), 1),
                StartsWith(R"({"caps":{},"channels":[{"label":""}],"clock_name":)"));
    for (const int index : {0, 2, 3})
        EXPECT_THAT(NodeApi().make_sourceid(rec.get(), index),
                    StartsWith(R"({"caps":{},"clock_name":)"))
            << index;
}

TEST(NodeApiSources, AreAsManyAsTheCountSays)
{
    using namespace example_texts;
    const auto rec = example_node();
    rec->sources_count = 1;
    EXPECT_EQ(NodeApi().make_sources(rec.get()), "[" + source_0_plain + "]");
    rec->sources_count = 2;
    EXPECT_EQ(NodeApi().make_sources(rec.get()), "[" + source_0_plain + "," + source_1_plain + "]");
    rec->sources_count = 3;
    EXPECT_EQ(NodeApi().make_sources(rec.get()),
              "[" + source_0_plain + "," + source_1_plain + "," + source_2_plain + "]");
}

TEST(NodeApiFlows, AreAsManyAsTheCountSays)
{
    using namespace example_texts;
    const auto rec = example_node();
    rec->flows_count = 1;
    EXPECT_EQ(NodeApi().make_flows(rec.get()), "[" + flow_0_plain + "]");
    rec->flows_count = 3;
    EXPECT_EQ(NodeApi().make_flows(rec.get()),
              "[" + flow_0_plain + "," + flow_1_plain + "," + flow_2_plain + "]");
}

TEST(NodeApiFlows, TakeTheDenominatorOfTheSampleRateFromNowhere)
{
    const auto rec = example_node();
    rec->flows[1].grain_rate_denominator = 7;
    EXPECT_THAT(NodeApi().make_flowid(rec.get(), 1),
                AllOf(HasSubstr(R"("sample_rate":{"denominator":1,"numerator":48000})"),
                      HasSubstr(R"("grain_rate":{"denominator":7,"numerator":6000})"),
                      Not(HasSubstr("components"))));
}

// --- Subscriptions and nulls ---------------------------------------------------------------------

constexpr const char* not_quite_null[] = {"",     "n",     "nul",   "Null",  "NULL",
                                          "nulL", "null ", " null", "nulll", "nullnull"};

TEST(NodeApiSubscription, OfAReceiverIsItsFirstEntry)
{
    const auto rec = empty_node();
    RECEIVER_IS04_ST& receiver = rec->receivers[5];
    for (auto& entry : receiver.subscription) {
        set_text(entry.peer_id, "later");
        entry.active = 1;
    }
    set_text(receiver.subscription[0].peer_id, "null");
    receiver.subscription[0].active = 0;
    for (const int count : {1, 2, 10}) {
        SCOPED_TRACE(count);
        receiver.subscription_count = count;
        EXPECT_THAT(NodeApi().make_receiverid(rec.get(), 5),
                    HasSubstr(R"("subscription":{"active":false,"sender_id":null},)"));
    }
    set_text(receiver.subscription[0].peer_id, "first");
    for (int active = 1; active <= 255; ++active) {
        receiver.subscription[0].active = static_cast<std::uint8_t>(active);
        EXPECT_THAT(NodeApi().make_receiverid(rec.get(), 5),
                    HasSubstr(R"("subscription":{"active":true,"sender_id":"first"},)"));
    }
}

TEST(NodeApiSubscription, OfASenderAndATargetIsItsFirstEntry)
{
    const auto rec = empty_node();
    rec->senders_count = 1;
    SENDER_IS04_ST& sender = rec->senders[0];
    for (auto& entry : sender.subscription) {
        set_text(entry.peer_id, "later");
        entry.active = 1;
    }
    set_text(sender.subscription[0].peer_id, "null");
    sender.subscription[0].active = 0;
    for (const int count : {1, 2, 9}) {
        SCOPED_TRACE(count);
        sender.subscription_count = count;
        const auto first = HasSubstr(R"("subscription":{"active":false,"receiver_id":null},)");
        EXPECT_THAT(NodeApi().make_senderid(rec.get(), 0), first);
        EXPECT_THAT(NodeApi().make_receiverid_target(&sender), first);
    }
    set_text(sender.subscription[0].peer_id, "first");
    for (int active = 1; active <= 255; ++active) {
        sender.subscription[0].active = static_cast<std::uint8_t>(active);
        const auto first = HasSubstr(R"("subscription":{"active":true,"receiver_id":"first"},)");
        EXPECT_THAT(NodeApi().make_senderid(rec.get(), 0), first);
        EXPECT_THAT(NodeApi().make_receiverid_target(&sender), first);
    }
}

TEST(NodeApiSubscription, HasNullOnlyForExactlyNull)
{
    const auto rec = empty_node();
    rec->senders_count = 1;
    rec->senders[0].subscription_count = 1;
    rec->receivers[0].subscription_count = 1;
    for (const std::string peer : not_quite_null) {
        SCOPED_TRACE(peer);
        set_text(rec->senders[0].subscription[0].peer_id, peer);
        set_text(rec->receivers[0].subscription[0].peer_id, peer);
        EXPECT_THAT(NodeApi().make_senderid(rec.get(), 0),
                    HasSubstr(R"({"active":false,"receiver_id":")" + peer + R"("},)"));
        EXPECT_THAT(NodeApi().make_receiverid_target(&rec->senders[0]),
                    HasSubstr(R"({"active":false,"receiver_id":")" + peer + R"("},)"));
        EXPECT_THAT(NodeApi().make_receiverid(rec.get(), 0),
                    HasSubstr(R"({"active":false,"sender_id":")" + peer + R"("},)"));
    }
}

TEST(NodeApiTarget, HasNullOnlyForExactlyNullAndEachFieldAlone)
{
    const auto sender = std::make_unique<SENDER_IS04_ST>();
    set_text(sender->id, "null");
    EXPECT_THAT(NodeApi().make_receiverid_target(sender.get()),
                HasSubstr(R"("device_id":"","flow_id":"","id":null,)"));
    set_text(sender->id, "");
    set_text(sender->flow_id, "null");
    EXPECT_THAT(NodeApi().make_receiverid_target(sender.get()),
                HasSubstr(R"("device_id":"","flow_id":null,"id":"",)"));
    set_text(sender->flow_id, "");
    set_text(sender->device_id, "null");
    EXPECT_THAT(NodeApi().make_receiverid_target(sender.get()),
                HasSubstr(R"("device_id":null,"flow_id":"","id":"",)"));
    const auto all_three = [](const std::string& text) {
        return R"("device_id":")" + text + R"(","flow_id":")" + text + R"(","id":")" + text + "\",";
    };
    for (const std::string text : not_quite_null) {
        SCOPED_TRACE(text);
        set_text(sender->id, text);
        set_text(sender->flow_id, text);
        set_text(sender->device_id, text);
        EXPECT_THAT(NodeApi().make_receiverid_target(sender.get()), HasSubstr(all_three(text)));
    }
}

TEST(NodeApiTarget, HasNullInNoOtherText)
{
    const auto sender = std::make_unique<SENDER_IS04_ST>();
    set_text(sender->version, "null");
    set_text(sender->label, "null");
    set_text(sender->description, "null");
    set_text(sender->transport, "null");
    set_text(sender->manifest_href, "null");
    sender->interface_bindings_count = 1;
    set_text(sender->interface_bindings[0], "null");
    EXPECT_EQ(NodeApi().make_receiverid_target(sender.get()),
              R"({"caps":{},"description":"null","device_id":"","flow_id":"","id":"",)"
              R"("interface_bindings":["null"],"label":"null","manifest_href":"null",)"
              R"("subscription":{},"tags":{},"transport":"null","version":"null"})");
}

TEST(NodeApiBodiesWithNullTexts, HaveNullOnlyWhereItMayBe)
{
    const auto rec = empty_node();
    set_text(rec->id, "null");
    set_text(rec->hostname, "null");
    rec->sources_count = 1;
    set_text(rec->sources[0].device_id, "null");
    set_text(rec->sources[0].clock_name, "null");
    rec->receivers_count = 1;
    set_text(rec->receivers[0].device_id, "null");
    set_text(rec->devices[0].node_id, "null");
    EXPECT_THAT(NodeApi().make_self(rec.get()),
                AllOf(HasSubstr(R"("id":"null")"), HasSubstr(R"("hostname":"null")")));
    EXPECT_THAT(NodeApi().make_sources(rec.get()),
                AllOf(HasSubstr(R"("device_id":"null")"), HasSubstr(R"("clock_name":"null")")));
    EXPECT_THAT(NodeApi().make_receiverid(rec.get(), 0), HasSubstr(R"("device_id":"null")"));
    EXPECT_THAT(NodeApi().make_deviceid(rec.get(), 0, 0, 0, 0), HasSubstr(R"("node_id":"null")"));
}

// --- Full arrays in resources --------------------------------------------------------------------

TEST(NodeApiFullArrays, AreWrittenInSlotOrder)
{
    const auto rec = empty_node();
    SENDER_IS04_ST& sender = rec->senders[2];
    RECEIVER_IS04_ST& receiver = rec->receivers[2];
    rec->senders_count = 6;
    sender.interface_bindings_count = receiver.interface_bindings_count = 10;
    for (int i = 0; i < 10; ++i) {
        set_text(sender.interface_bindings[i], "eth" + std::to_string(i));
        set_text(receiver.interface_bindings[i], "eth" + std::to_string(i));
    }
    receiver.media_types_count = 12;
    for (int i = 0; i < 12; ++i)
        set_text(receiver.media_types[i], "type/" + std::to_string(i));
    rec->devices[2].controls_count = 8;
    for (int i = 0; i < 8; ++i)
        set_text(rec->devices[2].controls[i].href, "c" + std::to_string(i));

    const auto bindings = HasSubstr(R"("interface_bindings":["eth0","eth1","eth2","eth3","eth4",)"
                                    R"("eth5","eth6","eth7","eth8","eth9"],)");
    EXPECT_THAT(NodeApi().make_senderid(rec.get(), 2), bindings);
    EXPECT_THAT(NodeApi().make_receiverid_target(&sender), bindings);
    EXPECT_THAT(NodeApi().make_receiverid(rec.get(), 2),
                AllOf(bindings, StartsWith(R"({"caps":{"media_types":["type/0","type/1","type/2",)"
                                           R"("type/3","type/4","type/5","type/6","type/7",)"
                                           R"("type/8","type/9","type/10","type/11"]},)")));
    EXPECT_THAT(NodeApi().make_deviceid(rec.get(), 2, 0, 0, 0),
                StartsWith(R"({"controls":[{"href":"c0","type":""},{"href":"c1","type":""},)"
                           R"({"href":"c2","type":""},{"href":"c3","type":""},)"
                           R"({"href":"c4","type":""},{"href":"c5","type":""},)"
                           R"({"href":"c6","type":""},{"href":"c7","type":""}],)"));
}

} // namespace
