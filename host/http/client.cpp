// SPDX-License-Identifier: Apache-2.0

#include "http/client.h"

#include <algorithm>
#include <exception>
#include <list>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

#include <curl/curl.h>

#include "http/all_signals_blocked.h"
#include "http/logged_exceptions.h"
#include "http/request_transfer.h"

namespace nmos_instrument::host {
namespace {

using std::chrono::milliseconds;

/// However little there is to do, the thread looks again then.
constexpr milliseconds longest_wait{1000};

/// When libcurl cannot even wait, for lack of memory.
constexpr milliseconds pause_after_failure{10};

constexpr const char* stopping = "the program is stopping";

struct Transfer
{
    std::unique_ptr<ClientTransfer> transfer;
    CURL* handle = nullptr; ///< when libcurl has it
};

// Both are made where they are asked for, and move to the thread without memory.
using Transfers = std::list<Transfer>;
using Tasks = std::multimap<HttpClient::TimePoint, HttpClient::Task>;

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

class HttpClient::Worker
{
public:
    explicit Worker(Log log) : log_(std::move(log)), multi_(new_multi_handle())
    {
        const AllSignalsBlocked inherited_by_thread;
        thread_ = std::thread([this] { run(); });
    }

    ~Worker()
    {
        {
            const std::lock_guard lock(mutex_);
            ends_ = true;
        }
        wake();
        thread_.join();
    }

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void add(std::unique_ptr<ClientTransfer> transfer)
    {
        Transfers added;
        added.push_back({std::move(transfer), nullptr});
        {
            const std::lock_guard lock(mutex_);
            if (ends_)
                throw std::runtime_error(stopping);
            waiting_.splice(waiting_.end(), added);
        }
        wake();
    }

    void add(TimePoint time, Task task)
    {
        Tasks added;
        added.emplace(time, std::move(task));
        {
            const std::lock_guard lock(mutex_);
            tasks_.merge(added);
        }
        wake();
    }

private:
    void run() noexcept
    {
        while (!is_end()) {
            run_due_tasks();
            // or_give_up() lets nothing out:
            // cppcheck-suppress throwInNoexceptFunction
            begin_waiting();
            int running = 0;
            const CURLMcode performed = curl_multi_perform(multi_.get(), &running);
            if (performed != CURLM_OK)
                give_up_all(curl_multi_strerror(performed));
            end_done();
            wait();
        }
        running_.splice(running_.end(), take_waiting()); // none is added any more
        give_up_all(stopping);
    }

    void wake() { curl_multi_wakeup(multi_.get()); }

    bool is_end()
    {
        const std::lock_guard lock(mutex_);
        return ends_;
    }

    /// Until something arrives or happens, or the next task is due.
    void wait()
    {
        const auto limit = static_cast<int>(until_next_task().count());
        if (curl_multi_poll(multi_.get(), nullptr, 0, limit, nullptr) != CURLM_OK)
            std::this_thread::sleep_for(pause_after_failure);
    }

    milliseconds until_next_task()
    {
        const std::lock_guard lock(mutex_);
        if (tasks_.empty())
            return longest_wait;
        const TimePoint now = std::chrono::steady_clock::now();
        const TimePoint next = std::max(tasks_.begin()->first, now);
        return std::min(std::chrono::ceil<milliseconds>(next - now), longest_wait);
    }

    /// Those that the tasks add wait until the next round, so that they do not keep the transfers
    /// waiting.
    void run_due_tasks()
    {
        Tasks due = take_due();
        for (; !due.empty(); due.erase(due.begin()))
            with_exceptions_logged(log_, due.begin()->second);
    }

    Tasks take_due()
    {
        const TimePoint now = std::chrono::steady_clock::now();
        Tasks due;
        const std::lock_guard lock(mutex_);
        while (!tasks_.empty() && tasks_.begin()->first <= now)
            due.insert(due.end(), tasks_.extract(tasks_.begin()));
        return due;
    }

    Transfers take_waiting()
    {
        Transfers waiting;
        const std::lock_guard lock(mutex_);
        waiting.swap(waiting_);
        return waiting;
    }

    void begin_waiting()
    {
        Transfers waiting = take_waiting();
        while (!waiting.empty()) {
            const auto first = waiting.begin();
            running_.splice(running_.end(), waiting, first);
            or_give_up(first, [&] { begin(*first); });
        }
    }

    void begin(Transfer& transfer)
    {
        CURL* const handle = transfer.transfer->begin();
        const CURLMcode added = curl_multi_add_handle(multi_.get(), handle);
        if (added != CURLM_OK)
            throw std::runtime_error(curl_multi_strerror(added));
        transfer.handle = handle;
    }

    void end_done()
    {
        int left = 0;
        while (const CURLMsg* const message = curl_multi_info_read(multi_.get(), &left)) {
            if (message->msg != CURLMSG_DONE)
                continue;
            const CURLcode result = message->data.result;
            const auto done = running_with(message->easy_handle);
            or_give_up(done, [&] {
                done->transfer->end(result);
                forget(done);
            });
        }
    }

    Transfers::iterator running_with(const CURL* handle)
    {
        return std::find_if(running_.begin(), running_.end(),
                            [=](const Transfer& one) { return one.handle == handle; });
    }

    /// Does one step of a transfer; if it is not possible, for lack of memory above all, this
    /// transfer is over but the others go on.
    template <class Step>
    void or_give_up(Transfers::iterator transfer, const Step& step) noexcept
    {
        try {
            step();
        } catch (const std::exception& error) {
            give_up(transfer, error.what());
        } catch (...) {
            give_up(transfer, "an exception of unknown type");
        }
    }

    void give_up(Transfers::iterator transfer, const char* why) noexcept
    {
        transfer->transfer->give_up(why);
        forget(transfer);
    }

    void give_up_all(const char* why) noexcept
    {
        while (!running_.empty())
            give_up(running_.begin(), why);
    }

    void forget(Transfers::iterator transfer) noexcept
    {
        if (transfer->handle != nullptr)
            curl_multi_remove_handle(multi_.get(), transfer->handle);
        running_.erase(transfer);
    }

    struct CleanUp
    {
        void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
    };

    const Log log_;
    const std::unique_ptr<CURLM, CleanUp> multi_;
    Transfers running_; ///< used by the thread only
    std::mutex mutex_;
    Transfers waiting_;
    Tasks tasks_;
    bool ends_ = false;
    std::thread thread_;
};

HttpClient::HttpClient(Log log) : log_(std::move(log)), worker_(std::make_unique<Worker>(log_)) {}

HttpClient::~HttpClient() = default;

void HttpClient::send(ClientRequest request, Receive receive)
{
    start(std::make_unique<RequestTransfer>(std::move(request), std::move(receive), log_));
}

void HttpClient::start(std::unique_ptr<ClientTransfer> transfer)
{
    worker_->add(std::move(transfer));
}

void HttpClient::run(Task task)
{
    run_at(std::chrono::steady_clock::now(), std::move(task));
}

void HttpClient::run_at(TimePoint time, Task task)
{
    worker_->add(time, std::move(task));
}

} // namespace nmos_instrument::host
