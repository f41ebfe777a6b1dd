// SPDX-License-Identifier: Apache-2.0

#include "log/program_log.h"

#include <cstddef>

#include <fcntl.h>
#include <spdlog/async.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include "http/all_signals_blocked.h"

namespace nmos_instrument::program {
namespace {

constexpr std::size_t most_lines_in_queue = 1000;

/// Whoever started us may have closed them. The next file that is opened would take their place,
/// and the log would be written into it.
void fill_standard_descriptors()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) < 0)
            static_cast<void>(open("/dev/null", O_RDWR)); // takes the lowest number that is free
    }
}

std::shared_ptr<spdlog::details::thread_pool> start_queue()
{
    const host::AllSignalsBlocked inherited_by_thread;
    return std::make_shared<spdlog::details::thread_pool>(most_lines_in_queue, 1);
}

} // namespace

ProgramLog::ProgramLog(const std::string& level)
{
    fill_standard_descriptors();
    queue_ = start_queue();
    sink_ = std::make_shared<LogSink>(STDERR_FILENO, *queue_);
    const auto logger = std::make_shared<spdlog::async_logger>(
        "nmos-instrument", sink_, queue_, spdlog::async_overflow_policy::overrun_oldest);
    logger->set_level(spdlog::level::from_str(level));
    // A line for which there is no memory is counted. spdlog would write to standard error itself.
    logger->set_error_handler([sink = sink_](const std::string&) { sink->lose_line(); });
    spdlog::set_default_logger(logger);
}

ProgramLog::~ProgramLog()
{
    sink_->give_up_at(PatientOutput::Clock::now() + std::chrono::seconds(1));
    queue_.reset(); // waits until its thread has written or given up the last line
}

} // namespace nmos_instrument::program
