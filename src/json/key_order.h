// SPDX-License-Identifier: Apache-2.0
//
// KeyOrder: a debug build asserts that the keys of every object ascend. In a release build it is
// nothing.

#ifndef NMOS_INSTRUMENT_SRC_JSON_KEY_ORDER_H
#define NMOS_INSTRUMENT_SRC_JSON_KEY_ORDER_H

#include <cassert>
#include <cstddef>
#include <string_view>

namespace nmos_instrument {

class KeyOrder
{
#ifdef NDEBUG
public:
    void enter_object() noexcept {}
    void leave_object() noexcept {}
    void expect_ascending(std::string_view) noexcept {}
#else
public:
    void enter_object() noexcept
    {
        assert(depth_ < max_depth);
        last_key_[depth_++] = {};
    }
    void leave_object() noexcept
    {
        --depth_;
    }
    void expect_ascending(std::string_view key) noexcept
    {
        assert(depth_ > 0);
        assert(last_key_[depth_ - 1] < key);
        last_key_[depth_ - 1] = key;
    }

private:
    static constexpr std::size_t max_depth = 8;
    std::string_view last_key_[max_depth];
    std::size_t depth_ = 0;
#endif
};

} // namespace nmos_instrument

#endif
