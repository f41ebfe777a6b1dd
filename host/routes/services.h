// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_SERVICES_H
#define NMOS_INSTRUMENT_HOST_ROUTES_SERVICES_H

#include <chrono>
#include <string>

#include "http/manifest_fetcher.h"
#include "http/server.h"
#include "instrument/instrument.h"
#include "instrument/state_file.h"
#include "routes/change_permission.h"
#include "routes/client_log.h"

namespace nmos_instrument::host {

/// The objects that the routes use. They outlive the routes.
struct Services
{
    Instrument& instrument;
    ManifestFetcher& manifests;
    ClientLog& log;
    StateFile* state_file = nullptr; ///< null: nothing survives a restart
    ChangePermission permission;
    std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();
};

/// Answers when the change is in the state file, so that everything a client was told survives.
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
