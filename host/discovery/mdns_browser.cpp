// SPDX-License-Identifier: Apache-2.0

#include "discovery/mdns_browser.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <future>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

#include "discovery/avahi_session.h"
#include "discovery/stop_request.h"

namespace nmos_instrument::host {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr seconds pause_after_loss{1};
constexpr seconds first_pause{10}; ///< without D-Bus; each later one takes twice as long
constexpr seconds longest_pause{60};
constexpr milliseconds patience_at_end{500};

/// What the browser and its thread both use.
struct Shared
{
    explicit Shared(MdnsBrowser::Changed on_change) : changed(std::move(on_change)) {}

    void publish(std::vector<AdvertisedRegistry> now_found, bool looked)
    {
        const std::lock_guard lock(mutex);
        if (now_found == found && looked == has_looked)
            return;
        found = std::move(now_found);
        has_looked = looked;
        if (changed)
            changed();
    }

    StopRequest stop;
    std::mutex mutex; ///< of what follows
    MdnsBrowser::Changed changed;
    std::vector<AdvertisedRegistry> found;
    bool has_looked = false;
};

/// What the thread does. Since the browser may have left it behind, it owns all that it touches, and
/// logs nothing when it was asked to stop.
class Follower
{
public:
    Follower(std::shared_ptr<Shared> shared, Log log)
        : shared_(std::move(shared)), log_(std::move(log))
    {}

    void run() noexcept
    {
        seconds pause = first_pause;
        while (!shared_->stop.is_made()) {
            const bool may_do_better = follow_session();
            if (may_do_better)
                pause = first_pause;
            shared_->stop.made_within(may_do_better ? pause_after_loss : pause);
            if (!may_do_better)
                pause = std::min(2 * pause, longest_pause);
        }
    }

private:
    /// Until it ends. True if another may soon do better: there is a bus, or all that lacked was
    /// memory.
    bool follow_session() noexcept
    {
        bool has_bus = false;
        try {
            AvahiSession session(shared_->stop, log_);
            has_bus = true;
            while (!shared_->stop.is_made() && !session.is_stale()) {
                if (session.has_daemon()) {
                    tell_that_it_runs();
                    shared_->publish(session.found(), session.has_looked());
                } else {
                    lose("it does not run");
                }
                session.wait();
            }
        } catch (const std::bad_alloc&) {
            lose("out of memory");
            return true;
        } catch (const std::exception& error) {
            lose(error.what());
        }
        return has_bus;
    }

    void tell_that_it_runs()
    {
        if (std::exchange(told_, Told::runs) == Told::runs || shared_->stop.is_made())
            return;
        log_.info("mDNS: avahi-daemon runs; registries are found by mDNS");
    }

    void lose(const char* why) noexcept
    {
        if (std::exchange(told_, Told::absent) != Told::absent && !shared_->stop.is_made())
            log_.info("mDNS: no avahi-daemon: {}; registries are not found by mDNS until it runs",
                      why);
        shared_->publish({}, true);
    }

    enum class Told
    {
        nothing,
        runs,
        absent
    };

    const std::shared_ptr<Shared> shared_;
    const Log log_;
    Told told_ = Told::nothing;
};

} // namespace

class MdnsBrowser::Thread
{
public:
    Thread(Changed changed, const Log& log) : shared_(std::make_shared<Shared>(std::move(changed)))
    {
        std::packaged_task<void()> follow([shared = shared_, log] { Follower(shared, log).run(); });
        ended_ = follow.get_future();
        thread_ = std::thread(std::move(follow));
    }

    ~Thread()
    {
        shared_->stop.make();
        {
            const std::lock_guard lock(shared_->mutex);
            shared_->changed = nullptr;
        }
        if (ended_.wait_for(patience_at_end) == std::future_status::ready)
            thread_.join();
        else
            thread_.detach();
    }

    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    std::vector<AdvertisedRegistry> found() const
    {
        const std::lock_guard lock(shared_->mutex);
        return shared_->found;
    }

    bool has_looked() const
    {
        const std::lock_guard lock(shared_->mutex);
        return shared_->has_looked;
    }

private:
    const std::shared_ptr<Shared> shared_;
    std::future<void> ended_;
    std::thread thread_;
};

MdnsBrowser::MdnsBrowser(Changed changed, Log log)
    : thread_(std::make_unique<Thread>(std::move(changed), std::move(log)))
{}

MdnsBrowser::~MdnsBrowser() = default;

std::vector<AdvertisedRegistry> MdnsBrowser::found() const
{
    return thread_->found();
}

bool MdnsBrowser::has_looked() const
{
    return thread_->has_looked();
}

} // namespace nmos_instrument::host
