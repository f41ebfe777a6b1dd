// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_DESCRIPTOR_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_DESCRIPTOR_H

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

private:
    int number_;
};

} // namespace nmos_instrument::host

#endif
