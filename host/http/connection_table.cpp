// SPDX-License-Identifier: Apache-2.0

#include "http/connection_table.h"

#include <algorithm>
#include <utility>

#include <poll.h>
#include <sys/socket.h>

namespace nmos_instrument::host {

namespace {

void give_up(PendingAnswer& answer) noexcept
{
    answer.give_up(503, "The server is stopping");
}

// Whether the client has ended its side and everything has been read.
bool has_ended(int socket)
{
    char next;
    return recv(socket, &next, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
}

// Whether the system accepts nothing more for the client, who does not read.
bool is_stalled(int socket)
{
    pollfd poll_socket{socket, POLLOUT, 0};
    return poll(&poll_socket, 1, 0) == 0;
}

} // namespace

Connection& ConnectionTable::add(int socket, std::string peer, const ClientKey& client,
                                 const EventLoop& loop)
{
    const std::lock_guard lock(mutex_);
    ClientShare& share = shares_[client];
    ++share.connections;
    try {
        connections_.emplace_back(socket, std::move(peer), client, share, loop);
    } catch (...) {
        leave(client, share);
        throw;
    }
    Connection& connection = connections_.back();
    connection.place = std::prev(connections_.end());
    if (watch_sleeps_)
        watch_.notify_all();
    return connection;
}

void ConnectionTable::remove(Connection& connection)
{
    std::list<Connection> removed;
    const std::lock_guard lock(mutex_);
    removed.splice(removed.begin(), connections_, connection.place);
    if (connection.is_ending) {
        --connection.share.ending;
        --ending_;
    }
    leave(connection.client, connection.share);
    if (connections_.empty())
        emptied_.notify_all();
}

void ConnectionTable::leave(const ClientKey& client, ClientShare& share)
{
    if (--share.connections == 0)
        shares_.erase(client);
}

std::size_t ConnectionTable::count_of(const ClientKey& client)
{
    const std::lock_guard lock(mutex_);
    const auto share = shares_.find(client);
    return share == shares_.end() ? 0 : share->second.staying();
}

void ConnectionTable::make_room(std::size_t most)
{
    const std::lock_guard lock(mutex_);
    if (connections_.size() - ending_ < most)
        return;
    const auto greediest =
        std::max_element(shares_.begin(), shares_.end(), [](const auto& left, const auto& right) {
            return left.second.staying() < right.second.staying();
        });
    Connection* chosen = nullptr;
    for (Connection& connection : connections_) {
        if (connection.client != greediest->first || connection.is_ending)
            continue;
        if (chosen == nullptr)
            chosen = &connection;
        if (!connection.has_request) {
            chosen = &connection;
            break;
        }
    }
    if (chosen == nullptr)
        return;
    chosen->is_ending = true;
    ++chosen->share.ending;
    ++ending_;
    // Its server thread notices and closes the connection; not while it is suspended.
    shutdown(chosen->socket, SHUT_RDWR);
    if (chosen->stream)
        chosen->stream->end_soon();
}

void ConnectionTable::end_overdue()
{
    const Connection::Clock::time_point now = Connection::Clock::now();
    const std::lock_guard lock(mutex_);
    for (Connection& connection : connections_) {
        if (connection.deadline.load(std::memory_order_relaxed) <= now) {
            // Its server thread notices and closes the connection.
            shutdown(connection.socket, SHUT_RDWR);
            connection.clear_deadline();
        } else if (connection.has_answered.exchange(false) && has_ended(connection.socket)) {
            // libmicrohttpd is told only once about an end that comes with the request, and
            // overlooks it while it reads the request. This tells it again.
            shutdown(connection.socket, SHUT_RD);
        }
    }
}

void ConnectionTable::end_idle()
{
    const std::lock_guard lock(mutex_);
    for (const Connection& connection : connections_)
        if (!connection.has_request)
            shutdown(connection.socket, SHUT_RD);
}

bool ConnectionTable::wait_until_empty(std::chrono::milliseconds at_most)
{
    std::unique_lock lock(mutex_);
    return emptied_.wait_for(lock, at_most, [this] { return connections_.empty(); });
}

void ConnectionTable::expect_late_answer(Connection& connection,
                                         std::shared_ptr<PendingAnswer> answer)
{
    const std::lock_guard lock(mutex_);
    if (gives_up_)
        give_up(*answer);
    else
        connection.late_answer = std::move(answer);
}

void ConnectionTable::forget_late_answer(Connection& connection)
{
    const std::lock_guard lock(mutex_);
    connection.late_answer.reset();
}

void ConnectionTable::give_up_late_answers()
{
    while (const std::shared_ptr<PendingAnswer> answer = take_late_answer())
        give_up(*answer);
}

// From here on none is expected any more.
std::shared_ptr<PendingAnswer> ConnectionTable::take_late_answer()
{
    const std::lock_guard lock(mutex_);
    gives_up_ = true;
    for (Connection& connection : connections_)
        if (connection.late_answer)
            return std::move(connection.late_answer);
    return nullptr;
}

void ConnectionTable::expect_stream(Connection& connection, std::shared_ptr<StreamedAnswer> stream)
{
    const std::lock_guard lock(mutex_);
    if (ends_streams_)
        stream->end_soon();
    else
        connection.stream = std::move(stream);
}

void ConnectionTable::forget_stream(Connection& connection)
{
    const std::lock_guard lock(mutex_);
    connection.stream.reset();
}

void ConnectionTable::ask_streams()
{
    const std::lock_guard lock(mutex_);
    for (const Connection& connection : connections_)
        if (connection.stream)
            connection.stream->ask_again();
}

void ConnectionTable::end_streams()
{
    const std::lock_guard lock(mutex_);
    ends_streams_ = true;
    for (const Connection& connection : connections_) {
        if (!connection.stream)
            continue;
        if (is_stalled(connection.socket))
            shutdown(connection.socket, SHUT_RDWR); // it would wait for its piece to be read
        connection.stream->end_soon();
    }
}

bool ConnectionTable::wait_for_next_look(std::chrono::milliseconds interval)
{
    std::unique_lock lock(mutex_);
    watch_sleeps_ = true;
    watch_.wait(lock, [this] { return watch_closed_ || !connections_.empty(); });
    watch_sleeps_ = false;
    watch_.wait_for(lock, interval, [this] { return watch_closed_; });
    return !watch_closed_;
}

void ConnectionTable::close_watch()
{
    const std::lock_guard lock(mutex_);
    watch_closed_ = true;
    watch_.notify_all();
}

} // namespace nmos_instrument::host
