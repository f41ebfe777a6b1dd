// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/NodeApi.h"

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "body_parts.h"
#include "example_node.h"
#include "example_node_texts.h"
#include "set_text.h"

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr double nan_value = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double not_finite[] = {nan_value, -nan_value, infinity, -infinity};

// --- Listings -----------------------------------------------------------------------------------

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

// --- Whole bodies -------------------------------------------------------------------------------

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

/// Every operation that reads a record, with each index that it takes.
std::vector<std::string> all_bodies(NMOS_IS04_ST* rec)
{
    NodeApi api;
    std::vector<std::string> bodies = {
        api.make_version(),
        api.make_base(rec),
        api.make_self(rec),
        api.make_sources(rec),
        api.make_flows(rec),
        api.make_devices(rec, 0, 0, 0),
        api.make_senders(rec, 0),
        api.make_receivers(rec, 0, 0),
        api.make_devices(rec, 1, 1, 1),
        api.make_receivers(rec, 1, 1),
    };
    for (int i = 0; i < 4; ++i) {
        bodies.push_back(api.make_sourceid(rec, i));
        bodies.push_back(api.make_flowid(rec, i));
        bodies.push_back(api.make_deviceid(rec, i, 0, 2, 1));
    }
    for (int i = 0; i < 6; ++i) {
        bodies.push_back(api.make_senderid(rec, i));
        bodies.push_back(api.make_receiverid_target(&rec->senders[i]));
    }
    for (int i = 0; i < 24; ++i)
        bodies.push_back(api.make_receiverid(rec, i));
    return bodies;
}

TEST(NodeApi, NeverWritesIntoTheRecord)
{
    const auto rec = example_node();
    const auto before = std::make_unique<NMOS_IS04_ST>();
    std::memcpy(before.get(), rec.get(), sizeof *rec);
    all_bodies(rec.get());
    EXPECT_EQ(std::memcmp(before.get(), rec.get(), sizeof *rec), 0);
}

TEST(NodeApi, GivesTheSameTextsAgainAndFromAnyObject)
{
    const auto rec = example_node();
    EXPECT_EQ(all_bodies(rec.get()), all_bodies(rec.get()));
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

// --- Text ---------------------------------------------------------------------------------------

/// Every operation on a record whose labels all hold the same text.
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
    const auto rec = empty_node();
    set_text(rec->label, "a/b//");
    set_text(rec->sources[0].label, "a/b//");
    set_text(rec->flows[0].label, "a/b//");
    set_text(rec->devices[0].label, "a/b//");
    set_text(rec->senders[0].label, "a/b//");
    set_text(rec->receivers[0].label, "a/b//");
    rec->sources_count = rec->flows_count = rec->devices_count = rec->senders_count =
        rec->receivers_count = 1;
    EXPECT_THAT(
        GetParam().call(rec.get()),
        HasSubstr(GetParam().plain_slashes ? R"("label":"a/b//",)" : R"("label":"a\/b\/\/",)"));
}

TEST_P(NodeApiSlashes, BehindBackslashesLoseOnlyTheirOwnEscape)
{
    constexpr char label[] = R"(a\/b\\/c\)";
    const auto rec = empty_node();
    set_text(rec->label, label);
    set_text(rec->sources[0].label, label);
    set_text(rec->flows[0].label, label);
    set_text(rec->devices[0].label, label);
    set_text(rec->senders[0].label, label);
    set_text(rec->receivers[0].label, label);
    rec->sources_count = rec->flows_count = rec->devices_count = rec->senders_count =
        rec->receivers_count = 1;
    EXPECT_THAT(GetParam().call(rec.get()),
                HasSubstr(GetParam().plain_slashes ? R"("label":"a\\/b\\\\/c\\",)"
                                                   : R"("label":"a\\\/b\\\\\/c\\",)"));
}

TEST(NodeApiText, ControlBytesAreEscapedAndHighBytesAreNot)
{
    const auto rec = empty_node();
    rec->sources_count = 1;
    set_text(rec->label, "\t\x01\xC3\xA9");
    set_text(rec->sources[0].label, "\t\x01\xC3\xA9");
    EXPECT_THAT(NodeApi().make_self(rec.get()), HasSubstr("\"label\":\"\\t\\u0001\xC3\xA9\","));
    EXPECT_THAT(NodeApi().make_sourceid(rec.get(), 0),
                HasSubstr("\"label\":\"\\t\\u0001\xC3\xA9\","));
}

TEST(NodeApiText, EveryByteIsWrittenAsJsonSays)
{
    const std::string to_slash =
        R"(\u0001\u0002\u0003\u0004\u0005\u0006\u0007\b\t\n\u000b\f\r\u000e\u000f)"
        R"(\u0010\u0011\u0012\u0013\u0014\u0015\u0016\u0017)"
        R"(\u0018\u0019\u001a\u001b\u001c\u001d\u001e\u001f)"
        R"( !\"#$%&'()*+,-.)";
    const std::string from_slash =
        R"(0123456789:;<=>?)"
        R"(@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_)"
        R"(`abcdefghijklmnopqrstuvwxyz{|}~\u007f)"
        "\x80\x81\x82\x83\x84\x85\x86\x87\x88\x89\x8A\x8B\x8C\x8D\x8E\x8F"
        "\x90\x91\x92\x93\x94\x95\x96\x97\x98\x99\x9A\x9B\x9C\x9D\x9E\x9F"
        "\xA0\xA1\xA2\xA3\xA4\xA5\xA6\xA7\xA8\xA9\xAA\xAB\xAC\xAD\xAE\xAF"
        "\xB0\xB1\xB2\xB3\xB4\xB5\xB6\xB7\xB8\xB9\xBA\xBB\xBC\xBD\xBE\xBF"
        "\xC0\xC1\xC2\xC3\xC4\xC5\xC6\xC7\xC8\xC9\xCA\xCB\xCC\xCD\xCE\xCF"
        "\xD0\xD1\xD2\xD3\xD4\xD5\xD6\xD7\xD8\xD9\xDA\xDB\xDC\xDD\xDE\xDF"
        "\xE0\xE1\xE2\xE3\xE4\xE5\xE6\xE7\xE8\xE9\xEA\xEB\xEC\xED\xEE\xEF"
        "\xF0\xF1\xF2\xF3\xF4\xF5\xF6\xF7\xF8\xF9\xFA\xFB\xFC\xFD\xFE\xFF";

    const auto rec = empty_node();
    rec->sources_count = 1;
    char* byte = rec->sources[0].format;
    for (int value = 0x01; value <= 0xFF; ++value)
        *byte++ = static_cast<char>(value);

    EXPECT_EQ(NodeApi().make_sourceid(rec.get(), 0),
              R"({"caps":{},"clock_name":"","description":"","device_id":"","format":")" +
                  to_slash + R"(\/)" + from_slash +
                  R"(","id":"","label":"","parents":[],"tags":{},"version":""})");
    EXPECT_EQ(NodeApi().make_sources(rec.get()),
              R"([{"caps":{},"clock_name":"","description":"","device_id":"","format":")" +
                  to_slash + "/" + from_slash +
                  R"(","id":"","label":"","parents":[],"tags":{},"version":""}])");
}

