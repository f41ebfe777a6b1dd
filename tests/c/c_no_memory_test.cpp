// SPDX-License-Identifier: Apache-2.0
//
// For functions of the C interface, each allocation in turn fails: the result is
// NMOS_ERROR_NO_MEMORY, the buffer holds an empty text, no block stays, and the next call works.

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "nmos_instrument_c.h"
#include "support/clean_records.h"
#include "support/failing_allocator.h"

namespace {

using failing_allocator::allocations_left;
using failing_allocator::blocks_alive;
using failing_allocator::counting;

constexpr std::size_t buffer_size = 200000;

/// Calls until no allocation fails any more. Returns how many had failed.
template <class Call>
long failures_of(Call call)
{
    const auto buffer = std::make_unique<char[]>(buffer_size);
    for (long failures = 0;; ++failures) {
        std::strcpy(buffer.get(), "as before");
        blocks_alive = 0;
        allocations_left = failures;
        counting = true;
        const std::size_t result = call(buffer.get());
        counting = false;
        EXPECT_EQ(blocks_alive, 0);
        if (result != NMOS_ERROR_NO_MEMORY) {
            EXPECT_LT(result, buffer_size);
            EXPECT_EQ(std::strlen(buffer.get()), result);
            return failures;
        }
        EXPECT_STREQ(buffer.get(), "");
        if (failures == 10000) {
            ADD_FAILURE() << "a function that never ends";
            return failures;
        }
    }
}

TEST(CNoMemory, BecomesAnError)
{
    const auto node = clean_node();
    const auto connections = clean_connections();
    const auto settings = clean_parameters();
    EXPECT_GT(failures_of([&](char* buffer) {
                  return nmos_node_receivers(node.get(), 0, 2, buffer, buffer_size);
              }),
              0);
    EXPECT_GT(failures_of([&](char* buffer) {
                  return nmos_connection_single_senderid_sdp(connections.get(), 0, settings.get(),
                                                             buffer, buffer_size);
              }),
              0);
    EXPECT_GT(failures_of([&](char* buffer) {
                  return nmos_param_json(settings.get(), buffer, buffer_size);
              }),
              0);
    const NMOS_IS04_ST empty = {};
    EXPECT_GT(
        failures_of([&](char* buffer) { return nmos_check_node(&empty, buffer, buffer_size); }), 0);
    const std::string text(1000, 'a');
    EXPECT_GT(failures_of([&](char* buffer) {
                  return nmos_replace_all(text.data(), text.size(), "a", "bb", buffer, buffer_size);
              }),
              0);
    EXPECT_GT(failures_of([&](char* buffer) {
                  return nmos_connection_single_senderid_constraints(text.c_str(), text.c_str(),
                                                                     buffer, buffer_size);
              }),
              0);
    EXPECT_GT(failures_of([&](char* buffer) {
                  int count = 0;
                  return nmos_connection_split_string(text.data(), text.size(), " ", 5, &count,
                                                      buffer, buffer_size);
              }),
              0);
}

TEST(CNoMemory, OfAnSdpFile)
{
    const std::string sdp = "o=- 1 1 IN IP4 not-an-address-that-is-longer-than-a-short-string\r\n"
                            "m=video 5004 RTP/AVP 96 with a long rest of the line\r\n";
    EXPECT_GT(failures_of([&](char* buffer) {
                  nmos_sdp_found found;
                  const std::size_t result = nmos_connection_analyze_sdp_file(
                      sdp.data(), sdp.size(), 1, 3, 0, &found, buffer, buffer_size);
                  EXPECT_EQ(found.status, 400);
                  return result;
              }),
              0);
}

TEST(CNoMemory, ChangesNothing)
{
    const auto node = clean_node();
    const auto before = clean_node();
    const std::string ip(100, '1');
    allocations_left = 0;
    counting = true;
    const std::size_t result = nmos_registration_update_ip_address(node.get(), ip.c_str(), "3001");
    counting = false;
    EXPECT_EQ(result, NMOS_ERROR_NO_MEMORY);
    EXPECT_EQ(std::memcmp(node.get(), before.get(), sizeof *node), 0);
    EXPECT_STREQ(nmos_error_text(result), "no memory is left");
}

} // namespace
