// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_NODE_LISTENING_H
#define NMOS_INSTRUMENT_HOST_NODE_LISTENING_H

#include <cstdint>

#include "http/listening_socket.h"
#include "network/listen_at.h"

namespace nmos_instrument::host {

enum class IfPortInUse
{
    give_up,
    take_next_free_one
};

/// Throws std::system_error, or std::runtime_error that says which addresses there are.
ListeningSocket listen(const ListenAt& where, std::uint16_t port, IfPortInUse if_in_use);

} // namespace nmos_instrument::host

#endif
