// SPDX-License-Identifier: Apache-2.0

#include "commands/offered_receivers.h"

#include <string>

#include <gmock/gmock.h>

namespace nmos_instrument::program {
namespace {

using host::Essence;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string start = "v=0\no=- 1 1 IN IP4 203.0.113.9\ns=camera\nt=0 0\n";
const std::string video = "m=video 5004 RTP/AVP 96\nc=IN IP4 233.252.0.1/64\n"
                          "a=rtpmap:96 raw/90000\na=fmtp:96 sampling=YCbCr-4:2:2; width=1920; "
                          "height=1080; depth=10; exactframerate=50; colorimetry=BT709; TCS=SDR; "
                          "PM=2110GPM; SSN=ST2110-20:2017; TP=2110TPN;\n";
const std::string audio = "m=audio 5006 RTP/AVP 97\nc=IN IP4 233.252.0.2/64\n"
                          "a=rtpmap:97 L24/48000/8\n";
const std::string ancillary = "m=video 5008 RTP/AVP 100\nc=IN IP4 233.252.0.3/64\n"
                              "a=rtpmap:100 SMPTE291/90000\n";

std::string unsent(std::string medium)
{
    return medium.replace(medium.find(" 500"), 5, " 0");
}

OfferedFile offered(const std::string& sdp)
{
    return OfferedReceivers({}).offer(sdp, std::nullopt);
}

TEST(OfferedReceivers, TheFirstMediumThatIsSentDecidesTheKind)
{
    for (const char* const line_break : {"\n", "\r\n", "\r"}) {
        const auto with_breaks = [&](std::string text) {
            for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos;
                 at += std::string(line_break).size())
                text.replace(at, 1, line_break);
            return text;
        };
        EXPECT_EQ(offered(with_breaks(start + video)).receiver, Essence::video);
        EXPECT_EQ(offered(with_breaks(start + audio)).receiver, Essence::audio);
        EXPECT_EQ(offered(with_breaks(start + ancillary)).receiver, Essence::ancillary);
    }
    EXPECT_EQ(offered(start + video + audio).receiver, Essence::video);
    EXPECT_EQ(offered(start + audio + video).receiver, Essence::audio);
    EXPECT_EQ(offered(start + ancillary + video).receiver, Essence::ancillary);
    EXPECT_EQ(offered(start + unsent(audio) + ancillary).receiver, Essence::ancillary);
    EXPECT_EQ(offered(start + unsent(audio)).receiver, Essence::video);
    EXPECT_EQ(offered("").receiver, Essence::video);
}

TEST(OfferedReceivers, ReadsForTheKindThatIsAsked)
{
    const OfferedReceivers receivers({});
    const std::string sdp = start + video + audio + ancillary;
    const struct
    {
        Essence kind;
        const char* address;
        int port;
    } cases[] = {{Essence::video, "233.252.0.1", 5004},
                 {Essence::audio, "233.252.0.2", 5006},
                 {Essence::ancillary, "233.252.0.3", 5008}};
    for (const auto& expected : cases) {
        const OfferedFile file = receivers.offer(sdp, expected.kind);
        EXPECT_EQ(file.receiver, expected.kind);
        ASSERT_TRUE(file.reading.taken());
        ASSERT_TRUE(file.reading.legs[0]);
        EXPECT_EQ(file.reading.legs[0]->address, expected.address);
        EXPECT_EQ(file.reading.legs[0]->port, expected.port);
        EXPECT_THAT(file.hints, IsEmpty());
    }
}

TEST(OfferedReceivers, HintsAtTheKindThatWouldTakeTheFile)
{
    EXPECT_THAT(OfferedReceivers({}).offer(start + audio, Essence::video).hints,
                ElementsAre("a receiver of another kind would take it: --receiver audio"));
    EXPECT_THAT(OfferedReceivers({}).offer(start, Essence::video).hints, IsEmpty());
}

TEST(OfferedReceivers, TheConfigurationHidesKinds)
{
    host::Configuration configuration;
    configuration.streams.receiver_essences = host::Essences::video_only;
    const OfferedReceivers receivers(configuration);
    EXPECT_TRUE(receivers.are_shown(Essence::video));
    EXPECT_FALSE(receivers.are_shown(Essence::audio));
    EXPECT_FALSE(receivers.are_shown(Essence::ancillary));
    const OfferedFile file = receivers.offer(start + audio, std::nullopt);
    EXPECT_EQ(file.receiver, Essence::video);
    EXPECT_FALSE(file.reading.taken());
    EXPECT_THAT(file.hints, ElementsAre("the configuration shows no receivers of kind audio, so "
                                        "one of kind video was asked"));
}

TEST(OfferedReceivers, TheConfigurationDecidesCarriageAddressesAndFormats)
{
    const std::string mux = "m=video 5004 RTP/AVP 98\nc=IN IP4 233.252.0.1/64\n"
                            "a=rtpmap:98 SMPTE2022-6/27000000\n";
    const std::string to_us = "m=audio 5006 RTP/AVP 97\nc=IN IP4 203.0.113.77\n"
                              "a=rtpmap:97 L24/48000/8\n";
    std::string uhd = video;
    uhd.replace(uhd.find("width=1920; height=1080"), 23, "width=3840; height=2160");

    host::Configuration other;
    other.carriage = host::Carriage::st2022_6;
    other.interfaces[0].address = "203.0.113.77";
    host::Configuration fixed;
    fixed.format_switching.allowed = false;

    const auto taken = [](const host::Configuration& configuration, const std::string& sdp) {
        return OfferedReceivers(configuration).offer(start + sdp, std::nullopt).reading.taken();
    };
    EXPECT_FALSE(taken({}, mux));
    EXPECT_TRUE(taken(other, mux));
    EXPECT_FALSE(taken({}, to_us));
    EXPECT_TRUE(taken(other, to_us));
    EXPECT_TRUE(taken({}, uhd));
    EXPECT_FALSE(taken(fixed, uhd));
    EXPECT_TRUE(taken(fixed, video));
}

} // namespace
} // namespace nmos_instrument::program
