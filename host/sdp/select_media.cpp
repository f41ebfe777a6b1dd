// SPDX-License-Identifier: Apache-2.0

#include "sdp/select_media.h"

#include <algorithm>
#include <map>
#include <set>

#include "text/ascii.h"
#include "text/pieces.h"
#include "text/quoted_text.h"
#include "text/word_list.h"

namespace nmos_instrument::host {
namespace {

/// A group of media (RFC 5888).
struct Group
{
    std::size_t line;
    std::string_view meaning;            ///< "DUP"
    std::vector<std::string_view> names; ///< of media
};

/// One of the file's media, as the receiver sees it.
struct Candidate
{
    const SdpMedium* medium;
    RtpFormat format;

    bool is_sent() const { return medium->port != 0; }
    bool may_fit() const { return format.fit != Fit::no; }
};

std::string at_line(std::size_t line)
{
    return "line " + std::to_string(line);
}

/// A word of the file in a list. Real ones are short.
std::string shown(std::string_view word)
{
    constexpr std::size_t longest = 24;
    return printable(word.substr(0, longest)) + (word.size() > longest ? "..." : "");
}

/// "line 6: video jxsv"
std::string description_of(const Candidate& candidate)
{
    const RtpFormat& format = candidate.format;
    std::string text = at_line(candidate.medium->line) + ": " + shown(candidate.medium->kind);
    if (format.rtpmap_line != 0)
        text += ' ' + shown(format.encoding);
    else if (!format.payload_type.empty())
        text += " payload type " + shown(format.payload_type);
    if (candidate.medium->protocol != rtp_protocol)
        text += " by " + shown(candidate.medium->protocol);
    if (!candidate.is_sent())
        text += " with port 0";
    return text;
}

/// At most `most` entries of a list, and how many more there are.
std::string list_of(const std::vector<const Candidate*>& candidates)
{
    constexpr std::size_t most = 8;
    const std::size_t shown = std::min(candidates.size(), most);
    std::string list =
        word_list(std::vector<const Candidate*>(
                      candidates.begin(), candidates.begin() + static_cast<std::ptrdiff_t>(shown)),
                  [](const Candidate* candidate) { return description_of(*candidate); });
    if (candidates.size() > shown)
        list += " and " + std::to_string(candidates.size() - shown) + " more";
    return list;
}

class Selection
{
public:
    Selection(const SdpDescription& description, const std::vector<std::string>& media_types,
              SdpFindings& findings)
        : description_(description), media_types_(media_types), findings_(findings)
    {}

    SelectedMedia run()
    {
        for (const SdpMedium& medium : description_.media)
            candidates_.push_back({&medium, format_for(medium, media_types_)});
        for (const Candidate& candidate : candidates_) {
            if (candidate.format.fit == Fit::yes && candidate.is_sent())
                wanted_fit_ = Fit::yes;
        }
        read_names();
        read_groups();
        SelectedMedia selected = choose();
        check_whole_pictures(selected.legs);
        return selected;
    }

private:
    /// The media that fit and are sent.
    std::vector<const Candidate*> fitting() const
    {
        std::vector<const Candidate*> found;
        for (const Candidate& candidate : candidates_) {
            if (candidate.format.fit >= wanted_fit_ && candidate.is_sent())
                found.push_back(&candidate);
        }
        return found;
    }

    std::vector<const Candidate*> all() const
    {
        std::vector<const Candidate*> all;
        for (const Candidate& candidate : candidates_) {
            if (!candidate.medium->kind.empty()) // else its m= line is a finding
                all.push_back(&candidate);
        }
        return all;
    }

    void read_names()
    {
        for (const Candidate& candidate : candidates_) {
            for (const SdpAttribute& attribute : candidate.medium->attributes) {
                if (attribute.name != "mid")
                    continue;
                const std::vector<std::string_view> words = words_of(attribute.value);
                if (words.size() != 1)
                    continue;
                const auto [named, fresh] = by_name_.try_emplace(words[0], &candidate);
                if (!fresh && named->second != &candidate)
                    findings_.add(SdpCode::repeated_mid, attribute.line,
                                  "the name " + in_quotes(words[0]),
                                  "another name than that of the medium in " +
                                      at_line(named->second->medium->line));
            }
        }
    }

