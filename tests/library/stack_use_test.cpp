// SPDX-License-Identifier: Apache-2.0
//
// Every operation must run on the small stack of an instrument's thread. It is run in a thread on a
// stack of our own, painted before; what lost its paint was used.

#include <cstddef>
#include <cstring>
#include <iostream>
#include <memory>
#include <pthread.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/all_operations.h"
#include "support/clean_records.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define WITH_SANITIZER 1
#else
#define WITH_SANITIZER 0
#endif

namespace {

constexpr std::size_t stack_size = 256UL * 1024;
constexpr std::size_t allowed = 16UL * 1024;
constexpr unsigned char paint = 0xA5;

struct Job
{
    const Operation* operation;
    OperationInput input;
};

void* run(void* argument)
{
    Job& job = *static_cast<Job*>(argument);
    const std::string text = job.operation->call(job.input);
    return nullptr;
}

std::size_t stack_used_by(const Operation& operation, const OperationInput& input)
{
    std::vector<unsigned char> memory(stack_size + 4096, paint);
    void* stack = memory.data();
    std::size_t space = memory.size();
    std::align(4096, stack_size, stack, space);

    Job job{&operation, input};
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack, stack_size);
    pthread_t thread{};
    EXPECT_EQ(pthread_create(&thread, &attributes, run, &job), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);

    const auto* const bytes = static_cast<const unsigned char*>(stack);
    std::size_t untouched = 0;
    while (untouched < stack_size && bytes[untouched] == paint)
        ++untouched;
    return stack_size - untouched;
}

std::string no_text(OperationInput&)
{
    return {};
}

TEST(StackUse, EveryOperationStaysBelow16KiB)
{
    if (WITH_SANITIZER)
        GTEST_SKIP() << "sanitizers use the stack for themselves";

    const auto node = clean_node();
    const auto connections = clean_connections();
    const auto settings = clean_parameters();
    const OperationInput input{node.get(), connections.get(), settings.get(),
                               "c=IN IP4 10.1/64\r\na=fmtp:96 sampling=RGB; depth=12;\r\n"};
    // A thread needs some for itself, and the dynamic linker for the first call of a function.
    const Operation nothing{"nothing", no_text, false};
    stack_used_by(nothing, input);
    const std::size_t base = stack_used_by(nothing, input);
    std::size_t most = 0;
    const char* of_most = "";
    for (const Operation& operation : all_operations()) {
        stack_used_by(operation, input);
        const std::size_t with_thread = stack_used_by(operation, input);
        const std::size_t used = with_thread > base ? with_thread - base : 0;
        EXPECT_LT(used, allowed) << operation.name;
        if (used > most) {
            most = used;
            of_most = operation.name;
        }
    }
    std::cout << "most: " << most << " bytes, by " << of_most << '\n';
}

} // namespace
