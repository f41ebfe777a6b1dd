// SPDX-License-Identifier: Apache-2.0
//
// A scanner for keywords, not an SDP grammar: several of the steps below may apply to a line, and a
// key counts anywhere in its line.

#include "sdp/sdp_parser.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <stdexcept>

#include "records/record_fields.h"
#include "sdp/line_reader.h"
#include "sdp/sdp_keys.h"
#include "text/ipv4_text.h"
#include "text/number_text.h"

namespace nmos_instrument {
namespace {

constexpr std::string_view switch_not_supported = "Switching 2K/4K is not supported. \n";
constexpr std::string_view switch_denied = "Switching 2K/4K is denied by the setting. \n";

/// The frame sizes that the instrument knows.
enum class SizeClass
{
    size_2k,
    size_4k,
    unknown
};

/// Sizes are compared as the texts in the file.
SizeClass size_class(std::string_view width, std::string_view height)
{
    if (width == "3840" && height == "2160")
        return SizeClass::size_4k;
    if ((width == "1920" && height == "1080") || (width == "1280" && height == "720"))
        return SizeClass::size_2k;
    return SizeClass::unknown;
}

/// What is said when a frame size would change the instrument's format.
enum class SwitchCheck
{
    silent,
    capable_only,         ///< not supported, unless it is capable
    capable_then_allowed, ///< not supported, unless it is capable; then denied, unless allowed
    denied_if_capable,    ///< denied when it is capable, else not supported
    denied,
};

struct SizeRule
{
    SwitchCheck check;
    bool accepted;
};

/// What each frame size means to an instrument in its current format.
struct SizeRules
{
    SizeRule progressive_4k;
    SizeRule progressive_2k;
    SizeRule interlaced_2k;
};

/// It is set to 4K: 2K would be a switch.
constexpr SizeRules set_to_4k{
    {SwitchCheck::capable_only, true},
    {SwitchCheck::capable_then_allowed, true},
    {SwitchCheck::capable_then_allowed, true},
};
/// It is free: 2K is taken as it comes, 4K would be a switch.
constexpr SizeRules free_to_switch{
    {SwitchCheck::capable_then_allowed, true},
    {SwitchCheck::silent, true},
    {SwitchCheck::silent, true},
};
/// It stays at 2K: a 4K size is not even stored. 2K would be a switch too.
constexpr SizeRules fixed_2k{
    {SwitchCheck::denied_if_capable, false},
    {SwitchCheck::capable_then_allowed, true},
    {SwitchCheck::denied, true},
};

/// The codes are the instrument's own.
const SizeRules& size_rules(short current_format)
{
    switch (current_format) {
    case 9:
    case 10:
        return set_to_4k;
    case 0:
    case 1:
    case 2:
    case 7:
    case 8:
        return fixed_2k;
    default:
        return free_to_switch;
    }
}

/// The texts that a value may be.
using Words = char[3][16];

/// A format parameter whose value is one of a few words.
struct WordParameter
{
    SdpKey key;
    Words words;
    char complaint[16];          ///< what its message begins with
    std::string sdp_str::*field; ///< null: checked, not stored
    std::uint32_t flag;
};

/// In the order in which they are checked.
constexpr WordParameter word_parameters[] = {
    {SdpKey::tcs, {"SDR", "HLG", "PQ"}, "TCS= ", &sdp_str::tcs, sdp_found_tcs},
    {SdpKey::colorimetry,
     {"BT709", "BT2020", "BT2100"},
     "colorimetry: ",
     &sdp_str::colorimetry,
     sdp_found_colorimetry},
    {SdpKey::packing_mode,
     {"2110GPM", "2110BPM", "2022-6"},
     "PM= ",
     &sdp_str::packing_mode,
     sdp_found_packing_mode},
    {SdpKey::ssn, {"ST2110-20:2017", "ST2110-30:2017", "ST2110-40:2017"}, "SSN= ", nullptr, 0},
    {SdpKey::traffic_profile, {"2110TPNL", "2110TPN", "2110TPW"}, "TP= ", nullptr, 0},
};

constexpr Words progressive_rates = {"60", "60000/1001", "50"};
constexpr Words interlaced_rates = {"30", "30000/1001", "25"};

bool is_one_of(std::string_view value, const Words& words)
{
    return std::any_of(std::begin(words), std::end(words),
                       [value](const auto& word) { return value == field_text(word); });
}

/// Linear in both lengths, which string_view::find is not: both may come out of the file.
bool contains(std::string_view line, std::string_view word)
{
    return word.empty() || memmem(line.data(), line.size(), word.data(), word.size()) != nullptr;
}

/// The text from `start` up to the terminator, or to the end of the line.
std::string_view value_until(std::string_view line, std::size_t start, char terminator)
{
    const std::string_view rest = line.substr(start);
    return rest.substr(0, rest.find(terminator));
}

/// The text after a value and its terminator. Throws when the line ends with the value.
std::string_view text_after(std::string_view line, std::size_t value_start, std::string_view value)
{
    const std::size_t start = value_start + value.size() + 1;
    if (start > line.size())
        throw std::out_of_range("basic_string::substr: a second value is missing at the end of \"" +
                                std::string(line) + '"');
    return line.substr(start);
}

class SdpParser
{
public:
    SdpParser(const FormatSwitch& format_switch, std::string& errors, sdp_str& out)
        : format_switch_(format_switch), errors_(errors), out_(out)
    {}

