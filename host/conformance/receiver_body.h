// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONFORMANCE_RECEIVER_BODY_H
#define NMOS_INSTRUMENT_HOST_CONFORMANCE_RECEIVER_BODY_H

#include <vector>

#include "configuration/configuration.h"
#include "conformance/replacement.h"

namespace nmos_instrument::host {

std::vector<Replacement> receiver_corrections(const Configuration& configuration);

} // namespace nmos_instrument::host

#endif
