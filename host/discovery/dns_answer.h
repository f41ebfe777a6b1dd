// SPDX-License-Identifier: Apache-2.0
//
// What an answer of a name server says. It may be any bytes: whatever does not fit into the message
// is left out, and so are records of other classes and sections.

#ifndef NMOS_INSTRUMENT_HOST_DISCOVERY_DNS_ANSWER_H
#define NMOS_INSTRUMENT_HOST_DISCOVERY_DNS_ANSWER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace nmos_instrument::host {

using DnsMessage = std::span<const unsigned char>;

enum class DnsType
{
    a = 1,
    ptr = 12,
    txt = 16,
    aaaa = 28,
    srv = 33
};

struct DnsRecord
{
    std::uint32_t ttl = 0; ///< seconds
    std::size_t position;  ///< of its data in the message
    std::size_t size;      ///< of its data
};

/// Those of one type in the answer section.
std::vector<DnsRecord> dns_records(DnsMessage message, DnsType type);

// Of the data of a record; nothing if it is not of the type.

/// PTR. Dots and backslashes in a label have a backslash in front, and bytes that are not printable
/// are written as \DDD.
std::optional<std::string> dns_name(DnsMessage message, const DnsRecord& record);

struct DnsService
{
    int port;
    std::string host; ///< as dns_name
};

std::optional<DnsService> dns_service(DnsMessage message, const DnsRecord& record);

/// TXT
std::vector<std::string> dns_strings(DnsMessage message, const DnsRecord& record);

/// A, AAAA
std::optional<std::string> dns_address(DnsMessage message, const DnsRecord& record);

/// Of a name as dns_name gives it: the form in which c-ares takes it for a question. Nothing for a
/// name with a NUL, which c-ares cannot ask for.
std::optional<std::string> name_for_question(const std::string& name);

/// The bytes of the first label of a name as dns_name gives it: that of a DNS-SD instance is its
/// name for people (RFC 6763 4.1.1).
std::string first_label(const std::string& name);

} // namespace nmos_instrument::host

#endif
