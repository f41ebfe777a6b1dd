// SPDX-License-Identifier: Apache-2.0

#include "conformance/receiver_body.h"

#include "conformance/formats.h"

namespace nmos_instrument::host {

std::vector<Replacement> receiver_corrections(const Configuration& configuration)
{
    if (configuration.carriage == Carriage::st2110)
        return {};
    return {
        mux_instead_of_video(),
        // IS-04 v1.2, receiver_mux.json. Some texts of the library escape their slashes.
        {R"("media_types":["video/raw"])", R"("media_types":["video/SMPTE2022-6"])", ""},
        {R"("media_types":["video\/raw"])", R"("media_types":["video\/SMPTE2022-6"])", ""},
    };
}

} // namespace nmos_instrument::host
