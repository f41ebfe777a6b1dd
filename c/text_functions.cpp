// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "answer.h"
#include "nmos_instrument/ConnectionApi.h"
#include "nmos_instrument/Nmos.h"

using namespace nmos_instrument::c;

namespace {

/// How often `delimiter` ends a piece of `text`.
std::size_t pieces_of(std::string_view text, std::string_view delimiter)
{
    std::size_t pieces = 0;
    std::size_t start = 0;
    while (!delimiter.empty() && (start = text.find(delimiter, start)) != std::string_view::npos) {
        start += delimiter.size();
        ++pieces;
    }
    return pieces;
}

/// The entries of the table, a NUL between two.
std::string split(const std::string& text, const std::string& delimiter, int max_parts, int& count)
{
    // The caller's table may be any size: no more of it is made than can be used.
    const std::size_t useful = pieces_of(text, delimiter) + 1;
    const std::size_t entries = std::min(useful, static_cast<std::size_t>(std::max(max_parts, 0)));
    std::vector<std::string> parts(entries);
    ConnectionApi::split_string(text, delimiter, parts.data(), static_cast<int>(entries), &count);

    std::string joined;
    for (const std::string& part : parts)
        joined += (&part == parts.data() ? "" : std::string(1, '\0')) + part;
    return joined;
}

} // namespace

size_t nmos_connection_split_string(const char* text, size_t length, const char* delimiter,
                                    int max_parts, int* count, char* buffer, size_t size)
{
    return answer({buffer, size}, {text, delimiter, count}, [&] {
        *count = 0;
        return split({text, length}, delimiter, max_parts, *count);
    });
}

size_t nmos_connection_fullpath_from_request(const char* request_line, size_t length, char* buffer,
                                             size_t size)
{
    const size_t result = answer({buffer, size}, {request_line}, [&] {
        std::string line(request_line, length);
        return ConnectionApi::make_fullpath_from_request(line);
    });
    return result == NMOS_ERROR_INDEX ? NMOS_ERROR_INCOMPLETE : result; // it has no index
}

size_t nmos_replace_all(const char* subject, size_t length, const char* from, const char* to,
                        char* buffer, size_t size)
{
    return answer({buffer, size}, {subject, from, to}, [&] {
        std::string replaced(subject, length);
        return Nmos().replaceAll(replaced, from, to);
    });
}
