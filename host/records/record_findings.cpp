// SPDX-License-Identifier: Apache-2.0

#include "records/record_findings.h"

#include <cmath>
#include <cstdint>
#include <stdexcept>

#include "text/quoted_text.h"

namespace nmos_instrument::host {

std::string path_of(std::string_view array, std::size_t index, std::string_view member)
{
    std::string path(array);
    path += '[';
    path += std::to_string(index);
    path += ']';
    path += member;
    return path;
}

std::string number_text(double number)
{
    constexpr double exact = 1e15;
    return std::floor(number) == number && std::fabs(number) < exact
               ? std::to_string(static_cast<std::int64_t>(number))
               : std::to_string(number);
}

void RecordFindings::refuse(const std::string& path, const std::string& found,
                            const std::string& allowed)
{
    lines_.push_back("records: " + path + " is " + found + ", allowed " + allowed);
}

void RecordFindings::expect_number(const std::string& path, double found, double allowed,
                                   std::string_view why)
{
    if (found != allowed)
        refuse(path, number_text(found), "is " + number_text(allowed) + std::string(why));
}

void RecordFindings::expect_text(const std::string& path, std::string_view found,
                                 std::string_view allowed, std::string_view why)
{
    if (found != allowed)
        refuse(path, in_quotes(found), "is " + in_quotes(allowed) + std::string(why));
}

void RecordFindings::add(const std::vector<std::string>& findings)
{
    for (const std::string& finding : findings)
        lines_.push_back("records: " + finding);
}

void RecordFindings::expect_none() const
{
    if (lines_.empty())
        return;
    std::string all;
    for (const std::string& line : lines_)
        all += (all.empty() ? "" : "\n") + line;
    throw std::invalid_argument(all);
}

} // namespace nmos_instrument::host
