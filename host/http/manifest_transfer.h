// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_MANIFEST_TRANSFER_H
#define NMOS_INSTRUMENT_HOST_HTTP_MANIFEST_TRANSFER_H

#include <functional>
#include <memory>
#include <string>

#include <curl/curl.h>

#include "http/client_places.h"
#include "http/client_transfer.h"
#include "http/easy_handle.h"
#include "http/manifest_fetcher.h"
#include "http/manifest_hosts.h"

namespace nmos_instrument::host {

/// One GET of a manifest, within our limits: which hosts, how long, how much.
class ManifestTransfer : public ClientTransfer
{
public:
    /// Called once. It must not throw.
    using Finish = std::function<void(FetchedManifest)>;

    /// `lookups` are for the client's thread only.
    ManifestTransfer(std::string url, std::string client,
                     std::shared_ptr<const ManifestHosts> hosts,
                     std::shared_ptr<NameLookups> lookups, Finish finish);
    ~ManifestTransfer() override;

    CURL* begin() override;
    void end(CURLcode result) override;
    void give_up(const char* why) noexcept override;

private:
    std::size_t take(const char* bytes, std::size_t length);
    bool may_resolve();
    curl_socket_t open_socket(const curl_sockaddr& address);
    void end_lookup() noexcept;
    std::string failure(CURLcode result);

    const std::string url_;
    std::string client_;
    const std::shared_ptr<const ManifestHosts> hosts_;
    const std::shared_ptr<NameLookups> lookups_;
    const Finish finish_;
    std::string content_;
    std::string refused_address_;
    bool too_long_ = false;
    bool looks_up_ = false; ///< has a place among the lookups
    bool too_many_lookups_ = false;
    EasyHandle handle_; ///< the last member, since it uses the others
};

} // namespace nmos_instrument::host

#endif
