// SPDX-License-Identifier: Apache-2.0

#include "records/fill_records.h"

#include <functional>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "records/record_text.h"

namespace nmos_instrument::host {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr TaiTime now = {1735689637, 25};

std::unique_ptr<Records> records_of(const Configuration& configuration,
                                    const NodeAddress& address = {})
{
    return make_records(configuration, address, now);
}

std::string sdp_of(Records& records, int sender)
{
    set_sdp_session(records, static_cast<std::size_t>(sender));
    return ConnectionApi().make_single_senderid_sdp(&records.connections, sender,
                                                    &records.settings);
}

struct Format
{
    PictureSize lines;
    Scan scan;
    FrameRate rate;
    double width;
    double height;
    const char* interlace_mode;
    double numerator;
    double denominator;
    const char* sdp; ///< how the SDP file says it
};

/// All that an SDP file can say.
const Format formats[] = {
    {PictureSize::lines_2160, Scan::progressive, FrameRate::fps_60, 3840, 2160, "progressive", 60,
     1, "width=3840; height=2160; depth=10; exactframerate=60; colorimetry=BT709; TCS=SDR;"},
    {PictureSize::lines_2160, Scan::progressive, FrameRate::fps_59_94, 3840, 2160, "progressive",
     60000, 1001,
     "width=3840; height=2160; depth=10; exactframerate=60000/1001; colorimetry=BT709; TCS=SDR;"},
    {PictureSize::lines_2160, Scan::progressive, FrameRate::fps_50, 3840, 2160, "progressive", 50,
     1, "width=3840; height=2160; depth=10; exactframerate=50; colorimetry=BT709; TCS=SDR;"},
    {PictureSize::lines_1080, Scan::progressive, FrameRate::fps_60, 1920, 1080, "progressive", 60,
     1, "width=1920; height=1080; depth=10; exactframerate=60; colorimetry=BT709; TCS=SDR;"},
    {PictureSize::lines_1080, Scan::progressive, FrameRate::fps_59_94, 1920, 1080, "progressive",
     60000, 1001,
     "width=1920; height=1080; depth=10; exactframerate=60000/1001; colorimetry=BT709; TCS=SDR;"},
    {PictureSize::lines_1080, Scan::progressive, FrameRate::fps_50, 1920, 1080, "progressive", 50,
     1, "width=1920; height=1080; depth=10; exactframerate=50; colorimetry=BT709; TCS=SDR;"},
    {PictureSize::lines_720, Scan::progressive, FrameRate::fps_60, 1280, 720, "progressive", 60, 1,
     "width=1280; height=720; depth=10; exactframerate=60; colorimetry=BT709; TCS=SDR;"},
    {PictureSize::lines_720, Scan::progressive, FrameRate::fps_59_94, 1280, 720, "progressive",
     60000, 1001,
     "width=1280; height=720; depth=10; exactframerate=60000/1001; colorimetry=BT709; TCS=SDR;"},
    {PictureSize::lines_720, Scan::progressive, FrameRate::fps_50, 1280, 720, "progressive", 50, 1,
     "width=1280; height=720; depth=10; exactframerate=50; colorimetry=BT709; TCS=SDR;"},
    {PictureSize::lines_1080, Scan::interlaced, FrameRate::fps_30, 1920, 1080, "interlaced_tff", 30,
     1,
     "width=1920; height=1080; depth=10; exactframerate=30; interlace; colorimetry=BT709; "
     "TCS=SDR;"},
    {PictureSize::lines_1080, Scan::interlaced, FrameRate::fps_29_97, 1920, 1080, "interlaced_tff",
     30000, 1001,
     "width=1920; height=1080; depth=10; exactframerate=30000/1001; interlace; "
     "colorimetry=BT709; TCS=SDR;"},
    {PictureSize::lines_1080, Scan::interlaced, FrameRate::fps_25, 1920, 1080, "interlaced_tff", 25,
     1,
     "width=1920; height=1080; depth=10; exactframerate=25; interlace; colorimetry=BT709; "
     "TCS=SDR;"},
};

Configuration with_format(const Format& format)
{
    Configuration configuration;
    configuration.video.lines = format.lines;
    configuration.video.scan = format.scan;
    configuration.video.frame_rate = format.rate;
    return configuration;
}

/// Configurations that differ in what can be wrong with records.
std::vector<Configuration> many_configurations()
{
    std::vector<Configuration> all;
    for (const Format& format : formats) {
        for (const Carriage carriage : {Carriage::st2110, Carriage::st2022_6}) {
            Configuration configuration = with_format(format);
            configuration.carriage = carriage;
            all.push_back(configuration);
        }
    }
    for (const SenderStreams senders : {SenderStreams::all, SenderStreams::stream_1}) {
        for (const Essences sent : {Essences::all, Essences::video_only}) {
            Configuration configuration;
            configuration.streams.senders = senders;
            configuration.streams.sender_essences = sent;
            configuration.interfaces[1].chassis_id = std::nullopt;
            configuration.clock.reference = ClockReference::internal;
            all.push_back(configuration);
        }
    }
    Configuration longest;
    longest.serial_number = std::string(63, 's');
    longest.node = {std::string(63, 'l'), std::string(127, 'd'), std::string(31, 'h')};
    for (MediaInterface& interface : longest.interfaces) {
        interface.name = std::string(46, 'n') + (&interface == &longest.interfaces[0] ? "1" : "2");
        interface.chassis_id = std::string(47, 'c');
        interface.address = "203.203.203.203";
    }
    longest.clock.name = "clk0123456789012345";
    longest.labels.device = std::string(63, 'l');
    longest.labels.sources.fill(std::string(63, 'l'));
    longest.labels.flows.fill(std::string(63, 'l'));
    longest.labels.senders.fill(std::string(63, 'l'));
    longest.labels.receivers.fill(std::string(63, 'l'));
    longest.destinations.fill({{"239.239.239.239", 65535}, {"239.239.239.239", 65535}});
    longest.payload_types = {127, 127, 127};
    all.push_back(longest);
    return all;
}

TEST(MakeRecords, LeavesNothingForTheLibraryToFind)
{
    for (const Configuration& configuration : many_configurations()) {
        const auto records = records_of(configuration, {"203.203.203.203", 65535});
        EXPECT_THAT(nmos_instrument::check_record(records->node), IsEmpty());
        EXPECT_THAT(nmos_instrument::check_record(records->connections), IsEmpty());
        EXPECT_THAT(nmos_instrument::check_record(records->settings), IsEmpty());
        const StreamSelection& shown = records->selection;
        EXPECT_THAT(nmos_instrument::check_records(
                        records->node, records->connections, records->settings,
                        {shown.receiver_filter, shown.audio_group_filter, shown.sender_filter}),
                    IsEmpty());
    }
}

TEST(MakeRecords, GivesTheSameTextsForTheSameConfiguration)
{
    const auto one = records_of(Configuration());
    const auto two = records_of(Configuration());
    EXPECT_EQ(RegistrationApi().make_resource_receivers(&one->node),
              RegistrationApi().make_resource_receivers(&two->node));
    EXPECT_EQ(Nmos().make_param_json(&one->settings, 0), Nmos().make_param_json(&two->settings, 0));
    EXPECT_EQ(sdp_of(*one, 3), sdp_of(*two, 3));
}

TEST(MakeRecords, SpellsTheServedAddressAlikeEverywhere)
{
    const auto records = records_of(Configuration(), {"192.0.2.7", 8080});
    const NMOS_IS04_ST& node = records->node;
    EXPECT_STREQ(node.href, "http://192.0.2.7:8080/");
    EXPECT_EQ(node.endpoints_count, 1);
    EXPECT_STREQ(node.endpoints[0].host, "192.0.2.7");
    EXPECT_EQ(node.endpoints[0].port, 8080);
    EXPECT_STREQ(node.endpoints[0].protocol, "http");
    EXPECT_STREQ(node.devices[0].controls[0].href, "http://192.0.2.7:8080/x-nmos/connection/v1.0/");
    EXPECT_STREQ(node.devices[0].controls[0].type, "urn:x-nmos:control:sr-ctrl/v1.0");
    EXPECT_STREQ(node.senders[5].manifest_href,
                 "http://192.0.2.7:8080/x-nmos/connection/v1.0/single/senders/"
                 "44db81e8-232a-51c3-baea-b4298a068e2c/transportfile");
}

TEST(MakeRecords, CountsTheExampleInstrument)
{
    const auto records = records_of(Configuration());
    const NMOS_IS04_ST& node = records->node;
    EXPECT_EQ(node.versions_count, 1);
    EXPECT_EQ(node.clocks_count, 1);
    EXPECT_EQ(node.interfaces_count, 2);
    EXPECT_EQ(node.sources_count, 3);
    EXPECT_EQ(node.flows_count, 3);
    EXPECT_EQ(node.devices_count, 1);
    EXPECT_EQ(node.senders_count, 6);
    EXPECT_EQ(node.receivers_count, 24);
    EXPECT_EQ(node.devices[0].sender_ids_count, 6);
    EXPECT_EQ(node.devices[0].receiver_ids_count, 24);
}

TEST(MakeRecords, StampsEveryVersionWithTheTimeGiven)
{
    const auto records = records_of(Configuration());
    const NMOS_IS04_ST& node = records->node;
    std::set<std::string> versions = {node.version};
    for (int i = 0; i < 3; ++i)
        versions.insert({node.sources[i].version, node.flows[i].version});
    versions.insert(node.devices[0].version);
    for (const SENDER_IS04_ST& sender : node.senders)
        versions.insert(sender.version);
    for (const RECEIVER_IS04_ST& receiver : node.receivers)
        versions.insert(receiver.version);
    EXPECT_THAT(versions, testing::ElementsAre("1735689637:25"));
    EXPECT_EQ(node.version_seconds, 1735689637U);
    EXPECT_EQ(node.version_nanoseconds, 25);
}

TEST(MakeRecords, SharesTheVideoFlowAmongTheVideoSenders)
{
    const auto records = records_of(Configuration());
    const NMOS_IS04_ST& node = records->node;
    for (int i = 0; i < 4; ++i)
        EXPECT_STREQ(node.senders[i].flow_id, node.flows[0].id);
    EXPECT_STREQ(node.senders[4].flow_id, node.flows[1].id);
    EXPECT_STREQ(node.senders[5].flow_id, node.flows[2].id);
    for (int i = 0; i < 3; ++i)
        EXPECT_STREQ(node.flows[i].source_id, node.sources[i].id);
}

TEST(MakeRecords, TellsTheKindsAsIs04Does)
{
    const auto records = records_of(Configuration());
    const NMOS_IS04_ST& node = records->node;
    const char* const formats_of_kinds[] = {"urn:x-nmos:format:video", "urn:x-nmos:format:audio",
                                            "urn:x-nmos:format:data"};
    const char* const media_types[] = {"video/raw", "audio/L24", "video/smpte291"};
    for (int i = 0; i < 3; ++i) {
        EXPECT_STREQ(node.sources[i].format, formats_of_kinds[i]);
        EXPECT_STREQ(node.flows[i].format, formats_of_kinds[i]);
        EXPECT_STREQ(node.flows[i].media_type, media_types[i]);
    }
    for (int i = 0; i < 24; ++i) {
        const int kind = i < 4 ? 0 : i < 20 ? 1 : 2;
        EXPECT_STREQ(node.receivers[i].format, formats_of_kinds[kind]) << i;
        ASSERT_EQ(node.receivers[i].media_types_count, 1);
        EXPECT_STREQ(node.receivers[i].media_types[0], media_types[kind]) << i;
    }
    EXPECT_EQ(node.flows[1].bit_depth, 24);
    EXPECT_EQ(node.flows[1].sample_rate_numerator, 48000);
}

TEST(MakeRecords, DescribesEachSenderAndReceiver)
{
    const auto records = records_of(Configuration());
    const NMOS_IS04_ST& node = records->node;
    EXPECT_STREQ(node.senders[3].label, "IP Stream 4 Video Sender");
    EXPECT_STREQ(node.senders[3].description, "Video sent by IP stream 4");
    EXPECT_STREQ(node.senders[5].label, "IP Stream 1 ANCILLARY Sender");
    EXPECT_STREQ(node.senders[5].description, "Ancillary data sent by IP stream 1");
    EXPECT_STREQ(node.receivers[0].description, "Video received by IP stream 1");
    EXPECT_STREQ(node.receivers[4].label, "IP Stream 1 G1 for Audio");
    EXPECT_STREQ(node.receivers[4].description, "Audio group G1 received by IP stream 1");
    EXPECT_STREQ(node.receivers[18].label, "IP Stream 4 G3 for Audio");
    EXPECT_STREQ(node.receivers[18].description, "Audio group G3 received by IP stream 4");
    EXPECT_STREQ(node.receivers[23].label, "IP Stream 4 for ANCILLARY");
    EXPECT_STREQ(node.receivers[23].description, "Ancillary data received by IP stream 4");
}

TEST(MakeRecords, BindsBothInterfacesEverywhere)
{
    const auto records = records_of(Configuration());
    const auto expect_bindings = [](const auto& resource) {
        ASSERT_EQ(resource.interface_bindings_count, 2);
        EXPECT_STREQ(resource.interface_bindings[0], "media1");
        EXPECT_STREQ(resource.interface_bindings[1], "media2");
    };
    for (const SENDER_IS04_ST& sender : records->node.senders)
        expect_bindings(sender);
    for (const RECEIVER_IS04_ST& receiver : records->node.receivers)
        expect_bindings(receiver);
}

TEST(MakeRecords, EnablesSendersAndDisablesReceivers)
{
    const auto records = records_of(Configuration());
    for (int i = 0; i < 6; ++i) {
        const CONNECTION_IS05_ST& connection = records->connections.senders[i];
        EXPECT_EQ(connection.staged.master_enable, 1);
        EXPECT_EQ(connection.active.master_enable, 1);
        EXPECT_EQ(records->node.senders[i].subscription_count, 1);
        EXPECT_EQ(records->node.senders[i].subscription[0].active, 1);
        EXPECT_STREQ(records->node.senders[i].subscription[0].peer_id, "null");
    }
    for (int i = 0; i < 24; ++i) {
        const CONNECTION_IS05_ST& connection = records->connections.receivers[i];
        EXPECT_EQ(connection.staged.master_enable, 0);
        EXPECT_EQ(connection.active.master_enable, 0);
        EXPECT_EQ(records->node.receivers[i].subscription_count, 1);
        EXPECT_EQ(records->node.receivers[i].subscription[0].active, 0);
        EXPECT_STREQ(records->node.receivers[i].subscription[0].peer_id, "null");
    }
}

TEST(MakeRecords, GivesSendersRealAddressesAtOnce)
{
    Configuration configuration;
    configuration.destinations[4] = {{"239.0.0.4", 40004}, {"239.1.0.4", 41004}};
    const auto records = records_of(configuration);
    EXPECT_EQ(ConnectionApi().make_single_senderid_active(&records->connections, 4),
              R"({"activation":{"activation_time":null,"mode":null,"requested_time":null},)"
              R"("master_enable":true,"receiver_id":null,"transport_params":[)"
              R"({"destination_ip":"239.0.0.4","destination_port":40004,"rtp_enabled":true,)"
              R"("source_ip":"192.0.2.10","source_port":40004},)"
              R"({"destination_ip":"239.1.0.4","destination_port":41004,"rtp_enabled":true,)"
              R"("source_ip":"198.51.100.10","source_port":41004}]})");
    EXPECT_EQ(ConnectionApi().make_single_senderid_staged(&records->connections, 4),
              ConnectionApi().make_single_senderid_active(&records->connections, 4));
}

TEST(MakeRecords, GivesReceiversAnInterfaceAndNothingToReceive)
{
    const auto records = records_of(Configuration());
    EXPECT_EQ(ConnectionApi().make_single_receiverid_active(&records->connections, 23),
              R"({"activation":{"activation_time":null,"mode":null,"requested_time":null},)"
              R"("master_enable":false,"sender_id":null,)"
              R"("transport_file":{"data":null,"type":null},"transport_params":[)"
              R"({"destination_port":5004,"interface_ip":"192.0.2.10","multicast_ip":null,)"
              R"("rtp_enabled":true,"source_ip":null},)"
              R"({"destination_port":5004,"interface_ip":"198.51.100.10","multicast_ip":null,)"
              R"("rtp_enabled":true,"source_ip":null}]})");
}

TEST(MakeRecords, SpellsTheGrandmasterInLowerCaseForIs04AndInUpperCaseForSdp)
{
    const auto records = records_of(Configuration());
    EXPECT_STREQ(records->node.clocks[0].gmid, "00-00-5e-ff-fe-00-53-ff");
    EXPECT_THAT(sdp_of(*records, 0),
                HasSubstr("a=ts-refclk:ptp=IEEE1588-2008:00-00-5E-FF-FE-00-53-FF:127\r\n"));
}

TEST(MakeRecords, AnInternalClockHasNothingOfPtp)
{
    Configuration configuration;
    configuration.clock.reference = ClockReference::internal;
    const auto records = records_of(configuration);
    EXPECT_THAT(NodeApi().make_self(&records->node),
                HasSubstr(R"("clocks":[{"name":"clk0","ref_type":"internal"}])"));
}

TEST(MakeRecords, InterfacesWithoutChassisShowNull)
{
    Configuration configuration;
    configuration.interfaces[0].chassis_id = std::nullopt;
    const auto records = records_of(configuration);
    EXPECT_THAT(NodeApi().make_self(&records->node),
                HasSubstr(R"("interfaces":[{"chassis_id":null,"name":"media1",)"
                          R"("port_id":"00-00-5e-00-53-01"},{"chassis_id":"00-00-5e-00-53-00",)"
                          R"("name":"media2","port_id":"00-00-5e-00-53-02"}])"));
}

TEST(MakeRecords, SdpAndFlowSayTheSameFormat)
{
    for (const Format& format : formats) {
        const auto records = records_of(with_format(format));
        const FLOW_IS04_ST& flow = records->node.flows[0];
        EXPECT_EQ(flow.frame_width, format.width);
        EXPECT_EQ(flow.frame_height, format.height);
        EXPECT_STREQ(flow.interlace_mode, format.interlace_mode);
        EXPECT_EQ(flow.grain_rate_numerator, format.numerator);
        EXPECT_EQ(flow.grain_rate_denominator, format.denominator);
        EXPECT_EQ(flow.bit_depth, 10);
        EXPECT_STREQ(flow.colorspace, "BT709");
        EXPECT_STREQ(flow.transfer_characteristic, "SDR");
        for (int sender = 0; sender < 4; ++sender)
            EXPECT_THAT(sdp_of(*records, sender), HasSubstr(format.sdp));
    }
}

TEST(MakeRecords, SdpNamesAddressesPortsAndPayloadTypesOfItsSender)
{
    Configuration configuration;
    configuration.destinations[5] = {{"239.0.0.5", 40005}, {"239.1.0.5", 41005}};
    configuration.payload_types = {101, 102, 103};
    const auto records = records_of(configuration);
    EXPECT_THAT(sdp_of(*records, 5), AllOf(HasSubstr("m=video 40005 RTP/AVP 103\r\n"
                                                     "c=IN IP4 239.0.0.5/64\r\n"),
                                           HasSubstr("m=video 41005 RTP/AVP 103\r\n"
                                                     "c=IN IP4 239.1.0.5/64\r\n"),
                                           HasSubstr("incl IN IP4 239.1.0.5 198.51.100.10\r\n")));
    EXPECT_THAT(sdp_of(*records, 4), HasSubstr("m=audio 5004 RTP/AVP 102\r\n"));
    EXPECT_THAT(sdp_of(*records, 0), HasSubstr("m=video 5004 RTP/AVP 101\r\n"));
}

TEST(MakeRecords, SdpNamesThePacketTime)
{
    Configuration configuration;
    EXPECT_THAT(sdp_of(*records_of(configuration), 4), HasSubstr("a=ptime:0.125\r\n"));
    configuration.audio.packet_time = PacketTime::ms_1;
    EXPECT_THAT(sdp_of(*records_of(configuration), 4), HasSubstr("a=ptime:1\r\n"));
    configuration.audio.packet_time = PacketTime::ms_8;
    EXPECT_THAT(sdp_of(*records_of(configuration), 4), HasSubstr("a=ptime:8\r\n"));
}

TEST(MakeRecords, SdpNamesTheCarriage)
{
    Configuration configuration;
    EXPECT_THAT(sdp_of(*records_of(configuration), 0), HasSubstr("PM=2110BPM; \r\n"));
    configuration.carriage = Carriage::st2022_6;
    configuration.payload_types.video = st2022_6_payload_type;
    const auto records = records_of(configuration);
    EXPECT_THAT(sdp_of(*records, 0),
                AllOf(HasSubstr("PM=2022-6; \r\n"), HasSubstr("RTP/AVP 98\r\n")));
    EXPECT_STREQ(records->node.flows[0].media_type, "video/raw");
}

// The instrument must be able to receive what it sends.
TEST(MakeRecords, EverySdpFileIsTakenByTheInstrumentItself)
{
    for (const Configuration& configuration : many_configurations()) {
        const auto records = records_of(configuration);
        for (int sender = 0; sender < records->node.senders_count; ++sender) {
            std::string errors;
            sdp_str found = sdp_str();
            EXPECT_EQ(ConnectionApi().analyze_sdp_file(
                          sdp_of(*records, sender), configuration.format_switching.capable,
                          current_format(configuration), configuration.format_switching.allowed,
                          &errors, &found),
                      200)
                << errors;
        }
    }
}

TEST(MakeRecords, EverySenderHasAnSdpSessionOfItsOwn)
{
    const auto records = records_of(Configuration());
    EXPECT_THAT(sdp_of(*records, 0),
                testing::StartsWith(
                    "v=0\r\no=HALDEN 3570764815171147306 1735689637 IN IP4 192.0.2.10\r\n"));
    EXPECT_THAT(sdp_of(*records, 5),
                testing::StartsWith(
                    "v=0\r\no=HALDEN 4961702248501105091 1735689637 IN IP4 192.0.2.10\r\n"));
    std::set<std::uint64_t> ids;
    for (const SdpSession& session : records->sdp_sessions)
        ids.insert(session.id);
    EXPECT_EQ(ids.size(), 6U);
}

TEST(MakeRecords, ParametersNameTheSameAddressesAsTheSenders)
{
    Configuration configuration;
    configuration.destinations[0] = {{"239.0.0.1", 40001}, {"239.1.0.1", 41001}};
    const auto records = records_of(configuration);
    const std::string parameters = Nmos().make_param_json(&records->settings, 0);
    EXPECT_THAT(parameters,
                AllOf(HasSubstr(R"("pri_video_dst_ip":"239.0.0.1")"),
                      HasSubstr(R"("sec_video_dst_ip":"239.1.0.1")"),
                      HasSubstr(R"("pri_video_dst_port":40001)"),
                      HasSubstr(R"("sec_video_dst_port":41001)"),
                      HasSubstr(R"("pri_video_src_ip":"192.0.2.10")"),
                      HasSubstr(R"("sec_anc_src_ip":"198.51.100.10")"),
                      HasSubstr(R"("pri_audio_dst_ip":"233.252.0.15")"),
                      HasSubstr(R"("sec_audio_dst_port":5004)"),
                      HasSubstr(R"("pri_anc_dst_ip":"233.252.0.16")"),
                      HasSubstr(R"("ptp_domain_num_pri":127,"ptp_domain_num_sec":127)")));
    EXPECT_EQ(records->settings.pri_video_addresses[3].dst_ip[3], 14);
    EXPECT_EQ(records->settings.sec_video_dst_port[12], 5004 & 0xff);
    EXPECT_EQ(records->settings.sec_video_dst_port[13], 5004 >> 8);
}

TEST(MakeRecords, VideoOnlyHasNoOtherSenderSourceOrFlow)
{
    Configuration configuration;
    configuration.streams.sender_essences = Essences::video_only;
    const auto records = records_of(configuration);
    EXPECT_EQ(records->node.sources_count, 1);
    EXPECT_EQ(records->node.flows_count, 1);
    EXPECT_EQ(records->node.senders_count, 4);
    EXPECT_EQ(records->node.devices[0].sender_ids_count, 4);
    EXPECT_EQ(records->node.receivers_count, 24);
}

TEST(CurrentFormat, TellsWhetherTheInstrumentIsSetTo4K)
{
    Configuration configuration;
    EXPECT_EQ(current_format(configuration), 3);
    configuration.video.lines = PictureSize::lines_720;
    EXPECT_EQ(current_format(configuration), 3);
    configuration.video.lines = PictureSize::lines_2160;
    EXPECT_EQ(current_format(configuration), 9);
}

TEST(SetText, WritesTheTextAndZerosBehindIt)
{
    char field[6] = {'x', 'x', 'x', 'x', 'x', 'x'};
    set_text(field, "ab");
    EXPECT_EQ(std::string(field, 6), std::string("ab\0\0\0\0", 6));
    EXPECT_EQ(text_of(field), "ab");
}

TEST(SetText, RefusesATextWithoutRoom)
{
    char field[4] = {'a', 'b', 'c', 'd'};
    EXPECT_EQ(text_of(field), "abcd");
    EXPECT_THROW(set_text(field, "1234"), std::length_error);
    EXPECT_EQ(text_of(field), "abcd");
    set_text(field, "123");
    EXPECT_STREQ(field, "123");
}

} // namespace
} // namespace nmos_instrument::host
