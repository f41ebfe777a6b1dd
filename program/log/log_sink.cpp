// SPDX-License-Identifier: Apache-2.0

#include "log/log_sink.h"

#include <string_view>
#include <utility>

#include <spdlog/pattern_formatter.h>

#include "text/quoted_text.h"

namespace nmos_instrument::program {

LogSink::LogSink(int descriptor, spdlog::details::thread_pool& queue)
    : queue_(queue),
      output_(descriptor),
      formatter_(std::make_unique<spdlog::pattern_formatter>("%Y-%m-%dT%H:%M:%S.%eZ %l: %v",
                                                             spdlog::pattern_time_type::utc, "\n"))
{}

/// An exception would end the thread of the log.
void LogSink::log(const spdlog::details::log_msg& message)
{
    try {
        say_what_was_lost();
        write(message);
    } catch (...) {
        lose_line();
    }
}

void LogSink::set_pattern(const std::string& pattern)
{
    set_formatter(
        std::make_unique<spdlog::pattern_formatter>(pattern, spdlog::pattern_time_type::utc, "\n"));
}

void LogSink::set_formatter(std::unique_ptr<spdlog::formatter> formatter)
{
    formatter_ = std::move(formatter);
}

void LogSink::write(const spdlog::details::log_msg& message)
{
    spdlog::memory_buf_t formatted;
    formatter_->format(message, formatted);
    const std::string_view line(formatted.data(), formatted.size() - 1); // without the line break
    if (!output_.write(host::printable(line) + '\n'))
        lose_line();
}

/// Before the next line that can be written: that is where the lost ones are missing.
void LogSink::say_what_was_lost()
{
    const std::uint64_t lost = lost_ + queue_.overrun_counter();
    if (lost == said_)
        return;
    const std::string line = std::to_string(lost - said_) +
                             " lines of the log are lost, because nobody read them or they could "
                             "not be written";
    const std::uint64_t lost_before = lost_;
    write({spdlog::string_view_t(), spdlog::level::warn, line});
    if (lost_ == lost_before)
        said_ = lost;
}

} // namespace nmos_instrument::program
