// SPDX-License-Identifier: Apache-2.0

#include "registration/registry_answer.h"

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

struct Row
{
    int status;
    PostAnswer post;
    HeartbeatAnswer heartbeat;
    DeleteAnswer deletion;
};

TEST(RegistryAnswer, EachStatusHasAMeaning)
{
    using enum PostAnswer;
    constexpr HeartbeatAnswer alive = HeartbeatAnswer::accepted;
    constexpr HeartbeatAnswer unknown = HeartbeatAnswer::unknown;
    constexpr HeartbeatAnswer dead = HeartbeatAnswer::failed;
    constexpr DeleteAnswer gone = DeleteAnswer::deleted;
    constexpr DeleteAnswer kept = DeleteAnswer::refused;
    constexpr DeleteAnswer lost = DeleteAnswer::failed;
    const Row rows[] = {
        {0, failed, dead, lost},      {200, updated, alive, gone}, {201, created, alive, gone},
        {204, created, alive, gone},  {301, failed, dead, lost},   {307, failed, dead, lost},
        {400, refused, dead, kept},   {401, refused, dead, kept},  {403, refused, dead, kept},
        {404, failed, unknown, gone}, {405, failed, dead, kept},   {408, failed, dead, kept},
        {409, refused, dead, kept},   {422, refused, dead, kept},  {429, failed, dead, kept},
        {500, failed, dead, lost},    {503, failed, dead, lost},   {999, failed, dead, lost},
    };
    for (const Row& row : rows) {
        ClientAnswer answer;
        answer.status = row.status;
        EXPECT_EQ(post_answer(answer), row.post) << row.status;
        EXPECT_EQ(heartbeat_answer(answer), row.heartbeat) << row.status;
        EXPECT_EQ(delete_answer(answer), row.deletion) << row.status;
    }
}

TEST(RegistryAnswer, IsShownToPeople)
{
    EXPECT_EQ(shown_answer({.why = "connection refused"}), "connection refused");
    EXPECT_EQ(shown_answer({.status = 500}), "it answered 500");
    EXPECT_EQ(shown_answer({.status = 400, .body = "{\"error\":\"no\n\"}"}),
              "it answered 400: {\"error\":\"no\\x0a\"}");
    EXPECT_EQ(shown_answer({.status = 301, .location = "http://elsewhere/"}),
              "it answered 301, see \"http://elsewhere/\"");
    EXPECT_EQ(shown_answer({.status = 400, .body = std::string(5'000, 'x')}).size(),
              std::string("it answered 400: ").size() + 1'000);
}

} // namespace
} // namespace nmos_instrument::host
