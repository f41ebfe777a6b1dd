// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/record_check.h"

#include <cstring>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "oracle/random.h"
#include "support/default_records.h"
#include "support/set_text.h"

namespace {

using namespace nmos_instrument;
using testing::IsEmpty;

using Findings = std::vector<std::string>;

constexpr const char* other_id = "ab000000-0000-4000-8000-000000000000";

/// Right records, one thing changed in them, and what has to be found.
struct Case
{
    const char* name;
    void (*change)(DefaultRecords& r);
    Findings findings;
};

std::ostream& operator<<(std::ostream& out, const Case& test_case)
{
    return out << test_case.name;
}

class RecordsFindings : public testing::TestWithParam<Case>
{};

TEST_P(RecordsFindings, AreNamed)
{
    const auto records = default_records();
    GetParam().change(*records);
    EXPECT_EQ(records->findings(), GetParam().findings);
}

std::string name_of(const testing::TestParamInfo<Case>& info)
{
    return info.param.name;
}

// clang-format off
const Case own_rules[] = {
    {"OfTheNode", [](DefaultRecords& r) { r.node.clocks_count = 7; },
     {"node.clocks_count is 7, at most 6 are allowed",
      R"(node.clocks[1].name is "", it must be like clk0)",
      R"(node.clocks[1].ref_type is "", it must be one of: internal, ptp)",
      R"(node.clocks[2].name is "", it must be like clk0)",
      R"(node.clocks[2].ref_type is "", it must be one of: internal, ptp)",
      R"(node.clocks[3].name is "", it must be like clk0)",
      R"(node.clocks[3].ref_type is "", it must be one of: internal, ptp)",
      R"(node.clocks[4].name is "", it must be like clk0)",
      R"(node.clocks[4].ref_type is "", it must be one of: internal, ptp)",
      R"(node.clocks[5].name is "", it must be like clk0)",
      R"(node.clocks[5].ref_type is "", it must be one of: internal, ptp)"}},
    {"OfAShownSender", [](DefaultRecords& r) { set_text(r.node.senders[4].transport, "urn:x-nmos:transport:tape"); },
     {R"(node.senders[4].transport is "urn:x-nmos:transport:tape", it must be one of: )"
      "urn:x-nmos:transport:rtp, urn:x-nmos:transport:rtp.ucast, urn:x-nmos:transport:rtp.mcast, "
      "urn:x-nmos:transport:dash"}},
    {"OfTheConnections", [](DefaultRecords& r) { set_text(r.connections.receivers[23].staged.mode, ""); },
     {R"(connections.receivers[23].staged.mode is "", it must be one of: activate_immediate, )"
      "activate_scheduled_absolute, activate_scheduled_relative, null"}},
    {"OfTheSettings", [](DefaultRecords& r) { r.settings.sdp_rtp_payload_anc = 95; },
     {"settings.sdp_rtp_payload_anc is 95, it must be a whole number from 96 to 127"}},
};

const Case flow_rules[] = {
    {"Width", [](DefaultRecords& r) { r.node.flows[0].frame_width = 3840; },
     {"node.flows[0].frame_width is 3840, the SDP file says 1920, see settings.sdp_video_system"}},
    {"Height", [](DefaultRecords& r) { r.node.flows[0].frame_height = 720; },
     {"node.flows[0].frame_height is 720, the SDP file says 1080, see settings.sdp_video_system"}},
    {"System", [](DefaultRecords& r) { r.settings.sdp_video_system = video_system_720; },
     {"node.flows[0].frame_width is 1920, the SDP file says 1280, see settings.sdp_video_system",
      "node.flows[0].frame_height is 1080, the SDP file says 720, see settings.sdp_video_system"}},
    {"Rate", [](DefaultRecords& r) { r.node.flows[0].grain_rate_denominator = 1000; },
     {"node.flows[0].grain_rate_numerator is 60000, over 1000: the SDP file says 60000/1001, see "
      "settings.sdp_video_frame_rate"}},
    {"RateOfTheSettings", [](DefaultRecords& r) { r.settings.sdp_video_frame_rate = frame_rate_50; },
     {"node.flows[0].grain_rate_numerator is 60000, over 1001: the SDP file says 50/1, see "
      "settings.sdp_video_frame_rate"}},
    {"AnotherFractionOfTheSameRate", [](DefaultRecords& r) {
         r.settings.sdp_video_frame_rate = frame_rate_50;
         r.node.flows[0].grain_rate_numerator = 100;
         r.node.flows[0].grain_rate_denominator = 2;
     }, {}},
    {"Interlaced", [](DefaultRecords& r) { set_text(r.node.flows[0].interlace_mode, "interlaced_tff"); },
     {R"(node.flows[0].interlace_mode is "interlaced_tff", the SDP file says progressive, see )"
      "settings.sdp_video_frame_rate"}},
    {"Progressive", [](DefaultRecords& r) {
         r.settings.sdp_video_frame_rate = frame_rate_29_97_interlaced;
         r.node.flows[0].grain_rate_numerator = 30000;
     }, {R"(node.flows[0].interlace_mode is "progressive", the SDP file says interlaced, see )"
         "settings.sdp_video_frame_rate"}},
    {"BothInterlaced", [](DefaultRecords& r) {
         r.settings.sdp_video_frame_rate = frame_rate_25_interlaced;
         r.node.flows[0].grain_rate_numerator = 25;
         r.node.flows[0].grain_rate_denominator = 1;
         set_text(r.node.flows[0].interlace_mode, "interlaced_psf");
     }, {}},
    {"ColourIsNotCompared", [](DefaultRecords& r) { set_text(r.node.flows[0].colorspace, "BT2020"); }, {}},
    {"NotOfVideo", [](DefaultRecords& r) {
         set_text(r.node.flows[0].format, "urn:x-nmos:format:mux");
         r.node.flows[0].frame_width = 640;
     }, {}},
};

const Case grandmaster_rules[] = {
    {"OfTheClock", [](DefaultRecords& r) { set_text(r.node.clocks[0].gmid, "00-00-5e-ff-fe-00-53-02"); },
     {R"(connections.ptp_grandmaster_id is "00-00-5E-FF-FE-00-53-01", no PTP clock of the node has this gmid)"}},
    {"OfTheConnections", [](DefaultRecords& r) { set_text(r.connections.ptp_grandmaster_id, "00-00-5E-FF-FE-00-53-03"); },
     {R"(connections.ptp_grandmaster_id is "00-00-5E-FF-FE-00-53-03", no PTP clock of the node has this gmid)"}},
    {"AnyCase", [](DefaultRecords& r) { set_text(r.connections.ptp_grandmaster_id, "00-00-5e-FF-fe-00-53-01"); }, {}},
    {"AnyClock", [](DefaultRecords& r) {
         r.node.clocks_count = 2;
         r.node.clocks[1] = r.node.clocks[0];
         set_text(r.node.clocks[1].name, "clk1");
         set_text(r.node.clocks[0].gmid, "00-00-5e-ff-fe-00-53-02");
     }, {}},
    {"NoPtpClock", [](DefaultRecords& r) {
         set_text(r.node.clocks[0].ref_type, "internal");
         set_text(r.connections.ptp_grandmaster_id, "00-00-00-00-00-00-00-00");
     }, {}},
};

constexpr const char* no_endpoint = "no endpoint of the node has this protocol, host and port";
constexpr const char* elsewhere =
    "node.href has another protocol, host or port, and "
    "no endpoint of the node has this protocol, host and port";

const Case place_rules[] = {
    {"HrefOfTheNode", [](DefaultRecords& r) { set_text(r.node.href, "http://192.0.2.2:8080/"); },
     {std::string(R"(node.href is "http://192.0.2.2:8080/", )") + no_endpoint}},
    {"NameOfTheNode", [](DefaultRecords& r) { set_text(r.node.href, "http://rack-4.example:8080/"); }, {}},
    {"HostOfTheControl", [](DefaultRecords& r) { set_text(r.node.devices[0].controls[0].href, "http://192.0.2.2:8080/x-nmos/connection/v1.0/"); },
     {std::string(R"(node.devices[0].controls[0].href is "http://192.0.2.2:8080/x-nmos/connection/v1.0/", )") + elsewhere}},
    {"PortOfTheControl", [](DefaultRecords& r) { set_text(r.node.devices[0].controls[0].href, "http://192.0.2.1/x-nmos/connection/v1.0/"); },
     {std::string(R"(node.devices[0].controls[0].href is "http://192.0.2.1/x-nmos/connection/v1.0/", )") + elsewhere}},
    {"ProtocolOfTheControl", [](DefaultRecords& r) { set_text(r.node.devices[0].controls[0].href, "https://192.0.2.1:8080/"); },
     {std::string(R"(node.devices[0].controls[0].href is "https://192.0.2.1:8080/", )") + elsewhere}},
    {"OtherControls", [](DefaultRecords& r) {
         set_text(r.node.devices[0].controls[0].href, "http://192.0.2.99/");
         set_text(r.node.devices[0].controls[0].type, "urn:x-example:control");
     }, {}},
    {"TransportFile", [](DefaultRecords& r) { set_text(r.node.senders[0].manifest_href, "http://192.0.2.1:80/sdp"); },
     {std::string(R"(node.senders[0].manifest_href is "http://192.0.2.1:80/sdp", )") + elsewhere}},
    {"AnotherEndpoint", [](DefaultRecords& r) {
         r.node.endpoints_count = 2;
         r.node.endpoints[1] = r.node.endpoints[0];
         r.node.endpoints[1].port = 80;
         set_text(r.node.senders[0].manifest_href, "http://192.0.2.1/sdp");
     }, {}},
    {"SecureEndpoint", [](DefaultRecords& r) {
         r.node.endpoints_count = 2;
         r.node.endpoints[1] = r.node.endpoints[0];
         r.node.endpoints[1].port = 443;
         set_text(r.node.endpoints[1].protocol, "https");
         set_text(r.node.senders[0].manifest_href, "https://192.0.2.1/sdp");
     }, {}},
    {"TheNameOfTheNode", [](DefaultRecords& r) {
         set_text(r.node.href, "http://rack-4.example/");
         set_text(r.node.senders[0].manifest_href, "http://rack-4.example/sdp");
     }, {}},
    {"TransportFileOfAHiddenSender", [](DefaultRecords& r) { set_text(r.node.senders[1].manifest_href, "http://192.0.2.99/sdp"); }, {}},
};

const Case connection_rules[] = {
    {"SenderWithoutConnection", [](DefaultRecords& r) { std::memset(&r.connections.senders[4], 0, sizeof r.connections.senders[4]); },
     {"connections.senders[4].active.leg_count is 0, the node shows it, but both halves are cleared"}},
    {"ReceiverWithoutConnection", [](DefaultRecords& r) { std::memset(&r.connections.receivers[7], 0, sizeof r.connections.receivers[7]); },
     {"connections.receivers[7].active.leg_count is 0, the node shows it, but both halves are cleared"}},
    {"ConnectionWithoutReceiver", [](DefaultRecords& r) { r.node.receivers_count = r.node.devices[0].receiver_ids_count = 23; }, {}},
    {"Bindings", [](DefaultRecords& r) { r.node.receivers[3].interface_bindings_count = 1; },
     {"connections.receivers[3].staged.leg_count is 2, interface_bindings_count is 1",
      "connections.receivers[3].active.leg_count is 2, interface_bindings_count is 1"}},
    {"Legs", [](DefaultRecords& r) { r.connections.senders[5].staged.leg_count = 1; },
     {"connections.senders[5].staged.leg_count is 1, interface_bindings_count is 2"}},
    {"OneLeg", [](DefaultRecords& r) {
         r.node.senders[0].interface_bindings_count = 1;
         r.connections.senders[0].staged.leg_count = r.connections.senders[0].active.leg_count = 1;
     }, {}},
    {"EnabledOnly", [](DefaultRecords& r) { r.connections.receivers[0].active.master_enable = 1; },
     {"node.receivers[0].subscription[0].active is 0, master_enable of the active half is 1"}},
    {"SubscribedOnly", [](DefaultRecords& r) { r.node.senders[0].subscription[0].active = 2; },
     {"node.senders[0].subscription[0].active is 1, master_enable of the active half is 0"}},
    {"StagedIsNotCompared", [](DefaultRecords& r) { r.connections.receivers[0].staged.master_enable = 1; }, {}},
    {"PeerOfTheNode", [](DefaultRecords& r) { set_text(r.node.receivers[0].subscription[0].peer_id, other_id); },
     {std::string(R"(node.receivers[0].subscription[0].peer_id is "ab000000-0000-4000-8000-000000000000", )") +
      R"(it must be "null" while master_enable of the active half is 0)"}},
    {"PeerOfADisabledConnection", [](DefaultRecords& r) { set_text(r.connections.receivers[0].active.peer_id, other_id); }, {}},
    {"PeerOfAnEnabledReceiver", [](DefaultRecords& r) {
         r.connections.receivers[0].active.master_enable = r.node.receivers[0].subscription[0].active = 1;
         set_text(r.connections.receivers[0].active.peer_id, other_id);
     }, {R"(node.receivers[0].subscription[0].peer_id is "null", the active half has another)"}},
    {"SamePeer", [](DefaultRecords& r) {
         r.connections.receivers[0].active.master_enable = r.node.receivers[0].subscription[0].active = 1;
         set_text(r.connections.receivers[0].active.peer_id, other_id);
         set_text(r.node.receivers[0].subscription[0].peer_id, other_id);
     }, {}},
    {"PeerOfAMulticastSender", [](DefaultRecords& r) {
         r.connections.senders[0].active.master_enable = r.node.senders[0].subscription[0].active = 1;
         set_text(r.connections.senders[0].active.peer_id, other_id);
     }, {}},
    {"AnotherPeerOfASender", [](DefaultRecords& r) {
         r.connections.senders[0].active.master_enable = r.node.senders[0].subscription[0].active = 1;
         set_text(r.node.senders[0].subscription[0].peer_id, other_id);
     }, {R"(node.senders[0].subscription[0].peer_id is "ab000000-0000-4000-8000-000000000000", the active half has another)"}},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Own, RecordsFindings, testing::ValuesIn(own_rules), name_of);
INSTANTIATE_TEST_SUITE_P(Flow, RecordsFindings, testing::ValuesIn(flow_rules), name_of);
INSTANTIATE_TEST_SUITE_P(Grandmaster, RecordsFindings, testing::ValuesIn(grandmaster_rules),
                         name_of);
INSTANTIATE_TEST_SUITE_P(Place, RecordsFindings, testing::ValuesIn(place_rules), name_of);
INSTANTIATE_TEST_SUITE_P(Connection, RecordsFindings, testing::ValuesIn(connection_rules), name_of);

/// What a host leaves cleared that has nothing there.
void clear_sender(DefaultRecords& r, std::size_t i)
{
    std::memset(&r.node.senders[i], 0, sizeof r.node.senders[i]);
    std::memset(&r.node.devices[0].senders[i], 0, sizeof r.node.devices[0].senders[i]);
    std::memset(&r.connections.senders[i], 0, sizeof r.connections.senders[i]);
}

TEST(HiddenSlots, AreNoFindings)
{
    const auto records = default_records();
    for (const std::size_t i : {1u, 2u, 3u})
        clear_sender(*records, i);
    EXPECT_THAT(records->findings(), IsEmpty());
    EXPECT_EQ(check_record(records->node)[0],
              "devices[0].senders[1] is \"\", it must be a UUID in lower case");

    records->selection.sender_filter = sender_filter_all;
    EXPECT_EQ(records->findings()[0],
              "node.devices[0].senders[1] is \"\", it must be a UUID in lower case");
}

TEST(HiddenSlots, OfOneVideoAndOneAudioSenderAreNoFindings)
{
    const auto records = default_records();
    for (const std::size_t i : {1u, 2u, 3u, 5u})
        clear_sender(*records, i);
    records->node.senders_count = records->node.devices[0].sender_ids_count = 5;
    EXPECT_THAT(records->findings(), IsEmpty());
}

TEST(HiddenSlots, OfReceiversAreNoFindings)
{
    const auto records = default_records();
    for (std::size_t i = 4; i < 24; ++i) {
        std::memset(&records->node.receivers[i], 0xFF, sizeof records->node.receivers[i]);
        std::memset(&records->node.devices[0].receivers[i], 0xFF, 48);
        std::memset(&records->connections.receivers[i], 0xFF,
                    sizeof records->connections.receivers[i]);
    }
    records->selection.receiver_filter = receiver_filter_video_only;
    EXPECT_THAT(records->findings(), IsEmpty());
}

TEST(RecordsWithArbitraryBytes, HaveFindingsOfVisibleAscii)
{
    const auto records = std::make_unique<DefaultRecords>();
    Random random(20261);
    for (unsigned round = 0; round < 12; ++round) {
        const unsigned mask = round % 3 == 0 ? 0xFF : round % 3 == 1 ? 0x03 : 0x7F;
        auto* const bytes = reinterpret_cast<unsigned char*>(records.get());
        for (std::size_t i = 0; i < sizeof *records; ++i)
            bytes[i] = static_cast<unsigned char>(random.bits() & mask);
        const Findings findings = records->findings();
        EXPECT_THAT(findings, testing::Not(IsEmpty()));
        for (const std::string& finding : findings) {
            for (const char c : finding)
                ASSERT_TRUE(c >= ' ' && c <= '~') << finding;
        }
    }
}

} // namespace
