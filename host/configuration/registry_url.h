// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONFIGURATION_REGISTRY_URL_H
#define NMOS_INSTRUMENT_HOST_CONFIGURATION_REGISTRY_URL_H

#include <optional>
#include <string>

namespace nmos_instrument::host {

/// Where the Registration API of the registry at `url` begins, in its usual spelling:
/// "http://registry.example:8080/x-nmos/registration/v1.2". The URL has the scheme http or https, a
/// host, perhaps a port, and no path or one that leads there; nothing for any other text.
std::optional<std::string> registry_url(const std::string& url);

} // namespace nmos_instrument::host

#endif
