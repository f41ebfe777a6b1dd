// SPDX-License-Identifier: Apache-2.0

#include "held_hardware.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace nmos_instrument::host {
namespace {

constexpr std::chrono::seconds patience{20};

} // namespace

struct HeldHardware::State
{
    ApplyOutcome call(const ConnectionKey& key, const CONNECTION_HALF_IS05_ST& active)
    {
        Answer answer;
        {
            std::unique_lock lock(mutex);
            calls.push_back(
                {key, active.master_enable != 0, active.transport_params[0].destination_port});
            changed.notify_all();
            changed.wait(lock, [this] { return !answers.empty(); });
            answer = std::move(answers.front());
            answers.pop_front();
            ++returned;
            changed.notify_all();
        }
        return answer();
    }

    template <class Condition>
    bool becomes_true(const Condition& condition)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, patience, condition);
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Call> calls;
    std::deque<Answer> answers;
    std::size_t returned = 0;
};

HeldHardware::HeldHardware() : state_(std::make_shared<State>()) {}

HardwareOptions HeldHardware::options(std::chrono::milliseconds deadline) const
{
    return {[state = state_](const ConnectionKey& key, const CONNECTION_HALF_IS05_ST& active) {
                return state->call(key, active);
            },
            deadline};
}

void HeldHardware::answer(Answer answer)
{
    const std::lock_guard lock(state_->mutex);
    state_->answers.push_back(std::move(answer));
    state_->changed.notify_all();
}

void HeldHardware::apply()
{
    answer([] { return ApplyOutcome(); });
}

void HeldHardware::refuse(const char* reason)
{
    answer([reason] { return ApplyOutcome{false, reason}; });
}

bool HeldHardware::has_calls(std::size_t count) const
{
    return state_->becomes_true([&] { return state_->calls.size() >= count; });
}

bool HeldHardware::has_returned(std::size_t count) const
{
    return state_->becomes_true([&] { return state_->returned >= count; });
}

std::vector<HeldHardware::Call> HeldHardware::calls() const
{
    const std::lock_guard lock(state_->mutex);
    return state_->calls;
}

} // namespace nmos_instrument::host
