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

/// Puts `text` in place of the file, so that a crash at any moment leaves the old or the new
/// content: written beside it, synced, renamed. Throws std::system_error.
void replace_file(const std::string& file, const std::string& text);

/// Takes the state of the file over into the instrument. A missing file is a first start; a damaged
/// one is set aside under another name, with a line in the log. Throws UnreadableFile.
void restore_from(const std::string& file, Instrument& instrument);

/// Keeps the state file up to date, on a thread of its own: changes that come while it writes go
/// into the next writing together.
class StateFile
{
public:
    /// Writes the file for the first time. Throws std::system_error when it cannot.
    StateFile(std::string file, Instrument& instrument);

    /// Writes what is left to write.
    ~StateFile();

    StateFile(const StateFile&) = delete;
    StateFile& operator=(const StateFile&) = delete;

    /// To be called when the state has changed.
    void changed();

    /// Calls `then` once all changes so far are in the file, or could not be written, which is
    /// logged: at once, or later from the thread that writes.
    void when_saved(std::function<void()> then);

    /// Why the last writing failed; empty when it did not.
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
    std::uint64_t saved_ = 0;   ///< of them, how many are in the file
    bool ends_ = false;
    std::string trouble_;
    std::vector<Waiting> waiting_; ///< in the order of their changes
    std::thread thread_;           ///< last: it uses the members above
};

} // namespace nmos_instrument::host

#endif
