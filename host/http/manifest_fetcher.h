// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_MANIFEST_FETCHER_H
#define NMOS_INSTRUMENT_HOST_HTTP_MANIFEST_FETCHER_H

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "http/client.h"
#include "http/manifest_hosts.h"

namespace nmos_instrument::host {

struct FetchedManifest
{
    enum class Result
    {
        fetched,
        failed,
        too_many ///< manifests are being fetched, of this client or of all
    };

    Result result = Result::failed;
    std::string content; ///< if it was fetched
    std::string why;     ///< if it was not; for the log only: it says what is where in the network
};

/// Needs no memory if it has to.
FetchedManifest failed_because(const char* why) noexcept;

/// Fetches the SDP files of other senders by HTTP, all on the thread of the HTTP client. A file may
/// have up to 1 MiB, take up to 2 seconds, and be up to two redirects away; all by http or https
/// only, and from the given hosts only.
class ManifestFetcher
{
public:
    /// How many fetches may run at once; each costs a socket.
    static constexpr std::size_t limit = 64;
    static constexpr std::size_t limit_for_one_client = 4;

    using Receive = std::function<void(FetchedManifest)>;

    /// The client must outlive it.
    ManifestFetcher(HttpClient& client, ManifestHosts hosts);

    /// Running fetches are given up, with a reason. When it returns, nobody is called any more. It
    /// must not be called on the client's thread.
    ~ManifestFetcher();

    ManifestFetcher(const ManifestFetcher&) = delete;
    ManifestFetcher& operator=(const ManifestFetcher&) = delete;

    /// Calls `receive` once: on the client's thread, at once, or when the fetcher ends. `client`:
    /// who asks for it. What `receive` throws is swallowed.
    void fetch(const std::string& url, const std::string& client, Receive receive);

    /// Fetches that begin from now on are from these hosts only.
    void allow(ManifestHosts hosts);

private:
    class Fetches;

    HttpClient& client_;
    const std::shared_ptr<Fetches> fetches_; ///< with the transfers, which may last longer
};

} // namespace nmos_instrument::host

#endif
