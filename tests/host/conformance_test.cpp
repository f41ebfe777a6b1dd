// SPDX-License-Identifier: Apache-2.0

#include "conformance/conformance.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "records/fill_records.h"
#include "records/record_text.h"

namespace nmos_instrument::host {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

Configuration carried_by_2022_6()
{
    Configuration configuration;
    configuration.carriage = Carriage::st2022_6;
    configuration.payload_types.video = st2022_6_payload_type;
    return configuration;
}

/// The records of an instrument, and what is made of its texts.
struct Shown
{
    explicit Shown(const Configuration& its, Presentation presentation = Presentation::conforming)
        : configuration(its),
          records(make_records(its, NodeAddress(), {1000, 0})),
          conformance(presentation, its, records->node)
    {}

    NMOS_IS04_ST* node() const { return &records->node; }
    CONNECTION_HALF_IS05_ST& active(std::size_t sender) const
    {
        return records->connections.senders[sender].active;
    }

    std::string sources() const { return conformance.source(NodeApi().make_sources(node())); }
    std::string flows() const { return conformance.flow(NodeApi().make_flows(node())); }
    std::string receivers() const
    {
        return conformance.receiver(NodeApi().make_receivers(node(), 0, 2));
    }
    std::string active_sender(int sender) const
    {
        return conformance.active_sender(
            ConnectionApi().make_single_senderid_active(&records->connections, sender));
    }
    std::string library_sdp(std::size_t sender) const
    {
        records->sdp_sessions[sender] = {7, 8};
        set_sdp_session(*records, sender);
        return ConnectionApi().make_single_senderid_sdp(
            &records->connections, static_cast<int>(sender), &records->settings);
    }
    std::string sdp(std::size_t sender) const
    {
        return conformance.sdp(library_sdp(sender), essence_of_sender(sender), active(sender));
    }

