// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/RegistrationApi.h"

#include <climits>
#include <cstring>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nmos_instrument/NodeApi.h"
#include "support/body_parts.h"
#include "support/example_node.h"
#include "support/example_node_texts.h"
#include "support/node_operations.h"
#include "support/same_bytes.h"
#include "support/set_text.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

/// A resource in its envelope.
std::string registered(const std::string& type, const std::string& resource)
{
    return R"({"data":)" + resource + R"(,"type":")" + type + R"("})";
}

// --- Listings and heartbeat ---------------------------------------------------------------------

TEST(RegistrationApiListings, VersionIsOneEntry)
{
    EXPECT_EQ(RegistrationApi().make_version(), "[\n    \"v1.2/\"\n]\n");
}

TEST(RegistrationApiListings, BaseNamesResourceAndHealthWithoutReadingTheRecord)
{
    EXPECT_EQ(RegistrationApi().make_base(nullptr), "[\n"
                                                    "    \"resource/\",\n"
                                                    "    \"health/\"\n"
                                                    "]\n");
    EXPECT_EQ(RegistrationApi().make_base(example_node().get()),
              RegistrationApi().make_base(nullptr));
}

TEST(RegistrationApiHealth, IsEmptyWithoutReadingTheRecord)
{
    EXPECT_EQ(RegistrationApi().make_health(nullptr), "");
    EXPECT_EQ(RegistrationApi().make_health(example_node().get()), "");
}

// --- Whole bodies -------------------------------------------------------------------------------

/// The parameter is what stands wherever a body must not look.
class RegistrationApiBodies : public ::testing::TestWithParam<int>
{
protected:
    RegistrationApi api;
    std::unique_ptr<NMOS_IS04_ST> rec = example_node(static_cast<unsigned char>(GetParam()));
};

INSTANTIATE_TEST_SUITE_P(Background, RegistrationApiBodies, ::testing::Values(0x00, 0x2F, 0xFF));

TEST_P(RegistrationApiBodies, Node)
{
    EXPECT_EQ(api.make_resource_node(rec.get()),
              R"({"data":{"api":{"endpoints":[{"host":"192.0.2.10","port":3212,)"
              R"("protocol":"http"}],"versions":["v1.1/","v1.2/"]},"caps":{},)"
              R"("clocks":[{"gmid":"00-00-5e-ff-fe-00-53-01","locked":false,"name":"clk/0",)"
              R"("ref_type":"ptp","traceable":true,"version":"IEEE1588-2008"},)"
              R"({"name":"clk/1","ref_type":"internal"},)"
              R"({"gmid":"gmid/2","locked":true,"name":"clk/2","ref_type":"ptp",)"
              R"("traceable":false,"version":"profile/2"}],)"
              R"("description":"node/description","hostname":"node/hostname",)"
              R"("href":"http://192.0.2.10:3212/","id":"node/id",)"
              R"("interfaces":[{"chassis_id":null,"name":"eth/0","port_id":"port/0"},)"
              R"({"chassis_id":"chassis/1","name":"eth/1","port_id":"port/1"}],)"
              R"("label":"node/label","services":[],"tags":{},"version":"1700000123:25"},)"
              R"("type":"node"})");
}

TEST_P(RegistrationApiBodies, DevicesAreAListWithoutTagsAndEnvelopes)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_resource_devices(rec.get(), 0, 2, 1),
              "[" + device_0_without_tags + "," + device_1_without_tags + "]");
}

TEST_P(RegistrationApiBodies, DeviceById)
{
    EXPECT_EQ(api.make_resource_deviceid(rec.get(), 0, 0, 2, 1),
              registered("device", example_texts::device_0));
    EXPECT_EQ(api.make_resource_deviceid(rec.get(), 1, 0, 2, 1),
              R"({"data":{"controls":[],"description":"device/1/description","id":"device/1/id",)"
              R"("label":"device/1/label","node_id":"device/1/node","receivers":[],"senders":[],)"
              R"("tags":{},"type":"device/1/type","version":"device/1/version"},)"
              R"("type":"device"})");
}

