// SPDX-License-Identifier: Apache-2.0

#include "http/manifest_fetcher.h"

#include <condition_variable>
#include <exception>
#include <list>
#include <mutex>
#include <utility>

#include "http/client_places.h"
#include "http/easy_handle.h"
#include "http/manifest_transfer.h"

namespace nmos_instrument::host {

using Result = FetchedManifest::Result;

FetchedManifest failed_because(const char* why) noexcept
{
    FetchedManifest failed;
    set_reason(failed.why, why);
    return failed;
}

/// Those that have not ended yet: who asks for them, and who waits for them. When the fetcher ends,
/// it answers all that are left; what becomes of their transfers then is nobody's concern.
class ManifestFetcher::Fetches
{
public:
    struct Fetch
    {
        std::string client;
        Receive receive;
    };
    using Position = std::list<Fetch>::iterator;

    explicit Fetches(ManifestHosts hosts)
        : hosts_(std::make_shared<const ManifestHosts>(std::move(hosts)))
    {}

    const std::shared_ptr<NameLookups>& lookups() const { return lookups_; }

    std::shared_ptr<const ManifestHosts> hosts()
    {
        const std::lock_guard lock(mutex_);
        return hosts_;
    }

    void allow(ManifestHosts hosts)
    {
        auto allowed = std::make_shared<const ManifestHosts>(std::move(hosts));
        const std::lock_guard lock(mutex_);
        hosts_.swap(allowed);
    }

    /// Moves the one fetch of `one` to those that run, if there is a place for it.
    bool take(std::list<Fetch>& one)
    {
        const std::lock_guard lock(mutex_);
        if (!places_.take(one.front().client))
            return false;
        running_.splice(running_.end(), one);
        return true;
    }

    /// Nothing if the fetcher has ended.
    void finish(Position fetch, FetchedManifest manifest) noexcept
    {
        std::list<Fetch> finished;
        {
            const std::lock_guard lock(mutex_);
            if (ends_)
                return;
            finished.splice(finished.end(), running_, fetch);
            places_.give_back(fetch->client);
            ++answering_;
        }
        answer(finished.front(), std::move(manifest));
        finished.clear();
        const std::lock_guard lock(mutex_);
        --answering_;
        answered_.notify_all();
    }

    void end() noexcept
    {
        std::list<Fetch> left;
        {
            std::unique_lock lock(mutex_);
            ends_ = true;
            left.swap(running_);
            answered_.wait(lock, [this] { return answering_ == 0; });
        }
        for (Fetch& fetch : left)
            answer(fetch, failed_because("the instrument is stopping"));
    }

    static void answer(Fetch& fetch, FetchedManifest manifest) noexcept
    {
        try {
            fetch.receive(std::move(manifest));
        } catch (...) {
            // The request is answered all the same: what was to be called goes away with it.
        }
    }

private:
    const std::shared_ptr<NameLookups> lookups_ =
        std::make_shared<NameLookups>(limit_for_one_client, limit);
    std::mutex mutex_;
    std::condition_variable answered_;
    std::shared_ptr<const ManifestHosts> hosts_;
    std::list<Fetch> running_;
    ClientPlaces places_{limit_for_one_client, limit}; ///< of those that run
    int answering_ = 0;                                ///< how many are being answered
    bool ends_ = false;
};

ManifestFetcher::ManifestFetcher(HttpClient& client, ManifestHosts hosts)
    : client_(client), fetches_(std::make_shared<Fetches>(std::move(hosts)))
{}

ManifestFetcher::~ManifestFetcher()
{
    fetches_->end();
}

void ManifestFetcher::fetch(const std::string& url, const std::string& client, Receive receive)
{
    std::list<Fetches::Fetch> added;
    added.push_back({client, std::move(receive)});
    const Fetches::Position fetch = added.begin();
    if (!fetches_->take(added)) {
        Fetches::answer(*fetch, {Result::too_many, "", "too many manifests are being fetched"});
        return;
    }
    const auto finish = [fetches = fetches_, fetch](FetchedManifest manifest) {
        fetches->finish(fetch, std::move(manifest));
    };
    try {
        client_.start(std::make_unique<ManifestTransfer>(url, client, fetches_->hosts(),
                                                         fetches_->lookups(), finish));
    } catch (const std::exception& error) {
        finish(failed_because(error.what()));
    }
}

void ManifestFetcher::allow(ManifestHosts hosts)
{
    fetches_->allow(std::move(hosts));
}

} // namespace nmos_instrument::host
