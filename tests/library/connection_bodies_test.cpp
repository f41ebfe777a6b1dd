// SPDX-License-Identifier: Apache-2.0
//
// The staged and active bodies of senders and receivers, compared whole.

#include "nmos_instrument/ConnectionApi.h"

#include <cfloat>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <memory>
#include <new>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/body_parts.h"
#include "support/same_bytes.h"
#include "support/set_text.h"
#include "support/varied.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

constexpr double nan_value = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

/// An empty record: no legs, every text empty, every flag off.
std::unique_ptr<NMOS_IS05_ST> empty_state()
{
    return std::make_unique<NMOS_IS05_ST>();
}

void fill_staged(CONNECTION_HALF_IS05_ST& half)
{
    half.leg_count = 2;
    set_text(half.peer_id, "9d8ab0e4-6c0d-5ec1-a8b0-5f3c4e7a0001");
    half.master_enable = 1;
    set_text(half.mode, "activate_scheduled_absolute");
    set_text(half.requested_time, "1700000037:500000000");
    set_text(half.activation_time, "1700000036:0");
    set_text(half.transport_file_data, "v=0\r\nc=IN IP4 239.10.0.1/64\r\n");
    set_text(half.transport_file_type, "application/sdp");
    set_text(half.transport_params[0].source_ip, "192.168.10.1");
    set_text(half.transport_params[0].destination_ip, "239.10.0.1");
    set_text(half.transport_params[0].interface_ip, "192.168.10.9");
    half.transport_params[0].destination_port = 5004;
    half.transport_params[0].rtp_enabled = 1;
    set_text(half.transport_params[1].source_ip, "192.168.20.1");
    set_text(half.transport_params[1].destination_ip, "239.20.0.1");
    set_text(half.transport_params[1].interface_ip, "192.168.20.9");
    half.transport_params[1].destination_port = 5014;
    half.transport_params[1].rtp_enabled = 0;
}

void fill_active(CONNECTION_HALF_IS05_ST& half)
{
    half.leg_count = 2;
    set_text(half.peer_id, "9d8ab0e4-6c0d-5ec1-a8b0-5f3c4e7a0002");
    half.master_enable = 0;
    set_text(half.mode, "activate_immediate");
    set_text(half.requested_time, "1700000001:1");
    set_text(half.activation_time, "1700000002:2");
    set_text(half.transport_file_data, "v=0\r\n");
    set_text(half.transport_file_type, "text/plain");
    set_text(half.transport_params[0].source_ip, "10.1.0.1");
    set_text(half.transport_params[0].destination_ip, "232.1.0.1");
    set_text(half.transport_params[0].interface_ip, "10.1.0.9");
    half.transport_params[0].destination_port = 5006;
    half.transport_params[0].rtp_enabled = 0;
    set_text(half.transport_params[1].source_ip, "10.2.0.1");
    set_text(half.transport_params[1].destination_ip, "232.2.0.1");
    set_text(half.transport_params[1].interface_ip, "10.2.0.9");
    half.transport_params[1].destination_port = 5016;
    half.transport_params[1].rtp_enabled = 1;
}

/// Every text that may stand for null does.
void fill_null(CONNECTION_HALF_IS05_ST& half)
{
    half.leg_count = 2;
    set_text(half.peer_id, "null");
    set_text(half.mode, "null");
    set_text(half.requested_time, "null");
    set_text(half.activation_time, "null");
    set_text(half.transport_file_data, "null");
    set_text(half.transport_file_type, "null");
    for (auto& leg : half.transport_params) {
        set_text(leg.source_ip, "null");
        set_text(leg.destination_ip, "null");
        set_text(leg.interface_ip, "null");
        leg.destination_port = 5004;
    }
}

/// Texts that are near to "null" and do not mean it.
void fill_nearly_null(CONNECTION_HALF_IS05_ST& half)
{
    half.leg_count = 1;
    set_text(half.peer_id, "nul");
    set_text(half.mode, "null ");
    set_text(half.requested_time, "Null");
    set_text(half.activation_time, "");
    set_text(half.transport_file_data, "nulll");
    set_text(half.transport_file_type, " null");
    set_text(half.transport_params[0].source_ip, "NULL");
    set_text(half.transport_params[0].destination_ip, "null\n");
    set_text(half.transport_params[0].interface_ip, "\"null\"");
}

/// `body` without legs, with these.
std::string with_legs(const std::string& body, const std::string& legs)
{
    return varied(body, {{R"("transport_params":[])", R"("transport_params":[)" + legs + "]"}});
}

const std::string cleared_receiver =
    R"({"activation":{"activation_time":"","mode":"","requested_time":""},)"
    R"("master_enable":false,"sender_id":"","transport_file":{"data":"","type":""},)"
    R"("transport_params":[]})";
const std::string cleared_receiver_leg =
    R"({"destination_port":0,"interface_ip":"","multicast_ip":"",)"
    R"("rtp_enabled":false,"source_ip":""})";

/// What fill_active makes of a receiver.
const std::string active_receiver =
    R"({"activation":{"activation_time":"1700000002:2","mode":"activate_immediate",)"
    R"("requested_time":"1700000001:1"},"master_enable":false,)"
    R"("sender_id":"9d8ab0e4-6c0d-5ec1-a8b0-5f3c4e7a0002",)"
    R"("transport_file":{"data":"v=0\r\n","type":"text\/plain"},"transport_params":[]})";
const std::string active_receiver_leg_0 =
    R"({"destination_port":5006,"interface_ip":"10.1.0.9",)"
    R"("multicast_ip":"232.1.0.1","rtp_enabled":false,"source_ip":"10.1.0.1"})";
const std::string active_receiver_leg_1 =
    R"({"destination_port":5016,"interface_ip":"10.2.0.9",)"
    R"("multicast_ip":"232.2.0.1","rtp_enabled":true,"source_ip":"10.2.0.1"})";