TEST(NodeApiText, EveryByteIsWrittenAsJsonSaysAtEveryPlaceOfAField)
{
    std::string written[256]; // a byte not named here stands for itself
    for (int value = 0; value < 256; ++value)
        written[value] = static_cast<char>(value);
    constexpr const char* control[] = {
        "",          R"(\u0001)", R"(\u0002)", R"(\u0003)", R"(\u0004)", R"(\u0005)", R"(\u0006)",
        R"(\u0007)", R"(\b)",     R"(\t)",     R"(\n)",     R"(\u000b)", R"(\f)",     R"(\r)",
        R"(\u000e)", R"(\u000f)", R"(\u0010)", R"(\u0011)", R"(\u0012)", R"(\u0013)", R"(\u0014)",
        R"(\u0015)", R"(\u0016)", R"(\u0017)", R"(\u0018)", R"(\u0019)", R"(\u001a)", R"(\u001b)",
        R"(\u001c)", R"(\u001d)", R"(\u001e)", R"(\u001f)"};
    static_assert(std::size(control) == 0x20);
    std::copy(std::begin(control), std::end(control), written);
    written['"'] = R"(\")";
    written['\\'] = R"(\\)";
    written[0x7F] = R"(\u007f)";

    // 20 bytes are no whole number of the blocks that a writer may take at once.
    const auto rec = empty_node();
    rec->sources_count = 1;
    auto& field = rec->sources[0].clock_name;
    for (std::size_t place = 0; place < sizeof field; ++place) {
        for (int value = 0x01; value <= 0xFF; ++value) {
            fill_whole(field, 'x');
            field[place] = static_cast<char>(value);
            const std::string before = R"({"caps":{},"clock_name":")" + std::string(place, 'x');
            const std::string after = std::string(sizeof field - place - 1, 'x') + R"(","desc)";
            ASSERT_THAT(NodeApi().make_sources(rec.get()),
                        StartsWith("[" + before + written[value] + after));
            const std::string slashes_too = value == '/' ? R"(\/)" : written[value];
            ASSERT_THAT(NodeApi().make_sourceid(rec.get(), 0),
                        StartsWith(before + slashes_too + after));
        }
    }
}

// --- Fields without NUL -------------------------------------------------------------------------

TEST(NodeApiUnterminatedFields, OfTheNodeAreTheirWholeWidth)
{
    const auto rec = empty_node();
    fill_whole(rec->id, 'a');
    fill_whole(rec->version, 'b');
    fill_whole(rec->label, 'c');
    fill_whole(rec->description, 'd');
    fill_whole(rec->href, 'e');
    fill_whole(rec->hostname, 'f');
    rec->versions_count = 16;
    for (auto& version : rec->versions)
        fill_whole(version, 'g');
    rec->endpoints_count = 1;
    fill_whole(rec->endpoints[0].host, 'h');
    rec->endpoints[0].port = 80;
    fill_whole(rec->endpoints[0].protocol, 'i');
    const std::string version = '"' + std::string(16, 'g') + '"';
    EXPECT_EQ(NodeApi().make_self(rec.get()),
              R"({"api":{"endpoints":[{"host":")" + std::string(16, 'h') +
                  R"(","port":80,"protocol":")" + std::string(16, 'i') + R"("}],"versions":[)" +
                  version + "," + version + "," + version + "," + version + "," + version + "," +
                  version + "," + version + "," + version + "," + version + "," + version + "," +
                  version + "," + version + "," + version + "," + version + "," + version + "," +
                  version + R"(]},"caps":{},"clocks":[],"description":")" + std::string(128, 'd') +
                  R"(","hostname":")" + std::string(32, 'f') + R"(","href":")" +
                  std::string(64, 'e') + R"(","id":")" + std::string(48, 'a') +
                  R"(","interfaces":[],"label":")" + std::string(64, 'c') +
                  R"(","services":[],"tags":{},"version":")" + std::string(48, 'b') + R"("})");
}

TEST(NodeApiUnterminatedFields, OfClocksAndInterfacesAreTheirWholeWidth)
{
    const auto rec = empty_node();
    rec->clocks_count = 2;
    fill_whole(rec->clocks[0].name, 'a');
    set_text(rec->clocks[0].ref_type, "ptp");
    fill_whole(rec->clocks[0].version, 'b');
    fill_whole(rec->clocks[0].gmid, 'c');
    rec->clocks[0].locked = 'x';
    rec->clocks[0].traceable = 'y';
    fill_whole(rec->clocks[1].name, 'd');
    fill_whole(rec->clocks[1].ref_type, 'p');
    rec->interfaces_count = 1;
    fill_whole(rec->interfaces[0].chassis_id, 'e');
    fill_whole(rec->interfaces[0].port_id, 'f');
    fill_whole(rec->interfaces[0].name, 'g');
    EXPECT_EQ(
        NodeApi().make_self(rec.get()),
        R"({"api":{"versions":[]},"caps":{},"clocks":[{"gmid":")" + std::string(32, 'c') +
            R"(","locked":true,"name":")" + std::string(32, 'a') +
            R"(","ref_type":"ptp","traceable":true,"version":")" + std::string(16, 'b') +
            R"("},{"name":")" + std::string(32, 'd') + R"(","ref_type":")" + std::string(16, 'p') +
            R"("}],"description":"","hostname":"","href":"","id":"",)"
            R"("interfaces":[{"chassis_id":")" +
            std::string(48, 'e') + R"(","name":")" + std::string(48, 'g') + R"(","port_id":")" +
            std::string(48, 'f') + R"("}],"label":"","services":[],"tags":{},"version":""})");
}

TEST(NodeApiUnterminatedFields, OfASourceAreTheirWholeWidth)
{
    const auto rec = empty_node();
    rec->sources_count = 4;
    for (auto& source : rec->sources) {
        fill_whole(source.id, 'a');
        fill_whole(source.version, 'b');
        fill_whole(source.label, 'c');
        fill_whole(source.description, 'd');
        fill_whole(source.device_id, 'e');
        fill_whole(source.clock_name, 'f');
        fill_whole(source.format, 'g');
    }
    const std::string expected =
        R"({"caps":{},"clock_name":")" + std::string(20, 'f') + R"(","description":")" +
        std::string(144, 'd') + R"(","device_id":")" + std::string(96, 'e') + R"(","format":")" +
        std::string(2080, 'g') + R"(","id":")" + std::string(48, 'a') + R"(","label":")" +
        std::string(64, 'c') + R"(","parents":[],"tags":{},"version":")" + std::string(48, 'b') +
        R"("})";
    EXPECT_EQ(NodeApi().make_sourceid(rec.get(), 0), expected);
    EXPECT_EQ(NodeApi().make_sourceid(rec.get(), 3), expected);
}

