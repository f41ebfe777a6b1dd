// SPDX-License-Identifier: Apache-2.0

#include "routes/asks_for_html.h"

#include <string_view>

#include "text/ascii.h"
#include "text/pieces.h"

namespace nmos_instrument::host {
namespace {

/// "q=0", "q=0.000": not acceptable (RFC 9110 12.4.2).
bool is_weight_of_zero(std::string_view parameter)
{
    const std::string_view name = trimmed(cut_off(parameter, '='));
    const std::string_view value = trimmed(parameter);
    return same_name(name, "q") && value.starts_with('0') &&
           value.find_first_not_of("0.") == std::string_view::npos;
}

bool names_html(std::string_view range)
{
    const std::string_view type = trimmed(cut_off(range, ';'));
    if (!same_name(type, "text/html") && !same_name(type, "application/xhtml+xml"))
        return false;
    while (!range.empty()) {
        if (is_weight_of_zero(cut_off(range, ';')))
            return false;
    }
    return true;
}

} // namespace

bool asks_for_html(const std::optional<std::string>& accept)
{
    std::string_view rest = accept ? std::string_view(*accept) : std::string_view();
    while (!rest.empty()) {
        if (names_html(cut_off(rest, ',')))
            return true;
    }
    return false;
}

} // namespace nmos_instrument::host
