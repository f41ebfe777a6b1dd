// SPDX-License-Identifier: Apache-2.0
//
// SdpKeys: which of the keys that the parser knows a line holds, and where their values begin.

#ifndef NMOS_INSTRUMENT_SRC_SDP_SDP_KEYS_H
#define NMOS_INSTRUMENT_SRC_SDP_SDP_KEYS_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace nmos_instrument {

enum class SdpKey : std::uint8_t
{
    origin,
    connection,
    media,
    attribute,
    group_dup,
    mid,
    source_filter,
    rtpmap,
    fmtp,
    sampling,
    depth,
    width,
    height,
    exactframerate,
    tcs,
    colorimetry,
    packing_mode,
    ssn,
    traffic_profile,
};

constexpr std::size_t sdp_key_count = static_cast<std::size_t>(SdpKey::traffic_profile) + 1;

/// A key counts anywhere in the line, its first occurrence only.
class SdpKeys
{
public:
    explicit SdpKeys(std::string_view line) noexcept;

    bool has(SdpKey key) const noexcept { return (found_ & bit(key)) != 0; }

    /// Where the value of a key that the line has begins.
    std::size_t value_start(SdpKey key) const noexcept { return value_start_[index(key)]; }

private:
    static constexpr std::size_t index(SdpKey key) noexcept
    {
        return static_cast<std::size_t>(key);
    }
    static constexpr std::uint32_t bit(SdpKey key) noexcept { return 1U << index(key); }

    void note_keys_at(std::string_view line, std::size_t separator) noexcept;

    std::uint32_t found_ = 0;
    // Only the entries of found keys are written and read.
    std::array<std::size_t, sdp_key_count> value_start_;
};

} // namespace nmos_instrument

#endif
