// SPDX-License-Identifier: Apache-2.0
//
// What people read about an SDP file.

#include "sdp/sdp_finding.h"

#include <algorithm>

#include <gmock/gmock.h>

#include "sdp_test_files.h"
#include "support/varied.h"

namespace nmos_instrument::host {
namespace {

using testing::HasSubstr;

/// The texts of all findings, each a line.
std::string texts_of(const Lines& file)
{
    std::string texts;
    const SdpReading reading = read_sdp(sdp_text(file), video_receiver);
    for (const SdpFinding& finding : reading.findings.shown())
        texts.append(finding_text(finding)).append("\n");
    return texts;
}

std::string texts_with(const Change& change)
{
    return texts_of(edited(one_path, {{9, {"a=fmtp:96 " + varied(hd_interlaced, {change})}}}));
}

TEST(SdpFinding, NamesTheLineWhatWasFoundAndWhatIsAllowed)
{
    EXPECT_EQ(texts_with({"exactframerate=25", "exactframerate=25/1"}),
              "line 9: SDP048: exactframerate \"25/1\" (interlaced), allowed: progressive: 60, "
              "60000/1001, 50; interlaced: 30, 30000/1001, 25\n");
    EXPECT_EQ(texts_with({"BT709", "BT601"}),
              "line 9: SDP050: colorimetry \"BT601\", allowed: BT709, BT2020, BT2100\n");
    EXPECT_EQ(texts_with({"TCS=SDR", "TCS=LINEAR"}),
              "line 9: SDP049: TCS \"LINEAR\", allowed: SDR, HLG, PQ\n");
    EXPECT_EQ(texts_with({"PM=2110GPM", "PM=x"}),
              "line 9: SDP051: PM \"x\", allowed: 2110GPM, 2110BPM, 2022-6\n");
    EXPECT_EQ(texts_with({"TP=2110TPN", "TP=x"}),
              "line 9: SDP053: TP \"x\", allowed: 2110TPNL, 2110TPN, 2110TPW\n");
    EXPECT_EQ(finding_text({SdpCode::empty, 0, "nothing", ""}), "SDP001: nothing");
}

TEST(SdpFinding, ShowsWhatCannotBeSeen)
{
    const struct
    {
        Change change;
        const char* shown;
        const char* named;
    } rows[] = {
        {{"TCS=SDR", "TCS=SDR "}, R"("SDR ")", "blank"},
        {{"TCS=SDR", "TCS= SDR"}, R"(" SDR")", "blank"},
        {{"TCS=SDR", "TCS=\"SDR\""}, R"("\"SDR\"")", "quotation mark"},
        {{"TP=2110TPN; ", "TP=2110TPN "}, R"("2110TPN ")", "blank"},
    };
    for (const auto& row : rows) {
        EXPECT_THAT(texts_with(row.change), HasSubstr(row.shown));
        EXPECT_THAT(texts_with(row.change), HasSubstr(row.named));
    }
    // A control character could do anything to a terminal.
    EXPECT_THAT(texts_with({"TCS=SDR", "TCS=\x1b[2J"}), Not(HasSubstr("\x1b")));
}

TEST(SdpFinding, ListsTheMediaThatThereAre)
{
    EXPECT_THAT(texts_of(edited(two_paths, {{5, {}}})),
                HasSubstr("line 5: video raw, line 11: video raw"));
    EXPECT_THAT(texts_of(audio_path), HasSubstr("line 5: audio L24, allowed: video/raw"));
}

TEST(SdpFinding, NamesTheAddressThatWouldBeOurs)
{
    const std::string text = texts_of(edited(one_path, {{6, {"c=IN IP4 192.0.2.99"}}, {7, {}}}));
    EXPECT_THAT(text, HasSubstr("line 6: SDP031: "));
    EXPECT_THAT(text, HasSubstr("\"192.0.2.99\""));
    EXPECT_THAT(text, HasSubstr("allowed: \"192.0.2.10\""));
}

TEST(SdpRules, AreListedByTheirCodes)
{
    EXPECT_EQ(code_text(SdpCode::empty), "SDP001");
    EXPECT_EQ(code_text(SdpCode::frame_rate), "SDP048");
    const auto rules = sdp_rules();
    EXPECT_TRUE(std::is_sorted(rules.begin(), rules.end(), [](const auto& a, const auto& b) {
        return a.code <= b.code; // the same one twice is not sorted
    }));
    for (const SdpRule& rule : rules) {
        EXPECT_FALSE(rule.title.empty()) << code_text(rule.code);
        EXPECT_FALSE(rule.explanation.empty()) << code_text(rule.code);
        EXPECT_EQ(find_sdp_rule(code_text(rule.code)), &rule);
        EXPECT_EQ(&rule_of(rule.code), &rule);
    }
    EXPECT_EQ(find_sdp_rule("sdp048"), &rule_of(SdpCode::frame_rate));
    for (const char* unknown : {"SDP000", "SDP999", "SDP48", "48", ""})
        EXPECT_EQ(find_sdp_rule(unknown), nullptr) << unknown;
}

TEST(SdpFindings, ShowsTheFirstOnesAndCountsTheOthers)
{
    SdpFindings findings;
    for (std::size_t i = 0; i < SdpFindings::limit; ++i)
        findings.add(SdpCode::empty_line, i + 1, "an empty line");
    EXPECT_EQ(findings.left_out(), 0U);
    EXPECT_FALSE(findings.refuse());
    findings.add(SdpCode::address, 1, "x");
    EXPECT_EQ(findings.shown().size(), SdpFindings::limit);
    EXPECT_EQ(findings.left_out(), 1U);
    EXPECT_TRUE(findings.refuse());
}

} // namespace
} // namespace nmos_instrument::host
