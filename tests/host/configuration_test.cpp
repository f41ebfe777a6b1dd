// SPDX-License-Identifier: Apache-2.0

#include "configuration/configuration.h"

#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

namespace nmos_instrument::host {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

Configuration parsed(std::string_view text)
{
    return parse_configuration(text, "file");
}

/// What is said against a configuration; empty when nothing is.
std::vector<std::string> findings_in(std::string_view text)
{
    try {
        parsed(text);
        return {};
    } catch (const ConfigurationRefused& refused) {
        return refused.findings();
    }
}

TEST(Configuration, NeedsNothing)
{
    EXPECT_EQ(parsed("{}"), Configuration());
    EXPECT_EQ(parsed("// nothing\n{}\n"), Configuration());
}

TEST(Configuration, ChangesWhatIsNamedAndNothingElse)
{
    Configuration expected;
    expected.serial_number = "7";
    expected.node.label = "Studio 2";
    expected.server = {"eth0", "192.0.2.7", 8080, 80};
    expected.registration = {
        false,
        {"http://registry.example:8080/x-nmos/registration/v1.2",
         "https://[2001:db8::1]/x-nmos/registration/v1.2"},
        "/etc/ca.pem",
        "example.com",
        true,
    };
    expected.advertisement = {"/etc/avahi/services/nmos-node.service", Advertise::always};
    expected.interfaces[1] = {"eth1", "00-00-5e-00-53-77", std::nullopt, "203.0.113.9"};
    expected.clock.reference = ClockReference::internal;
    expected.clock.name = "clk7";
    expected.streams = {SenderStreams::stream_1, Essences::video_only, Essences::video_only,
                        AudioGroups::g1_and_g2};
    expected.video.lines = PictureSize::lines_720;
    expected.video.frame_rate = FrameRate::fps_50;
    expected.audio.packet_time = PacketTime::ms_8;
    expected.payload_types = {127, 126, 125};
    expected.format_switching = {false, false};
    expected.destinations[5].secondary = {"239.1.2.3", 65535};
    expected.labels.device = "";
    expected.labels.flows[2] = "Data";

    EXPECT_EQ(parsed(R"({
        "serial_number": "7",
        "node": { "label": "Studio 2" },
        "server": { "listen": "eth0", "address": "192.0.2.7", "port": 8080,
                    "advertised_port": 80 },
        "registration": {
            "enabled": false,
            "registries": [ "http://registry.example:8080", "HTTPS://[2001:db8::1]/" ],
            "ca_file": "/etc/ca.pem", "dns_domain": "example.com.",
            "development_registries": true
        },
        "advertisement": { "service_file": "/etc/avahi/services/nmos-node.service",
                           "when": "always" },
        "interfaces": [
            {},
            { "name": "eth1", "mac": "00:00:5E:00:53:77", "chassis_id": null,
              "address": "203.0.113.9" }
        ],
        "clock": { "reference": "internal", "name": "clk7" },
        "streams": { "senders": "stream 1", "sender_essences": "video only",
                     "receiver_essences": "video only", "audio_groups": 2 },
        "video": { "lines": 720, "frame_rate": 50 },
        "audio": { "packet_time": 8 },
        "payload_types": { "video": 127, "audio": 126, "ancillary": 125 },
        "format_switching": { "capable": false, "allowed": false },
        "destinations": [ {}, {}, {}, {}, {}, { "secondary": { "address": "239.1.2.3",
                                                               "port": 65535 } } ],
        "labels": { "device": "", "flows": [ "Flow for Video", "Flow for Audio", "Data" ] }
    })"),
              expected);
}

struct Refusal
{
    const char* text;
    const char* finding;
};

