// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_RUNNING_NODE_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_RUNNING_NODE_H

#include <optional>
#include <string>

#include "advertisement/advertisement.h"
#include "commands/serve_options.h"
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
#include "routes/client_log.h"
#include "routes/recent_refusals.h"
#include "routes/request_counts.h"
#include "routes/router.h"
#include "routes/services.h"

namespace nmos_instrument::program {

/// An instrument on the network: served, registered and advertised.
class RunningNode
{
public:
    /// Everything runs when it returns. `instrument` and `state_file`, which may be null, must
    /// outlive it.
    RunningNode(const ServeOptions& options, host::ListeningSocket socket,
                host::Instrument& instrument, host::StateFile* state_file, const host::Log& log);

    /// When it has ended, which takes up to 2 s for the registry, nothing changes the instrument any more.
    ~RunningNode();

    RunningNode(const RunningNode&) = delete;
    RunningNode& operator=(const RunningNode&) = delete;

    /// The machine has another address.
    void move_to(const std::string& address);

    unsigned connection_limit() const { return server_->connection_limit(); }

private:
    void listen_to_instrument();
    host::Services services();
    std::optional<std::string> read(const std::string& path) const;

    host::Instrument& instrument_;
    host::StateFile* const state_file_;
    const ServeOptions& options_;
    const host::Log log_;
    host::ClientLog client_log_;
    host::RequestCounts request_counts_;
    host::RecentRefusals recent_refusals_;
    host::HttpClient http_client_;
    host::Advertisement advertisement_;
    std::optional<host::RegistrySource> registries_;
    std::optional<host::RegistrationClient> registration_;
    host::ActivationThread activations_;
    host::ManifestFetcher manifests_;
    host::EventFeed events_;
    std::optional<host::Router> router_;
    std::optional<host::HttpServer>
        server_; ///< last, so that it stops before what it uses goes away
};

} // namespace nmos_instrument::program

#endif
