// SPDX-License-Identifier: Apache-2.0

#include "discovery/dns_answer.h"

#include <algorithm>
#include <memory>
#include <new>

#include <ares.h>
#include <arpa/inet.h>
#include <sys/socket.h>

#include "text/ascii.h"

namespace nmos_instrument::host {
namespace {

constexpr std::size_t header_size = 12;      // RFC 1035 4.1.1
constexpr std::size_t record_head_size = 10; // RFC 1035 4.1.3: type, class, TTL and length
constexpr unsigned class_in = 1;
constexpr std::uint32_t longest_ttl = 0x7fffffff;

/// Reads from the front of a message to its end; what is behind the end is 0 and spoils it.
class Reader
{
public:
    explicit Reader(DnsMessage message) : message_(message) {}

    bool is_good() const { return good_; }
    std::size_t position() const { return position_; }

    void skip(std::size_t count)
    {
        good_ = good_ && count <= message_.size() - position_;
        if (good_)
            position_ += count;
    }

    unsigned byte()
    {
        const std::size_t at = position_;
        skip(1);
        return good_ ? message_[at] : 0;
    }

    unsigned number16()
    {
        const unsigned high = byte();
        return high << 8 | byte();
    }

    std::uint32_t number32()
    {
        const std::uint32_t high = number16();
        return high << 16 | number16();
    }

    /// Labels up to the empty one or a pointer (RFC 1035 4.1.4), which is not followed.
    void skip_name()
    {
        while (good_) {
            const unsigned length = byte();
            if (length == 0)
                return;
            if (length >= 0xc0)
                return skip(1);
            skip(length);
        }
    }

private:
    DnsMessage message_;
    std::size_t position_ = 0;
    bool good_ = true;
};

struct FreeText
{
    void operator()(char* text) const { ares_free_string(text); }
};

/// The name at `position`, which must end before `end`.
std::optional<std::string> expanded_name(DnsMessage message, std::size_t position, std::size_t end)
{
    if (position >= end)
        return std::nullopt;
    char* text = nullptr;
    long size = 0;
    const int result = ares_expand_name(message.data() + position, message.data(),
                                        static_cast<int>(message.size()), &text, &size);
    const std::unique_ptr<char, FreeText> owner(text);
    if (result == ARES_ENOMEM)
        throw std::bad_alloc();
    if (result != ARES_SUCCESS || static_cast<std::size_t>(size) > end - position)
        return std::nullopt;
    return text;
}

/// "\DDD" at the front.
bool is_escaped_byte(std::string_view text)
{
    return text.size() >= 4 && text[0] == '\\' &&
           std::all_of(text.begin() + 1, text.begin() + 4, is_digit);
}

char escaped_byte(std::string_view text)
{
    return static_cast<char>((text[1] - '0') * 100 + (text[2] - '0') * 10 + (text[3] - '0'));
}

} // namespace

std::vector<DnsRecord> dns_records(DnsMessage message, DnsType type)
{
    std::vector<DnsRecord> records;
    Reader reader(message);
    reader.skip(4);
    const unsigned questions = reader.number16();
    const unsigned answers = reader.number16();
    reader.skip(header_size - reader.position());
    for (unsigned i = 0; i < questions && reader.is_good(); ++i) {
        reader.skip_name();
        reader.skip(4);
    }
    for (unsigned i = 0; i < answers && reader.is_good(); ++i) {
        reader.skip_name();
        const unsigned record_type = reader.number16();
        const unsigned record_class = reader.number16();
        const std::uint32_t ttl = reader.number32();
        const unsigned size = reader.number16();
        const std::size_t position = reader.position();
        reader.skip(size);
        if (reader.is_good() && record_type == static_cast<unsigned>(type) &&
            record_class == class_in)
            // RFC 2181 8: with the first bit set it is 0.
            records.push_back({ttl > longest_ttl ? 0 : ttl, position, size});
    }
    return records;
}

std::optional<std::string> dns_name(DnsMessage message, const DnsRecord& record)
{
    return expanded_name(message, record.position, record.position + record.size);
}

std::optional<DnsService> dns_service(DnsMessage message, const DnsRecord& record)
{
    constexpr std::size_t before_host = 6; // RFC 2782: priority, weight and port
    auto host =
        expanded_name(message, record.position + before_host, record.position + record.size);
    if (!host)
        return std::nullopt;
    const std::size_t port = record.position + 4;
    // c-ares writes the root as an empty text, but a record without a host is something else.
    return DnsService{message[port] << 8 | message[port + 1], host->empty() ? "." : *host};
}

std::vector<std::string> dns_strings(DnsMessage message, const DnsRecord& record)
{
    std::vector<std::string> strings;
    DnsMessage rest = message.subspan(record.position, record.size);
    while (!rest.empty()) {
        const std::size_t size = std::min<std::size_t>(rest[0], rest.size() - 1);
        const DnsMessage string = rest.subspan(1, size);
        // RFC 6763 6.1: an empty string is not a key.
        if (!string.empty())
            strings.emplace_back(string.begin(), string.end());
        rest = rest.subspan(1 + size);
    }
    return strings;
}

std::optional<std::string> dns_address(DnsMessage message, const DnsRecord& record)
{
    const int family = record.size == sizeof(in_addr) ? AF_INET : AF_INET6;
    if (family == AF_INET6 && record.size != sizeof(in6_addr))
        return std::nullopt;
    char text[INET6_ADDRSTRLEN];
    inet_ntop(family, message.data() + record.position, text, sizeof text);
    return text;
}

std::optional<std::string> name_for_question(const std::string& name)
{
    std::string question;
    std::string_view rest = name;
    while (!rest.empty()) {
        if (is_escaped_byte(rest)) {
            question += escaped_byte(rest);
            rest.remove_prefix(4);
        } else {
            // A backslash and what it escapes.
            const std::size_t size =
                rest.front() == '\\' ? std::min<std::size_t>(2, rest.size()) : 1;
            question += rest.substr(0, size);
            rest.remove_prefix(size);
        }
    }
    if (question.find('\0') != std::string::npos)
        return std::nullopt;
    return question;
}

std::string first_label(const std::string& name)
{
    std::string label;
    std::string_view rest = name;
    while (!rest.empty() && rest.front() != '.') {
        if (is_escaped_byte(rest)) {
            label += escaped_byte(rest);
            rest.remove_prefix(4);
            continue;
        }
        if (rest.front() == '\\' && rest.size() > 1)
            rest.remove_prefix(1);
        label += rest.front();
        rest.remove_prefix(1);
    }
    return label;
}

} // namespace nmos_instrument::host
