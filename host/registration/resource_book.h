// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_REGISTRATION_RESOURCE_BOOK_H
#define NMOS_INSTRUMENT_HOST_REGISTRATION_RESOURCE_BOOK_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "instrument/node_resource.h"

namespace nmos_instrument::host {

/// What a registry has been told about each resource of a node, and what it took.
class ResourceBook
{
public:
    /// The text that would be posted of a resource now.
    using TextOf = std::function<std::string(const NodeResource&)>;

    /// `resources`: parents first. It must outlive the book.
    explicit ResourceBook(const std::vector<NodeResource>& resources);

    /// A registry that knows the node, and nothing else of it.
    void begin(std::string node);

    /// Everything has to be posted again; the registry may have an older text of each resource.
    void post_everything();

    /// What reads differently now than what was posted last has to be posted.
    void note_changes(const TextOf& text_of);

    /// A round is over when each resource that had to be posted at its beginning has been posted once,
    /// or cannot be: those that change all the time do not put it off.
    void begin_round();
    bool round_is_over() const;

    /// The position of the next resource to be posted: one whose parents the registry has, in turn, so
    /// that those that change all the time do not keep the others waiting.
    std::optional<std::size_t> next() const;

    /// A resource is being posted.
    void note_sent(std::size_t position, std::string text);

    // What became of it.
    void note_taken(std::size_t position);
    /// It is not posted again as long as it reads the same.
    void note_refused(std::size_t position);
    /// Nobody knows, so it is posted again.
    void forget_sent() noexcept;

    /// The position of a resource that the registry has and whose children it has not; the node is
    /// the last one.
    std::optional<std::size_t> next_to_delete() const;
    void note_deleted(std::size_t position);
    void note_all_deleted();

    /// The node is most likely there, whatever else is.
    void assume_node();

    /// How many resources the registry has.
    std::size_t size() const;

    /// How many it has not, since it refused them or what they depend on.
    std::size_t left_out() const { return entries_.size() - size(); }

private:
    struct Entry
    {
        std::optional<std::string> sent{};    ///< what is being posted
        std::optional<std::string> taken{};   ///< what the registry has
        std::optional<std::string> refused{}; ///< what it would not have instead
        bool pending = false;                 ///< to be posted, or posted once more
        bool in_round = false;                ///< has to be posted before the round is over

        const std::optional<std::string>& last() const
        {
            return sent ? sent : refused ? refused : taken;
        }
    };

    bool has_parents_of(std::size_t position) const;

    const std::vector<NodeResource>& resources_;
    std::vector<Entry> entries_; ///< one for each resource
    std::size_t last_ = 0;       ///< the one that was posted last
};

} // namespace nmos_instrument::host

#endif
