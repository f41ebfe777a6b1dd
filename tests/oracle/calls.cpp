// SPDX-License-Identifier: Apache-2.0

#include "oracle/calls.h"

#include <climits>
#include <cstring>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oracle/random_records.h"
#include "oracle/run.h"

using testing::HasSubstr;

namespace {

Arguments random_arguments(Random& random, int capacity)
{
    constexpr int selectors[] = {0, 0, 0, 1, 1, 2, 3, -1, 256, INT_MIN, INT_MAX};
    Arguments arguments;
    arguments.index = random_index(random, capacity);
    arguments.receiver_filter = random.pick(selectors);
    arguments.audio_group_filter = random.pick(selectors);
    arguments.sender_filter = random.pick(selectors);
    return arguments;
}

} // namespace

std::ostream& operator<<(std::ostream& out, Outcome::Kind kind)
{
    constexpr const char* names[] = {"a text", "std::overflow_error", "std::out_of_range"};
    return out << names[static_cast<int>(kind)];
}

void expect_same(const Outcome& of_library, const Outcome& of_oracle, const char* operation,
                 int index)
{
    ASSERT_EQ(of_library.kind, of_oracle.kind)
        << operation << ": " << visible(of_library.text.substr(0, 160));
    if (of_oracle.kind == Outcome::Kind::out_of_range) {
        EXPECT_THAT(of_library.text, HasSubstr(operation));
        EXPECT_THAT(of_library.text, HasSubstr(std::to_string(index)));
        EXPECT_THAT(of_library.text, HasSubstr(of_oracle.text));
        return;
    }
    EXPECT_TRUE(same_bytes(of_library.text, of_oracle.text)) << operation << ", index " << index;
}

int random_index(Random& random, int capacity)
{
    if (!random.one_in(20))
        return random.between(0, capacity - 1);
    const int outside[] = {-1, capacity, capacity + 1, -1000, 1000000, INT_MIN, INT_MAX};
    return random.pick(outside);
}

void compare_node_operations(unsigned percent_of_run, std::span<const NodeOperation> operations)
{
    const auto of_library = std::make_unique<NMOS_IS04_ST>();
    const auto of_oracle = std::make_unique<NMOS_IS04_ST>();
    for_each_record(percent_of_run, [&](Random& random) {
        randomise(random, *of_oracle);
        std::memcpy(of_library.get(), of_oracle.get(), sizeof *of_oracle);
        for (int calls = 0; calls < 4; ++calls) {
            const NodeOperation& operation = random.pick(operations);
            const Arguments with = random_arguments(random, operation.capacity);
            expect_same(outcome_of([&] { return operation.of_library(*of_library, with); }),
                        outcome_of([&] { return operation.of_oracle(*of_oracle, with); }),
                        operation.name, with.index);
            ASSERT_EQ(std::memcmp(of_library.get(), of_oracle.get(), sizeof *of_oracle), 0)
                << operation.name << " left another record";
        }
    });
}
