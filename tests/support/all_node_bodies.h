// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_ALL_NODE_BODIES_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_ALL_NODE_BODIES_H

#include <string>
#include <vector>

#include "nmos_instrument/NodeApi.h"

/// What every operation of the Node API makes of a record, with each index that it takes.
inline std::vector<std::string> all_node_bodies(NMOS_IS04_ST* rec)
{
    NodeApi api;
    std::vector<std::string> bodies = {
        api.make_version(),
        api.make_base(rec),
        api.make_self(rec),
        api.make_sources(rec),
        api.make_flows(rec),
        api.make_devices(rec, 0, 0, 0),
        api.make_senders(rec, 0),
        api.make_receivers(rec, 0, 0),
        api.make_devices(rec, 1, 1, 1),
        api.make_receivers(rec, 1, 1),
    };
    for (int i = 0; i < 4; ++i) {
        bodies.push_back(api.make_sourceid(rec, i));
        bodies.push_back(api.make_flowid(rec, i));
        bodies.push_back(api.make_deviceid(rec, i, 0, 2, 1));
    }
    for (int i = 0; i < 6; ++i) {
        bodies.push_back(api.make_senderid(rec, i));
        bodies.push_back(api.make_receiverid_target(&rec->senders[i]));
    }
    for (int i = 0; i < 24; ++i)
        bodies.push_back(api.make_receiverid(rec, i));
    return bodies;
}

#endif
