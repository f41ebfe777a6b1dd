// SPDX-License-Identifier: Apache-2.0
//
// Copies the bytes of a JSON string that stand for themselves, a block at a time.
//
// A block is copied whole, then the bytes before the first one that does not stand for itself are
// counted. Three forms that do the same, chosen at compile time: SSE2, NEON, and plain words for
// every other CPU (define NMOS_INSTRUMENT_PORTABLE to have these everywhere).

#ifndef NMOS_INSTRUMENT_SRC_ORDINARY_BYTES_H
#define NMOS_INSTRUMENT_SRC_ORDINARY_BYTES_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(NMOS_INSTRUMENT_PORTABLE)
#elif defined(__SSE2__)
#define NMOS_INSTRUMENT_USE_SSE2
#include <emmintrin.h>
#elif defined(__ARM_NEON)
#define NMOS_INSTRUMENT_USE_NEON
#include <arm_neon.h>
#endif

namespace nmos_instrument {

/// How '/' is written in JSON text: both forms are the same JSON value.
enum class Slashes
{
    plain,
    escaped
};

/// Copies `size` bytes and counts those before the first NUL, control byte, quotation mark,
/// backslash, 0x7F or, with escaped slashes, slash.
class OrdinaryBytes
{
public:
#if defined(NMOS_INSTRUMENT_USE_SSE2)
    static constexpr std::size_t size = 16;

    explicit OrdinaryBytes(Slashes slashes) noexcept
        : slash_(_mm_set1_epi8(slashes == Slashes::escaped ? '/' : '"'))
    {}

    [[gnu::always_inline]] std::size_t copy(char* to, const char* from) const noexcept
    {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
        const __m128i control = _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(0x1F)), bytes);
        const __m128i quote = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('"'));
        const __m128i backslash = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'));
        const __m128i del = _mm_cmpeq_epi8(bytes, _mm_set1_epi8(0x7F));
        const __m128i slash = _mm_cmpeq_epi8(bytes, slash_);
        const __m128i special = _mm_or_si128(_mm_or_si128(_mm_or_si128(control, quote), slash),
                                             _mm_or_si128(backslash, del));
        const auto mask = static_cast<unsigned>(_mm_movemask_epi8(special)) | 0x10000U;
        return static_cast<std::size_t>(std::countr_zero(mask));
    }

private:
    __m128i slash_;
#elif defined(NMOS_INSTRUMENT_USE_NEON)
    static constexpr std::size_t size = 16;

    explicit OrdinaryBytes(Slashes slashes) noexcept
        : slash_(vdupq_n_u8(slashes == Slashes::escaped ? '/' : '"'))
    {}

    [[gnu::always_inline]] std::size_t copy(char* to, const char* from) const noexcept
    {
        const uint8x16_t bytes = vld1q_u8(reinterpret_cast<const std::uint8_t*>(from));
        vst1q_u8(reinterpret_cast<std::uint8_t*>(to), bytes);
        const uint8x16_t special = vorrq_u8(
            vorrq_u8(vorrq_u8(vcltq_u8(bytes, vdupq_n_u8(0x20)), vceqq_u8(bytes, vdupq_n_u8('"'))),
                     vceqq_u8(bytes, slash_)),
            vorrq_u8(vceqq_u8(bytes, vdupq_n_u8('\\')), vceqq_u8(bytes, vdupq_n_u8(0x7F))));
        // Narrowing by four bits leaves one nibble for each byte.
        const uint8x8_t nibbles = vshrn_n_u16(vreinterpretq_u16_u8(special), 4);
        const std::uint64_t mask = vget_lane_u64(vreinterpret_u64_u8(nibbles), 0);
        return static_cast<std::size_t>(std::countr_zero(mask)) / 4;
    }

private:
    uint8x16_t slash_;
#else
    using Word = std::size_t;
    static constexpr std::size_t size = sizeof(Word);

    explicit OrdinaryBytes(Slashes slashes) noexcept
        : slash_(every_byte(slashes == Slashes::escaped ? '/' : '"'))
    {}

    [[gnu::always_inline]] std::size_t copy(char* to, const char* from) const noexcept
    {
        Word bytes;
        std::memcpy(&bytes, from, size);
        std::memcpy(to, &bytes, size);
        // In each term a borrow can only mark bytes above one that is rightly marked, so the
        // lowest mark is always right.
        const Word special =
            (below(bytes, 0x20) | zero(bytes ^ every_byte('"')) | zero(bytes ^ slash_) |
             zero(bytes ^ every_byte('\\')) | zero(bytes ^ every_byte(0x7F))) &
            every_byte(0x80);
        if constexpr (std::endian::native == std::endian::little)
            return static_cast<std::size_t>(std::countr_zero(special)) / 8;
        else
            return first_in_memory_order(from);
    }

private:
    static constexpr Word every_byte(unsigned char byte) noexcept
    {
        return static_cast<Word>(-1) / 0xFF * byte;
    }
    static constexpr Word below(Word bytes, unsigned char bound) noexcept
    {
        return (bytes - every_byte(bound)) & ~bytes;
    }
    static constexpr Word zero(Word bytes) noexcept
    {
        return below(bytes, 1);
    }

    std::size_t first_in_memory_order(const char* from) const noexcept
    {
        std::size_t count = 0;
        while (count < size) {
            const auto byte = static_cast<unsigned char>(from[count]);
            if (byte < 0x20 || byte == '"' || byte == '\\' || byte == 0x7F ||
                byte == static_cast<unsigned char>(slash_))
                break;
            ++count;
        }
        return count;
    }

    Word slash_;
#endif
};

} // namespace nmos_instrument

#endif
