// SPDX-License-Identifier: Apache-2.0

#include "routes/watched_paths.h"

#include <chrono>
#include <string>

namespace nmos_instrument::host {

std::vector<WatchedPath> watched_paths(const Instrument& instrument)
{
    // The status differs every second, by its clock alone.
    std::vector<WatchedPath> paths = {{.path = "/layout"},
                                      {.path = "/status", .interval = std::chrono::seconds(1)},
                                      {.path = "/x-nmos/node/v1.2/self"},
                                      {.path = "/x-nmos/node/v1.2/devices"},
                                      {.path = "/x-nmos/node/v1.2/senders"},
                                      {.path = "/x-nmos/node/v1.2/receivers"}};
    for (const NodeResource& resource : instrument.shown_resources()) {
        if (resource.type != NodeResourceType::sender &&
            resource.type != NodeResourceType::receiver)
            continue;
        const std::string single = "/x-nmos/connection/v1.0/single/" +
                                   std::string(plural_of(resource.type)) + '/' + resource.id;
        paths.push_back({.path = single + "/staged"});
        paths.push_back({.path = single + "/active"});
    }
    return paths;
}

} // namespace nmos_instrument::host
