// SPDX-License-Identifier: Apache-2.0

#include "log/log.h"

#include <mutex>
#include <new>

#include <fmt/format.h>

namespace nmos_instrument::host {

struct Log::Destination
{
    Destination(LogLevel the_least, Write the_write) : least(the_least), write(std::move(the_write))
    {}

    const LogLevel least;
    std::recursive_mutex mutex; ///< of what follows; held by a call of `write` that logs itself
    Write write;                ///< empty: nobody reads any more
    bool is_writing = false;
    bool has_ended = false;
};

Log::Log(LogLevel least, Write write)
    : destination_(std::make_shared<Destination>(least, std::move(write)))
{}

bool Log::wants(LogLevel level) const noexcept
{
    return destination_ != nullptr && level >= destination_->least;
}

void Log::line(LogLevel level, std::string_view text) const noexcept
{
    if (!wants(level))
        return;
    Destination& to = *destination_;
    const std::lock_guard lock(to.mutex);
    if (to.is_writing || to.has_ended || !to.write)
        return;
    to.is_writing = true;
    try {
        to.write(level, text);
    } catch (...) {
        // Whoever had something to say goes on.
    }
    to.is_writing = false;
}

void Log::make_line(LogLevel level, fmt::string_view format, fmt::format_args values) const noexcept
{
    if (!wants(level))
        return;
    try {
        fmt::memory_buffer text; // the first 500 bytes need no memory
        fmt::vformat_to(fmt::appender(text), format, values);
        line(level, {text.data(), text.size()});
    } catch (const std::bad_alloc&) {
        line(level, "a line of the log was lost: no memory");
    } catch (...) {
        line(level, "a line of the log was lost: one of its values cannot be written");
    }
}

void Log::end() noexcept
{
    if (destination_ == nullptr)
        return;
    Write last; // goes away without the lock
    const std::lock_guard lock(destination_->mutex);
    destination_->has_ended = true;
    if (!destination_->is_writing)
        last.swap(destination_->write);
}

} // namespace nmos_instrument::host
