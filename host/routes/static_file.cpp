// SPDX-License-Identifier: Apache-2.0

#include "routes/static_file.h"

#include <algorithm>

#include "text/pieces.h"

namespace nmos_instrument::host {
namespace {

/// What a page may do: load its own files and ask this instrument, nothing else. It cannot be shown
/// inside another page, whose buttons could lie over its own.
constexpr const char* content_security_policy =
    "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src 'self'; "
    "base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

/// Takes the entity tag at the beginning of `rest` from it, without "W/" (RFC 9110 8.8.3); empty if
/// there is none. It may have commas in it.
std::string_view take_entity_tag(std::string_view& rest)
{
    if (rest.starts_with("W/"))
        rest.remove_prefix(2);
    if (!rest.starts_with('"'))
        return {};
    const std::size_t end = rest.find('"', 1);
    if (end == std::string_view::npos)
        return {};
    const std::string_view tag = rest.substr(0, end + 1);
    rest.remove_prefix(tag.size());
    return tag;
}

} // namespace

bool none_match_names(std::string_view if_none_match, std::string_view etag)
{
    constexpr std::string_view between = " \t,"; // empty elements too, RFC 9110 5.6.1.2
    if (trimmed(if_none_match) == "*")
        return true;
    std::string_view rest = if_none_match;
    while (true) {
        rest.remove_prefix(std::min(rest.find_first_not_of(between), rest.size()));
        const std::string_view tag = take_entity_tag(rest);
        if (tag.empty() || tag == etag)
            return !tag.empty();
    }
}

HttpResponse file_response(const StaticFile& file, const std::optional<std::string>& if_none_match)
{
    HttpResponse response;
    response.headers = {{"ETag", std::string(file.etag)},
                        {"Cache-Control", "no-cache"},
                        {"Content-Security-Policy", content_security_policy},
                        {"Referrer-Policy", "no-referrer"}};
    if (if_none_match && none_match_names(*if_none_match, file.etag)) {
        response.status = 304;
        response.content_type.clear();
        return response;
    }
    response.content_type = file.content_type;
    response.body = file.content;
    return response;
}

} // namespace nmos_instrument::host