const std::string cleared_sender =
    R"({"activation":{"activation_time":"","mode":"","requested_time":""},)"
    R"("master_enable":false,"receiver_id":"","transport_params":[]})";
const std::string cleared_sender_leg =
    R"({"destination_ip":"","destination_port":0,"rtp_enabled":false,)"
    R"("source_ip":"","source_port":0})";

/// What fill_active makes of a sender in both halves.
const std::string active_sender =
    R"({"activation":{"activation_time":"1700000002:2","mode":"activate_immediate",)"
    R"("requested_time":"1700000001:1"},"master_enable":false,)"
    R"("receiver_id":"9d8ab0e4-6c0d-5ec1-a8b0-5f3c4e7a0002","transport_params":[]})";
const std::string active_sender_leg_0 =
    R"({"destination_ip":"232.1.0.1","destination_port":5006,)"
    R"("rtp_enabled":false,"source_ip":"10.1.0.1","source_port":5006})";
const std::string active_sender_leg_1 =
    R"({"destination_ip":"232.2.0.1","destination_port":5016,)"
    R"("rtp_enabled":true,"source_ip":"10.2.0.1","source_port":5016})";

// --- Receivers ----------------------------------------------------------------------------------

TEST(ReceiverBodies, StagedReadsTheStagedHalf)
{
    const auto state = empty_state();
    fill_staged(state->receivers[7].staged);
    fill_active(state->receivers[7].active);
    EXPECT_EQ(
        ConnectionApi().make_single_receiverid_staged(state.get(), 7),
        R"({"activation":{"activation_time":"1700000036:0","mode":"activate_scheduled_absolute",)"
        R"("requested_time":"1700000037:500000000"},"master_enable":true,)"
        R"("sender_id":"9d8ab0e4-6c0d-5ec1-a8b0-5f3c4e7a0001",)"
        R"("transport_file":{"data":"v=0\r\nc=IN IP4 239.10.0.1\/64\r\n",)"
        R"("type":"application\/sdp"},)"
        R"("transport_params":[{"destination_port":5004,"interface_ip":"192.168.10.9",)"
        R"("multicast_ip":"239.10.0.1","rtp_enabled":true,"source_ip":"192.168.10.1"},)"
        R"({"destination_port":5014,"interface_ip":"192.168.20.9",)"
        R"("multicast_ip":"239.20.0.1","rtp_enabled":false,"source_ip":"192.168.20.1"}]})");
}

TEST(ReceiverBodies, ActiveReadsTheActiveHalf)
{
    const auto state = empty_state();
    fill_staged(state->receivers[7].staged);
    fill_active(state->receivers[7].active);
    EXPECT_EQ(ConnectionApi().make_single_receiverid_active(state.get(), 7),
              with_legs(active_receiver, active_receiver_leg_0 + "," + active_receiver_leg_1));
}

TEST(ReceiverBodies, OfEqualHalvesAreEqual)
{
    const auto state = empty_state();
    fill_staged(state->receivers[3].staged);
    fill_staged(state->receivers[3].active);
    EXPECT_EQ(ConnectionApi().make_single_receiverid_staged(state.get(), 3),
              ConnectionApi().make_single_receiverid_active(state.get(), 3));

    fill_null(state->receivers[3].staged);
    fill_null(state->receivers[3].active);
    EXPECT_EQ(ConnectionApi().make_single_receiverid_staged(state.get(), 3),
              ConnectionApi().make_single_receiverid_active(state.get(), 3));
}

TEST(ReceiverBodies, OfAClearedRecordHaveEmptyTextsAndNoLegs)
{
    const auto state = empty_state();
    EXPECT_EQ(ConnectionApi().make_single_receiverid_staged(state.get(), 0), cleared_receiver);
    EXPECT_EQ(ConnectionApi().make_single_receiverid_active(state.get(), 0), cleared_receiver);
}

TEST(ReceiverBodies, NullTextsBecomeNull)
{
    const auto state = empty_state();
    constexpr const char* body =
        R"({"activation":{"activation_time":null,"mode":null,"requested_time":null},)"
        R"("master_enable":false,"sender_id":null,"transport_file":{"data":null,"type":null},)"
        R"("transport_params":[{"destination_port":5004,"interface_ip":null,"multicast_ip":null,)"
        R"("rtp_enabled":false,"source_ip":null},)"
        R"({"destination_port":5004,"interface_ip":null,"multicast_ip":null,)"
        R"("rtp_enabled":false,"source_ip":null}]})";
    fill_null(state->receivers[0].staged);
    EXPECT_EQ(ConnectionApi().make_single_receiverid_staged(state.get(), 0), body);
    fill_null(state->receivers[0].active);
    EXPECT_EQ(ConnectionApi().make_single_receiverid_active(state.get(), 0), body);
}

TEST(ReceiverBodies, OneNullTextLeavesTheOthersAlone)
{
    const auto state = empty_state();
    auto& half = state->receivers[0].staged;
    fill_active(half);
    half.leg_count = 1;
    set_text(half.peer_id, "null");
    set_text(half.mode, "null");
    set_text(half.transport_file_data, "null");
    set_text(half.transport_params[0].destination_ip, "null");
    EXPECT_EQ(
        ConnectionApi().make_single_receiverid_staged(state.get(), 0),
        varied(with_legs(active_receiver, active_receiver_leg_0),
               {{R"("sender_id":"9d8ab0e4-6c0d-5ec1-a8b0-5f3c4e7a0002")", R"("sender_id":null)"},
                {R"("mode":"activate_immediate")", R"("mode":null)"},
                {R"("data":"v=0\r\n")", R"("data":null)"},
                {R"("multicast_ip":"232.1.0.1")", R"("multicast_ip":null)"}}));
}

