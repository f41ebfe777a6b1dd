// SPDX-License-Identifier: Apache-2.0

#include "instrument/state_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include "text/quoted_text.h"
#include "text/whole_file.h"
#include "time/tai_clock.h"

namespace nmos_instrument::host {
namespace {

[[noreturn]] void throw_errno(const std::string& what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

class Descriptor
{
public:
    Descriptor(const std::string& name, int flags)
        : name_(name), descriptor_(::open(name.c_str(), flags | O_CLOEXEC, 0644))
    {
        if (descriptor_ < 0)
            throw_errno(name_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { ::close(descriptor_); }

    void write_all(std::string_view text)
    {
        while (!text.empty()) {
            const ssize_t count = ::write(descriptor_, text.data(), text.size());
            if (count >= 0)
                text.remove_prefix(static_cast<std::size_t>(count));
            else if (errno != EINTR)
                throw_errno(name_);
        }
    }

    void sync()
    {
        if (::fsync(descriptor_) != 0)
            throw_errno(name_);
    }

private:
    std::string name_;
    int descriptor_;
};

std::string folder_of(const std::string& file)
{
    const std::size_t slash = file.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : file.substr(0, slash);
}

void set_aside(const std::string& file, const std::string& why)
{
    const std::string aside = file + ".damaged-" + std::to_string(tai_now().seconds);
    if (std::rename(file.c_str(), aside.c_str()) == 0)
        spdlog::error("--state {} is damaged: {}; it is now {}; starting with the configuration",
                      file, why, aside);
    else
        spdlog::error("--state {} is damaged: {}; starting with the configuration", file, why);
}

/// More than any state needs: a larger file is something else.
constexpr std::size_t size_limit = 16UL * 1024 * 1024;

} // namespace

void replace_file(const std::string& file, const std::string& text)
{
    const std::string beside = file + ".new";
    {
        Descriptor target(beside, O_WRONLY | O_CREAT | O_TRUNC);
        target.write_all(text);
        // Before the rename: otherwise the name might survive a power cut without the content.
        target.sync();
    }
    if (std::rename(beside.c_str(), file.c_str()) != 0)
        throw_errno(file);
    Descriptor(folder_of(file), O_RDONLY | O_DIRECTORY).sync();
}

void restore_from(const std::string& file, Instrument& instrument)
{
    if (::access(file.c_str(), F_OK) != 0 && errno == ENOENT) {
        spdlog::info("no {} yet: starting with the configuration", file);
        return;
    }
    std::string text;
    try {
        text = read_whole_file(file, size_limit);
    } catch (const UnreadableFile& error) {
        throw UnreadableFile("--state " + file + ": " + error.what());
    }
    try {
        for (const std::string& message : instrument.restore(parse_saved_state(text)))
            spdlog::warn("--state {}: {}", file, message);
        spdlog::info("state restored from {}", file);
    } catch (const DamagedState& error) {
        set_aside(file, in_quotes(error.what()));
    }
}

StateFile::StateFile(std::string file, Instrument& instrument)
    : file_(std::move(file)), instrument_(instrument)
{
    try {
        replace_file(file_, write_saved_state(instrument_.saved_state()));
    } catch (const std::system_error& error) {
        throw std::runtime_error("--state " + file_ + ": cannot be written: " + error.what());
    }
    thread_ = std::thread([this] { run(); });
}

StateFile::~StateFile()
{
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
    }
    wake_up_.notify_one();
    thread_.join();
}

void StateFile::changed()
{
    {
        const std::lock_guard lock(mutex_);
        ++changes_;
    }
    wake_up_.notify_one();
}

void StateFile::when_saved(std::function<void()> then)
{
    {
        const std::lock_guard lock(mutex_);
        if (saved_ < changes_) {
            waiting_.push_back({changes_, std::move(then)});
            return;
        }
    }
    then();
}

std::string StateFile::trouble()
{
    const std::lock_guard lock(mutex_);
    return trouble_;
}

void StateFile::run()
{
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_up_.wait(lock, [this] { return saved_ < changes_ || ends_; });
        if (saved_ == changes_)
            return;
        const std::uint64_t changes = changes_;
        lock.unlock();
        std::string trouble = write();
        lock.lock();
        saved_ = changes;
        trouble_ = std::move(trouble);
        const std::vector<Waiting> answered = take_saved();
        lock.unlock();
        for (const Waiting& waiting : answered)
            waiting.then();
        lock.lock();
    }
}

/// Returns why it failed; empty if it did not.
std::string StateFile::write()
{
    try {
        replace_file(file_, write_saved_state(instrument_.saved_state()));
        return "";
    } catch (const std::exception& error) {
        spdlog::error("the state cannot be saved: {}", error.what());
        return error.what();
    }
}

std::vector<StateFile::Waiting> StateFile::take_saved()
{
    const auto end = std::find_if(waiting_.begin(), waiting_.end(), [this](const Waiting& waiting) {
        return waiting.changes > saved_;
    });
    std::vector<Waiting> taken(std::make_move_iterator(waiting_.begin()),
                               std::make_move_iterator(end));
    waiting_.erase(waiting_.begin(), end);
    return taken;
}

} // namespace nmos_instrument::host
