// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_ASKS_FOR_HTML_H
#define NMOS_INSTRUMENT_HOST_ROUTES_ASKS_FOR_HTML_H

#include <optional>
#include <string>

namespace nmos_instrument::host {

/// Whether the value of Accept (RFC 9110 12.5.1) names HTML, as a browser does that is to show a page.
/// A range that merely includes it, like "*/*" of most other clients, does not, nor does "q=0".
bool asks_for_html(const std::optional<std::string>& accept);

} // namespace nmos_instrument::host

#endif
