// SPDX-License-Identifier: Apache-2.0

#include "instrument/state_file.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

namespace nmos_instrument::host {
namespace {

std::string takes_longer_than(std::chrono::milliseconds time)
{
    return fmt::format("writing takes longer than {:g} s",
                       std::chrono::duration<double>(time).count());
}

/// Gives each its answer. One that finds no memory for it does not keep the others from theirs.
template <class Waiting>
void answer(const std::vector<Waiting>& waiting, const std::string& trouble, const Log& log)
{
    for (const Waiting& one : waiting) {
        try {
            one.then(trouble);
        } catch (const std::exception& error) {
            log.error("a change was not answered: {}", error.what());
        }
    }
}

} // namespace

StateFile::StateFile(ReplacedFile file, Instrument& instrument, Log log, StateFilePatience patience)
    : instrument_(instrument),
      log_(std::move(log)),
      patience_(patience),
      writer_(std::move(file)),
      pause_(patience.first_pause)
{
    writer_.start(write_saved_state(instrument_.saved_state()));
    const std::string trouble =
        writer_.outcome_within(patience_.write).value_or(takes_longer_than(patience_.write));
    if (!trouble.empty())
        throw std::runtime_error("state file " + writer_.file().name() +
                                 ": cannot be written: " + trouble);
    thread_ = std::thread([this] { run(); });
}

StateFile::~StateFile()
{
    finish();
}

void StateFile::changed()
{
    {
        const std::lock_guard lock(mutex_);
        ++changes_;
    }
    wake_up_.notify_one();
}

void StateFile::when_saved(Then then)
{
    std::string trouble;
    {
        const std::lock_guard lock(mutex_);
        if (saved_ < changes_) {
            if (trouble_.empty()) {
                waiting_.push_back({changes_, Clock::now() + patience_.write, std::move(then)});
                return;
            }
            trouble = trouble_;
        }
    }
    then(trouble);
}

std::string StateFile::trouble()
{
    const std::lock_guard lock(mutex_);
    return trouble_;
}

bool StateFile::finish()
{
    if (thread_.joinable()) {
        {
            const std::lock_guard lock(mutex_);
            ends_ = true;
            end_deadline_ = Clock::now() + patience_.end;
        }
        wake_up_.notify_one();
        thread_.join();
        if (saved_ < changes_)
            log_.error("the last changes are not saved in {}: {}", writer_.file().name(), trouble_);
    }
    return saved_ == changes_;
}

void StateFile::run()
{
    // At the end there is one more attempt, which begins after the end was announced.
    bool is_last = false;
    while (!is_last) {
        {
            std::unique_lock lock(mutex_);
            wake_up_.wait(lock, [this] { return saved_ < changes_ || ends_; });
            wake_up_.wait_until(lock, next_try_, [this] { return ends_; });
            is_last = ends_;
        }
        try {
            save();
        } catch (const std::exception&) {
            // Not even the log has memory. What is not saved is tried again.
        }
        // Nothing can be tried after a write that hangs.
        is_last = is_last || writer_.is_busy();
    }
}

/// Saves all changes so far, or notes why that is not possible.
void StateFile::save()
{
    std::uint64_t changes = 0;
    {
        const std::lock_guard lock(mutex_);
        if (saved_ == changes_)
            return;
        changes = changes_;
    }
    try {
        writer_.start(write_saved_state(instrument_.saved_state()));
        std::string trouble = wait_for_writer();
        if (trouble.empty())
            saved(changes);
        else
            not_saved(std::move(trouble));
    } catch (const std::exception&) {
        not_saved(reason_of_current_exception());
    }
}

/// Returns why the write failed; empty if it did not. It ends before the write only when there is
/// no time left at the end of the program.
std::string StateFile::wait_for_writer()
{
    constexpr std::chrono::milliseconds look_up_interval{50};
    const Clock::time_point deadline = Clock::now() + patience_.write;
    for (;;) {
        if (std::optional<std::string> outcome = writer_.outcome_within(look_up_interval))
            return *std::move(outcome);
        try {
            look_at_deadlines(deadline);
        } catch (const std::exception&) {
            // The next look may find the memory that this one did not.
        }
        if (gives_up())
            return "writing has not ended";
    }
}

/// A write that takes too long is trouble, and so is a change that has waited too long for its own
/// to begin and to end.
void StateFile::look_at_deadlines(Clock::time_point write_deadline)
{
    const Clock::time_point now = Clock::now();
    const std::string trouble = takes_longer_than(patience_.write);
    bool is_news = false;
    std::vector<Waiting> late;
    {
        const std::lock_guard lock(mutex_);
        const bool waits_too_long = !waiting_.empty() && waiting_.front().deadline <= now;
        if (now < write_deadline && !waits_too_long)
            return;
        is_news = trouble_ != trouble;
        trouble_ = trouble;
        late = std::exchange(waiting_, {});
    }
    if (is_news)
        log_.error("the state cannot be saved: {}", trouble);
    answer(late, trouble, log_);
}

bool StateFile::gives_up()
{
    const std::lock_guard lock(mutex_);
    return ends_ && Clock::now() >= end_deadline_;
}

void StateFile::saved(std::uint64_t changes)
{
    bool is_news = false;
    std::vector<Waiting> answered;
    {
        const std::lock_guard lock(mutex_);
        answered = take_waiting(changes);
        saved_ = changes;
        is_news = !trouble_.empty();
        trouble_.clear();
        next_try_ = {};
    }
    pause_ = patience_.first_pause;
    if (is_news)
        log_.info("the state can be saved again");
    answer(answered, "", log_);
}

/// It needs no memory: that may be the trouble.
void StateFile::not_saved(std::string trouble)
{
    bool is_news = false;
    std::vector<Waiting> answered;
    {
        const std::lock_guard lock(mutex_);
        answered = std::exchange(waiting_, {});
        is_news = trouble_ != trouble;
        trouble_ = std::move(trouble);
        next_try_ = Clock::now() + pause_;
    }
    pause_ = std::min(2 * pause_, patience_.longest_pause);
    // Only this thread changes it.
    if (is_news)
        log_.error("the state cannot be saved: {}; it is tried again", trouble_);
    answer(answered, trouble_, log_);
}

/// Removes those whose changes are among the first ones, and returns them.
std::vector<StateFile::Waiting> StateFile::take_waiting(std::uint64_t changes)
{
    const auto end = std::find_if(waiting_.begin(), waiting_.end(), [&](const Waiting& waiting) {
        return waiting.changes > changes;
    });
    std::vector<Waiting> taken(std::make_move_iterator(waiting_.begin()),
                               std::make_move_iterator(end));
    waiting_.erase(waiting_.begin(), end);
    return taken;
}

} // namespace nmos_instrument::host
