// SPDX-License-Identifier: Apache-2.0

#include "instrument/file_lock.h"

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

namespace nmos_instrument::host {
namespace {

[[noreturn]] void throw_cannot_lock(const std::string& name, const std::string& why)
{
    throw std::runtime_error("cannot be locked: " + name + ": " + why);
}

[[noreturn]] void throw_errno(const std::string& name)
{
    throw_cannot_lock(name, std::generic_category().message(errno));
}

Descriptor open_lock(const std::string& name)
{
    // O_NONBLOCK: a FIFO in its place must not stop us.
    Descriptor descriptor(
        ::open(name.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
    if (!descriptor.is_open())
        throw_errno(name);
    struct stat status
    {};
    if (::fstat(descriptor.number(), &status) != 0)
        throw_errno(name);
    if (!S_ISREG(status.st_mode))
        throw_cannot_lock(name, "not a regular file");
    return descriptor;
}

struct flock whole_file()
{
    struct flock lock
    {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

/// False if another process has it.
bool take(const Descriptor& descriptor, const std::string& name)
{
    const struct flock lock = whole_file();
    if (::fcntl(descriptor.number(), F_SETLK, &lock) == 0)
        return true;
    if (errno != EACCES && errno != EAGAIN)
        throw_errno(name);
    return false;
}

/// Does nothing if it is free by now.
void throw_if_in_use(const Descriptor& descriptor, const std::string& name)
{
    struct flock lock = whole_file();
    if (::fcntl(descriptor.number(), F_GETLK, &lock) != 0)
        throw_errno(name);
    if (lock.l_type == F_UNLCK)
        return;
    // The kernel does not know our number for a process in another container.
    throw std::runtime_error(lock.l_pid > 0
                                 ? "in use by process " + std::to_string(lock.l_pid)
                                 : std::string("in use by a process in another container"));
}

/// A process that ends removes the file while it has the lock. Whoever opened it before that has
/// locked a file without a name.
bool still_has_its_name(const Descriptor& descriptor, const std::string& name)
{
    struct stat locked
    {};
    struct stat named
    {};
    return ::fstat(descriptor.number(), &locked) == 0 && ::lstat(name.c_str(), &named) == 0 &&
           locked.st_dev == named.st_dev && locked.st_ino == named.st_ino;
}

Descriptor lock(const std::string& name)
{
    constexpr int attempts = 100;
    for (int i = 0; i < attempts; ++i) {
        Descriptor descriptor = open_lock(name);
        if (!take(descriptor, name))
            throw_if_in_use(descriptor, name);
        else if (still_has_its_name(descriptor, name))
            return descriptor;
    }
    throw_cannot_lock(name, "it is replaced again and again");
}

} // namespace

FileLock::FileLock(const std::string& file) : name_(file + ".lock"), descriptor_(lock(name_)) {}

FileLock::~FileLock()
{
    // Before the lock goes with its descriptor. If somebody removed the file, the name may by now be
    // that of another process.
    if (still_has_its_name(descriptor_, name_))
        ::unlink(name_.c_str());
}

} // namespace nmos_instrument::host