TEST(ReceiverBodies, NearlyNullTextsAreStrings)
{
    const auto state = empty_state();
    constexpr const char* body =
        R"({"activation":{"activation_time":"","mode":"null ","requested_time":"Null"},)"
        R"("master_enable":false,"sender_id":"nul",)"
        R"("transport_file":{"data":"nulll","type":" null"},)"
        R"("transport_params":[{"destination_port":0,"interface_ip":"\"null\"",)"
        R"("multicast_ip":"null\n","rtp_enabled":false,"source_ip":"NULL"}]})";
    fill_nearly_null(state->receivers[0].staged);
    EXPECT_EQ(ConnectionApi().make_single_receiverid_staged(state.get(), 0), body);
    fill_nearly_null(state->receivers[0].active);
    EXPECT_EQ(ConnectionApi().make_single_receiverid_active(state.get(), 0), body);
}

TEST(ReceiverBodies, BytesBehindTheNulDoNotCount)
{
    const auto state = empty_state();
    auto& half = state->receivers[0].staged;
    fill_whole(half.peer_id, 'x');
    std::memcpy(half.peer_id, "null", 5);
    fill_whole(half.mode, 'x');
    std::memcpy(half.mode, "ab", 3);
    fill_whole(half.requested_time, 'x');
    half.requested_time[0] = '\0';
    EXPECT_EQ(ConnectionApi().make_single_receiverid_staged(state.get(), 0),
              varied(cleared_receiver, {{R"("mode":"")", R"("mode":"ab")"},
                                        {R"("sender_id":"")", R"("sender_id":null)"}}));
}

TEST(ReceiverBodies, FollowTheLegCount)
{
    const std::string& no_leg = active_receiver;
    const std::string one_leg = with_legs(no_leg, active_receiver_leg_0);
    const std::string two_legs =
        with_legs(no_leg, active_receiver_leg_0 + "," + active_receiver_leg_1);
    const struct
    {
        int leg_count;
        const std::string& body;
    } rows[] = {
        {INT_MIN, no_leg}, {-1, no_leg},  {0, no_leg},         {1, one_leg},
        {2, two_legs},     {3, two_legs}, {INT_MAX, two_legs},
    };
    const auto state = empty_state();
    fill_active(state->receivers[23].staged);
    fill_active(state->receivers[23].active);
    for (const auto& row : rows) {
        state->receivers[23].staged.leg_count = row.leg_count;
        state->receivers[23].active.leg_count = 2;
        EXPECT_EQ(ConnectionApi().make_single_receiverid_staged(state.get(), 23), row.body)
            << row.leg_count;
        state->receivers[23].staged.leg_count = 2;
        state->receivers[23].active.leg_count = row.leg_count;
        EXPECT_EQ(ConnectionApi().make_single_receiverid_active(state.get(), 23), row.body)
            << row.leg_count;
    }
}

TEST(ReceiverBodies, AnyFlagByteButZeroIsTrue)
{
    const auto state = empty_state();
    auto& half = state->receivers[0].staged;
    half.leg_count = 1;
    for (const std::uint8_t flag : std::initializer_list<std::uint8_t>{1, 2, 128, 255}) {
        half.master_enable = flag;
        half.transport_params[0].rtp_enabled = flag;
        EXPECT_EQ(ConnectionApi().make_single_receiverid_staged(state.get(), 0),
                  varied(with_legs(cleared_receiver, cleared_receiver_leg),
                         {{R"("master_enable":false)", R"("master_enable":true)"},
                          {R"("rtp_enabled":false)", R"("rtp_enabled":true)"}}))
            << int{flag};
    }
}

TEST(ReceiverBodies, EscapeTextsAsJson)
{
    const auto state = empty_state();
    auto& half = state->receivers[0].active;
    set_text(half.peer_id, "a\"b\\c/d");
    set_text(half.mode, "\b\f\n\r\t");
    set_text(half.requested_time, "\x01\x1F\x7F");
    set_text(half.activation_time, "\xC3\xA9\x80\xFF");
    set_text(half.transport_file_data, "//\\/\r\n");
    set_text(half.transport_file_type, "'<>&");
    EXPECT_EQ(ConnectionApi().make_single_receiverid_active(state.get(), 0),
              "{\"activation\":{\"activation_time\":\"\xC3\xA9\x80\xFF\","
              "\"mode\":\"\\b\\f\\n\\r\\t\","
              "\"requested_time\":\"\\u0001\\u001f\\u007f\"},\"master_enable\":false,"
              "\"sender_id\":\"a\\\"b\\\\c\\/d\","
              "\"transport_file\":{\"data\":\"\\/\\/\\\\\\/\\r\\n\",\"type\":\"'<>&\"},"
              "\"transport_params\":[]}");
}

