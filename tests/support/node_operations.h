// SPDX-License-Identifier: Apache-2.0
//
// What holds for each operation of the Node API and of the Registration API alike.

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_NODE_OPERATIONS_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_NODE_OPERATIONS_H

#include <climits>
#include <ostream>
#include <span>
#include <string>

#include <gmock/gmock.h>

#include "support/body_parts.h"
#include "support/example_node.h"

/// An operation on a record whose labels all hold the same text.
struct LabelledOperation
{
    const char* name;
    bool plain_slashes;
    std::string (*call)(NMOS_IS04_ST* rec);
};

inline std::ostream& operator<<(std::ostream& out, const LabelledOperation& operation)
{
    return out << operation.name;
}

/// The label must come out as one of the two.
inline void expect_label(const LabelledOperation& operation, std::string_view label,
                         const char* plain, const char* escaped)
{
    EXPECT_THAT(operation.call(labelled_node(label).get()),
                testing::HasSubstr(operation.plain_slashes ? plain : escaped));
}

inline void expect_slashes(const LabelledOperation& operation)
{
    expect_label(operation, "a/b//", R"("label":"a/b//",)", R"("label":"a\/b\/\/",)");
}

inline void expect_slashes_behind_backslashes(const LabelledOperation& operation)
{
    expect_label(operation, R"(a\/b\\/c\)", R"("label":"a\\/b\\\\/c\\",)",
                 R"("label":"a\\\/b\\\\\/c\\",)");
}

struct IndexedOperation
{
    const char* name;
    int last;
    std::string (*call)(NMOS_IS04_ST* rec, int index);
};

inline void expect_indexes_outside_throw(std::span<const IndexedOperation> operations)
{
    using testing::HasSubstr;
    const auto rec = example_node();
    for (const IndexedOperation& operation : operations) {
        const int last = operation.last;
        for (const int index : {INT_MIN, -1, last + 1, last + 100, INT_MAX})
            EXPECT_THAT(out_of_range_text([&] { operation.call(rec.get(), index); }),
                        testing::AllOf(HasSubstr(operation.name), HasSubstr(std::to_string(index)),
                                       HasSubstr("0 to " + std::to_string(last))));
    }
}

/// Bodies must begin so.
inline void expect_first_and_last_index(std::span<const IndexedOperation> operations,
                                        const char* begin)
{
    const auto rec = example_node();
    for (const auto& [name, last, call] : operations) {
        EXPECT_THAT(call(rec.get(), 0), testing::StartsWith(begin)) << name;
        EXPECT_THAT(call(rec.get(), last), testing::StartsWith(begin)) << name;
    }
}

#endif