TEST_P(RegistrationApiBodies, Sources)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_resource_sources(rec.get()),
              "[" + registered("source", source_0_escaped) + "," +
                  registered("source", source_1_escaped) + "," +
                  registered("source", source_2_escaped) + "," +
                  registered("source", source_3_escaped) + "]");
}

TEST_P(RegistrationApiBodies, SourceById)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_resource_sourceid(rec.get(), 0), registered("source", source_0_escaped));
    EXPECT_EQ(api.make_resource_sourceid(rec.get(), 1),
              R"({"data":{"caps":{},"channels":[{"label":""}],"clock_name":"source\/1\/clock",)"
              R"("description":"source\/1\/description","device_id":"source\/1\/device",)"
              R"("format":"urn:x-nmos:format:video","id":"source\/1\/id",)"
              R"("label":"source\/1\/label","parents":[],"tags":{},)"
              R"("version":"source\/1\/version"},"type":"source"})");
    EXPECT_EQ(api.make_resource_sourceid(rec.get(), 2), registered("source", source_2_escaped));
    EXPECT_EQ(api.make_resource_sourceid(rec.get(), 3), registered("source", source_3_escaped));
}

TEST_P(RegistrationApiBodies, Flows)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_resource_flows(rec.get()), "[" + registered("flow", flow_0_escaped) + "," +
                                                      registered("flow", flow_1_escaped) + "," +
                                                      registered("flow", flow_2_escaped) + "," +
                                                      registered("flow", flow_3_escaped) + "]");
}

TEST_P(RegistrationApiBodies, FlowById)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_resource_flowid(rec.get(), 0), registered("flow", flow_0_escaped));
    EXPECT_EQ(api.make_resource_flowid(rec.get(), 1), registered("flow", flow_1_escaped));
    EXPECT_EQ(api.make_resource_flowid(rec.get(), 2),
              R"({"data":{"description":"flow\/2\/description","device_id":"flow\/2\/device",)"
              R"("format":"urn:x-nmos:format:video","id":"flow\/2\/id","label":"flow\/2\/label",)"
              R"("media_type":"video\/raw","parents":[],"source_id":"flow\/2\/source","tags":{},)"
              R"("version":"flow\/2\/version"},"type":"flow"})");
    EXPECT_EQ(api.make_resource_flowid(rec.get(), 3), registered("flow", flow_3_escaped));
}

TEST_P(RegistrationApiBodies, Senders)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_resource_senders(rec.get()),
              "[" + registered("sender", sender_0) + "," + registered("sender", sender_1) + "," +
                  registered("sender", sender_2) + "," + registered("sender", sender_3) + "," +
                  registered("sender", sender_4) + "," + registered("sender", sender_5) + "]");
}

TEST_P(RegistrationApiBodies, SenderById)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_resource_senderid(rec.get(), 0), registered("sender", sender_0));
    EXPECT_EQ(api.make_resource_senderid(rec.get(), 1), registered("sender", sender_1));
    EXPECT_EQ(api.make_resource_senderid(rec.get(), 2),
              R"({"data":{"description":"sender/2/description","device_id":"sender/2/device",)"
              R"("flow_id":"sender/2/flow","id":"sender/2/id","interface_bindings":[],)"
              R"("label":"sender/2/label","manifest_href":"http://192.0.2.10/sender/2/sdp",)"
              R"("subscription":{},"tags":{},"transport":"sender/2/transport",)"
              R"("version":"sender/2/version"},"type":"sender"})");
    EXPECT_EQ(api.make_resource_senderid(rec.get(), 3), registered("sender", sender_3));
    EXPECT_EQ(api.make_resource_senderid(rec.get(), 4), registered("sender", sender_4));
    EXPECT_EQ(api.make_resource_senderid(rec.get(), 5), registered("sender", sender_5));
}

TEST_P(RegistrationApiBodies, Receivers)
{
    using namespace example_texts;
    rec->receivers_count = 3;
    EXPECT_EQ(api.make_resource_receivers(rec.get()),
              "[" + registered("receiver", receiver_0) + "," + registered("receiver", receiver_1) +
                  "," + registered("receiver", receiver_2) + "]");
}

