// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_CLIENT_TRANSFER_H
#define NMOS_INSTRUMENT_HOST_HTTP_CLIENT_TRANSFER_H

#include <curl/curl.h>

namespace nmos_instrument::host {

/// One request of an HttpClient, from its start to its end. All of it is called on the client's
/// thread; exactly one of end() and give_up() is called, once, and the transfer is destroyed then.
class ClientTransfer
{
public:
    ClientTransfer() = default;
    virtual ~ClientTransfer() = default;
    ClientTransfer(const ClientTransfer&) = delete;
    ClientTransfer& operator=(const ClientTransfer&) = delete;

    /// Makes the handle with all its options. If it throws, the transfer is given up.
    virtual CURL* begin() = 0;

    /// libcurl has ended it. If it throws, the transfer is given up.
    virtual void end(CURLcode result) = 0;

    /// It is over before libcurl has ended it. `why` is for people.
    virtual void give_up(const char* why) noexcept = 0;
};

} // namespace nmos_instrument::host

#endif
