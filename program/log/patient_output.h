// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_LOG_PATIENT_OUTPUT_H
#define NMOS_INSTRUMENT_PROGRAM_LOG_PATIENT_OUTPUT_H

#include <atomic>
#include <chrono>
#include <cstddef>
#include <string_view>

namespace nmos_instrument::program {

/// Writes to a descriptor that may have a reader who stops reading: a pipe, a terminal, a socket.
/// It waits for the reader where it can be told to give up, and never in write() itself.
class PatientOutput
{
public:
    using Clock = std::chrono::steady_clock;

    explicit PatientOutput(int descriptor);
    ~PatientOutput();

    PatientOutput(const PatientOutput&) = delete;
    PatientOutput& operator=(const PatientOutput&) = delete;

    /// False if not all of `text` could be written: the reader is gone, or the time to give up has
    /// come. One thread at a time.
    bool write(std::string_view text);

    /// From this time on nothing is waited for. Any thread may call it, during write() too.
    void give_up_at(Clock::time_point time) { give_up_at_ = time; }

private:
    bool wait_until_writable() const;
    long write_some(std::string_view piece) const;

    const int given_;
    const int own_; ///< -1: there is none
    const bool is_socket_;
    std::atomic<Clock::time_point> give_up_at_{Clock::time_point::max()};
};

} // namespace nmos_instrument::program

#endif