TEST(NodeApiUnterminatedFields, OfAFlowAreTheirWholeWidth)
{
    const auto rec = empty_node();
    rec->flows_count = 4;
    for (auto& flow : rec->flows) {
        fill_whole(flow.id, 'a');
        fill_whole(flow.version, 'b');
        fill_whole(flow.label, 'c');
        fill_whole(flow.description, 'd');
        fill_whole(flow.format, 'e');
        fill_whole(flow.interlace_mode, 'f');
        fill_whole(flow.colorspace, 'g');
        fill_whole(flow.transfer_characteristic, 'h');
        fill_whole(flow.media_type, 'i');
        fill_whole(flow.source_id, 'j');
        fill_whole(flow.device_id, 'k');
    }
    EXPECT_EQ(NodeApi().make_flowid(rec.get(), 0),
              R"({"colorspace":")" + std::string(32, 'g') +
                  R"(","components":[{"bit_depth":0,"height":0,"name":"Y","width":0},)"
                  R"({"bit_depth":0,"height":0,"name":"Cb","width":0},)"
                  R"({"bit_depth":0,"height":0,"name":"Cr","width":0}],"description":")" +
                  std::string(128, 'd') + R"(","device_id":")" + std::string(96, 'k') +
                  R"(","format":")" + std::string(32, 'e') +
                  R"(","frame_height":0,"frame_width":0,)"
                  R"("grain_rate":{"denominator":0,"numerator":0},"id":")" +
                  std::string(48, 'a') + R"(","interlace_mode":")" + std::string(32, 'f') +
                  R"(","label":")" + std::string(64, 'c') + R"(","media_type":")" +
                  std::string(32, 'i') + R"(","parents":[],"source_id":")" + std::string(48, 'j') +
                  R"(","tags":{},"transfer_characteristic":")" + std::string(32, 'h') +
                  R"(","version":")" + std::string(48, 'b') + R"("})");
    EXPECT_EQ(NodeApi().make_flowid(rec.get(), 3),
              R"({"description":")" + std::string(128, 'd') + R"(","device_id":")" +
                  std::string(96, 'k') + R"(","format":")" + std::string(32, 'e') + R"(","id":")" +
                  std::string(48, 'a') + R"(","label":")" + std::string(64, 'c') +
                  R"(","media_type":")" + std::string(32, 'i') + R"(","parents":[],"source_id":")" +
                  std::string(48, 'j') + R"(","tags":{},"version":")" + std::string(48, 'b') +
                  R"("})");
}

TEST(NodeApiUnterminatedFields, OfADeviceAreTheirWholeWidth)
{
    const auto rec = empty_node();
    DEVICE_IS04_ST& device = rec->devices[3];
    fill_whole(device.id, 'a');
    fill_whole(device.version, 'b');
    fill_whole(device.label, 'c');
    fill_whole(device.description, 'd');
    fill_whole(device.type, 'e');
    fill_whole(device.node_id, 'f');
    device.sender_ids_count = 6;
    for (auto& id : device.senders)
        fill_whole(id, 'g');
    device.receiver_ids_count = 24;
    for (auto& id : device.receivers)
        fill_whole(id, 'h');
    device.controls_count = 8;
    for (auto& control : device.controls) {
        fill_whole(control.href, 'i');
        fill_whole(control.type, 'j');
    }
    const std::string control =
        R"({"href":")" + std::string(64, 'i') + R"(","type":")" + std::string(64, 'j') + R"("})";
    const std::string receiver = '"' + std::string(48, 'h') + '"';
    const std::string sender = '"' + std::string(48, 'g') + '"';
    EXPECT_EQ(NodeApi().make_deviceid(rec.get(), 3, 1, 2, 0),
              R"({"controls":[)" + control + "," + control + "," + control + "," + control + "," +
                  control + "," + control + "," + control + "," + control + R"(],"description":")" +
                  std::string(128, 'd') + R"(","id":")" + std::string(48, 'a') + R"(","label":")" +
                  std::string(64, 'c') + R"(","node_id":")" + std::string(48, 'f') +
                  R"(","receivers":[)" + receiver + "," + receiver + "," + receiver + "," +
                  receiver + R"(],"senders":[)" + sender + "," + sender + "," + sender +
                  R"(],"tags":{},"type":")" + std::string(32, 'e') + R"(","version":")" +
                  std::string(48, 'b') + R"("})");
}

TEST(NodeApiUnterminatedFields, OfASenderAreTheirWholeWidth)
{
    const auto rec = empty_node();
    SENDER_IS04_ST& sender = rec->senders[5];
    rec->senders_count = 6;
    fill_whole(sender.id, 'a');
    fill_whole(sender.version, 'b');
    fill_whole(sender.label, 'c');
    fill_whole(sender.description, 'd');
    fill_whole(sender.flow_id, 'e');
    fill_whole(sender.transport, 'f');
    fill_whole(sender.device_id, 'g');
    fill_whole(sender.manifest_href, 'h');
    sender.interface_bindings_count = 1;
    fill_whole(sender.interface_bindings[0], 'i');
    fill_whole(sender.interface_bindings[1], 'x');
    sender.subscription_count = 1;
    fill_whole(sender.subscription[0].peer_id, 'j');
    sender.subscription[0].active = 'y';
    const std::string rest =
        R"("description":")" + std::string(128, 'd') + R"(","device_id":")" + std::string(48, 'g') +
        R"(","flow_id":")" + std::string(48, 'e') + R"(","id":")" + std::string(48, 'a') +
        R"(","interface_bindings":[")" + std::string(64, 'i') + R"("],"label":")" +
        std::string(64, 'c') + R"(","manifest_href":")" + std::string(128, 'h') +
        R"(","subscription":{"active":true,"receiver_id":")" + std::string(48, 'j') +
        R"("},"tags":{},"transport":")" + std::string(32, 'f') + R"(","version":")" +
        std::string(48, 'b') + R"("})";
    EXPECT_EQ(NodeApi().make_senderid(rec.get(), 5), "{" + rest);
    EXPECT_EQ(NodeApi().make_receiverid_target(&sender), R"({"caps":{},)" + rest);
}

