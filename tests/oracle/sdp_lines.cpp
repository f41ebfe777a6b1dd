// SPDX-License-Identifier: Apache-2.0

#include "oracle/sdp_oracle.h"

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdlib>

namespace oracle {

std::string convert_crlf(const std::string& text, const std::string& newline)
{
    std::string result;
    std::size_t i = 0;
    while (i < text.size()) {
        const std::string two = text.substr(i, 2);
        if (two == "\r\n" || two == "\n\r") {
            result += newline;
            i += 2;
        } else if (two[0] == '\r' || two[0] == '\n') {
            result += newline;
            i += 1;
        } else {
            result += two[0];
            i += 1;
        }
    }
    return result;
}

SplitText split_string(const std::string& text, const std::string& delimiter, int max_parts)
{
    SplitText split{0, {}};
    std::string rest = text;
    while (split.count < max_parts && !delimiter.empty()) {
        const std::size_t end = rest.find(delimiter);
        if (end == std::string::npos)
            break;
        split.entries.push_back(rest.substr(0, end));
        rest = rest.substr(end + delimiter.size());
        ++split.count;
    }
    if (split.count < max_parts) {
        const long long number = std::strtoll(rest.c_str(), nullptr, 10);
        split.entries.push_back(
            std::to_string(std::clamp<long long>(number, INT32_MIN, INT32_MAX)));
    }
    return split;
}

std::string make_fullpath_from_request(const std::string& request_line)
{
    constexpr std::size_t protocol = 9; // " HTTP/1.1"
    const std::string from_path = request_line.substr(request_line.find('/'));
    if (from_path.size() < protocol)
        return "";
    return from_path.substr(0, from_path.size() - protocol);
}

} // namespace oracle
