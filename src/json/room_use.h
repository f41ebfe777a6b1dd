// SPDX-License-Identifier: Apache-2.0
//
// RoomUse: a debug build asserts that nobody writes more than json_room between two places where
// room is made, wherever the buffer's end happens to be. A release build compiles to nothing.

#ifndef NMOS_INSTRUMENT_SRC_JSON_ROOM_USE_H
#define NMOS_INSTRUMENT_SRC_JSON_ROOM_USE_H

#include <cassert>
#include <cstddef>

namespace nmos_instrument {

/// The room that is made at once: for a key, what of its value is written in line (JsonWriter's
/// put_string takes most, 130 bytes) and the closing brackets behind it.
constexpr std::size_t json_room = 256;

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