const Refusal refusals[] = {
    // Structure.
    {"[]", "file: found [], allowed: an object"},
    {"7", "file: found 7, allowed: an object"},
    {R"({"node": []})", "file: /node: found [], allowed: an object"},
    {R"({"node": null})", "file: /node: found null, allowed: an object"},
    {R"({"interfaces": {}})", "file: /interfaces: found {}, allowed: an array of 2 entries"},
    {R"({"interfaces": [{}]})", "file: /interfaces: found an array of 1, allowed: 2 entries"},
    {R"({"interfaces": [{}, 7]})", "file: /interfaces/1: found 7, allowed: an object"},
    {R"({"labels": {"sources": ["a", "b", 3]}})",
     "file: /labels/sources/2: found 3, allowed: text of at most 63 bytes, no control characters"},
    {R"({"node": {"label": "a", "label": "b"}})", "file: /node/label: this key is given twice"},
    // Unknown keys.
    {R"({"nodes": {}})",
     "file: found the unknown key \"nodes\", allowed: serial_number, node, server, registration, "
     "advertisement, interfaces, clock, streams, carriage, video, audio, payload_types, "
     "format_switching, destinations, labels"},
    {R"({"node": {"lable": "a"}})",
     "file: /node: found the unknown key \"lable\", allowed: label, description, hostname"},
    {R"({"destinations": [{}, {}, {}, {"primary": {"ip": 1}}, {}, {}]})",
     "file: /destinations/3/primary: found the unknown key \"ip\", allowed: address, port"},
    // Texts.
    {R"({"serial_number": ""})",
     "file: /serial_number: found \"\", allowed: text of 1 to 63 bytes, no control characters"},
    {R"({"serial_number": 1})",
     "file: /serial_number: found 1, allowed: text of 1 to 63 bytes, no control characters"},
    {R"({"node": {"label": "1234567890123456789012345678901234567890123456789012345678901234"}})",
     "file: /node/label: found "
     "\"1234567890123456789012345678901234567890123456789012345678901234\" (64 bytes), allowed: "
     "text of at most 63 bytes, no control characters"},
    {R"({"node": {"label": "a\u0000b"}})",
     "file: /node/label: found \"a\\u0000b\", allowed: text of at most 63 bytes, no control "
     "characters"},
    {R"({"node": {"hostname": "my host"}})",
     "file: /node/hostname: found \"my host\", allowed: host name of at most 31 bytes: letters, "
     "digits, \"-\" and \".\""},
    {R"({"interfaces": [{"mac": "00-00-5e-00-53"}, {}]})",
     "file: /interfaces/0/mac: found \"00-00-5e-00-53\", allowed: 6 octets like "
     "\"00-00-5e-00-53-01\""},
    {R"({"interfaces": [{"chassis_id": ""}, {}]})",
     "file: /interfaces/0/chassis_id: found \"\", allowed: text of 1 to 47 bytes, no control "
     "characters, or null"},
    {R"({"interfaces": [{"chassis_id": 4}, {}]})",
     "file: /interfaces/0/chassis_id: found 4, allowed: text of 1 to 47 bytes, no control "
     "characters, or null"},
    {R"({"interfaces": [{}, {"name": "123456789012345678901234567890123456789012345678"}]})",
     "file: /interfaces/1/name: found \"123456789012345678901234567890123456789012345678\" (48 "
     "bytes), allowed: text of 1 to 47 bytes, no control characters"},
    {R"({"clock": {"name": "ptp"}})",
     "file: /clock/name: found \"ptp\", allowed: \"clk\" and digits, at most 19 bytes"},
    {R"({"clock": {"grandmaster": "00-00-5e-00-53-01"}})",
     "file: /clock/grandmaster: found \"00-00-5e-00-53-01\" (17 bytes), allowed: 8 octets like "
     "\"00-00-5e-ff-fe-00-53-ff\""},
    // Addresses and ports.
    {R"({"server": {"address": "0.0.0.0"}})",
     "file: /server/address: found \"0.0.0.0\", allowed: unicast IPv4 address like "
     "\"192.0.2.10\", or the name of an interface like \"eth0\", or null"},
    {R"({"server": {"address": "2001:db8::1"}})",
     "file: /server/address: found \"2001:db8::1\", allowed: unicast IPv4 address like "
     "\"192.0.2.10\", or the name of an interface like \"eth0\", or null"},
    {R"({"server": {"listen": "192.0.2.10:3000"}})",
     "file: /server/listen: found \"192.0.2.10:3000\", allowed: \"any\", an address like "
     "\"192.0.2.10\" or \"::1\", or the name of an interface like \"eth0\", or null"},
    {R"({"server": {"listen": 3000}})",
     "file: /server/listen: found 3000, allowed: \"any\", an address like \"192.0.2.10\" or "
     "\"::1\", or the name of an interface like \"eth0\", or null"},
    {R"({"server": {"advertised_port": 0}})",
     "file: /server/advertised_port: found 0, allowed: 1 to 65535, or null"},
    {R"({"server": {"advertised_port": "80"}})",
     "file: /server/advertised_port: found \"80\", allowed: 1 to 65535, or null"},
    {R"({"interfaces": [{"address": "233.252.0.1"}, {}]})",
     "file: /interfaces/0/address: found \"233.252.0.1\", allowed: unicast IPv4 address like "
     "\"192.0.2.10\""},
    {R"({"destinations": [{"primary": {"address": "192.0.2.1"}}, {}, {}, {}, {}, {}]})",
     "file: /destinations/0/primary/address: found \"192.0.2.1\", allowed: multicast IPv4 "
     "address, \"224.0.0.0\" to \"239.255.255.255\""},
    {R"({"server": {"port": 0}})", "file: /server/port: found 0, allowed: 1 to 65535"},
    {R"({"server": {"port": 65536}})", "file: /server/port: found 65536, allowed: 1 to 65535"},
    {R"({"server": {"port": -1}})", "file: /server/port: found -1, allowed: 1 to 65535"},
    {R"({"server": {"port": 80.5}})", "file: /server/port: found 80.5, allowed: 1 to 65535"},
    {R"({"server": {"port": "80"}})", "file: /server/port: found \"80\", allowed: 1 to 65535"},
    {R"({"server": {"port": 18446744073709551615}})",
     "file: /server/port: found 18446744073709551615, allowed: 1 to 65535"},
    {R"({"server": {"port": 4294967376}})",
     "file: /server/port: found 4294967376, allowed: 1 to 65535"},
    // Registries and files.
    {R"({"registration": {"registries": "http://registry.example"}})",
     "file: /registration/registries: found \"http://registry.example\" (23 bytes), allowed: an "
     "array of at most 16 entries"},
    {R"({"registration": {"registries": ["a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k",
                                         "l", "m", "n", "o", "p", "q"]}})",
     "file: /registration/registries: found an array of 17, allowed: at most 16 entries"},
    {R"({"registration": {"registries": ["http://a.example", "b.example"]}})",
     "file: /registration/registries/1: found \"b.example\", allowed: URL like "
     "\"http://registry.example:8080\", http or https, without a path or with "
     "\"/x-nmos/registration/v1.2\""},
    {R"({"registration": {"dns_domain": "a b"}})",
     "file: /registration/dns_domain: found \"a b\", allowed: domain name like \"example.com\", "
     "or null"},
    {R"({"registration": {"ca_file": ""}})",
     "file: /registration/ca_file: found \"\", allowed: path of a file, or null"},
    {R"({"advertisement": {"service_file": "/etc/avahi/services/.service"}})",
     "file: /advertisement/service_file: found \"/etc/avahi/services/.service\" (28 bytes), "
     "allowed: path of a file whose name ends in \".service\", or null"},
    {R"({"advertisement": {"when": "sometimes"}})",
     "file: /advertisement/when: found \"sometimes\", allowed: \"peer to peer\", \"always\", "
     "\"never\""},
    // What an SDP file cannot say.
    {R"({"clock": {"domain": 0}})", "file: /clock/domain: found 0, allowed: 127"},
    {R"({"video": {"lines": 1081}})", "file: /video/lines: found 1081, allowed: 2160, 1080, 720"},
    {R"({"video": {"lines": "1080"}})",
     "file: /video/lines: found \"1080\", allowed: 2160, 1080, 720"},
    {R"({"video": {"frame_rate": 24}})",
     "file: /video/frame_rate: found 24, allowed: 60, 59.94, 50, 30, 29.97, 25"},
    {R"({"video": {"frame_rate": 59.9}})",
     "file: /video/frame_rate: found 59.9, allowed: 60, 59.94, 50, 30, 29.97, 25"},
    {R"({"video": {"scan": "psf"}})",
     "file: /video/scan: found \"psf\", allowed: \"progressive\", \"interlaced\""},
    {R"({"video": {"sampling": "RGB"}})",
     "file: /video/sampling: found \"RGB\", allowed: \"YCbCr-4:2:2\""},
    {R"({"video": {"bit_depth": 12}})", "file: /video/bit_depth: found 12, allowed: 10"},
    {R"({"video": {"colorimetry": "BT2020"}})",
     "file: /video/colorimetry: found \"BT2020\", allowed: \"BT709\""},
    {R"({"video": {"transfer_characteristic": "HLG"}})",
     "file: /video/transfer_characteristic: found \"HLG\", allowed: \"SDR\""},
    {R"({"audio": {"encoding": "L16"}})", "file: /audio/encoding: found \"L16\", allowed: \"L24\""},
    {R"({"audio": {"sample_rate": 96000}})",
     "file: /audio/sample_rate: found 96000, allowed: 48000"},
    {R"({"audio": {"channels": 8}})", "file: /audio/channels: found 8, allowed: 16"},
    {R"({"audio": {"packet_time": 4}})", "file: /audio/packet_time: found 4, allowed: 0.125, 1, 8"},
    {R"({"payload_types": {"audio": 95}})",
     "file: /payload_types/audio: found 95, allowed: 96 to 127"},
    {R"({"payload_types": {"ancillary": 128}})",
     "file: /payload_types/ancillary: found 128, allowed: 96 to 127"},
    // Words and flags.
    {R"({"carriage": "2110"})",
     "file: /carriage: found \"2110\", allowed: \"ST 2110\", \"ST 2022-6\""},
    {R"({"streams": {"audio_groups": 3}})",
     "file: /streams/audio_groups: found 3, allowed: 1, 2, 4"},
    {R"({"streams": {"senders": 1}})",
     "file: /streams/senders: found 1, allowed: \"all\", \"stream 1\""},
    {R"({"clock": {"locked": 1}})", "file: /clock/locked: found 1, allowed: true, false"},
    // Values that are impossible together.
    {R"({"video": {"scan": "interlaced", "frame_rate": 25, "lines": 720}})",
     "file: /video/lines: found 720 with interlaced scan, allowed: 1080"},
    {R"({"video": {"scan": "interlaced", "frame_rate": 25, "lines": 2160}})",
     "file: /video/lines: found 2160 with interlaced scan, allowed: 1080"},
    {R"({"video": {"scan": "interlaced"}})",
     "file: /video/frame_rate: found 59.94 with interlaced scan, allowed: 30, 29.97, 25"},
    {R"({"video": {"frame_rate": 30}})",
     "file: /video/frame_rate: found 30 with progressive scan, allowed: 60, 59.94, 50"},
    {R"({"carriage": "ST 2022-6", "payload_types": {"video": 96}})",
     "file: /payload_types/video: found 96 with ST 2022-6 carriage, allowed: 98"},
    {R"({"interfaces": [{"name": "a"}, {"name": "a"}]})",
     "file: /interfaces/1/name: found the name of the first interface, allowed: a different one"},
};

