// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_REGISTRATION_REGISTRATION_CLIENT_H
#define NMOS_INSTRUMENT_HOST_REGISTRATION_REGISTRATION_CLIENT_H

#include <functional>
#include <memory>
#include <string>

#include "http/client.h"
#include "instrument/instrument.h"
#include "log/log.h"
#include "registration/registration_status.h"
#include "registration/registry_source.h"

namespace nmos_instrument::host {

/// Keeps an instrument registered. All of it runs on the thread of the HTTP client, which any
/// number of instruments share. Its functions may be called on any other thread, those that return
/// at once also on that one.
class RegistrationClient
{
public:
    struct Options
    {
        std::string ca_file{}; ///< see ClientRequest

        /// Called with true when the node is registered, with false when there is no registry; on the
        /// client's thread, so it must not wait.
        std::function<void(bool)> has_registry{};
    };

    /// What it is given must outlive it.
    RegistrationClient(HttpClient& client, RegistrySource& source, Instrument& instrument,
                       Options options, Log log);

    /// The registry is not told: call leave() before.
    ~RegistrationClient();

    RegistrationClient(const RegistrationClient&) = delete;
    RegistrationClient& operator=(const RegistrationClient&) = delete;

    /// Begins to look for a registry. Call it once, when the instrument has its listeners.
    void start();

    /// Resources may have changed. Returns at once.
    void changed() noexcept;

    /// Takes the node out of the registry. Returns when that is done, or could not be done within
    /// Registration::stop_limit.
    void leave();

    /// Returns at once.
    RegistrationStatus status() const;

private:
    class Driver;
    std::shared_ptr<Driver> driver_;
};

} // namespace nmos_instrument::host

#endif
