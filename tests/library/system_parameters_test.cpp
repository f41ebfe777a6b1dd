// SPDX-License-Identifier: Apache-2.0
//
// The instrument's settings: the ends of its arrays, and the document made of them.

#include "nmos_instrument/system_parameters.h"

#include <array>
#include <climits>
#include <cstring>
#include <memory>
#include <set>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nmos_instrument/Nmos.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

constexpr int element_count = 937;
using Elements = std::array<std::int16_t, element_count>;

std::unique_ptr<st_param_sys> settings_of(const Elements& elements)
{
    static_assert(sizeof(st_param_sys) == sizeof(Elements));
    auto settings = std::make_unique<st_param_sys>();
    std::memcpy(settings.get(), elements.data(), sizeof elements);
    return settings;
}

/// Every element holds its own number.
Elements numbered_elements()
{
    Elements elements;
    for (int i = 0; i < element_count; ++i)
        elements[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(i);
    return elements;
}

std::string document_of(const Elements& elements)
{
    return Nmos().make_param_json(settings_of(elements).get(), 0);
}

// --- Layout -------------------------------------------------------------------------------------

// Where each member begins is asserted at compile time, in src/records/record_layout.cpp.
TEST(SystemParameters, MembersLieOnTheirElements)
{
    const auto sys = settings_of(numbered_elements());
    struct Place
    {
        const char* member;
        int found;
        int element;
    };
#define PLACE(member, element)                                                                     \
    {                                                                                              \
#member, sys->member, element                                                              \
    }
    const Place places[] = {
        PLACE(unread_0[65], 65),
        PLACE(unread_68[1], 69),

        PLACE(pri_video_vlan_mask[3], 73),
        PLACE(sec_video_vlan_mask[3], 77),
        PLACE(pri_video_vlan_id[3], 81),
        PLACE(sec_video_vlan_id[3], 85),
        PLACE(pri_video_masks[0].dst_mask, 87),
        PLACE(pri_video_masks[1].src_mask, 88),
        PLACE(pri_video_masks[3].dst_mask, 93),
        PLACE(sec_video_masks[0].dst_mask, 95),
        PLACE(sec_video_masks[3].dst_mask, 101),
        PLACE(pri_video_addresses[0].src_ip[3], 105),
        PLACE(pri_video_addresses[0].dst_ip[0], 106),
        PLACE(pri_video_addresses[0].dst_ip[3], 109),
        PLACE(pri_video_addresses[1].src_ip[0], 110),
        PLACE(pri_video_addresses[3].dst_ip[3], 133),
        PLACE(sec_video_addresses[0].dst_ip[0], 138),
        PLACE(sec_video_addresses[3].dst_ip[3], 165),
        PLACE(unread_166[1], 167),
        PLACE(pri_video_dst_port[0][1], 169),
        PLACE(pri_video_dst_port[1][0], 172),
        PLACE(pri_video_dst_port[3][0], 180),
        PLACE(pri_video_dst_port[3][3], 183),
        PLACE(sec_video_dst_port[1], 185),
        PLACE(sec_video_dst_port[4], 188),
        PLACE(sec_video_dst_port[8], 192),
        PLACE(sec_video_dst_port[12], 196),
        PLACE(sec_video_dst_port[13], 197),

        PLACE(pri_audio_vlan_mask[1][0], 202),
        PLACE(pri_audio_vlan_mask[3][3], 213),
        PLACE(sec_audio_vlan_mask[3][3], 229),
        PLACE(pri_audio_vlan_id[3][3], 245),
        PLACE(sec_audio_vlan_id[3][3], 261),
        PLACE(pri_audio_masks[0][0].dst_mask, 263),
        PLACE(pri_audio_masks[0][1].src_mask, 264),
        PLACE(pri_audio_masks[1][0].src_mask, 270),
        PLACE(pri_audio_masks[3][3].dst_mask, 293),
        PLACE(sec_audio_masks[0][0].dst_mask, 295),
        PLACE(sec_audio_masks[3][3].dst_mask, 325),
        PLACE(pri_audio_addresses[0][0].dst_ip[0], 330),
        PLACE(pri_audio_addresses[0][0].dst_ip[3], 333),
        PLACE(pri_audio_addresses[0][1].src_ip[0], 334),
        PLACE(pri_audio_addresses[1][0].src_ip[0], 358),
        PLACE(pri_audio_addresses[3][3].dst_ip[3], 453),
        PLACE(sec_audio_addresses[0][0].dst_ip[0], 458),
        PLACE(sec_audio_addresses[3][3].dst_ip[3], 581),
        PLACE(unread_582[1], 583),
        PLACE(pri_audio_dst_port[0][1], 585),
        PLACE(pri_audio_dst_port[1][0], 600),
        PLACE(pri_audio_dst_port[3][15], 647),
        PLACE(sec_audio_dst_port[1], 649),
        PLACE(sec_audio_dst_port[16], 664),
        PLACE(sec_audio_dst_port[48], 696),
        PLACE(sec_audio_dst_port[61], 709),

        PLACE(pri_anc_vlan_mask[3], 713),
        PLACE(sec_anc_vlan_mask[3], 717),
        PLACE(pri_anc_vlan_id[3], 721),
        PLACE(sec_anc_vlan_id[3], 725),
        PLACE(pri_anc_masks[0].dst_mask, 727),
        PLACE(pri_anc_masks[3].dst_mask, 733),
        PLACE(sec_anc_masks[0].dst_mask, 735),
        PLACE(sec_anc_masks[3].dst_mask, 741),
        PLACE(pri_anc_addresses[0].dst_ip[0], 746),
        PLACE(pri_anc_addresses[3].dst_ip[3], 773),
        PLACE(sec_anc_addresses[0].dst_ip[0], 778),
        PLACE(sec_anc_addresses[3].dst_ip[3], 805),
        PLACE(unread_806[1], 807),
        PLACE(pri_anc_dst_port[0][1], 809),
        PLACE(pri_anc_dst_port[1][0], 812),
        PLACE(pri_anc_dst_port[3][3], 823),
        PLACE(sec_anc_dst_port[0][1], 825),
        PLACE(sec_anc_dst_port[3][3], 839),
        PLACE(unread_840[15], 855),

        PLACE(st2110_vfmt_rtp_payload_video[3], 868),
        PLACE(st2110_vfmt_rtp_payload_audio[3], 872),
        PLACE(st2110_vfmt_rtp_payload_anc[3], 876),
        PLACE(st2110_vfmt_system[3], 880),
        PLACE(st2110_vfmt_struct[3], 884),
        PLACE(st2110_vfmt_frame_rate[3], 888),
        PLACE(unread_889[7], 896),
        PLACE(st2110_vfmt_timestamp_read[3], 900),
        PLACE(unread_901[4], 905),

        PLACE(unread_911[19], 930),
        PLACE(unread_932[1], 933),
    };
#undef PLACE
    for (const auto& [member, found, element] : places)
        EXPECT_EQ(found, element) << member;
}

TEST(SystemParameters, AreATableOf937Elements)
{
    EXPECT_EQ(sizeof(st_param_sys), 1874u);
    EXPECT_EQ(alignof(st_param_sys), 2u);
}

// --- The document -------------------------------------------------------------------------------

constexpr char status_objects[] =
    R"("judge_stream1":{"bitrate":true,"comment":"No Comment","decode":true,"link_up":true,)"
    R"("picture":true,"timing":true},)"
    R"("judge_stream2":{"bitrate":true,"comment":"No Comment","decode":true,"link_up":true,)"
    R"("picture":true,"timing":true},)"
    R"("judge_stream3":{"bitrate":true,"comment":"No Comment","decode":true,"link_up":true,)"
    R"("picture":true,"timing":true},)"
    R"("judge_stream4":{"bitrate":true,"comment":"No Comment","decode":true,"link_up":true,)"
    R"("picture":true,"timing":true},)";

/// Of numbered_elements().
const std::string numbered_stream =
    R"({"pri_anc_dst_ip":"746.747.748.749","pri_anc_dst_mask":727,"pri_anc_dst_port":207656,)"
    R"("pri_anc_src_ip":"742.743.744.745","pri_anc_src_mask":726,"pri_anc_vlan_id":718,)"
    R"("pri_anc_vlan_mask":710,"pri_audio_dst_ip":"330.331.332.333",)"
    R"("pri_audio_dst_mask":263,"pri_audio_dst_port":150344,)"
    R"("pri_audio_src_ip":"326.327.328.329","pri_audio_src_mask":262,)"
    R"("pri_audio_vlan_id":230,"pri_audio_vlan_mask":198,)"
    R"("pri_video_dst_ip":"106.107.108.109","pri_video_dst_mask":87,)"
    R"("pri_video_dst_port":43432,"pri_video_src_ip":"102.103.104.105",)"
    R"("pri_video_src_mask":86,"pri_video_vlan_id":78,"pri_video_vlan_mask":70,)"
    R"("sec_anc_dst_ip":"778.779.780.781","sec_anc_dst_mask":735,"sec_anc_dst_port":211768,)"
    R"("sec_anc_src_ip":"774.775.776.777","sec_anc_src_mask":734,"sec_anc_vlan_id":722,)"
    R"("sec_anc_vlan_mask":714,"sec_audio_dst_ip":"458.459.460.461",)"
    R"("sec_audio_dst_mask":295,"sec_audio_dst_port":166792,)"
    R"("sec_audio_src_ip":"454.455.456.457","sec_audio_src_mask":294,)"
    R"("sec_audio_vlan_id":246,"sec_audio_vlan_mask":214,)"
    R"("sec_video_dst_ip":"138.139.140.141","sec_video_dst_mask":95,)"
    R"("sec_video_dst_port":47544,"sec_video_src_ip":"134.135.136.137",)"
    R"("sec_video_src_mask":94,"sec_video_vlan_id":82,"sec_video_vlan_mask":74,)"
    R"("st2110_vfmt_frame_rate":885,"st2110_vfmt_rtp_payload_anc":873,)"
    R"("st2110_vfmt_rtp_payload_audio":869,"st2110_vfmt_rtp_payload_video":865,)"
    R"("st2110_vfmt_struct":881,"st2110_vfmt_system":877,"st2110_vfmt_timestamp_read":897})";

TEST(ParameterDocument, ShowsEachSettingFromItsElement)
{
    EXPECT_EQ(document_of(numbered_elements()),
              "{" + std::string(status_objects) +
                  R"("ptp_comm_mode":860,"ptp_delay_msg_rate":861,"ptp_domain_num_pri":858,)"
                  R"("ptp_domain_num_sec":859,"ptp_profile":856,"redundancy":67,)"
                  R"("st2110_vfmt_auto_mode":863,"stream1":)" +
                  numbered_stream + R"(,"stream2":)" + numbered_stream + R"(,"stream3":)" +
                  numbered_stream + R"(,"stream4":)" + numbered_stream + R"(,"type":66})");
}

const std::string zero_stream =
    R"({"pri_anc_dst_ip":"0.0.0.0","pri_anc_dst_mask":0,"pri_anc_dst_port":0,)"
    R"("pri_anc_src_ip":"0.0.0.0","pri_anc_src_mask":0,"pri_anc_vlan_id":0,)"
    R"("pri_anc_vlan_mask":0,"pri_audio_dst_ip":"0.0.0.0","pri_audio_dst_mask":0,)"
    R"("pri_audio_dst_port":0,"pri_audio_src_ip":"0.0.0.0","pri_audio_src_mask":0,)"
    R"("pri_audio_vlan_id":0,"pri_audio_vlan_mask":0,"pri_video_dst_ip":"0.0.0.0",)"
    R"("pri_video_dst_mask":0,"pri_video_dst_port":0,"pri_video_src_ip":"0.0.0.0",)"
    R"("pri_video_src_mask":0,"pri_video_vlan_id":0,"pri_video_vlan_mask":0,)"
    R"("sec_anc_dst_ip":"0.0.0.0","sec_anc_dst_mask":0,"sec_anc_dst_port":0,)"
    R"("sec_anc_src_ip":"0.0.0.0","sec_anc_src_mask":0,"sec_anc_vlan_id":0,)"
    R"("sec_anc_vlan_mask":0,"sec_audio_dst_ip":"0.0.0.0","sec_audio_dst_mask":0,)"
    R"("sec_audio_dst_port":0,"sec_audio_src_ip":"0.0.0.0","sec_audio_src_mask":0,)"
    R"("sec_audio_vlan_id":0,"sec_audio_vlan_mask":0,"sec_video_dst_ip":"0.0.0.0",)"
    R"("sec_video_dst_mask":0,"sec_video_dst_port":0,"sec_video_src_ip":"0.0.0.0",)"
    R"("sec_video_src_mask":0,"sec_video_vlan_id":0,"sec_video_vlan_mask":0,)"
    R"("st2110_vfmt_frame_rate":0,"st2110_vfmt_rtp_payload_anc":0,)"
    R"("st2110_vfmt_rtp_payload_audio":0,"st2110_vfmt_rtp_payload_video":0,)"
    R"("st2110_vfmt_struct":0,"st2110_vfmt_system":0,"st2110_vfmt_timestamp_read":0})";

TEST(ParameterDocument, OfZerosHasZeroEverywhere)
{
    EXPECT_EQ(document_of(Elements{}),
              "{" + std::string(status_objects) +
                  R"("ptp_comm_mode":0,"ptp_delay_msg_rate":0,"ptp_domain_num_pri":0,)"
                  R"("ptp_domain_num_sec":0,"ptp_profile":0,"redundancy":0,)"
                  R"("st2110_vfmt_auto_mode":0,"stream1":)" +
                  zero_stream + R"(,"stream2":)" + zero_stream + R"(,"stream3":)" + zero_stream +
                  R"(,"stream4":)" + zero_stream + R"(,"type":0})");
}

TEST(ParameterDocument, RepeatsStream1InTheOtherStreams)
{
    // Only the entries of streams 2 to 4 differ from zero.
    st_param_sys sys = {};
    for (const std::size_t stream : {1u, 2u, 3u}) {
        const auto value = static_cast<std::int16_t>(100 + stream);
        sys.pri_video_vlan_mask[stream] = value;
        sys.sec_video_vlan_id[stream] = value;
        sys.pri_video_masks[stream] = {value, value};
        sys.pri_video_addresses[stream] = {{value, value, value, value},
                                           {value, value, value, value}};
        sys.pri_video_dst_port[stream][0] = value;
        sys.sec_video_dst_port[stream * 4] = value;
        sys.pri_audio_vlan_mask[stream][0] = value;
        sys.sec_audio_masks[stream][0] = {value, value};
        sys.sec_audio_addresses[stream][0] = {{value, value, value, value},
                                              {value, value, value, value}};
        sys.sec_audio_dst_port[stream * 16] = value;
        sys.sec_anc_dst_port[stream][0] = value;
        sys.st2110_vfmt_system[stream] = value;
        sys.st2110_vfmt_timestamp_read[stream] = value;
    }
    EXPECT_EQ(Nmos().make_param_json(&sys, 0), document_of(Elements{}));

    sys.st2110_vfmt_system[0] = 7;
    const std::string document = Nmos().make_param_json(&sys, 0);
    std::size_t shown = 0;
    for (std::size_t at = document.find(R"("st2110_vfmt_system":7,)"); at != document.npos;
         at = document.find(R"("st2110_vfmt_system":7,)", at + 1))
        ++shown;
    EXPECT_EQ(shown, 4u);
}

/// The elements that the document shows: the global settings and those of stream 1.
const std::set<int> shown_elements = {
    66,  67,                                // type, redundancy
    70,  74,  78,  82,                      // video VLAN
    86,  87,  94,  95,                      // video masks
    102, 103, 104, 105, 106, 107, 108, 109, // video addresses, primary
    134, 135, 136, 137, 138, 139, 140, 141, // video addresses, secondary
    168, 169, 184, 185,                     // video ports
    198, 214, 230, 246,                     // audio VLAN
    262, 263, 294, 295,                     // audio masks
    326, 327, 328, 329, 330, 331, 332, 333, // audio addresses, primary
    454, 455, 456, 457, 458, 459, 460, 461, // audio addresses, secondary
    584, 585, 648, 649,                     // audio ports
    710, 714, 718, 722,                     // ancillary VLAN
    726, 727, 734, 735,                     // ancillary masks
    742, 743, 744, 745, 746, 747, 748, 749, // ancillary addresses, primary
    774, 775, 776, 777, 778, 779, 780, 781, // ancillary addresses, secondary
    808, 809, 824, 825,                     // ancillary ports
    856, 858, 859, 860, 861,                // PTP
    863, 865, 869, 873, 877, 881, 885, 897, // video format
};

TEST(ParameterDocument, ChangesWithTheShownElementsAndNoOther)
{
    const Elements before = {};
    const std::string document = document_of(before);
    for (int element = 0; element < element_count; ++element) {
        Elements changed = before;
        changed[static_cast<std::size_t>(element)] = -21846;
        EXPECT_EQ(document_of(changed) != document, shown_elements.contains(element)) << element;
    }
}

TEST(ParameterDocument, IgnoresItsSecondArgumentAndTheObject)
{
    const auto sys = settings_of(numbered_elements());
    const std::string document = Nmos().make_param_json(sys.get(), 0);
    Nmos nmos;
    nmos.text = "text";
    nmos.port = nmos.protocol = nmos.ver_slf = 99;
    for (const int ignored : {1, 2, -1, INT_MIN, INT_MAX})
        EXPECT_EQ(nmos.make_param_json(sys.get(), ignored), document);
}

TEST(ParameterDocument, NeverWritesIntoTheSettings)
{
    const auto sys = settings_of(numbered_elements());
    Nmos().make_param_json(sys.get(), 0);
    const Elements before = numbered_elements();
    EXPECT_EQ(std::memcmp(sys.get(), before.data(), sizeof before), 0);
}

// --- Values -------------------------------------------------------------------------------------

TEST(ParameterDocument, ShowsPortsAsLowOrHighShifted)
{
    struct Case
    {
        std::int16_t low;
        std::int16_t high;
        const char* port;
    };
    const Case table[] = {
        {0, 0, "0"},
        {136, 19, "5000"},
        {0x34, 0x12, "4660"},
        {255, 255, "65535"},
        {255, 0, "255"},
        {0, 1, "256"},
        // What goes beyond a byte is neither cut nor added, but combined bit by bit.
        {256, 0, "256"},
        {256, 1, "256"},
        {257, 1, "257"},
        {0x7FFF, 0x7FFF, "8388607"},
        {0, 0x7FFF, "8388352"},
        {-1, 0, "-1"},
        {-1, 19, "-1"},
        {-256, 1, "-256"},
        {-32768, 0, "-32768"},
        {-32768, 127, "-256"},
        {5, -1, "-251"},
        {0, -1, "-256"},
        {0, -32768, "-8388608"},
        {255, -32768, "-8388353"},
        {-32768, -32768, "-32768"},
    };
    const struct
    {
        const char* key;
        std::int16_t* (*bytes)(st_param_sys& sys);
    } ports[] = {
        {"pri_video_dst_port", [](st_param_sys& sys) { return sys.pri_video_dst_port[0]; }},
        {"sec_video_dst_port", [](st_param_sys& sys) { return sys.sec_video_dst_port; }},
        {"pri_audio_dst_port", [](st_param_sys& sys) { return sys.pri_audio_dst_port[0]; }},
        {"sec_audio_dst_port", [](st_param_sys& sys) { return sys.sec_audio_dst_port; }},
        {"pri_anc_dst_port", [](st_param_sys& sys) { return sys.pri_anc_dst_port[0]; }},
        {"sec_anc_dst_port", [](st_param_sys& sys) { return sys.sec_anc_dst_port[0]; }},
    };
    for (const auto& [low, high, port] : table) {
        st_param_sys sys = {};
        for (const auto& [key, bytes] : ports) {
            bytes(sys)[0] = low;
            bytes(sys)[1] = high;
            EXPECT_THAT(Nmos().make_param_json(&sys, 0),
                        HasSubstr(std::string(1, '"') + key + "\":" + port + ","))
                << low << ' ' << high;
        }
    }
}

TEST(ParameterDocument, ShowsOctetsAsTheSignedNumbersTheyAre)
{
    st_param_sys sys = {};
    sys.pri_video_addresses[0] = {{10, 0, 0, 1}, {192, 168, 0, 10}};
    sys.sec_video_addresses[0] = {{-32768, -32768, -32768, -32768}, {32767, 32767, 32767, 32767}};
    sys.pri_anc_addresses[0] = {{-1, 256, 255, 0}, {239, 255, 255, 250}};
    EXPECT_THAT(Nmos().make_param_json(&sys, 0),
                AllOf(HasSubstr(R"("pri_video_dst_ip":"192.168.0.10",)"),
                      HasSubstr(R"("pri_video_src_ip":"10.0.0.1",)"),
                      HasSubstr(R"("sec_video_dst_ip":"32767.32767.32767.32767",)"),
                      HasSubstr(R"("sec_video_src_ip":"-32768.-32768.-32768.-32768",)"),
                      HasSubstr(R"("pri_anc_dst_ip":"239.255.255.250",)"),
                      HasSubstr(R"("pri_anc_src_ip":"-1.256.255.0",)")));
}

TEST(ParameterDocument, ShowsOtherSettingsAsSignedNumbers)
{
    st_param_sys sys = {};
    sys.type = -1;
    sys.redundancy = 32767;
    sys.ptp_profile = -32768;
    sys.pri_audio_vlan_id[0][0] = 4095;
    sys.sec_anc_masks[0].dst_mask = -256;
    sys.st2110_vfmt_rtp_payload_anc[0] = 100;
    const std::string document = Nmos().make_param_json(&sys, 0);
    EXPECT_THAT(document, HasSubstr(R"("ptp_profile":-32768,"redundancy":32767,)"));
    EXPECT_THAT(document, HasSubstr(R"("pri_audio_vlan_id":4095,)"));
    EXPECT_THAT(document, HasSubstr(R"("sec_anc_dst_mask":-256,)"));
    EXPECT_THAT(document, HasSubstr(R"("st2110_vfmt_rtp_payload_anc":100,)"));
    EXPECT_THAT(document, ::testing::EndsWith(R"(},"type":-1})"));
}

} // namespace