    Configuration configuration;
    std::unique_ptr<Records> records;
    Conformance conformance;
};

/// All of `text` but what the test names has to be as the library has it.
std::string with(std::string text, std::string_view part, std::string_view instead)
{
    const std::size_t at = text.find(part);
    EXPECT_NE(at, std::string::npos) << part;
    return at == std::string::npos ? text : text.replace(at, part.size(), instead);
}

TEST(SourceBody, HasTheGrainRateOfItsFlow)
{
    Configuration configuration;
    configuration.video.frame_rate = FrameRate::fps_50;
    const Shown shown(configuration);
    const json sources = json::parse(shown.sources());
    const json rate = {{"numerator", 50}, {"denominator", 1}};
    EXPECT_EQ(sources[0]["grain_rate"], rate);
    EXPECT_EQ(sources[1]["grain_rate"], rate);
    EXPECT_FALSE(sources[2].contains("grain_rate")); // like its flow
    EXPECT_FALSE(json::parse(shown.flows())[2].contains("grain_rate"));
}

TEST(SourceBody, NothingElseChanges)
{
    const Shown shown{Configuration()};
    const std::string video = NodeApi().make_sourceid(shown.node(), 0);
    EXPECT_EQ(shown.conformance.source(video),
              with(video, R"("urn:x-nmos:format:video",)",
                   R"("urn:x-nmos:format:video",)"
                   R"("grain_rate":{"denominator":1001,"numerator":60000},)"));
    const std::string ancillary = NodeApi().make_sourceid(shown.node(), 2);
    EXPECT_EQ(shown.conformance.source(ancillary), ancillary);
}

TEST(SourceBody, AudioHasSixteenChannels)
{
    const json channels = json::parse(Shown{Configuration()}.sources())[1]["channels"];
    EXPECT_EQ(channels, json::parse(R"([
        {"label": "Channel 1"}, {"label": "Channel 2"}, {"label": "Channel 3"},
        {"label": "Channel 4"}, {"label": "Channel 5"}, {"label": "Channel 6"},
        {"label": "Channel 7"}, {"label": "Channel 8"}, {"label": "Channel 9"},
        {"label": "Channel 10"}, {"label": "Channel 11"}, {"label": "Channel 12"},
        {"label": "Channel 13"}, {"label": "Channel 14"}, {"label": "Channel 15"},
        {"label": "Channel 16"}])"));
}

TEST(SourceBody, ARegistrationIsCorrectedAlike)
{
    const Shown shown{carried_by_2022_6()};
    const auto registered = [&](int source) {
        return json::parse(shown.conformance.source(
            RegistrationApi().make_resource_sourceid(shown.node(), source)));
    };
    const json sources = json::parse(shown.sources());
    for (std::size_t i = 0; i < source_count; ++i)
        EXPECT_EQ(registered(static_cast<int>(i)),
                  (json{{"type", "source"}, {"data", sources[i]}}));
    EXPECT_EQ(sources[0]["format"], "urn:x-nmos:format:mux");
}

TEST(FlowBody, ColorDifferenceHasHalfTheWidth)
{
    Configuration configuration;
    configuration.video.lines = PictureSize::lines_720;
    const Shown shown(configuration);
    const std::string flow = NodeApi().make_flowid(shown.node(), 0);
    EXPECT_EQ(shown.conformance.flow(flow),
              with(flow,
                   R"([{"bit_depth":10,"height":720,"name":"Y","width":1280},)"
                   R"({"bit_depth":10,"height":720,"name":"Cb","width":1280},)"
                   R"({"bit_depth":10,"height":720,"name":"Cr","width":1280}])",
                   R"([{"bit_depth":10,"height":720,"name":"Y","width":1280},)"
                   R"({"bit_depth":10,"height":720,"name":"Cb","width":640},)"
                   R"({"bit_depth":10,"height":720,"name":"Cr","width":640}])"));
    for (const int other : {1, 2}) {
        const std::string text = NodeApi().make_flowid(shown.node(), other);
        EXPECT_EQ(shown.conformance.flow(text), text);
    }
}

TEST(FlowBody, VideoIn2022_6IsMux)
{
    const Shown shown{carried_by_2022_6()};
    FLOW_IS04_ST& flow = shown.node()->flows[0];
    set_text(flow.id, "7ecfe8a1-4a49-5fe1-8d3a-12d11b388d4c");
    set_text(flow.source_id, "7f35f96f-ba60-5086-81da-d9fcc4a5a99c");
    set_text(flow.device_id, "663a44cc-81c6-5258-bcff-d40438c7c00d");
    const std::string mux = R"({"description":"Video as it is sent",)"
                            R"("device_id":"663a44cc-81c6-5258-bcff-d40438c7c00d",)"
                            R"("format":"urn:x-nmos:format:mux",)"
                            R"("grain_rate":{"denominator":1001,"numerator":60000},)"
                            R"("id":"7ecfe8a1-4a49-5fe1-8d3a-12d11b388d4c",)"
                            R"("label":"Flow for Video",)"
                            R"("media_type":"video/SMPTE2022-6","parents":[],)"
                            R"("source_id":"7f35f96f-ba60-5086-81da-d9fcc4a5a99c",)"
                            R"("tags":{},"version":"1000:0"})";
    EXPECT_EQ(shown.conformance.flow(NodeApi().make_flowid(shown.node(), 0)), mux);
    // The list, where the other flows stay; and a registration, which escapes its slashes.
    const json library = json::parse(NodeApi().make_flows(shown.node()));
    EXPECT_EQ(json::parse(shown.flows()), json::array({json::parse(mux), library[1], library[2]}));
    EXPECT_EQ(shown.conformance.flow(RegistrationApi().make_resource_flowid(shown.node(), 0)),
              R"({"data":)" + with(mux, "video/SMPTE", "video\\/SMPTE") + R"(,"type":"flow"})");
}

TEST(ReceiverBody, VideoIn2022_6IsMux)
{
    const Shown shown{carried_by_2022_6()};
    const json receivers = json::parse(shown.receivers());
    json expected = json::parse(NodeApi().make_receivers(shown.node(), 0, 2));
    ASSERT_EQ(expected.size(), 24U);
    for (std::size_t i = 0; i < stream_count; ++i) {
        expected[i]["format"] = "urn:x-nmos:format:mux";
        expected[i]["caps"]["media_types"] = {"video/SMPTE2022-6"};
    }
    EXPECT_EQ(receivers, expected);
    EXPECT_EQ(json::parse(shown.conformance.receiver(
                  RegistrationApi().make_resource_receiverid(shown.node(), 0))),
              (json{{"type", "receiver"}, {"data", expected[0]}}));
    const Shown st2110{Configuration()};
    EXPECT_EQ(st2110.receivers(), NodeApi().make_receivers(st2110.node(), 0, 2));
}

// What is corrected is not found in texts that people write.
TEST(Labels, AreNeverCorrected)
{
    constexpr std::string_view odd = R"(","format":"urn:x-nmos:format:video","id":)";
    Configuration configuration = carried_by_2022_6();
    configuration.labels.sources[2] = odd;
    configuration.labels.flows[2] = odd;
    configuration.labels.receivers[0] = odd;
    const Shown shown(configuration);
    EXPECT_EQ(json::parse(shown.sources())[2],
              json::parse(NodeApi().make_sourceid(shown.node(), 2)));
    EXPECT_EQ(json::parse(shown.flows())[2], json::parse(NodeApi().make_flowid(shown.node(), 2)));
    EXPECT_EQ(json::parse(shown.receivers())[0]["label"], odd);
}

