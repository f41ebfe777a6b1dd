// SPDX-License-Identifier: Apache-2.0
//
// The HTTP response to a change of a connection, and what the log says of it.

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_CHANGE_RESPONSE_H
#define NMOS_INSTRUMENT_HOST_ROUTES_CHANGE_RESPONSE_H

#include <string>

#include "connection/connection_patch.h"
#include "connection/findings.h"
#include "http/message.h"
#include "http/server.h"
#include "instrument/change_outcome.h"
#include "routes/services.h"

namespace nmos_instrument::host {

/// IS-05 v1.0, ConnectionAPI.raml: 200, 202, 400, 404, 423 or 500.
int http_status(ChangeResult result);

/// Makes the change that `peer` asks for, unless `findings` already refuse it, and calls `then` as
/// Instrument::change does. What was done, and every refusal, is in the log before.
void change(const Services& services, const std::string& peer, const ConnectionKey& key,
            const ConnectionPatch& patch, const Findings& findings, Instrument::Then then);

/// Keeps a refusal for "/status". It is called where the client is answered, with what it is told: no
/// client hears of another what that one must not hear itself.
void note_refusal(const Services& services, const std::string& peer, const std::string& what,
                  const Refusal& refusal);

/// Answers a request that would have changed something with an error. The log has all of it.
void refuse(const Services& services, const HttpRequest& request, const HttpReply& reply,
            const Refusal& refusal);

/// `outcome` is a refusal.
Refusal refusal_of(const ChangeOutcome& outcome);

/// What the client gets.
HttpResponse response_of(const Refusal& refusal);

} // namespace nmos_instrument::host

#endif
