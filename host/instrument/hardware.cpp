// SPDX-License-Identifier: Apache-2.0

#include "instrument/hardware.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <utility>

#include <fmt/format.h>

#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

std::string in_seconds(std::chrono::milliseconds time)
{
    return fmt::format("{:g} s", std::chrono::duration<double>(time).count());
}

/// Texts of at most 15 bytes need no memory.
ApplyOutcome refusal_without_memory() noexcept
{
    return {false, "out of memory"};
}

/// Clients and the log see the reason.
ApplyOutcome refusal(const std::string& reason)
{
    return {false, reason.empty() ? "no reason given" : printable(reason)};
}

ApplyOutcome outcome_of(const ApplyConnection& apply, const ConnectionKey& key,
                        const CONNECTION_HALF_IS05_ST& active) noexcept
{
    try {
        try {
            ApplyOutcome outcome = apply(key, active);
            return outcome.applied ? ApplyOutcome() : refusal(outcome.reason);
        } catch (const std::bad_alloc&) {
            return refusal_without_memory();
        } catch (const std::exception& error) {
            return refusal(error.what());
        } catch (...) {
            return refusal("unknown reason");
        }
    } catch (const std::bad_alloc&) {
        return refusal_without_memory();
    }
}

} // namespace

/// Where both threads meet.
struct Hardware::Shared
{
    explicit Shared(ApplyConnection function) : apply(std::move(function)) {}

    enum class Call
    {
        none,
        under_way,
        returned
    };

    const ApplyConnection apply;
    std::mutex mutex;
    std::condition_variable changed;
    Queue queue;
    bool ends = false;

    Call call = Call::none;
    ConnectionKey key;                ///< of the call; nobody changes it while that is under way
    CONNECTION_HALF_IS05_ST active{}; ///< likewise
    ApplyOutcome outcome;             ///< when it has returned
    bool no_more_calls = false;
};

Hardware::Hardware(const HardwareOptions& options)
    : deadline_(options.deadline),
      no_answer_{false, "the hardware has not answered within " + in_seconds(deadline_)},
      busy_{false, "the hardware is busy: a call of it takes longer than " + in_seconds(deadline_)},
      shared_(std::make_shared<Shared>(options.apply)),
      caller_([shared = shared_] { make_calls(shared); })
{
    try {
        thread_ = std::thread([this] { run(); });
    } catch (...) {
        end();
        throw;
    }
}

Hardware::~Hardware()
{
    end();
}

void Hardware::add(std::unique_ptr<HardwareRequest> request)
{
    {
        const std::lock_guard lock(shared_->mutex);
        shared_->queue.push_back(std::move(request));
    }
    shared_->changed.notify_all();
}

void Hardware::end() noexcept
{
    {
        const std::lock_guard lock(shared_->mutex);
        shared_->ends = true;
    }
    shared_->changed.notify_all();
    if (thread_.joinable())
        thread_.join();
    if (!caller_.joinable())
        return;
    bool hangs = false;
    {
        const std::lock_guard lock(shared_->mutex);
        shared_->no_more_calls = true;
        hangs = shared_->call == Shared::Call::under_way;
    }
    shared_->changed.notify_all();
    if (hangs)
        caller_.detach();
    else
        caller_.join();
}

/// The thread that may be left behind: it touches nothing but `shared`.
void Hardware::make_calls(const std::shared_ptr<Shared>& shared) noexcept
{
    std::unique_lock lock(shared->mutex);
    for (;;) {
        shared->changed.wait(
            lock, [&] { return shared->call == Shared::Call::under_way || shared->no_more_calls; });
        if (shared->call != Shared::Call::under_way)
            return;
        lock.unlock();
        ApplyOutcome outcome = outcome_of(shared->apply, shared->key, shared->active);
        lock.lock();
        shared->outcome = std::move(outcome);
        shared->call = Shared::Call::returned;
        shared->changed.notify_all();
    }
}

void Hardware::run() noexcept
{
    Shared& shared = *shared_;
    for (;;) {
        Queue next;
        bool ends = false;
        {
            std::unique_lock lock(shared.mutex);
            shared.changed.wait(lock, [&] { return !shared.queue.empty() || shared.ends; });
            if (shared.queue.empty())
                return;
            next.splice(next.end(), shared.queue, shared.queue.begin());
            ends = shared.ends;
        }
        if (ends)
            refuse(next, ends_);
        else
            perform(*next.front());
    }
}

void Hardware::perform(HardwareRequest& request) noexcept
{
    if (const std::optional<ApplyOutcome> outcome = call(request.key(), request.active())) {
        if (!request.answered(*outcome))
            go_back(request);
        return;
    }
    request.not_answered(no_answer_);
    const std::optional<ApplyOutcome> late = wait_for_late_answer();
    if (!late)
        return;
    if (late->applied)
        go_back(request);
    else
        request.settled(ApplyOutcome());
}

void Hardware::go_back(HardwareRequest& request) noexcept
{
    std::optional<ApplyOutcome> outcome = call(request.key(), request.in_force());
    if (!outcome)
        outcome = wait_for_late_answer();
    if (outcome)
        request.settled(*outcome);
}

/// Nothing if it has not returned in time.
std::optional<ApplyOutcome> Hardware::call(const ConnectionKey& key,
                                           const CONNECTION_HALF_IS05_ST& active) noexcept
{
    Shared& shared = *shared_;
    std::unique_lock lock(shared.mutex);
    shared.key = key;
    shared.active = active;
    shared.call = Shared::Call::under_way;
    shared.changed.notify_all();
    if (!shared.changed.wait_until(lock, Clock::now() + deadline_,
                                   [&] { return shared.call == Shared::Call::returned; }))
        return std::nullopt;
    shared.call = Shared::Call::none;
    return std::move(shared.outcome);
}

/// Meanwhile nobody else waits for the hardware. Nothing if the instrument ends first.
std::optional<ApplyOutcome> Hardware::wait_for_late_answer() noexcept
{
    Shared& shared = *shared_;
    for (;;) {
        Queue waiting;
        {
            std::unique_lock lock(shared.mutex);
            shared.changed.wait(lock, [&] {
                return shared.call == Shared::Call::returned || shared.ends ||
                       !shared.queue.empty();
            });
            if (shared.call == Shared::Call::returned) {
                shared.call = Shared::Call::none;
                return std::move(shared.outcome);
            }
            if (shared.ends)
                return std::nullopt;
            waiting.swap(shared.queue);
        }
        refuse(waiting, busy_);
    }
}

void Hardware::refuse(const Queue& requests, const ApplyOutcome& outcome) noexcept
{
    for (const auto& request : requests)
        request->answered(outcome);
}

} // namespace nmos_instrument::host
