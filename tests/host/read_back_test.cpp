// SPDX-License-Identifier: Apache-2.0

#include "records/read_back.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "records/record_text.h"

namespace nmos_instrument::host {
namespace {

using testing::HasSubstr;

constexpr TaiTime now = {1735689637, 25};

std::unique_ptr<Records> records_of(const Configuration& configuration)
{
    return make_records(configuration, {"192.0.2.7", 8080}, now);
}

/// What no record says, and nothing else, comes from here.
Configuration other_rest()
{
    Configuration rest;
    rest.serial_number = "other";
    rest.node = {"other", "other", "other"};
    rest.server.port = 1234;
    rest.registration.enabled = false;
    rest.advertisement.when = Advertise::never;
    rest.interfaces = {{{"other1", "00-00-00-00-00-01", "other", "203.0.113.1"},
                        {"other2", "00-00-00-00-00-02", "other", "203.0.113.2"}}};
    rest.clock = {"clk9", ClockReference::ptp, "11-11-11-11-11-11-11-11", true, true, 1};
    rest.format_switching = {false, false};
    rest.payload_types = {111, 112, 113};
    rest.video.lines = PictureSize::lines_2160;
    rest.video.frame_rate = FrameRate::fps_60;
    rest.audio.packet_time = PacketTime::ms_8;
    rest.labels.device = "other";
    rest.labels.senders.fill("other");
    rest.labels.receivers.fill("other");
    rest.labels.sources.fill("other");
    rest.labels.flows.fill("other");
    rest.destinations.fill({{"239.9.9.9", 9}, {"239.9.9.9", 9}});
    return rest;
}

/// `configuration` with what no record says from `rest`.
Configuration with_rest(Configuration configuration, const Configuration& rest)
{
    configuration.serial_number = rest.serial_number;
    configuration.server = rest.server;
    configuration.registration = rest.registration;
    configuration.advertisement = rest.advertisement;
    configuration.format_switching = rest.format_switching;
    if (configuration.clock.reference == ClockReference::internal) {
        configuration.clock.traceable = rest.clock.traceable;
        configuration.clock.locked = rest.clock.locked;
    }
    if (configuration.streams.sender_essences == Essences::video_only) {
        for (std::size_t i = 1; i < 3; ++i) {
            configuration.labels.sources[i] = rest.labels.sources[i];
            configuration.labels.flows[i] = rest.labels.flows[i];
        }
        for (std::size_t i = 4; i < 6; ++i) {
            configuration.labels.senders[i] = rest.labels.senders[i];
            configuration.destinations[i] = rest.destinations[i];
        }
    }
    return configuration;
}

void expect_the_way_back(const Configuration& configuration)
{
    const auto records = records_of(configuration);
    EXPECT_EQ(configuration_of(*records, other_rest()), with_rest(configuration, other_rest()));
}

TEST(ReadBack, GivesTheConfigurationOfEachExample)
{
    for (const char* const name : {"default.json", "single-stream-video.json", "st-2022-6.json",
                                   "video-senders-only.json"}) {
        SCOPED_TRACE(name);
        expect_the_way_back(load_configuration(std::string(EXAMPLES_DIRECTORY) + '/' + name));
    }
}

TEST(ReadBack, GivesEveryFormat)
{
    const FrameRate progressive[] = {FrameRate::fps_60, FrameRate::fps_59_94, FrameRate::fps_50};
    const FrameRate interlaced[] = {FrameRate::fps_30, FrameRate::fps_29_97, FrameRate::fps_25};
    Configuration configuration;
    for (const PictureSize lines :
         {PictureSize::lines_2160, PictureSize::lines_1080, PictureSize::lines_720}) {
        for (const FrameRate rate : progressive) {
            configuration.video.lines = lines;
            configuration.video.frame_rate = rate;
            expect_the_way_back(configuration);
        }
    }
    configuration.video.lines = PictureSize::lines_1080;
    configuration.video.scan = Scan::interlaced;
    for (const FrameRate rate : interlaced) {
        configuration.video.frame_rate = rate;
        expect_the_way_back(configuration);
    }
}

TEST(ReadBack, GivesEverySelection)
{
    for (const SenderStreams senders : {SenderStreams::all, SenderStreams::stream_1}) {
        for (const Essences sent : {Essences::all, Essences::video_only}) {
            for (const Essences received : {Essences::all, Essences::video_only}) {
                for (const AudioGroups groups :
                     {AudioGroups::g1, AudioGroups::g1_and_g2, AudioGroups::all_four}) {
                    Configuration configuration;
                    configuration.streams = {senders, sent, received, groups};
                    expect_the_way_back(configuration);
                }
            }
        }
    }
}

// Each value by hand, of records that are filled by hand.
TEST(ReadBack, SaysWhatTheRecordsSay)
{
    const auto records = records_of(Configuration());
    NMOS_IS04_ST& node = records->node;
    set_text(node.label, "Analyser 3");
    set_text(node.description, "In rack 12");
    set_text(node.hostname, "analyser-3");
    set_text(node.clocks[0].gmid, "ac-de-48-ff-fe-12-34-56");
    set_text(records->connections.ptp_grandmaster_id, "AC-DE-48-FF-FE-12-34-56");
    node.clocks[0].traceable = 0;
    node.clocks[0].locked = 0;
    set_text(node.interfaces[1].port_id, "ac-de-48-00-00-02");
    set_text(node.interfaces[1].chassis_id, "null");
    FLOW_IS04_ST& flow = node.flows[0];
    flow.frame_width = 1280;
    flow.frame_height = 720;
    flow.grain_rate_numerator = 50;
    flow.grain_rate_denominator = 1;
    records->settings.sdp_video_system = 4;
    records->settings.sdp_video_frame_rate = 2;
    records->settings.sdp_audio_ptime = 1;
    records->settings.sdp_rtp_payload_video = 101;
    records->settings.sdp_rtp_payload_audio = 102;
    records->settings.sdp_rtp_payload_anc = 103;
    records->settings.ptp_domain_num_pri = 5;
    records->selection = {1, 1, 0};
    set_text(node.devices[0].label, "Option");
    set_text(node.sources[2].label, "Source 3");
    set_text(node.flows[1].label, "Flow 2");
    set_text(node.senders[5].label, "Sender 6");
    set_text(node.receivers[23].label, "Receiver 24");
    CONNECTION_LEG_IS05_ST& leg = records->connections.senders[3].active.transport_params[1];
    set_text(leg.destination_ip, "239.1.2.3");
    leg.destination_port = 20000;

    const Configuration found = configuration_of(*records, Configuration());
    EXPECT_EQ(found.node, (NodeSettings{"Analyser 3", "In rack 12", "analyser-3"}));
    EXPECT_EQ(found.clock.grandmaster, "ac-de-48-ff-fe-12-34-56");
    EXPECT_FALSE(found.clock.traceable);
    EXPECT_FALSE(found.clock.locked);
    EXPECT_EQ(found.clock.domain, 5);
    EXPECT_EQ(found.interfaces[1].mac, "ac-de-48-00-00-02");
    EXPECT_EQ(found.interfaces[1].chassis_id, std::nullopt);
    EXPECT_EQ(found.interfaces[0].address, "192.0.2.10");
    EXPECT_EQ(found.interfaces[1].address, "198.51.100.10");
    EXPECT_EQ(found.video.lines, PictureSize::lines_720);
    EXPECT_EQ(found.video.scan, Scan::progressive);
    EXPECT_EQ(found.video.frame_rate, FrameRate::fps_50);
    EXPECT_EQ(found.audio.packet_time, PacketTime::ms_1);
    EXPECT_EQ(found.payload_types, (PayloadTypes{101, 102, 103}));
    EXPECT_EQ(found.carriage, Carriage::st2110);
    EXPECT_EQ(found.streams, (StreamSettings{SenderStreams::stream_1, Essences::all,
                                             Essences::video_only, AudioGroups::g1_and_g2}));
    EXPECT_EQ(found.labels.device, "Option");
    EXPECT_EQ(found.labels.sources[2], "Source 3");
    EXPECT_EQ(found.labels.flows[1], "Flow 2");
    EXPECT_EQ(found.labels.senders[5], "Sender 6");
    EXPECT_EQ(found.labels.receivers[23], "Receiver 24");
    EXPECT_EQ(found.destinations[3].primary, (Destination{"233.252.0.14", 5004}));
    EXPECT_EQ(found.destinations[3].secondary, (Destination{"239.1.2.3", 20000}));
}

TEST(ReadBack, TakesBothCodesFor3840x2160)
{
    Configuration configuration;
    configuration.video.lines = PictureSize::lines_2160;
    const auto records = records_of(configuration);
    records->settings.sdp_video_system = 1;
    EXPECT_EQ(configuration_of(*records, Configuration()).video.lines, PictureSize::lines_2160);
}

TEST(ReadBack, InSt2022_6CarriageVideoIs98)
{
    const auto records = records_of(Configuration());
    records->settings.sdp_st2110_mode = 0;
    records->settings.sdp_rtp_payload_video = 0; // nobody reads it
    const Configuration found = configuration_of(*records, Configuration());
    EXPECT_EQ(found.carriage, Carriage::st2022_6);
    EXPECT_EQ(found.payload_types.video, 98);
}

// "auto" is resolved when it becomes active; an idle receiver may have no interface yet.
TEST(ReadBack, AddressesThatAreNotKnownYetAreNoFindings)
{
    const auto records = records_of(Configuration());
    set_text(records->connections.senders[0].staged.transport_params[0].source_ip, "auto");
    set_text(records->connections.receivers[0].active.transport_params[1].interface_ip, "null");
    EXPECT_EQ(configuration_of(*records, Configuration()), Configuration());
}

// The senders 2 to 4 of a node that sends one stream.
TEST(ReadBack, HiddenSlotsMayBeCleared)
{
    const auto records = records_of(Configuration());
    records->selection = {0, 2, 0};
    for (int i = 1; i < 4; ++i) {
        records->node.senders[i] = SENDER_IS04_ST();
        records->connections.senders[i] = CONNECTION_IS05_ST();
        set_text(records->node.devices[0].senders[i], "");
    }
    Configuration rest;
    rest.labels.senders[2] = "not there";
    const Configuration found = configuration_of(*records, rest);
    EXPECT_EQ(found.streams.senders, SenderStreams::stream_1);
    EXPECT_EQ(found.streams.sender_essences, Essences::all);
    EXPECT_EQ(found.labels.senders[2], "not there");
    EXPECT_EQ(found.destinations[1],
              (SenderDestinations{{"233.252.0.12", 5004}, {"233.252.0.22", 5004}}));
}

TEST(ReadBack, SlotsThatAreShownMayNot)
{
    const auto records = records_of(Configuration());
    records->node.senders[1] = SENDER_IS04_ST();
    try {
        configuration_of(*records, Configuration());
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_THAT(error.what(),
                    HasSubstr("records: node.senders[1].id is \"\", it must be a UUID"));
    }
}

struct Refused
{
    std::function<void(Records&)> change;
    const char* finding;
};

TEST(ReadBack, RefusesWhatTheHostCannot)
{
    const Refused table[] = {
        {[](Records& r) { r.settings.sdp_video_system = 7; },
         "records: settings.sdp_video_system is 7, allowed are 0 (2160 lines), 2 (1080 lines), 4 "
         "(720 "
         "lines)"},
        {[](Records& r) { r.settings.sdp_video_frame_rate = 3; },
         "records: settings.sdp_video_frame_rate is 3, allowed are 0 (60), 1 (59.94), 2 (50), 10 "
         "(30), 11 "
         "(29.97), 12 (25)"},
        {[](Records& r) { r.settings.sdp_audio_ptime = 4; },
         "records: settings.sdp_audio_ptime is 4, allowed are 2 (0.125 ms), 1 (1 ms), 0 (8 ms)"},
        {[](Records& r) {
             r.settings.sdp_video_system = 4;
             r.settings.sdp_video_frame_rate = 12;
         },
         "records: settings.sdp_video_frame_rate is 12, which is interlaced, allowed with 720 "
         "lines are 0, "
         "1, 2"},
        {[](Records& r) { r.node.flows[0].frame_width = 1280; },
         "records: node.flows[0].frame_width is 1280, the SDP file says 1920, see "
         "settings.sdp_video_system"},
        {[](Records& r) { r.node.flows[0].grain_rate_numerator = 50; },
         "records: node.flows[0].grain_rate_numerator is 50, over 1001: the SDP file says "
         "60000/1001, see settings.sdp_video_frame_rate"},
        {[](Records& r) { set_text(r.node.flows[0].interlace_mode, "interlaced_tff"); },
         "records: node.flows[0].interlace_mode is \"interlaced_tff\", the SDP file says "
         "progressive, see settings.sdp_video_frame_rate"},
        {[](Records& r) {
             set_text(r.connections.senders[2].active.transport_params[1].source_ip, "null");
         },
         "records: connections.senders[2].active.transport_params[1].source_ip is \"null\", "
         "allowed is the "
         "address of its interface"},
        {[](Records& r) { set_text(r.node.clocks[0].gmid, "00-00-5e-ff-fe-00-53-01"); },
         "records: connections.ptp_grandmaster_id is \"00-00-5E-FF-FE-00-53-FF\", no PTP clock of "
         "the node has this gmid"},
    };
    for (const Refused& row : table) {
        const auto records = records_of(Configuration());
        row.change(*records);
        try {
            configuration_of(*records, Configuration());
            ADD_FAILURE() << "not refused: " << row.finding;
        } catch (const std::invalid_argument& error) {
            if (row.finding != nullptr) {
                EXPECT_THAT(error.what(), testing::StartsWith(row.finding));
            } else {
                EXPECT_THAT(error.what(), HasSubstr("records: node.senders[0].flow_id is \""));
                EXPECT_THAT(error.what(), HasSubstr("\", the id of node.flows[1]"));
            }
        }
    }
}

TEST(ReadBack, TellsAllFindingsAtOnce)
{
    const auto records = records_of(Configuration());
    records->settings.sdp_audio_ptime = 4;
    records->node.flows[0].bit_depth = 12.5;
    EXPECT_THROW(
        {
            try {
                configuration_of(*records, Configuration());
            } catch (const std::invalid_argument& error) {
                EXPECT_THAT(error.what(), HasSubstr("flows[0].bit_depth is 12.5"));
                throw;
            }
        },
        std::invalid_argument);
    records->node.flows[0].bit_depth = 12;
    try {
        configuration_of(*records, Configuration());
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(
            error.what(),
            "records: node.flows[0].bit_depth is 12, allowed is 10, as all SDP files say\n"
            "records: settings.sdp_audio_ptime is 4, allowed are 2 (0.125 ms), 1 (1 ms), 0 (8 ms)");
    }
}

} // namespace
} // namespace nmos_instrument::host
