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
    std::string why; ///< when it was not fetched
};

/// Fetches the SDP files of other senders by HTTP, on one thread of its own for all. A file may
/// have 1 MiB and take 2 seconds and two redirects; http and https only, redirects too.
class ManifestFetcher
{
public:
    using Receive = std::function<void(FetchedManifest)>;

    ManifestFetcher();

    /// What is under way is given up, with a reason.
    ~ManifestFetcher();

    ManifestFetcher(const ManifestFetcher&) = delete;
    ManifestFetcher& operator=(const ManifestFetcher&) = delete;

    /// `receive` is called once, on the thread of the fetcher or at once.
    void fetch(const std::string& url, Receive receive);

private:
    class Worker;
    std::unique_ptr<Worker> worker_;
};

} // namespace nmos_instrument::host

#endif
