// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/RegistrationApi.h"

#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "body_parts.h"
#include "example_node.h"
#include "example_node_texts.h"
#include "nmos_instrument/NodeApi.h"
#include "set_text.h"

namespace {

using namespace std::string_literals;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr double nan_value = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double not_finite[] = {nan_value, -nan_value, infinity, -infinity};

std::string device_registration(const std::string& device)
{
    return R"({"data":)" + device + R"(,"type":"device"})";
}

std::string source_registration(const std::string& source)
{
    return R"({"data":)" + source + R"(,"type":"source"})";
}

std::string flow_registration(const std::string& flow)
{
    return R"({"data":)" + flow + R"(,"type":"flow"})";
}

std::string sender_registration(const std::string& sender)
{
    return R"({"data":)" + sender + R"(,"type":"sender"})";
}

std::string receiver_registration(const std::string& receiver)
{
    return R"({"data":)" + receiver + R"(,"type":"receiver"})";
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
              device_registration(example_texts::device_0));
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
              "[" + source_registration(source_0_escaped) + "," +
                  source_registration(source_1_escaped) + "," +
                  source_registration(source_2_escaped) + "," +
                  source_registration(source_3_escaped) + "]");
}

TEST_P(RegistrationApiBodies, SourceById)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_resource_sourceid(rec.get(), 0), source_registration(source_0_escaped));
    EXPECT_EQ(api.make_resource_sourceid(rec.get(), 1),
              R"({"data":{"caps":{},"channels":[{"label":""}],"clock_name":"source\/1\/clock",)"
              R"("description":"source\/1\/description","device_id":"source\/1\/device",)"
              R"("format":"urn:x-nmos:format:video","id":"source\/1\/id",)"
              R"("label":"source\/1\/label","parents":[],"tags":{},)"
              R"("version":"source\/1\/version"},"type":"source"})");
    EXPECT_EQ(api.make_resource_sourceid(rec.get(), 2), source_registration(source_2_escaped));
    EXPECT_EQ(api.make_resource_sourceid(rec.get(), 3), source_registration(source_3_escaped));
}

TEST_P(RegistrationApiBodies, Flows)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_resource_flows(rec.get()), "[" + flow_registration(flow_0_escaped) + "," +
                                                      flow_registration(flow_1_escaped) + "," +
                                                      flow_registration(flow_2_escaped) + "," +
                                                      flow_registration(flow_3_escaped) + "]");
}

TEST_P(RegistrationApiBodies, FlowById)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_resource_flowid(rec.get(), 0), flow_registration(flow_0_escaped));
    EXPECT_EQ(api.make_resource_flowid(rec.get(), 1), flow_registration(flow_1_escaped));
    EXPECT_EQ(api.make_resource_flowid(rec.get(), 2),
              R"({"data":{"description":"flow\/2\/description","device_id":"flow\/2\/device",)"
              R"("format":"urn:x-nmos:format:video","id":"flow\/2\/id","label":"flow\/2\/label",)"
              R"("media_type":"video\/raw","parents":[],"source_id":"flow\/2\/source","tags":{},)"
              R"("version":"flow\/2\/version"},"type":"flow"})");
    EXPECT_EQ(api.make_resource_flowid(rec.get(), 3), flow_registration(flow_3_escaped));
}

TEST_P(RegistrationApiBodies, Senders)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_resource_senders(rec.get()),
              "[" + sender_registration(sender_0) + "," + sender_registration(sender_1) + "," +
                  sender_registration(sender_2) + "," + sender_registration(sender_3) + "," +
                  sender_registration(sender_4) + "," + sender_registration(sender_5) + "]");
}

TEST_P(RegistrationApiBodies, SenderById)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_resource_senderid(rec.get(), 0), sender_registration(sender_0));
    EXPECT_EQ(api.make_resource_senderid(rec.get(), 1), sender_registration(sender_1));
    EXPECT_EQ(api.make_resource_senderid(rec.get(), 2),
              R"({"data":{"description":"sender/2/description","device_id":"sender/2/device",)"
              R"("flow_id":"sender/2/flow","id":"sender/2/id","interface_bindings":[],)"
              R"("label":"sender/2/label","manifest_href":"http://192.0.2.10/sender/2/sdp",)"
              R"("subscription":{},"tags":{},"transport":"sender/2/transport",)"
              R"("version":"sender/2/version"},"type":"sender"})");
    EXPECT_EQ(api.make_resource_senderid(rec.get(), 3), sender_registration(sender_3));
    EXPECT_EQ(api.make_resource_senderid(rec.get(), 4), sender_registration(sender_4));
    EXPECT_EQ(api.make_resource_senderid(rec.get(), 5), sender_registration(sender_5));
}

