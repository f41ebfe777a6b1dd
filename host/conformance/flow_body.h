// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONFORMANCE_FLOW_BODY_H
#define NMOS_INSTRUMENT_HOST_CONFORMANCE_FLOW_BODY_H

#include <vector>

#include <nmos_instrument/nmos_instrument.h>

#include "configuration/configuration.h"
#include "conformance/replacement.h"

namespace nmos_instrument::host {

std::vector<Replacement> flow_corrections(const Configuration& configuration,
                                          const NMOS_IS04_ST& node);

} // namespace nmos_instrument::host

#endif
