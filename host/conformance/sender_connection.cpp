// SPDX-License-Identifier: Apache-2.0

#include "conformance/sender_connection.h"

#include <cstddef>
#include <string_view>

namespace nmos_instrument::host {
namespace {

constexpr std::string_view destination_port = R"("destination_port":)";
constexpr std::string_view source_port = R"("source_port":)";

} // namespace

/// IS-05 v1.0, ConnectionAPI.raml, "active": the parameters in force, not those that are staged. The
/// instrument sends from the port that it sends to. Of the places in a text see replacement.h.
std::string corrected_active_sender(std::string text)
{
    std::size_t at = 0;
    while ((at = text.find(destination_port, at)) != std::string::npos) {
        at += destination_port.size();
        const std::string port = text.substr(at, text.find(',', at) - at);
        at = text.find(source_port, at);
        if (at == std::string::npos)
            break;
        at += source_port.size();
        text.replace(at, text.find('}', at) - at, port);
    }
    return text;
}

} // namespace nmos_instrument::host
