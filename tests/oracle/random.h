// SPDX-License-Identifier: Apache-2.0
//
// Random numbers that are the same on every CPU and with every standard library, so that a seed
// found under emulation can be repeated on a desk. The distributions of <random> promise no such
// thing. For the same reason at most one argument of a call may be random: the order in which
// arguments are evaluated is the compiler's choice.

#ifndef NMOS_INSTRUMENT_TESTS_ORACLE_RANDOM_H
#define NMOS_INSTRUMENT_TESTS_ORACLE_RANDOM_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

class Random
{
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    /// 64 random bits, by the generator that its author Sebastiano Vigna calls splitmix64.
    std::uint64_t bits()
    {
        state_ += 0x9E3779B97F4A7C15u;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBu;
        return mixed ^ (mixed >> 31);
    }

    /// 0 to `limit` - 1.
    std::uint32_t below(std::uint32_t limit)
    {
        return static_cast<std::uint32_t>(((bits() >> 32) * limit) >> 32);
    }

    /// `lowest` to `highest`, both included; not for the whole range of int.
    int between(int lowest, int highest)
    {
        const auto width = static_cast<std::uint32_t>(highest) - static_cast<std::uint32_t>(lowest);
        return static_cast<int>(static_cast<std::uint32_t>(lowest) + below(width + 1));
    }

    bool one_in(std::uint32_t chances) { return below(chances) == 0; }

    template <class Choices>
    const auto& pick(const Choices& choices)
    {
        return *std::next(
            std::begin(choices),
            static_cast<std::ptrdiff_t>(below(static_cast<std::uint32_t>(std::size(choices)))));
    }

    void fill(void* bytes, std::size_t size)
    {
        auto* to = static_cast<unsigned char*>(bytes);
        while (size > 0) {
            // Byte by byte the bits go out lowest first, so that the order of bytes in a word
            // does not matter.
            std::uint64_t word = bits();
            const std::size_t step = std::min(size, sizeof word);
            for (std::size_t i = 0; i < step; ++i, word >>= 8)
                to[i] = static_cast<unsigned char>(word);
            to += step;
            size -= step;
        }
    }

private:
    std::uint64_t state_;
};

#endif
