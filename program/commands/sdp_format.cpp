// SPDX-License-Identifier: Apache-2.0

#include "commands/sdp_format.h"

#include <nlohmann/json.hpp>

#include "commands/report_values.h"
#include "text/quoted_text.h"

namespace nmos_instrument::program {

void print_format(const std::vector<host::FormatValue>& format, std::ostream& out)
{
    for (const host::FormatValue& found : format) {
        if (!found.value.empty())
            out << "  " << padded(found.title, 15) << host::printable(found.value) << '\n';
    }
}

nlohmann::ordered_json format_as_json(const std::vector<host::FormatValue>& format)
{
    nlohmann::ordered_json object;
    for (const host::FormatValue& found : format)
        object[found.key] = or_null(found.value);
    return object;
}

} // namespace nmos_instrument::program
