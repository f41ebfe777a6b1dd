// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_CONNECTION_TABLE_H
#define NMOS_INSTRUMENT_HOST_HTTP_CONNECTION_TABLE_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "http/client_address.h"
#include "http/event_loop.h"
#include "http/exchange.h"
#include "http/framing.h"
#include "http/memory_budget.h"
#include "http/pending_answer.h"
#include "http/streamed_answer.h"

namespace nmos_instrument::host {

/// What the connections of one client hold together.
struct ClientShare
{
    MemoryBudget memory; ///< of their request bodies and answers

    // Under the table's lock:
    std::size_t connections = 0;
    std::size_t ending = 0; ///< how many of them end to make room for others

    std::size_t staying() const { return connections - ending; }
};

/// A client's connection. It belongs to its server thread, except where a comment says otherwise.
struct Connection
{
    using Clock = std::chrono::steady_clock;

    Connection(int its_socket, std::string its_peer, const ClientKey& its_client,
               ClientShare& its_share, const EventLoop& its_loop)
        : socket(its_socket),
          peer(std::move(its_peer)),
          client(its_client),
          share(its_share),
          loop(its_loop)
    {}

    void set_deadline(Clock::duration from_now)
    {
        deadline.store(Clock::now() + from_now, std::memory_order_relaxed);
    }

    void clear_deadline() { deadline.store(Clock::time_point::max(), std::memory_order_relaxed); }

    const int socket;
    const std::string peer; ///< "192.0.2.1:50123"
    const ClientKey client;
    ClientShare& share;
    const EventLoop& loop; ///< of its server thread

    ArrivedTarget target; ///< of the request that is being read

    /// From the end of the headers until the answer has been sent.
    std::unique_ptr<Exchange> exchange;
    bool has_served = false; ///< a request before this one

    // For every thread:
    std::atomic<Clock::time_point> deadline{Clock::time_point::max()};
    std::atomic<bool> has_request{false};  ///< from the request line until the answer has been sent
    std::atomic<bool> has_answered{false}; ///< since the watchdog last looked

    // Under the table's lock:
    bool is_ending = false; ///< to make room for others
    std::shared_ptr<PendingAnswer> late_answer;
    std::shared_ptr<StreamedAnswer> stream;
    std::list<Connection>::iterator place;
};

/// All open connections, for the watchdog and for stop(), which end them from other threads.
class ConnectionTable
{
public:
    /// `client` is that in `peer`.
    Connection& add(int socket, std::string peer, const ClientKey& client, const EventLoop& loop);

    /// Call it before the socket is closed: its number may soon belong to another connection.
    void remove(Connection& connection);

    /// How many connections the client has; those that are ending do not count.
    std::size_t count_of(const ClientKey& client);

    /// If there are `most` connections or more, ends one of the client that has most of them: its
    /// oldest without a request, or else its oldest. So whoever comes finds room, however many
    /// connections somebody else holds.
    void make_room(std::size_t most);

    /// Ends the connections whose deadline has passed, and those whose client has finished sending
    /// and has received its answer.
    void end_overdue();

    /// Lets connections without a request read what has arrived, then end.
    void end_idle();

    /// Waits until the last connection is gone; false if it is not.
    bool wait_until_empty(std::chrono::milliseconds at_most);

    /// Notes an answer for give_up_late_answers(). If that has been called, gives it up at once.
    void expect_late_answer(Connection& connection, std::shared_ptr<PendingAnswer> answer);
    void forget_late_answer(Connection& connection);

    /// Answers 503 in place of every late answer, from now on too.
    void give_up_late_answers();

    /// Notes an answer for the two functions below. If end_streams() has been called, ends it at once.
    void expect_stream(Connection& connection, std::shared_ptr<StreamedAnswer> stream);
    void forget_stream(Connection& connection);

    /// Has every stream asked that had nothing to say.
    void ask_streams();

    /// Ends every stream, from now on too. One whose client does not read ends in the middle.
    void end_streams();

    /// Waits while there is no connection, then for `interval`; false after close_watch().
    bool wait_for_next_look(std::chrono::milliseconds interval);
    void close_watch();

private:
    void leave(const ClientKey& client, ClientShare& share);
    std::shared_ptr<PendingAnswer> take_late_answer();

    std::mutex mutex_;
    std::list<Connection> connections_; ///< the oldest first
    std::size_t ending_ = 0;            ///< how many of them end to make room for others
    std::map<ClientKey, ClientShare> shares_;
    std::condition_variable emptied_;
    std::condition_variable watch_;
    bool watch_sleeps_ = false; ///< until the next connection comes
    bool watch_closed_ = false;
    bool gives_up_ = false;
    bool ends_streams_ = false;
};

} // namespace nmos_instrument::host

#endif
