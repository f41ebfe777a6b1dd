// SPDX-License-Identifier: Apache-2.0

#include "routes/id_listing.h"

#include <string_view>

namespace nmos_instrument::host {

std::string without_trailing_comma(std::string listing)
{
    constexpr std::string_view end = ",\n]\n";
    if (listing.ends_with(end))
        listing.erase(listing.size() - end.size(), 1);
    return listing;
}

} // namespace nmos_instrument::host
