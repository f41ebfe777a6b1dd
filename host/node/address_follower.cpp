// SPDX-License-Identifier: Apache-2.0

#include "node/address_follower.h"

#include <chrono>
#include <exception>
#include <utility>

#include "http/all_signals_blocked.h"

namespace nmos_instrument::host {
namespace {

/// Not more often: a client that learns of an address a second later has lost nothing.
constexpr std::chrono::seconds between_looks{1};

} // namespace

AddressFollower::AddressFollower(FollowedAddress address, std::optional<InterfaceBinding>& binding,
                                 FollowedAddress::Moved moved, Log log)
    : address_(std::move(address)),
      binding_(binding),
      moved_(std::move(moved)),
      log_(std::move(log))
{
    if (!address_.may_move() && !(binding_ && binding_->is_needed()))
        return;
    const AllSignalsBlocked inherited_by_thread;
    thread_ = std::thread([this] { run(); });
}

AddressFollower::~AddressFollower()
{
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
    }
    wake_up_.notify_all();
    if (thread_.joinable())
        thread_.join();
}

void AddressFollower::run()
{
    std::unique_lock lock(mutex_);
    while (!wake_up_.wait_for(lock, between_looks, [this] { return ends_; })) {
        lock.unlock();
        look();
        lock.lock();
    }
}

/// What goes wrong is tried again at the next look.
void AddressFollower::look() noexcept
{
    try {
        try {
            if (binding_)
                binding_->look();
            if (address_.may_move())
                address_.look(moved_);
            said_.clear();
        } catch (const std::exception& error) {
            if (said_ != error.what())
                log_.error("the address of the instrument cannot be followed: {}", error.what());
            said_ = error.what();
        }
    } catch (...) {
        return; // memory is short
    }
}

} // namespace nmos_instrument::host
