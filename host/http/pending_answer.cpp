// SPDX-License-Identifier: Apache-2.0

#include "http/pending_answer.h"

#include <exception>
#include <optional>
#include <string>
#include <utility>

#include <microhttpd.h>

#include "http/error_response.h"

namespace nmos_instrument::host {

void PendingAnswer::give(HttpResponse response)
{
    const std::lock_guard lock(mutex_);
    if (given_ || connection_ == nullptr)
        return;
    response_ = std::move(response);
    end_wait();
}

void PendingAnswer::give_up(int status, const char* error, const char* debug) noexcept
{
    try {
        give(error_response(status, error,
                            debug == nullptr ? std::nullopt : std::optional<std::string>(debug)));
    } catch (const std::exception&) {
        const std::lock_guard lock(mutex_);
        if (!given_ && connection_ != nullptr)
            end_wait();
    }
}

void PendingAnswer::end_wait()
{
    given_ = true;
    if (std::exchange(suspended_, false)) {
        MHD_resume_connection(connection_);
        loop_.wake();
    }
}

bool PendingAnswer::is_given()
{
    const std::lock_guard lock(mutex_);
    return given_;
}

std::optional<HttpResponse> PendingAnswer::take()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(response_, std::nullopt);
}

PendingAnswer::Taken PendingAnswer::take_or_suspend()
{
    // Under the lock, because an answer between the check and the suspension would resume nothing,
    // and the connection would sleep for ever.
    const std::lock_guard lock(mutex_);
    if (!response_ && !given_) {
        suspended_ = true;
        MHD_suspend_connection(connection_);
    }
    return {std::exchange(response_, std::nullopt), suspended_};
}

void PendingAnswer::end()
{
    const std::lock_guard lock(mutex_);
    connection_ = nullptr;
}

} // namespace nmos_instrument::host
