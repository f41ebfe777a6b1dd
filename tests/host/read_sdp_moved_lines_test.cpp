// SPDX-License-Identifier: Apache-2.0
//
// It does not matter in which order the lines of a medium stand. RFC 4566 5 gives one, which not
// every maker keeps; attributes have none.

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "sdp/read_sdp.h"
#include "sdp_test_files.h"

namespace nmos_instrument::host {
namespace {

/// The positions of a file's lines in another order.
using Order = std::vector<std::size_t>;

/// Where the session and each medium begin, and where the last one ends. The first line stays first.
std::vector<std::size_t> section_starts(const Lines& file)
{
    std::vector<std::size_t> starts = {0};
    for (std::size_t i = 1; i < file.size(); ++i) {
        if (file[i].starts_with("m="))
            starts.push_back(i);
    }
    starts.push_back(file.size());
    return starts;
}

/// Does `change` to the lines of each section, but not to the first one of it.
template <typename Change>
Order changed_order(const Lines& file, Change change)
{
    Order order(file.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const std::vector<std::size_t> starts = section_starts(file);
    for (std::size_t i = 0; i + 1 < starts.size(); ++i)
        change(order.begin() + static_cast<std::ptrdiff_t>(starts[i] + 1),
               order.begin() + static_cast<std::ptrdiff_t>(starts[i + 1]));
    return order;
}

/// Reversed, rotated by each number of lines, and some by chance: always the same ones.
std::vector<Order> orders_of(const Lines& file)
{
    std::vector<Order> orders;
    orders.push_back(changed_order(file, [](auto begin, auto end) { std::reverse(begin, end); }));
    for (std::ptrdiff_t turns = 1; turns < 12; ++turns)
        orders.push_back(changed_order(file, [turns](auto begin, auto end) {
            if (begin != end)
                std::rotate(begin, begin + turns % (end - begin), end);
        }));
    std::mt19937 random(4566);
    for (int i = 0; i < 100; ++i)
        orders.push_back(changed_order(
            file, [&random](auto begin, auto end) { std::shuffle(begin, end, random); }));
    return orders;
}

Lines in_order(const Lines& file, const Order& order)
{
    Lines lines;
    for (const std::size_t position : order)
        lines.push_back(file[position]);
    return lines;
}

/// The findings with the positions that their lines have in the file before it was changed; -1 is
/// the file as a whole.
std::vector<std::pair<SdpCode, std::ptrdiff_t>> findings_of(const SdpReading& reading,
                                                            const Order& order)
{
    std::vector<std::pair<SdpCode, std::ptrdiff_t>> findings;
    for (const SdpFinding& finding : reading.findings.shown())
        findings.emplace_back(
            finding.code,
            finding.line == 0 ? -1 : static_cast<std::ptrdiff_t>(order.at(finding.line - 1)));
    std::sort(findings.begin(), findings.end());
    return findings;
}

void expect_no_difference(const Lines& file, const SdpReceiver& receiver)
{
    Order as_written(file.size());
    std::iota(as_written.begin(), as_written.end(), std::size_t{0});
    const SdpReading expected = read_sdp(sdp_text(file), receiver);
    for (const Order& order : orders_of(file)) {
        const std::string moved = sdp_text(in_order(file, order));
        const SdpReading reading = read_sdp(moved, receiver);
        EXPECT_EQ(legs_of(reading), legs_of(expected)) << moved;
        EXPECT_EQ(findings_of(reading, order), findings_of(expected, as_written)) << moved;
        if (testing::Test::HasFailure())
            return; // the others would say the same
    }
}

TEST(ReadSdpMovedLines, OnePath)
{
    ASSERT_TRUE(read_sdp(sdp_text(one_path), video_receiver).taken());
    expect_no_difference(one_path, video_receiver);
    expect_no_difference(audio_path, audio_receiver);
}

TEST(ReadSdpMovedLines, TwoPaths)
{
    ASSERT_TRUE(read_sdp(sdp_text(two_paths), video_receiver).taken());
    expect_no_difference(two_paths, video_receiver);
    expect_no_difference(edited(two_paths, {{14, {}}}), video_receiver);
    expect_no_difference(edited(two_paths, {{8, {}}}), video_receiver);
}

TEST(ReadSdpMovedLines, TwoPathsBesideOthers)
{
    const Lines beside = edited(
        two_paths,
        {{4, {"t=0 0", "a=recvonly", "a=source-filter: incl IN IP4 233.252.0.2 203.0.113.2"}},
         {12,
          {"m=audio 5020 RTP/AVP 97", "c=IN IP4 233.252.0.21/64", "a=rtpmap:97 L24/48000/2",
           "a=mid:sound", "a=ptime:1", "m=video 5030 RTP/AVP 100", "a=rtpmap:100 smpte291/90000",
           "c=IN IP4 233.252.0.31/64", "a=mid:data", two_paths[11]}},
         {14, {}}});
    ASSERT_TRUE(read_sdp(sdp_text(beside), video_receiver).taken());
    expect_no_difference(beside, video_receiver);
    expect_no_difference(beside, audio_receiver);
    expect_no_difference(beside, ancillary_receiver);
    expect_no_difference(beside, st2022_6_receiver);
}

TEST(ReadSdpMovedLines, WhatTheSessionSays)
{
    const Lines shared =
        edited(two_paths, {{4, {"c=IN IP4 233.252.0.1/64", "t=0 0", two_paths[7], "a=mid:session"}},
                           {7, {}},
                           {8, {}},
                           {13, {}},
                           {14, {}}});
    ASSERT_TRUE(read_sdp(sdp_text(shared), video_receiver).taken());
    expect_no_difference(shared, video_receiver);
}

TEST(ReadSdpMovedLines, TwoSources)
{
    const Lines file = edited(
        one_path, {{7, {"a=source-filter: incl IN IP4 233.252.0.1 203.0.113.1 203.0.113.2"}}});
    ASSERT_TRUE(read_sdp(sdp_text(file), video_receiver).taken());
    expect_no_difference(file, video_receiver);
}

TEST(ReadSdpMovedLines, RefusedFiles)
{
    for (const Lines& file :
         {edited(two_paths, {{5, {}}}), edited(two_paths, {{17, {"a=mid:three"}}}),
          edited(two_paths, {{7, {}}}), edited(two_paths, {{13, {"c=IN IP4 192.0.2.99"}}}),
          edited(two_paths, {{15, {"a=rtpmap:96 jxsv/90000"}}}),
          edited(one_path, {{7, {"a=source-filter: incl IN IP4 233.252.0.1"}}}),
          edited(one_path, {{9, {"a=fmtp:96 x=c=IN IP4 233.252.0.9/1"}}})}) {
        ASSERT_FALSE(read_sdp(sdp_text(file), video_receiver).taken()) << sdp_text(file);
        expect_no_difference(file, video_receiver);
    }
}

} // namespace
} // namespace nmos_instrument::host
