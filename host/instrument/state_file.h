// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_STATE_FILE_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_STATE_FILE_H

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "instrument/instrument.h"

namespace nmos_instrument::host {

/// Replaces the content of the file by `text`. A crash at any moment leaves the old or the new
/// content, because the text is written to another file, synced, and renamed. Throws
/// std::system_error.
void replace_file(const std::string& file, const std::string& text);

/// Restores the state in the file to the instrument. A missing file means a first start; a damaged
/// one is renamed, and the log says so. Throws UnreadableFile.
void restore_from(const std::string& file, Instrument& instrument);

/// Keeps the state file up to date, on its own thread: changes that arrive while it writes are
/// saved together next time.
class StateFile
{
public:
    /// Writes the file for the first time. Throws std::runtime_error if it cannot be written.
    StateFile(std::string file, Instrument& instrument);

    /// Writes the last changes.
    ~StateFile();

    StateFile(const StateFile&) = delete;
    StateFile& operator=(const StateFile&) = delete;

    /// Call it when the state has changed.
    void changed();

    /// Calls `then` when all changes so far are in the file, or when writing has failed, which is
    /// logged. Calls it at once, or later from the thread that writes.
    void when_saved(std::function<void()> then);

    /// Why the last write failed; empty if it did not.
    std::string trouble();

private:
    struct Waiting
    {
        std::uint64_t changes;
        std::function<void()> then;
    };

    void run();
    std::string write();
    std::vector<Waiting> take_saved();

    const std::string file_;
    Instrument& instrument_;
    std::mutex mutex_;
    std::condition_variable wake_up_;
    std::uint64_t changes_ = 0; ///< so far
    std::uint64_t saved_ = 0;   ///< how many of them are in the file
    bool ends_ = false;
    std::string trouble_;
    std::vector<Waiting> waiting_; ///< in the order of their changes
    std::thread thread_;           ///< last: it uses the members above
};

} // namespace nmos_instrument::host

#endif
