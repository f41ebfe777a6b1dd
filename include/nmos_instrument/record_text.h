// SPDX-License-Identifier: Apache-2.0
//
// How a host fills the fields of its records: texts, versions and counts that never leave their
// field. Header only.
//
// ```cpp
// using namespace nmos_instrument;
// std::unique_ptr<NMOS_IS04_ST> node(new NMOS_IS04_ST()); // all zero
//
// assert(set_text(node->label, "Rack 4"));
// assert(text_of(node->label) == "Rack 4");
//
// // A text that does not fit: the field holds its beginning, as much as there is room for.
// char field[6];
// assert(!set_text(field, "Kontrollraum"));
// assert(text_of(field) == "Kontr");
// assert(!set_text(field, "Caf\xC3\xA9s")); // five bytes are room for "Caf" and the two of the e
// assert(text_of(field) == "Caf\xC3\xA9");
// assert(!set_text(field, "Stra\xC3\x9F" "e")); // the fifth would be half a character
// assert(text_of(field) == "Stra");
//
// assert(set_version(node->devices[0], 1541234567, 25)); // or of a field
// assert(text_of(node->devices[0].version) == "1541234567:25");
//
// assert(set_count(node->clocks_count, node->clocks, 1));
// assert(!set_count(node->clocks_count, node->clocks, 7)); // there are 6
// assert(node->clocks_count == 6);
// ```

#ifndef NMOS_INSTRUMENT_RECORD_TEXT_H
#define NMOS_INSTRUMENT_RECORD_TEXT_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

namespace nmos_instrument {

namespace record_text_detail {

/// How many bytes of `text` a field with `room` for them takes without half a UTF-8 character.
inline std::size_t whole_characters(const char* text, std::size_t size, std::size_t room)
{
    if (size <= room)
        return size;
    // A character has at most three bytes after its first one (RFC 3629, 3).
    for (std::size_t cut = room; cut + 4 > room; --cut) {
        if ((static_cast<unsigned char>(text[cut]) & 0xC0U) != 0x80U)
            return cut;
        if (cut == 0)
            break;
    }
    return room; // not UTF-8
}

/// The bytes before the first NUL, at most `size`.
inline std::size_t length_within(const char* text, std::size_t size)
{
    const void* const end = size == 0 ? nullptr : std::memchr(text, '\0', size);
    return end == nullptr ? size : static_cast<std::size_t>(static_cast<const char*>(end) - text);
}

} // namespace record_text_detail

/// @name set_text
/// Writes a text into a field, a NUL behind it, and zeros into the rest.
///
/// Returns whether the field now holds the whole text. If not, it holds the beginning: as many
/// bytes as there is room for before the NUL, no UTF-8 character cut in half; and of a text with a
/// NUL in it what stands before that, since every reader of the field stops there.
///
/// Look at what it returns: half a label may do, half an id does not.
/// @{
template <std::size_t N>
bool set_text(char (&field)[N], const char* text, std::size_t size)
{
    const std::size_t length = record_text_detail::length_within(text, size);
    const std::size_t kept = record_text_detail::whole_characters(text, length, N - 1);
    if (kept > 0)
        std::memmove(field, text, kept); // the text may be a part of the field
    std::memset(field + kept, 0, N - kept);
    return kept == size;
}

template <std::size_t N>
bool set_text(char (&field)[N], const std::string& text)
{
    return set_text(field, text.data(), text.size());
}

/// From a literal or another field, which may lack a NUL.
template <std::size_t N, std::size_t M>
bool set_text(char (&field)[N], const char (&text)[M])
{
    return set_text(field, text, record_text_detail::length_within(text, M));
}

/// From a text that ends with a NUL.
template <std::size_t N, class Pointer>
typename std::enable_if<
    std::is_same<Pointer, const char*>::value || std::is_same<Pointer, char*>::value, bool>::type
set_text(char (&field)[N], Pointer text)
{
    return set_text(field, text, std::strlen(text));
}
/// @}

/// The text of a field: up to its first NUL, or the whole field when it has none.
template <std::size_t N>
std::string text_of(const char (&field)[N])
{
    return std::string(field, record_text_detail::length_within(field, N));
}

/// Writes "<seconds>:<nanoseconds>", the form of all times in IS-04 and IS-05, into a field: a
/// `version`, `requested_time` or `activation_time`.
///
/// `nanoseconds` is 0 to 999999999; otherwise it returns false and the field stays as it is.
template <std::size_t N>
bool set_version(char (&field)[N], std::uint64_t seconds, std::int32_t nanoseconds)
{
    static_assert(N > 20 + 1 + 9, "the field has no room for every time");
    if (nanoseconds < 0 || nanoseconds > 999999999)
        return false;
    return set_text(field, std::to_string(seconds) + ':' + std::to_string(nanoseconds));
}

/// The same for the `version` of a node, device, source, flow, sender or receiver.
template <class Resource>
auto set_version(Resource& resource, std::uint64_t seconds, std::int32_t nanoseconds)
    -> decltype(set_version(resource.version, seconds, nanoseconds))
{
    return set_version(resource.version, seconds, nanoseconds);
}

/// Says how many leading entries of an array are valid.
///
/// Returns whether the array has that many. If not, the count is the nearest that it has: 0 for a
/// negative `wanted`, all entries for one that is too high.
template <class Entry, std::size_t N>
bool set_count(std::int32_t& count, const Entry (&)[N], std::int64_t wanted)
{
    const std::int64_t most = static_cast<std::int64_t>(N);
    count = static_cast<std::int32_t>(wanted < 0 ? 0 : wanted > most ? most : wanted);
    return count == wanted;
}

} // namespace nmos_instrument

#endif
