// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_DESCRIPTOR_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_DESCRIPTOR_H

#include <cerrno>
#include <cstddef>
#include <string_view>
#include <utility>

#include <unistd.h>

namespace nmos_instrument::host {

/// The number of an open file, or -1; closes it.
class Descriptor
{
public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor()
    {
        if (number_ >= 0)
            ::close(number_);
    }

    int number() const { return number_; }
    bool is_open() const { return number_ >= 0; }

    /// False, with errno, if not all of it could be written.
    bool write_all(std::string_view text) const
    {
        while (!text.empty()) {
            const ssize_t count = ::write(number_, text.data(), text.size());
            if (count >= 0)
                text.remove_prefix(static_cast<std::size_t>(count));
            else if (errno != EINTR)
                return false;
        }
        return true;
    }

private:
    int number_;
};

} // namespace nmos_instrument::host

#endif