TEST_P(RegistrationApiBodies, ReceiverById)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_resource_receiverid(rec.get(), 0), registered("receiver", receiver_0));
    EXPECT_EQ(api.make_resource_receiverid(rec.get(), 1), registered("receiver", receiver_1));
    EXPECT_EQ(api.make_resource_receiverid(rec.get(), 2),
              R"({"data":{"caps":{"media_types":[]},"description":"receiver/2/description",)"
              R"("device_id":"receiver/2/device","format":"receiver/2/format",)"
              R"("id":"receiver/2/id","interface_bindings":[],"label":"receiver/2/label",)"
              R"("subscription":{},"tags":{},"transport":"receiver/2/transport",)"
              R"("version":"receiver/2/version"},"type":"receiver"})");
    EXPECT_EQ(api.make_resource_receiverid(rec.get(), 23), registered("receiver", receiver_23));
}

TEST(RegistrationApi, OnlyTheNodeBodyWritesIntoTheRecord)
{
    const auto rec = example_node();
    const auto before = std::make_unique<NMOS_IS04_ST>();
    std::memcpy(before.get(), rec.get(), sizeof *rec);

    RegistrationApi api;
    api.make_version();
    api.make_base(rec.get());
    api.make_health(rec.get());
    api.make_resource_devices(rec.get(), 0, 0, 0);
    api.make_resource_sources(rec.get());
    api.make_resource_flows(rec.get());
    api.make_resource_senders(rec.get());
    api.make_resource_receivers(rec.get());
    for (int i = 0; i < 4; ++i) {
        api.make_resource_deviceid(rec.get(), i, 0, 0, 0);
        api.make_resource_sourceid(rec.get(), i);
        api.make_resource_flowid(rec.get(), i);
        api.make_resource_senderid(rec.get(), i);
        api.make_resource_receiverid(rec.get(), i);
    }
    EXPECT_TRUE(same_bytes(*rec, *before));

    api.make_resource_node(rec.get());
    EXPECT_FALSE(same_bytes(*rec, *before));
}

// --- Slashes ------------------------------------------------------------------------------------

class RegistrationApiSlashes : public ::testing::TestWithParam<LabelledOperation>
{};

const LabelledOperation labelled_operations[] = {
    {"make_resource_node", true,
     [](NMOS_IS04_ST* rec) { return RegistrationApi().make_resource_node(rec); }},
    {"make_resource_devices", true,
     [](NMOS_IS04_ST* rec) { return RegistrationApi().make_resource_devices(rec, 0, 0, 0); }},
    {"make_resource_deviceid", true,
     [](NMOS_IS04_ST* rec) { return RegistrationApi().make_resource_deviceid(rec, 0, 0, 0, 0); }},
    {"make_resource_sources", false,
     [](NMOS_IS04_ST* rec) { return RegistrationApi().make_resource_sources(rec); }},
    {"make_resource_sourceid", false,
     [](NMOS_IS04_ST* rec) { return RegistrationApi().make_resource_sourceid(rec, 0); }},
    {"make_resource_flows", false,
     [](NMOS_IS04_ST* rec) { return RegistrationApi().make_resource_flows(rec); }},
    {"make_resource_flowid", false,
     [](NMOS_IS04_ST* rec) { return RegistrationApi().make_resource_flowid(rec, 0); }},
    {"make_resource_senders", true,
     [](NMOS_IS04_ST* rec) { return RegistrationApi().make_resource_senders(rec); }},
    {"make_resource_senderid", true,
     [](NMOS_IS04_ST* rec) { return RegistrationApi().make_resource_senderid(rec, 0); }},
    {"make_resource_receivers", true,
     [](NMOS_IS04_ST* rec) { return RegistrationApi().make_resource_receivers(rec); }},
    {"make_resource_receiverid", true,
     [](NMOS_IS04_ST* rec) { return RegistrationApi().make_resource_receiverid(rec, 0); }},
};

