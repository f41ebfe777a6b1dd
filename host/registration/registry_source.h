// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_REGISTRATION_REGISTRY_SOURCE_H
#define NMOS_INSTRUMENT_HOST_REGISTRATION_REGISTRY_SOURCE_H

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "configuration/configuration.h"
#include "discovery/discovery.h"
#include "discovery/registry.h"
#include "log/log.h"

namespace nmos_instrument::host {

/// Where all registrations of a process learn which registries there are: those that the settings
/// name, in the order of their preference, or else those that the discovery finds.
class RegistrySource
{
public:
    /// False if the listener is not interested any more.
    using Found = std::function<bool(const std::vector<Registry>&)>;

    RegistrySource(const RegistrationSettings& settings, const Log& log);

    /// `found` is called on any thread: after each search, whoever asked for it, and whenever the
    /// list has changed otherwise.
    void listen(Found found);

    /// Returns at once, unless the registries are named: then `found` is called before it returns.
    void search();

private:
    void tell(const std::vector<Registry>& registries);

    std::vector<Registry> named_;
    std::mutex mutex_;
    std::vector<Found> listeners_;
    std::unique_ptr<Discovery> discovery_; ///< last: it calls tell()
};

} // namespace nmos_instrument::host

#endif