// A transport file is long enough to be written in several pieces; where they meet must not show.
TEST(ReceiverBodies, HoldLongTextsThatNeedEscapesEverywhere)
{
    const auto state = empty_state();
    auto& half = state->receivers[0].staged;
    for (std::size_t shift = 0; shift < 32; ++shift) {
        set_text(half.mode, std::string(shift, 'm'));
        std::string data;
        std::string escaped;
        while (data.size() + 8 < sizeof half.transport_file_data) {
            data += "\x01/\"\\ab\n\xFF";
            escaped += "\\u0001\\/\\\"\\\\ab\\n\xFF";
        }
        set_text(half.transport_file_data, data);
        EXPECT_EQ(ConnectionApi().make_single_receiverid_staged(state.get(), 0),
                  varied(cleared_receiver,
                         {{R"("mode":"")", R"("mode":")" + std::string(shift, 'm') + '"'},
                          {R"("data":"")", R"("data":")" + escaped + '"'}}));
    }

    set_text(half.mode, "");
    fill_whole(half.transport_file_data, '\x1F');
    std::string escaped;
    for (int i = 0; i < 4096; ++i)
        escaped += "\\u001f";
    EXPECT_EQ(ConnectionApi().make_single_receiverid_staged(state.get(), 0),
              varied(cleared_receiver, {{R"("data":"")", R"("data":")" + escaped + '"'}}));
}

TEST(ReceiverBodies, EscapeEachByteThatNeedsItAndNoOther)
{
    const auto state = empty_state();
    auto& half = state->receivers[0].active;
    std::string data;
    for (int byte = 1; byte <= 255; ++byte)
        data += static_cast<char>(byte);
    std::string high;
    for (int byte = 128; byte <= 255; ++byte)
        high += static_cast<char>(byte);
    set_text(half.transport_file_data, data);
    EXPECT_EQ(
        ConnectionApi().make_single_receiverid_active(state.get(), 0),
        varied(cleared_receiver,
               {{R"("data":"")",
                 R"("data":")"
                 R"(\u0001\u0002\u0003\u0004\u0005\u0006\u0007\b\t\n\u000b\f\r\u000e\u000f)"
                 R"(\u0010\u0011\u0012\u0013\u0014\u0015\u0016\u0017\u0018\u0019\u001a\u001b)"
                 R"(\u001c\u001d\u001e\u001f !\"#$%&'()*+,-.\/0123456789:;<=>?@ABCDEFGHIJKLMNO)"
                 R"(PQRSTUVWXYZ[\\]^_`abcdefghijklmnopqrstuvwxyz{|}~\u007f)" +
                     high + '"'}}));
}

TEST(ReceiverBodies, FieldsWithoutNulAreTheirWholeWidth)
{
    const auto state = empty_state();
    auto& half = state->receivers[23].active;
    half.leg_count = 2;
    fill_whole(half.peer_id, 'p');
    fill_whole(half.mode, 'm');
    fill_whole(half.requested_time, 'r');
    fill_whole(half.activation_time, 'a');
    fill_whole(half.transport_file_data, 'd');
    fill_whole(half.transport_file_type, 't');
    for (auto& leg : half.transport_params) {
        fill_whole(leg.source_ip, 's');
        fill_whole(leg.destination_ip, 'e');
        fill_whole(leg.interface_ip, 'i');
    }
    const std::string leg = R"({"destination_port":0,"interface_ip":")" + std::string(32, 'i') +
                            R"(","multicast_ip":")" + std::string(32, 'e') +
                            R"(","rtp_enabled":false,"source_ip":")" + std::string(32, 's') +
                            R"("})";
    EXPECT_EQ(ConnectionApi().make_single_receiverid_active(state.get(), 23),
              R"({"activation":{"activation_time":")" + std::string(48, 'a') + R"(","mode":")" +
                  std::string(32, 'm') + R"(","requested_time":")" + std::string(48, 'r') +
                  R"("},"master_enable":false,"sender_id":")" + std::string(48, 'p') +
                  R"(","transport_file":{"data":")" + std::string(4096, 'd') + R"(","type":")" +
                  std::string(39, 't') + R"("},"transport_params":[)" + leg + "," + leg + "]}");
}

struct PortText
{
    double port;
    const char* text;
};

constexpr PortText port_texts[] = {
    {5004.0, "5004"},
    {0.0, "0"},
    {-0.0, "-0"},
    {65535.0, "65535"},
    {-1.0, "-1"},
    {0.5, "0.5"},
    {-0.5, "-0.5"},
    {5004.25, "5004.25"},
    {0.1, "0.10000000000000001"},
    {1e15, "1000000000000000"},
    {9007199254740991.0, "9007199254740991"},
    {-9007199254740991.0, "-9007199254740991"},
    {9007199254740992.0, "9007199254740992"},
    {-9007199254740992.0, "-9007199254740992"},
    {1e17, "1e+17"},
    {1e300, "1.0000000000000001e+300"},
    {DBL_MAX, "1.7976931348623157e+308"},
    {4.9406564584124654e-324, "4.9406564584124654e-324"},
};

TEST(ReceiverBodies, PrintAnyFinitePort)
{
    const auto state = empty_state();
    auto& half = state->receivers[0].active;
    half.leg_count = 2;
    for (const auto& [port, text] : port_texts) {
        SCOPED_TRACE(text);
        half.transport_params[0].destination_port = 1;
        half.transport_params[1].destination_port = port;
        EXPECT_EQ(ConnectionApi().make_single_receiverid_active(state.get(), 0),
                  with_legs(cleared_receiver,
                            varied(cleared_receiver_leg, {{R"(port":0)", R"(port":1)"}}) + "," +
                                varied(cleared_receiver_leg,
                                       {{R"(port":0)", std::string(R"(port":)") + text}})));
    }
}

TEST(ReceiverBodies, RefuseAPortThatIsNotFinite)
{
    const auto state = empty_state();
    auto& receiver = state->receivers[0];
    receiver.staged.leg_count = receiver.active.leg_count = 2;
    for (int leg = 0; leg < 2; ++leg) {
        for (const double port : not_finite) {
            SCOPED_TRACE(port);
            receiver.staged.transport_params[leg].destination_port = port;
            EXPECT_EQ(overflow_text([&] {
                          static_cast<void>(
                              ConnectionApi().make_single_receiverid_staged(state.get(), 0));
                      }),
                      "");
            EXPECT_NO_THROW(ConnectionApi().make_single_receiverid_active(state.get(), 0));
            receiver.staged.transport_params[leg].destination_port = 0;

            receiver.active.transport_params[leg].destination_port = port;
            EXPECT_EQ(overflow_text([&] {
                          static_cast<void>(
                              ConnectionApi().make_single_receiverid_active(state.get(), 0));
                      }),
                      "");
            EXPECT_NO_THROW(ConnectionApi().make_single_receiverid_staged(state.get(), 0));
            receiver.active.transport_params[leg].destination_port = 0;
        }
    }
}