INSTANTIATE_TEST_SUITE_P(Each, RegistrationApiSlashes, ::testing::ValuesIn(labelled_operations),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(RegistrationApiSlashes, AreWrittenAsTheOperationSays)
{
    expect_slashes(GetParam());
}

TEST_P(RegistrationApiSlashes, BehindBackslashesLoseOnlyTheirOwnEscape)
{
    expect_slashes_behind_backslashes(GetParam());
}

// --- Counts and indexes -------------------------------------------------------------------------

TEST(RegistrationApiCounts, OfZeroOrLessAreEmptyLists)
{
    RegistrationApi api;
    for (const int count : {0, -1, INT_MIN}) {
        SCOPED_TRACE(count);
        const auto rec = example_node();
        rec->sources_count = rec->flows_count = rec->devices_count = rec->senders_count =
            rec->receivers_count = count;
        EXPECT_EQ(api.make_resource_sources(rec.get()), "[]");
        EXPECT_EQ(api.make_resource_flows(rec.get()), "[]");
        EXPECT_EQ(api.make_resource_devices(rec.get(), 0, 2, 1), "[]");
        EXPECT_EQ(api.make_resource_senders(rec.get()), "[]");
        EXPECT_EQ(api.make_resource_receivers(rec.get()), "[]");
    }
}

TEST(RegistrationApiCounts, AboveTheCapacityAreTheCapacity)
{
    RegistrationApi api;
    for (const int more : {1, 1000, INT_MAX - 24}) {
        SCOPED_TRACE(more);
        const auto rec = example_node();
        rec->sources_count = 4 + more;
        EXPECT_EQ(api.make_resource_sources(rec.get()),
                  api.make_resource_sources(example_node().get()));
        rec->flows_count = 4 + more;
        EXPECT_EQ(api.make_resource_flows(rec.get()),
                  api.make_resource_flows(example_node().get()));
        rec->devices_count = 4 + more;
        EXPECT_THAT(ids_in(api.make_resource_devices(rec.get(), 0, 0, 0)),
                    ElementsAre("device/0/id", "device/1/id", "", ""));
        rec->senders_count = 6 + more;
        EXPECT_EQ(api.make_resource_senders(rec.get()),
                  api.make_resource_senders(example_node().get()));
        rec->receivers_count = 24 + more;
        EXPECT_EQ(api.make_resource_receivers(rec.get()),
                  api.make_resource_receivers(example_node().get()));
        EXPECT_EQ(ids_in(api.make_resource_receivers(rec.get())).size(), 24u);
    }
}

TEST(RegistrationApiCounts, InResourcesAreBounded)
{
    RegistrationApi api;
    const auto full = example_node(0x2F);
    DEVICE_IS04_ST& device = full->devices[3];
    SENDER_IS04_ST& sender = full->senders[5];
    RECEIVER_IS04_ST& receiver = full->receivers[23];
    device.receiver_ids_count = 24;
    device.sender_ids_count = 6;
    device.controls_count = 8;
    sender.interface_bindings_count = 10;
    sender.subscription_count = 9;
    receiver.interface_bindings_count = 10;
    receiver.subscription_count = 10;
    receiver.media_types_count = 12;
    const std::string device_body = api.make_resource_deviceid(full.get(), 3, 0, 2, 1);
    const std::string sender_body = api.make_resource_senderid(full.get(), 5);
    const std::string receiver_body = api.make_resource_receiverid(full.get(), 23);
    for (const int more : {1, 1000, INT_MAX - 24}) {
        SCOPED_TRACE(more);
        device.receiver_ids_count = 24 + more;
        device.sender_ids_count = 6 + more;
        device.controls_count = 8 + more;
        sender.interface_bindings_count = 10 + more;
        sender.subscription_count = 9 + more;
        receiver.interface_bindings_count = 10 + more;
        receiver.subscription_count = 10 + more;
        receiver.media_types_count = 12 + more;
        EXPECT_EQ(api.make_resource_deviceid(full.get(), 3, 0, 2, 1), device_body);
        EXPECT_EQ(api.make_resource_senderid(full.get(), 5), sender_body);
        EXPECT_EQ(api.make_resource_receiverid(full.get(), 23), receiver_body);
    }
}

TEST(RegistrationApiCounts, DoNotMatterToASingleResource)
{
    using namespace example_texts;
    RegistrationApi api;
    for (const int count : {0, -1, INT_MIN}) {
        SCOPED_TRACE(count);
        const auto rec = example_node();
        rec->sources_count = rec->flows_count = rec->devices_count = rec->senders_count =
            rec->receivers_count = count;
        EXPECT_EQ(api.make_resource_sourceid(rec.get(), 3), registered("source", source_3_escaped));
        EXPECT_EQ(api.make_resource_flowid(rec.get(), 3), registered("flow", flow_3_escaped));
        EXPECT_EQ(api.make_resource_deviceid(rec.get(), 1, 0, 2, 1),
                  registered("device", device_1));
        EXPECT_EQ(api.make_resource_senderid(rec.get(), 5), registered("sender", sender_5));
        EXPECT_EQ(api.make_resource_receiverid(rec.get(), 23), registered("receiver", receiver_23));
    }
}

const IndexedOperation indexed_operations[] = {
    {"make_resource_sourceid", 3,
     [](NMOS_IS04_ST* r, int i) { return RegistrationApi().make_resource_sourceid(r, i); }},
    {"make_resource_flowid", 3,
     [](NMOS_IS04_ST* r, int i) { return RegistrationApi().make_resource_flowid(r, i); }},
    {"make_resource_deviceid", 3,
     [](NMOS_IS04_ST* r, int i) {
         return RegistrationApi().make_resource_deviceid(r, i, 0, 0, 0);
     }},
    {"make_resource_senderid", 5,
     [](NMOS_IS04_ST* r, int i) { return RegistrationApi().make_resource_senderid(r, i); }},
    {"make_resource_receiverid", 23,
     [](NMOS_IS04_ST* r, int i) { return RegistrationApi().make_resource_receiverid(r, i); }},
};

TEST(RegistrationApiIndexes, OutsideTheArrayThrowWithOperationIndexAndRange)
{
    expect_indexes_outside_throw(indexed_operations);
}

TEST(RegistrationApiIndexes, ThatEndTheArrayAreFine)
{
    expect_first_and_last_index(indexed_operations, R"({"data":{)");
}

// --- Numbers ------------------------------------------------------------------------------------

TEST(RegistrationApiNumbers, AFlowNumberThatIsWrittenMustBeFinite)
{
    RegistrationApi api;
    for (const double value : not_finite) {
        SCOPED_TRACE(value);
        for (const auto number :
             {&FLOW_IS04_ST::frame_width, &FLOW_IS04_ST::frame_height, &FLOW_IS04_ST::bit_depth,
              &FLOW_IS04_ST::grain_rate_denominator, &FLOW_IS04_ST::grain_rate_numerator}) {
            const auto rec = example_node();
            rec->flows[0].*number = value;
            EXPECT_EQ(overflow_text([&] { api.make_resource_flowid(rec.get(), 0); }), "");
            EXPECT_EQ(overflow_text([&] { api.make_resource_flows(rec.get()); }), "");
        }
        for (const auto number :
             {&FLOW_IS04_ST::bit_depth, &FLOW_IS04_ST::grain_rate_denominator,
              &FLOW_IS04_ST::grain_rate_numerator, &FLOW_IS04_ST::sample_rate_numerator}) {
            const auto rec = example_node();
            rec->flows[1].*number = value;
            EXPECT_EQ(overflow_text([&] { api.make_resource_flowid(rec.get(), 1); }), "");
            EXPECT_EQ(overflow_text([&] { api.make_resource_flows(rec.get()); }), "");
        }
    }
}

TEST(RegistrationApiNumbers, APortThatIsNotFiniteThrowsWhenTheVersionsAreRewritten)
{
    for (const double port : not_finite) {
        SCOPED_TRACE(port);
        for (const int endpoint : {0, 2}) {
            SCOPED_TRACE(endpoint);
            const auto rec = example_node();
            rec->endpoints[endpoint].port = port;
            EXPECT_EQ(overflow_text([&] { RegistrationApi().make_resource_node(rec.get()); }), "");
            EXPECT_STREQ(rec->version, "1700000123:25");
            EXPECT_STREQ(rec->devices[1].version, "1700000123:25");
            EXPECT_STREQ(rec->receivers[23].version, "1700000123:25");
        }
    }
}

// --- Selectors ----------------------------------------------------------------------------------

TEST(RegistrationApiSelectors, DecideWhichIdsADeviceLists)
{
    RegistrationApi api;
    const auto rec = example_node();
    rec->devices_count = 1;
    const auto expect_lists = [&](int receiver_filter, int audio_group_filter, int sender_filter,
                                  const std::string& lists) {
        EXPECT_THAT(api.make_resource_devices(rec.get(), receiver_filter, audio_group_filter,
                                              sender_filter),
                    HasSubstr(lists + R"(,"type":"device/0/type")"));
        EXPECT_THAT(api.make_resource_deviceid(rec.get(), 0, receiver_filter, audio_group_filter,
                                               sender_filter),
                    HasSubstr(lists + R"(,"tags":{},"type":"device/0/type")"));
    };
    expect_lists(0, 0, 0,
                 R"("receivers":["r/0","r/1","r/2","r/3","r/4","r/8","r/12","r/16","r/20","r/21",)"
                 R"("r/22","r/23"],"senders":["s/0","s/4","s/5"])");
    expect_lists(0, 1, 1,
                 R"("receivers":["r/0","r/1","r/2","r/3","r/4","r/5","r/8","r/9","r/12","r/13",)"
                 R"("r/16","r/17","r/20","r/21","r/22","r/23"],)"
                 R"("senders":["s/0","s/1","s/2","s/3","s/4","s/5"])");
    expect_lists(1, 0, -1,
                 R"("receivers":["r/0","r/1","r/2","r/3"],)"
                 R"("senders":["s/0","s/1","s/2","s/3","s/4","s/5"])");
    expect_lists(-1, 2, 0,
                 R"("receivers":["r/0","r/1","r/2","r/3"],"senders":["s/0","s/4","s/5"])");
}

TEST(RegistrationApiSelectors, DoNotExistForSendersAndReceivers)
{
    const auto rec = empty_node();
    rec->senders_count = 6;
    rec->receivers_count = 24;
    EXPECT_EQ(ids_in(RegistrationApi().make_resource_senders(rec.get())).size(), 6u);
    EXPECT_EQ(ids_in(RegistrationApi().make_resource_receivers(rec.get())).size(), 24u);
}

// --- Node ---------------------------------------------------------------------------------------

TEST(RegistrationApiNode, TwiceWithDifferentTimesDiffersInTheVersionAlone)
{
    const auto rec = example_node();
    rec->version_seconds = 1000;
    std::string first = RegistrationApi().make_resource_node(rec.get());
    rec->version_seconds = 2000;
    const std::string second = RegistrationApi().make_resource_node(rec.get());
    EXPECT_NE(first, second);
    EXPECT_EQ(first.replace(first.find("1000:25"), 7, "2000:25"), second);

    EXPECT_STREQ(rec->version, "2000:25");
    EXPECT_STREQ(rec->devices[0].version, "2000:25");
    EXPECT_STREQ(rec->receivers[7].version, "2000:25");
    EXPECT_EQ(second, R"({"data":)" + NodeApi().make_self(rec.get()) + R"(,"type":"node"})");
}

TEST(RegistrationApiNode, HasTheFirstEndpointAloneOrNone)
{
    const auto rec = example_node();
    rec->endpoints_count = 26;
    EXPECT_THAT(RegistrationApi().make_resource_node(rec.get()),
                StartsWith(R"({"data":{"api":{"endpoints":[{"host":"192.0.2.10","port":3212,)"
                           R"("protocol":"http"}],"versions":["v1.1/","v1.2/"]},"caps":{},)"));
    for (const int count : {0, -1}) {
        SCOPED_TRACE(count);
        rec->endpoints_count = count;
        EXPECT_THAT(
            RegistrationApi().make_resource_node(rec.get()),
            StartsWith(R"({"data":{"api":{"versions":["v1.1/","v1.2/"]},"caps":{},"clocks":)"));
    }
}

} // namespace
