// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONNECTION_ACTIVATE_STAGED_H
#define NMOS_INSTRUMENT_HOST_CONNECTION_ACTIVATE_STAGED_H

#include <nmos_instrument/nmos_instrument.h>

#include "connection/connection_facts.h"
#include "connection/stage_patch.h"

namespace nmos_instrument::host {

/// The active half that follows from a staged one: every "auto" resolved, `activation` kept.
CONNECTION_HALF_IS05_ST activate_staged(const CONNECTION_HALF_IS05_ST& staged,
                                        const ConnectionFacts& facts,
                                        const ActivationTexts& activation);

/// The IS-04 subscription that describes an active half. The peer is named only while enabled, and
/// by a sender only while it sends to one receiver (IS-04 v1.2, sender.json: "unicast only").
SUBSCRIPTION_IS04_ST subscription_of(const CONNECTION_HALF_IS05_ST& active, Side side);

} // namespace nmos_instrument::host

#endif
