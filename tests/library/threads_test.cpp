// SPDX-License-Identifier: Apache-2.0
//
// Eight threads call everything at once: what reads, on one shared record; what writes, on records
// of their own. Build with the thread sanitizer to see a race; here the texts must be right.

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/all_operations.h"
#include "support/clean_records.h"

namespace {

constexpr int thread_count = 8;
constexpr int rounds = 20;
constexpr const char* sdp_file = "v=0\r\nm=video 5004 RTP/AVP 96\r\nc=IN IP4 233.252.0.1/64\r\n";

struct Records
{
    std::unique_ptr<NMOS_IS04_ST> node = clean_node();
    std::unique_ptr<NMOS_IS05_ST> connections = clean_connections();
    std::unique_ptr<st_param_sys> settings = clean_parameters();

    OperationInput input() const
    {
        return {node.get(), connections.get(), settings.get(), sdp_file};
    }
};

std::vector<std::string> texts_of_one_thread()
{
    std::vector<std::string> texts;
    for (const Operation& operation : all_operations()) {
        const Records records;
        OperationInput input = records.input();
        texts.push_back(operation.call(input));
    }
    return texts;
}

TEST(Threads, OneSharedRecordAndRecordsOfTheirOwn)
{
#if defined(NMOS_INSTRUMENT_TESTS_IN_QEMU_I386)
    GTEST_SKIP() << "qemu-i386 never ends with this many threads; armhf and the host are tested";
#endif
    const std::vector<std::string> expected = texts_of_one_thread();
    const Records shared;
    std::vector<int> differences(thread_count, 0);

    std::vector<std::thread> threads;
    threads.reserve(thread_count);
    for (int i = 0; i < thread_count; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < rounds; ++round) {
                std::size_t number = 0;
                for (const Operation& operation : all_operations()) {
                    const Records own;
                    OperationInput on_own = own.input();
                    OperationInput on_shared = shared.input();
                    const std::string text =
                        operation.call(operation.writes_record ? on_own : on_shared);
                    if (text != expected[number++])
                        ++differences[static_cast<std::size_t>(i)];
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const int count : differences)
        EXPECT_EQ(count, 0);
}

} // namespace