TEST(ReceiverBodies, DoNotLookAtThePortOfALegThatIsNotInUse)
{
    const auto state = empty_state();
    auto& half = state->receivers[0].staged;
    half.transport_params[0].destination_port = 1;
    half.transport_params[1].destination_port = nan_value;
    half.leg_count = 1;
    EXPECT_EQ(
        ConnectionApi().make_single_receiverid_staged(state.get(), 0),
        with_legs(cleared_receiver, varied(cleared_receiver_leg, {{R"(port":0)", R"(port":1)"}})));
    half.transport_params[0].destination_port = infinity;
    half.leg_count = 0;
    EXPECT_EQ(ConnectionApi().make_single_receiverid_staged(state.get(), 0), cleared_receiver);
}

TEST(ReceiverBodies, ReadTheReceiverOfTheIndex)
{
    const auto state = empty_state();
    for (int i = 0; i < 24; ++i) {
        set_text(state->receivers[i].staged.peer_id, "staged " + std::to_string(i));
        set_text(state->receivers[i].active.peer_id, "active " + std::to_string(i));
    }
    for (int i = 0; i < 24; ++i) {
        EXPECT_EQ(ConnectionApi().make_single_receiverid_staged(state.get(), i),
                  varied(cleared_receiver, {{R"("sender_id":"")", R"("sender_id":"staged )" +
                                                                      std::to_string(i) + '"'}}));
        EXPECT_EQ(ConnectionApi().make_single_receiverid_active(state.get(), i),
                  varied(cleared_receiver, {{R"("sender_id":"")", R"("sender_id":"active )" +
                                                                      std::to_string(i) + '"'}}));
    }
}

/// A record of a host that was built for another number of receivers.
class StateOfOtherSize
{
public:
    explicit StateOfOtherSize(std::size_t receivers)
        : bytes_(static_cast<char*>(std::calloc(1, 82928 + 13800 * receivers)))
    {
        if (bytes_ == nullptr)
            throw std::bad_alloc();
    }
    ~StateOfOtherSize() { std::free(bytes_); }
    StateOfOtherSize(const StateOfOtherSize&) = delete;
    StateOfOtherSize& operator=(const StateOfOtherSize&) = delete;

    NMOS_IS05_ST* record() { return reinterpret_cast<NMOS_IS05_ST*>(bytes_); }
    CONNECTION_IS05_ST& sender(std::size_t index)
    {
        return *reinterpret_cast<CONNECTION_IS05_ST*>(bytes_ + 24 + 13800 * index);
    }
    CONNECTION_IS05_ST& receiver(std::size_t index)
    {
        return *reinterpret_cast<CONNECTION_IS05_ST*>(bytes_ + 82928 + 13800 * index);
    }

private:
    char* bytes_;
};

TEST(ReceiverBodies, ReachEveryReceiverOfALargerRecord)
{
    StateOfOtherSize state(65);
    for (const int index : {23, 24, 25, 64}) {
        SCOPED_TRACE(index);
        auto& receiver = state.receiver(static_cast<std::size_t>(index));
        fill_null(receiver.staged);
        fill_null(receiver.active);
        receiver.staged.leg_count = receiver.active.leg_count = 1;
        set_text(receiver.staged.peer_id, "staged " + std::to_string(index));
        set_text(receiver.active.peer_id, "active " + std::to_string(index));
        const std::string body =
            R"({"activation":{"activation_time":null,"mode":null,"requested_time":null},)"
            R"("master_enable":false,"sender_id":"HALF )" +
            std::to_string(index) +
            R"(","transport_file":{"data":null,"type":null},)"
            R"("transport_params":[{"destination_port":5004,"interface_ip":null,)"
            R"("multicast_ip":null,"rtp_enabled":false,"source_ip":null}]})";
        EXPECT_EQ(ConnectionApi().make_single_receiverid_staged(state.record(), index),
                  varied(body, {{"HALF", "staged"}}));
        EXPECT_EQ(ConnectionApi().make_single_receiverid_active(state.record(), index),
                  varied(body, {{"HALF", "active"}}));
    }
}

TEST(ReceiverBodies, NeedNoMoreReceiversThanTheOneAskedFor)
{
    StateOfOtherSize state(1);
    fill_whole(state.receiver(0).active.transport_file_type, 't');
    EXPECT_EQ(ConnectionApi().make_single_receiverid_active(state.record(), 0),
              varied(cleared_receiver,
                     {{R"("type":"")", R"("type":"ttttttttttttttttttttttttttttttttttttttt")"}}));
}

TEST(ReceiverBodies, RefuseANegativeIndexBeforeTheyRead)
{
    for (const int index : {-1, -24, INT_MIN}) {
        SCOPED_TRACE(index);
        EXPECT_THAT(
            out_of_range_text([&] {
                static_cast<void>(ConnectionApi().make_single_receiverid_staged(nullptr, index));
            }),
            AllOf(HasSubstr("make_single_receiverid_staged"), HasSubstr(std::to_string(index)),
                  HasSubstr(" 0 ")));
        EXPECT_THAT(
            out_of_range_text([&] {
                static_cast<void>(ConnectionApi().make_single_receiverid_active(nullptr, index));
            }),
            AllOf(HasSubstr("make_single_receiverid_active"), HasSubstr(std::to_string(index)),
                  HasSubstr(" 0 ")));
    }
}

// --- Senders ------------------------------------------------------------------------------------

