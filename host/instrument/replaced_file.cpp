// SPDX-License-Identifier: Apache-2.0

#include "instrument/replaced_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

#include "instrument/descriptor.h"
#include "text/quoted_text.h"
#include "text/whole_file.h"

namespace nmos_instrument::host {
namespace {

namespace filesystem = std::filesystem;

constexpr std::string_view unfinished_mark = ".new-";
constexpr std::size_t unfinished_digits = 16;
constexpr std::string_view hexadecimal_digits = "0123456789abcdef";

/// Names the file and not the unfinished one, whose name says nothing to anybody.
[[noreturn]] void throw_errno(const std::string& path)
{
    throw std::system_error(errno, std::generic_category(), path);
}

std::string folder_of(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string last_name_of(const std::string& path)
{
    return path.substr(path.rfind('/') + 1); // npos + 1 is 0
}

std::string canonical(const std::string& path)
{
    std::error_code error;
    std::string found = filesystem::canonical(path, error).string();
    if (error)
        throw std::runtime_error("cannot be written: " + path + ": " + error.message());
    return found;
}

/// Without links, the last name too. An open link to nothing would let a stranger say where the
/// file comes into being.
std::string resolved(const std::string& name)
{
    const std::string last = last_name_of(name);
    if (name == "-" || last.empty())
        throw std::runtime_error("found " + in_quotes(name) + ", allowed: the name of a file");
    struct stat status
    {};
    if (::lstat(name.c_str(), &status) == 0) {
        struct stat target
        {};
        if (S_ISLNK(status.st_mode) && ::stat(name.c_str(), &target) != 0 &&
            (errno == ENOENT || errno == ELOOP))
            throw std::runtime_error("found a symbolic link to nothing, allowed: a regular file, "
                                     "a link to one, or the name of a new file");
        return canonical(name);
    }
    if (errno != ENOENT)
        throw std::runtime_error("cannot be written: " + std::generic_category().message(errno));
    const std::string folder = canonical(folder_of(name));
    return (folder == "/" ? "" : folder) + '/' + last;
}

std::string_view kind_of(mode_t mode)
{
    if (S_ISDIR(mode))
        return "a directory";
    if (S_ISFIFO(mode))
        return "a FIFO";
    if (S_ISSOCK(mode))
        return "a socket";
    return S_ISCHR(mode) || S_ISBLK(mode) ? "a device" : "something else";
}

void refuse_unless_regular(const struct stat& status)
{
    if (!S_ISREG(status.st_mode))
        throw UnreadableFile("found " + std::string(kind_of(status.st_mode)) +
                             ", allowed: a regular file, a link to one, or the name of a new file");
}

bool is_unfinished(const std::string& name, const std::string& of)
{
    const std::string start = of + std::string(unfinished_mark);
    return name.size() == start.size() + unfinished_digits && name.starts_with(start) &&
           name.find_first_not_of(hexadecimal_digits, start.size()) == std::string::npos;
}

std::string unfinished_name(const std::string& path)
{
    std::random_device random;
    std::uniform_int_distribution<std::size_t> digit(0, hexadecimal_digits.size() - 1);
    std::string name = path + std::string(unfinished_mark);
    for (std::size_t i = 0; i < unfinished_digits; ++i)
        name += hexadecimal_digits[digit(random)];
    return name;
}

std::optional<FileAccess> access_of(const std::string& path)
{
    struct stat status
    {};
    if (::lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return FileAccess{status.st_uid, status.st_gid, status.st_mode & 0777};
}

/// A new file that is gone with the object, unless it was installed.
class UnfinishedFile
{
public:
    /// `access`: what it will get, if that is known.
    UnfinishedFile(const std::string& path, const std::optional<FileAccess>& access)
        : path_(path),
          name_(unfinished_name(path)),
          // What is secret stays so while it is written.
          descriptor_(::open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                             access ? 0600 : 0644))
    {
        if (!descriptor_.is_open())
            throw_errno(path_);
    }
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;
    ~UnfinishedFile()
    {
        if (!installed_)
            ::unlink(name_.c_str());
    }

    void set_access(const FileAccess& access) const
    {
        struct stat now
        {};
        if (::fstat(descriptor_.number(), &now) != 0)
            throw_errno(path_);
        // Only root may give a file away; without that the file is ours from now on.
        if ((now.st_uid != access.owner || now.st_gid != access.group) &&
            ::fchown(descriptor_.number(), access.owner, access.group) != 0 && errno != EPERM)
            throw_errno(path_);
        if ((now.st_mode & 0777) != access.mode && ::fchmod(descriptor_.number(), access.mode) != 0)
            throw_errno(path_);
    }

    void write_all(std::string_view text) const
    {
        if (!descriptor_.write_all(text))
            throw_errno(path_);
    }

    void install(const std::string& target)
    {
        // Before the rename: otherwise the name might survive a power cut without the content.
        if (::fsync(descriptor_.number()) != 0 || std::rename(name_.c_str(), target.c_str()) != 0)
            throw_errno(path_);
        installed_ = true;
    }

private:
    const std::string path_;
    const std::string name_;
    const Descriptor descriptor_;
    bool installed_ = false;
};

void sync_folder_of(const std::string& path)
{
    const Descriptor folder(::open(folder_of(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.is_open() || ::fsync(folder.number()) != 0)
        throw_errno(path);
}

} // namespace

ReplacedFile::ReplacedFile(const std::string& name) : name_(name), path_(resolved(name))
{
    struct stat status
    {};
    if (::lstat(path_.c_str(), &status) == 0)
        refuse_unless_regular(status);
    access_at_start_ = access_of(path_);
    lock_ = std::make_shared<const FileLock>(path_);
    remove_unfinished();
}

std::optional<std::string> ReplacedFile::read(std::size_t limit) const
{
    // It was a regular file a moment ago; if it no longer is, this must not wait.
    const Descriptor file(::open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    if (!file.is_open() && errno == ENOENT)
        return std::nullopt;
    struct stat status
    {};
    if (!file.is_open() || ::fstat(file.number(), &status) != 0)
        throw UnreadableFile(std::generic_category().message(errno));
    refuse_unless_regular(status);
    return read_to_end(file.number(), limit);
}

void ReplacedFile::rename_beside(std::string_view ending) const
{
    if (std::rename(path_.c_str(), beside(ending).c_str()) != 0)
        throw_errno(path_);
}

void ReplacedFile::install(std::string_view text, const std::string& target) const
{
    std::optional<FileAccess> access = access_of(path_);
    if (!access)
        access = access_at_start_;
    UnfinishedFile unfinished(path_, access);
    if (access)
        unfinished.set_access(*access);
    unfinished.write_all(text);
    unfinished.install(target);
    sync_folder_of(path_);
}

/// The lock is ours: nobody is still writing them.
void ReplacedFile::remove_unfinished() const
{
    const std::string own_name = last_name_of(path_);
    std::error_code error;
    filesystem::directory_iterator entry(folder_of(path_), error);
    for (; !error && entry != filesystem::directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        std::error_code ignored;
        if (is_unfinished(name, own_name) &&
            entry->symlink_status(ignored).type() == filesystem::file_type::regular)
            ::unlink(entry->path().c_str());
    }
}

} // namespace nmos_instrument::host