    void read_line(std::string_view line)
    {
        const SdpKeys keys(line);
        if (keys.has(SdpKey::origin))
            read_origin(line);
        if (keys.has(SdpKey::connection))
            read_connection(line);
        if (keys.has(SdpKey::media))
            read_media(line);
        if (keys.has(SdpKey::attribute))
            read_attributes(line, keys);
    }

private:
    // RFC 4566 5.2
    void read_origin(std::string_view line)
    {
        std::size_t start = 0;
        if (!find_value(line, "IN IP4 ", start))
            return;
        const std::string_view address = line.substr(start);
        if (is_inet_aton_address(address))
            store_for_leg(out_.source_ip, address, sdp_found_source_ip_leg0);
        else
            complain("IN IP4 ", address, " is invalid source address.\n");
    }

    // RFC 4566 5.7
    void read_connection(std::string_view line)
    {
        std::size_t start = 0;
        if (!find_value(line, "IN IP4 ", start))
            return;
        const std::string_view address = value_until(line, start, '/');
        if (is_inet_aton_address(address))
            store_for_leg(out_.multicast_ip, address, sdp_found_multicast_ip_leg0);
        else
            complain("IN IP4 ", address, " is invalid multicast address.\n");
    }

    // RFC 4566 5.14
    void read_media(std::string_view line)
    {
        for (const std::string_view medium : {"video ", "audio ", "text "}) {
            std::size_t start = 0;
            if (!find_value(line, medium, start))
                continue;
            const std::string_view port = value_until(line, start, ' ');
            const long long number = leading_integer(port);
            if (number >= 0 && number < 65536)
                store_for_leg(out_.destination_port, port, sdp_found_destination_port_leg0);
            else
                complain("Destination Port ", port, " is range over.\n");
        }
        std::size_t start = 0;
        if (find_value(line, "RTP/AVP ", start))
            read_payload_type("RTP/AVP ", line.substr(start));
    }