TEST_P(RegistrationApiBodies, Receivers)
{
    using namespace example_texts;
    rec->receivers_count = 3;
    EXPECT_EQ(api.make_resource_receivers(rec.get()),
              "[" + receiver_registration(receiver_0) + "," + receiver_registration(receiver_1) +
                  "," + receiver_registration(receiver_2) + "]");
}

TEST_P(RegistrationApiBodies, ReceiverById)
{
    using namespace example_texts;
    EXPECT_EQ(api.make_resource_receiverid(rec.get(), 0), receiver_registration(receiver_0));
    EXPECT_EQ(api.make_resource_receiverid(rec.get(), 1), receiver_registration(receiver_1));
    EXPECT_EQ(api.make_resource_receiverid(rec.get(), 2),
              R"({"data":{"caps":{"media_types":[]},"description":"receiver/2/description",)"
              R"("device_id":"receiver/2/device","format":"receiver/2/format",)"
              R"("id":"receiver/2/id","interface_bindings":[],"label":"receiver/2/label",)"
              R"("subscription":{},"tags":{},"transport":"receiver/2/transport",)"
              R"("version":"receiver/2/version"},"type":"receiver"})");
    EXPECT_EQ(api.make_resource_receiverid(rec.get(), 23), receiver_registration(receiver_23));
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
    EXPECT_EQ(std::memcmp(before.get(), rec.get(), sizeof *rec), 0);

    api.make_resource_node(rec.get());
    EXPECT_NE(std::memcmp(before.get(), rec.get(), sizeof *rec), 0);
}

// --- Slashes ------------------------------------------------------------------------------------

struct LabelledOperation
{
    const char* name;
    bool plain_slashes;
    std::string (*call)(NMOS_IS04_ST* rec);
};

void PrintTo(const LabelledOperation& operation, std::ostream* out)
{
    *out << operation.name;
}

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

std::unique_ptr<NMOS_IS04_ST> node_with_labels(std::string_view label)
{
    auto rec = empty_node();
    set_text(rec->label, label);
    set_text(rec->sources[0].label, label);
    set_text(rec->flows[0].label, label);
    set_text(rec->devices[0].label, label);
    set_text(rec->senders[0].label, label);
    set_text(rec->receivers[0].label, label);
    rec->sources_count = rec->flows_count = rec->devices_count = rec->senders_count =
        rec->receivers_count = 1;
    return rec;
}

