// SPDX-License-Identifier: Apache-2.0

#include "http/streamed_answer.h"

#include <optional>

#include <microhttpd.h>

namespace nmos_instrument::host {

std::size_t StreamedAnswer::take(char* to, std::size_t most)
{
    const std::size_t size = piece_.copy(to, most, taken_);
    taken_ += size;
    if (left() == 0) {
        std::string().swap(piece_); // its memory goes too
        taken_ = 0;
    }
    return size;
}

StreamedAnswer::Next StreamedAnswer::ask()
{
    std::optional<std::string> piece = stream_->next();
    if (!piece)
        return Next::end;
    if (piece->empty())
        return suspend() ? Next::later : Next::end;
    piece_ = std::move(*piece);
    return Next::piece;
}

bool StreamedAnswer::is_ending()
{
    const std::lock_guard lock(mutex_);
    return ending_;
}

bool StreamedAnswer::suspend()
{
    // Under the lock, because end_soon() between the check and the suspension would resume nothing,
    // and libmicrohttpd aborts the process if it is stopped with suspended connections.
    const std::lock_guard lock(mutex_);
    if (ending_)
        return false;
    suspended_ = true;
    MHD_suspend_connection(connection_);
    return true;
}

void StreamedAnswer::resume() noexcept
{
    // Only a suspended connection is sure to exist: nothing ends it until it is resumed.
    if (std::exchange(suspended_, false)) {
        MHD_resume_connection(connection_);
        loop_.wake();
    }
}

void StreamedAnswer::ask_again() noexcept
{
    const std::lock_guard lock(mutex_);
    resume();
}

void StreamedAnswer::end_soon() noexcept
{
    const std::lock_guard lock(mutex_);
    ending_ = true;
    resume();
}

} // namespace nmos_instrument::host
