// SPDX-License-Identifier: Apache-2.0

#include "registration/resource_book.h"

#include <algorithm>
#include <utility>

namespace nmos_instrument::host {
namespace {

constexpr std::size_t node = 0; ///< its position

} // namespace

ResourceBook::ResourceBook(const std::vector<NodeResource>& resources)
    : resources_(resources), entries_(resources.size())
{}

void ResourceBook::begin(std::string node_text)
{
    std::fill(entries_.begin(), entries_.end(), Entry{.pending = true});
    begin_round();
    note_sent(node, std::move(node_text));
    note_taken(node);
}

void ResourceBook::begin_round()
{
    for (Entry& entry : entries_)
        entry.in_round = entry.pending;
}

bool ResourceBook::round_is_over() const
{
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (entries_[i].in_round && has_parents_of(i))
            return false;
    }
    return true;
}

void ResourceBook::post_everything()
{
    for (Entry& entry : entries_)
        entry.pending = true;
}

void ResourceBook::note_changes(const TextOf& text_of)
{
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        Entry& entry = entries_[i];
        if (!entry.pending)
            entry.pending = entry.last() != text_of(resources_[i]);
    }
}

std::optional<std::size_t> ResourceBook::next() const
{
    for (std::size_t step = 1; step <= entries_.size(); ++step) {
        const std::size_t position = (last_ + step) % entries_.size();
        if (entries_[position].pending && has_parents_of(position))
            return position;
    }
    return std::nullopt;
}

bool ResourceBook::has_parents_of(std::size_t position) const
{
    const std::vector<std::size_t>& parents = resources_[position].parents;
    return std::all_of(parents.begin(), parents.end(),
                       [this](std::size_t parent) { return entries_[parent].taken.has_value(); });
}

void ResourceBook::note_sent(std::size_t position, std::string text)
{
    Entry& entry = entries_[position];
    entry.sent = std::move(text);
    entry.pending = false;
    last_ = position;
}

void ResourceBook::note_taken(std::size_t position)
{
    Entry& entry = entries_[position];
    entry.taken = std::exchange(entry.sent, std::nullopt);
    entry.refused.reset();
    entry.in_round = false;
}

void ResourceBook::note_refused(std::size_t position)
{
    Entry& entry = entries_[position];
    entry.refused = std::exchange(entry.sent, std::nullopt);
    entry.in_round = false;
}

void ResourceBook::forget_sent() noexcept
{
    for (Entry& entry : entries_) {
        entry.pending |= entry.sent.has_value();
        entry.sent.reset();
    }
}

void ResourceBook::assume_node()
{
    if (!entries_[node].taken)
        entries_[node].taken.emplace();
}

std::optional<std::size_t> ResourceBook::next_to_delete() const
{
    for (std::size_t i = entries_.size(); i-- > 0;) {
        if (entries_[i].taken)
            return i;
    }
    return std::nullopt;
}

void ResourceBook::note_deleted(std::size_t position)
{
    entries_[position] = {};
}

void ResourceBook::note_all_deleted()
{
    std::fill(entries_.begin(), entries_.end(), Entry{});
}

std::size_t ResourceBook::size() const
{
    return static_cast<std::size_t>(std::count_if(
        entries_.begin(), entries_.end(), [](const Entry& one) { return one.taken.has_value(); }));
}

} // namespace nmos_instrument::host