TEST_P(RegistrationApiSlashes, AreWrittenAsTheOperationSays)
{
    const auto rec = node_with_labels("a/b//");
    EXPECT_THAT(
        GetParam().call(rec.get()),
        HasSubstr(GetParam().plain_slashes ? R"("label":"a/b//",)" : R"("label":"a\/b\/\/",)"));
}

TEST_P(RegistrationApiSlashes, BehindBackslashesLoseOnlyTheirOwnEscape)
{
    const auto rec = node_with_labels(R"(a\/b\\/c\)");
    EXPECT_THAT(GetParam().call(rec.get()),
                HasSubstr(GetParam().plain_slashes ? R"("label":"a\\/b\\\\/c\\",)"
                                                   : R"("label":"a\\\/b\\\\\/c\\",)"));
}

// --- Counts and indexes -------------------------------------------------------------------------

TEST(RegistrationApiCounts, OfZeroOrLessAreEmptyLists)
{
    RegistrationApi api;
    for (const int count : {0, -1, INT_MIN}) {
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
        const auto rec = example_node();
        rec->sources_count = rec->flows_count = rec->devices_count = rec->senders_count =
            rec->receivers_count = count;
        EXPECT_EQ(api.make_resource_sourceid(rec.get(), 3), source_registration(source_3_escaped));
        EXPECT_EQ(api.make_resource_flowid(rec.get(), 3), flow_registration(flow_3_escaped));
        EXPECT_EQ(api.make_resource_deviceid(rec.get(), 1, 0, 2, 1), device_registration(device_1));
        EXPECT_EQ(api.make_resource_senderid(rec.get(), 5), sender_registration(sender_5));
        EXPECT_EQ(api.make_resource_receiverid(rec.get(), 23), receiver_registration(receiver_23));
    }
}

struct IndexedOperation
{
    const char* name;
    int last;
    std::string (*call)(NMOS_IS04_ST* rec, int index);
};

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
    const auto rec = example_node();
    for (const auto& [name, last, call] : indexed_operations) {
        for (const int index : {INT_MIN, -1, last + 1, last + 100, INT_MAX}) {
            const std::string text = out_of_range_text([&] { call(rec.get(), index); });
            EXPECT_THAT(text, AllOf(HasSubstr(name), HasSubstr(std::to_string(index)),
                                    HasSubstr("0 to " + std::to_string(last))));
        }
    }
}

TEST(RegistrationApiIndexes, ThatEndTheArrayAreFine)
{
    const auto rec = example_node();
    for (const auto& [name, last, call] : indexed_operations) {
        EXPECT_THAT(call(rec.get(), 0), StartsWith(R"({"data":{)")) << name;
        EXPECT_THAT(call(rec.get(), last), StartsWith(R"({"data":{)")) << name;
    }
}

// --- Numbers ------------------------------------------------------------------------------------

TEST(RegistrationApiNumbers, AFlowNumberThatIsWrittenMustBeFinite)
{
    RegistrationApi api;
    for (const double value : not_finite) {
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
        for (const int endpoint : {0, 2}) {
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
        rec->endpoints_count = count;
        EXPECT_THAT(
            RegistrationApi().make_resource_node(rec.get()),
            StartsWith(R"({"data":{"api":{"versions":["v1.1/","v1.2/"]},"caps":{},"clocks":)"));
    }
}

// --- update_version -----------------------------------------------------------------------------

/// The whole field: text and zeros.
template <std::size_t N>
std::string whole(const char (&field)[N])
{
    return std::string(field, N);
}

std::string version_field(const std::string& text)
{
    return text + std::string(48 - text.size(), '\0');
}

TEST(RegistrationApiUpdateVersion, WritesZeroTime)
{
    const auto rec = example_node(0xFF);
    rec->version_seconds = 0;
    rec->version_nanoseconds = 0;
    RegistrationApi().update_version(rec.get());

    EXPECT_EQ(whole(rec->version), version_field("0:0"));
    EXPECT_EQ(whole(rec->devices[0].version), version_field("0:0"));
    EXPECT_EQ(whole(rec->devices[1].version), version_field("0:0"));
    for (const RECEIVER_IS04_ST& receiver : rec->receivers)
        EXPECT_EQ(whole(receiver.version), version_field("0:0"));
}

TEST(RegistrationApiUpdateVersion, ClearsTheRestOfTheField)
{
    const auto rec = example_node();
    fill_whole(rec->version, 'x');
    fill_whole(rec->devices[0].version, 'x');
    fill_whole(rec->receivers[0].version, 'x');
    rec->version_seconds = 1541234567;
    rec->version_nanoseconds = 25;
    RegistrationApi().update_version(rec.get());
    EXPECT_EQ(whole(rec->version), version_field("1541234567:25"));
    EXPECT_EQ(whole(rec->devices[0].version), version_field("1541234567:25"));
    EXPECT_EQ(whole(rec->receivers[0].version), version_field("1541234567:25"));
}

TEST(RegistrationApiUpdateVersion, WritesEveryTime)
{
    struct Case
    {
        std::uint64_t seconds;
        std::int32_t nanoseconds;
        const char* text;
    };
    const Case table[] = {
        {1, 999999999, "1:999999999"},
        {1541234567, -25, "1541234567:-25"},
        {4294967296u, 1, "4294967296:1"},
        {9223372036854775808u, 0, "9223372036854775808:0"},
        {UINT64_MAX, INT32_MAX, "18446744073709551615:2147483647"},
        {UINT64_MAX, INT32_MIN, "18446744073709551615:-2147483648"},
    };
    const auto rec = empty_node();
    for (const auto& [seconds, nanoseconds, text] : table) {
        rec->version_seconds = seconds;
        rec->version_nanoseconds = nanoseconds;
        RegistrationApi().update_version(rec.get());
        EXPECT_EQ(whole(rec->version), version_field(text));
    }
}

TEST(RegistrationApiUpdateVersion, WritesNothingElse)
{
    const auto rec = example_node(0x2F);
    const auto expected = example_node(0x2F);
    const std::string field = version_field("1700000123:25");
    std::memcpy(expected->version, field.data(), 48);
    for (int i = 0; i < 2; ++i)
        std::memcpy(expected->devices[i].version, field.data(), 48);
    for (int i = 0; i < 24; ++i)
        std::memcpy(expected->receivers[i].version, field.data(), 48);

    RegistrationApi().update_version(rec.get());
    EXPECT_EQ(std::memcmp(rec.get(), expected.get(), sizeof *rec), 0);
    EXPECT_STREQ(rec->sources[0].version, "source/0/version");
    EXPECT_STREQ(rec->flows[0].version, "flow/0/version");
    EXPECT_STREQ(rec->senders[0].version, "sender/0/version");
}

TEST(RegistrationApiUpdateVersion, LeavesDevicesAndReceiversFromTheirCountOn)
{
    const auto rec = example_node();
    rec->devices_count = 1;
    rec->receivers_count = 3;
    RegistrationApi().update_version(rec.get());
    EXPECT_STREQ(rec->devices[0].version, "1700000123:25");
    EXPECT_STREQ(rec->devices[1].version, "device/1/version");
    EXPECT_STREQ(rec->receivers[2].version, "1700000123:25");
    EXPECT_STREQ(rec->receivers[3].version, "receiver/3/version");

    const auto none = example_node();
    none->devices_count = 0;
    none->receivers_count = -1;
    RegistrationApi().update_version(none.get());
    EXPECT_STREQ(none->version, "1700000123:25");
    EXPECT_STREQ(none->devices[0].version, "device/0/version");
    EXPECT_STREQ(none->receivers[0].version, "receiver/0/version");
}

TEST(RegistrationApiUpdateVersion, StaysInsideTheRecordWhateverTheCounts)
{
    for (const int more : {1, 1000, INT_MAX - 24}) {
        const auto rec = example_node();
        rec->devices_count = 4 + more;
        rec->receivers_count = 24 + more;
        const auto expected = example_node();
        expected->devices_count = 4 + more;
        expected->receivers_count = 24 + more;
        const std::string field = version_field("1700000123:25");
        std::memcpy(expected->version, field.data(), 48);
        for (DEVICE_IS04_ST& device : expected->devices)
            std::memcpy(device.version, field.data(), 48);
        for (RECEIVER_IS04_ST& receiver : expected->receivers)
            std::memcpy(receiver.version, field.data(), 48);

        RegistrationApi().update_version(rec.get());
        EXPECT_EQ(std::memcmp(rec.get(), expected.get(), sizeof *rec), 0);
    }
}

// --- update_ipAddress ---------------------------------------------------------------------------

TEST(RegistrationApiUpdateIpAddress, RewritesFourBytesOfEachHostAndThePort)
{
    const auto rec = example_node();
    set_text(rec->endpoints[0].host, "192.168.1.20");
    set_text(rec->endpoints[1].host, "172.16.0.1");
    set_text(rec->endpoints[2].host, "1.2.3.4");
    RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", "8080");
    EXPECT_STREQ(rec->endpoints[0].host, "10.0168.1.20");
    EXPECT_STREQ(rec->endpoints[1].host, "10.016.0.1");
    EXPECT_STREQ(rec->endpoints[2].host, "10.03.4");
    EXPECT_EQ(rec->endpoints[0].port, 8080);
    EXPECT_EQ(rec->endpoints[1].port, 8080);
    EXPECT_EQ(rec->endpoints[2].port, 8080);
    EXPECT_STREQ(rec->href, "http://192.0.2.10:3212/");
    EXPECT_THAT(NodeApi().make_self(rec.get()),
                StartsWith(R"({"api":{"endpoints":[{"host":"10.0168.1.20","port":8080,)"
                           R"("protocol":"http"}])"));
}

TEST(RegistrationApiUpdateIpAddress, WritesNothingElse)
{
    const auto rec = example_node(0x2F);
    const auto expected = example_node(0x2F);
    for (int i = 0; i < 3; ++i) {
        std::memcpy(expected->endpoints[i].host, "10.0", 4);
        expected->endpoints[i].port = 80;
    }
    RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", "80");
    EXPECT_EQ(std::memcmp(rec.get(), expected.get(), sizeof *rec), 0);
}

TEST(RegistrationApiUpdateIpAddress, OverwritesTheFirstFourBytesOfHref)
{
    struct Case
    {
        std::string before;
        std::string after;
    };
    const Case table[] = {
        {"http://192.0.2.10/", "http://192.0.2.10/"},
        {"https://192.0.2.10/", "https://192.0.2.10/"},
        {"ftp://192.0.2.10/", "http//192.0.2.10/"},
        {"HTTP://192.0.2.10/", "http://192.0.2.10/"},
        {"abcdefgh", "httpefgh"},
        {"abc", "http"},
        {"", "http"},
    };
    for (const auto& [before, after] : table) {
        const auto rec = empty_node();
        set_text(rec->href, before);
        RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", "80");
        EXPECT_EQ(whole(rec->href), after + std::string(64 - after.size(), '\0'));
    }
    const auto rec = empty_node();
    fill_whole(rec->href, 'x');
    RegistrationApi().update_ipAddress(rec.get(), "", "");
    EXPECT_EQ(whole(rec->href), "http" + std::string(60, 'x'));
}

TEST(RegistrationApiUpdateIpAddress, WithAShortAddressCopiesItsTextAndNul)
{
    struct Case
    {
        std::string ip;
        std::string host;
    };
    const Case table[] = {
        {"", "\0bcdefghijklmnop"s},           {"1", "1\0cdefghijklmnop"s},
        {"10", "10\0defghijklmnop"s},         {"10.", "10.\0efghijklmnop"s},
        {"10.0", "10.0efghijklmnop"s},        {"10.0.", "10.0efghijklmnop"s},
        {"2001:db8::1", "2001efghijklmnop"s}, {std::string(1000, 'z'), "zzzzefghijklmnop"s},
    };
    for (const auto& [ip, host] : table) {
        const auto rec = empty_node();
        rec->endpoints_count = 1;
        std::memcpy(rec->endpoints[0].host, "abcdefghijklmnop", 16);
        RegistrationApi().update_ipAddress(rec.get(), ip, "80");
        EXPECT_EQ(whole(rec->endpoints[0].host), host);
    }
}

TEST(RegistrationApiUpdateIpAddress, CopiesFourBytesOfALongAddressEvenWithANulInside)
{
    const auto rec = empty_node();
    rec->endpoints_count = 1;
    std::memcpy(rec->endpoints[0].host, "abcdefghijklmnop", 16);
    RegistrationApi().update_ipAddress(rec.get(),
                                       "1\0"
                                       "23456"s,
                                       "80");
    EXPECT_EQ(whole(rec->endpoints[0].host), "1\0"
                                             "23efghijklmnop"s);
}

TEST(RegistrationApiUpdateIpAddress, ReadsThePortLikeStrtod)
{
    struct Case
    {
        std::string text;
        double value;
    };
    const Case table[] = {
        {"3212", 3212},
        {"0", 0},
        {"65536", 65536},
        {" 80", 80},
        {" \t\n\v\f\r80", 80},
        {"+80", 80},
        {" +80", 80},
        {"-80", -80},
        {"--80", 0},
        {"+-80", 0},
        {"- 80", 0},
        {"0x50", 80},
        {"0X50", 80},
        {"0x1p4", 16},
        {"0x.8", 0.5},
        {"0x", 0},
        {"0xg", 0},
        {"080", 80},
        {"80abc", 80},
        {"80 90", 80},
        {"abc", 0},
        {"abc80", 0},
        {"", 0},
        {" ", 0},
        {".", 0},
        {"e5", 0},
        {"80.5", 80.5},
        {".5", 0.5},
        {"80.", 80},
        {"80,5", 80},
        {"1,234", 1},
        {"1.234.567", 1.234},
        {"8e3", 8000},
        {"8E+3", 8000},
        {"8e-1", 0.8},
        {"8e", 8},
        {"8e+", 8},
        {"8d3", 8},
        {"1e400", infinity},
        {"-1e400", -infinity},
        {"1e-400", 0},
        {"1e-310", 1e-310},
        {"5e-324", 5e-324},
        {"2e-324", 0},
        {"1.7976931348623157e308", 1.7976931348623157e308},
        {"9007199254740993", 9007199254740992.0},
        {"0.1000000000000000055511151231257827021181583404541015625", 0.1},
        {"inf", infinity},
        {"INF", infinity},
        {"-inf", -infinity},
        {"+inf", infinity},
        {" inf", infinity},
        {"infinity", infinity},
        {"Infinity", infinity},
        {"infinite", infinity},
        {"in", 0},
        {"80\0"s
         "90",
         80},
        {"\0"s
         "80",
         0},
        {"8\0"s
         "0",
         8},
        {"0x\0"s
         "50",
         0},
        {std::string(400, '0') + "80", 80},
        {std::string(400, '9'), infinity},
        {"0." + std::string(400, '0') + "1", 0},
        {"1" + std::string(400, '0') + "e-400", 1},
        {"\xEF\xBC\x98", 0},
    };
    for (const auto& [text, value] : table) {
        const auto rec = empty_node();
        rec->endpoints_count = 26;
        RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", text);
        for (const ENDPOINT_IS04_ST& endpoint : rec->endpoints)
            EXPECT_EQ(endpoint.port, value) << text;
    }
}

TEST(RegistrationApiUpdateIpAddress, ReadsAPortOfMinusZeroWithItsSign)
{
    const auto rec = empty_node();
    rec->endpoints_count = 1;
    RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", "-0");
    EXPECT_EQ(rec->endpoints[0].port, 0);
    EXPECT_TRUE(std::signbit(rec->endpoints[0].port));
    EXPECT_THAT(NodeApi().make_self(rec.get()), HasSubstr(R"("port":-0,)"));
}

TEST(RegistrationApiUpdateIpAddress, LeavesANotFinitePortForTheNextBodyToRefuse)
{
    for (const char* text : {"nan", "NaN", "-nan", "nan(123)", " nanny"}) {
        const auto rec = example_node();
        RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", text);
        EXPECT_TRUE(std::isnan(rec->endpoints[0].port)) << text;
        EXPECT_EQ(overflow_text([&] { NodeApi().make_self(rec.get()); }), "");
    }
    for (const char* text : {"inf", "-inf", "1e400"}) {
        const auto rec = example_node();
        RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", text);
        EXPECT_EQ(overflow_text([&] { RegistrationApi().make_resource_node(rec.get()); }), "");
    }
}

TEST(RegistrationApiUpdateIpAddress, WithoutEndpointsRewritesHrefAlone)
{
    for (const int count : {0, -1, INT_MIN}) {
        const auto rec = example_node();
        rec->endpoints_count = count;
        set_text(rec->href, "ftp://x/");
        RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", "80");
        EXPECT_STREQ(rec->href, "http//x/");
        EXPECT_STREQ(rec->endpoints[0].host, "192.0.2.10");
        EXPECT_EQ(rec->endpoints[0].port, 3212);
    }
}

TEST(RegistrationApiUpdateIpAddress, StaysInsideTheEndpointsWhateverTheCount)
{
    for (const int count : {26, 27, 1000, INT_MAX}) {
        const auto rec = empty_node();
        const auto expected = empty_node();
        rec->endpoints_count = expected->endpoints_count = count;
        set_text(expected->href, "http");
        for (ENDPOINT_IS04_ST& endpoint : expected->endpoints) {
            set_text(endpoint.host, "10.0");
            endpoint.port = 80;
        }
        RegistrationApi().update_ipAddress(rec.get(), "10.0.0.5", "80");
        EXPECT_EQ(std::memcmp(rec.get(), expected.get(), sizeof *rec), 0);
    }
}

} // namespace
