// SPDX-License-Identifier: Apache-2.0

#include <nmos_instrument_host/instrument.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <mutex>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "configuration/configuration.h"
#include "http/all_signals_blocked.h"
#include "http/error_response.h"
#include "http/interface_binding.h"
#include "instrument/instrument.h"
#include "instrument/replaced_file.h"
#include "instrument/restore_from.h"
#include "instrument/state_file.h"
#include "log/log.h"
#include "network/followed_address.h"
#include "network/network_interfaces.h"
#include "network/reach.h"
#include "node/address_follower.h"
#include "node/gate.h"
#include "node/listening.h"
#include "node/page.h"
#include "node/public_types.h"
#include "node/running_node.h"
#include "node/start_log.h"
#include "records/addresses.h"
#include "time/tai_clock.h"

namespace nmos_instrument_host {

namespace host = nmos_instrument::host;

namespace {

/// Nothing if there is no state file.
std::optional<host::ReplacedFile> open_state_file(const std::optional<std::string>& name)
{
    if (!name)
        return std::nullopt;
    try {
        return host::ReplacedFile(*name);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("state file " + *name + ": " + error.what());
    }
}

/// A reply that is given once: by whoever answers, or by its end if nobody has.
class LastingReply
{
public:
    explicit LastingReply(std::function<void(HttpAnswer)> reply) : reply_(std::move(reply)) {}

    ~LastingReply() { fail("nobody has answered the request"); }

    LastingReply(const LastingReply&) = delete;
    LastingReply& operator=(const LastingReply&) = delete;

    void give(host::HttpResponse response) noexcept
    {
        if (is_given_.exchange(true))
            return;
        try {
            call(host::answer_of(std::move(response)));
        } catch (const std::bad_alloc&) {
            call(without_body());
        }
    }

    /// A 500, without a body if there is no memory for one.
    void fail(const char* why) noexcept
    {
        if (is_given_.exchange(true))
            return;
        try {
            call(host::answer_of(host::error_response(500, "Internal error", why)));
        } catch (const std::bad_alloc&) {
            call(without_body());
        }
    }

private:
    static HttpAnswer without_body() noexcept
    {
        HttpAnswer answer;
        answer.status = 500;
        return answer;
    }

    void call(HttpAnswer answer) const noexcept
    {
        try {
            reply_(std::move(answer));
        } catch (...) {
            return; // it is the caller's own
        }
    }

    const std::function<void(HttpAnswer)> reply_;
    std::atomic<bool> is_given_{false};
};

} // namespace

class [[gnu::visibility("hidden")]] Instrument::Inside
{
public:
    Inside(const std::function<std::unique_ptr<host::Instrument>(const host::Log&)>& make,
           const Options& options, const Callbacks& callbacks);
    ~Inside()
    {
        tell("stop()", [this] { stop(); });
        log_.end(); // a thread that was left behind may still have it
    }

    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

    bool start(const std::function<bool()>& wait);
    bool stop();
    std::string url()
    {
        return host::base_url(instrument_->address());
    }
    void records(const std::function<void(Records&)>& use);
    void answer(const HttpRequest& request, std::function<void(HttpAnswer)> reply);

private:
    bool find_address(const host::AddressSource& source, const std::function<bool()>& wait);
    void be_at(const std::string& address, int port);
    void run(const std::optional<host::ReplacedFile>& file,
             std::optional<host::ListeningSocket> socket, const host::ListenAt& place);
    bool end();
    void tell_of_change() noexcept;
    template <class News>
    void tell(const char* whom, const News& news) const noexcept;

    const Options options_;
    const std::function<void()> resources_changed_;
    host::Log log_;
    const host::Page page_;
    const host::ServedAs served_;
    const std::unique_ptr<host::Instrument> instrument_;

    std::mutex lifecycle_; ///< of start() and stop()
    bool is_running_ = false;
    bool has_run_ = false;
    std::optional<host::FollowedAddress> followed_;
    std::string address_;

    // What hears of changes while it is there.
    std::optional<host::StateFile> state_file_;
    host::Gate to_state_file_;
    std::optional<host::RunningNode> node_;
    host::Gate to_node_;

