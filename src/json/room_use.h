// SPDX-License-Identifier: Apache-2.0
//
// RoomUse: a debug build asserts that no more than json_room is written between two places where
// room is made, wherever the buffer's end happens to be. In a release build it is nothing.

#ifndef NMOS_INSTRUMENT_SRC_JSON_ROOM_USE_H
#define NMOS_INSTRUMENT_SRC_JSON_ROOM_USE_H

#include <cassert>
#include <cstddef>

namespace nmos_instrument {

/// The room that is made at once: for brackets, keys and a value. The longest value, a text that
/// is copied in line, takes 131 bytes before it makes room itself.
constexpr std::size_t json_room = 512;

class RoomUse
{
public:
#ifdef NDEBUG
    explicit RoomUse(const char*) noexcept {}
    void begin(const char*) noexcept {}
    void end(const char*) const noexcept {}
#else
    explicit RoomUse(const char* position) noexcept : begin_(position) {}
    /// Room was made: from this position on json_room is free.
    void begin(const char* position) noexcept
    {
        begin_ = position;
    }
    void end(const char* position) const noexcept
    {
        assert(static_cast<std::size_t>(position - begin_) <= json_room);
    }

private:
    const char* begin_;
#endif
};

} // namespace nmos_instrument

#endif
