// SPDX-License-Identifier: Apache-2.0

#include "http/manifest_fetcher.h"

#include <chrono>
#include <exception>
#include <list>
#include <mutex>
#include <new>
#include <stdexcept>
#include <thread>
#include <utility>

#include <curl/curl.h>

#include "http/client_places.h"
#include "http/manifest_transfer.h"

namespace nmos_instrument::host {
namespace {

using Result = FetchedManifest::Result;

/// When libcurl cannot even wait, for lack of memory.
constexpr std::chrono::milliseconds pause_after_failure{10};

struct Fetch
{
    std::string url;
    std::string client;
    ManifestFetcher::Receive receive;
    std::unique_ptr<ManifestTransfer> transfer; ///< when it has begun
};

/// Fetches wait and run in lists, since to move from one to the other needs no memory.
using Fetches = std::list<Fetch>;

/// Needs no memory if it has to.
FetchedManifest failed_because(const char* why) noexcept
{
    FetchedManifest failed;
    try {
        failed.why = why;
    } catch (const std::bad_alloc&) {
        failed.why.clear(); // the log then has no reason
    }
    return failed;
}

/// libcurl needs this once in a process, before any thread starts.
void initialise_curl()
{
    static const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (result != CURLE_OK)
        throw std::runtime_error(curl_easy_strerror(result));
}

CURLM* new_multi_handle()
{
    initialise_curl();
    CURLM* const multi = curl_multi_init();
    if (multi == nullptr)
        throw std::runtime_error("libcurl: no multi handle");
    return multi;
}

} // namespace

class ManifestFetcher::Worker
{
public:
    explicit Worker(ManifestHosts hosts)
        : hosts_(std::move(hosts)), multi_(new_multi_handle()), thread_([this] { run(); })
    {}

    ~Worker()
    {
        {
            const std::lock_guard lock(mutex_);
            ends_ = true;
        }
        curl_multi_wakeup(multi_.get());
        thread_.join();
    }

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void add(Fetch fetch)
    {
        Fetches added;
        added.push_back(std::move(fetch));
        bool ends = false;
        {
            const std::lock_guard lock(mutex_);
            ends = ends_;
            if (!ends && places_.take(added.front().client))
                waiting_.splice(waiting_.end(), added);
        }
        if (added.empty())
            curl_multi_wakeup(multi_.get());
        else if (ends)
            added.front().receive(failed_because("the instrument is stopping"));
        else
            added.front().receive({Result::too_many, "", "too many manifests are being fetched"});
    }

private:
    void run() noexcept
    {
        while (take_waiting()) {
            // or_give_up() lets nothing out:
            // cppcheck-suppress throwInNoexceptFunction
            start_new();
            int running = 0;
            const CURLMcode performed = curl_multi_perform(multi_.get(), &running);
            if (performed != CURLM_OK)
                finish_all(curl_multi_strerror(performed));
            finish_done();
            if (curl_multi_poll(multi_.get(), nullptr, 0, 1000, nullptr) != CURLM_OK)
                std::this_thread::sleep_for(pause_after_failure);
        }
        finish_all("the instrument is stopping");
    }

    void finish_all(const char* why) noexcept
    {
        while (!running_.empty())
            finish(running_.begin(), failed_because(why));
    }

    /// False if this is the end.
    bool take_waiting()
    {
        const std::lock_guard lock(mutex_);
        running_.splice(running_.end(), waiting_);
        return !ends_;
    }

    void start_new()
    {
        for (auto fetch = running_.begin(); fetch != running_.end();) {
            const auto next = std::next(fetch);
            if (fetch->transfer == nullptr)
                or_give_up(fetch, [&] { start(*fetch); });
            fetch = next;
        }
    }

    void start(Fetch& fetch)
    {
        auto transfer =
            std::make_unique<ManifestTransfer>(fetch.url, fetch.client, hosts_, lookups_);
        const CURLMcode added = curl_multi_add_handle(multi_.get(), transfer->handle());
        if (added != CURLM_OK)
            throw std::runtime_error(curl_multi_strerror(added));
        fetch.transfer = std::move(transfer);
    }

    void finish_done()
    {
        int left = 0;
        while (const CURLMsg* const message = curl_multi_info_read(multi_.get(), &left)) {
            if (message->msg != CURLMSG_DONE)
                continue;
            const CURLcode result = message->data.result;
            const auto fetch = running_with(message->easy_handle);
            or_give_up(fetch, [&] {
                ManifestTransfer& transfer = *fetch->transfer;
                FetchedManifest manifest;
                manifest.why = transfer.failure(result);
                if (transfer.too_many_lookups())
                    manifest.result = Result::too_many;
                else if (manifest.why.empty())
                    manifest = {Result::fetched, std::move(transfer.content()), ""};
                finish(fetch, std::move(manifest));
            });
        }
    }

    Fetches::iterator running_with(const CURL* handle)
    {
        auto fetch = running_.begin();
        while (fetch->transfer == nullptr || fetch->transfer->handle() != handle)
            ++fetch;
        return fetch;
    }

    /// Does one step of a fetch; if it is not possible, for lack of memory above all, this fetch is
    /// over but the others go on.
    template <class Step>
    void or_give_up(Fetches::iterator fetch, const Step& step) noexcept
    {
        try {
            step();
        } catch (const std::exception& error) {
            finish(fetch, failed_because(error.what()));
        }
    }

    void finish(Fetches::iterator fetch, FetchedManifest manifest) noexcept
    {
        Fetches finished;
        finished.splice(finished.end(), running_, fetch);
        if (fetch->transfer != nullptr)
            curl_multi_remove_handle(multi_.get(), fetch->transfer->handle());
        fetch->transfer.reset();
        {
            const std::lock_guard lock(mutex_);
            places_.give_back(fetch->client);
        }
        try {
            fetch->receive(std::move(manifest));
        } catch (...) {
            // The request is answered all the same: what was to be called goes away with it.
        }
    }

    struct CleanUp
    {
        void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
    };

    const ManifestHosts hosts_;
    const std::unique_ptr<CURLM, CleanUp> multi_;
    NameLookups lookups_{limit_for_one_client, limit}; ///< used by the thread only
    Fetches running_;                                  ///< likewise
    std::mutex mutex_;
    Fetches waiting_;
    ClientPlaces places_{limit_for_one_client, limit}; ///< of those that wait or run
    bool ends_ = false;
    std::thread thread_; ///< the last member, since it uses the others
};

ManifestFetcher::ManifestFetcher(ManifestHosts hosts)
    : worker_(std::make_unique<Worker>(std::move(hosts)))
{}

ManifestFetcher::~ManifestFetcher() = default;

void ManifestFetcher::fetch(const std::string& url, const std::string& client, Receive receive)
{
    worker_->add({url, client, std::move(receive), nullptr});
}

} // namespace nmos_instrument::host
