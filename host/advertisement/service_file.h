// SPDX-License-Identifier: Apache-2.0
//
// One of the service files that avahi-daemon reads. It is ours by its name: whatever is there is
// replaced, and removed.
//
// It is not the library that writes it (Nmos::make_node_service): that always writes to one place,
// does not tell when it cannot, lets avahi-daemon see half a file, and withdraws the service with an
// empty one, which avahi-daemon reports as an error whenever it looks at its files.

#ifndef NMOS_INSTRUMENT_HOST_ADVERTISEMENT_SERVICE_FILE_H
#define NMOS_INSTRUMENT_HOST_ADVERTISEMENT_SERVICE_FILE_H

#include <string>
#include <string_view>

namespace nmos_instrument::host {

/// Whoever reads the file sees all of the old or all of the new text, also after a crash. Throws
/// std::runtime_error, which does not name the file.
void replace_service_file(const std::string& path, std::string_view text);

/// Does nothing if there is none. Throws std::runtime_error, which does not name the file.
void remove_service_file(const std::string& path);

} // namespace nmos_instrument::host

#endif
