// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_NODE_RUNNING_NODE_H
#define NMOS_INSTRUMENT_HOST_NODE_RUNNING_NODE_H

#include <optional>
#include <string>
#include <vector>

#include "advertisement/advertisement.h"
#include "events/event_feed.h"
#include "http/client.h"
#include "http/listening_socket.h"
#include "http/manifest_fetcher.h"
#include "http/server.h"
#include "instrument/activation_thread.h"
#include "instrument/instrument.h"
#include "instrument/state_file.h"
#include "log/log.h"
#include "registration/registration_client.h"
#include "registration/registry_source.h"
#include "routes/change_permission.h"
#include "routes/client_log.h"
#include "routes/recent_refusals.h"
#include "routes/request_counts.h"
#include "routes/router.h"
#include "routes/services.h"

namespace nmos_instrument::host {

/// How a node is served.
struct ServedAs
{
    BrowserPage page;
    ChangePermission changes;
    std::vector<Ipv4Network> manifest_hosts;
    unsigned connections_per_address = HttpServerOptions().connections_per_address;
};

/// An instrument on the network: served, registered and advertised.
class RunningNode
{
public:
    /// Everything runs when it returns; without a socket there is no HTTP server. `instrument` and
    /// `state_file`, which may be null, must outlive it, as what `served` points to.
    RunningNode(const ServedAs& served, std::optional<ListeningSocket> socket,
                Instrument& instrument, StateFile* state_file, const Log& log);

    RunningNode(const RunningNode&) = delete;
    RunningNode& operator=(const RunningNode&) = delete;

    /// Leaves the registry, which takes up to 2 s. It is still served, so that whoever hears of it until
    /// then finds it.
    void leave();

    // What the instrument's listeners are to call.
    void changed();
    void scheduled() { activations_.look_again(); }

    /// The machine has another address.
    void move_to(const std::string& address);

    /// As a request that the HTTP server has received.
    void handle(HttpRequest& request, const HttpReply& reply) const
    {
        router_->handle(request, reply);
    }

    /// 0 without an HTTP server.
    unsigned connection_limit() const { return server_ ? server_->connection_limit() : 0; }

private:
    Services services();
    std::optional<std::string> read(const std::string& path) const;

    Instrument& instrument_;
    StateFile* const state_file_;
    const ServedAs served_;
    const Log log_;
    ClientLog client_log_;
    RequestCounts request_counts_;
    RecentRefusals recent_refusals_;
    HttpClient http_client_;
    Advertisement advertisement_;
    std::optional<RegistrySource> registries_;
    std::optional<RegistrationClient> registration_;
    ActivationThread activations_;
    std::optional<Router> router_; ///< before those that use it until they have ended
    ManifestFetcher manifests_;
    EventFeed events_;
    std::optional<HttpServer> server_; ///< last, so that it stops before what it uses goes away
};

} // namespace nmos_instrument::host

#endif
