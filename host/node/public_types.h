// SPDX-License-Identifier: Apache-2.0
//
// Between the types of the public headers and those of the host.

#ifndef NMOS_INSTRUMENT_HOST_NODE_PUBLIC_TYPES_H
#define NMOS_INSTRUMENT_HOST_NODE_PUBLIC_TYPES_H

#include "http/message.h"
#include "log/log.h"
#include "node/running_node.h"
#include <nmos_instrument_host/instrument.h>

namespace nmos_instrument::host {

/// Throws std::invalid_argument for what is out of its range.
void expect_usable(const nmos_instrument_host::Options& options);

Log log_of(const nmos_instrument_host::Options& options,
           const nmos_instrument_host::Callbacks& callbacks);

/// Throws std::invalid_argument for what is no network. `page` must outlive the result.
ServedAs served_as(const nmos_instrument_host::Options& options, const BrowserPage& page);

HttpRequest request_of(const nmos_instrument_host::HttpRequest& request);

/// An answer that goes on becomes a 404.
nmos_instrument_host::HttpAnswer answer_of(HttpResponse response);

} // namespace nmos_instrument::host

#endif
