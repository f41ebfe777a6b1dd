// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_FILE_WRITER_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_FILE_WRITER_H

#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <thread>

#include "instrument/replaced_file.h"

namespace nmos_instrument::host {

/// Writes a file, each time on a thread of its own. A disk that hangs holds up that thread and
/// nobody else: at the end it is left behind, and it owns all that it touches.
class FileWriter
{
public:
    explicit FileWriter(ReplacedFile file) : file_(std::move(file)) {}
    ~FileWriter();

    FileWriter(const FileWriter&) = delete;
    FileWriter& operator=(const FileWriter&) = delete;

    const ReplacedFile& file() const { return file_; }

    /// Starts to replace the content of the file by `text`; the last write must have ended. Throws
    /// std::system_error if there is no thread for it.
    void start(std::string text);

    /// True from the start of a write until its outcome has been given.
    bool is_busy() const { return thread_.joinable(); }

    /// Waits for the end of the write, at most this long. Nothing if it has not ended; otherwise
    /// why it failed, empty if it did not.
    std::optional<std::string> outcome_within(std::chrono::milliseconds time);

private:
    const ReplacedFile file_;
    std::future<void> outcome_;
    std::thread thread_;
};

/// The text of the exception that is being handled. It works even when there is no free memory.
std::string reason_of_current_exception();

} // namespace nmos_instrument::host

#endif
