// SPDX-License-Identifier: Apache-2.0
//
// How many random records a test compares, and from which seed.
//
//   NMOS_ORACLE_RECORDS   records (or SDP files) of a whole run; 20000 when it is not set
//   NMOS_ORACLE_SEED      seed of the first record; a random one when it is not set
//
// Record number i is made from seed + i alone. So whatever was found can be repeated as the one
// record of a run that starts at its own seed, and that is what a failure prints.

#ifndef NMOS_INSTRUMENT_TESTS_ORACLE_RUN_H
#define NMOS_INSTRUMENT_TESTS_ORACLE_RUN_H

#include <cstdint>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "oracle/random.h"

/// Seed of the first record of every test in this process.
std::uint64_t oracle_seed();

/// This test's part of the records of a run, at least one. Prints it, and the seed.
unsigned begin_oracle_run(unsigned percent_of_run);

/// Fails the test with the command line that repeats the record of `seed` alone.
void report_oracle_seed(std::uint64_t seed);

/// The text with every byte that is not printable ASCII shown as its number.
std::string visible(std::string_view bytes);

/// Equality of two texts; a difference is shown around its place, bytes visible.
testing::AssertionResult same_bytes(std::string_view of_library, std::string_view of_oracle);

/// Calls `check` with the random source of each record until all are compared or one failed.
template <class Check>
void for_each_record(unsigned percent_of_run, Check check)
{
    const unsigned records = begin_oracle_run(percent_of_run);
    for (unsigned i = 0; i < records; ++i) {
        const std::uint64_t seed = oracle_seed() + i;
        Random random(seed);
        check(random);
        if (testing::Test::HasFailure()) {
            report_oracle_seed(seed);
            return;
        }
    }
}

#endif
