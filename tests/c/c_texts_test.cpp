// SPDX-License-Identifier: Apache-2.0
//
// The C interface by texts, errors and values that are spelled out.

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "nmos_instrument/version.h"
#include "nmos_instrument_c.h"

namespace {

TEST(CTexts, BufferHoldsWhatFits)
{
    const std::string whole = "[\n    \"v1.2/\"\n]\n";
    ASSERT_EQ(whole.size(), 16U);

    EXPECT_EQ(nmos_node_version(nullptr, 0), 16U);

    char text[20] = "???????????????????";
    EXPECT_EQ(nmos_node_version(text, 0), 16U);
    EXPECT_STREQ(text, "???????????????????");
    EXPECT_EQ(nmos_node_version(text, 1), 16U);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(text[1], '?');
    EXPECT_EQ(nmos_node_version(text, 16), 16U);
    EXPECT_EQ(text, whole.substr(0, 15));
    EXPECT_EQ(text[16], '?');
    EXPECT_EQ(nmos_node_version(text, 17), 16U);
    EXPECT_EQ(text, whole);
    EXPECT_EQ(text[17], '?');
    EXPECT_EQ(nmos_node_version(text, 20), 16U);
    EXPECT_EQ(text, whole);
}

TEST(CTexts, NodeAndReceiver)
{
    auto node = std::make_unique<NMOS_IS04_ST>();
    std::strcpy(node->id, "67c25159-ce25-4000-a66c-f31fff890265");
    node->receivers_count = 1;
    char text[2000];
    const std::size_t length = nmos_node_self(node.get(), text, sizeof text);
    EXPECT_EQ(length, std::strlen(text));
    EXPECT_STREQ(text, "{\"api\":{\"versions\":[]},\"caps\":{},\"clocks\":[],\"description\":\"\","
                       "\"hostname\":\"\",\"href\":\"\","
                       "\"id\":\"67c25159-ce25-4000-a66c-f31fff890265\",\"interfaces\":[],"
                       "\"label\":\"\",\"services\":[],\"tags\":{},\"version\":\"\"}");

    EXPECT_EQ(nmos_node_sources(node.get(), text, sizeof text), 2U);
    EXPECT_STREQ(text, "[]");
    EXPECT_EQ(nmos_connection_single_receivers(node.get(), 0, 0, text, sizeof text), 10U);
    EXPECT_STREQ(text, "[\n  \"/\"\n]\n");
}

TEST(CTexts, UpdatesOfTheRecord)
{
    auto node = std::make_unique<NMOS_IS04_ST>();
    node->version_seconds = 1541234567;
    node->version_nanoseconds = 5;
    EXPECT_EQ(nmos_registration_update_version(node.get()), 0U);
    EXPECT_STREQ(node->version, "1541234567:5");

    node->endpoints_count = 1;
    std::strcpy(node->endpoints[0].host, "192.168.1.20");
    EXPECT_EQ(nmos_registration_update_ip_address(node.get(), "10.0.0.5", "3001"), 0U);
    EXPECT_STREQ(node->endpoints[0].host, "10.0168.1.20");
    EXPECT_EQ(node->endpoints[0].port, 3001);
}

TEST(CTexts, RecordsThatAreWrong)
{
    auto node = std::make_unique<NMOS_IS04_ST>();
    char text[5000];
    const std::size_t length = nmos_check_node(node.get(), text, sizeof text);
    ASSERT_LT(length, sizeof text);
    const std::string first = "id is \"\", it must be a UUID in lower case\n";
    EXPECT_EQ(std::string(text).substr(0, first.size()), first);
    EXPECT_EQ(text[length - 1], '\n');

    auto connections = std::make_unique<NMOS_IS05_ST>();
    EXPECT_EQ(nmos_check_connections(connections.get(), text, sizeof text), 0U);
    EXPECT_STREQ(text, "");
}

TEST(CTexts, PiecesWithNulBetween)
{
    int count = -1;
    char text[100];
    const auto split = [&](const char* whole, const char* delimiter, int max_parts) {
        const std::size_t length = nmos_connection_split_string(
            whole, std::strlen(whole), delimiter, max_parts, &count, text, sizeof text);
        return std::string(text, length);
    };
    using namespace std::string_literals;
    EXPECT_EQ(split("a bb 12x", " ", 8), "a\0bb\0"s + "12");
    EXPECT_EQ(count, 2);
    EXPECT_EQ(split("a bb 12x", " ", 2), "a\0bb"s);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(split("a bb 12x", " ", 1), "a");
    EXPECT_EQ(count, 1);
    EXPECT_EQ(split("a bb 12x", " ", 0), "");
    EXPECT_EQ(count, 0);
    EXPECT_EQ(split("a bb 12x", " ", -5), "");
    EXPECT_EQ(count, 0);
    EXPECT_EQ(split("7", " ", std::numeric_limits<int>::max()), "7");
    EXPECT_EQ(count, 0);
    EXPECT_EQ(split("", "", 3), "0");
    EXPECT_EQ(count, 0);
}

TEST(CTexts, TextsWithNulBytes)
{
    char text[100];
    EXPECT_EQ(nmos_connection_convert_crlf("a\0\rb", 4, "-", text, sizeof text), 4U);
    EXPECT_EQ(std::memcmp(text, "a\0-b", 5), 0);
    EXPECT_EQ(nmos_replace_all("a\0a", 3, "a", "xy", text, sizeof text), 5U);
    EXPECT_EQ(std::memcmp(text, "xy\0xy", 6), 0);
    EXPECT_EQ(nmos_connection_fullpath_from_request("GET /a HTTP/1.1", 15, text, sizeof text), 2U);
    EXPECT_STREQ(text, "/a");
}

/// A result may replace the text that it was made from.
TEST(CTexts, ResultInPlaceOfTheArgument)
{
    char text[20] = "a\nb\nc";
    EXPECT_EQ(nmos_connection_convert_crlf(text, std::strlen(text), "\r\n", text, sizeof text), 7U);
    EXPECT_STREQ(text, "a\r\nb\r\nc");
}

TEST(CSdpFile, IsAccepted)
{
    const char sdp[] = "o=- 1 1 IN IP4 192.0.2.10\r\nc=IN IP4 239.0.0.1/64\r\n"
                       "m=video 5004 RTP/AVP 96\r\n"
                       "a=fmtp:96 sampling=YCbCr-4:2:2; width=1920; height=1080; depth=10; "
                       "exactframerate=60000/1001; TCS=SDR; colorimetry=BT709; PM=2110GPM; \r\n";
    nmos_sdp_found found;
    char errors[200] = "?";
    EXPECT_EQ(nmos_connection_analyze_sdp_file(sdp, sizeof sdp - 1, 1, 3, 0, &found, errors,
                                               sizeof errors),
              0U);
    EXPECT_STREQ(errors, "");
    EXPECT_EQ(found.status, 200);
    EXPECT_EQ(found.found_flags, sdp_found_source_ip_leg0 | sdp_found_multicast_ip_leg0 |
                                     sdp_found_destination_port_leg0 | sdp_found_rtp_payload_type |
                                     sdp_found_sampling_and_depth | sdp_found_size |
                                     sdp_found_exactframerate | sdp_found_tcs |
                                     sdp_found_colorimetry | sdp_found_packing_mode);
    EXPECT_STREQ(found.source_ip[0], "192.0.2.10");
    EXPECT_STREQ(found.source_ip[1], "");
    EXPECT_STREQ(found.multicast_ip[0], "239.0.0.1");
    EXPECT_STREQ(found.destination_port[0], "5004");
    EXPECT_EQ(found.rtp_payload_type, 96);
    EXPECT_STREQ(found.sampling, "YCbCr-4:2:2");
    EXPECT_STREQ(found.depth, "10");
    EXPECT_STREQ(found.width, "1920");
    EXPECT_STREQ(found.height, "1080");
    EXPECT_STREQ(found.exactframerate, "60000/1001");
    EXPECT_EQ(found.size_interlaced, 0);
    EXPECT_STREQ(found.tcs, "SDR");
    EXPECT_STREQ(found.colorimetry, "BT709");
    EXPECT_STREQ(found.packing_mode, "2110GPM");
}

TEST(CSdpFile, IsRefusedWithMessages)
{
    const char sdp[] = "m=video 65536 RTP/AVP 97\r\n";
    nmos_sdp_found found;
    char errors[200];
    EXPECT_EQ(nmos_connection_analyze_sdp_file(sdp, sizeof sdp - 1, 1, 3, 0, &found, errors,
                                               sizeof errors),
              38U);
    EXPECT_STREQ(errors, "Destination Port 65536 is range over.\n");
    EXPECT_EQ(found.status, 400);
    EXPECT_EQ(found.rtp_payload_type, 97);
    EXPECT_STREQ(found.destination_port[0], "");
}

TEST(CSdpFile, LacksAPart)
{
    const char sdp[] = "m=video 65536 RTP/AVP 97\r\na=group:DUP first\r\n";
    nmos_sdp_found found;
    char errors[200];
    EXPECT_EQ(nmos_connection_analyze_sdp_file(sdp, sizeof sdp - 1, 1, 3, 0, &found, errors,
                                               sizeof errors),
              NMOS_ERROR_INCOMPLETE);
    EXPECT_STREQ(errors, "Destination Port 65536 is range over.\n");
    EXPECT_EQ(found.status, 400);
    EXPECT_EQ(found.rtp_payload_type, 97);
}

TEST(CSdpFile, TextThatDoesNotFit)
{
    // inet_aton ends an address at a blank, and the parser keeps the whole line.
    const std::string address = "192.0.2.10 ";
    const auto analyzed = [&](std::size_t length, nmos_sdp_found& found) {
        const std::string sdp = "o=- 1 1 IN IP4 " + address +
                                std::string(length - address.size(), 'x') +
                                "\r\nc=IN IP4 239.0.0.1/64\r\n";
        return nmos_connection_analyze_sdp_file(sdp.data(), sdp.size(), 1, 3, 0, &found, nullptr,
                                                0);
    };
    nmos_sdp_found found;
    EXPECT_EQ(analyzed(63, found), 0U);
    EXPECT_EQ(found.source_ip[0], address + std::string(52, 'x'));
    EXPECT_EQ(analyzed(64, found), NMOS_ERROR_TOO_LONG);
    EXPECT_STREQ(found.source_ip[0], "");
    EXPECT_STREQ(found.multicast_ip[0], "239.0.0.1");
    EXPECT_EQ(found.status, 200);
}

TEST(CErrors, IndexesAreChecked)
{
    auto node = std::make_unique<NMOS_IS04_ST>();
    node->sources_count = node->flows_count = node->senders_count = 1;
    auto connections = std::make_unique<NMOS_IS05_ST>();
    const auto settings = st_param_sys();
    for (const int index : {-1, 24, 1000000, std::numeric_limits<int>::min()}) {
        const auto refused = [&](auto function, auto... arguments) {
            char text[4] = "abc";
            const std::size_t result = function(node.get(), index, arguments..., text, sizeof text);
            return result == NMOS_ERROR_INDEX && text[0] == '\0' && text[1] == 'b';
        };
        EXPECT_TRUE(refused(nmos_node_sourceid));
        EXPECT_TRUE(refused(nmos_node_flowid));
        EXPECT_TRUE(refused(nmos_node_deviceid, 0, 0, 0));
        EXPECT_TRUE(refused(nmos_node_senderid));
        EXPECT_TRUE(refused(nmos_node_receiverid));
        EXPECT_TRUE(refused(nmos_registration_resource_sourceid));
        EXPECT_TRUE(refused(nmos_registration_resource_flowid));
        EXPECT_TRUE(refused(nmos_registration_resource_deviceid, 0, 0, 0));
        EXPECT_TRUE(refused(nmos_registration_resource_senderid));
        EXPECT_TRUE(refused(nmos_registration_resource_receiverid));
        EXPECT_EQ(nmos_connection_single_senderid_staged(connections.get(), index, nullptr, 0),
                  NMOS_ERROR_INDEX);
        EXPECT_EQ(nmos_connection_single_senderid_active(connections.get(), index, nullptr, 0),
                  NMOS_ERROR_INDEX);
        EXPECT_EQ(
            nmos_connection_single_senderid_sdp(connections.get(), index, &settings, nullptr, 0),
            NMOS_ERROR_INDEX);
    }
    EXPECT_EQ(nmos_connection_single_receiverid_staged(connections.get(), -1, nullptr, 0),
              NMOS_ERROR_INDEX);
    EXPECT_EQ(nmos_connection_single_receiverid_active(connections.get(), -1, nullptr, 0),
              NMOS_ERROR_INDEX);
}

TEST(CErrors, NumbersAreChecked)
{
    auto node = std::make_unique<NMOS_IS04_ST>();
    node->endpoints_count = 1;
    auto connections = std::make_unique<NMOS_IS05_ST>();
    connections->receivers[3].active.leg_count = 1;
    char text[4] = "abc";
    for (const double number : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        node->endpoints[0].port = number;
        text[0] = 'a';
        EXPECT_EQ(nmos_node_self(node.get(), text, sizeof text), NMOS_ERROR_NOT_FINITE);
        EXPECT_EQ(text[0], '\0');
        connections->receivers[3].active.transport_params[0].destination_port = number;
        EXPECT_EQ(nmos_connection_single_receiverid_active(connections.get(), 3, nullptr, 0),
                  NMOS_ERROR_NOT_FINITE);
    }
}

TEST(CErrors, NullPointers)
{
    auto node = std::make_unique<NMOS_IS04_ST>();
    auto connections = std::make_unique<NMOS_IS05_ST>();
    auto settings = st_param_sys();
    char text[4] = "abc";
    int count = 7;
    const auto is_refused = [&](std::size_t result) {
        const bool is_empty = text[0] == '\0';
        text[0] = 'a';
        return result == NMOS_ERROR_NULL_POINTER && is_empty;
    };
    EXPECT_EQ(nmos_xnmos(nullptr, 1), NMOS_ERROR_NULL_POINTER);
    EXPECT_EQ(nmos_node_self(node.get(), nullptr, 100), NMOS_ERROR_NULL_POINTER);
    EXPECT_TRUE(is_refused(nmos_node_self(nullptr, text, 4)));
    EXPECT_TRUE(is_refused(nmos_node_sources(nullptr, text, 4)));
    EXPECT_TRUE(is_refused(nmos_node_sourceid(nullptr, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_node_flows(nullptr, text, 4)));
    EXPECT_TRUE(is_refused(nmos_node_flowid(nullptr, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_node_devices(nullptr, 0, 0, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_node_deviceid(nullptr, 0, 0, 0, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_node_senders(nullptr, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_node_senderid(nullptr, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_node_receivers(nullptr, 0, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_node_receiverid(nullptr, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_node_receiverid_target(nullptr, text, 4)));
    EXPECT_TRUE(is_refused(nmos_registration_resource_node(nullptr, text, 4)));
    EXPECT_TRUE(is_refused(nmos_registration_resource_devices(nullptr, 0, 0, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_registration_resource_deviceid(nullptr, 0, 0, 0, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_registration_resource_sources(nullptr, text, 4)));
    EXPECT_TRUE(is_refused(nmos_registration_resource_sourceid(nullptr, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_registration_resource_flows(nullptr, text, 4)));
    EXPECT_TRUE(is_refused(nmos_registration_resource_flowid(nullptr, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_registration_resource_senders(nullptr, text, 4)));
    EXPECT_TRUE(is_refused(nmos_registration_resource_senderid(nullptr, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_registration_resource_receivers(nullptr, text, 4)));
    EXPECT_TRUE(is_refused(nmos_registration_resource_receiverid(nullptr, 0, text, 4)));
    EXPECT_EQ(nmos_registration_update_version(nullptr), NMOS_ERROR_NULL_POINTER);
    EXPECT_EQ(nmos_registration_update_ip_address(nullptr, "", ""), NMOS_ERROR_NULL_POINTER);
    EXPECT_EQ(nmos_registration_update_ip_address(node.get(), nullptr, ""),
              NMOS_ERROR_NULL_POINTER);
    EXPECT_EQ(nmos_registration_update_ip_address(node.get(), "", nullptr),
              NMOS_ERROR_NULL_POINTER);
    EXPECT_TRUE(is_refused(nmos_connection_single_senders(nullptr, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_connection_single_receivers(nullptr, 0, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_connection_single_senderid_constraints(nullptr, "", text, 4)));
    EXPECT_TRUE(is_refused(nmos_connection_single_senderid_constraints("", nullptr, text, 4)));
    EXPECT_TRUE(is_refused(nmos_connection_single_receiverid_constraints(nullptr, "", text, 4)));
    EXPECT_TRUE(is_refused(nmos_connection_single_receiverid_constraints("", nullptr, text, 4)));
    EXPECT_TRUE(is_refused(nmos_connection_single_receiverid_staged(nullptr, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_connection_single_receiverid_active(nullptr, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_connection_single_senderid_staged(nullptr, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_connection_single_senderid_active(nullptr, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_connection_single_senderid_sdp(nullptr, 0, &settings, text, 4)));
    EXPECT_TRUE(
        is_refused(nmos_connection_single_senderid_sdp(connections.get(), 0, nullptr, text, 4)));
    nmos_sdp_found found;
    EXPECT_TRUE(is_refused(nmos_connection_analyze_sdp_file(nullptr, 0, 0, 0, 0, &found, text, 4)));
    EXPECT_TRUE(is_refused(nmos_connection_analyze_sdp_file("", 0, 0, 0, 0, nullptr, text, 4)));
    EXPECT_EQ(nmos_connection_analyze_sdp_file("", 0, 0, 0, 0, &found, nullptr, 4),
              NMOS_ERROR_NULL_POINTER);
    EXPECT_TRUE(is_refused(nmos_connection_convert_crlf(nullptr, 0, "", text, 4)));
    EXPECT_TRUE(is_refused(nmos_connection_convert_crlf("", 0, nullptr, text, 4)));
    EXPECT_TRUE(is_refused(nmos_connection_split_string(nullptr, 0, "", 1, &count, text, 4)));
    EXPECT_TRUE(is_refused(nmos_connection_split_string("", 0, nullptr, 1, &count, text, 4)));
    EXPECT_EQ(count, 7);
    EXPECT_TRUE(is_refused(nmos_connection_split_string("", 0, "", 1, nullptr, text, 4)));
    EXPECT_TRUE(is_refused(nmos_connection_fullpath_from_request(nullptr, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_replace_all(nullptr, 0, "", "", text, 4)));
    EXPECT_TRUE(is_refused(nmos_replace_all("", 0, nullptr, "", text, 4)));
    EXPECT_TRUE(is_refused(nmos_replace_all("", 0, "", nullptr, text, 4)));
    EXPECT_TRUE(is_refused(nmos_param_json(nullptr, text, 4)));
    EXPECT_EQ(nmos_advertisement_init(nullptr), NMOS_ERROR_NULL_POINTER);
    EXPECT_EQ(nmos_advertisement_update_txt_port_number(nullptr, 1), NMOS_ERROR_NULL_POINTER);
    EXPECT_EQ(nmos_advertisement_update_txt_protocol(nullptr, 1), NMOS_ERROR_NULL_POINTER);
    EXPECT_TRUE(is_refused(nmos_advertisement_node_service_text(nullptr, 1, text, 4)));
    EXPECT_TRUE(is_refused(nmos_check_node(nullptr, text, 4)));
    EXPECT_TRUE(is_refused(nmos_check_connections(nullptr, text, 4)));
    EXPECT_TRUE(is_refused(nmos_check_settings(nullptr, text, 4)));
    EXPECT_TRUE(
        is_refused(nmos_check_records(nullptr, connections.get(), &settings, 0, 0, 0, text, 4)));
    EXPECT_TRUE(is_refused(nmos_check_records(node.get(), nullptr, &settings, 0, 0, 0, text, 4)));
    EXPECT_TRUE(
        is_refused(nmos_check_records(node.get(), connections.get(), nullptr, 0, 0, 0, text, 4)));
}

TEST(CErrors, RequestLineWithoutAPath)
{
    char text[4] = "abc";
    EXPECT_EQ(nmos_connection_fullpath_from_request("GET", 3, text, 4), NMOS_ERROR_INCOMPLETE);
    EXPECT_STREQ(text, "");
}

TEST(CTexts, Version)
{
    EXPECT_STREQ(nmos_version(), nmos_instrument::version());
}

TEST(CErrors, WordsForPeople)
{
    EXPECT_STREQ(nmos_error_text(0), "no error");
    EXPECT_STREQ(nmos_error_text(SIZE_MAX - 16), "no error");
    EXPECT_STREQ(nmos_error_text(NMOS_ERROR_FIRST), "an error of the library itself");
    EXPECT_STREQ(nmos_error_text(NMOS_ERROR_NULL_POINTER), "a pointer is null");
    EXPECT_STREQ(nmos_error_text(NMOS_ERROR_NO_MEMORY), "no memory is left");
}

} // namespace