TEST(Configuration, ARefusalNamesFilePlaceFoundAndAllowed)
{
    for (const Refusal& refusal : refusals)
        EXPECT_THAT(findings_in(refusal.text), ElementsAre(refusal.finding)) << refusal.text;
}

TEST(Configuration, TellsAllFindingsAtOnce)
{
    EXPECT_THAT(findings_in(R"({"server": {"port": 0}, "video": {"lines": 1}, "x": 1})"),
                SizeIs(3));
}

// The default that a refused value leaves behind need not go with the other values.
TEST(Configuration, ARefusedValueIsTheOnlyFinding)
{
    EXPECT_THAT(findings_in(R"({"video": {"scan": "interlaced", "frame_rate": 24}})"), SizeIs(1));
}

TEST(Configuration, ShortensWhatItFound)
{
    const std::string text = R"({"node": {"label": ")" + std::string(100'000, 'x') + "\"}}";
    ASSERT_THAT(findings_in(text), SizeIs(1));
    EXPECT_THAT(findings_in(text)[0], AllOf(SizeIs(testing::Lt(200)), HasSubstr("(100000 bytes)")));
}

TEST(Configuration, SaysWhereItIsNoJson)
{
    ASSERT_THAT(findings_in("{\n\"node\": }"), SizeIs(1));
    EXPECT_THAT(findings_in("{\n\"node\": }")[0],
                HasSubstr("file: parse error at line 2, column 9"));
}

