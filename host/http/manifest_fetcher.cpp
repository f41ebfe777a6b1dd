// SPDX-License-Identifier: Apache-2.0

#include "http/manifest_fetcher.h"

#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include <curl/curl.h>

#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

constexpr std::size_t size_limit = 1024UL * 1024;
constexpr long time_limit_ms = 2000;
constexpr long redirect_limit = 2;

/// How many requests may run at once; each costs a socket.
constexpr std::size_t fetch_limit = 64;

struct Fetch
{
    std::string url;
    ManifestFetcher::Receive receive;
    CURL* handle = nullptr;
    std::string content;
    bool too_long = false;
};

std::size_t take_bytes(char* bytes, std::size_t size, std::size_t count, void* user)
{
    auto& fetch = *static_cast<Fetch*>(user);
    const std::size_t length = size * count;
    if (fetch.content.size() + length > size_limit) {
        fetch.too_long = true;
        return 0; // ends the transfer
    }
    fetch.content.append(bytes, length);
    return length;
}

/// libcurl needs this once in a process, before any thread starts.
void initialise_curl()
{
    static const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (result != CURLE_OK)
        throw std::runtime_error(curl_easy_strerror(result));
}

} // namespace

class ManifestFetcher::Worker
{
public:
    Worker()
    {
        initialise_curl();
        multi_ = curl_multi_init();
        if (multi_ == nullptr)
            throw std::runtime_error("libcurl: no multi handle");
        thread_ = std::thread([this] { run(); });
    }

    ~Worker()
    {
        {
            const std::lock_guard lock(mutex_);
            ends_ = true;
        }
        curl_multi_wakeup(multi_);
        thread_.join();
        curl_multi_cleanup(multi_);
    }

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void add(std::unique_ptr<Fetch> fetch)
    {
        std::unique_lock lock(mutex_);
        if (ends_ || waiting_.size() + running_count_ >= fetch_limit) {
            lock.unlock();
            fetch->receive({false, "", "too many manifests are being fetched"});
            return;
        }
        waiting_.push_back(std::move(fetch));
        lock.unlock();
        curl_multi_wakeup(multi_);
    }

private:
    void run()
    {
        while (take_waiting()) {
            int running = 0;
            curl_multi_perform(multi_, &running);
            finish_done();
            curl_multi_poll(multi_, nullptr, 0, 1000, nullptr);
        }
        while (!running_.empty())
            finish(running_.begin()->first, "the instrument is stopping");
    }

    bool take_waiting()
    {
        std::vector<std::unique_ptr<Fetch>> taken;
        bool ends = false;
        {
            const std::lock_guard lock(mutex_);
            taken = std::exchange(waiting_, {});
            running_count_ += taken.size();
            ends = ends_;
        }
        for (std::unique_ptr<Fetch>& fetch : taken)
            start(std::move(fetch));
        return !ends;
    }

    void start(std::unique_ptr<Fetch> fetch)
    {
        CURL* const handle = curl_easy_init();
        Fetch* const user = fetch.get();
        fetch->handle = handle;
        running_[handle] = std::move(fetch);
        if (handle == nullptr) {
            finish(handle, "libcurl: no handle");
            return;
        }
        curl_easy_setopt(handle, CURLOPT_URL, user->url.c_str());
        curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
        curl_easy_setopt(handle, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
        curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
        curl_easy_setopt(handle, CURLOPT_MAXREDIRS, redirect_limit);
        curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, time_limit_ms);
        curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
        // Media networks are local: a proxy from the environment would not reach them.
        curl_easy_setopt(handle, CURLOPT_PROXY, "");
        curl_easy_setopt(handle, CURLOPT_USERAGENT, "nmos-instrument");
        curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, take_bytes);
        curl_easy_setopt(handle, CURLOPT_WRITEDATA, user);
        curl_multi_add_handle(multi_, handle);
    }

    void finish_done()
    {
        int left = 0;
        while (const CURLMsg* const message = curl_multi_info_read(multi_, &left)) {
            if (message->msg != CURLMSG_DONE)
                continue;
            CURL* const handle = message->easy_handle;
            const CURLcode result = message->data.result;
            long status = 0;
            curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);
            const Fetch& fetch = *running_.at(handle);
            std::string why;
            if (fetch.too_long)
                why = "longer than " + std::to_string(size_limit) + " bytes";
            else if (result != CURLE_OK)
                why = curl_easy_strerror(result);
            else if (status != 200)
                why = "the server answered " + std::to_string(status);
            finish(handle, why);
        }
    }

    void finish(CURL* handle, const std::string& why)
    {
        const auto entry = running_.find(handle);
        const std::unique_ptr<Fetch> fetch = std::move(entry->second);
        running_.erase(entry);
        if (handle != nullptr) {
            curl_multi_remove_handle(multi_, handle);
            curl_easy_cleanup(handle);
        }
        {
            const std::lock_guard lock(mutex_);
            --running_count_;
        }
        if (why.empty())
            fetch->receive({true, std::move(fetch->content), ""});
        else
            fetch->receive({false, "", in_quotes(fetch->url) + ": " + why});
    }

    CURLM* multi_ = nullptr;
    std::map<CURL*, std::unique_ptr<Fetch>> running_; ///< used by the thread only
    std::mutex mutex_;
    std::vector<std::unique_ptr<Fetch>> waiting_;
    std::size_t running_count_ = 0;
    bool ends_ = false;
    std::thread thread_;
};

ManifestFetcher::ManifestFetcher() : worker_(std::make_unique<Worker>()) {}

ManifestFetcher::~ManifestFetcher() = default;

void ManifestFetcher::fetch(const std::string& url, Receive receive)
{
    auto fetch = std::make_unique<Fetch>();
    fetch->url = url;
    fetch->receive = std::move(receive);
    worker_->add(std::move(fetch));
}

} // namespace nmos_instrument::host
