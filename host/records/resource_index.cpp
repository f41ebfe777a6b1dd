// SPDX-License-Identifier: Apache-2.0

#include "records/resource_index.h"

#include "records/record_text.h"

namespace nmos_instrument::host {

ResourceIndex::ResourceIndex(const Records& records)
{
    const auto add = [this](ResourceKind kind, const auto& entries, std::int32_t count,
                            const auto& is_shown) {
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            if (is_shown(i))
                positions_[static_cast<std::size_t>(kind)].emplace(text_of(entries[i].id), i);
        }
    };
    const auto always = [](std::size_t) { return true; };
    const NMOS_IS04_ST& node = records.node;
    const StreamSelection& selection = records.selection;
    add(ResourceKind::source, node.sources, node.sources_count, always);
    add(ResourceKind::flow, node.flows, node.flows_count, always);
    add(ResourceKind::device, node.devices, node.devices_count, always);
    add(ResourceKind::sender, node.senders, node.senders_count,
        [&](std::size_t i) { return selection.shows_sender(i); });
    add(ResourceKind::receiver, node.receivers, node.receivers_count,
        [&](std::size_t i) { return selection.shows_receiver(i); });
}

std::optional<std::size_t> ResourceIndex::find(ResourceKind kind, std::string_view id) const
{
    const auto& positions = positions_[static_cast<std::size_t>(kind)];
    const auto found = positions.find(std::string(id));
    if (found == positions.end())
        return std::nullopt;
    return found->second;
}

} // namespace nmos_instrument::host
