// SPDX-License-Identifier: Apache-2.0
//
// How serve is reached: where it listens, and the address that its texts name.

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_SERVE_REACH_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_SERVE_REACH_H

#include <cstdint>
#include <optional>
#include <string>

#include "commands/end_signals.h"
#include "configuration/configuration.h"
#include "http/interface_binding.h"
#include "http/listening_socket.h"
#include "log/log.h"
#include "network/followed_address.h"
#include "network/reach.h"
#include "records/addresses.h"

namespace nmos_instrument::program {

enum class IfPortInUse
{
    give_up,
    take_next_free_one
};

/// Throws std::runtime_error that says what helps.
host::ListeningSocket listen(const host::ListenAt& where, std::uint16_t port,
                             IfPortInUse if_in_use);

/// Waits until the interface has an address: what is named before could not be used, and would only
/// change. If no interface has one where any would do, it is 127.0.0.1 for now. Nothing if a signal
/// has ended the wait.
std::optional<std::string> first_address(const host::AddressSource& source,
                                         host::FollowedAddress& address, EndSignals& end_signals,
                                         const host::Log& log);

/// Follows the address and the interface until a signal ends the program, and returns the name of
/// the signal.
std::string follow_until_signal(host::FollowedAddress& address,
                                const host::FollowedAddress::Moved& moved,
                                host::InterfaceBinding& binding, EndSignals& end_signals,
                                const host::Log& log);

/// Logs it if others cannot reach what is listened at, or what they are told.
void log_reach(const host::ListenAt& listen, const host::NodeAddress& address,
               const host::Configuration& configuration, const host::Log& log);

} // namespace nmos_instrument::program

#endif
