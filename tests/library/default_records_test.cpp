// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/default_records.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <set>
#include <string>

#include <gmock/gmock.h>

#include "nmos_instrument/nmos_instrument.h"
#include "support/default_records.h"

namespace {

using namespace nmos_instrument;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(DefaultRecords, HaveNoFindings)
{
    const auto records = std::make_unique<DefaultRecords>();
    EXPECT_THAT(fill_default_records(example_description(), records->node, records->connections,
                                     records->settings, records->selection),
                IsEmpty());
    EXPECT_THAT(check_record(records->node), IsEmpty());
    EXPECT_THAT(check_record(records->connections), IsEmpty());
    EXPECT_THAT(check_record(records->settings), IsEmpty());
    EXPECT_THAT(records->findings(), IsEmpty());
}

TEST(DefaultRecords, AreRightWithEverySelection)
{
    const auto records = default_records();
    for (int receivers : {0, 1}) {
        for (int groups : {0, 1, 2}) {
            for (int senders : {0, 1}) {
                records->selection = {receivers, groups, senders};
                EXPECT_THAT(records->findings(), IsEmpty());
            }
        }
    }
}

TEST(DefaultRecords, DoNotDependOnWhatTheMemoryHeld)
{
    const auto records = std::make_unique<DefaultRecords>();
    std::memset(static_cast<void*>(records.get()), 0xA5, sizeof *records);
    fill_default_records(example_description(), records->node, records->connections,
                         records->settings, records->selection);
    EXPECT_THAT(records->findings(), IsEmpty());
    const auto others = default_records();
    EXPECT_EQ(std::memcmp(&records->node, &others->node, sizeof records->node), 0);
    EXPECT_EQ(std::memcmp(&records->connections, &others->connections, sizeof records->connections),
              0);
}

TEST(DefaultRecords, ShowOneVideoOneAudioAndOneAncillarySender)
{
    const auto records = default_records();
    const std::string senders =
        NodeApi().make_senders(&records->node, records->selection.sender_filter);
    EXPECT_THAT(senders, HasSubstr("\"label\":\"Video of IP stream 1\""));
    EXPECT_THAT(senders, HasSubstr("\"label\":\"Audio of IP stream 1\""));
    EXPECT_THAT(senders, HasSubstr("\"label\":\"Ancillary data of IP stream 1\""));
    EXPECT_THAT(senders, testing::Not(HasSubstr("IP stream 2")));
    const std::string key = "\"manifest_href\"";
    std::size_t count = 0;
    for (std::size_t at = senders.find(key); at != std::string::npos;
         at = senders.find(key, at + 1))
        ++count;
    EXPECT_EQ(count, 3u);
}

TEST(DefaultRecords, NameTheReceiversByStreamAndGroup)
{
    const auto records = default_records();
    const auto label = [&](int i) { return std::string(records->node.receivers[i].label); };
    EXPECT_EQ(label(0), "Video of IP stream 1");
    EXPECT_EQ(label(3), "Video of IP stream 4");
    EXPECT_EQ(label(4), "Audio of IP stream 1, group G1");
    EXPECT_EQ(label(10), "Audio of IP stream 2, group G3");
    EXPECT_EQ(label(19), "Audio of IP stream 4, group G4");
    EXPECT_EQ(label(20), "Ancillary data of IP stream 1");
    EXPECT_EQ(label(23), "Ancillary data of IP stream 4");
}

TEST(DefaultRecords, FillEveryBodyOfTheNode)
{
    const auto records = default_records();
    EXPECT_EQ(NodeApi().make_self(&records->node),
              R"({"api":{"endpoints":[{"host":"192.0.2.1","port":8080,"protocol":"http"}],)"
              R"("versions":["v1.2"]},"caps":{},"clocks":[{"gmid":"00-00-5e-ff-fe-00-53-01",)"
              R"("locked":false,"name":"clk0","ref_type":"ptp","traceable":false,)"
              R"("version":"IEEE1588-2008"}],)"
              R"("description":"IP video, audio and ancillary data measuring instrument",)"
              R"("hostname":"","href":"http://192.0.2.1:8080/",)"
              R"("id":"39f262e4-3b68-47c6-9926-a44517f77cc0","interfaces":[)"
              R"({"chassis_id":null,"name":"media1","port_id":"00-00-5e-00-53-01"},)"
              R"({"chassis_id":null,"name":"media2","port_id":"00-00-5e-00-53-02"}],)"
              R"("label":"Rack 4","services":[],"tags":{},"version":"1541234567:25"})");
    EXPECT_EQ(NodeApi().make_receiverid(&records->node, 23),
              R"({"caps":{"media_types":["video/smpte291"]},)"
              R"("description":"Ancillary data of IP stream 4, received",)"
              R"("device_id":"f43ba387-fcb7-4f65-8074-ab03b7b91971",)"
              R"("format":"urn:x-nmos:format:data","id":"e1e78e39-c4ae-49c7-8d90-38cb8179afa3",)"
              R"("interface_bindings":["media1","media2"],"label":"Ancillary data of IP stream 4",)"
              R"("subscription":{"active":false,"sender_id":null},"tags":{},)"
              R"("transport":"urn:x-nmos:transport:rtp","version":"1541234567:25"})");
}

TEST(DefaultRecords, AreConnectedToNothing)
{
    const auto records = default_records();
    const std::string parameters =
        R"({"destination_port":5004,"interface_ip":"192.0.2.10","multicast_ip":null,)"
        R"("rtp_enabled":true,"source_ip":null},)"
        R"({"destination_port":5004,"interface_ip":"198.51.100.10","multicast_ip":null,)"
        R"("rtp_enabled":true,"source_ip":null})";
    const std::string body =
        R"({"activation":{"activation_time":null,"mode":null,"requested_time":null},)"
        R"("master_enable":false,"sender_id":null,"transport_file":{"data":null,"type":null},)"
        R"("transport_params":[)" +
        parameters + "]}";
    EXPECT_EQ(ConnectionApi().make_single_receiverid_staged(&records->connections, 5), body);
    EXPECT_EQ(ConnectionApi().make_single_receiverid_active(&records->connections, 5), body);
}

TEST(DefaultRecords, HaveAnSdpFileOf1080p5994)
{
    const auto records = default_records();
    EXPECT_EQ(
        ConnectionApi().make_single_senderid_sdp(&records->connections, 0, &records->settings),
        "v=0\r\n"
        "o=HALDEN 1541234567 1541234567 IN IP4 192.0.2.10\r\n"
        "s=QX3100 OPT21/22\r\n"
        "t=0 0\r\n"
        "a=group:DUP primary secondary\r\n"
        "m=video 5004 RTP/AVP 96\r\n"
        "c=IN IP4 239.255.1.1/64\r\n"
        "a=rtpmap:96 raw/90000\r\n"
        "a=fmtp:96 sampling=YCbCr-4:2:2; width=1920; height=1080; depth=10; "
        "exactframerate=60000/1001; colorimetry=BT709; TCS=SDR; SSN=ST2110-20:2017; TP=2110TPN; "
        "PM=2110BPM; \r\n"
        "a=source-filter: incl IN IP4 239.255.1.1 192.0.2.10\r\n"
        "a=ts-refclk:ptp=IEEE1588-2008:00-00-5E-FF-FE-00-53-01:127\r\n"
        "a=mediaclk:direct=0\r\n"
        "a=mid:primary\r\n"
        "m=video 5004 RTP/AVP 96\r\n"
        "c=IN IP4 239.255.2.1/64\r\n"
        "a=fmtp:96 sampling=YCbCr-4:2:2; width=1920; height=1080; depth=10; "
        "exactframerate=60000/1001; colorimetry=BT709; TCS=SDR; SSN=ST2110-20:2017; TP=2110TPN; "
        "PM=2110BPM; \r\n"
        "a=rtpmap:96 raw/90000\r\n"
        "a=source-filter: incl IN IP4 239.255.2.1 198.51.100.10\r\n"
        "a=ts-refclk:ptp=IEEE1588-2008:00-00-5E-FF-FE-00-53-01:127\r\n"
        "a=mediaclk:direct=0\r\n"
        "a=mid:secondary\r\n");
}

TEST(DefaultRecords, HaveTheSendersAddressesInTheSettings)
{
    const auto records = default_records();
    const std::string document = Nmos().make_param_json(&records->settings, 0);
    for (const char* member :
         {R"("pri_video_src_ip":"192.0.2.10")", R"("pri_video_dst_ip":"239.255.1.1")",
          R"("sec_video_src_ip":"198.51.100.10")", R"("sec_video_dst_ip":"239.255.2.1")",
          R"("pri_audio_dst_ip":"239.255.1.5")", R"("sec_audio_dst_ip":"239.255.2.5")",
          R"("pri_anc_dst_ip":"239.255.1.6")", R"("sec_anc_dst_ip":"239.255.2.6")",
          R"("pri_video_dst_port":5004)", R"("sec_video_dst_port":5004)",
          R"("pri_audio_dst_port":5004)", R"("sec_audio_dst_port":5004)",
          R"("pri_anc_dst_port":5004)", R"("sec_anc_dst_port":5004)",
          R"("st2110_vfmt_rtp_payload_anc":100)"})
        EXPECT_THAT(document, HasSubstr(member));
}

TEST(DefaultRecords, TakeOctetsInEitherCaseWithDashesOrColons)
{
    RecordsDescription about = example_description();
    about.grandmaster = "00:1D:c1:FF:fe:12:34:aB";
    about.interfaces[0].mac = "00:1D:C1:aa:BB:0c";
    const auto records = std::make_unique<DefaultRecords>();
    EXPECT_THAT(fill_default_records(about, records->node, records->connections, records->settings,
                                     records->selection),
                IsEmpty());
    EXPECT_STREQ(records->node.clocks[0].gmid, "00-1d-c1-ff-fe-12-34-ab");
    EXPECT_STREQ(records->connections.ptp_grandmaster_id, "00-1D-C1-FF-FE-12-34-AB");
    EXPECT_STREQ(records->node.interfaces[0].port_id, "00-1d-c1-aa-bb-0c");
}

std::vector<std::string> findings_of(const RecordsDescription& about)
{
    const auto records = std::make_unique<DefaultRecords>();
    return fill_default_records(about, records->node, records->connections, records->settings,
                                records->selection);
}

TEST(DefaultRecords, TellThatATextDoesNotFit)
{
    RecordsDescription about = example_description();
    about.label = std::string(64, 'x');
    EXPECT_THAT(findings_of(about), ElementsAre("node.label has room for 63 bytes without NUL, the "
                                                "text has 64"));
}

/// As a host would make them that has a library for UUIDs.
std::string own_id(const std::string& seed, const std::string& kind, std::size_t number)
{
    return seed +
           (kind == "sender"     ? "5e"
            : kind == "receiver" ? "4e"
                                 : kind.substr(0, 1) + "0") +
           "-0000-4000-8000-" + std::string(number < 10 ? 11 : 10, '0') + std::to_string(number);
}

TEST(DefaultRecords, TakeIdsOfTheHost)
{
    RecordsDescription about = example_description();
    about.seed = "abcdef";
    about.make_id = own_id;
    const auto records = std::make_unique<DefaultRecords>();
    EXPECT_EQ(
        fill_default_records(about, records->node, records->connections, records->settings,
                             records->selection)[0],
        "node.id is \"abcdefn0-0000-4000-8000-000000000000\", it must be a UUID in lower case");
    EXPECT_STREQ(records->node.devices[0].senders[5], "abcdef5e-0000-4000-8000-000000000005");
    EXPECT_STREQ(records->node.senders[5].manifest_href,
                 "http://192.0.2.1:8080/x-nmos/connection/v1.0/single/senders/"
                 "abcdef5e-0000-4000-8000-000000000005/transportfile");
}

TEST(DefaultRecords, TellThatAnInterfaceHasNoAddress)
{
    RecordsDescription about = example_description();
    about.interfaces[1].address = "";
    const std::vector<std::string> findings = findings_of(about);
    // Both halves of 3 senders that are shown and of 24 receivers.
    EXPECT_EQ(findings.size(), 2u * 27u);
    EXPECT_EQ(findings.front(), "connections.senders[0].staged.transport_params[1].source_ip is "
                                "\"\", it must be \"auto\", an IPv4 address or \"null\"");
}

TEST(DefaultRecords, TellWhatIsMissingInAnEmptyDescription)
{
    const std::vector<std::string> findings = findings_of(RecordsDescription());
    const auto has = [&](const char* finding) {
        return std::find(findings.begin(), findings.end(), finding) != findings.end();
    };
    EXPECT_TRUE(has("node.endpoints[0].host is \"\", it must be an IPv4 address"));
    EXPECT_TRUE(has("node.interfaces[0].name is \"\", it must be UTF-8 and not empty"));
    EXPECT_TRUE(has("node.clocks[0].gmid is \"\", it must be like 00-00-5e-ff-fe-00-53-01, in "
                    "lower case"));
}

TEST(DefaultRecords, DoNotOverrunWhateverTheDescription)
{
    RecordsDescription about = example_description();
    const std::string endless(100000, '9');
    about.seed = about.label = about.address = about.grandmaster = endless;
    for (InterfaceDescription& interface : about.interfaces)
        interface = {endless, endless, endless};
    about.port = -2147483647 - 1;
    about.version_seconds = ~0ULL;
    about.version_nanoseconds = -1;
    EXPECT_THAT(findings_of(about), testing::Not(IsEmpty()));
}

TEST(DefaultId, IsTheSameForever)
{
    EXPECT_EQ(default_id("QX0000001", "node", 0), "39f262e4-3b68-47c6-9926-a44517f77cc0");
    EXPECT_EQ(default_id("QX0000001", "source", 1), "ef0b215b-4b39-492e-a6ac-64cd06570a6f");
    EXPECT_EQ(default_id("QX0000001", "sender", 0), "a3eda769-1186-493f-924d-05c3483b16cc");
    EXPECT_EQ(default_id("QX0000002", "node", 0), "5924a277-b6b3-4268-9b93-2b21eefe1f22");
}

TEST(DefaultId, IsDistinct)
{
    std::set<std::string> ids;
    for (int instrument = 0; instrument < 1000; ++instrument) {
        for (std::size_t number = 0; number < 24; ++number) {
            ids.insert(default_id(std::to_string(instrument), "sender", number));
            ids.insert(default_id(std::to_string(instrument), "receiver", number));
        }
    }
    EXPECT_EQ(ids.size(), 48000u);
}

} // namespace
