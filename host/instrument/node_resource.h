// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_NODE_RESOURCE_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_NODE_RESOURCE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "records/fill_records.h"

namespace nmos_instrument::host {

/// In the order in which they are registered (IS-04 v1.2, Behaviour: Registration, Referential
/// Integrity).
enum class NodeResourceType
{
    node,
    device,
    source,
    flow,
    sender,
    receiver
};

/// A resource that the node shows.
struct NodeResource
{
    NodeResourceType type;
    std::size_t index; ///< in the array of its kind in the record
    std::string id;

    /// Those that must be registered before it, as positions in the list of all.
    std::vector<std::size_t> parents;
};

/// "receivers", as in a path of the Registration API.
std::string_view plural_of(NodeResourceType type);

/// Every resource that the node shows, after its parents; the node first. Hidden senders and
/// receivers are left out.
std::vector<NodeResource> shown_resources(const Records& records);

} // namespace nmos_instrument::host

#endif
