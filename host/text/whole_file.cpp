// SPDX-License-Identifier: Apache-2.0

#include "text/whole_file.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace nmos_instrument::host {
namespace {

[[noreturn]] void throw_errno()
{
    throw UnreadableFile(std::generic_category().message(errno));
}

class OpenFile
{
public:
    explicit OpenFile(const std::string& name)
    {
        if (name == "-") {
            descriptor_ = STDIN_FILENO;
            return;
        }
        descriptor_ = ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
        if (descriptor_ < 0)
            throw_errno();
        ours_ = true;
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile()
    {
        if (ours_)
            ::close(descriptor_);
    }

    int number() const { return descriptor_; }

private:
    int descriptor_ = -1;
    bool ours_ = false;
};

/// 0 at the end of the file.
std::size_t read_piece(int descriptor, char* buffer, std::size_t size)
{
    for (;;) {
        const ssize_t count = ::read(descriptor, buffer, size);
        if (count >= 0)
            return static_cast<std::size_t>(count);
        if (errno != EINTR)
            throw_errno();
    }
}

} // namespace

std::string read_to_end(int descriptor, std::size_t limit)
{
    std::string content;
    char buffer[65536];
    while (const std::size_t count = read_piece(descriptor, buffer, sizeof buffer)) {
        if (content.size() + count > limit)
            throw UnreadableFile("larger than " + std::to_string(limit) + " bytes");
        content.append(buffer, count);
    }
    return content;
}

std::string read_whole_file(const std::string& name, std::size_t limit)
{
    const OpenFile file(name);
    return read_to_end(file.number(), limit);
}

} // namespace nmos_instrument::host
