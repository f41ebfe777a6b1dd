// SPDX-License-Identifier: Apache-2.0

#include "sdp/read_path.h"

#include <set>
#include <string_view>

#include "text/ascii.h"
#include "text/ipv4_address.h"
#include "text/pieces.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

/// Where source filters stand.
enum class Level
{
    session, ///< one for another address may be that of another medium
    medium
};

/// The a=source-filter lines of one section, as far as they say something about one address.
class SourceFilters
{
public:
    SourceFilters(Level level, const std::string& destination, SdpFindings& findings)
        : level_(level), destination_(destination), findings_(findings)
    {}

    /// Whether the section has a filter for the address.
    bool read(const SdpSection& section)
    {
        for (const SdpAttribute& attribute : section.attributes) {
            if (attribute.name == "source-filter")
                read_filter(attribute);
        }
        return applies_;
    }

    void store_in(SdpPath& path) const
    {
        path.sources = sources_;
        path.source_line = line_;
    }

private:
    // RFC 4570 3: MODE NETTYPE ADDRESS-TYPE DESTINATION SOURCE...
    void read_filter(const SdpAttribute& filter)
    {
        const std::vector<std::string_view> words = words_of(filter.value);
        constexpr std::size_t first_source = 4;
        const bool known_mode =
            !words.empty() && (same_name(words[0], "incl") || same_name(words[0], "excl"));
        if (words.size() <= first_source || !known_mode || !same_name(words[1], "IN")) {
            refuse(filter, "a=source-filter " + in_quotes(filter.value));
            return;
        }
        if (same_name(words[2], "IP6"))
            return; // about another address, whatever it is
        const std::string_view destination = words[3];
        if (destination != "*" && destination != destination_) {
            if (!ipv4_from_dotted_quad(std::string(destination)))
                refuse(filter, "destination " + in_quotes(destination) + " of a source filter");
            else if (level_ == Level::medium)
                findings_.add(SdpCode::other_destination, filter.line,
                              "destination " + in_quotes(destination) + " of a source filter",
                              in_quotes(destination_) + " or \"*\"");
            return;
        }
        applies_ = true;
        if (same_name(words[0], "excl")) {
            findings_.add(SdpCode::excluded_sources, filter.line,
                          "a=source-filter " + in_quotes(filter.value),
                          "incl IN IP4 DESTINATION SOURCE");
            return;
        }
        line_ = filter.line;
        for (std::size_t i = first_source; i < words.size(); ++i)
            add_source(filter, words[i]);
    }

    void add_source(const SdpAttribute& filter, std::string_view word)
    {
        const std::string source(word);
        const std::optional<std::uint32_t> address = ipv4_from_dotted_quad(source);
        if (!address || !is_unicast(*address))
            refuse(filter, "source " + in_quotes(word) + " of a source filter");
        else if (known_.insert(source).second)
            sources_.push_back(source);
    }

    void refuse(const SdpAttribute& filter, std::string found)
    {
        findings_.add(SdpCode::source_filter, filter.line, std::move(found),
                      "incl IN IP4 DESTINATION SOURCE, with IPv4 addresses");
    }

    const Level level_;
    const std::string& destination_;
    SdpFindings& findings_;
    bool applies_ = false;
    std::vector<std::string> sources_;
    std::set<std::string> known_;
    std::size_t line_ = 0;
};

constexpr std::string_view allowed_address = "a multicast group (224.0.0.0 to 239.255.255.255) or "
                                             "a unicast address, as four decimal numbers "
                                             "without leading zeros";
constexpr std::string_view allowed_connection = "IN IP4 ADDRESS, or ADDRESS/TTL for a group";

/// The connection data that holds for a medium, in words; nothing, with a reason, if it is
/// malformed.
std::optional<std::vector<std::string_view>>
connection_of(const SdpSection& session, const SdpMedium& medium, SdpFindings& findings)
{
    const std::vector<SdpLine>& lines =
        medium.connections.empty() ? session.connections : medium.connections;
    if (lines.empty()) {
        findings.add(SdpCode::no_connection, medium.line, "no c= line",
                     "c=" + std::string(allowed_connection));
        return std::nullopt;
    }
    if (lines.size() > 1) {
        findings.add(SdpCode::connection_line, lines[1].number, "a second c= line",
                     "one, as in line " + std::to_string(lines[0].number));
        return std::nullopt;
    }
    std::vector<std::string_view> words = words_of(lines[0].value);
    if (words.size() == 3 && same_name(words[1], "IP6")) {
        findings.add(SdpCode::address, lines[0].number, "the IPv6 address " + in_quotes(words[2]),
                     std::string(allowed_address));
        return std::nullopt;
    }
    if (words.size() != 3 || !same_name(words[0], "IN") || !same_name(words[1], "IP4")) {
        findings.add(SdpCode::connection_line, lines[0].number, in_quotes(lines[0].value),
                     std::string(allowed_connection));
        return std::nullopt;
    }
    return words;
}

/// ADDRESS, ADDRESS/TTL or ADDRESS/TTL/COUNT
std::optional<SdpPath> path_to(std::string_view destination, std::size_t line,
                               SdpFindings& findings)
{
    const bool has_ttl = destination.find('/') != std::string_view::npos;
    std::string_view rest = destination;
    const std::string address(cut_off(rest, '/'));
    const std::optional<std::uint32_t> value = ipv4_from_dotted_quad(address);
    if (!value || !(is_multicast(*value) || is_unicast(*value))) {
        findings.add(SdpCode::address, line, "address " + in_quotes(address),
                     std::string(allowed_address));
        return std::nullopt;
    }
    if (has_ttl) {
        const bool range = rest.find('/') != std::string_view::npos;
        const std::string_view ttl = cut_off(rest, '/');
        const std::optional<long> count = range ? number_from_to(1, 65535, rest) : 1;
        if (!number_from_to(0, 255, ttl) || !count) {
            findings.add(SdpCode::connection_line, line, in_quotes(destination),
                         std::string(allowed_connection));
            return std::nullopt;
        }
        if (*count > 1)
            findings.add(SdpCode::several_addresses, line,
                         in_quotes(destination) + ": only the first address is joined");
    }
    SdpPath path;
    path.address = address;
    path.multicast = is_multicast(*value);
    path.address_line = line;
    return path;
}

} // namespace

std::optional<SdpPath> read_path(const SdpSection& session, const SdpMedium& medium,
                                 SdpFindings& findings)
{
    const auto connection = connection_of(session, medium, findings);
    if (!connection)
        return std::nullopt;
    const std::size_t line =
        (medium.connections.empty() ? session.connections : medium.connections).front().number;
    std::optional<SdpPath> path = path_to((*connection)[2], line, findings);
    if (!path)
        return std::nullopt;
    if (medium.several_ports)
        findings.add(SdpCode::several_addresses, medium.line,
                     "several ports: only " + std::to_string(medium.port) + " is received");

    // A filter of the medium overrides those of the session.
    SourceFilters own(Level::medium, path->address, findings);
    SourceFilters common(Level::session, path->address, findings);
    if (own.read(medium))
        own.store_in(*path);
    else if (common.read(session))
        common.store_in(*path);
    return path;
}

} // namespace nmos_instrument::host
