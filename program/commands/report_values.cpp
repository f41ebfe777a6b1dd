// SPDX-License-Identifier: Apache-2.0

#include "commands/report_values.h"

#include <algorithm>

namespace nmos_instrument::program {

using nlohmann::ordered_json;

std::string padded(std::string text, std::size_t width)
{
    text.resize(std::max(width, text.size() + 1), ' ');
    return text;
}

ordered_json or_null(const std::string& text)
{
    return text.empty() ? ordered_json() : ordered_json(text);
}

ordered_json line_or_null(std::size_t line)
{
    return line == 0 ? ordered_json() : ordered_json(line);
}

} // namespace nmos_instrument::program
