// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_MANIFEST_FETCHER_H
#define NMOS_INSTRUMENT_HOST_HTTP_MANIFEST_FETCHER_H

#include <functional>
#include <memory>
#include <string>

namespace nmos_instrument::host {

struct FetchedManifest
{
    bool fetched = false;
    std::string content;
    std::string why; ///< if it was not fetched
};

/// Fetches the SDP files of other senders by HTTP, all on one thread of its own. A file may have up
/// to 1 MiB, take up to 2 seconds, and be up to two redirects away; all by http or https only.
class ManifestFetcher
{
public:
    using Receive = std::function<void(FetchedManifest)>;

    ManifestFetcher();

    /// Running fetches are given up, with a reason.
    ~ManifestFetcher();

    ManifestFetcher(const ManifestFetcher&) = delete;
    ManifestFetcher& operator=(const ManifestFetcher&) = delete;

    /// Calls `receive` once, from the fetcher's thread or at once.
    void fetch(const std::string& url, Receive receive);

private:
    class Worker;
    std::unique_ptr<Worker> worker_;
};

} // namespace nmos_instrument::host

#endif
