// SPDX-License-Identifier: Apache-2.0

#include "http/pending_answer.h"

#include <utility>

#include <microhttpd.h>

namespace nmos_instrument::host {

void PendingAnswer::give(HttpResponse response)
{
    const std::lock_guard lock(mutex_);
    if (given_ || connection_ == nullptr)
        return;
    given_ = true;
    response_ = std::move(response);
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

std::optional<HttpResponse> PendingAnswer::take_or_suspend()
{
    // Under the lock, because an answer between the check and the suspension would resume nothing,
    // and the connection would sleep for ever.
    const std::lock_guard lock(mutex_);
    if (!response_) {
        suspended_ = true;
        MHD_suspend_connection(connection_);
    }
    return std::exchange(response_, std::nullopt);
}

void PendingAnswer::end()
{
    const std::lock_guard lock(mutex_);
    connection_ = nullptr;
}

} // namespace nmos_instrument::host
