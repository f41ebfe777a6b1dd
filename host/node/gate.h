// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_NODE_GATE_H
#define NMOS_INSTRUMENT_HOST_NODE_GATE_H

#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace nmos_instrument::host {

/// In front of something that comes and goes while other threads use it. Whoever has a pass may use it;
/// closing the gate waits for all passes, and nobody gets another. It is closed at first.
class Gate
{
public:
    class Pass
    {
    public:
        explicit Pass(Gate* gate) : gate_(gate) {}

        ~Pass()
        {
            if (gate_ != nullptr)
                gate_->leave();
        }

        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;

        /// False if the gate was closed.
        explicit operator bool() const { return gate_ != nullptr; }

    private:
        Gate* const gate_;
    };

    /// A thread may have several.
    Pass pass()
    {
        const std::lock_guard lock(mutex_);
        inside_ += is_open_ ? 1 : 0;
        return Pass(is_open_ ? this : nullptr);
    }

    void open()
    {
        const std::lock_guard lock(mutex_);
        is_open_ = true;
    }

    /// Not from a thread that has a pass.
    void close()
    {
        std::unique_lock lock(mutex_);
        is_open_ = false;
        is_empty_.wait(lock, [this] { return inside_ == 0; });
    }

private:
    void leave()
    {
        const std::lock_guard lock(mutex_);
        --inside_;
        is_empty_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable is_empty_;
    bool is_open_ = false;
    std::size_t inside_ = 0;
};

} // namespace nmos_instrument::host

#endif
