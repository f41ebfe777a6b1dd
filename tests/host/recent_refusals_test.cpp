// SPDX-License-Identifier: Apache-2.0

#include "routes/recent_refusals.h"

#include <string>

#include <gmock/gmock.h>

namespace nmos_instrument::host {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(RecentRefusals, TheNewestFirst)
{
    RecentRefusals refusals;
    EXPECT_THAT(refusals.all(), IsEmpty());
    refusals.add({100, 5}, "192.0.2.1:5000", "receivers/1", {400, "Invalid", "/a: one\n/b: two\n"});
    refusals.add({101, 0}, "[2001:db8::1]:80", "PUT /x", {403, "Not allowed", ""});
    EXPECT_THAT(
        refusals.all(),
        ElementsAre(
            RefusedChange{{101, 0}, "[2001:db8::1]:80", "PUT /x", {403, "Not allowed", ""}},
            RefusedChange{
                {100, 5}, "192.0.2.1:5000", "receivers/1", {400, "Invalid", "/a: one | /b: two"}}));
}

TEST(RecentRefusals, TheOldestAreForgotten)
{
    RecentRefusals refusals;
    for (int i = 1; i <= 25; ++i)
        refusals.add({}, "", "", {i, "", ""});
    ASSERT_THAT(refusals.all(), SizeIs(10));
    EXPECT_EQ(refusals.all().front().refusal.status, 25);
    EXPECT_EQ(refusals.all().back().refusal.status, 16);
}

TEST(RecentRefusals, LongTextsAreCut)
{
    RecentRefusals refusals;
    const auto debug_of = [&](const std::string& debug) {
        refusals.add({}, "", "", {400, "", debug});
        return refusals.all().front().refusal.debug;
    };
    EXPECT_EQ(debug_of(std::string(1000, 'x')), std::string(1000, 'x'));
    EXPECT_EQ(debug_of(std::string(1001, 'x')), std::string(1000, 'x') + " ...");
    EXPECT_EQ(debug_of(std::string(998, 'x') + "\xe9y"), std::string(998, 'x') + " ...");
    EXPECT_EQ(debug_of(std::string(1'000'000, 'x')), std::string(1000, 'x') + " ...");
}

TEST(RecentRefusals, TextsAreVisibleAscii)
{
    RecentRefusals refusals;
    refusals.add({}, "", "\x1b[2J", {404, "no\x7f", "caf\xc3\xa9\xff"});
    EXPECT_EQ(refusals.all().front().what, "\\x1b[2J");
    EXPECT_EQ(refusals.all().front().refusal.error, "no\\x7f");
    EXPECT_EQ(refusals.all().front().refusal.debug, "caf\\xc3\\xa9\\xff");
}

} // namespace
} // namespace nmos_instrument::host
