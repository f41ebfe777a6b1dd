// SPDX-License-Identifier: Apache-2.0
//
// In place of mdns_browser.cpp in a build without libavahi-client.

#include "discovery/mdns_browser.h"

namespace nmos_instrument::host {

class MdnsBrowser::Thread
{};

MdnsBrowser::MdnsBrowser(Changed /*changed*/, Log log)
{
    log.debug("this build has no mDNS");
}

MdnsBrowser::~MdnsBrowser() = default;

std::vector<AdvertisedRegistry> MdnsBrowser::found() const
{
    return {};
}

bool MdnsBrowser::has_looked() const
{
    return true;
}

} // namespace nmos_instrument::host