TEST(NodeApiUnterminatedFields, OfAReceiverAreTheirWholeWidth)
{
    const auto rec = empty_node();
    RECEIVER_IS04_ST& receiver = rec->receivers[23];
    fill_whole(receiver.id, 'a');
    fill_whole(receiver.version, 'b');
    fill_whole(receiver.label, 'c');
    fill_whole(receiver.description, 'd');
    fill_whole(receiver.device_id, 'e');
    fill_whole(receiver.transport, 'f');
    fill_whole(receiver.format, 'g');
    receiver.interface_bindings_count = 1;
    fill_whole(receiver.interface_bindings[0], 'h');
    fill_whole(receiver.interface_bindings[1], 'x');
    receiver.subscription_count = 1;
    fill_whole(receiver.subscription[0].peer_id, 'i');
    receiver.subscription[0].active = 'y';
    receiver.media_types_count = 12;
    for (auto& media_type : receiver.media_types)
        fill_whole(media_type, 'j');
    const std::string media_type = '"' + std::string(16, 'j') + '"';
    EXPECT_EQ(NodeApi().make_receiverid(rec.get(), 23),
              R"({"caps":{"media_types":[)" + media_type + "," + media_type + "," + media_type +
                  "," + media_type + "," + media_type + "," + media_type + "," + media_type + "," +
                  media_type + "," + media_type + "," + media_type + "," + media_type + "," +
                  media_type + R"(]},"description":")" + std::string(128, 'd') +
                  R"(","device_id":")" + std::string(48, 'e') + R"(","format":")" +
                  std::string(32, 'g') + R"(","id":")" + std::string(48, 'a') +
                  R"(","interface_bindings":[")" + std::string(64, 'h') + R"("],"label":")" +
                  std::string(64, 'c') + R"(","subscription":{"active":true,"sender_id":")" +
                  std::string(48, 'i') + R"("},"tags":{},"transport":")" + std::string(32, 'f') +
                  R"(","version":")" + std::string(48, 'b') + R"("})");
}

// --- Numbers ------------------------------------------------------------------------------------

struct NumberText
{
    double value;
    const char* text;
};

TEST(NodeApiNumbers, AreWrittenInFullOrWithSeventeenDigits)
{
    const NumberText table[] = {
        {0.0, "0"},
        {-0.0, "-0"},
        {1, "1"},
        {-1, "-1"},
        {25, "25"},
        {3212, "3212"},
        {8080, "8080"},
        {65535, "65535"},
        {4294967296.0, "4294967296"},
        {1e15, "1000000000000000"},
        {9007199254740991.0, "9007199254740991"},
        {-9007199254740991.0, "-9007199254740991"},
        {9007199254740992.0, "9007199254740992"},
        {-9007199254740992.0, "-9007199254740992"},
        {9007199254740994.0, "9007199254740994"},
        {1e16, "10000000000000000"},
        {12345678901234568.0, "12345678901234568"},
        {1e17, "1e+17"},
        {-1e22, "-1e+22"},
        {1e100, "1e+100"},
        {1e300, "1.0000000000000001e+300"},
        {DBL_MAX, "1.7976931348623157e+308"},
        {-DBL_MAX, "-1.7976931348623157e+308"},
        {0.5, "0.5"},
        {-0.5, "-0.5"},
        {2.25, "2.25"},
        {0.1, "0.10000000000000001"},
        {59.94, "59.939999999999998"},
        {1.0 / 3.0, "0.33333333333333331"},
        {4503599627370495.5, "4503599627370495.5"},
        {0.0001, "0.0001"},
        {0.00001, "1.0000000000000001e-05"},
        {1e-300, "1e-300"},
        {DBL_MIN, "2.2250738585072014e-308"},
        {5e-324, "4.9406564584124654e-324"},
        {-5e-324, "-4.9406564584124654e-324"},
        {1e-310, "9.9999999999999694e-311"},
    };
    const auto rec = empty_node();
    rec->endpoints_count = 1;
    rec->flows_count = 2;
    for (const auto& [value, text] : table) {
        rec->endpoints[0].port = value;
        EXPECT_THAT(NodeApi().make_self(rec.get()),
                    HasSubstr(std::string(R"("port":)") + text + R"(,"protocol")"));
        rec->flows[1].sample_rate_numerator = value;
        EXPECT_THAT(NodeApi().make_flowid(rec.get(), 1),
                    HasSubstr(std::string(R"({"denominator":1,"numerator":)") + text + "}"));
    }
}

TEST(NodeApiNumbers, AnEndpointPortThatIsNotFiniteThrowsWithoutText)
{
    for (const double port : not_finite) {
        const auto rec = example_node();
        rec->endpoints[0].port = port;
        EXPECT_EQ(overflow_text([&] { NodeApi().make_self(rec.get()); }), "");
    }
}

TEST(NodeApiNumbers, APortThatIsNotFiniteThrowsAlsoInAnEndpointThatIsNotShown)
{
    for (const double port : not_finite) {
        const auto rec = example_node();
        rec->endpoints[2].port = port;
        EXPECT_EQ(overflow_text([&] { NodeApi().make_self(rec.get()); }), "");
        rec->endpoints_count = 2;
        EXPECT_THAT(NodeApi().make_self(rec.get()), HasSubstr(R"("port":3212,)"));
    }
}

TEST(NodeApiNumbers, NoPortIsReadWithoutEndpoints)
{
    const auto rec = example_node();
    rec->endpoints_count = 0;
    rec->endpoints[0].port = nan_value;
    EXPECT_NO_THROW(NodeApi().make_self(rec.get()));
}

TEST(NodeApiNumbers, AFlowNumberThatIsWrittenMustBeFinite)
{
    struct Case
    {
        int flow;
        double FLOW_IS04_ST::*number;
    };
    const Case written[] = {
        {0, &FLOW_IS04_ST::frame_width},
        {0, &FLOW_IS04_ST::frame_height},
        {0, &FLOW_IS04_ST::bit_depth},
        {0, &FLOW_IS04_ST::grain_rate_denominator},
        {0, &FLOW_IS04_ST::grain_rate_numerator},
        {1, &FLOW_IS04_ST::bit_depth},
        {1, &FLOW_IS04_ST::grain_rate_denominator},
        {1, &FLOW_IS04_ST::grain_rate_numerator},
        {1, &FLOW_IS04_ST::sample_rate_numerator},
    };
    for (const auto& [flow, number] : written) {
        for (const double value : not_finite) {
            const auto rec = example_node();
            rec->flows[flow].*number = value;
            EXPECT_EQ(overflow_text([&] { NodeApi().make_flowid(rec.get(), flow); }), "");
            EXPECT_EQ(overflow_text([&] { NodeApi().make_flows(rec.get()); }), "");
            EXPECT_NO_THROW(NodeApi().make_flowid(rec.get(), 1 - flow));
        }
    }
}

