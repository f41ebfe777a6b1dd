// SPDX-License-Identifier: Apache-2.0

#include "commands/sdp_verdict.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace nmos_instrument::program {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using namespace std::string_literals;

SdpVerdict judged(const std::string& sdp)
{
    return judge_sdp(sdp, ReceivingInstrument());
}

/// "line: text" of each message.
std::vector<std::string> messages_of(const SdpVerdict& verdict)
{
    std::vector<std::string> messages;
    for (const SdpMessage& message : verdict.messages)
        messages.push_back(std::to_string(message.line) + ": " + message.text);
    return messages;
}

std::string value_of(const SdpVerdict& verdict, const std::string& key)
{
    for (const host::FormatValue& found : verdict.format) {
        if (found.key == key)
            return found.value;
    }
    return "no such key";
}

const char two_legs[] = "v=0\r\n"
                        "o=- 1 1 IN IP4 192.0.2.10\r\n"
                        "s=camera\r\n"
                        "t=0 0\r\n"
                        "a=group:DUP one two\r\n"
                        "m=video 5004 RTP/AVP 96\r\n"
                        "c=IN IP4 233.252.0.1/64\r\n"
                        "a=fmtp:96 sampling=YCbCr-4:2:2; width=1920; height=1080; depth=10; "
                        "exactframerate=25; interlace; colorimetry=BT2020; TCS=HLG; PM=2110GPM;\r\n"
                        "a=mid:one\r\n"
                        "m=video 5006 RTP/AVP 96\r\n"
                        "c=IN IP4 233.252.0.2/64\r\n"
                        "a=source-filter: incl IN IP4 233.252.0.2 198.51.100.10\r\n"
                        "a=mid:two\r\n";

TEST(JudgeSdp, TellsWhatItFound)
{
    const SdpVerdict verdict = judged(two_legs);
    EXPECT_TRUE(verdict.taken);
    EXPECT_THAT(verdict.messages, IsEmpty());
    EXPECT_THAT(verdict.hints, IsEmpty());
    EXPECT_EQ(verdict.cause, "");
    EXPECT_EQ(verdict.legs[0].source, "192.0.2.10");
    EXPECT_EQ(verdict.legs[0].address, "233.252.0.1");
    EXPECT_EQ(verdict.legs[0].port, "5004");
    EXPECT_EQ(verdict.legs[1].source, "198.51.100.10");
    EXPECT_EQ(verdict.legs[1].address, "233.252.0.2");
    EXPECT_EQ(verdict.legs[1].port, "5006");
    EXPECT_EQ(value_of(verdict, "payload_type"), "96");
    EXPECT_EQ(value_of(verdict, "sampling"), "YCbCr-4:2:2");
    EXPECT_EQ(value_of(verdict, "depth"), "10");
    EXPECT_EQ(value_of(verdict, "size"), "1920x1080 interlaced");
    EXPECT_EQ(value_of(verdict, "frame_rate"), "25 interlaced");
    EXPECT_EQ(value_of(verdict, "colorimetry"), "BT2020");
    EXPECT_EQ(value_of(verdict, "transfer_characteristic"), "HLG");
    EXPECT_EQ(value_of(verdict, "packing_mode"), "2110GPM");
}

TEST(JudgeSdp, TracesEachMessageToItsLine)
{
    const SdpVerdict verdict = judged("v=0\r\n"
                                      "m=video 70000 RTP/AVP 95\r"
                                      "\r"
                                      "c=IN IP4 nowhere/64\n");
    EXPECT_FALSE(verdict.taken);
    EXPECT_THAT(messages_of(verdict),
                ElementsAre("2: Destination Port 70000 is range over.",
                            "2: RTP/AVP 95 is range over.",
                            "4: IN IP4 nowhere is invalid multicast address."));
}

TEST(JudgeSdp, KeepsTheSpaceAtTheEndOfAMessage)
{
    ReceivingInstrument instrument;
    instrument.current_format = 9;
    instrument.switch_capable = false;
    EXPECT_THAT(messages_of(judge_sdp("a=fmtp:96 width=1920; height=1080;\n", instrument)),
                ElementsAre("1: Switching 2K/4K is not supported. "));
    instrument.switch_capable = true;
    instrument.switch_allowed = false;
    EXPECT_THAT(messages_of(judge_sdp("a=fmtp:96 width=1920; height=1080;\n", instrument)),
                ElementsAre("1: Switching 2K/4K is denied by the setting. "));
}

