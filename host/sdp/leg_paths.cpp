// SPDX-License-Identifier: Apache-2.0

#include "sdp/leg_paths.h"

#include <algorithm>

#include "sdp/read_path.h"
#include "text/ascii.h"
#include "text/pieces.h"
#include "text/quoted_text.h"
#include "text/word_list.h"

namespace nmos_instrument::host {
namespace {

using Paths = std::array<std::optional<SdpPath>, leg_count>;

/// a=ssrc-group:DUP says that the sources of a medium send the same (RFC 7104 3.2).
bool says_dup(const SdpMedium& medium)
{
    return std::any_of(medium.attributes.begin(), medium.attributes.end(),
                       [](const SdpAttribute& attribute) {
                           if (attribute.name != "ssrc-group")
                               return false;
                           const auto words = words_of(attribute.value);
                           return words.size() > leg_count && same_name(words[0], "DUP");
                       });
}

SdpLeg leg_of(const LegMedium& medium, const SdpPath& path, std::size_t source)
{
    SdpLeg leg;
    leg.address = path.address;
    leg.multicast = path.multicast;
    leg.source = path.sources.empty() ? "" : path.sources[source];
    leg.port = static_cast<int>(medium.medium->port);
    leg.line = medium.medium->line;
    return leg;
}

void tell_of_two_sources(const SdpPath& path, SdpFindings& findings)
{
    findings.add(SdpCode::two_sources, path.source_line,
                 "two sources: " + path.sources[0] + " is taken for leg 1, " + path.sources[1] +
                     " for leg 2");
}

/// One medium is both legs if it has a source for each (RFC 7104 4.1), or if one source sends every
/// packet twice to one group (4.3): IS-05 v1.0, "Behaviour - RTP Transport Type", gives both legs the
/// same parameters then.
bool is_both_legs(const SdpMedium& medium, const SdpPath& path)
{
    return path.sources.size() == leg_count ||
           (path.multicast && path.sources.size() < leg_count && says_dup(medium));
}

/// Several sources are a way to name both legs only if there are as many as legs.
bool name_both_legs(const Paths& paths)
{
    return paths[0] && paths[1] && paths[0]->sources.size() == leg_count &&
           paths[0]->sources == paths[1]->sources;
}

bool one_source_each(const Paths& paths, SdpFindings& findings)
{
    bool fine = true;
    for (const std::optional<SdpPath>& path : paths) {
        if (!path || path->sources.size() < 2)
            continue;
        constexpr std::size_t shown = 4;
        const auto end = path->sources.begin() +
                         static_cast<std::ptrdiff_t>(std::min(path->sources.size(), shown));
        findings.add(SdpCode::several_sources, path->source_line,
                     std::to_string(path->sources.size()) + " sources: " +
                         word_list(std::vector<std::string>(path->sources.begin(), end)) +
                         (path->sources.size() > shown ? ", ..." : ""),
                     "one for each leg");
        fine = false;
    }
    return fine;
}

void check_unicast(const SdpLegs& legs, const Paths& paths,
                   const std::array<std::optional<std::string>, leg_count>& interface_addresses,
                   SdpFindings& findings)
{
    for (std::size_t i = 0; i < leg_count; ++i) {
        const std::optional<std::string>& own = interface_addresses[i];
        if (legs[i] && !legs[i]->multicast && own && legs[i]->address != *own)
            findings.add(SdpCode::foreign_unicast,
                         paths[i] ? paths[i]->address_line : legs[i]->line,
                         "the unicast address " + in_quotes(legs[i]->address) + " for leg " +
                             std::to_string(i + 1),
                         in_quotes(*own) + ", or a multicast group");
    }
}

} // namespace

SdpLegs leg_paths(const SdpSection& session, SelectedMedia& selected,
                  const std::array<std::optional<std::string>, leg_count>& interface_addresses,
                  SdpFindings& findings)
{
    LegMedia& media = selected.legs;
    Paths paths;
    for (std::size_t i = 0; i < leg_count; ++i) {
        if (media[i])
            paths[i] = read_path(session, *media[i]->medium, findings);
    }
    const bool one_medium =
        !selected.named_as_pair && paths[0] && is_both_legs(*media[0]->medium, *paths[0]);
    if (one_medium) {
        media[1] = media[0];
        paths[1] = paths[0];
    }
    SdpLegs legs;
    if (name_both_legs(paths)) {
        if (!one_medium || !says_dup(*media[0]->medium))
            tell_of_two_sources(*paths[0], findings);
        legs = {leg_of(*media[0], *paths[0], 0), leg_of(*media[1], *paths[1], 1)};
    } else if (one_source_each(paths, findings)) {
        for (std::size_t i = 0; i < leg_count; ++i) {
            if (paths[i])
                legs[i] = leg_of(*media[i], *paths[i], 0);
        }
    }
    check_unicast(legs, paths, interface_addresses, findings);
    if (legs[0] && legs[1] && legs[0]->address == legs[1]->address &&
        legs[0]->source == legs[1]->source && legs[0]->port == legs[1]->port)
        findings.add(SdpCode::same_path, legs[1]->line,
                     "leg 2 has the group, the source and the port of leg 1");
    return legs;
}

} // namespace nmos_instrument::host