    std::optional<host::InterfaceBinding> binding_;
    std::optional<host::AddressFollower> follower_;
};

Instrument::Inside::Inside(
    const std::function<std::unique_ptr<host::Instrument>(const host::Log&)>& make,
    const Options& options, const Callbacks& callbacks)
    : options_(options),
      resources_changed_(callbacks.resources_changed),
      log_(host::log_of(options, callbacks)),
      page_(options.page),
      served_(host::served_as(options, page_.routes())),
      instrument_(make(log_))
{
    instrument_->listen({
        .changed = [this] { tell_of_change(); },
        .scheduled =
            [this] {
                if (const auto inside = to_node_.pass())
                    node_->scheduled();
            },
    });
}

/// The change is made: whoever cannot be told keeps nobody from the answer, nor the others from the news.
void Instrument::Inside::tell_of_change() noexcept
{
    tell("the state file", [this] {
        if (const auto inside = to_state_file_.pass())
            state_file_->changed();
    });
    tell("the registration or the advertisement", [this] {
        if (const auto inside = to_node_.pass())
            node_->changed();
    });
    tell("resources_changed", [this] {
        if (resources_changed_)
            resources_changed_();
    });
}

template <class News>
void Instrument::Inside::tell(const char* whom, const News& news) const noexcept
{
    try {
        news();
    } catch (const std::exception& error) {
        log_.error("{} has thrown: {}", whom, error.what());
    } catch (...) {
        log_.error("{} has thrown an exception of unknown type", whom);
    }
}

bool Instrument::Inside::start(const std::function<bool()>& wait)
{
    const std::lock_guard lock(lifecycle_);
    if (is_running_)
        throw std::logic_error("the instrument runs already");
    const host::ServerSettings server = instrument_->configuration().server;
    const host::Reach reach = host::reach_of(server.listen, server.address);
    host::expect_interfaces(reach, host::network_interfaces());

    // Before the port: a state file in use is the better reason to give up.
    const std::optional<host::ReplacedFile> file = open_state_file(options_.state_file);
    std::optional<host::ListeningSocket> socket;
    if (options_.http_server)
        socket.emplace(host::listen(reach.listen, static_cast<std::uint16_t>(server.port),
                                    options_.first_free_port ? host::IfPortInUse::take_next_free_one
                                                             : host::IfPortInUse::give_up));
    followed_.emplace(reach.address, log_);
    if (!find_address(reach.address, wait))
        return false;
    be_at(address_, server.advertised_port.value_or(socket ? socket->port() : server.port));
    // Not before: `wait` may wait for a signal that is to end it.
    const host::AllSignalsBlocked inherited_by_threads;
    try {
        run(file, std::move(socket), reach.listen);
    } catch (...) {
        end();
        throw;
    }
    is_running_ = has_run_ = true;
    return true;
}

/// Waits until the interface has an address: what is named before could not be used, and would only
/// change. If no interface has one where any would do, it is 127.0.0.1 for now.
bool Instrument::Inside::find_address(const host::AddressSource& source,
                                      const std::function<bool()>& wait)
{
    address_.clear();
    for (;;) {
        followed_->look([this](const std::string& found) { address_ = found; });
        if (address_.empty() && source.interface.empty())
            address_ = "127.0.0.1";
        if (!address_.empty())
            return true;
        if (!wait)
            throw std::runtime_error(source.interface + " has no IPv4 address yet");
        if (!wait())
            return false;
    }
}

/// Before the first start nobody has seen another address: the versions stay.
void Instrument::Inside::be_at(const std::string& host_address, int port)
{
    if (has_run_)
        instrument_->move_to({host_address, port});
    else
        instrument_->begin_at({host_address, port});
}

void Instrument::Inside::run(const std::optional<host::ReplacedFile>& file,
                             std::optional<host::ListeningSocket> socket,
                             const host::ListenAt& place)
{
    host::StartedFrom from{options_.configuration_name, options_.state_file.value_or(""),
                           socket ? host::text_of(place, socket->port()) : ""};
    if (file) {
        // Later the records know more than the file: what is scheduled, and what has changed since.
        if (!has_run_)
            host::restore_from(*file, *instrument_,
                               options_.reset_state ? host::StateReset::yes : host::StateReset::no,
                               log_);
        state_file_.emplace(*file, *instrument_, log_);
        to_state_file_.open();
    }
    instrument_->set_up_hardware();
    if (socket)
        binding_.emplace(*socket, place.interface, log_);
    node_.emplace(served_, std::move(socket), *instrument_, state_file_ ? &*state_file_ : nullptr,
                  log_);
    to_node_.open();
    // What came in before.
    node_->scheduled();
    node_->changed();
    follower_.emplace(
        *std::move(followed_), binding_,
        [this](const std::string& address) {
            if (const auto inside = to_node_.pass())
                node_->move_to(address);
        },
        log_);
    from.connection_limit = node_->connection_limit();
    host::log_start(log_, *instrument_, from);
    host::log_reach(log_, options_.http_server ? std::optional(place) : std::nullopt, *instrument_);
}

bool Instrument::Inside::stop()
{
    const std::lock_guard lock(lifecycle_);
    if (!is_running_)
        return true;
    is_running_ = false;
    return end();
}

/// True if all changes are saved.
bool Instrument::Inside::end()
{
    follower_.reset();
    if (node_)
        node_->leave();
    instrument_->end_hardware(); // while there is somebody to answer those who wait for it
    to_node_.close();
    node_.reset();
    binding_.reset();
    to_state_file_.close(); // callers of records() may still change something
    const bool is_saved = !state_file_ || state_file_->finish();
    state_file_.reset();
    return is_saved;
}

void Instrument::Inside::records(const std::function<void(Records&)>& use)
{
    instrument_->change_records([&](host::Records& inside) {
        Records records{inside.node, inside.connections, inside.settings};
        use(records);
    });
}

void Instrument::Inside::answer(const HttpRequest& request, std::function<void(HttpAnswer)> reply)
{
    const auto lasting = std::make_shared<LastingReply>(std::move(reply));
    const auto inside = to_node_.pass();
    if (!inside) {
        lasting->give(host::error_response(503, "The instrument does not run", ""));
        return;
    }
    try {
        host::HttpRequest asked = host::request_of(request);
        node_->handle(
            asked, [lasting](host::HttpResponse response) { lasting->give(std::move(response)); });
    } catch (const std::exception& error) {
        log_.error("a request was not answered as it should be: {}", error.what());
        lasting->fail(error.what());
    }
}

namespace {

host::Configuration read_configuration(const std::string& text, const Options& options)
{
    host::expect_usable(options);
    try {
        return host::parse_configuration(text, options.configuration_name.empty()
                                                   ? "configuration"
                                                   : options.configuration_name);
    } catch (const host::ConfigurationRefused& error) {
        throw std::invalid_argument(error.what());
    }
}

host::ApplyConnection apply_connection_of(const Callbacks& callbacks)
{
    if (!callbacks.apply_connection)
        return {};
    return [apply = callbacks.apply_connection](const host::ConnectionKey& key,
                                                const CONNECTION_HALF_IS05_ST& active) {
        const auto side =
            key.side == host::Side::sender ? Connection::Side::sender : Connection::Side::receiver;
        Outcome outcome = apply({side, static_cast<int>(key.index)}, active);
        return host::ApplyOutcome{outcome.is_applied, std::move(outcome.reason)};
    };
}

std::unique_ptr<host::Instrument> make_instrument(host::FilledRecords filled,
                                                  const host::NodeAddress& address,
                                                  const Options& options,
                                                  const Callbacks& callbacks, const host::Log& log)
{
    const host::AllSignalsBlocked inherited_by_threads;
    return std::make_unique<host::Instrument>(
        std::move(filled), address, host::tai_now, log,
        host::HardwareOptions{apply_connection_of(callbacks), options.apply_deadline},
        std::chrono::steady_clock::now,
        options.as_is ? host::Presentation::as_is : host::Presentation::conforming);
}

} // namespace

Instrument::Instrument(const std::string& configuration, const Options& options,
                       const Callbacks& callbacks)
{
    const host::Configuration read = read_configuration(configuration, options);
    const host::NodeAddress address = host::configured_address(read.server);
    inside_ = std::make_unique<Inside>(
        [&](const host::Log& log) {
            return make_instrument(host::filled_records(read, address, host::tai_now()), address,
                                   options, callbacks, log);
        },
        options, callbacks);
}

Instrument::Instrument(const FilledRecords& records, const std::string& configuration,
                       const Options& options, const Callbacks& callbacks)
{
    const host::Configuration rest = read_configuration(configuration, options);
    const host::NodeAddress address = host::configured_address(rest.server);
    const host::StreamSelection selection{records.selection.receiver_filter,
                                          records.selection.audio_group_filter,
                                          records.selection.sender_filter};
    inside_ = std::make_unique<Inside>(
        [&](const host::Log& log) {
            return make_instrument(host::adopt_records(records.node, records.connections,
                                                       records.settings, selection, rest, address,
                                                       host::tai_now()),
                                   address, options, callbacks, log);
        },
        options, callbacks);
}

Instrument::~Instrument() = default;

bool Instrument::start(const std::function<bool()>& wait)
{
    return inside_->start(wait);
}

bool Instrument::stop()
{
    return inside_->stop();
}

std::string Instrument::url() const
{
    return inside_->url();
}

void Instrument::records(const std::function<void(Records& records)>& use)
{
    inside_->records(use);
}

void Instrument::answer(const HttpRequest& request, std::function<void(HttpAnswer)> reply)
{
    inside_->answer(request, std::move(reply));
}

} // namespace nmos_instrument_host