    void read_groups()
    {
        read_groups_of(description_.session);
        for (const SdpMedium& medium : description_.media)
            read_groups_of(medium);
    }

    void read_groups_of(const SdpSection& section)
    {
        for (const SdpAttribute& attribute : section.attributes) {
            if (attribute.name != "group")
                continue;
            std::vector<std::string_view> words = words_of(attribute.value);
            const std::string_view meaning = words.empty() ? std::string_view() : words.front();
            const bool dup = same_name(meaning, "DUP");
            if (words.empty() || (dup && words.size() < 3)) {
                findings_.add(SdpCode::group_line, attribute.line,
                              "a=group " + in_quotes(attribute.value),
                              "DUP and the names of two media");
                continue;
            }
            words.erase(words.begin());
            (dup ? dup_groups_ : other_groups_).push_back({attribute.line, meaning, words});
        }
    }

    SelectedMedia choose()
    {
        const auto fits = [this](const Candidate* candidate) {
            return candidate->format.fit >= wanted_fit_;
        };
        std::vector<const Group*> groups = dup_groups_with(
            [fits](const Candidate* candidate) { return fits(candidate) && candidate->is_sent(); });
        if (groups.empty())
            groups = dup_groups_with(fits);
        if (groups.empty())
            return {single(), false};
        const Group& chosen = *groups.front();
        for (std::size_t i = 1; i < groups.size(); ++i)
            findings_.add(SdpCode::several_pairs, groups[i]->line,
                          "another DUP group of media that fit",
                          "one; that of " + at_line(chosen.line) + " is taken");
        return {by_name_.empty() ? unnamed_pair(chosen) : pair(chosen), true};
    }

    /// Those with a medium that `is_meant`. A group that names less than it promises is ours too,
    /// unless its media say that they are others: what it promises is refused, not forgotten.
    template <class IsMeant>
    std::vector<const Group*> dup_groups_with(IsMeant is_meant) const
    {
        const auto may_fit = [](const Candidate* medium) { return medium->may_fit(); };
        std::vector<const Group*> groups;
        for (const Group& group : dup_groups_) {
            const std::vector<const Candidate*> media = media_of(group);
            const bool broken = media.size() < group.names.size();
            if (media.empty() || std::any_of(media.begin(), media.end(), is_meant) ||
                (broken && std::any_of(media.begin(), media.end(), may_fit)))
                groups.push_back(&group);
        }
        return groups;
    }

    LegMedia pair(const Group& group)
    {
        std::array<const Candidate*, leg_count> pair{};
        for (std::size_t i = 0; i < leg_count; ++i) {
            const auto named = by_name_.find(group.names[i]);
            if (named == by_name_.end()) {
                findings_.add(SdpCode::dup_pair, group.line,
                              "no medium is named " + in_quotes(group.names[i]),
                              "the names of a=mid lines");
                return {};
            }
            pair[i] = named->second;
        }
        if (pair[0] == pair[1]) {
            findings_.add(SdpCode::dup_pair, group.line, "the same medium twice",
                          "the names of two media");
            return {};
        }
        if (group.names.size() > leg_count)
            findings_.add(SdpCode::more_than_two, group.line,
                          std::to_string(group.names.size()) + " names; the first two are taken",
                          "2 names");
        return ordered(pair);
    }

    /// Without names the order of the file decides, if there is no choice.
    LegMedia unnamed_pair(const Group& group)
    {
        const std::vector<const Candidate*> media = fitting();
        if (media.empty()) {
            tell_that_none_fits();
            return {};
        }
        if (group.names.size() != leg_count || media.size() != leg_count) {
            findings_.add(SdpCode::dup_pair, group.line,
                          "no medium has a name, and " + std::to_string(media.size()) +
                              " fit: " + list_of(media),
                          "an a=mid line in each medium of the group");
            return {};
        }
        findings_.add(SdpCode::dup_without_mid, group.line,
                      "no medium has a name; the two that fit are taken",
                      "an a=mid line in each medium of the group");
        return ordered({media[0], media[1]});
    }

