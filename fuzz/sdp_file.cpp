// SPDX-License-Identifier: Apache-2.0
//
// An SDP file as a controller may send it: status, messages and found values must hang together,
// and it must not matter how the lines end.

#include <stdexcept>
#include <string_view>

#include "fuzz_input.h"
#include "nmos_instrument/ConnectionApi.h"

namespace {

struct Result
{
    int status = 0;
    std::string errors;
    sdp_str found = sdp_str();
    bool threw = false;
};

Result analysed(const std::string& sdp, std::uint8_t flags, short format)
{
    Result result;
    try {
        result.status = ConnectionApi().analyze_sdp_file(
            sdp, (flags & 1) != 0, format, (flags & 2) != 0, &result.errors, &result.found);
    } catch (const std::out_of_range& error) {
        REQUIRE(std::string_view(error.what()).starts_with("basic_string::substr"));
        result.threw = true;
    }
    return result;
}

bool same_values(const sdp_str& left, const sdp_str& right)
{
    for (int leg = 0; leg < 2; ++leg) {
        if (left.source_ip[leg] != right.source_ip[leg] ||
            left.multicast_ip[leg] != right.multicast_ip[leg] ||
            left.destination_port[leg] != right.destination_port[leg])
            return false;
    }
    return left.found_flags == right.found_flags &&
           left.rtp_payload_type == right.rtp_payload_type && left.sampling == right.sampling &&
           left.depth == right.depth && left.width == right.width && left.height == right.height &&
           left.size_interlaced == right.size_interlaced &&
           left.exactframerate == right.exactframerate &&
           left.rate_interlaced == right.rate_interlaced && left.tcs == right.tcs &&
           left.colorimetry == right.colorimetry && left.packing_mode == right.packing_mode;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    const std::uint8_t flags = input.byte();
    const short format = static_cast<std::int8_t>(input.byte());
    const std::string sdp = input.rest();

    const Result result = analysed(sdp, flags, format);
    REQUIRE(result.threw || result.status == (result.errors.empty() ? 200 : 400));
    REQUIRE(result.errors.empty() || result.errors.back() == '\n');
    REQUIRE((result.found.found_flags & ~0x1FFFU) == 0);

    const Result unified = analysed(ConnectionApi::convertCRLF(sdp, "\n"), flags, format);
    REQUIRE(unified.threw == result.threw);
    REQUIRE(unified.status == result.status);
    REQUIRE(unified.errors == result.errors);
    REQUIRE(same_values(unified.found, result.found));
    return 0;
}
