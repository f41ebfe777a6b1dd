// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_SERVICES_H
#define NMOS_INSTRUMENT_HOST_ROUTES_SERVICES_H

#include <chrono>
#include <string>

#include "http/manifest_fetcher.h"
#include "http/server.h"
#include "instrument/instrument.h"
#include "instrument/state_file.h"

namespace nmos_instrument::host {

/// What the routes work on. It outlives them.
struct Services
{
    Instrument& instrument;
    ManifestFetcher& manifests;
    StateFile* state_file = nullptr; ///< null: nothing survives
    std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();
};

/// Answers once the change that was made is in the state file: what a client was told survives.
inline void reply_when_saved(const Services& services, const HttpReply& reply,
                             HttpResponse response)
{
    if (services.state_file == nullptr)
        reply(std::move(response));
    else
        services.state_file->when_saved(
            [reply, response = std::move(response)]() mutable { reply(std::move(response)); });
}

} // namespace nmos_instrument::host

#endif
