// SPDX-License-Identifier: Apache-2.0

#include "advertisement/file_keeper.h"

#include <utility>

#include "advertisement/service_file.h"
#include "instrument/file_writer.h"

namespace nmos_instrument::host {
namespace {

/// From the end of one to the next. Every write makes avahi-daemon tell the network, and it does not
/// notice a second one if the times of both begin with the same second; file systems give them the
/// time of the last tick, some milliseconds ago.
constexpr std::chrono::milliseconds between_writes{1'100};

constexpr std::chrono::seconds until_next_try{10};

} // namespace

FileKeeper::FileKeeper(std::string path, Wanted wanted, Log log)
    : path_(std::move(path)), log_(std::move(log)), wanted_(std::move(wanted))
{}

void FileKeeper::run() noexcept
{
    Lock lock(mutex_);
    while (wait_for_work(lock)) {
        try {
            keep(lock, wanted_());
        } catch (...) {
            note_failure("written", reason_of_current_exception());
        }
    }
    keep(lock, std::nullopt);
    has_ended_ = true;
    ended_.notify_all();
}

bool FileKeeper::wait_for_work(Lock& lock)
{
    woken_.wait_until(lock, last_write_ + between_writes, [this] { return ends_; });
    const auto has_work = [this] { return ends_ || may_differ_; };
    if (trouble_.empty())
        woken_.wait(lock, has_work);
    else
        woken_.wait_until(lock, last_write_ + until_next_try, has_work);
    may_differ_ = false;
    return !ends_;
}

void FileKeeper::keep(Lock& lock, std::optional<std::string> wanted) noexcept
{
    if (is_known_ && text_ == wanted)
        return;
    const char* const to_be_done = wanted ? "written" : "removed";
    lock.unlock();
    try {
        if (wanted)
            replace_service_file(path_, *wanted);
        else
            remove_service_file(path_);
        lock.lock();
        note_success(std::move(wanted));
    } catch (...) {
        lock.lock();
        note_failure(to_be_done, reason_of_current_exception());
    }
}

void FileKeeper::note_success(std::optional<std::string> wanted) noexcept
{
    last_write_ = Clock::now();
    const bool was_present = text_.has_value();
    text_ = std::move(wanted);
    is_known_ = true;
    trouble_.clear();
    if (text_.has_value() == was_present || ends_)
        return;
    if (was_present)
        log_.info("{}: withdrawn", path_);
    else
        log_.info("{}: advertised to the neighbours", path_);
}

void FileKeeper::note_failure(const char* to_be_done, std::string reason) noexcept
{
    last_write_ = Clock::now();
    const bool is_new = trouble_.empty();
    trouble_ = std::move(reason);
    if (!is_new || ends_)
        return;
    log_.warning("{}: cannot be {}: {}; it is tried again every {} s", path_, to_be_done, trouble_,
                 until_next_try.count());
}

void FileKeeper::look_again() noexcept
{
    const std::lock_guard lock(mutex_);
    may_differ_ = true;
    woken_.notify_all();
}

bool FileKeeper::end(std::chrono::milliseconds at_most)
{
    Lock lock(mutex_);
    ends_ = true;
    wanted_ = nullptr;
    woken_.notify_all();
    return ended_.wait_for(lock, at_most, [this] { return has_ended_; });
}

bool FileKeeper::is_present() const
{
    const std::lock_guard lock(mutex_);
    return text_.has_value();
}

std::string FileKeeper::trouble() const
{
    const std::lock_guard lock(mutex_);
    return trouble_;
}

} // namespace nmos_instrument::host
