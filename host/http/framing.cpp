// SPDX-License-Identifier: Apache-2.0

#include "http/framing.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include <microhttpd.h>
#include <strings.h>

#include "text/ascii.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {

namespace {

using Field = RequestHead::Field;

// RFC 9110 5.6.2
bool is_token(std::string_view name)
{
    constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
    return !name.empty() && std::all_of(name.begin(), name.end(), [&](char c) {
        return is_digit(c) || is_letter(c) || marks.find(c) != std::string_view::npos;
    });
}

bool has_name(const Field& field, std::string_view name)
{
    return field.name.size() == name.size() &&
           strncasecmp(field.name.data(), name.data(), name.size()) == 0;
}

std::size_t count_of(const RequestHead& head, std::string_view name)
{
    return static_cast<std::size_t>(
        std::count_if(head.fields.begin(), head.fields.end(),
                      [&](const Field& field) { return has_name(field, name); }));
}

// Walks through the bytes and finds everything that libmicrohttpd has passed over.
class Walk
{
public:
    explicit Walk(std::string_view bytes) : bytes_(bytes) {}

    // `part` must begin here.
    bool take(std::string_view part)
    {
        if (!lies_here(part))
            return false;
        at_ += part.size();
        return true;
    }

    bool take_nul()
    {
        if (at_ == bytes_.size() || bytes_[at_] != '\0')
            return false;
        ++at_;
        return true;
    }

    void take_blanks()
    {
        while (at_ < bytes_.size() && (bytes_[at_] == ' ' || bytes_[at_] == '\t'))
            ++at_;
    }

    // CR LF, or LF alone (RFC 9112 2.2).
    bool take_line_end()
    {
        const bool taken = take_nul();
        take_nul();
        return taken;
    }

    bool is_at_end() const { return at_ == bytes_.size(); }

private:
    bool lies_here(std::string_view part) const
    {
        return part.data() == bytes_.data() + at_ && part.size() <= bytes_.size() - at_;
    }

    std::string_view bytes_;
    std::size_t at_ = 0;
};

bool take_field(Walk& walk, const Field& field)
{
    if (!walk.take(field.name) || !walk.take_nul()) // the colon
        return false;
    walk.take_blanks();
    // An empty value may point before the blanks or behind them.
    return (field.value.empty() || walk.take(field.value)) && walk.take_line_end();
}

std::string line_fault(const std::string& where, std::size_t line, const std::string& found)
{
    return where + " line " + std::to_string(line) + ": found " + found +
           ", allowed: a name, a colon and a value without NUL, in one line";
}

// A line that libmicrohttpd has cut or passed over shows where the next one begins.
std::string cut_line(std::size_t line)
{
    return line_fault("near header", line, "something else");
}

std::optional<std::string> request_line_fault(const RequestHead& head, Walk& walk)
{
    if (!head.target_is_visible)
        return "request line: found a blank or control character in the target, allowed: %20";
    const std::string_view method = head.bytes.substr(0, head.bytes.find('\0'));
    if (!is_token(method))
        return "request line: found the method " + in_quotes(method) + ", allowed: a token";
    if (!walk.take(method) || !walk.take_nul() || !walk.take(head.target) || !walk.take_nul() ||
        !walk.take(head.version) || !walk.take_line_end())
        return "request line: found a NUL or more than one blank in a row, allowed: method, target "
               "and version with one blank between them";
    return std::nullopt;
}

std::optional<std::string> field_fault(const Field& field, std::size_t line)
{
    if (!is_token(field.name))
        return line_fault("header", line, "the name " + in_quotes(field.name));
    if (field.value.find('\r') != std::string_view::npos)
        return line_fault("header", line, "a CR in the value of " + in_quotes(field.name));
    return std::nullopt;
}

std::optional<std::string> line_faults(const RequestHead& head)
{
    Walk walk(head.bytes);
    if (auto fault = request_line_fault(head, walk))
        return fault;
    std::size_t line = 0;
    for (const Field& field : head.fields) {
        if (auto fault = field_fault(field, ++line))
            return fault;
        if (!take_field(walk, field))
            return cut_line(line);
    }
    // Two LF look like one CR LF.
    walk.take_line_end();
    return walk.is_at_end() ? std::nullopt : std::optional(cut_line(line));
}

} // namespace

std::optional<std::string> framing_fault(const RequestHead& head)
{
    // From 1.0 on libmicrohttpd reads the lines by RFC 9112 itself, and leaves other bytes behind.
    if constexpr (MHD_VERSION < 0x01000000) {
        if (auto fault = line_faults(head))
            return fault;
    }
    for (const std::string_view once : {"Host", "Content-Length", "Transfer-Encoding"}) {
        if (const std::size_t count = count_of(head, once); count > 1)
            return std::string(once) + ": found " + std::to_string(count) + ", allowed: one";
    }
    // RFC 9112 3.2
    const bool is_1_0 = head.version == MHD_HTTP_VERSION_1_0;
    if (count_of(head, "Host") == 0 && !is_1_0)
        return "Host: found none, allowed: one";
    if (count_of(head, "Transfer-Encoding") != 0) {
        // RFC 9112 6.1
        if (count_of(head, "Content-Length") != 0)
            return "Content-Length: found with Transfer-Encoding, allowed: one of them";
        if (is_1_0)
            return "Transfer-Encoding: found with " + in_quotes(head.version) +
                   ", allowed: with HTTP/1.1";
    }
    return std::nullopt;
}

ArrivedTarget look_at_target(const char* target)
{
    const std::string_view bytes(target);
    return {bytes, std::none_of(bytes.begin(), bytes.end(),
                                [](char c) { return (c >= 0 && c <= ' ') || c == '\x7f'; })};
}

std::optional<std::string> framing_fault(MHD_Connection* connection, const char* method,
                                         const ArrivedTarget& target, const char* version)
{
    RequestHead head;
    const auto* const size =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_REQUEST_HEADER_SIZE);
    head.bytes = {method, size == nullptr ? 0 : size->header_size};
    head.target = target.bytes;
    head.target_is_visible = target.is_visible;
    head.version = version;
    const int count = MHD_get_connection_values(connection, MHD_HEADER_KIND, nullptr, nullptr);
    head.fields.reserve(static_cast<std::size_t>(std::max(count, 0))); // so that add does not throw
    const auto add = [](void* fields, MHD_ValueKind, const char* name, std::size_t name_size,
                        const char* value, std::size_t value_size) {
        static_cast<std::vector<Field>*>(fields)->push_back(
            {{name, name_size}, {value, value_size}});
        return MHD_YES;
    };
    MHD_get_connection_values_n(connection, MHD_HEADER_KIND, add, &head.fields);
    return framing_fault(head);
}

} // namespace nmos_instrument::host
