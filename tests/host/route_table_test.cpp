// SPDX-License-Identifier: Apache-2.0

#include "routes/route_table.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "records/record_text.h"

namespace nmos_instrument::host {
namespace {

std::string nothing(Records&, int)
{
    return "";
}

constexpr Route first[] = {
    {"GET", "/", nothing},
    {"GET", "/a/b", nothing},
    {"PATCH", "/a/b", nothing},
};
constexpr Route second[] = {
    {"GET", "/r/{receiver}", nothing},
    {"GET", "/r/{receiver}/x", nothing},
};

class RouteTableTest : public testing::Test
{
protected:
    /// The path of the route that `method` on `path` has, and the index; "" for none.
    std::string found(std::string_view method, const std::string& path) const
    {
        const auto match = routes_.find(path, resources_);
        if (!match)
            return "";
        const Route* const route = match->path.find(method);
        if (route == nullptr)
            return "no such method";
        return std::string(route->path) + ' ' + std::to_string(match->index);
    }

    std::string receiver_id(std::size_t index) const
    {
        return std::string(text_of(records_->node.receivers[index].id));
    }

    const std::unique_ptr<Records> records_ =
        make_records(Configuration(), NodeAddress(), {1000, 0});
    const ResourceIndex resources_{*records_};
    const RouteTable routes_{first, second};
};

TEST_F(RouteTableTest, FindsPathAndMethod)
{
    EXPECT_EQ(found("GET", "/"), "/ 0");
    EXPECT_EQ(found("GET", "/a/b"), "/a/b 0");
    EXPECT_EQ(found("PATCH", "/a/b"), "/a/b 0");
    EXPECT_EQ(found("PUT", "/a/b"), "no such method");
}

TEST_F(RouteTableTest, PathsHaveNumbers)
{
    EXPECT_EQ(routes_.paths(),
              (std::vector<std::string_view>{"/", "/a/b", "/r/{receiver}", "/r/{receiver}/x"}));
    EXPECT_EQ(routes_.find("/", resources_)->path.number, 1U);
    EXPECT_EQ(routes_.find("/r/" + receiver_id(5), resources_)->path.number, 3U);
}

TEST_F(RouteTableTest, OtherPathsAreNotThere)
{
    for (const char* const path : {"", "a/b", "/a", "/a/b/", "/a//b", "//", "/a/b/c", "/A/b", "*"})
        EXPECT_EQ(found("GET", path), "") << path;
}

TEST_F(RouteTableTest, AnIdStandsForItsPosition)
{
    EXPECT_EQ(found("GET", "/r/" + receiver_id(0)), "/r/{receiver} 0");
    EXPECT_EQ(found("GET", "/r/" + receiver_id(23) + "/x"), "/r/{receiver}/x 23");
}

TEST_F(RouteTableTest, UnknownIdsAreNotThere)
{
    EXPECT_EQ(found("GET", "/r/"), "");
    EXPECT_EQ(found("GET", "/r/{receiver}"), "");
    EXPECT_EQ(found("GET", "/r/" + std::string(text_of(records_->node.senders[0].id))), "");
}

} // namespace
} // namespace nmos_instrument::host
