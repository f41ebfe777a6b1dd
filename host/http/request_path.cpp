// SPDX-License-Identifier: Apache-2.0

#include "http/request_path.h"

#include <cstddef>
#include <optional>

namespace nmos_instrument::host {

namespace {

std::optional<unsigned> hexadecimal_digit(char c)
{
    if (c >= '0' && c <= '9')
        return static_cast<unsigned>(c - '0');
    if (c >= 'a' && c <= 'f')
        return static_cast<unsigned>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F')
        return static_cast<unsigned>(c - 'A' + 10);
    return std::nullopt;
}

// RFC 3986 2.3
bool is_unreserved(unsigned c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

// RFC 9112 3.2.2: servers accept the absolute form too, although clients send it to proxies only.
std::string_view without_scheme_and_host(std::string_view target)
{
    if (target.starts_with('/'))
        return target;
    const std::size_t scheme_end = target.find("://");
    if (scheme_end == std::string_view::npos)
        return target;
    const std::size_t path = target.find('/', scheme_end + 3);
    return path == std::string_view::npos ? std::string_view("/") : target.substr(path);
}

} // namespace

std::string request_path(std::string_view target)
{
    target = without_scheme_and_host(target);
    std::string path(target.substr(0, target.find('%')));
    for (std::size_t i = path.size(); i < target.size(); ++i) {
        if (target[i] == '%' && i + 2 < target.size()) {
            const auto high = hexadecimal_digit(target[i + 1]);
            const auto low = hexadecimal_digit(target[i + 2]);
            if (high && low && is_unreserved(*high * 16 + *low)) {
                path += static_cast<char>(*high * 16 + *low);
                i += 2;
                continue;
            }
        }
        path += target[i];
    }
    return path;
}

} // namespace nmos_instrument::host
