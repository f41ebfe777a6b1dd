// SPDX-License-Identifier: Apache-2.0

#include "http/header_list.h"

#include <new>

#include <microhttpd.h>

#include "text/ascii.h"

namespace nmos_instrument::host {
namespace {

struct FieldLines
{
    const char* name;
    std::optional<std::string> joined{};
    bool is_complete = true;
};

// No exception may pass through libmicrohttpd, which is C.
MHD_Result add_line(void* closure, MHD_ValueKind, const char* name, const char* value) noexcept
{
    FieldLines& lines = *static_cast<FieldLines*>(closure);
    if (!same_name(name, lines.name))
        return MHD_YES;
    try {
        std::string joined = lines.joined ? *lines.joined + ", " : "";
        lines.joined = std::move(joined) + (value == nullptr ? "" : value);
        return MHD_YES;
    } catch (const std::bad_alloc&) {
        lines.is_complete = false;
        return MHD_NO;
    }
}

} // namespace

std::optional<std::string> header_list(MHD_Connection* connection, const char* name)
{
    FieldLines lines{name};
    MHD_get_connection_values(connection, MHD_HEADER_KIND, &add_line, &lines);
    if (!lines.is_complete)
        throw std::bad_alloc();
    return lines.joined;
}

} // namespace nmos_instrument::host
