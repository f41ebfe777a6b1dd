// SPDX-License-Identifier: Apache-2.0

#include "listings/root_listing.h"

#include <cstddef>

#include "text/text_buffer.h"

namespace nmos_instrument {

std::string root_listing(std::initializer_list<std::string_view> names)
{
    TextBuffer text;
    text.append("[\n");
    std::size_t left = names.size();
    for (const std::string_view name : names)
        text.append("    \"", name, --left != 0 ? "/\",\n" : "/\"\n");
    text.append("]\n");
    return text.take();
}

} // namespace nmos_instrument