    void read_attributes(std::string_view line, const SdpKeys& keys)
    {
        if (keys.has(SdpKey::group_dup))
            read_dup_group(line, keys.value_start(SdpKey::group_dup));
        if (keys.has(SdpKey::mid) && contains(line, primary_media_id_))
            leg_ = 1; // all that follows belongs to the secondary leg
        if (keys.has(SdpKey::source_filter))
            read_source_filter(line);
        if (keys.has(SdpKey::rtpmap))
            read_payload_type("rtpmap: ", line.substr(keys.value_start(SdpKey::rtpmap)));
        if (keys.has(SdpKey::fmtp))
            read_payload_type("fmtp: ", line.substr(keys.value_start(SdpKey::fmtp)));
        if (keys.has(SdpKey::sampling) && keys.has(SdpKey::depth))
            read_sampling(parameter(line, keys, SdpKey::sampling),
                          parameter(line, keys, SdpKey::depth));
        if (keys.has(SdpKey::width) && keys.has(SdpKey::height))
            read_size(parameter(line, keys, SdpKey::width), parameter(line, keys, SdpKey::height),
                      contains(line, "interlace"));
        if (keys.has(SdpKey::exactframerate))
            read_frame_rate(parameter(line, keys, SdpKey::exactframerate),
                            contains(line, "interlace"));
        for (const WordParameter& word_parameter : word_parameters) {
            if (keys.has(word_parameter.key))
                read_word(parameter(line, keys, word_parameter.key), word_parameter);
        }
    }

    // RFC 7104 3: the first name is that of the primary leg's media block
    void read_dup_group(std::string_view line, std::size_t start)
    {
        const std::string_view primary = value_until(line, start, ' ');
        // The secondary name has no effect, but it must be there.
        static_cast<void>(text_after(line, start, primary));
        primary_media_id_ = primary;
    }

    // RFC 4570 3
    void read_source_filter(std::string_view line)
    {
        std::size_t start = 0;
        if (!find_value(line, "incl IN IP4 ", start))
            return;
        const std::string_view destination = value_until(line, start, ' ');
        // Intentional: the address sets the bit of the port, see sdp_found_flag.
        if (is_inet_aton_address(destination))
            store_for_leg(out_.multicast_ip, destination, sdp_found_destination_port_leg0);
        else
            complain("incl IN IP4 ", destination, " is invalid multicast address.\n");
        const std::string_view source = text_after(line, start, destination);
        if (is_inet_aton_address(source))
            store_for_leg(out_.source_ip, source, sdp_found_source_ip_leg0);
        else
            complain("incl IN IP4 ", source, " is invalid source address.\n");
    }

    /// The dynamic payload types of RFC 3551 6. The whole rest of the line is stored.
    void read_payload_type(std::string_view complaint, std::string_view value)
    {
        const long long number = leading_integer(value);
        if (number > 95 && number < 128)
            store(out_.rtp_payload_type, value, sdp_found_rtp_payload_type);
        else
            complain(complaint, value, " is range over.\n");
    }

    void read_sampling(std::string_view sampling, std::string_view depth)
    {
        if (sampling == "YCbCr-4:2:2" && depth == "10") {
            store(out_.sampling, sampling, sdp_found_sampling_and_depth);
            store(out_.depth, depth, sdp_found_sampling_and_depth);
        } else {
            complain_of_pair("(sampling= ", sampling, ", depth= ", depth,
                             ") is no support parameter.\n");
        }
    }

    void read_size(std::string_view width, std::string_view height, bool interlaced)
    {
        const SizeClass size = size_class(width, height);
        const SizeRules& rules = size_rules(format_switch_.current_format);
        if (interlaced && size == SizeClass::size_2k)
            apply_size_rule(rules.interlaced_2k, width, height, interlaced);
        else if (interlaced)
            complain_of_pair("(width= ", width, ", height= ", height,
                             ", interlace) is no support parameter.\n");
        else if (size == SizeClass::size_4k)
            apply_size_rule(rules.progressive_4k, width, height, interlaced);
        else if (size == SizeClass::size_2k)
            apply_size_rule(rules.progressive_2k, width, height, interlaced);
        else
            complain_of_pair("(width= ", width, ", height= ", height,
                             ") is no support parameter. \n");
    }

    void apply_size_rule(const SizeRule& rule, std::string_view width, std::string_view height,
                         bool interlaced)
    {
        errors_ += switch_complaint(rule.check);
        if (!rule.accepted)
            return;
        store(out_.width, width, sdp_found_size);
        store(out_.height, height, sdp_found_size);
        out_.size_interlaced = interlaced ? 1 : 0;
    }

