// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_DISCOVERY_AVAHI_SESSION_H
#define NMOS_INSTRUMENT_HOST_DISCOVERY_AVAHI_SESSION_H

#include <chrono>
#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <avahi-client/client.h>
#include <avahi-client/lookup.h>
#include <avahi-common/simple-watch.h>

#include "discovery/advertised_registry.h"
#include "discovery/stop_request.h"
#include "log/log.h"

namespace nmos_instrument::host {

/// Asks avahi-daemon for registries, from the connection to D-Bus until it is lost. One thread.
/// libavahi-client waits for the answers of D-Bus: any call may take 25 seconds if nobody answers.
class AvahiSession
{
public:
    /// Throws std::runtime_error if there is no D-Bus. The daemon may come later.
    AvahiSession(const StopRequest& stop, Log log);

    AvahiSession(const AvahiSession&) = delete;
    AvahiSession& operator=(const AvahiSession&) = delete;

    /// Waits until something happens, or it is asked to stop. Throws std::runtime_error if the
    /// connection is lost; there is nothing more to wait for then.
    void wait();

    bool has_daemon() const { return browser_ != nullptr; }

    /// No daemon has come for a minute. D-Bus tells when it comes, but that may have been lost when
    /// memory was short; a new session finds out.
    bool is_stale() const;

    /// What answered at once is known.
    bool has_looked() const;

    std::vector<AdvertisedRegistry> found() const;

private:
    struct FreePoll
    {
        void operator()(AvahiSimplePoll* poll) const { avahi_simple_poll_free(poll); }
    };

    struct FreeClient
    {
        void operator()(AvahiClient* client) const { avahi_client_free(client); }
    };

    /// An instance is resolved for each interface and protocol by which it was heard.
    using Key = std::tuple<AvahiIfIndex, AvahiProtocol, std::string, std::string>;

    struct Instance
    {
        AvahiSession& session;
        AvahiServiceResolver* resolver = nullptr;
        bool answered = false;
        std::optional<AdvertisedRegistry> registry{};
    };

    static void on_client(AvahiClient* client, AvahiClientState state, void* session);
    static void on_browser(AvahiServiceBrowser* browser, AvahiIfIndex interface,
                           AvahiProtocol protocol, AvahiBrowserEvent event, const char* name,
                           const char* type, const char* domain, AvahiLookupResultFlags flags,
                           void* session);
    static void on_resolver(AvahiServiceResolver* resolver, AvahiIfIndex interface,
                            AvahiProtocol protocol, AvahiResolverEvent event, const char* name,
                            const char* type, const char* domain, const char* host,
                            const AvahiAddress* address, std::uint16_t port, AvahiStringList* txt,
                            AvahiLookupResultFlags flags, void* instance);

    template <class Step>
    void keep_failure(const Step& step) noexcept;

    void browse(AvahiClient* client);
    void add(AvahiClient* client, const Key& key, const char* type);
    void remove(const Key& key);
    void forget_all();

    const Log log_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::unique_ptr<AvahiSimplePoll, FreePoll> poll_;
    std::exception_ptr failure_; ///< the first of a callback
    std::map<Key, Instance> instances_;
    AvahiServiceBrowser* browser_ = nullptr; ///< owned by the client
    bool all_for_now_ = false;
    bool too_many_ = false;
    std::unique_ptr<AvahiClient, FreeClient> client_; ///< the first that goes away
};

} // namespace nmos_instrument::host

#endif
