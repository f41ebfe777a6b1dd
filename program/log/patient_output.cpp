// SPDX-License-Identifier: Apache-2.0

#include "log/patient_output.h"

#include <cerrno>
#include <climits>
#include <string>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nmos_instrument::program {
namespace {

using std::chrono::milliseconds;

/// How soon it is noticed that the time to give up has changed.
constexpr milliseconds slice{50};

mode_t type_of(int descriptor)
{
    struct stat file
    {};
    return fstat(descriptor, &file) == 0 ? file.st_mode & S_IFMT : 0;
}

/// The pipe or terminal opened once more: O_NONBLOCK on the given descriptor would hold for all
/// programs that share it. -1 if it is something else or the system does not allow it; then
/// poll() alone protects us, which is enough as long as nobody else writes there.
int opened_again(int descriptor)
{
    const mode_t type = type_of(descriptor);
    if (type != S_IFIFO && type != S_IFCHR)
        return -1;
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    return open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

} // namespace

PatientOutput::PatientOutput(int descriptor)
    : given_(descriptor),
      own_(opened_again(descriptor)),
      is_socket_(type_of(descriptor) == S_IFSOCK)
{}

PatientOutput::~PatientOutput()
{
    if (own_ >= 0)
        close(own_);
}

bool PatientOutput::write(std::string_view text)
{
    while (!text.empty()) {
        if (!wait_until_writable())
            return false;
        // poll() promises room for so much and no more.
        const long written = write_some(text.substr(0, PIPE_BUF));
        if (written >= 0)
            text.remove_prefix(static_cast<std::size_t>(written));
        else if (errno == EAGAIN)
            std::this_thread::sleep_for(milliseconds(5)); // another program took the room
        else if (errno != EINTR)
            return false;
    }
    return true;
}

/// True also if writing will fail: write() says why.
bool PatientOutput::wait_until_writable() const
{
    pollfd output{own_ >= 0 ? own_ : given_, POLLOUT, 0};
    while (Clock::now() < give_up_at_.load()) {
        if (poll(&output, 1, static_cast<int>(slice.count())) > 0)
            return true;
    }
    return false;
}

long PatientOutput::write_some(std::string_view piece) const
{
    if (is_socket_)
        return send(given_, piece.data(), piece.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    return ::write(own_ >= 0 ? own_ : given_, piece.data(), piece.size());
}

} // namespace nmos_instrument::program
