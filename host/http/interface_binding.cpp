// SPDX-License-Identifier: Apache-2.0

#include "http/interface_binding.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <net/if.h>
#include <sys/socket.h>
#include <unistd.h>

namespace nmos_instrument::host {

InterfaceBinding::InterfaceBinding(const ListeningSocket& socket, std::string interface, Log log)
    : interface_(std::move(interface)),
      log_(std::move(log)),
      descriptor_(interface_.empty() ? -1 : socket.duplicate()),
      index_(if_nametoindex(interface_.c_str()))
{}

InterfaceBinding::~InterfaceBinding()
{
    if (descriptor_ >= 0)
        close(descriptor_);
}

void InterfaceBinding::look()
{
    const unsigned index = is_needed() ? if_nametoindex(interface_.c_str()) : 0;
    if (index == 0 || index == index_)
        return;
    index_ = index;
    if (setsockopt(descriptor_, SOL_SOCKET, SO_BINDTODEVICE, interface_.c_str(),
                   static_cast<socklen_t>(interface_.size() + 1)) == 0)
        log_.info("{}: the interface was made again, listening at it", interface_);
    else
        log_.error("{}: the interface was made again, and nobody who comes by it is heard until "
                   "the program is started again: {}",
                   interface_, std::generic_category().message(errno));
}

} // namespace nmos_instrument::host
