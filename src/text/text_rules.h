// SPDX-License-Identifier: Apache-2.0
//
// What a text must be to be a UUID, a URI, UTF-8 and so on. Addresses have ipv4_text.h.

#ifndef NMOS_INSTRUMENT_SRC_TEXT_TEXT_RULES_H
#define NMOS_INSTRUMENT_SRC_TEXT_TEXT_RULES_H

#include <string_view>

namespace nmos_instrument {

bool is_utf8(std::string_view text);             ///< RFC 3629
bool is_digits(std::string_view text);           ///< one decimal digit at least
bool is_uuid(std::string_view text);             ///< lower case, version 1 to 5, as IS-04 writes it
bool is_version_time(std::string_view text);     ///< "<seconds>:<nanoseconds>"
bool is_api_version(std::string_view text);      ///< like "v1.2"
bool is_clock_name(std::string_view text);       ///< like "clk0"
bool is_mac_address(std::string_view text);      ///< like "00-00-5e-00-53-01", lower case
bool is_lower_case_eui64(std::string_view text); ///< like "00-00-5e-ff-fe-00-53-01"
bool is_eui64(std::string_view text);            ///< the same in either case
bool is_uri(std::string_view text);              ///< scheme, colon, visible ASCII
bool is_http_url(std::string_view text);         ///< http:// or https://, and something after it
bool is_media_type(std::string_view text);       ///< like "video/raw"
bool is_video_media_type(std::string_view text); ///< "video/..."
bool is_audio_media_type(std::string_view text); ///< "audio/..."

} // namespace nmos_instrument

#endif
