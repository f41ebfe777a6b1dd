// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_REGISTRATION_REGISTRY_CHOICE_H
#define NMOS_INSTRUMENT_HOST_REGISTRATION_REGISTRY_CHOICE_H

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "discovery/registry.h"

namespace nmos_instrument::host {

/// Which registry is tried next: lowest priority number first, at random among equals (IS-04 v1.2,
/// Discovery: Registered Operation), and each only once in a round.
class RegistryChoice
{
public:
    /// `random`: a number from 0 to 1, a new one for each call.
    explicit RegistryChoice(std::function<double()> random) : random_(std::move(random)) {}

    /// Replaces the list. Those that were tried in this round stay tried. Two addresses of one URL
    /// are two registries: when a network fails, the other one may still work.
    void update(std::vector<Registry> registries);

    bool has(std::string_view url) const;

    /// All may be tried again, but for the one in use.
    void begin_round(const Registry& in_use = {});

    /// The next one, which counts as tried from now on. `node` is the node's registration as it is
    /// now: a registry that refused it is left out as long as it reads the same. (IS-04 v1.2: the
    /// same request must not be attempted again without corrective action.)
    std::optional<Registry> take(const std::string& node);

    void note_refusal(const std::string& url, std::string node);

private:
    struct Candidate
    {
        Registry registry;
        double place; ///< among those of the same priority
        bool tried = false;
    };

    std::function<double()> random_;
    std::vector<Candidate> candidates_;          ///< in the order in which they are tried
    std::map<std::string, std::string> refused_; ///< by URL: the registration of the node
};

} // namespace nmos_instrument::host

#endif