TEST(JudgeSdp, AFileThatTheParserGivesUpOnIsRefusedWithItsCause)
{
    const SdpVerdict verdict = judged("m=video 99999 RTP/AVP 96\na=group:DUP one\nm=video 1 x\n");
    EXPECT_FALSE(verdict.taken);
    EXPECT_THAT(messages_of(verdict), ElementsAre("1: Destination Port 99999 is range over."));
    EXPECT_THAT(verdict.cause, HasSubstr("line 2 lacks its second value"));

    EXPECT_THAT(judged("a=source-filter: incl IN IP4 10.0.0.1\n").cause,
                HasSubstr("line 1 lacks its second value"));
}

TEST(JudgeSdp, HintsAtALastLineThatWasReadAsANumber)
{
    EXPECT_THAT(
        judged("c=IN IP4 233.252.0.1/64\nm=video 5004").hints,
        ElementsAre("the file does not end with a line break: line 2 was read as the number "
                    "0, not as a line; end it with a line break",
                    "no leg has both an address and a port from 1 to 65535: there is "
                    "nothing to receive"));
    EXPECT_THAT(judged("+5004 m=video").hints[0], HasSubstr("line 1 was read as the number 5004,"));
    EXPECT_THAT(judged("99999999999").hints[0], HasSubstr("as the number 2147483647,"));
    EXPECT_THAT(judged("c=IN IP4 233.252.0.1/64\nm=video 5004 x\r").hints, IsEmpty());
}

TEST(JudgeSdp, HintsAtLinesThatWereNotExamined)
{
    const std::string tuned = "c=IN IP4 233.252.0.1/64\nm=video 5004 x\n";
    std::string sdp = tuned;
    for (int line = 3; line <= 100; ++line)
        sdp += "i=\n";
    EXPECT_THAT(judged(sdp).hints, IsEmpty());
    EXPECT_THAT(judged(sdp + "x").hints, ElementsAre("only the first 100 lines were examined"));
    EXPECT_THAT(judged(sdp + "m=video 99999\n").hints,
                ElementsAre("only the first 100 lines were examined"));
    EXPECT_TRUE(judged(sdp + "m=video 99999\n").taken);
}

TEST(JudgeSdp, HintsAtNulBytes)
{
    EXPECT_THAT(judged("c=IN IP4 233.252.0.1\0/64\nm=video 5004 x\n"s).hints,
                ElementsAre("byte 21 is NUL: the checks read a value only up to there"));
}

TEST(JudgeSdp, HintsAtAFileThatNoConnectionStateHolds)
{
    std::string sdp = "c=IN IP4 233.252.0.1/64\nm=video 5004 x\n";
    sdp += "i=" + std::string(4095 - sdp.size() - 3, 'x') + "\n";
    EXPECT_THAT(judged(sdp).hints, IsEmpty());
    sdp.insert(sdp.size() - 1, "x");
    EXPECT_THAT(judged(sdp).hints,
                ElementsAre("the file has 4096 bytes; the connection state of a receiver holds "
                            "4095"));
}

TEST(JudgeSdp, AFileWithoutALineIsRefused)
{
    EXPECT_FALSE(judged("").taken);
    EXPECT_EQ(judged("\r\n \n").cause,
              "the file has no line but empty ones: it is no SDP file, which begins with the line "
              "v=0");
    EXPECT_THAT(judged("").hints, IsEmpty());
}

TEST(JudgeSdp, HintsAtAFileWithNothingToReceive)
{
    const char nothing[] =
        "no leg has both an address and a port from 1 to 65535: there is nothing "
        "to receive";
    EXPECT_TRUE(judged("v=0\n").taken);
    EXPECT_THAT(judged("v=0\n").hints, ElementsAre(nothing));
    EXPECT_THAT(judged("c=IN IP4 233.252.0.1/64\nm=video 0 RTP/AVP 96\n").hints,
                ElementsAre(nothing));
    EXPECT_THAT(judged("m=video 5004 RTP/AVP 96\na=mid:x\nc=IN IP4 233.252.0.1/64\n").hints,
                ElementsAre(nothing));
}

TEST(JudgeSdp, TakesNoLongWhileOverALargeFile)
{
    std::string sdp = "m=video 99999 RTP/AVP 96\n";
    for (int line = 0; line < 50; ++line)
        sdp += "m=video " + std::string(60'000, '9') + "\n";
    const SdpVerdict verdict = judged(sdp);
    EXPECT_FALSE(verdict.taken);
    EXPECT_THAT(verdict.messages, SizeIs(51));
    EXPECT_EQ(verdict.messages[0].text, "Destination Port 99999 is range over.");
    EXPECT_EQ(verdict.messages[1].text.size(), 254U);
}

} // namespace
} // namespace nmos_instrument::program
