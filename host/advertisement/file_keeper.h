// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_ADVERTISEMENT_FILE_KEEPER_H
#define NMOS_INSTRUMENT_HOST_ADVERTISEMENT_FILE_KEEPER_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "log/log.h"

namespace nmos_instrument::host {

/// Keeps a service file as it should be, on a thread that its owner starts for run(). A disk that
/// hangs holds up that thread and nobody else. It owns all that it touches, so that it can be left
/// behind.
class FileKeeper
{
public:
    /// The text that the file should have; nothing if there should be no file. Called under the
    /// keeper's lock, and not any more after end().
    using Wanted = std::function<std::optional<std::string>()>;

    FileKeeper(std::string path, Wanted wanted, Log log);

    FileKeeper(const FileKeeper&) = delete;
    FileKeeper& operator=(const FileKeeper&) = delete;

    /// Writes and removes the file until end(), and removes it then.
    void run() noexcept;

    /// Call it when `wanted` may give something else than before. The file follows at once, but
    /// more than a second after its last change.
    void look_again() noexcept;

    /// Ends run(); false if that takes longer.
    bool end(std::chrono::milliseconds at_most);

    bool is_present() const;

    /// Why the file is not as it should be; empty if it is.
    std::string trouble() const;

private:
    using Clock = std::chrono::steady_clock;
    using Lock = std::unique_lock<std::mutex>;

    bool wait_for_work(Lock& lock);
    void keep(Lock& lock, std::optional<std::string> wanted) noexcept;
    void note_success(std::optional<std::string> wanted) noexcept;
    void note_failure(const char* to_be_done, std::string reason) noexcept;

    const std::string path_;
    const Log log_;

    mutable std::mutex mutex_;
    Wanted wanted_;
    std::condition_variable woken_;
    std::condition_variable ended_;
    bool may_differ_ = true; ///< from what is wanted
    bool ends_ = false;
    bool has_ended_ = false;
    Clock::time_point last_write_{};
    bool is_known_ = false;           ///< what is there
    std::optional<std::string> text_; ///< of the file that is there
    std::string trouble_;
};

} // namespace nmos_instrument::host

#endif
