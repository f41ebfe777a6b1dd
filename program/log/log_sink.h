// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_LOG_LOG_SINK_H
#define NMOS_INSTRUMENT_PROGRAM_LOG_LOG_SINK_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include <spdlog/async.h>
#include <spdlog/formatter.h>
#include <spdlog/sinks/sink.h>

#include "log/patient_output.h"

namespace nmos_instrument::program {

/// Writes the lines of the log, on the one thread of the log's pool. Every line is one line of
/// visible ASCII, whatever a client, a file name or another library put into it.
class LogSink final : public spdlog::sinks::sink
{
public:
    /// `queue` is the pool in front of the sink.
    LogSink(int descriptor, spdlog::details::thread_pool& queue);

    void log(const spdlog::details::log_msg& message) override;
    void flush() override {}
    void set_pattern(const std::string& pattern) override;
    void set_formatter(std::unique_ptr<spdlog::formatter> formatter) override;

    /// Counts a line that was lost before it came here. Any thread may call it.
    void lose_line() { ++lost_; }

    void give_up_at(PatientOutput::Clock::time_point time) { output_.give_up_at(time); }

private:
    void write(const spdlog::details::log_msg& message);
    void say_what_was_lost();

    spdlog::details::thread_pool& queue_;
    PatientOutput output_;
    std::unique_ptr<spdlog::formatter> formatter_;
    std::atomic<std::uint64_t> lost_{0};
    std::uint64_t said_ = 0; ///< how many of the lost lines the log has told of
};

} // namespace nmos_instrument::program

#endif
