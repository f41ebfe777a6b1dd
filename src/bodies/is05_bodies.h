// SPDX-License-Identifier: Apache-2.0
//
// The staged and active bodies of IS-05 connections.

#ifndef NMOS_INSTRUMENT_SRC_BODIES_IS05_BODIES_H
#define NMOS_INSTRUMENT_SRC_BODIES_IS05_BODIES_H

#include "json/json_writer.h"
#include "nmos_instrument/connection_state.h"

namespace nmos_instrument {

/// The body of a receiver's staged or active half.
void write_receiver_connection(JsonText& text, const CONNECTION_HALF_IS05_ST& half);

/// What the two bodies of a sender write for an address that is "null".
enum class UnsetAddress
{
    automatic,
    null
};

/// The body of a sender's staged or active half. `staged` is the staged half of the same sender:
/// "source_port" comes from there, since the record holds no source port.
void write_sender_connection(JsonText& text, const CONNECTION_HALF_IS05_ST& half,
                             const CONNECTION_HALF_IS05_ST& staged, UnsetAddress unset);

} // namespace nmos_instrument

#endif
