// SPDX-License-Identifier: Apache-2.0
//
// Numbers to text and back, independent of the process's locale.

#ifndef NMOS_INSTRUMENT_SRC_TEXT_NUMBER_TEXT_H
#define NMOS_INSTRUMENT_SRC_TEXT_NUMBER_TEXT_H

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

namespace nmos_instrument {

/// Room that write_json_number and write_integer need: "-1.2345678901234567e-308".
constexpr std::size_t number_text_size = 32;

/// Room that write_rounded needs: a sign and 309 digits.
constexpr std::size_t rounded_text_size = 320;

/// Below 2^53 and integral: all digits, minus zero as "-0". Else 17 significant digits in general
/// form. Throws std::overflow_error with an empty text when `value` is NaN or infinite. Returns the
/// end of what was written.
char* write_json_number(char* to, double value);

/// Decimal digits, with a minus sign when negative.
char* write_integer(char* to, long long value) noexcept;
char* write_integer(char* to, unsigned long long value) noexcept;
inline char* write_integer(char* to, int value) noexcept
{
    return write_integer(to, static_cast<long long>(value));
}

/// Rounded to an integral value and written in full, like "%.0f": also "nan", "-nan", "inf",
/// "-inf".
char* write_rounded(char* to, double value) noexcept;

/// A number as a text of its own.
class NumberText
{
public:
    explicit NumberText(std::signed_integral auto value) noexcept
        : end_(write_integer(text_, static_cast<long long>(value)))
    {}
    explicit NumberText(std::unsigned_integral auto value) noexcept
        : end_(write_integer(text_, static_cast<unsigned long long>(value)))
    {}
    /// A whole number in full digits, else the shortest text that reads back as `value`; "nan" and
    /// "inf" too. Unlike in JSON, which fixes 17 digits.
    explicit NumberText(double value) noexcept;

    // It points into itself.
    NumberText(const NumberText&) = delete;
    NumberText& operator=(const NumberText&) = delete;

    operator std::string_view() const noexcept // implicit: it stands for its text
    {
        return {text_, static_cast<std::size_t>(end_ - text_)};
    }

private:
    char text_[number_text_size] = {};
    const char* end_;
};

/// The decimal integer at the start of `text`, read like strtol: leading white space and a sign
/// are taken, 0 when there is none; saturates at 64 bits.
long long leading_integer(std::string_view text) noexcept;

/// The number at the start of `text`, read like strtod in the C locale up to the first NUL.
double leading_double(const std::string& text);

} // namespace nmos_instrument

#endif
