// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ROUTES_CHANGE_PERMISSION_H
#define NMOS_INSTRUMENT_HOST_ROUTES_CHANGE_PERMISSION_H

#include <string>
#include <vector>

#include "text/ipv4_network.h"

namespace nmos_instrument::host {

/// Who may change something. Everybody may read.
struct ChangePermission
{
    bool read_only = false;           ///< nobody
    std::vector<Ipv4Network> clients; ///< where they come from; empty: from anywhere

    /// Why a client may not change anything; empty if it may. `peer` as in HttpRequest.
    std::string refusal_of(const std::string& peer) const;
};

} // namespace nmos_instrument::host

#endif