TEST(NodeApiNumbers, AFlowNumberThatIsNotWrittenMayBeAnything)
{
    for (const double value : not_finite) {
        const auto rec = example_node();
        rec->flows[0].sample_rate_numerator = value;
        rec->flows[1].frame_width = value;
        rec->flows[1].frame_height = value;
        for (int flow : {2, 3}) {
            rec->flows[flow].frame_width = value;
            rec->flows[flow].frame_height = value;
            rec->flows[flow].bit_depth = value;
            rec->flows[flow].grain_rate_denominator = value;
            rec->flows[flow].grain_rate_numerator = value;
            rec->flows[flow].sample_rate_numerator = value;
        }
        EXPECT_EQ(NodeApi().make_flows(rec.get()), NodeApi().make_flows(example_node().get()));
    }
}

TEST(NodeApiNumbers, OfAFlowFromItsCountOnAreNotLookedAt)
{
    const auto rec = example_node();
    rec->flows_count = 1;
    rec->flows[1].bit_depth = nan_value;
    EXPECT_EQ(NodeApi().make_flows(rec.get()), "[" + example_texts::flow_0_plain + "]");
}

TEST(NodeApiNumbers, OfAFlowMayBeMinusZeroOrFractions)
{
    const auto rec = example_node();
    rec->flows[0].frame_width = -0.0;
    rec->flows[0].frame_height = 0.5;
    rec->flows[0].bit_depth = 0.1;
    rec->flows[0].grain_rate_denominator = 9007199254740992.0;
    rec->flows[0].grain_rate_numerator = 1e300;
    const std::string body = NodeApi().make_flowid(rec.get(), 0);
    EXPECT_THAT(body, HasSubstr(R"({"bit_depth":0.10000000000000001,"height":0.5,"name":"Y",)"
                                R"("width":-0},{"bit_depth":0.10000000000000001,"height":0.5,)"
                                R"("name":"Cb","width":-0},{"bit_depth":0.10000000000000001,)"
                                R"("height":0.5,"name":"Cr","width":-0}])"));
    EXPECT_THAT(body, HasSubstr(R"("frame_height":0.5,"frame_width":-0,"grain_rate":)"
                                R"({"denominator":9007199254740992,)"
                                R"("numerator":1.0000000000000001e+300},)"));
}

// --- Counts -------------------------------------------------------------------------------------

constexpr int no_entries[] = {0, -1, -25, INT_MIN};

TEST(NodeApiCounts, OfZeroOrLessAreNoEntriesInLists)
{
    for (const int count : no_entries) {
        const auto rec = example_node();
        rec->sources_count = rec->flows_count = rec->devices_count = rec->senders_count =
            rec->receivers_count = count;
        EXPECT_EQ(NodeApi().make_sources(rec.get()), "[]");
        EXPECT_EQ(NodeApi().make_flows(rec.get()), "[]");
        EXPECT_EQ(NodeApi().make_devices(rec.get(), 0, 2, 1), "[]");
        EXPECT_EQ(NodeApi().make_senders(rec.get(), 1), "[]");
        EXPECT_EQ(NodeApi().make_receivers(rec.get(), 0, 2), "[]");
    }
}

TEST(NodeApiCounts, OfZeroOrLessAreNoEntriesInTheNode)
{
    for (const int count : no_entries) {
        const auto rec = example_node();
        rec->versions_count = rec->endpoints_count = rec->clocks_count = rec->interfaces_count =
            count;
        EXPECT_EQ(NodeApi().make_self(rec.get()),
                  R"({"api":{"versions":[]},"caps":{},"clocks":[],)"
                  R"("description":"node/description","hostname":"node/hostname",)"
                  R"("href":"http://192.0.2.10:3212/","id":"node/id","interfaces":[],)"
                  R"("label":"node/label","services":[],"tags":{},"version":"node/version"})");
    }
}

TEST(NodeApiCounts, OfZeroOrLessAreNoEntriesInResources)
{
    for (const int count : no_entries) {
        const auto rec = example_node();
        rec->devices[0].receiver_ids_count = rec->devices[0].sender_ids_count =
            rec->devices[0].controls_count = count;
        EXPECT_EQ(NodeApi().make_deviceid(rec.get(), 0, 0, 2, 1),
                  R"({"controls":[],"description":"device/0/description","id":"device/0/id",)"
                  R"("label":"device/0/label","node_id":"device/0/node","receivers":[],)"
                  R"("senders":[],"tags":{},"type":"device/0/type",)"
                  R"("version":"device/0/version"})");
        rec->senders[0].interface_bindings_count = rec->senders[0].subscription_count = count;
        EXPECT_EQ(NodeApi().make_senderid(rec.get(), 0),
                  R"({"description":"sender/0/description","device_id":"sender/0/device",)"
                  R"("flow_id":"sender/0/flow","id":"sender/0/id","interface_bindings":[],)"
                  R"("label":"sender/0/label","manifest_href":"http://192.0.2.10/sender/0/sdp",)"
                  R"("subscription":{},"tags":{},"transport":"sender/0/transport",)"
                  R"("version":"sender/0/version"})");
        EXPECT_EQ(NodeApi().make_receiverid_target(&rec->senders[0]),
                  R"({"caps":{},"description":"sender/0/description",)"
                  R"("device_id":"sender/0/device","flow_id":"sender/0/flow","id":"sender/0/id",)"
                  R"("interface_bindings":[],"label":"sender/0/label",)"
                  R"("manifest_href":"http://192.0.2.10/sender/0/sdp","subscription":{},)"
                  R"("tags":{},"transport":"sender/0/transport","version":"sender/0/version"})");
        rec->receivers[0].interface_bindings_count = rec->receivers[0].subscription_count =
            rec->receivers[0].media_types_count = count;
        EXPECT_EQ(NodeApi().make_receiverid(rec.get(), 0),
                  R"({"caps":{"media_types":[]},"description":"receiver/0/description",)"
                  R"("device_id":"receiver/0/device","format":"receiver/0/format",)"
                  R"("id":"receiver/0/id","interface_bindings":[],"label":"receiver/0/label",)"
                  R"("subscription":{},"tags":{},"transport":"receiver/0/transport",)"
                  R"("version":"receiver/0/version"})");
    }
}

/// A count field with the capacity of its array.
struct CountField
{
    const char* name;
    int capacity;
    bool last_entry_shows; ///< of endpoints and subscriptions only the first does
    std::int32_t& (*field)(NMOS_IS04_ST& rec);
};

