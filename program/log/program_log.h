// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_LOG_PROGRAM_LOG_H
#define NMOS_INSTRUMENT_PROGRAM_LOG_PROGRAM_LOG_H

#include <memory>
#include <string>

#include <spdlog/async.h>

#include "log/log_sink.h"

namespace nmos_instrument::program {

/// The log of the program on standard error, for as long as this lives. A thread of its own writes
/// it, so nothing waits for whoever reads it; if nobody does, the oldest lines are lost.
class ProgramLog
{
public:
    /// `level` is the least important one that is written, such as "info".
    explicit ProgramLog(const std::string& level);

    /// Writes what is left, if it can be written within a second.
    ~ProgramLog();

    ProgramLog(const ProgramLog&) = delete;
    ProgramLog& operator=(const ProgramLog&) = delete;

private:
    std::shared_ptr<spdlog::details::thread_pool> queue_;
    std::shared_ptr<LogSink> sink_;
};

} // namespace nmos_instrument::program

#endif