TEST(Configuration, VideoInSt2022_6HasPayloadType98)
{
    EXPECT_EQ(parsed(R"({"carriage": "ST 2022-6"})").payload_types.video, 98);
    EXPECT_EQ(parsed(R"({"carriage": "ST 2110"})").payload_types.video, 96);
    EXPECT_THAT(findings_in(R"({"carriage": "ST 2022-6", "payload_types": {"video": 98}})"),
                IsEmpty());
}

TEST(ExplainConfiguration, ParsesAgainToItself)
{
    EXPECT_EQ(parsed(explain_configuration(Configuration())), Configuration());

    Configuration other;
    other.server = {"any", "eth0", 1, 65535};
    other.registration.enabled = false;
    other.registration.registries = {"http://a.example/x-nmos/registration/v1.2",
                                     "https://b.example:443/x-nmos/registration/v1.2"};
    other.registration.ca_file = "ca \"1\".pem";
    other.registration.dns_domain = "example.com";
    other.advertisement = {"nmos.service", Advertise::never};
    other.serial_number = "with \"quotes\", \\ and \xc3\xa9";
    other.node.label = "// no comment";
    other.interfaces[0].chassis_id = std::nullopt;
    other.clock.reference = ClockReference::internal;
    other.clock.locked = false;
    other.streams = {SenderStreams::stream_1, Essences::video_only, Essences::all, AudioGroups::g1};
    other.carriage = Carriage::st2022_6;
    other.payload_types.video = 98;
    other.video.scan = Scan::interlaced;
    other.video.frame_rate = FrameRate::fps_29_97;
    other.audio.packet_time = PacketTime::ms_1;
    other.labels.receivers[23] = "";
    EXPECT_EQ(parsed(explain_configuration(other)), other);
}

