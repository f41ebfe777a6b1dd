// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ADVERTISEMENT_ADVERTISEMENT_H
#define NMOS_INSTRUMENT_HOST_ADVERTISEMENT_ADVERTISEMENT_H

#include <memory>
#include <string>

#include "configuration/configuration.h"
#include "instrument/instrument.h"
#include "log/log.h"

namespace nmos_instrument::host {

struct AdvertisementStatus
{
    std::string state;    ///< in words: "advertised", "withdrawn while registered"
    bool present = false; ///< the service file is there
    std::string file;     ///< empty: there is none
    std::string trouble;  ///< why the file is not as it should be; empty: it is
};

/// Advertises an instrument to its neighbours by mDNS: keeps Avahi's service file as it should be.
/// Any thread may call it; nothing waits for the disk.
class Advertisement
{
public:
    /// Without a service file in the settings it does nothing.
    Advertisement(Instrument& instrument, AdvertisementSettings settings, Log log);

    /// Withdraws it.
    ~Advertisement();

    Advertisement(const Advertisement&) = delete;
    Advertisement& operator=(const Advertisement&) = delete;

    /// Call it when resources of the instrument may have changed, or its address.
    void changed();

    /// Call it when the node is registered, and when it turns out that there is no registry. Before
    /// the first call nobody knows, and only "always" advertises.
    void has_registry(bool yes);

    AdvertisementStatus status() const;

private:
    class File;
    std::unique_ptr<File> file_;
};

} // namespace nmos_instrument::host

#endif
