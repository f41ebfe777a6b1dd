// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_SERVICES_H
#define NMOS_INSTRUMENT_HOST_ROUTES_SERVICES_H

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "advertisement/advertisement.h"
#include "events/event_feed.h"
#include "http/manifest_fetcher.h"
#include "http/server.h"
#include "instrument/instrument.h"
#include "instrument/state_file.h"
#include "registration/registration_status.h"
#include "routes/change_permission.h"
#include "routes/client_log.h"
#include "routes/recent_refusals.h"
#include "routes/refusal.h"
#include "routes/request_counts.h"

namespace nmos_instrument::host {

/// The objects that the routes use. They outlive the routes.
struct Services
{
    Instrument& instrument;
    ManifestFetcher& manifests;
    ClientLog& log;
    RequestCounts& counts;
    RecentRefusals& refusals;
    StateFile* state_file = nullptr; ///< null: nothing survives a restart
    ChangePermission permission;
    std::function<RegistrationStatus()> registration{};   ///< empty: there is none
    std::function<AdvertisementStatus()> advertisement{}; ///< likewise
    EventFeed* events = nullptr;                          ///< null: there are none
    std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();
};

/// Why nothing may be changed now, whatever a client asks for; nothing if changes are possible.
std::optional<Refusal> refusal_of_change(const Services& services);

/// Answers when the change is in the state file, so that everything a client was told survives. If
/// it cannot be saved, the answer is a 500 that says so.
void reply_when_saved(const Services& services, const HttpReply& reply, HttpResponse response);

} // namespace nmos_instrument::host

#endif
