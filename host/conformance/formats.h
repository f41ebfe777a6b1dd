// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONFORMANCE_FORMATS_H
#define NMOS_INSTRUMENT_HOST_CONFORMANCE_FORMATS_H

#include "conformance/replacement.h"

namespace nmos_instrument::host {

/// IS-04 v1.2, source_generic.json, flow_mux.json and receiver_mux.json: SMPTE ST 2022-6 carries
/// picture, sound and ancillary data together.
inline Replacement mux_instead_of_video()
{
    return {R"("format":"urn:x-nmos:format:video")", R"("format":"urn:x-nmos:format:mux")", ""};
}

} // namespace nmos_instrument::host

#endif
