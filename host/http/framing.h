// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_FRAMING_H
#define NMOS_INSTRUMENT_HOST_HTTP_FRAMING_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct MHD_Connection;

namespace nmos_instrument::host {

/// The beginning of a request, up to the empty line, as libmicrohttpd leaves it: every CR, LF and
/// colon that ends something has become a NUL, all else stands where it arrived.
struct RequestHead
{
    struct Field
    {
        std::string_view name;
        std::string_view value;
    };

    std::string_view bytes;    ///< all of it; the views below lie inside
    std::string_view target;   ///< up to its first NUL; libmicrohttpd may have decoded its query
    bool target_is_visible;    ///< it arrived without blanks and control characters
    std::string_view version;  ///< "HTTP/1.1"
    std::vector<Field> fields; ///< in the order in which they arrived
};

/// What makes it doubtful where a request ends or what it asks for, so that two programs may read
/// it differently (RFC 9112 11.2): what, where, and what is allowed. Such a request is refused and
/// its connection closed; libmicrohttpd lets these pass. Nothing if all is well.
std::optional<std::string> framing_fault(const RequestHead& head);

/// The target as libmicrohttpd gives it to the URI log callback. Later it decodes the query in
/// place, and a "+" becomes a blank.
struct ArrivedTarget
{
    std::string_view bytes; ///< in libmicrohttpd's memory
    bool is_visible = true;
};

ArrivedTarget look_at_target(const char* target);

/// The same for a request whose headers are complete. `method` and `version` are what libmicrohttpd
/// gave to the access handler.
std::optional<std::string> framing_fault(MHD_Connection* connection, const char* method,
                                         const ArrivedTarget& target, const char* version);

} // namespace nmos_instrument::host

#endif
