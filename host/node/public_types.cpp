// SPDX-License-Identifier: Apache-2.0

#include "node/public_types.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "http/error_response.h"
#include "http/request_path.h"
#include "text/ipv4_network.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

namespace pub = nmos_instrument_host;

/// More than "[2001:db8:ffff:ffff:ffff:ffff:192.0.2.255]:65535" needs. The log and /status show it.
constexpr std::size_t longest_peer = 64;

/// Nothing for "off".
std::optional<LogLevel> level_of(pub::LogLevel level)
{
    switch (level) {
    case pub::LogLevel::debug:
        return LogLevel::debug;
    case pub::LogLevel::info:
        return LogLevel::info;
    case pub::LogLevel::warning:
        return LogLevel::warning;
    case pub::LogLevel::error:
        return LogLevel::error;
    case pub::LogLevel::off:
        break;
    }
    return std::nullopt;
}

pub::LogLevel public_level(LogLevel level)
{
    switch (level) {
    case LogLevel::debug:
        return pub::LogLevel::debug;
    case LogLevel::info:
        return pub::LogLevel::info;
    case LogLevel::warning:
        return pub::LogLevel::warning;
    case LogLevel::error:
        break;
    }
    return pub::LogLevel::error;
}

bool is_control(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
}

/// `option` is the name of the member, for the message.
std::vector<Ipv4Network> networks(const char* option, const std::vector<std::string>& texts)
{
    std::vector<Ipv4Network> networks;
    networks.reserve(texts.size());
    for (const std::string& text : texts) {
        const std::optional<Ipv4Network> network = parse_ipv4_network(text);
        if (!network)
            throw std::invalid_argument("Options::" + std::string(option) + ": found " +
                                        in_quotes(text) +
                                        ", allowed: " + std::string(allowed_ipv4_network()));
        networks.push_back(*network);
    }
    return networks;
}

/// Names of files may have line breaks, and worse; other than ASCII they keep.
std::string without_controls(std::string_view line)
{
    std::string shown;
    for (const char c : line)
        shown += is_control(c) ? printable({&c, 1}) : std::string(1, c);
    return shown;
}

/// As the host has it: a field that is missing is nothing.
std::optional<std::string> field(const std::string& text)
{
    return text.empty() ? std::nullopt : std::optional(text);
}

} // namespace

void expect_usable(const pub::Options& options)
{
    constexpr std::chrono::milliseconds longest = std::chrono::hours(1);
    if (options.apply_deadline < std::chrono::milliseconds(1) || options.apply_deadline > longest)
        throw std::invalid_argument(
            "Options::apply_deadline: found " + std::to_string(options.apply_deadline.count()) +
            " ms, allowed: 1 to " + std::to_string(longest.count()) + " ms");
}

Log log_of(const pub::Options& options, const pub::Callbacks& callbacks)
{
    const std::optional<LogLevel> least = level_of(options.log_level);
    if (!callbacks.log || !least)
        return {};
    return {*least, [write = callbacks.log](LogLevel level, std::string_view line) {
                if (std::any_of(line.begin(), line.end(), is_control))
                    write(public_level(level), without_controls(line));
                else
                    write(public_level(level), line);
            }};
}

ServedAs served_as(const pub::Options& options, const BrowserPage& page)
{
    return {.page = page,
            .changes = {.read_only = options.read_only,
                        .clients = networks("changes_from", options.changes_from)},
            .manifest_hosts = networks("manifests_from", options.manifests_from),
            .connections_per_address = options.connections_per_address};
}

HttpRequest request_of(const pub::HttpRequest& request)
{
    HttpRequest asked;
    asked.method = request.method == "HEAD" ? "GET" : request.method;
    asked.path = request_path(std::string_view(request.path).substr(0, request.path.find('?')));
    asked.content_type = field(request.content_type);
    asked.accept = field(request.accept);
    asked.if_none_match = field(request.if_none_match);
    asked.body = request.body;
    asked.peer = printable(std::string_view(request.peer).substr(0, longest_peer));
    return asked;
}

pub::HttpAnswer answer_of(HttpResponse response)
{
    if (response.stream)
        response = error_response(404, "Not found", "this path needs the server of the library");
    return {response.status, std::move(response.content_type), std::move(response.body),
            std::move(response.headers)};
}

} // namespace nmos_instrument::host