const CountField count_fields[] = {
    {"versions", 16, true, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.versions_count; }},
    {"endpoints", 26, false, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.endpoints_count; }},
    {"clocks", 6, true, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.clocks_count; }},
    {"interfaces", 12, true, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.interfaces_count; }},
    {"sources", 4, true, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.sources_count; }},
    {"flows", 4, true, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.flows_count; }},
    {"devices", 4, true, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.devices_count; }},
    {"device receivers", 24, true,
     [](NMOS_IS04_ST& r) -> std::int32_t& { return r.devices[3].receiver_ids_count; }},
    {"device senders", 6, true,
     [](NMOS_IS04_ST& r) -> std::int32_t& { return r.devices[3].sender_ids_count; }},
    {"device controls", 8, true,
     [](NMOS_IS04_ST& r) -> std::int32_t& { return r.devices[3].controls_count; }},
    {"senders", 6, true, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.senders_count; }},
    {"sender bindings", 10, true,
     [](NMOS_IS04_ST& r) -> std::int32_t& { return r.senders[5].interface_bindings_count; }},
    {"sender subscriptions", 9, false,
     [](NMOS_IS04_ST& r) -> std::int32_t& { return r.senders[5].subscription_count; }},
    {"receivers", 24, true, [](NMOS_IS04_ST& r) -> std::int32_t& { return r.receivers_count; }},
    {"receiver bindings", 10, true,
     [](NMOS_IS04_ST& r) -> std::int32_t& { return r.receivers[23].interface_bindings_count; }},
    {"receiver subscriptions", 10, false,
     [](NMOS_IS04_ST& r) -> std::int32_t& { return r.receivers[23].subscription_count; }},
    {"receiver media types", 12, true,
     [](NMOS_IS04_ST& r) -> std::int32_t& { return r.receivers[23].media_types_count; }},
};

TEST(NodeApiCounts, AboveTheCapacityAreTheCapacity)
{
    for (const auto& [name, capacity, last_entry_shows, field] : count_fields) {
        const auto rec = example_node(0x2F);
        // The background is no number of entries.
        for (const CountField& other : count_fields)
            other.field(*rec) = 0;
        rec->devices_count = 4;
        rec->senders_count = 6;
        rec->receivers_count = 24;

        field(*rec) = capacity;
        const std::vector<std::string> full = all_bodies(rec.get());
        field(*rec) = capacity - 1;
        EXPECT_EQ(all_bodies(rec.get()) != full, last_entry_shows) << name;
        for (const int count : {capacity + 1, 1000, INT_MAX}) {
            field(*rec) = count;
            EXPECT_EQ(all_bodies(rec.get()), full) << name << " " << count;
        }
    }
}

TEST(NodeApiCounts, AboveTheCapacityShowEveryEntryOnce)
{
    const auto rec = example_node();
    rec->sources_count = 5;
    EXPECT_THAT(ids_in(NodeApi().make_sources(rec.get())),
                ElementsAre("source/0/id", "source/1/id", "source/2/id", "source/3/id"));
    rec->flows_count = INT_MAX;
    EXPECT_THAT(ids_in(NodeApi().make_flows(rec.get())),
                ElementsAre("flow/0/id", "flow/1/id", "flow/2/id", "flow/3/id"));
    rec->devices_count = 5;
    EXPECT_THAT(ids_in(NodeApi().make_devices(rec.get(), 0, 0, 0)),
                ElementsAre("device/0/id", "device/1/id", "", ""));
    rec->senders_count = 7;
    EXPECT_THAT(ids_in(NodeApi().make_senders(rec.get(), 1)),
                ElementsAre("sender/0/id", "sender/1/id", "sender/2/id", "null", "sender/4/id",
                            "sender/5/id"));
    rec->receivers_count = 25;
    EXPECT_EQ(ids_in(NodeApi().make_receivers(rec.get(), 0, 2)).size(), 24u);
}

// --- Indexes ------------------------------------------------------------------------------------

struct IndexedOperation
{
    const char* name;
    int last;
    std::string (*call)(NMOS_IS04_ST* rec, int index);
};

const IndexedOperation indexed_operations[] = {
    {"make_sourceid", 3, [](NMOS_IS04_ST* r, int i) { return NodeApi().make_sourceid(r, i); }},
    {"make_flowid", 3, [](NMOS_IS04_ST* r, int i) { return NodeApi().make_flowid(r, i); }},
    {"make_deviceid", 3,
     [](NMOS_IS04_ST* r, int i) { return NodeApi().make_deviceid(r, i, 0, 0, 0); }},
    {"make_senderid", 5, [](NMOS_IS04_ST* r, int i) { return NodeApi().make_senderid(r, i); }},
    {"make_receiverid", 23, [](NMOS_IS04_ST* r, int i) { return NodeApi().make_receiverid(r, i); }},
};

TEST(NodeApiIndexes, OutsideTheArrayThrowWithOperationIndexAndRange)
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

TEST(NodeApiIndexes, ThatEndTheArrayAreFine)
{
    const auto rec = example_node();
    for (const auto& [name, last, call] : indexed_operations) {
        EXPECT_THAT(call(rec.get(), 0), StartsWith("{")) << name;
        EXPECT_THAT(call(rec.get(), last), StartsWith("{")) << name;
    }
}

TEST(NodeApiIndexes, AreNotComparedWithTheCount)
{
    const auto rec = example_node();
    rec->sources_count = rec->flows_count = rec->senders_count = 1;
    rec->devices_count = rec->receivers_count = 0;
    EXPECT_EQ(NodeApi().make_sourceid(rec.get(), 3), example_texts::source_3_escaped);
    EXPECT_EQ(NodeApi().make_flowid(rec.get(), 3), example_texts::flow_3_plain);
    EXPECT_EQ(NodeApi().make_senderid(rec.get(), 5), example_texts::sender_5);
    EXPECT_EQ(NodeApi().make_deviceid(rec.get(), 1, 0, 2, 1), example_texts::device_1);
    EXPECT_EQ(NodeApi().make_receiverid(rec.get(), 23), example_texts::receiver_23);
}

TEST(NodeApiIndexes, DoNotMatterToSourceFlowAndSenderWhenThereIsNone)
{
    const auto rec = example_node();
    rec->sources_count = rec->flows_count = rec->senders_count = 0;
    for (const int index : {INT_MIN, -1, 0, 1, 4, 6, INT_MAX}) {
        EXPECT_EQ(NodeApi().make_sourceid(rec.get(), index), "{}");
        EXPECT_EQ(NodeApi().make_flowid(rec.get(), index), "{}");
        EXPECT_EQ(NodeApi().make_senderid(rec.get(), index), "{}");
    }
}

TEST(NodeApiIndexes, GetTheirBodyWhenTheCountIsNegative)
{
    const auto rec = example_node();
    for (const int count : {-1, INT_MIN}) {
        rec->sources_count = rec->flows_count = rec->senders_count = count;
        EXPECT_EQ(NodeApi().make_sourceid(rec.get(), 1), example_texts::source_1_escaped);
        EXPECT_EQ(NodeApi().make_flowid(rec.get(), 1), example_texts::flow_1_plain);
        EXPECT_EQ(NodeApi().make_senderid(rec.get(), 1), example_texts::sender_1);
        EXPECT_THROW(NodeApi().make_sourceid(rec.get(), 4), std::out_of_range);
        EXPECT_THROW(NodeApi().make_flowid(rec.get(), 4), std::out_of_range);
        EXPECT_THROW(NodeApi().make_senderid(rec.get(), 6), std::out_of_range);
    }
}

