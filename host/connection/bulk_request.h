// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONNECTION_BULK_REQUEST_H
#define NMOS_INSTRUMENT_HOST_CONNECTION_BULK_REQUEST_H

#include <cstddef>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "connection/findings.h"

namespace nmos_instrument::host {

struct BulkEntry
{
    std::string id;
    const nlohmann::json* params; ///< inside the document
};

/// The entries of a bulk POST (v1.0-bulk-sender-post-schema.json); the content of "params" is not
/// checked. There may be `most`, each with an id of its own. Use them only if there are no findings.
/// `document` must outlive them.
std::vector<BulkEntry> parse_bulk_request(const nlohmann::json& document, std::size_t most,
                                          Findings& findings);

} // namespace nmos_instrument::host

#endif
