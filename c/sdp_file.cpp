// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <string>

#include "answer.h"
#include "nmos_instrument/ConnectionApi.h"

using namespace nmos_instrument::c;

namespace {

constexpr int refused = 400;

/// The text up to its first NUL, if it fits.
template <std::size_t N>
bool store(char (&field)[N], const std::string& text)
{
    const std::size_t length = text.find('\0') == std::string::npos ? text.size() : text.find('\0');
    if (length >= N)
        return false;
    std::copy_n(text.data(), length, field);
    return true;
}

/// Whether all texts fit.
bool store(nmos_sdp_found& found, const sdp_str& from)
{
    found.found_flags = from.found_flags;
    found.rtp_payload_type = static_cast<std::int32_t>(std::clamp<long long>(
        std::strtoll(from.rtp_payload_type.c_str(), nullptr, 10),
        std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
    found.size_interlaced = from.size_interlaced;
    found.rate_interlaced = from.rate_interlaced;

    bool fits = true;
    for (int leg = 0; leg < 2; ++leg) {
        fits &= store(found.source_ip[leg], from.source_ip[leg]);
        fits &= store(found.multicast_ip[leg], from.multicast_ip[leg]);
        fits &= store(found.destination_port[leg], from.destination_port[leg]);
    }
    fits &= store(found.sampling, from.sampling);
    fits &= store(found.depth, from.depth);
    fits &= store(found.width, from.width);
    fits &= store(found.height, from.height);
    fits &= store(found.exactframerate, from.exactframerate);
    fits &= store(found.colorimetry, from.colorimetry);
    fits &= store(found.packing_mode, from.packing_mode);
    fits &= store(found.tcs, from.tcs);
    return fits;
}

/// What was found, also of a file that could not be read to its end.
struct Analysis
{
    int status = refused;
    bool is_complete = false;
    std::string errors;
    sdp_str found = sdp_str();
};

Analysis analyze(const std::string& sdp, bool switch_capable, short current_format,
                 bool switch_allowed)
{
    Analysis analysis;
    try {
        analysis.status = ConnectionApi().analyze_sdp_file(
            sdp, switch_capable, current_format, switch_allowed, &analysis.errors, &analysis.found);
        analysis.is_complete = true;
    } catch (const std::out_of_range&) { // what is_complete says
    }
    return analysis;
}

} // namespace

size_t nmos_connection_analyze_sdp_file(const char* sdp, size_t sdp_length, int switch_capable,
                                        short current_format, int switch_allowed,
                                        nmos_sdp_found* found, char* errors, size_t errors_size)
{
    const Buffer buffer{errors, errors_size};
    if (lacks_pointer(buffer, {sdp, found}))
        return refuse(buffer, NMOS_ERROR_NULL_POINTER);
    *found = nmos_sdp_found();
    found->status = refused;
    try {
        const Analysis analysis =
            analyze({sdp, sdp_length}, switch_capable != 0, current_format, switch_allowed != 0);
        const std::size_t length = give(buffer, analysis.errors);
        const bool fits = store(*found, analysis.found);
        found->status = analysis.status;
        if (!analysis.is_complete)
            return NMOS_ERROR_INCOMPLETE;
        return fits ? length : NMOS_ERROR_TOO_LONG;
    } catch (...) {
        return refuse(buffer, error_of_exception());
    }
}

size_t nmos_connection_convert_crlf(const char* text, size_t length, const char* newline,
                                    char* buffer, size_t size)
{
    return answer({buffer, size}, {text, newline}, [&] {
        return ConnectionApi::convertCRLF({text, length}, newline);
    });
}
