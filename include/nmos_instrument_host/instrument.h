// SPDX-License-Identifier: Apache-2.0
//
// A measuring instrument as a complete NMOS node: IS-04 Node API, IS-05 Connection API with staging,
// scheduled activation and SDP files of strangers, registration, advertisement, a state that survives
// restarts. You bring the hardware, behind callbacks. Start here.
//
// ```cpp
// nmos_instrument_host::Callbacks callbacks;
// callbacks.apply_connection = [&](const auto& connection, const CONNECTION_HALF_IS05_ST& active) {
//     return tune(connection.index, active) ? nmos_instrument_host::applied()
//                                           : nmos_instrument_host::refused("no signal path is free");
// };
// nmos_instrument_host::Instrument instrument(R"({"server": {"listen": "eth0"}})", {}, callbacks);
// instrument.start();
// ```
//
// What holds for all of it:
//
// Threads     All operations may be called from any thread. start() and stop() wait for each other.
//             The library starts threads of its own, in which all signals are blocked; callbacks run
//             on them, or on a thread of yours that has called an operation.
// Process     No signal handler, no exit, no global state: several instruments may live in one process.
//             start() raises the soft limit of open files as far as the hard limit allows, since each
//             client needs one.
// Exceptions  std::exception with a text for people. Nothing has changed then.

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_H

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "nmos_instrument_host/export.h"
#include "nmos_instrument_host/http.h"
#include "nmos_instrument_host/records.h"

namespace nmos_instrument_host {

/// One sender or receiver, by its position in the records (node_state.h says what is where).
struct Connection
{
    enum class Side
    {
        sender,
        receiver
    };

    Side side;
    int index; ///< 0 to 5 of a sender, 0 to 23 of a receiver
};

/// What came of it that a connection was to be applied to the hardware.
struct Outcome
{
    bool is_applied = true;
    std::string reason; ///< why it was refused; the controller reads it
};

inline Outcome applied()
{
    return {};
}

inline Outcome refused(std::string reason)
{
    return {false, std::move(reason)};
}

enum class LogLevel
{
    debug, ///< each request too
    info,
    warning,
    error,
    off
};

/// What the instrument asks of you. All may be empty. None may call start() or stop(), nor destroy the
/// instrument.
struct Callbacks
{
    /// The hardware is to do what `active` says: send or receive (`master_enable`), from where, to
    /// where, on which legs. Addresses are resolved; "null" is none. It may take its time: it runs on a
    /// thread of its own, one call after the other, without any lock. What it refuses or throws changes
    /// nothing, and the controller is told the reason with a 500. Until it returns the connection is
    /// locked (423).
    ///
    /// If it takes longer than Options::apply_deadline, the controller is told so with a 500 and nothing
    /// changes. If it then says after all that it has applied the connection, it is called again with
    /// what is still active, so that hardware and records agree.
    ///
    /// From start() on it is called for every sender and receiver that is active, as the configuration or
    /// the restored state has it; each is locked until then, and what it refuses is logged.
    ///
    /// stop() waits for a call that is under way, until its deadline. What the callback touches, the
    /// instrument too, must last as long as a call does that hangs beyond that. After another start()
    /// there may be a second call beside it.
    std::function<Outcome(const Connection& connection, const CONNECTION_HALF_IS05_ST& active)>
        apply_connection;

    /// Something that the node shows has changed: connections by controllers, records by you. Called
    /// without a lock, from the thread that made the change; it must not wait. What it throws is logged.
    std::function<void()> resources_changed;

    /// A line for a log, without line break: ASCII, but for what comes from files and from other
    /// programs. Called by one thread at a time, and whoever logs waits for it: it must not wait, nor
    /// call the instrument. What it throws is swallowed.
    std::function<void(LogLevel level, std::string_view line)> log;
};

/// Which parts run besides the APIs, and how. Registration and advertisement are in the configuration
/// ("registration", "advertisement").
struct Options
{
    /// The file in which connections, versions and counters survive a restart; without it they do not.
    /// A controller is answered when its change is in the file. One process at a time can use it.
    std::optional<std::string> state_file;
    bool reset_state = false; ///< the first start() begins anew; the file becomes <file>.previous

    /// False: nothing listens, and your server asks Instrument::answer.
    bool http_server = true;
    bool first_free_port =
        false; ///< if "port" of the configuration is in use, take the next free one
    unsigned connections_per_address = 2048; ///< of one client; 0: no limit
    std::vector<PageFile> page;              ///< files for browsers

