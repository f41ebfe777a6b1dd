// SPDX-License-Identifier: Apache-2.0

#include "registration/registry_source.h"

#include <new>
#include <string>
#include <utility>

namespace nmos_instrument::host {
namespace {

/// Without memory a listener misses a list, and asks again later.
bool is_interested(const RegistrySource::Found& found,
                   const std::vector<Registry>& registries) noexcept
{
    try {
        return found(registries);
    } catch (const std::bad_alloc&) {
        return true;
    }
}

} // namespace

RegistrySource::RegistrySource(const RegistrationSettings& settings, const Log& log)
{
    int place = 0;
    for (const std::string& url : settings.registries)
        named_.push_back({url, "", place++, "named"});
    if (named_.empty())
        discovery_ = std::make_unique<Discovery>(
            DiscoveryOptions{settings.dns_domain.value_or(""), settings.development_registries},
            log, [this](const std::vector<Registry>& found) { tell(found); });
}

void RegistrySource::listen(Found found)
{
    const std::lock_guard lock(mutex_);
    listeners_.push_back(std::move(found));
}

void RegistrySource::search()
{
    if (discovery_)
        discovery_->search();
    else
        tell(named_);
}

void RegistrySource::tell(const std::vector<Registry>& registries)
{
    const std::lock_guard lock(mutex_);
    std::erase_if(listeners_,
                  [&](const Found& found) { return !is_interested(found, registries); });
}

} // namespace nmos_instrument::host
