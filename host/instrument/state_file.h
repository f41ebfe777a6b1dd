// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_STATE_FILE_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_STATE_FILE_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "instrument/file_writer.h"
#include "instrument/instrument.h"
#include "instrument/replaced_file.h"
#include "log/log.h"

namespace nmos_instrument::host {

/// How patient a StateFile is.
struct StateFilePatience
{
    std::chrono::milliseconds write{5'000}; ///< then the disk hangs, and nobody waits any longer
    std::chrono::milliseconds end{5'000};   ///< then finish() gives up
    std::chrono::milliseconds first_pause{100}; ///< before a write is tried again; it doubles
    std::chrono::milliseconds longest_pause{10'000};
};

/// Keeps the state file up to date, on its own thread: changes that arrive while it writes are
/// saved together next time. What could not be written is tried again until it is.
class StateFile
{
public:
    /// Called with why the state is not saved, empty if it is.
    using Then = std::function<void(const std::string& trouble)>;

    /// Writes the file for the first time. Throws std::runtime_error if it cannot be written.
    StateFile(ReplacedFile file, Instrument& instrument, Log log, StateFilePatience patience = {});

    /// As finish().
    ~StateFile();

    StateFile(const StateFile&) = delete;
    StateFile& operator=(const StateFile&) = delete;

    /// Call it when the state has changed.
    void changed();

    /// Calls `then` when all changes so far are in the file, when writing has failed, or when it
    /// takes too long. Calls it at once, or later from the thread of the state file.
    void when_saved(Then then);

    /// Why the state cannot be saved: the last write failed, or hangs. Empty if all is well. As long
    /// as there is trouble, nothing should change, because it might be lost.
    std::string trouble();

    /// Writes the last changes, and ends. True if all of them are in the file; otherwise the log
    /// says why. There must be no changes any more.
    bool finish();

private:
    using Clock = std::chrono::steady_clock;

    struct Waiting
    {
        std::uint64_t changes;
        Clock::time_point deadline;
        Then then;
    };

    void run();
    void save();
    std::string wait_for_writer();
    bool gives_up();
    void look_at_deadlines(Clock::time_point write_deadline);
    void saved(std::uint64_t changes);
    void not_saved(std::string trouble);
    std::vector<Waiting> take_waiting(std::uint64_t changes);

    Instrument& instrument_;
    const Log log_;
    const StateFilePatience patience_;
    FileWriter writer_;               ///< used by the thread only
    std::chrono::milliseconds pause_; ///< after the next failure; used by the thread only
    std::mutex mutex_;
    std::condition_variable wake_up_;
    std::uint64_t changes_ = 0; ///< so far
    std::uint64_t saved_ = 0;   ///< how many of them are in the file
    bool ends_ = false;
    Clock::time_point end_deadline_;
    Clock::time_point next_try_;
    std::string trouble_;
    std::vector<Waiting> waiting_; ///< in the order of their changes; empty while there is trouble
    std::thread thread_;           ///< last: it uses the members above
};

} // namespace nmos_instrument::host

#endif