    bool read_only = false; ///< nobody may change anything
    std::vector<std::string>
        changes_from; ///< who may: "192.0.2.0/24", "192.0.2.7"; empty: everybody

    /// From where manifests of other senders are fetched (PUT of a receiver's target, IS-04), besides
    /// the networks of the interfaces.
    std::vector<std::string> manifests_from;

    /// Serve the texts of nmos_instrument.h byte for byte, also where IS-04, IS-05 or a standard for SDP
    /// files asks for something else.
    bool as_is = false;

    LogLevel log_level = LogLevel::info; ///< the least important lines that `log` gets

    /// How long apply_connection may take, 1 ms to 1 h. Intentional: there is no value for "for ever",
    /// since the controller waits for the answer.
    std::chrono::milliseconds apply_deadline{5'000};

    std::string configuration_name; ///< what messages call the configuration, such as its file
};

class NMOS_INSTRUMENT_HOST_EXPORT Instrument
{
public:
    /// An instrument as `configuration` describes it: JSON, with or without comments, in which every key
    /// has a default; "{}" is an instrument too. `nmos-instrument serve --print-config` explains each
    /// key. Throws std::invalid_argument with a line for each key that cannot be used, or for what
    /// cannot be used in `options`.
    explicit Instrument(const std::string& configuration, const Options& options = {},
                        const Callbacks& callbacks = {});

    /// An instrument made from your records. What they say takes the place of what the configuration
    /// says. Throws std::invalid_argument also for what the records say that cannot be shown.
    Instrument(const FilledRecords& records, const std::string& configuration,
               const Options& options = {}, const Callbacks& callbacks = {});

    /// As stop().
    ~Instrument();

    Instrument(const Instrument&) = delete;
    Instrument& operator=(const Instrument&) = delete;

    /// Runs everything: when it returns the APIs are served. The first time it restores the state before;
    /// called again after stop() it goes on with what is known. Returns true.
    ///
    /// If the configuration names an interface that has no IPv4 address yet, `wait` is called until it
    /// has one: it should wait a second, and may give up by false, which start() then returns. Without
    /// `wait` that is an exception.
    ///
    /// Throws std::system_error if it cannot listen (std::errc::address_in_use: another program has the
    /// port), std::runtime_error if the state file or an interface cannot be used, std::logic_error if
    /// it runs already.
    bool start(const std::function<bool()>& wait = {});

    /// Leaves the registry, finishes running requests, saves the state and stops all threads: at most
    /// some seconds, and what a call of apply_connection has left until its deadline. Returns false if the
    /// last changes could not be saved; the log says why. Does nothing if it does not run.
    bool stop();

    /// Where others reach it, "http://192.0.2.10:3000/". Before start() as far as the configuration says.
    std::string url() const;

    /// Calls `use` with the records, under the lock. You may read everything, and change what the
    /// instrument is: labels, clocks, formats, addresses, connections that the hardware has lost. What
    /// reads differently afterwards gets its new version and counter, is posted to the registry, saved
    /// and told to whoever watches; you need not do more.
    ///
    /// Versions, SDP sessions, subscriptions and the activations of staged halves stay the host's, whatever
    /// you write there. A change of ids, counts, hrefs or endpoints, of the staged half of a connection
    /// that is locked, or of something that check_records finds or that cannot be shown, throws
    /// std::invalid_argument with the findings. If that or `use` throws, the records are as before.
    ///
    /// It works while the instrument does not run, too; of connections, the state that the first start()
    /// restores comes before what you have changed.
    ///
    /// `use` must be quick, and must call no operation of the instrument: all requests wait for it. The
    /// records that it gets are gone afterwards.
    void records(const std::function<void(Records& records)>& use);

    /// Answers a request that your own server has received, as the server of the library would; while it
    /// does not run, with a 503. `/events` is a 404 here, since its answer never ends. `reply` is called
    /// once, at once or later, from any thread, and before stop() returns. It must not wait, nor call
    /// start() or stop(); what it throws is swallowed.
    void answer(const HttpRequest& request, std::function<void(HttpAnswer)> reply);

private:
    class Inside;
    std::unique_ptr<Inside> inside_;
};

} // namespace nmos_instrument_host

#endif
