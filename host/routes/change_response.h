// SPDX-License-Identifier: Apache-2.0
//
// The HTTP response to a change of a connection.

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_CHANGE_RESPONSE_H
#define NMOS_INSTRUMENT_HOST_ROUTES_CHANGE_RESPONSE_H

#include "connection/connection_patch.h"
#include "connection/findings.h"
#include "http/message.h"
#include "instrument/change_outcome.h"
#include "instrument/instrument.h"

namespace nmos_instrument::host {

/// IS-05 v1.0, ConnectionAPI.raml: 200, 202, 400, 423 or 500.
int http_status(ChangeResult result);

/// Makes the change in the instrument, unless `findings` already refuse it. Every refusal is one
/// line in the log.
ChangeOutcome change(Instrument& instrument, const ConnectionKey& key, const ConnectionPatch& patch,
                     const Findings& findings);

/// The error response for a refusal.
HttpResponse refusal_response(const ChangeOutcome& outcome);

} // namespace nmos_instrument::host

#endif
