// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_FUZZ_FUZZ_INPUT_H
#define NMOS_INSTRUMENT_FUZZ_FUZZ_INPUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

/// Stops the fuzzer with what it found: a rule that the input broke.
#define REQUIRE(rule)                                                                              \
    do {                                                                                           \
        if (!(rule))                                                                               \
            __builtin_trap();                                                                      \
    } while (false)

/// The bytes of one run, taken from the front. When none are left, zeros.
class FuzzInput
{
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    std::uint8_t byte()
    {
        std::uint8_t value = 0;
        fill(value);
        return value;
    }

    int number()
    {
        int value = 0;
        fill(value);
        return value;
    }

    /// A record whose every byte comes from the input; the bytes repeat when they are too few.
    template <typename Record>
    void fill(Record& record)
    {
        const std::size_t taken = std::min(size_, sizeof record);
        auto* const bytes = reinterpret_cast<unsigned char*>(&record);
        if (taken == 0)
            return;
        std::memcpy(bytes, data_, taken);
        for (std::size_t done = taken; done < sizeof record; done += taken)
            std::memcpy(bytes + done, data_, std::min(taken, sizeof record - done));
        data_ += taken;
        size_ -= taken;
    }

    /// The next `size` bytes as an input of their own, less when there are not so many.
    FuzzInput part(std::size_t size)
    {
        const FuzzInput taken(data_, std::min(size_, size));
        data_ += taken.size_;
        size_ -= taken.size_;
        return taken;
    }

    std::string rest() { return {reinterpret_cast<const char*>(data_), size_}; }

private:
    const std::uint8_t* data_;
    std::size_t size_;
};

#endif
