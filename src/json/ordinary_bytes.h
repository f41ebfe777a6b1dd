// SPDX-License-Identifier: Apache-2.0
//
// Copies the bytes of a JSON string that need no escape, a block at a time.
//
// A block is copied whole; then its bytes that need an escape are searched for. Three
// forms that do the same, chosen at compile time: SSE2, NEON, and plain words for
// every other CPU (define NMOS_INSTRUMENT_PORTABLE to have these everywhere).

#ifndef NMOS_INSTRUMENT_SRC_JSON_ORDINARY_BYTES_H
#define NMOS_INSTRUMENT_SRC_JSON_ORDINARY_BYTES_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "json/slashes.h"

#if defined(NMOS_INSTRUMENT_PORTABLE)
#elif defined(__SSE2__)
#define NMOS_INSTRUMENT_USE_SSE2
#include <emmintrin.h>
#elif defined(__ARM_NEON)
#define NMOS_INSTRUMENT_USE_NEON
#include <arm_neon.h>
#endif

namespace nmos_instrument {

/// Copies `size` bytes and marks those that end the text or need an escape: NUL, control bytes,
/// quotation mark, backslash, 0x7F and, with escaped slashes, the slash.
class OrdinaryBytes
{
public:
#if defined(NMOS_INSTRUMENT_USE_SSE2)
    static constexpr std::size_t size = 16;
    using Marks = unsigned; ///< one bit a byte

    explicit OrdinaryBytes(Slashes slashes) noexcept
        : slash_(_mm_set1_epi8(slashes == Slashes::escaped ? '/' : '"'))
    {}

    Marks copy(char* to, const char* from) const noexcept
    {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
        // Flipping bit 1 brings '"' (0x22) next to the control bytes, which change places among
        // themselves: together they are the bytes up to 0x20.
        const __m128i flipped = _mm_xor_si128(bytes, _mm_set1_epi8(0x02));
        const __m128i control_or_quote =
            _mm_cmpeq_epi8(_mm_min_epu8(flipped, _mm_set1_epi8(0x20)), flipped);
        const __m128i backslash = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'));
        const __m128i del = _mm_cmpeq_epi8(bytes, _mm_set1_epi8(0x7F));
        const __m128i slash = _mm_cmpeq_epi8(bytes, slash_);
        const __m128i special =
            _mm_or_si128(_mm_or_si128(control_or_quote, slash), _mm_or_si128(backslash, del));
        return static_cast<Marks>(_mm_movemask_epi8(special));
    }

    /// How many bytes precede the first marked one; not defined without a mark.
    static std::size_t count(Marks marks) noexcept
    {
        return static_cast<std::size_t>(std::countr_zero(marks));
    }

private:
    __m128i slash_;
#elif defined(NMOS_INSTRUMENT_USE_NEON)
    static constexpr std::size_t size = 16;
    using Marks = std::uint64_t; ///< four bits a byte

    explicit OrdinaryBytes(Slashes slashes) noexcept
        : slash_(vdupq_n_u8(slashes == Slashes::escaped ? '/' : '"'))
    {}

    Marks copy(char* to, const char* from) const noexcept
    {
        const uint8x16_t bytes = vld1q_u8(reinterpret_cast<const std::uint8_t*>(from));
        vst1q_u8(reinterpret_cast<std::uint8_t*>(to), bytes);
        const uint8x16_t special = vorrq_u8(
            vorrq_u8(vorrq_u8(vcltq_u8(bytes, vdupq_n_u8(0x20)), vceqq_u8(bytes, vdupq_n_u8('"'))),
                     vceqq_u8(bytes, slash_)),
            vorrq_u8(vceqq_u8(bytes, vdupq_n_u8('\\')), vceqq_u8(bytes, vdupq_n_u8(0x7F))));
        // Narrowing by four bits leaves one nibble for each byte.
        const uint8x8_t nibbles = vshrn_n_u16(vreinterpretq_u16_u8(special), 4);
        return vget_lane_u64(vreinterpret_u64_u8(nibbles), 0);
    }

    /// How many bytes precede the first marked one; not defined without a mark.
    static std::size_t count(Marks marks) noexcept
    {
        return static_cast<std::size_t>(std::countr_zero(marks)) / 4;
    }

private:
    uint8x16_t slash_;
#else
    static_assert(std::endian::native == std::endian::little, "the first byte is the lowest");
    static constexpr std::size_t size = sizeof(std::size_t);
    using Marks = std::size_t; ///< the highest bit of each byte

    explicit OrdinaryBytes(Slashes slashes) noexcept
        : slash_(every_byte(slashes == Slashes::escaped ? '/' : '"'))
    {}

    Marks copy(char* to, const char* from) const noexcept
    {
        Marks bytes;
        std::memcpy(&bytes, from, size);
        std::memcpy(to, &bytes, size);
        // In each term a borrow can only mark bytes above one that is rightly marked, so the
        // lowest mark is always right. Bit 1 is flipped for the same reason as above.
        return (below(bytes ^ every_byte(0x02), 0x21) | zero(bytes ^ slash_) |
                zero(bytes ^ every_byte('\\')) | zero(bytes ^ every_byte(0x7F))) &
               every_byte(0x80);
    }

    /// How many bytes precede the first marked one; not defined without a mark.
    static std::size_t count(Marks marks) noexcept
    {
        return static_cast<std::size_t>(std::countr_zero(marks)) / 8;
    }

private:
    static constexpr Marks every_byte(unsigned char byte) noexcept
    {
        return static_cast<Marks>(-1) / 0xFF * byte;
    }
    static constexpr Marks below(Marks bytes, unsigned char bound) noexcept
    {
        return (bytes - every_byte(bound)) & ~bytes;
    }
    static constexpr Marks zero(Marks bytes) noexcept
    {
        return below(bytes, 1);
    }

    Marks slash_;
#endif
};

} // namespace nmos_instrument

#endif
