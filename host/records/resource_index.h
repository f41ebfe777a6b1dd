// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_RESOURCE_INDEX_H
#define NMOS_INSTRUMENT_HOST_RECORDS_RESOURCE_INDEX_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "records/fill_records.h"

namespace nmos_instrument::host {

enum class ResourceKind : std::size_t
{
    source,
    flow,
    device,
    sender,
    receiver
};

constexpr std::size_t resource_kind_count = 5;

/// The position in the records of a resource whose id is in a URL. Ids never change while the
/// instrument runs, so this needs no lock.
class ResourceIndex
{
public:
    explicit ResourceIndex(const Records& records);

    /// Nothing for an id that is unknown or that the configuration hides.
    std::optional<std::size_t> find(ResourceKind kind, std::string_view id) const;

    /// How many resources of this kind can be found.
    std::size_t size(ResourceKind kind) const
    {
        return positions_[static_cast<std::size_t>(kind)].size();
    }

private:
    std::array<std::unordered_map<std::string, std::size_t>, resource_kind_count> positions_;
};

} // namespace nmos_instrument::host

#endif