// As long as they are complete, every key is explained; as long as they are short, they are read.
TEST(ExplainConfiguration, SaysWhatIsAllowedBesideTheValue)
{
    const std::string text = explain_configuration(Configuration());
    EXPECT_THAT(text, HasSubstr("        // The TCP port to listen at. Allowed: 1 to 65535.\n"
                                "        \"port\": 3000,\n"));
    EXPECT_THAT(text, HasSubstr("    // How video is sent: SMPTE ST 2110, or SMPTE ST 2022-6. "
                                "Allowed: \"ST 2110\", \"ST 2022-6\".\n"
                                "    \"carriage\": \"ST 2110\",\n"));
}

TEST(ExplainConfiguration, WritesAListOfAnyLength)
{
    Configuration configuration;
    EXPECT_THAT(explain_configuration(configuration), HasSubstr("\"registries\": [],\n"));
    configuration.registration.registries = {"http://a.example/x-nmos/registration/v1.2",
                                             "http://b.example/x-nmos/registration/v1.2"};
    EXPECT_THAT(explain_configuration(configuration),
                HasSubstr("\"registries\": [\n"
                          "            \"http://a.example/x-nmos/registration/v1.2\",\n"
                          "            \"http://b.example/x-nmos/registration/v1.2\"\n"
                          "        ],\n"));
}

TEST(ExplainConfiguration, ExplainsEveryKeyOnce)
{
    std::string_view rest;
    const std::string text = explain_configuration(Configuration());
    std::string previous;
    std::vector<std::string> keys;
    for (rest = text; !rest.empty(); rest.remove_prefix(rest.find('\n') + 1)) {
        std::string line(rest.substr(0, rest.find('\n')));
        line.erase(0, line.find_first_not_of(' '));
        const bool is_key = line.starts_with('"') && line.find("\": ") != std::string::npos;
        if (is_key && previous.starts_with("//"))
            keys.push_back(line.substr(1, line.find('"', 1) - 1));
        previous = line;
        ASSERT_LE(rest.find('\n'), 100U) << line;
    }
    EXPECT_THAT(
        keys,
        ElementsAre("serial_number", "node", "label", "description", "hostname", "server", "listen",
                    "address", "port", "advertised_port", "registration", "enabled", "registries",
                    "ca_file", "dns_domain", "development_registries", "advertisement",
                    "service_file", "when", "interfaces", "name", "mac", "chassis_id", "address",
                    "clock", "name", "reference", "grandmaster", "domain", "traceable", "locked",
                    "streams", "senders", "sender_essences", "receiver_essences", "audio_groups",
                    "carriage", "video", "lines", "scan", "frame_rate", "sampling", "bit_depth",
                    "colorimetry", "transfer_characteristic", "audio", "encoding", "sample_rate",
                    "channels", "packet_time", "payload_types", "video", "audio", "ancillary",
                    "format_switching", "capable", "allowed", "destinations", "primary", "address",
                    "port", "secondary", "address", "port", "labels", "device", "sources", "flows",
                    "senders", "receivers"));
}

TEST(Configuration, ManyFindingsAreCounted)
{
    std::string text = "{";
    for (int i = 0; i < 5000; ++i)
        text += "\"key" + std::to_string(i) + "\": 1, ";
    const std::vector<std::string> findings = findings_in(text + "\"serial_number\": 5}");
    ASSERT_THAT(findings, SizeIs(21));
    EXPECT_THAT(findings[0], HasSubstr("file: /serial_number: found 5, allowed: "));
    EXPECT_THAT(findings[1], HasSubstr("file: found the unknown key \"key0\", allowed: "));
    EXPECT_EQ(findings[20], "file: and 4981 more");
}

} // namespace
} // namespace nmos_instrument::host
