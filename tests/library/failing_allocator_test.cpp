// SPDX-License-Identifier: Apache-2.0
//
// For every operation, each of its allocations in turn throws std::bad_alloc. The exception must
// reach the caller, the records must be whole, and the next call must work. What leaks is seen by
// the address sanitizer and by valgrind; here blocks are counted.

#include <cctype>
#include <cstddef>
#include <memory>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "support/all_operations.h"
#include "support/clean_records.h"
#include "support/failing_allocator.h"
#include "support/same_bytes.h"

namespace {

using failing_allocator::allocations_left;
using failing_allocator::blocks_alive;
using failing_allocator::counting;

constexpr const char* sdp_file =
    "v=0\r\n"
    "o=- 1 1 IN IP4 not-an-address-that-is-longer-than-a-short-string\r\n"
    "m=video 5004 RTP/AVP 96 with a long rest of the line\r\n"
    "c=IN IP4 233.252.0.1/64\r\n"
    "a=fmtp:96 sampling=YCbCr-4:2:2; width=1920; height=1080; depth=10; "
    "exactframerate=60000/1001; PM=unknown;\r\n";

class FailingAllocatorTest : public ::testing::TestWithParam<Operation>
{
protected:
    OperationInput fresh_input()
    {
        *node_ = *clean_node();
        return {node_.get(), connections_.get(), settings_.get(), sdp_file};
    }

    std::unique_ptr<NMOS_IS04_ST> node_ = clean_node();
    std::unique_ptr<NMOS_IS05_ST> connections_ = clean_connections();
    std::unique_ptr<st_param_sys> settings_ = clean_parameters();
};

TEST_P(FailingAllocatorTest, EveryAllocationInTurn)
{
    OperationInput input = fresh_input();
    const std::string expected = GetParam().call(input);
    const auto node_after = std::make_unique<NMOS_IS04_ST>(*node_);
    const auto node_before = clean_node();

    long failures = 0;
    for (bool done = false; !done; ++failures) {
        ASSERT_LT(failures, 10000) << "an operation that never ends";
        input = fresh_input();
        std::string text;
        blocks_alive = 0;
        allocations_left = failures;
        counting = true;
        try {
            std::string returned = GetParam().call(input);
            done = true;
            counting = false;
            text = returned;
            counting = true;
        } catch (const std::bad_alloc&) {}
        counting = false;
        EXPECT_EQ(blocks_alive, 0) << "after allocation " << failures << " failed";
        if (done) {
            EXPECT_EQ(text, expected);
        }
        // A record that an operation writes is whole either way: as it was, or as it will be.
        const bool as_before = same_bytes(*node_, *node_before);
        const bool as_after = same_bytes(*node_, *node_after);
        EXPECT_TRUE(as_before || as_after) << "after allocation " << failures << " failed";
    }
}

std::string name_of(const ::testing::TestParamInfo<Operation>& info)
{
    std::string name;
    for (const char* letter = info.param.name; *letter != '\0'; ++letter) {
        if (std::isalnum(static_cast<unsigned char>(*letter)) != 0)
            name += *letter;
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Operations, FailingAllocatorTest,
                         ::testing::ValuesIn(all_operations().begin(), all_operations().end()),
                         name_of);

} // namespace
