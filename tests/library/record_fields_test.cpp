// SPDX-License-Identifier: Apache-2.0

#include "records/record_fields.h"

#include <climits>
#include <cstring>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace nmos_instrument {
namespace {

TEST(RecordFields, CountsAreBoundedByTheCapacity)
{
    EXPECT_EQ(bounded_count(INT_MIN, 4), 0U);
    EXPECT_EQ(bounded_count(-1, 4), 0U);
    EXPECT_EQ(bounded_count(0, 4), 0U);
    EXPECT_EQ(bounded_count(3, 4), 3U);
    EXPECT_EQ(bounded_count(4, 4), 4U);
    EXPECT_EQ(bounded_count(5, 4), 4U);
    EXPECT_EQ(bounded_count(INT_MAX, 4), 4U);
}

TEST(RecordFields, TextEndsAtTheFirstNulOrTheFieldsEnd)
{
    char field[8] = "abc";
    EXPECT_EQ(field_text(field), "abc");
    std::memset(field, 'x', sizeof field);
    EXPECT_EQ(field_text(field), "xxxxxxxx");
}

TEST(RecordFields, ARefusedIndexIsNamedWithWhatIsAllowed)
{
    struct Record
    {
        int entries[4];
    };
    const Record record{{1, 2, 3, 4}};
    EXPECT_EQ(checked_entry(&record, &Record::entries, 3, "operation"), 4);
    const Record* const none = nullptr; // not touched when the index is refused
    try {
        checked_entry(none, &Record::entries, 4, "NodeApi::make_flowid");
        FAIL();
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "NodeApi::make_flowid: index 4 is outside 0 to 3");
    }
    EXPECT_THROW(checked_entry(none, &Record::entries, INT_MIN, "operation"), std::out_of_range);
}

} // namespace
} // namespace nmos_instrument