TEST(ActiveSender, SendsFromTheActivePort)
{
    const Shown shown{Configuration()};
    CONNECTION_IS05_ST& sender = shown.records->connections.senders[1];
    sender.active.transport_params[1].destination_port = 7000;
    sender.staged.transport_params[0].destination_port = 6000;
    EXPECT_EQ(shown.active_sender(1),
              R"({"activation":{"activation_time":null,"mode":null,"requested_time":null},)"
              R"("master_enable":true,"receiver_id":null,"transport_params":[)"
              R"({"destination_ip":"233.252.0.12","destination_port":5004,"rtp_enabled":true,)"
              R"("source_ip":"192.0.2.10","source_port":5004},)"
              R"({"destination_ip":"233.252.0.22","destination_port":7000,"rtp_enabled":true,)"
              R"("source_ip":"198.51.100.10","source_port":7000}]})");
    sender.active.leg_count = 0;
    EXPECT_THAT(shown.active_sender(1), HasSubstr(R"("transport_params":[])"));
}

TEST(SdpText, TwoMulticastLegsOnAPtpClockAreLeftAlone)
{
    const Shown shown{Configuration()};
    for (std::size_t sender = 0; sender < sender_count; ++sender)
        EXPECT_EQ(shown.sdp(sender), shown.library_sdp(sender));
}

TEST(SdpText, AnInternalClockIsNamedByItsInterface)
{
    Configuration configuration;
    configuration.clock.reference = ClockReference::internal;
    configuration.interfaces[1].mac = "00-00-5e-00-53-ab";
    const Shown shown(configuration);
    EXPECT_EQ(shown.sdp(5), "v=0\r\n"
                            "o=HALDEN 7 8 IN IP4 192.0.2.10\r\n"
                            "s=QX3100 OPT21/22\r\n"
                            "t=0 0\r\n"
                            "a=group:DUP primary secondary\r\n"
                            "m=video 5004 RTP/AVP 100\r\n"
                            "c=IN IP4 233.252.0.16/64\r\n"
                            "a=rtpmap:100 smpte291/90000\r\n"
                            "a=source-filter: incl IN IP4 233.252.0.16 192.0.2.10\r\n"
                            "a=ts-refclk:localmac=00-00-5E-00-53-01\r\n"
                            "a=mediaclk:direct=0\r\n"
                            "a=mid:primary\r\n"
                            "m=video 5004 RTP/AVP 100\r\n"
                            "c=IN IP4 233.252.0.26/64\r\n"
                            "a=rtpmap:100 smpte291/90000\r\n"
                            "a=source-filter: incl IN IP4 233.252.0.26 198.51.100.10\r\n"
                            "a=ts-refclk:localmac=00-00-5E-00-53-AB\r\n"
                            "a=mediaclk:direct=0\r\n"
                            "a=mid:secondary\r\n");
}

TEST(SdpText, A2022_6FileSaysSo)
{
    const Shown shown{carried_by_2022_6()};
    EXPECT_EQ(shown.sdp(0), "v=0\r\n"
                            "o=HALDEN 7 8 IN IP4 192.0.2.10\r\n"
                            "s=QX3100 OPT21/22\r\n"
                            "t=0 0\r\n"
                            "a=group:DUP primary secondary\r\n"
                            "m=video 5004 RTP/AVP 98\r\n"
                            "c=IN IP4 233.252.0.11/64\r\n"
                            "a=rtpmap:98 SMPTE2022-6/27000000\r\n"
                            "a=fmtp:98 TP=2110TPN\r\n"
                            "a=source-filter: incl IN IP4 233.252.0.11 192.0.2.10\r\n"
                            "a=ts-refclk:ptp=IEEE1588-2008:00-00-5E-FF-FE-00-53-FF:127\r\n"
                            "a=mediaclk:direct=0\r\n"
                            "a=mid:primary\r\n"
                            "m=video 5004 RTP/AVP 98\r\n"
                            "c=IN IP4 233.252.0.21/64\r\n"
                            "a=fmtp:98 TP=2110TPN\r\n"
                            "a=rtpmap:98 SMPTE2022-6/27000000\r\n"
                            "a=source-filter: incl IN IP4 233.252.0.21 198.51.100.10\r\n"
                            "a=ts-refclk:ptp=IEEE1588-2008:00-00-5E-FF-FE-00-53-FF:127\r\n"
                            "a=mediaclk:direct=0\r\n"
                            "a=mid:secondary\r\n");
    for (const std::size_t other : {audio_sender, ancillary_sender})
        EXPECT_EQ(shown.sdp(other), shown.library_sdp(other));
}

