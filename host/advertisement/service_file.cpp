// SPDX-License-Identifier: Apache-2.0

#include "advertisement/service_file.h"

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "instrument/descriptor.h"

namespace nmos_instrument::host {
namespace {

[[noreturn]] void throw_errno()
{
    if (errno == ENOENT)
        throw std::runtime_error("there is no such folder");
    throw std::runtime_error(std::generic_category().message(errno));
}

/// A new file that is gone with the object, unless it was installed. avahi-daemon does not read it:
/// its name ends otherwise.
class NewFile
{
public:
    explicit NewFile(const std::string& path) : name_(path + ".new"), descriptor_(open_new(name_))
    {}
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile()
    {
        if (!installed_)
            ::unlink(name_.c_str());
    }

    void write(std::string_view text) const
    {
        // avahi-daemon reads it as another user, whatever our umask.
        constexpr mode_t for_all_to_read = 0644;
        if (!descriptor_.write_all(text) || ::fchmod(descriptor_.number(), for_all_to_read) != 0 ||
            ::fsync(descriptor_.number()) != 0)
            throw_errno();
    }

    void install(const std::string& path)
    {
        if (std::rename(name_.c_str(), path.c_str()) != 0)
            throw_errno();
        installed_ = true;
    }

private:
    /// Never one that somebody else has put there, nor what a link leads to.
    static Descriptor open_new(const std::string& name)
    {
        ::unlink(name.c_str()); // what a killed process has left
        Descriptor file(
            ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
        if (!file.is_open())
            throw_errno();
        return file;
    }

    const std::string name_;
    const Descriptor descriptor_;
    bool installed_ = false;
};

} // namespace

void replace_service_file(const std::string& path, std::string_view text)
{
    NewFile file(path);
    file.write(text);
    file.install(path);
}

void remove_service_file(const std::string& path)
{
    // Without the look, a file system that cannot be written would refuse to remove nothing.
    struct stat status
    {};
    if (::lstat(path.c_str(), &status) == 0 && ::unlink(path.c_str()) == 0)
        return;
    if (errno != ENOENT && errno != ENOTDIR)
        throw_errno();
}

} // namespace nmos_instrument::host
