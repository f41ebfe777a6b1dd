// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_REQUEST_TRANSFER_H
#define NMOS_INSTRUMENT_HOST_HTTP_REQUEST_TRANSFER_H

#include <array>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include <curl/curl.h>

#include "http/client.h"
#include "http/client_transfer.h"
#include "http/easy_handle.h"
#include "log/log.h"

namespace nmos_instrument::host {

/// A ClientRequest on its way, and its answer.
class RequestTransfer : public ClientTransfer
{
public:
    RequestTransfer(ClientRequest request, HttpClient::Receive receive, Log log);

    CURL* begin() override;
    void end(CURLcode result) override;
    void give_up(const char* why) noexcept override;

private:
    struct ListDeleter
    {
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };
    using List = std::unique_ptr<curl_slist, ListDeleter>;

    static void add(List& list, const char* text);
    void set_method();
    void set_headers();
    void set_address();
    std::size_t take(const char* bytes, std::size_t length);
    std::string failure(CURLcode result) const;
    void deliver() noexcept;

    const ClientRequest request_;
    const HttpClient::Receive receive_;
    const Log log_;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    ClientAnswer answer_;
    std::size_t received_ = 0; ///< of the body
    std::array<char, CURL_ERROR_SIZE> error_{};
    List headers_;
    List connect_to_;
    EasyHandle handle_; ///< the last member, since it uses the others
};

} // namespace nmos_instrument::host

#endif