constexpr const char* second_audio_leg =
    "v=0\r\n"
    "o=HALDEN 7 8 IN IP4 198.51.100.10\r\n"
    "s=QX3100 OPT21/22\r\n"
    "t=0 0\r\n"
    "m=audio 5004 RTP/AVP 97\r\n"
    "c=IN IP4 233.252.0.25/64\r\n"
    "a=rtpmap:97 L24/48000/16\r\n"
    "a=ptime:0.125\r\n"
    "a=source-filter: incl IN IP4 233.252.0.25 198.51.100.10\r\n"
    "a=ts-refclk:ptp=IEEE1588-2008:00-00-5E-FF-FE-00-53-FF:127\r\n"
    "a=mediaclk:direct=0\r\n";

TEST(SdpText, DescribesTheLegsThatAreOn)
{
    const Shown shown{Configuration()};
    CONNECTION_HALF_IS05_ST& active = shown.active(audio_sender);
    active.transport_params[0].rtp_enabled = 0;
    EXPECT_EQ(shown.sdp(audio_sender), second_audio_leg);

    active.transport_params[0].rtp_enabled = 1;
    active.transport_params[1].rtp_enabled = 0;
    const std::string first = "v=0\r\n"
                              "o=HALDEN 7 8 IN IP4 192.0.2.10\r\n"
                              "s=QX3100 OPT21/22\r\n"
                              "t=0 0\r\n"
                              "m=audio 5004 RTP/AVP 97\r\n"
                              "c=IN IP4 233.252.0.15/64\r\n"
                              "a=rtpmap:97 L24/48000/16\r\n"
                              "a=ptime:0.125\r\n"
                              "a=source-filter: incl IN IP4 233.252.0.15 192.0.2.10\r\n"
                              "a=ts-refclk:ptp=IEEE1588-2008:00-00-5E-FF-FE-00-53-FF:127\r\n"
                              "a=mediaclk:direct=0\r\n";
    EXPECT_EQ(shown.sdp(audio_sender), first);

    // Without a second leg its switch does not matter.
    active.transport_params[1].rtp_enabled = 1;
    active.leg_count = 1;
    EXPECT_EQ(shown.sdp(audio_sender), first);
    active.transport_params[0].rtp_enabled = 0;
    EXPECT_EQ(shown.sdp(audio_sender), first);

    active.leg_count = 2;
    active.transport_params[1].rtp_enabled = 0;
    EXPECT_EQ(shown.sdp(audio_sender), shown.library_sdp(audio_sender));
}

TEST(SdpText, AUnicastDestinationHasNoTtlAndNoFilter)
{
    const Shown shown{Configuration()};
    set_text(shown.active(ancillary_sender).transport_params[1].destination_ip, "203.0.113.9");
    EXPECT_EQ(shown.sdp(ancillary_sender),
              "v=0\r\n"
              "o=HALDEN 7 8 IN IP4 192.0.2.10\r\n"
              "s=QX3100 OPT21/22\r\n"
              "t=0 0\r\n"
              "a=group:DUP primary secondary\r\n"
              "m=video 5004 RTP/AVP 100\r\n"
              "c=IN IP4 233.252.0.16/64\r\n"
              "a=rtpmap:100 smpte291/90000\r\n"
              "a=source-filter: incl IN IP4 233.252.0.16 192.0.2.10\r\n"
              "a=ts-refclk:ptp=IEEE1588-2008:00-00-5E-FF-FE-00-53-FF:127\r\n"
              "a=mediaclk:direct=0\r\n"
              "a=mid:primary\r\n"
              "m=video 5004 RTP/AVP 100\r\n"
              "c=IN IP4 203.0.113.9\r\n"
              "a=rtpmap:100 smpte291/90000\r\n"
              "a=ts-refclk:ptp=IEEE1588-2008:00-00-5E-FF-FE-00-53-FF:127\r\n"
              "a=mediaclk:direct=0\r\n"
              "a=mid:secondary\r\n");
}

TEST(AsIs, EveryTextIsTheLibrarys)
{
    Configuration configuration = carried_by_2022_6();
    configuration.clock.reference = ClockReference::internal;
    const Shown shown(configuration, Presentation::as_is);
    EXPECT_EQ(shown.sources(), NodeApi().make_sources(shown.node()));
    EXPECT_EQ(shown.flows(), NodeApi().make_flows(shown.node()));
    EXPECT_EQ(shown.receivers(), NodeApi().make_receivers(shown.node(), 0, 2));
    shown.records->connections.senders[0].staged.transport_params[0].destination_port = 6000;
    EXPECT_THAT(shown.active_sender(0), HasSubstr(R"("source_port":6000)"));
    shown.active(0).transport_params[0].rtp_enabled = 0;
    EXPECT_EQ(shown.sdp(0), shown.library_sdp(0));
    EXPECT_THAT(shown.sdp(0), Not(HasSubstr("SMPTE2022-6")));
}

} // namespace
} // namespace nmos_instrument::host