TEST(SenderBodies, StagedRepeatsItsDestinationPortAsSourcePort)
{
    const auto state = empty_state();
    fill_staged(state->senders[2].staged);
    fill_active(state->senders[2].active);
    EXPECT_EQ(
        ConnectionApi().make_single_senderid_staged(state.get(), 2),
        R"({"activation":{"activation_time":"1700000036:0","mode":"activate_scheduled_absolute",)"
        R"("requested_time":"1700000037:500000000"},"master_enable":true,)"
        R"("receiver_id":"9d8ab0e4-6c0d-5ec1-a8b0-5f3c4e7a0001",)"
        R"("transport_params":[{"destination_ip":"239.10.0.1","destination_port":5004,)"
        R"("rtp_enabled":true,"source_ip":"192.168.10.1","source_port":5004},)"
        R"({"destination_ip":"239.20.0.1","destination_port":5014,)"
        R"("rtp_enabled":false,"source_ip":"192.168.20.1","source_port":5014}]})");
}

TEST(SenderBodies, ActiveShowsTheStagedDestinationPortAsSourcePort)
{
    const auto state = empty_state();
    fill_staged(state->senders[2].staged);
    fill_active(state->senders[2].active);
    EXPECT_EQ(
        ConnectionApi().make_single_senderid_active(state.get(), 2),
        with_legs(active_sender, varied(active_sender_leg_0 + "," + active_sender_leg_1,
                                        {{R"("source_port":5006)", R"("source_port":5004)"},
                                         {R"("source_port":5016)", R"("source_port":5014)"}})));
}

TEST(SenderBodies, ActiveShowsTheStagedPortsAlsoOfLegsThatAreNotStaged)
{
    const auto state = empty_state();
    fill_staged(state->senders[0].staged);
    fill_active(state->senders[0].active);
    state->senders[0].staged.leg_count = 0;
    EXPECT_EQ(
        ConnectionApi().make_single_senderid_active(state.get(), 0),
        with_legs(active_sender, varied(active_sender_leg_0 + "," + active_sender_leg_1,
                                        {{R"("source_port":5006)", R"("source_port":5004)"},
                                         {R"("source_port":5016)", R"("source_port":5014)"}})));
}

TEST(SenderBodies, OfAClearedRecordHaveEmptyTextsAndNoLegs)
{
    const auto state = empty_state();
    EXPECT_EQ(ConnectionApi().make_single_senderid_staged(state.get(), 0), cleared_sender);
    EXPECT_EQ(ConnectionApi().make_single_senderid_active(state.get(), 0), cleared_sender);
}

TEST(SenderBodies, StagedNullAddressesAreAuto)
{
    const auto state = empty_state();
    fill_null(state->senders[5].staged);
    EXPECT_EQ(ConnectionApi().make_single_senderid_staged(state.get(), 5),
              R"({"activation":{"activation_time":null,"mode":null,"requested_time":null},)"
              R"("master_enable":false,"receiver_id":null,"transport_params":[)"
              R"({"destination_ip":"auto","destination_port":5004,"rtp_enabled":false,)"
              R"("source_ip":"auto","source_port":5004},)"
              R"({"destination_ip":"auto","destination_port":5004,"rtp_enabled":false,)"
              R"("source_ip":"auto","source_port":5004}]})");
}

TEST(SenderBodies, ActiveNullAddressesAreNull)
{
    const auto state = empty_state();
    fill_null(state->senders[5].active);
    EXPECT_EQ(ConnectionApi().make_single_senderid_active(state.get(), 5),
              R"({"activation":{"activation_time":null,"mode":null,"requested_time":null},)"
              R"("master_enable":false,"receiver_id":null,"transport_params":[)"
              R"({"destination_ip":null,"destination_port":5004,"rtp_enabled":false,)"
              R"("source_ip":null,"source_port":0},)"
              R"({"destination_ip":null,"destination_port":5004,"rtp_enabled":false,)"
              R"("source_ip":null,"source_port":0}]})");
}

TEST(SenderBodies, OneNullAddressLeavesTheOtherAlone)
{
    const auto state = empty_state();
    auto& sender = state->senders[0];
    fill_active(sender.staged);
    fill_active(sender.active);
    set_text(sender.staged.transport_params[0].destination_ip, "null");
    set_text(sender.staged.transport_params[1].source_ip, "null");
    set_text(sender.active.transport_params[0].source_ip, "null");
    set_text(sender.active.transport_params[1].destination_ip, "null");
    EXPECT_EQ(ConnectionApi().make_single_senderid_staged(state.get(), 0),
              varied(with_legs(active_sender, active_sender_leg_0 + "," + active_sender_leg_1),
                     {{R"("destination_ip":"232.1.0.1")", R"("destination_ip":"auto")"},
                      {R"("source_ip":"10.2.0.1")", R"("source_ip":"auto")"}}));
    EXPECT_EQ(ConnectionApi().make_single_senderid_active(state.get(), 0),
              varied(with_legs(active_sender, active_sender_leg_0 + "," + active_sender_leg_1),
                     {{R"("source_ip":"10.1.0.1")", R"("source_ip":null)"},
                      {R"("destination_ip":"232.2.0.1")", R"("destination_ip":null)"}}));
}

TEST(SenderBodies, NearlyNullTextsAreStrings)
{
    const auto state = empty_state();
    constexpr const char* body =
        R"({"activation":{"activation_time":"","mode":"null ","requested_time":"Null"},)"
        R"("master_enable":false,"receiver_id":"nul",)"
        R"("transport_params":[{"destination_ip":"null\n","destination_port":0,)"
        R"("rtp_enabled":false,"source_ip":"NULL","source_port":0}]})";
    fill_nearly_null(state->senders[0].staged);
    EXPECT_EQ(ConnectionApi().make_single_senderid_staged(state.get(), 0), body);
    fill_nearly_null(state->senders[0].active);
    EXPECT_EQ(ConnectionApi().make_single_senderid_active(state.get(), 0), body);
}

