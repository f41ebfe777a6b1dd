// SPDX-License-Identifier: Apache-2.0

#include "events/event_feed.h"

#include <string_view>
#include <utility>

namespace nmos_instrument::host {
namespace {

/// The lines of an event's data. A line break in a JSON text is nothing but a blank, so it does not
/// matter that a client gets all of them as "\n".
void add_data(std::string& event, std::string_view text)
{
    for (;;) {
        const std::size_t size = text.find_first_of("\r\n");
        event += text.substr(0, size);
        if (size == std::string_view::npos)
            return;
        event += "\ndata: ";
        text.remove_prefix(size + 1);
    }
}

} // namespace

class EventFeed::Watcher : public HttpStream
{
public:
    Watcher(EventFeed& feed, const std::string& client) : feed_(feed), client_(client) {}
    ~Watcher() override
    {
        const std::lock_guard lock(feed_.mutex_);
        feed_.places_.give_back(client_);
    }

    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    std::optional<std::string> next() override { return feed_.news_since(seen_); }

private:
    EventFeed& feed_;
    const std::string client_;
    std::optional<std::uint64_t> seen_; ///< the latest revision that was told
};

EventFeed::EventFeed(const std::vector<WatchedPath>& paths, Read read,
                     std::function<TimePoint()> clock)
    : read_(std::move(read)), clock_(std::move(clock))
{
    for (const WatchedPath& path : paths)
        entries_.emplace_back().watched = path;
}

std::shared_ptr<HttpStream> EventFeed::watch(const std::string& client)
{
    const std::lock_guard lock(mutex_);
    if (!places_.take(client))
        return nullptr;
    try {
        return std::make_shared<Watcher>(*this, client);
    } catch (...) {
        places_.give_back(client);
        throw;
    }
}

std::string EventFeed::news_since(std::optional<std::uint64_t>& seen)
{
    // The reads are quick, and whoever waits for them here would have to do them otherwise.
    const std::lock_guard lock(mutex_);
    read_what_is_due();
    if (seen && *seen == revision_)
        return {};
    // A browser that has lost the connection comes again after a second.
    std::string event = seen ? "event: changes\ndata: " : "retry: 1000\nevent: all\ndata: ";
    char before = '{';
    for (const Entry& entry : entries_) {
        if (entry.revision <= seen.value_or(0))
            continue;
        event += before;
        event += '"' + entry.watched.path + "\":";
        add_data(event, entry.text);
        before = ',';
    }
    event += before == '{' ? "{}\n\n" : "}\n\n";
    seen = revision_;
    return event;
}

void EventFeed::read_what_is_due()
{
    const TimePoint now = clock_();
    for (Entry& entry : entries_) {
        if (now < entry.due)
            continue;
        std::optional<std::string> text = read_(entry.watched.path);
        entry.due = now + entry.watched.interval;
        if (!text || (entry.revision != 0 && *text == entry.text))
            continue;
        entry.text = std::move(*text);
        entry.revision = ++revision_;
    }
}

} // namespace nmos_instrument::host
