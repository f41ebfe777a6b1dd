// SPDX-License-Identifier: Apache-2.0

#include "configuration/registry_url.h"

#include <algorithm>
#include <string_view>

#include "http/url.h"
#include "text/ascii.h"

namespace nmos_instrument::host {
namespace {

constexpr std::string_view registration_api = "/x-nmos/registration";
constexpr std::string_view version = "/v1.2";

/// All that these URLs consist of. So there is no user, query or fragment, nothing encoded, and no
/// zone of an address, which libcurl would leave out without a word.
bool is_plain(char c)
{
    return is_letter(c) || is_digit(c) ||
           std::string_view("-._:/[]").find(c) != std::string_view::npos;
}

bool leads_to_api(std::string_view path)
{
    if (path.ends_with('/'))
        path.remove_suffix(1);
    if (path.ends_with(version))
        path.remove_suffix(version.size());
    else if (path.empty())
        return true;
    return path == registration_api;
}

} // namespace

std::optional<std::string> registry_url(const std::string& url)
{
    const std::string lower = lower_case(url);
    if (!std::all_of(url.begin(), url.end(), is_plain) ||
        !(lower.starts_with("http://") || lower.starts_with("https://")))
        return std::nullopt;
    const std::optional<Url> parts = parse_url(url);
    if (!parts || parts->host.empty() || parts->port == "0" || !leads_to_api(parts->path))
        return std::nullopt;
    const std::string port = parts->port.empty() ? "" : ':' + parts->port;
    return parts->scheme + "://" + lower_case(parts->host) + port + std::string(registration_api) +
           std::string(version);
}

} // namespace nmos_instrument::host