TEST(SenderBodies, FollowTheLegCount)
{
    const std::string& no_leg = active_sender;
    const std::string one_leg = with_legs(no_leg, active_sender_leg_0);
    const std::string two_legs = with_legs(no_leg, active_sender_leg_0 + "," + active_sender_leg_1);
    const struct
    {
        int leg_count;
        const std::string& body;
    } rows[] = {
        {INT_MIN, no_leg}, {-1, no_leg},  {0, no_leg},         {1, one_leg},
        {2, two_legs},     {3, two_legs}, {INT_MAX, two_legs},
    };
    const auto state = empty_state();
    fill_active(state->senders[5].staged);
    fill_active(state->senders[5].active);
    for (const auto& row : rows) {
        state->senders[5].staged.leg_count = row.leg_count;
        state->senders[5].active.leg_count = 2;
        EXPECT_EQ(ConnectionApi().make_single_senderid_staged(state.get(), 5), row.body)
            << row.leg_count;
        state->senders[5].staged.leg_count = 2;
        state->senders[5].active.leg_count = row.leg_count;
        EXPECT_EQ(ConnectionApi().make_single_senderid_active(state.get(), 5), row.body)
            << row.leg_count;
    }
}

TEST(SenderBodies, AnyFlagByteButZeroIsTrue)
{
    const auto state = empty_state();
    auto& half = state->senders[0].active;
    half.leg_count = 1;
    for (const std::uint8_t flag : std::initializer_list<std::uint8_t>{1, 2, 128, 255}) {
        half.master_enable = flag;
        half.transport_params[0].rtp_enabled = flag;
        EXPECT_EQ(ConnectionApi().make_single_senderid_active(state.get(), 0),
                  varied(with_legs(cleared_sender, cleared_sender_leg),
                         {{R"("master_enable":false)", R"("master_enable":true)"},
                          {R"("rtp_enabled":false)", R"("rtp_enabled":true)"}}))
            << int{flag};
    }
}

TEST(SenderBodies, EscapeTextsAsJson)
{
    const auto state = empty_state();
    auto& half = state->senders[0].staged;
    half.leg_count = 1;
    set_text(half.peer_id, "a\"b\\c/d");
    set_text(half.mode, "\b\f\n\r\t");
    set_text(half.requested_time, "\x01\x1F\x7F");
    set_text(half.activation_time, "\xC3\xA9\x80\xFF");
    set_text(half.transport_params[0].source_ip, "\\/");
    set_text(half.transport_params[0].destination_ip, "10.0.0.1/24");
    EXPECT_EQ(ConnectionApi().make_single_senderid_staged(state.get(), 0),
              "{\"activation\":{\"activation_time\":\"\xC3\xA9\x80\xFF\","
              "\"mode\":\"\\b\\f\\n\\r\\t\","
              "\"requested_time\":\"\\u0001\\u001f\\u007f\"},\"master_enable\":false,"
              "\"receiver_id\":\"a\\\"b\\\\c\\/d\",\"transport_params\":["
              "{\"destination_ip\":\"10.0.0.1\\/24\",\"destination_port\":0,"
              "\"rtp_enabled\":false,\"source_ip\":\"\\\\\\/\",\"source_port\":0}]}");
}

TEST(SenderBodies, FieldsWithoutNulAreTheirWholeWidth)
{
    const auto state = empty_state();
    auto& half = state->senders[5].staged;
    half.leg_count = 1;
    fill_whole(half.peer_id, 'p');
    fill_whole(half.mode, 'm');
    fill_whole(half.requested_time, 'r');
    fill_whole(half.activation_time, 'a');
    fill_whole(half.transport_file_data, 'd');
    fill_whole(half.transport_file_type, 't');
    fill_whole(half.transport_params[0].source_ip, 's');
    fill_whole(half.transport_params[0].destination_ip, 'e');
    fill_whole(half.transport_params[0].interface_ip, 'i');
    EXPECT_EQ(ConnectionApi().make_single_senderid_staged(state.get(), 5),
              R"({"activation":{"activation_time":")" + std::string(48, 'a') + R"(","mode":")" +
                  std::string(32, 'm') + R"(","requested_time":")" + std::string(48, 'r') +
                  R"("},"master_enable":false,"receiver_id":")" + std::string(48, 'p') +
                  R"(","transport_params":[{"destination_ip":")" + std::string(32, 'e') +
                  R"(","destination_port":0,"rtp_enabled":false,"source_ip":")" +
                  std::string(32, 's') + R"(","source_port":0}]})");
}

TEST(SenderBodies, PrintAnyFinitePort)
{
    const auto state = empty_state();
    auto& sender = state->senders[0];
    sender.staged.leg_count = sender.active.leg_count = 1;
    const auto with_ports = [](const std::string& destination, const std::string& source) {
        return with_legs(
            cleared_sender,
            varied(cleared_sender_leg,
                   {{R"("destination_port":0)", R"("destination_port":)" + destination},
                    {R"("source_port":0)", R"("source_port":)" + source}}));
    };
    for (const auto& [port, text] : port_texts) {
        SCOPED_TRACE(text);
        sender.staged.transport_params[0].destination_port = port;
        sender.active.transport_params[0].destination_port = 1;
        EXPECT_EQ(ConnectionApi().make_single_senderid_staged(state.get(), 0),
                  with_ports(text, text));
        EXPECT_EQ(ConnectionApi().make_single_senderid_active(state.get(), 0),
                  with_ports("1", text));
        sender.staged.transport_params[0].destination_port = 1;
        sender.active.transport_params[0].destination_port = port;
        EXPECT_EQ(ConnectionApi().make_single_senderid_active(state.get(), 0),
                  with_ports(text, "1"));
    }
}

