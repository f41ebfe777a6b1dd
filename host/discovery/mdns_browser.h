// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_DISCOVERY_MDNS_BROWSER_H
#define NMOS_INSTRUMENT_HOST_DISCOVERY_MDNS_BROWSER_H

#include <functional>
#include <memory>
#include <vector>

#include "discovery/advertised_registry.h"
#include "log/log.h"

namespace nmos_instrument::host {

/// Knows the registries that the machine's avahi-daemon hears of by mDNS (RFC 6762), as long as it
/// exists. A build without libavahi-client knows none.
class MdnsBrowser
{
public:
    using Changed = std::function<void()>;

    /// `changed` is called on a thread of the browser, with a lock held: it must neither wait nor
    /// call the browser. It is also called when has_looked() becomes true.
    MdnsBrowser(Changed changed, Log log);

    /// `changed` is not called any more then. It takes half a second at most, even if avahi-daemon
    /// hangs.
    ~MdnsBrowser();

    MdnsBrowser(const MdnsBrowser&) = delete;
    MdnsBrowser& operator=(const MdnsBrowser&) = delete;

    std::vector<AdvertisedRegistry> found() const;

    /// Whoever answers at once is known, or there is no avahi-daemon to ask.
    bool has_looked() const;

private:
    class Thread;
    std::unique_ptr<Thread> thread_;
};

} // namespace nmos_instrument::host

#endif
