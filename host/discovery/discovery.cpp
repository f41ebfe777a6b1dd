// SPDX-License-Identifier: Apache-2.0

#include "discovery/discovery.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <set>
#include <thread>
#include <utility>

#include <fmt/format.h>

#include "discovery/dns_search.h"
#include "discovery/judge_advertisement.h"
#include "discovery/mdns_browser.h"
#include "discovery/merge_registries.h"
#include "discovery/stop_request.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

using Clock = std::chrono::steady_clock;

/// How long the first search waits for what mDNS finds: avahi-daemon listens for a second before it
/// takes silence for an answer.
constexpr std::chrono::milliseconds patience_for_mdns{1500};

/// What mDNS finds at about the same time is told together; and who announces and withdraws without
/// end does not keep the listener busy.
constexpr std::chrono::milliseconds time_to_gather{100};

/// After a failure for lack of memory.
constexpr std::chrono::seconds pause_after_failure{1};

} // namespace

class Discovery::Searches
{
public:
    Searches(DiscoveryOptions options, Log log, Found found)
        : log_(std::move(log)),
          development_(options.development_registries ? DevelopmentRegistries::used
                                                      : DevelopmentRegistries::left_out),
          tell_(std::move(found)),
          dns_(std::move(options.dns_domain), log_),
          mdns_([this] { mdns_has_changed(); }, log_),
          thread_([this] { run(); })
    {}

    ~Searches()
    {
        stop_.make();
        {
            // Nobody may be between the look at the request and the wait for it.
            const std::lock_guard lock(mutex_);
        }
        wake_up_.notify_one();
        thread_.join();
    }

    Searches(const Searches&) = delete;
    Searches& operator=(const Searches&) = delete;

    void ask()
    {
        {
            const std::lock_guard lock(mutex_);
            is_asked_ = true;
        }
        wake_up_.notify_one();
    }

private:
    void mdns_has_changed()
    {
        {
            const std::lock_guard lock(mutex_);
            mdns_changed_ = true;
        }
        wake_up_.notify_one();
    }

    void run() noexcept
    {
        const auto start = Clock::now();
        while (!stop_.is_made()) {
            try {
                look();
                wait_for_mdns(start + patience_for_mdns);
                deliver();
                wait();
            } catch (const std::exception& error) {
                log_.error("registries are not looked for: {}; it is tried again in {} s",
                           error.what(), pause_after_failure.count());
                stop_.made_within(pause_after_failure);
            }
        }
    }

    /// Asks the name servers if it is time for that.
    void look()
    {
        bool is_asked = false;
        {
            const std::lock_guard lock(mutex_);
            is_asked = std::exchange(is_asked_, false);
        }
        owes_an_answer_ |= is_asked;
        if (owes_an_answer_ || Clock::now() >= dns_.next())
            found_by_dns_ = dns_.search(stop_);
    }

    void wait_for_mdns(Clock::time_point end)
    {
        std::unique_lock lock(mutex_);
        while (!stop_.is_made() && Clock::now() < end) {
            mdns_changed_ = false;
            lock.unlock();
            const bool has_looked = mdns_.has_looked();
            lock.lock();
            if (has_looked)
                return;
            wake_up_.wait_until(lock, end, [this] { return stop_.is_made() || mdns_changed_; });
        }
    }

    /// Tells what is known, if it is news or if somebody has asked.
    void deliver()
    {
        std::vector<AdvertisedRegistry> advertised = found_by_dns_;
        for (AdvertisedRegistry& one : mdns_.found())
            advertised.push_back(std::move(one));
        std::vector<Registry> registries = merge_registries(usable(advertised));
        if (stop_.is_made() || (registries == known_ && !owes_an_answer_))
            return;
        tell_(registries);
        known_ = std::move(registries);
        owes_an_answer_ = false;
    }

    std::vector<Registry> usable(const std::vector<AdvertisedRegistry>& advertised)
    {
        std::vector<Registry> registries;
        std::set<std::string> left_out;
        for (const AdvertisedRegistry& one : advertised) {
            Judgement judgement = judge_advertisement(one, development_);
            if (judgement.registry)
                registries.push_back(std::move(*judgement.registry));
            else
                left_out.insert(fmt::format("{}: registry {} is left out: {}", one.origin,
                                            in_quotes(one.name), judgement.reason));
        }
        for (const std::string& line : left_out)
            if (!left_out_.contains(line))
                log_.debug("{}", printable(line));
        left_out_ = std::move(left_out);
        return registries;
    }

    void wait()
    {
        {
            std::unique_lock lock(mutex_);
            wake_up_.wait_until(lock, dns_.next(),
                                [this] { return stop_.is_made() || is_asked_ || mdns_changed_; });
            if (!mdns_changed_)
                return;
        }
        stop_.made_within(time_to_gather);
        const std::lock_guard lock(mutex_);
        mdns_changed_ = false;
    }

    const Log log_;
    const DevelopmentRegistries development_;
    const Found tell_;
    StopRequest stop_;

    std::mutex mutex_; ///< of the two that follow
    bool is_asked_ = true;
    bool mdns_changed_ = false;
    std::condition_variable wake_up_;

    // Used by the thread only, but for the browser.
    DnsSearch dns_;
    std::vector<AdvertisedRegistry> found_by_dns_;
    std::vector<Registry> known_;
    std::set<std::string> left_out_; ///< of the last judgement: what is in the log already
    bool owes_an_answer_ = false;
    MdnsBrowser mdns_;

    std::thread thread_; ///< the last member, since it uses the others
};

Discovery::Discovery(DiscoveryOptions options, Log log, Found found)
    : searches_(std::make_unique<Searches>(std::move(options), std::move(log), std::move(found)))
{}

Discovery::~Discovery() = default;

void Discovery::search()
{
    searches_->ask();
}

} // namespace nmos_instrument::host
