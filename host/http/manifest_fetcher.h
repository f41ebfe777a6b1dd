// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_MANIFEST_FETCHER_H
#define NMOS_INSTRUMENT_HOST_HTTP_MANIFEST_FETCHER_H

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

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

/// Fetches the SDP files of other senders by HTTP, all on one thread of its own. A file may have up
/// to 1 MiB, take up to 2 seconds, and be up to two redirects away; all by http or https only, and
/// from the given hosts only.
class ManifestFetcher
{
public:
    /// How many fetches may run at once; each costs a socket.
    static constexpr std::size_t limit = 64;
    static constexpr std::size_t limit_for_one_client = 4;

    using Receive = std::function<void(FetchedManifest)>;

    explicit ManifestFetcher(ManifestHosts hosts);

    /// Running fetches are given up, with a reason.
    ~ManifestFetcher();

    ManifestFetcher(const ManifestFetcher&) = delete;
    ManifestFetcher& operator=(const ManifestFetcher&) = delete;

    /// Calls `receive` once, from the fetcher's thread or at once. `client`: who asks for it.
    void fetch(const std::string& url, const std::string& client, Receive receive);

private:
    class Worker;
    std::unique_ptr<Worker> worker_;
};

} // namespace nmos_instrument::host

#endif
