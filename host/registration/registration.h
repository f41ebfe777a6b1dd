// SPDX-License-Identifier: Apache-2.0
//
// The registration of one node: does what registration_table.h says, and knows what the registry
// knows. It has no socket, thread or clock: its surroundings give it answers and time.
//
//     Registration registration(instrument, surroundings, log);
//     registration.start();
//     registration.found(registries);       // the answer to surroundings.search()
//     ...                                   // answers come as surroundings.send() was told
//     if (now >= registration.next_due())
//         registration.look();

#ifndef NMOS_INSTRUMENT_HOST_REGISTRATION_REGISTRATION_H
#define NMOS_INSTRUMENT_HOST_REGISTRATION_REGISTRATION_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "discovery/registry.h"
#include "http/client.h"
#include "instrument/instrument.h"
#include "log/log.h"
#include "registration/registration_status.h"
#include "registration/registration_table.h"
#include "registration/registry_choice.h"
#include "registration/resource_book.h"
#include "registration/retry_pause.h"

namespace nmos_instrument::host {

class Registration
{
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    struct Surroundings
    {
        std::function<TimePoint()> now;
        std::function<double()> random; ///< from 0 to 1, another one for each call

        /// Sends a request and calls back with its answer, later and once, but not after the
        /// registration is gone.
        std::function<void(ClientRequest, HttpClient::Receive)> send;

        /// Looks for registries; found() is called with what there is.
        std::function<void()> search;

        /// Called with true when the node is registered, with false when there is no registry.
        std::function<void(bool)> has_registry;

        std::string ca_file; ///< see ClientRequest
    };

    Registration(Instrument& instrument, Surroundings surroundings, Log log);
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    void start() { happen(RegistrationEvent::start); }

    /// Takes the node out of the registry. It may take stop_limit; has_ended() is true then.
    void stop();
    bool has_ended() const { return state_ == RegistrationState::stopped; }

    /// The registries that there are now: after a search, or when they have changed.
    void found(std::vector<Registry> registries);

    /// Resources may have changed.
    void changed();

    /// Does what is due. Call it at next_due() or later, or at any time.
    void look();
    std::optional<TimePoint> next_due() const;

    /// After one of the calls above has thrown: begins again, after a pause. It needs no memory.
    void begin_again() noexcept;

    RegistrationStatus status() const;

    static constexpr std::chrono::milliseconds stop_limit{1'800};

    /// IS-04 v1.2, Behaviour: Registration, Heartbeating. It is the time limit of a heartbeat too, so
    /// that the next registry hears from the node before it forgets it.
    static constexpr std::chrono::seconds heartbeat_interval{5};

private:
    static constexpr std::size_t node_position = 0; ///< among the resources
    static constexpr const char* resource_path = "/resource";

    /// Of registries: DNS-SD may find new ones for ever. More than it finds at once, so that those of
    /// one round are remembered in the next.
    static constexpr std::size_t most_remembered = 1'024;

    using Use = std::function<void(const ClientAnswer&)>;

    void happen(RegistrationEvent event);
    void act(RegistrationAction action);
    void enter(RegistrationState next);

    // The actions.
    void search();
    void next_registry();
    bool try_next();
    void pause();
    void post_node();
    void warn_of_loopback();
    void clear();
    void register_resources();
    void resume();
    void book_is_of_registry();
    void note_used();
    void look_for_changes();
    void post_next();
    void note_changes();
    void settle();
    void check();
    void heartbeat();
    void leave();
    void delete_next();
    void delete_node();
    void finish();

    // The answers.
    void node_posted(const ClientAnswer& answer, const std::string& text);
    void node_deleted(const ClientAnswer& answer);
    void resource_posted(std::size_t position, const std::string& text, const ClientAnswer& answer);
    void resource_refused(std::size_t position, const std::string& text,
                          const ClientAnswer& answer);
    void heartbeat_answered(const RegistrationStatus::Heartbeat& beat, const ClientAnswer& answer);
    void registry_failed(const std::string& what, const ClientAnswer& answer);

    void exchange(const char* method, const std::string& path, std::optional<std::string> body,
                  Use use);
    void send(const char* method, const std::string& path, std::optional<std::string> body,
              const Use& use);
    void forget_requests() noexcept;
    std::string path_of(std::size_t position) const;
    std::string name_of(std::size_t position) const;
    TimePoint now() const { return surroundings_.now(); }

    Instrument& instrument_;
    const Surroundings surroundings_;
    const Log log_;
    const std::vector<NodeResource>& resources_;

    RegistrationState state_ = RegistrationState::stopped;
    RegistryChoice choice_;
    RetryPause retry_pause_;
    Registry registry_;          ///< the one in use or being tried
    std::string last_registry_;  ///< the URL of the last one in which the node was registered
    std::string book_of_;        ///< the URL of the one of which the book knows
    std::set<std::string> used_; ///< the URLs of all that were told something
    bool awaits_search_ = false; ///< found() has to come
    ResourceBook book_;

    // Requests that run. An answer to one that was sent before the number changed comes too late.
    std::uint64_t conversation_ = 0;
    bool posting_ = false;       ///< or deleting: one at a time
    bool heart_beating_ = false; ///< beside that

    // When something is due.
    std::optional<TimePoint> pause_until_;
    std::optional<TimePoint> heartbeat_due_;
    std::optional<TimePoint> heartbeat_was_due_; ///< the one that has to be sent now
    std::optional<TimePoint> last_heartbeat_;    ///< sent, whatever the answer
    std::optional<TimePoint> changes_due_;
    std::optional<TimePoint> hurry_at_;
    std::optional<TimePoint> end_at_;

    // For the log, which has one line for each change.
    TimePoint began_{};                       ///< to register
    std::optional<TimePoint> lost_since_;     ///< the node was registered before
    std::map<std::string, std::string> told_; ///< by URL: the last failure that was logged
    bool told_of_no_registry_ = false;
    bool told_of_loopback_ = false;
    RegistrationStatus status_; ///< what cannot be seen from the members above
};

} // namespace nmos_instrument::host

#endif