    std::string_view switch_complaint(SwitchCheck check) const
    {
        const std::string_view unless_capable = format_switch_.capable ? "" : switch_not_supported;
        switch (check) {
        case SwitchCheck::silent:
            return "";
        case SwitchCheck::capable_only:
            return unless_capable;
        case SwitchCheck::capable_then_allowed:
            return format_switch_.capable && !format_switch_.allowed ? switch_denied
                                                                     : unless_capable;
        case SwitchCheck::denied_if_capable:
            return format_switch_.capable ? switch_denied : switch_not_supported;
        case SwitchCheck::denied:
            break;
        }
        return switch_denied;
    }

    void read_frame_rate(std::string_view rate, bool interlaced)
    {
        if (is_one_of(rate, interlaced ? interlaced_rates : progressive_rates)) {
            store(out_.exactframerate, rate, sdp_found_exactframerate);
            out_.rate_interlaced = interlaced ? 1 : 0;
        } else {
            complain("exactframerate: ", rate, " is no support parameter.\n");
        }
    }

    void read_word(std::string_view word, const WordParameter& rule)
    {
        if (!is_one_of(word, rule.words))
            complain(field_text(rule.complaint), word, " is no support parameter.\n");
        else if (rule.field != nullptr)
            store(out_.*rule.field, word, rule.flag);
    }

    static std::string_view parameter(std::string_view line, const SdpKeys& keys, SdpKey key)
    {
        return value_until(line, keys.value_start(key), ';');
    }

    /// A second key of a line: anywhere in it.
    static bool find_value(std::string_view line, std::string_view key, std::size_t& start)
    {
        const std::size_t at = line.find(key);
        start = at + key.size();
        return at != std::string_view::npos;
    }

    void store(std::string& field, std::string_view value, std::uint32_t flag)
    {
        field.assign(value);
        out_.found_flags |= flag;
    }

    /// The flag of leg 1 is the next bit after that of leg 0.
    void store_for_leg(std::string (&fields)[2], std::string_view value, std::uint32_t leg0_flag)
    {
        store(fields[leg_], value, leg0_flag << leg_);
    }

    [[gnu::cold]] void complain(std::string_view before, std::string_view value,
                                std::string_view after)
    {
        complain({before, up_to_nul(value), after});
    }

    [[gnu::cold]] void complain_of_pair(std::string_view before, std::string_view first,
                                        std::string_view between, std::string_view second,
                                        std::string_view after)
    {
        complain({before, up_to_nul(first), between, up_to_nul(second), after});
    }

    static std::string_view up_to_nul(std::string_view value)
    {
        return value.substr(0, value.find('\0'));
    }

    /// A message of 256 bytes or more becomes its first 254 bytes and the line break.
    void complain(std::initializer_list<std::string_view> pieces)
    {
        constexpr std::size_t longest = 255;
        std::size_t size = 0;
        for (const std::string_view piece : pieces)
            size += piece.size();
        std::size_t room = size <= longest ? size : longest - 1;
        for (const std::string_view piece : pieces) {
            const std::size_t taken = std::min(piece.size(), room);
            errors_.append(piece.data(), taken);
            room -= taken;
        }
        if (size > longest)
            errors_ += '\n';
    }

    const FormatSwitch& format_switch_;
    std::string& errors_;
    sdp_str& out_;
    std::string_view primary_media_id_; ///< empty until a DUP group names it
    unsigned leg_ = 0;
};

} // namespace

void parse_sdp(std::string_view sdp, const FormatSwitch& format_switch, std::string& errors,
               sdp_str& out)
{
    out.found_flags = 0;
    SdpParser parser(format_switch, errors, out);
    LineReader lines(sdp);
    std::string_view line;
    // What follows the last line break counts as its leading integer only. A number holds no
    // key, so it is not examined.
    for (std::size_t count = 0; count < sdp_examined_lines && lines.next(line); ++count)
        parser.read_line(line);
}

} // namespace nmos_instrument
