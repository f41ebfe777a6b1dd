// SPDX-License-Identifier: Apache-2.0
//
// How the Node API writes a record's texts: escapes, fields without NUL, texts of any length.

#include "nmos_instrument/NodeApi.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/example_node.h"
#include "support/repeated.h"
#include "support/set_text.h"

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

// --- Bytes ---------------------------------------------------------------------------------------

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
    written[0x22] = R"(\")";
    written[0x5C] = R"(\\)";
    written[0x7F] = R"(\u007f)";

    // 20 bytes are not a whole number of the blocks that a writer may take at once.
    const auto rec = empty_node();
    rec->sources_count = 1;
    auto& field = rec->sources[0].clock_name;
    const auto with = [&](std::size_t place, const std::string& byte) {
        return R"({"caps":{},"clock_name":")" + std::string(place, 'x') + byte +
               std::string(sizeof field - place - 1, 'x') + R"(","desc)";
    };
    for (std::size_t place = 0; place < sizeof field; ++place) {
        for (int value = 0x01; value <= 0xFF; ++value) {
            fill_whole(field, 'x');
            field[place] = static_cast<char>(value);
            ASSERT_THAT(NodeApi().make_sources(rec.get()),
                        StartsWith("[" + with(place, written[value])));
            ASSERT_THAT(NodeApi().make_sourceid(rec.get(), 0),
                        StartsWith(with(place, value == '/' ? R"(\/)" : written[value])));
        }
    }
}

// --- Fields without NUL --------------------------------------------------------------------------

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
                  repeated(version, 16, ",") + R"(]},"caps":{},"clocks":[],"description":")" +
                  std::string(128, 'd') + R"(","hostname":")" + std::string(32, 'f') +
                  R"(","href":")" + std::string(64, 'e') + R"(","id":")" + std::string(48, 'a') +
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
              R"({"controls":[)" + repeated(control, 8, ",") + R"(],"description":")" +
                  std::string(128, 'd') + R"(","id":")" + std::string(48, 'a') + R"(","label":")" +
                  std::string(64, 'c') + R"(","node_id":")" + std::string(48, 'f') +
                  R"(","receivers":[)" + repeated(receiver, 4, ",") + R"(],"senders":[)" +
                  repeated(sender, 3, ",") + R"(],"tags":{},"type":")" + std::string(32, 'e') +
                  R"(","version":")" + std::string(48, 'b') + R"("})");
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
              R"({"caps":{"media_types":[)" + repeated(media_type, 12, ",") +
                  R"(]},"description":")" + std::string(128, 'd') + R"(","device_id":")" +
                  std::string(48, 'e') + R"(","format":")" + std::string(32, 'g') + R"(","id":")" +
                  std::string(48, 'a') + R"(","interface_bindings":[")" + std::string(64, 'h') +
                  R"("],"label":")" + std::string(64, 'c') +
                  R"(","subscription":{"active":true,"sender_id":")" + std::string(48, 'i') +
                  R"("},"tags":{},"transport":")" + std::string(32, 'f') + R"(","version":")" +
                  std::string(48, 'b') + R"("})");
}

// --- Long texts ----------------------------------------------------------------------------------

TEST(NodeApiLongTexts, AreWholeWhateverTheirLength)
{
    const auto rec = empty_node();
    rec->sources_count = 2;
    SOURCE_IS04_ST& source = rec->sources[0];
    const auto expected = [](const std::string& format) {
        return R"([{"caps":{},"clock_name":"","description":"","device_id":"","format":")" +
               format +
               R"(","id":"","label":"","parents":[],"tags":{},"version":""},)"
               R"({"caps":{},"channels":[{"label":""}],"clock_name":"","description":"",)"
               R"("device_id":"","format":"","id":"","label":"","parents":[],"tags":{},)"
               R"("version":""}])";
    };
    std::string text;
    for (std::size_t length = 0; length < 2079; ++length, text += 'x') {
        set_text(source.format, text + '\n');
        ASSERT_EQ(NodeApi().make_sources(rec.get()), expected(text + R"(\n)"));
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

    const std::string w16 = repeated(R"(\u0001)", 16);
    const std::string w32 = w16 + w16;
    const std::string w48 = w32 + w16;
    const std::string w64 = w32 + w32;
    const std::string type = '"' + w16 + '"';
    const std::string binding = '"' + w64 + '"';
    return R"({"caps":{"media_types":[)" + repeated(type, 12, ",") + R"(]},"description":")" + w64 +
           w64 + R"(","device_id":")" + w48 + R"(","format":")" + w32 + R"(","id":")" + w48 +
           R"(","interface_bindings":[)" + repeated(binding, 10, ",") + R"(],"label":")" + w64 +
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
        SCOPED_TRACE(full);
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
