// SPDX-License-Identifier: Apache-2.0

#include "oracle/run.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <random>
#include <stdexcept>

namespace {

constexpr std::uint64_t records_by_default = 20000;

/// A misspelt number must not become a run of nothing.
std::uint64_t number_from_environment(const char* name, std::uint64_t otherwise)
{
    const char* const text = std::getenv(name);
    if (text == nullptr || *text == '\0')
        return otherwise;
    std::size_t read = 0;
    const std::uint64_t number = std::stoull(text, &read);
    if (text[read] != '\0')
        throw std::invalid_argument(std::string(name) + " is \"" + text + "\", not a number");
    return number;
}

std::uint64_t random_seed()
{
    std::random_device device;
    return (std::uint64_t{device()} << 32) | device();
}

} // namespace

std::uint64_t oracle_seed()
{
    static const std::uint64_t seed = number_from_environment("NMOS_ORACLE_SEED", random_seed());
    return seed;
}

unsigned begin_oracle_run(unsigned percent_of_run)
{
    const std::uint64_t run = number_from_environment("NMOS_ORACLE_RECORDS", records_by_default);
    const auto records =
        static_cast<unsigned>(std::max<std::uint64_t>(1, run * percent_of_run / 100));
    std::cout << "comparing " << records << " of " << run
              << " random records, NMOS_ORACLE_SEED=" << oracle_seed() << std::endl;
    return records;
}

void report_oracle_seed(std::uint64_t seed)
{
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    ADD_FAILURE() << "repeat this record: NMOS_ORACLE_SEED=" << seed
                  << " NMOS_ORACLE_RECORDS=1 oracle_tests --gtest_filter="
                  << test->test_suite_name() << '.' << test->name();
}

std::string visible(std::string_view bytes)
{
    std::string shown;
    for (const char byte : bytes) {
        if (byte >= ' ' && byte <= '~') {
            shown += byte;
        } else {
            constexpr char digits[] = "0123456789abcdef";
            const auto value = static_cast<unsigned char>(byte);
            shown += "<";
            shown += digits[value >> 4];
            shown += digits[value & 15];
            shown += ">";
        }
    }
    return shown;
}

testing::AssertionResult same_bytes(std::string_view of_library, std::string_view of_oracle)
{
    if (of_library == of_oracle)
        return testing::AssertionSuccess();

    const auto place = static_cast<std::size_t>(
        std::mismatch(of_library.begin(), of_library.end(), of_oracle.begin(), of_oracle.end())
            .first -
        of_library.begin());
    constexpr std::size_t before = 60;
    const std::size_t from = place - std::min(place, before);
    const auto around = [from](std::string_view text) { return visible(text.substr(from, 160)); };
    return testing::AssertionFailure()
           << "different from byte " << place << " on (" << of_library.size() << " and "
           << of_oracle.size() << " bytes); from byte " << from
           << ":\n  library: " << around(of_library) << "\n  oracle:  " << around(of_oracle);
}