TEST(SenderBodies, RefuseAPortThatIsNotFinite)
{
    const auto state = empty_state();
    auto& sender = state->senders[0];
    sender.staged.leg_count = sender.active.leg_count = 2;
    const auto make_staged = [&] {
        static_cast<void>(ConnectionApi().make_single_senderid_staged(state.get(), 0));
    };
    const auto make_active = [&] {
        static_cast<void>(ConnectionApi().make_single_senderid_active(state.get(), 0));
    };
    for (int leg = 0; leg < 2; ++leg) {
        for (const double port : not_finite) {
            SCOPED_TRACE(port);
            // The active body shows the staged port too, as its source port.
            sender.staged.transport_params[leg].destination_port = port;
            EXPECT_EQ(overflow_text(make_staged), "");
            EXPECT_EQ(overflow_text(make_active), "");
            sender.staged.transport_params[leg].destination_port = 0;

            sender.active.transport_params[leg].destination_port = port;
            EXPECT_NO_THROW(make_staged());
            EXPECT_EQ(overflow_text(make_active), "");
            sender.active.transport_params[leg].destination_port = 0;
        }
    }
}

TEST(SenderBodies, DoNotLookAtThePortOfALegThatIsNotInUse)
{
    const auto state = empty_state();
    auto& sender = state->senders[0];
    sender.staged.leg_count = sender.active.leg_count = 1;
    sender.staged.transport_params[1].destination_port = nan_value;
    sender.active.transport_params[1].destination_port = infinity;
    const std::string body = with_legs(cleared_sender, cleared_sender_leg);
    EXPECT_EQ(ConnectionApi().make_single_senderid_staged(state.get(), 0), body);
    EXPECT_EQ(ConnectionApi().make_single_senderid_active(state.get(), 0), body);
}

TEST(SenderBodies, ReadTheSenderOfTheIndex)
{
    // A host may have no receivers at all.
    StateOfOtherSize state(0);
    for (std::size_t i = 0; i < 6; ++i) {
        set_text(state.sender(i).staged.peer_id, "staged " + std::to_string(i));
        set_text(state.sender(i).active.peer_id, "active " + std::to_string(i));
    }
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(ConnectionApi().make_single_senderid_staged(state.record(), i),
                  varied(cleared_sender, {{R"("receiver_id":"")", R"("receiver_id":"staged )" +
                                                                      std::to_string(i) + '"'}}));
        EXPECT_EQ(ConnectionApi().make_single_senderid_active(state.record(), i),
                  varied(cleared_sender, {{R"("receiver_id":"")", R"("receiver_id":"active )" +
                                                                      std::to_string(i) + '"'}}));
    }
}

TEST(SenderBodies, RefuseAnIndexOutsideTheSendersBeforeTheyRead)
{
    for (const int index : {-1, 6, 7, 24, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(index);
        EXPECT_THAT(
            out_of_range_text([&] {
                static_cast<void>(ConnectionApi().make_single_senderid_staged(nullptr, index));
            }),
            AllOf(HasSubstr("make_single_senderid_staged"), HasSubstr(std::to_string(index)),
                  HasSubstr("0 to 5")));
        EXPECT_THAT(
            out_of_range_text([&] {
                static_cast<void>(ConnectionApi().make_single_senderid_active(nullptr, index));
            }),
            AllOf(HasSubstr("make_single_senderid_active"), HasSubstr(std::to_string(index)),
                  HasSubstr("0 to 5")));
    }
}

TEST(ConnectionBodies, LeaveTheRecordAlone)
{
    const auto state = empty_state();
    fill_staged(state->senders[4].staged);
    fill_null(state->senders[4].active);
    fill_staged(state->receivers[4].staged);
    fill_null(state->receivers[4].active);
    state->senders[4].staged.leg_count = INT_MAX;
    state->receivers[4].active.leg_count = INT_MAX;
    const auto before = std::make_unique<NMOS_IS05_ST>(*state);
    ConnectionApi api;
    static_cast<void>(api.make_single_senderid_staged(state.get(), 4));
    static_cast<void>(api.make_single_senderid_active(state.get(), 4));
    static_cast<void>(api.make_single_receiverid_staged(state.get(), 4));
    static_cast<void>(api.make_single_receiverid_active(state.get(), 4));
    EXPECT_TRUE(same_bytes(*before, *state));
}

TEST(ConnectionBodies, DoNotReadWhatTheyDoNotName)
{
    const auto state = empty_state();
    std::memset(state.get(), 0xA5, sizeof(NMOS_IS05_ST));
    state->senders[0].staged = CONNECTION_HALF_IS05_ST();
    state->senders[0].active = CONNECTION_HALF_IS05_ST();
    state->receivers[0].staged = CONNECTION_HALF_IS05_ST();
    for (auto* half :
         {&state->senders[0].staged, &state->senders[0].active, &state->receivers[0].staged}) {
        half->leg_count = 1;
        half->reserved_after_leg_count = -1;
        std::memset(half->transport_params[0].reserved_after_port, 0xFF, 120);
        std::memset(half->transport_params[0].reserved_at_end, 0xFF, 7);
    }
    for (auto* half : {&state->senders[0].staged, &state->senders[0].active}) {
        fill_whole(half->transport_file_data, 'x');
        fill_whole(half->transport_file_type, 'x');
        fill_whole(half->transport_params[0].interface_ip, 'x');
    }
    const std::string sender_body = with_legs(cleared_sender, cleared_sender_leg);
    EXPECT_EQ(ConnectionApi().make_single_senderid_staged(state.get(), 0), sender_body);
    EXPECT_EQ(ConnectionApi().make_single_senderid_active(state.get(), 0), sender_body);
    EXPECT_EQ(ConnectionApi().make_single_receiverid_staged(state.get(), 0),
              with_legs(cleared_receiver, cleared_receiver_leg));
}

} // namespace
