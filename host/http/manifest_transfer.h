// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_MANIFEST_TRANSFER_H
#define NMOS_INSTRUMENT_HOST_HTTP_MANIFEST_TRANSFER_H

#include <memory>
#include <string>

#include <curl/curl.h>

#include "http/client_places.h"
#include "http/manifest_hosts.h"

namespace nmos_instrument::host {

/// One GET by libcurl, within our limits: which hosts, how long, how much.
class ManifestTransfer
{
public:
    /// Throws if it cannot be set up. `hosts` and `lookups` must outlive it.
    ManifestTransfer(const std::string& url, std::string client, const ManifestHosts& hosts,
                     NameLookups& lookups);
    ~ManifestTransfer();
    ManifestTransfer(const ManifestTransfer&) = delete;
    ManifestTransfer& operator=(const ManifestTransfer&) = delete;

    CURL* handle() const { return handle_.get(); }

    /// Of a transfer that libcurl has ended: why there is no manifest, or "".
    std::string failure(CURLcode result);

    /// True if it failed because of what its client asked for before.
    bool too_many_lookups() const { return too_many_lookups_; }

    std::string& content() { return content_; }

private:
    void set_options(const std::string& url);
    std::size_t take(const char* bytes, std::size_t length);
    bool may_resolve();
    curl_socket_t open_socket(const curl_sockaddr& address);
    void end_lookup() noexcept;

    struct CleanUp
    {
        void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    };

    std::string client_;
    const ManifestHosts& hosts_;
    NameLookups& lookups_;
    std::string content_;
    std::string refused_address_;
    bool too_long_ = false;
    bool looks_up_ = false; ///< has a place among the lookups
    bool too_many_lookups_ = false;
    std::unique_ptr<CURL, CleanUp> handle_;
};

} // namespace nmos_instrument::host

#endif
