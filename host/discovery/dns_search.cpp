// SPDX-License-Identifier: Apache-2.0

#include "discovery/dns_search.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>

#include "discovery/dns_browse.h"
#include "discovery/dns_channel.h"
#include "text/quoted_text.h"
#include "text/word_list.h"

namespace nmos_instrument::host {
namespace {

using Clock = DnsSearch::Clock;
using std::chrono::seconds;

constexpr seconds longest_search{3};
constexpr std::size_t most_domains = 8;

/// However long or short the records live, we look again within these times.
constexpr seconds shortest_lifetime{10};
constexpr seconds longest_lifetime{3600};

/// If there was nothing, or no answer.
constexpr seconds time_to_next_try{60};

std::string without_final_dot(std::string domain)
{
    if (domain.ends_with('.'))
        domain.pop_back();
    return domain;
}

/// Without the root, which some systems name if there is no domain.
std::vector<std::string> usable_domains(const std::vector<std::string>& domains)
{
    std::vector<std::string> usable;
    for (const std::string& name : domains) {
        const std::string domain = without_final_dot(name);
        if (!domain.empty() && usable.size() < most_domains &&
            std::find(usable.begin(), usable.end(), domain) == usable.end())
            usable.push_back(domain);
    }
    return usable;
}

} // namespace

class DnsSearch::Findings
{
public:
    Findings(std::string domain, Log log, std::string server)
        : log_(std::move(log)), domain_(std::move(domain)), server_(std::move(server))
    {}

    std::vector<AdvertisedRegistry> search(const StopRequest& stop)
    {
        std::string trouble;
        try {
            trouble = look(stop);
        } catch (const std::runtime_error& error) {
            trouble = error.what();
            drop_old();
        }
        if (!stop.is_made())
            tell(trouble);
        const auto now = Clock::now();
        next_ = now + (known_.empty() ? time_to_next_try : longest_lifetime);
        std::vector<AdvertisedRegistry> found;
        for (const Known& known : known_) {
            found.push_back(known.registry);
            next_ = std::min(next_, known.end);
        }
        next_ = std::max(next_, now + shortest_lifetime);
        return found;
    }

    Clock::time_point next() const { return next_; }

private:
    struct Known
    {
        AdvertisedRegistry registry;
        Clock::time_point end; ///< it is not used any more then
    };

    /// What went wrong, for people.
    std::string look(const StopRequest& stop)
    {
        DnsChannel channel(server_);
        domains_ = usable_domains(domain_.empty() ? channel.search_domains()
                                                  : std::vector<std::string>{domain_});
        if (domains_.empty()) {
            known_.clear();
            return "there is no search domain";
        }
        DnsBrowse browse(channel, domains_);
        browse.run(Clock::now() + longest_search, stop);
        if (browse.trouble().empty())
            known_.clear();
        drop_old();
        const std::vector<DnsBrowse::Found> found = browse.found();
        for (const DnsBrowse::Found& one : found)
            std::erase_if(known_, [&](const Known& known) {
                return known.registry.name == one.registry.name &&
                       known.registry.origin == one.registry.origin;
            });
        const auto now = Clock::now();
        for (const DnsBrowse::Found& one : found)
            known_.push_back({one.registry,
                              now + std::clamp(one.lifetime, shortest_lifetime, longest_lifetime)});
        tell_too_many(browse.too_many());
        return browse.trouble();
    }

    void drop_old()
    {
        const auto now = Clock::now();
        std::erase_if(known_, [now](const Known& known) { return known.end <= now; });
    }

    /// At info if it is news. That one trouble follows another is none.
    void tell(const std::string& trouble)
    {
        const std::string where = trouble.empty() ? word_list(domains_, printable) : "";
        const bool is_news = std::exchange(told_, where) != where;
        const auto level = is_news ? LogLevel::info : LogLevel::debug;
        if (trouble.empty())
            log_.formatted(level, "DNS-SD: looking for registries in {}", where);
        else
            log_.formatted(level, "DNS-SD: {}; until that changes, unicast DNS finds nothing new",
                           trouble);
    }

    void tell_too_many(std::size_t count)
    {
        if (std::exchange(too_many_, count) != count && count > 0)
            log_.warning("DNS-SD: there are more than {} registries; {} are not looked at",
                         most_instances, count);
    }

    const Log log_;
    const std::string domain_;
    const std::string server_;
    std::vector<std::string> domains_; ///< of the last search
    std::vector<Known> known_;
    Clock::time_point next_{};
    std::optional<std::string> told_; ///< where the log says that we look; empty: in trouble
    std::size_t too_many_ = 0;
};

DnsSearch::DnsSearch(std::string domain, Log log, std::string server)
    : findings_(std::make_unique<Findings>(std::move(domain), std::move(log), std::move(server)))
{}

DnsSearch::~DnsSearch() = default;

std::vector<AdvertisedRegistry> DnsSearch::search(const StopRequest& stop)
{
    return findings_->search(stop);
}

DnsSearch::Clock::time_point DnsSearch::next() const
{
    return findings_->next();
}

} // namespace nmos_instrument::host
