// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONNECTION_ACTIVATE_STAGED_H
#define NMOS_INSTRUMENT_HOST_CONNECTION_ACTIVATE_STAGED_H

#include <nmos_instrument/nmos_instrument.h>

#include "connection/connection_facts.h"
#include "connection/stage_patch.h"

namespace nmos_instrument::host {

/// The active half that a staged one becomes: every "auto" resolved, with `activation` in it.
CONNECTION_HALF_IS05_ST activate_staged(const CONNECTION_HALF_IS05_ST& staged,
                                        const ConnectionFacts& facts,
                                        const ActivationTexts& activation);

/// The IS-04 subscription that describes an active half. It names the peer only while the sender or
/// receiver is enabled; a sender names it only while it sends unicast (IS-04 v1.2, sender.json:
/// "unicast only").
SUBSCRIPTION_IS04_ST subscription_of(const CONNECTION_HALF_IS05_ST& active, Side side);

} // namespace nmos_instrument::host

#endif
