// SPDX-License-Identifier: Apache-2.0
//
// What some paths say, and whoever watches them change: server-sent events, as in
// https://html.spec.whatwg.org/multipage/server-sent-events.html

#ifndef NMOS_INSTRUMENT_HOST_EVENTS_EVENT_FEED_H
#define NMOS_INSTRUMENT_HOST_EVENTS_EVENT_FEED_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "http/client_places.h"
#include "http/stream.h"

namespace nmos_instrument::host {

struct WatchedPath
{
    std::string path; ///< needs no escapes in JSON

    /// It is read at most this often, so a path that differs at each look is not sent more often.
    std::chrono::milliseconds interval{200};
};

/// One table of what the paths say, for all watchers. It has no thread and no timer: a watcher that is
/// asked for its next event has the table brought up to date first. So nothing is read while nobody
/// watches, and each path once however many do.
class EventFeed
{
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// What a path says, in JSON; nothing if it cannot be read now.
    using Read = std::function<std::optional<std::string>(const std::string& path)>;

    static constexpr std::size_t most_watchers = 128;
    static constexpr std::size_t most_of_one_client = 32; ///< so that none takes all places

    EventFeed(const std::vector<WatchedPath>& paths, Read read,
              std::function<TimePoint()> clock = std::chrono::steady_clock::now);

    /// The first event, `all`, is a JSON object from each path to what it says; each one after it,
    /// `changes`, has only the paths that read differently since. A watcher that is slow gets the
    /// latest text of each, and misses what was in between. A path that cannot be read is not in an
    /// event until it can.
    ///
    /// `client` is as client_of() says it. Null if there are as many watchers as may be. The feed must
    /// outlive the stream.
    std::shared_ptr<HttpStream> watch(const std::string& client);

private:
    class Watcher;

    struct Entry
    {
        WatchedPath watched;
        TimePoint due = TimePoint::min(); ///< when it may be read again
        std::string text;
        std::uint64_t revision = 0; ///< at which it had this text; 0: it has not been read yet
    };

    /// The event with everything that is newer than the revision `seen`, which it advances. Empty if
    /// there is none.
    std::string news_since(std::optional<std::uint64_t>& seen);
    void read_what_is_due();

    const Read read_;
    const std::function<TimePoint()> clock_;

    std::mutex mutex_; ///< of what follows
    ClientPlaces places_{most_of_one_client, most_watchers};
    std::vector<Entry> entries_;
    std::uint64_t revision_ = 0; ///< of the latest change of all
};

} // namespace nmos_instrument::host

#endif
