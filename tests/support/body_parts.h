// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_BODY_PARTS_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_BODY_PARTS_H

#include <climits>
#include <cstddef>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

/// Counts of arrays without entries.
constexpr int no_entries[] = {0, -1, -25, INT_MIN};

/// What no JSON number can hold.
constexpr double not_finite[] = {
    std::numeric_limits<double>::quiet_NaN(), -std::numeric_limits<double>::quiet_NaN(),
    std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};

/// The ids of the resources in a body, in their order, where no other text of it has a quote.
inline std::vector<std::string> ids_in(std::string_view body)
{
    constexpr std::string_view key = R"("id":")";
    std::vector<std::string> ids;
    for (std::size_t at = body.find(key); at != body.npos; at = body.find(key, at)) {
        at += key.size();
        ids.emplace_back(body.substr(at, body.find('"', at) - at));
    }
    return ids;
}

/// The text of the std::out_of_range that `call` must throw.
inline std::string out_of_range_text(const std::function<void()>& call)
{
    try {
        call();
    } catch (const std::out_of_range& error) {
        return error.what();
    }
    ADD_FAILURE() << "nothing was thrown";
    return "";
}

/// The text of the std::overflow_error that `call` must throw.
inline std::string overflow_text(const std::function<void()>& call)
{
    try {
        call();
    } catch (const std::overflow_error& error) {
        return error.what();
    }
    ADD_FAILURE() << "nothing was thrown";
    return "nothing was thrown";
}

#endif
