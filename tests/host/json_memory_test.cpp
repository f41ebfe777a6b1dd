// SPDX-License-Identifier: Apache-2.0
//
// Replaces the allocator of its whole process.

#include <cstdlib>
#include <new>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "text/json_input.h"

namespace {

/// How many allocations succeed before all others fail; negative: all succeed.
int allocations_left = -1;

void* allocate(std::size_t size)
{
    if (allocations_left == 0)
        throw std::bad_alloc();
    if (allocations_left > 0)
        --allocations_left;
    if (void* const memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size)
{
    return allocate(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace nmos_instrument::host {
namespace {

constexpr const char* text =
    R"([{"id": "a string that is longer than a short one", "params": {"x": [[], {}, [1, [2]]]}}])";

TEST(JsonWithoutMemory, ADocumentCanBeDestroyed)
{
    std::optional<JsonDocument> document(parse_json(text, JsonComments::refused));
    allocations_left = 0;
    document.reset();
    allocations_left = -1;
    EXPECT_FALSE(document);
}

/// Whichever allocation fails, it is an exception and not the end of the program.
TEST(JsonWithoutMemory, ParsingFailsAsAWhole)
{
    bool parsed = false;
    for (int count = 0; !parsed && count < 1000; ++count) {
        allocations_left = count;
        try {
            const JsonDocument document = parse_json(text, JsonComments::refused);
            parsed = true;
        } catch (const std::bad_alloc&) {}
        allocations_left = -1;
    }
    EXPECT_TRUE(parsed);
}

} // namespace
} // namespace nmos_instrument::host
