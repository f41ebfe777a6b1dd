// SPDX-License-Identifier: Apache-2.0

#include "discovery/advertised_registry.h"

#include "text/ascii.h"

namespace nmos_instrument::host {

std::optional<std::string_view> txt_value(const TxtStrings& txt, std::string_view key)
{
    for (const std::string_view entry : txt) {
        const std::size_t equals = entry.find('=');
        if (!same_name(entry.substr(0, equals), key))
            continue;
        return equals == std::string_view::npos ? std::nullopt
                                                : std::optional(entry.substr(equals + 1));
    }
    return std::nullopt;
}

} // namespace nmos_instrument::host
