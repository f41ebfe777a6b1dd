// SPDX-License-Identifier: Apache-2.0

#include "sdp/sdp_lines.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include "sdp/line_reader.h"
#include "text/number_text.h"

namespace nmos_instrument {

std::string unify_line_breaks(std::string_view text, std::string_view newline)
{
    std::string unified;
    unified.reserve(text.size());
    LineReader lines(text);
    std::string_view line;
    while (lines.next(line)) {
        unified.append(line);
        unified.append(newline);
    }
    unified.append(lines.rest());
    return unified;
}

int cut_pieces(std::string_view text, std::string_view delimiter, std::string* parts, int max_parts)
{
    if (max_parts <= 0)
        return 0;
    int count = 0;
    while (!delimiter.empty()) {
        const std::size_t end = text.find(delimiter);
        if (end == std::string_view::npos)
            break;
        parts[count].assign(text.substr(0, end));
        text.remove_prefix(end + delimiter.size());
        if (++count == max_parts)
            return count;
    }
    const long long number =
        std::clamp<long long>(leading_integer(text), std::numeric_limits<std::int32_t>::min(),
                              std::numeric_limits<std::int32_t>::max());
    parts[count] = std::to_string(number);
    return count;
}

std::string path_of_request(const std::string& request_line)
{
    constexpr std::size_t protocol_size = 9; // " HTTP/1.1"
    const std::size_t start = request_line.find('/');
    if (start == std::string::npos)
        throw std::out_of_range("basic_string::substr: the request line has no \"/\"");
    const std::size_t size = request_line.size() - start;
    return request_line.substr(start, size < protocol_size ? 0 : size - protocol_size);
}

} // namespace nmos_instrument
