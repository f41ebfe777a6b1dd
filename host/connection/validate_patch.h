// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONNECTION_VALIDATE_PATCH_H
#define NMOS_INSTRUMENT_HOST_CONNECTION_VALIDATE_PATCH_H

#include <nmos_instrument/nmos_instrument.h>

#include "connection/connection_facts.h"
#include "connection/connection_patch.h"
#include "connection/findings.h"

namespace nmos_instrument::host {

/// Checks whether this sender or receiver can do what a patch asks for. The result is the patch,
/// completed with what its transport file says; use it only if there are no findings.
ConnectionPatch validate_patch(const ConnectionPatch& patch, const ConnectionFacts& facts,
                               const CONNECTION_HALF_IS05_ST& staged, Findings& findings);

} // namespace nmos_instrument::host

#endif