    LegMedia ordered(std::array<const Candidate*, leg_count> pair)
    {
        if (pair[1]->medium->line < pair[0]->medium->line)
            std::swap(pair[0], pair[1]);
        for (const Candidate* const member : pair) {
            if (member->may_fit())
                continue;
            findings_.add(SdpCode::dup_pair, member->medium->line,
                          "one of the two media does not fit: " + description_of(*member),
                          word_list(media_types_));
            return {};
        }
        LegMedia legs;
        for (std::size_t i = 0; i < leg_count; ++i) {
            if (pair[i]->is_sent())
                legs[i] = leg_of(*pair[i]);
            else
                findings_.add(SdpCode::port_zero, pair[i]->medium->line,
                              "port 0: leg " + std::to_string(i + 1) + " is switched off",
                              "1 to 65535");
        }
        if (!legs[0] && !legs[1])
            findings_.add(SdpCode::no_medium, 0, "no medium is sent: both have port 0",
                          word_list(media_types_));
        for (const Candidate& other : candidates_) {
            if (&other != pair[0] && &other != pair[1] && other.is_sent() &&
                other.format.fit == Fit::yes)
                findings_.add(SdpCode::media_beside_pair, other.medium->line,
                              "a medium that fits and is not one of the pair: it is left out");
        }
        return legs;
    }

    LegMedia single()
    {
        const std::vector<const Candidate*> media = fitting();
        if (media.size() == 1)
            return {leg_of(*media.front()), std::nullopt};
        if (media.empty())
            tell_that_none_fits();
        else if (!are_parts_of_picture(media))
            findings_.add(SdpCode::several_media, media[1]->medium->line,
                          std::to_string(media.size()) + " media fit: " + list_of(media),
                          "one, or two in an a=group:DUP line");
        return {};
    }

    void tell_that_none_fits()
    {
        const std::vector<const Candidate*> media = all();
        if (!media.empty())
            findings_.add(SdpCode::no_medium, 0, "no medium that fits: " + list_of(media),
                          word_list(media_types_));
        else if (!findings_.has(SdpCode::media_line))
            findings_.add(SdpCode::no_medium, 0, "no medium (m=)", word_list(media_types_));
    }

    bool are_parts_of_picture(const std::vector<const Candidate*>& media)
    {
        LegMedia first;
        first[0] = leg_of(*media.front());
        check_whole_pictures(first);
        return findings_.has(SdpCode::part_of_picture);
    }

    /// One of several parts of a picture is no picture.
    void check_whole_pictures(const LegMedia& legs)
    {
        for (const Group& group : other_groups_) {
            if (!same_name(group.meaning, "MULTI-2SI"))
                continue;
            const std::vector<const Candidate*> parts = media_of(group);
            for (const Candidate* const part : parts) {
                for (const std::optional<LegMedium>& leg : legs) {
                    if (leg && parts.size() > 1 && part->medium == leg->medium)
                        findings_.add(SdpCode::part_of_picture, leg->medium->line,
                                      "one of " + std::to_string(parts.size()) +
                                          " parts of a picture, see " + at_line(group.line) + ": " +
                                          list_of(parts),
                                      "a whole picture");
                }
            }
        }
    }

    /// In the order of the file, each once.
    std::vector<const Candidate*> media_of(const Group& group) const
    {
        std::set<const Candidate*> media; // all in one array
        for (const std::string_view name : group.names) {
            if (const auto named = by_name_.find(name); named != by_name_.end())
                media.insert(named->second);
        }
        return {media.begin(), media.end()};
    }

    std::optional<LegMedium> leg_of(const Candidate& candidate)
    {
        for (const SdpAttribute& attribute : candidate.medium->attributes) {
            if (attribute.name == "inactive")
                findings_.add(SdpCode::inactive, attribute.line, "the medium is inactive",
                              "a medium that is sent");
        }
        return LegMedium{candidate.medium, candidate.format};
    }

    const SdpDescription& description_;
    const std::vector<std::string>& media_types_;
    SdpFindings& findings_;
    std::vector<Candidate> candidates_;
    Fit wanted_fit_ = Fit::unknown; ///< media that say what they are beat those that do not
    std::map<std::string_view, const Candidate*> by_name_;
    std::vector<Group> dup_groups_;
    std::vector<Group> other_groups_;
};

} // namespace

SelectedMedia select_media(const SdpDescription& description,
                           const std::vector<std::string>& media_types, SdpFindings& findings)
{
    return Selection(description, media_types, findings).run();
}

} // namespace nmos_instrument::host