// --- Node ---------------------------------------------------------------------------------------

TEST(NodeApiSelf, HasTheFirstEndpointAlone)
{
    const auto rec = example_node();
    for (const int count : {1, 2, 3, 26}) {
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

// --- Sources and flows --------------------------------------------------------------------------

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
                    StartsWith(R"({"caps":{},"clock_name":)"));
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

// --- Devices, senders and receivers: what the selectors let through -----------------------------

const std::vector<std::string> every_receiver = {"0",  "1",  "2",  "3",  "4",  "5",  "6",  "7",
                                                 "8",  "9",  "10", "11", "12", "13", "14", "15",
                                                 "16", "17", "18", "19", "20", "21", "22", "23"};
const std::vector<std::string> video_and_ancillary_and_g1 = {"0",  "1",  "2",  "3",  "4",  "8",
                                                             "12", "16", "20", "21", "22", "23"};
const std::vector<std::string> video_and_ancillary_and_g1_g2 = {
    "0", "1", "2", "3", "4", "5", "8", "9", "12", "13", "16", "17", "20", "21", "22", "23"};
const std::vector<std::string> video_alone = {"0", "1", "2", "3"};

struct ReceiverSelection
{
    int receiver_filter;
    int audio_group_filter;
    const std::vector<std::string>& shown;
};

const ReceiverSelection receiver_selections[] = {
    {0, 0, video_and_ancillary_and_g1},
    {0, 1, video_and_ancillary_and_g1_g2},
    {0, 2, every_receiver},
    {0, 3, every_receiver},
    {0, -1, every_receiver},
    {0, INT_MAX, every_receiver},
    {0, INT_MIN, every_receiver},
    {1, 0, video_alone},
    {1, 1, video_alone},
    {1, 2, video_alone},
    {2, 2, video_alone},
    {-1, 2, video_alone},
    {INT_MIN, 0, video_alone},
    {INT_MAX, 3, video_alone},
};

TEST(NodeApiReceivers, ShowWhatTheSelectorsLetThrough)
{
    const auto rec = empty_node();
    rec->receivers_count = 24;
    for (int i = 0; i < 24; ++i)
        set_text(rec->receivers[i].id, std::to_string(i));
    for (const auto& [receiver_filter, audio_group_filter, shown] : receiver_selections)
        EXPECT_THAT(
            ids_in(NodeApi().make_receivers(rec.get(), receiver_filter, audio_group_filter)),
            ElementsAreArray(shown))
            << receiver_filter << ' ' << audio_group_filter;
}

TEST(NodeApiReceivers, ShowOnlyValidOnes)
{
    const auto rec = empty_node();
    for (int i = 0; i < 24; ++i)
        set_text(rec->receivers[i].id, std::to_string(i));
    rec->receivers_count = 9;
    EXPECT_THAT(ids_in(NodeApi().make_receivers(rec.get(), 0, 0)),
                ElementsAre("0", "1", "2", "3", "4", "8"));
    rec->receivers_count = 2;
    EXPECT_THAT(ids_in(NodeApi().make_receivers(rec.get(), 1, 0)), ElementsAre("0", "1"));
}

TEST(NodeApiReceivers, AreBuiltByIdWhateverTheSelectorsHide)
{
    const auto rec = empty_node();
    set_text(rec->receivers[7].id, "stream 1 G4");
    EXPECT_THAT(ids_in(NodeApi().make_receiverid(rec.get(), 7)), ElementsAre("stream 1 G4"));
}

TEST(NodeApiSenders, ShowWhatTheSelectorLetsThrough)
{
    const auto rec = empty_node();
    rec->senders_count = 6;
    for (int i = 0; i < 6; ++i)
        set_text(rec->senders[i].id, std::to_string(i));
    EXPECT_THAT(ids_in(NodeApi().make_senders(rec.get(), 0)), ElementsAre("0", "4", "5"));
    for (const int all : {1, 2, -1, INT_MIN, INT_MAX})
        EXPECT_THAT(ids_in(NodeApi().make_senders(rec.get(), all)),
                    ElementsAre("0", "1", "2", "3", "4", "5"));
    rec->senders_count = 4;
    EXPECT_THAT(ids_in(NodeApi().make_senders(rec.get(), 0)), ElementsAre("0"));
}

TEST(NodeApiSenders, BodiesOfTheShownOnesAreWhole)
{
    using namespace example_texts;
    const auto rec = example_node();
    EXPECT_EQ(NodeApi().make_senders(rec.get(), 0),
              "[" + sender_0 + "," + sender_4 + "," + sender_5 + "]");
}

/// The ids in one list of a device body.
std::vector<std::string> list_in(const std::string& body, const std::string& key)
{
    const std::string begin = "\"" + key + "\":[";
    const std::size_t at = body.find(begin) + begin.size();
    std::vector<std::string> texts;
    std::string list = body.substr(at, body.find(']', at) - at);
    for (std::size_t quote = 0; quote < list.size();) {
        const std::size_t end = list.find('"', quote + 1);
        texts.push_back(list.substr(quote + 1, end - quote - 1));
        quote = end + 2;
    }
    return texts;
}

TEST(NodeApiDevices, ListTheReceiverIdsThatTheSelectorsLetThrough)
{
    const auto rec = empty_node();
    rec->devices_count = 1;
    rec->devices[0].receiver_ids_count = 24;
    for (int i = 0; i < 24; ++i)
        set_text(rec->devices[0].receivers[i], std::to_string(i));
    for (const auto& [receiver_filter, audio_group_filter, shown] : receiver_selections) {
        const std::string body =
            NodeApi().make_deviceid(rec.get(), 0, receiver_filter, audio_group_filter, 0);
        EXPECT_THAT(list_in(body, "receivers"), ElementsAreArray(shown))
            << receiver_filter << ' ' << audio_group_filter;
        EXPECT_EQ(NodeApi().make_devices(rec.get(), receiver_filter, audio_group_filter, 0),
                  "[" + body + "]");
    }
}

TEST(NodeApiDevices, ListTheSenderIdsThatTheSelectorLetsThrough)
{
    const auto rec = empty_node();
    rec->devices_count = 1;
    rec->devices[0].sender_ids_count = 6;
    for (int i = 0; i < 6; ++i)
        set_text(rec->devices[0].senders[i], std::to_string(i));
    EXPECT_THAT(list_in(NodeApi().make_deviceid(rec.get(), 0, 0, 0, 0), "senders"),
                ElementsAre("0", "4", "5"));
    EXPECT_THAT(list_in(NodeApi().make_devices(rec.get(), 0, 0, 0), "senders"),
                ElementsAre("0", "4", "5"));
    for (const int all : {1, 2, -1, INT_MIN, INT_MAX}) {
        EXPECT_THAT(list_in(NodeApi().make_deviceid(rec.get(), 0, 0, 0, all), "senders"),
                    ElementsAre("0", "1", "2", "3", "4", "5"));
        EXPECT_THAT(list_in(NodeApi().make_devices(rec.get(), 0, 0, all), "senders"),
                    ElementsAre("0", "1", "2", "3", "4", "5"));
    }
}

TEST(NodeApiDevices, HaveEmptyListsWhenNothingIsLetThrough)
{
    const auto rec = empty_node();
    // Slots 1 to 3 are hidden, slot 0 is not.
    rec->devices[0].sender_ids_count = 4;
    EXPECT_THAT(NodeApi().make_deviceid(rec.get(), 0, 1, 0, 0),
                HasSubstr(R"("receivers":[],"senders":[""],)"));
    rec->devices[0].sender_ids_count = 0;
    EXPECT_THAT(NodeApi().make_deviceid(rec.get(), 0, 1, 0, 0),
                HasSubstr(R"("receivers":[],"senders":[],)"));
}

// --- Subscriptions and nulls --------------------------------------------------------------------

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
    for (const std::string text : not_quite_null) {
        set_text(sender->id, text);
        set_text(sender->flow_id, text);
        set_text(sender->device_id, text);
        EXPECT_THAT(NodeApi().make_receiverid_target(sender.get()),
                    HasSubstr(R"("device_id":")" + text + R"(","flow_id":")" + text +
                              R"(","id":")" + text + R"(",)"));
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

// --- Full arrays in resources -------------------------------------------------------------------

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

// --- Long texts ---------------------------------------------------------------------------------

TEST(NodeApiLongTexts, AreWholeWhateverTheirLength)
{
    const auto rec = empty_node();
    rec->sources_count = 2;
    SOURCE_IS04_ST& source = rec->sources[0];
    const std::string begin =
        R"({"caps":{},"clock_name":"","description":"","device_id":"","format":")";
    const std::string end = R"(","id":"","label":"","parents":[],"tags":{},"version":""})";
    const std::string second =
        R"({"caps":{},"channels":[{"label":""}],"clock_name":"","description":"",)"
        R"("device_id":"","format":"","id":"","label":"","parents":[],"tags":{},"version":""})";
    std::string text;
    for (std::size_t length = 0; length < 2079; ++length, text += 'x') {
        set_text(source.format, text + '\n');
        ASSERT_EQ(NodeApi().make_sources(rec.get()),
                  "[" + begin + text + R"(\n)" + end + "," + second + "]");
    }
}

