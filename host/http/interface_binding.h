// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_INTERFACE_BINDING_H
#define NMOS_INSTRUMENT_HOST_HTTP_INTERFACE_BINDING_H

#include <string>

#include "http/listening_socket.h"
#include "log/log.h"

namespace nmos_instrument::host {

/// Keeps a socket listening at an interface that is removed and made again, as that of a USB adapter
/// or a VLAN: the system binds a socket to the interface and not to its name.
class InterfaceBinding
{
public:
    /// `interface`: empty if the socket is bound to none. It needs the socket no longer.
    InterfaceBinding(const ListeningSocket& socket, std::string interface, Log log);
    ~InterfaceBinding();

    InterfaceBinding(const InterfaceBinding&) = delete;
    InterfaceBinding& operator=(const InterfaceBinding&) = delete;

    bool is_needed() const { return !interface_.empty(); }

    /// Binds the socket again if it has to be. Without the permission for it (CAP_NET_RAW) nobody
    /// is heard any more, which is logged.
    void look();

private:
    const std::string interface_;
    const Log log_;
    const int descriptor_; ///< of the same socket
    unsigned index_;       ///< by which the system knows the interface
};

} // namespace nmos_instrument::host

#endif
