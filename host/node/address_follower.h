// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_NODE_ADDRESS_FOLLOWER_H
#define NMOS_INSTRUMENT_HOST_NODE_ADDRESS_FOLLOWER_H

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "http/interface_binding.h"
#include "log/log.h"
#include "network/followed_address.h"

namespace nmos_instrument::host {

/// Looks at the interfaces once a second, on a thread of its own, and tells which address the machine
/// has now. Without anything to look at there is no thread.
class AddressFollower
{
public:
    /// `binding`: that of the socket, if there is one. `moved` is called on the thread.
    AddressFollower(FollowedAddress address, std::optional<InterfaceBinding>& binding,
                    FollowedAddress::Moved moved, Log log);
    ~AddressFollower();

    AddressFollower(const AddressFollower&) = delete;
    AddressFollower& operator=(const AddressFollower&) = delete;

private:
    void run();
    void look() noexcept;

    FollowedAddress address_;
    std::optional<InterfaceBinding>& binding_;
    const FollowedAddress::Moved moved_;
    const Log log_;
    std::string said_; ///< what was logged last
    std::mutex mutex_;
    std::condition_variable wake_up_;
    bool ends_ = false;
    std::thread thread_; ///< last: it uses the members above
};

} // namespace nmos_instrument::host

#endif