TEST(NodeApiLongTexts, AreWholeWhateverTheirLengthWhenEveryByteIsEscaped)
{
    const auto rec = empty_node();
    rec->sources_count = 1;
    std::string text;
    std::string escaped;
    for (std::size_t length = 0; length < 2080; ++length, text += '\x1F', escaped += R"(\u001f)") {
        set_text(rec->sources[0].format, text);
        ASSERT_EQ(NodeApi().make_sourceid(rec.get(), 0),
                  R"({"caps":{},"clock_name":"","description":"","device_id":"","format":")" +
                      escaped + R"(","id":"","label":"","parents":[],"tags":{},"version":""})");
    }
}

/// The longest receiver there is: all fields are full and every byte is escaped to six.
std::string fill_receiver(RECEIVER_IS04_ST& receiver)
{
    fill_whole(receiver.id, '\x01');
    fill_whole(receiver.version, '\x01');
    fill_whole(receiver.label, '\x01');
    fill_whole(receiver.description, '\x01');
    fill_whole(receiver.device_id, '\x01');
    fill_whole(receiver.transport, '\x01');
    fill_whole(receiver.format, '\x01');
    receiver.interface_bindings_count = 10;
    for (auto& binding : receiver.interface_bindings)
        fill_whole(binding, '\x01');
    receiver.subscription_count = 10;
    for (auto& entry : receiver.subscription)
        fill_whole(entry.peer_id, '\x01');
    receiver.media_types_count = 12;
    for (auto& media_type : receiver.media_types)
        fill_whole(media_type, '\x01');

    std::string two;
    for (int i = 0; i < 2; ++i)
        two += R"(\u0001)";
    const std::string eight = two + two + two + two;
    const std::string w16 = eight + eight;
    const std::string w32 = w16 + w16;
    const std::string w48 = w32 + w16;
    const std::string w64 = w32 + w32;
    const std::string type = '"' + w16 + '"';
    const std::string binding = '"' + w64 + '"';
    return R"({"caps":{"media_types":[)" + type + "," + type + "," + type + "," + type + "," +
           type + "," + type + "," + type + "," + type + "," + type + "," + type + "," + type +
           "," + type + R"(]},"description":")" + w64 + w64 + R"(","device_id":")" + w48 +
           R"(","format":")" + w32 + R"(","id":")" + w48 + R"(","interface_bindings":[)" + binding +
           "," + binding + "," + binding + "," + binding + "," + binding + "," + binding + "," +
           binding + "," + binding + "," + binding + "," + binding + R"(],"label":")" + w64 +
           R"(","subscription":{"active":false,"sender_id":")" + w48 +
           R"("},"tags":{},"transport":")" + w32 + R"(","version":")" + w48 + R"("})";
}

const std::string empty_receiver =
    R"({"caps":{"media_types":[]},"description":"","device_id":"","format":"","id":"",)"
    R"("interface_bindings":[],"label":"","subscription":{},"tags":{},"transport":"",)"
    R"("version":""})";

TEST(NodeApiLongTexts, OfFullListsAreWhole)
{
    const auto rec = empty_node();
    rec->receivers_count = 24;
    std::string expected = "[";
    for (RECEIVER_IS04_ST& receiver : rec->receivers)
        expected += fill_receiver(receiver) + ",";
    expected.back() = ']';
    EXPECT_EQ(NodeApi().make_receivers(rec.get(), 0, 2), expected);
}

TEST(NodeApiLongTexts, OfListsWithOneLongEntryAreWhole)
{
    for (const std::size_t full : {0u, 1u, 11u, 22u, 23u}) {
        const auto rec = empty_node();
        rec->receivers_count = 24;
        const std::string long_receiver = fill_receiver(rec->receivers[full]);
        std::string expected = "[";
        for (std::size_t i = 0; i < 24; ++i)
            expected += (i == full ? long_receiver : empty_receiver) + ",";
        expected.back() = ']';
        EXPECT_EQ(NodeApi().make_receivers(rec.get(), 0, 2), expected);
    }
}

} // namespace
