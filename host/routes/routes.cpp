// SPDX-License-Identifier: Apache-2.0

#include "routes/routes.h"

namespace nmos_instrument::host {

RouteTable all_routes(std::span<const Route> more)
{
    return {root_routes(),    node_routes(),   connection_routes(),
            status_routes(),  layout_routes(), check_sdp_routes(),
            metrics_routes(), event_routes(),  more};
}

} // namespace nmos_instrument::host
