// SPDX-License-Identifier: Apache-2.0

#include "oracle/sdp_oracle.h"

#include <arpa/inet.h>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <locale.h>
#include <set>
#include <utility>

namespace oracle {

namespace {

bool has(const std::string& line, const char* key)
{
    return line.find(key) != std::string::npos;
}

/// Where the text after the first occurrence of `key` begins; the line must hold it.
std::size_t behind(const std::string& line, const std::string& key)
{
    return line.find(key) + key.size();
}

/// The text from `start` up to `terminator`, or to the end of the line without one. Throws
/// std::out_of_range when the start lies past the line's end.
std::string cut(const std::string& line, std::size_t start, char terminator)
{
    const std::size_t end = line.find(terminator, start);
    return end == std::string::npos ? line.substr(start) : line.substr(start, end - start);
}

std::string value_of(const std::string& line, const char* key, char terminator)
{
    return cut(line, behind(line, key), terminator);
}

std::string rest_of(const std::string& line, const char* key)
{
    return line.substr(behind(line, key));
}

bool is_address(const std::string& text)
{
    in_addr address;
    return inet_aton(text.c_str(), &address) != 0;
}

long number_in(const std::string& text)
{
    static const locale_t c_locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtol_l(text.c_str(), nullptr, 10, c_locale);
}

bool is_payload_type(const std::string& text)
{
    const long number = number_in(text);
    return 95 < number && number < 128;
}

bool is_port(const std::string& text)
{
    const long number = number_in(text);
    return 0 <= number && number < 65536;
}

constexpr char no_switch[] = "Switching 2K/4K is not supported. \n";
constexpr char switch_denied[] = "Switching 2K/4K is denied by the setting. \n";

class Parser
{
public:
    Parser(bool switch_capable, short current_format, bool switch_allowed, std::string& errors,
           sdp_str& out)
        : switch_capable_(switch_capable),
          switch_allowed_(switch_allowed),
          format_class_(class_of(current_format)),
          errors_(errors),
          out_(out)
    {}

    void examine(const std::string& line)
    {
        if (has(line, "o="))
            origin(line);
        if (has(line, "c="))
            connection(line);
        if (has(line, "m="))
            media(line);
        if (has(line, "a="))
            attribute(line);
    }

private:
    enum class FormatClass
    {
        set_to_4k,
        fixed_2k,
        free_to_switch
    };

    static FormatClass class_of(short current_format)
    {
        switch (current_format) {
        case 9:
        case 10:
            return FormatClass::set_to_4k;
        case 0:
        case 1:
        case 2:
        case 7:
        case 8:
            return FormatClass::fixed_2k;
        default:
            return FormatClass::free_to_switch;
        }
    }

    /// A message that does not fit into 256 bytes with its NUL keeps 254 bytes and its line break.
    template <class... Values>
    void complain(const char* format, const Values&... values)
    {
        const int size = std::snprintf(nullptr, 0, format, values.c_str()...);
        std::string message(static_cast<std::size_t>(size), ' ');
        std::snprintf(message.data(), message.size() + 1, format, values.c_str()...);
        if (message.size() >= 256)
            message = message.substr(0, 254) + "\n";
        errors_ += message;
    }

    void found(std::uint32_t bit) { out_.found_flags |= bit; }
    void found_on_leg(std::uint32_t bit_of_leg_0) { found(bit_of_leg_0 << leg_); }

    void origin(const std::string& line)
    {
        if (!has(line, "IN IP4 "))
            return;
        const std::string address = rest_of(line, "IN IP4 ");
        if (is_address(address)) {
            out_.source_ip[leg_] = address;
            found_on_leg(sdp_found_source_ip_leg0);
        } else {
            complain("IN IP4 %s is invalid source address.\n", address);
        }
    }

    void connection(const std::string& line)
    {
        if (!has(line, "IN IP4 "))
            return;
        const std::string address = value_of(line, "IN IP4 ", '/');
        if (is_address(address)) {
            out_.multicast_ip[leg_] = address;
            found_on_leg(sdp_found_multicast_ip_leg0);
        } else {
            complain("IN IP4 %s is invalid multicast address.\n", address);
        }
    }

    void media(const std::string& line)
    {
        for (const char* const kind : {"video ", "audio ", "text "}) {
            if (!has(line, kind))
                continue;
            const std::string port = value_of(line, kind, ' ');
            if (is_port(port)) {
                out_.destination_port[leg_] = port;
                found_on_leg(sdp_found_destination_port_leg0);
            } else {
                complain("Destination Port %s is range over.\n", port);
            }
        }
        payload_type(line, "RTP/AVP ", "RTP/AVP %s is range over.\n");
    }

    void payload_type(const std::string& line, const char* key, const char* complaint)
    {
        if (!has(line, key))
            return;
        const std::string text = rest_of(line, key);
        if (is_payload_type(text)) {
            out_.rtp_payload_type = text;
            found(sdp_found_rtp_payload_type);
        } else {
            complain(complaint, text);
        }
    }

    void attribute(const std::string& line)
    {
        if (has(line, "group:DUP ")) {
            primary_name_ = value_of(line, "group:DUP ", ' ');
            // The second name is of no use, but a line without it is refused.
            static_cast<void>(line.substr(behind(line, "group:DUP ") + primary_name_.size() + 1));
        }
        if (has(line, "mid:") && line.find(primary_name_) != std::string::npos)
            leg_ = 1;
        if (has(line, "source-filter:") && has(line, "incl IN IP4 "))
            source_filter(line);
        payload_type(line, "rtpmap:", "rtpmap: %s is range over.\n");
        payload_type(line, "fmtp:", "fmtp: %s is range over.\n");
        if (has(line, "sampling=") && has(line, "depth="))
            sampling_and_depth(value_of(line, "sampling=", ';'), value_of(line, "depth=", ';'));
        if (has(line, "width=") && has(line, "height="))
            size(value_of(line, "width=", ';'), value_of(line, "height=", ';'),
                 has(line, "interlace"));
        if (has(line, "exactframerate="))
            frame_rate(value_of(line, "exactframerate=", ';'), has(line, "interlace"));
        one_of(line, "TCS=", {"SDR", "HLG", "PQ"}, "TCS= %s is no support parameter.\n", &out_.tcs,
               sdp_found_tcs);
        one_of(line, "colorimetry=", {"BT709", "BT2020", "BT2100"},
               "colorimetry: %s is no support parameter.\n", &out_.colorimetry,
               sdp_found_colorimetry);
        one_of(line, "PM=", {"2110GPM", "2110BPM", "2022-6"}, "PM= %s is no support parameter.\n",
               &out_.packing_mode, sdp_found_packing_mode);
        one_of(line, "SSN=", {"ST2110-20:2017", "ST2110-30:2017", "ST2110-40:2017"},
               "SSN= %s is no support parameter.\n", nullptr, 0);
        one_of(line, "TP=", {"2110TPNL", "2110TPN", "2110TPW"}, "TP= %s is no support parameter.\n",
               nullptr, 0);
    }

    void source_filter(const std::string& line)
    {
        const std::size_t start = behind(line, "incl IN IP4 ");
        const std::string multicast = cut(line, start, ' ');
        if (is_address(multicast)) {
            out_.multicast_ip[leg_] = multicast;
            found_on_leg(sdp_found_destination_port_leg0); // the port's bit, not the address's
        } else {
            complain("incl IN IP4 %s is invalid multicast address.\n", multicast);
        }
        const std::string source = line.substr(start + multicast.size() + 1);
        if (is_address(source)) {
            out_.source_ip[leg_] = source;
            found_on_leg(sdp_found_source_ip_leg0);
        } else {
            complain("incl IN IP4 %s is invalid source address.\n", source);
        }
    }

    void sampling_and_depth(const std::string& sampling, const std::string& depth)
    {
        if (sampling == "YCbCr-4:2:2" && depth == "10") {
            out_.sampling = sampling;
            out_.depth = depth;
            found(sdp_found_sampling_and_depth);
        } else {
            complain("(sampling= %s, depth= %s) is no support parameter.\n", sampling, depth);
        }
    }

    void switch_check()
    {
        if (!switch_capable_)
            errors_ += no_switch;
        else if (!switch_allowed_)
            errors_ += switch_denied;
    }

    void accept_size(const std::string& width, const std::string& height, bool interlaced)
    {
        out_.width = width;
        out_.height = height;
        out_.size_interlaced = interlaced;
        found(sdp_found_size);
    }

    void size(const std::string& width, const std::string& height, bool interlaced)
    {
        const std::string both = width + "x" + height;
        const bool hd = both == "1920x1080" || both == "1280x720";
        const bool uhd = both == "3840x2160";
        if (interlaced && hd)
            interlaced_hd(width, height);
        else if (interlaced)
            complain("(width= %s, height= %s, interlace) is no support parameter.\n", width,
                     height);
        else if (hd)
            progressive_hd(width, height);
        else if (uhd)
            progressive_uhd(width, height);
        else
            complain("(width= %s, height= %s) is no support parameter. \n", width, height);
    }

    void progressive_uhd(const std::string& width, const std::string& height)
    {
        switch (format_class_) {
        case FormatClass::set_to_4k:
            if (!switch_capable_)
                errors_ += no_switch;
            accept_size(width, height, false);
            break;
        case FormatClass::fixed_2k:
            errors_ += switch_capable_ ? switch_denied : no_switch;
            break;
        case FormatClass::free_to_switch:
            switch_check();
            accept_size(width, height, false);
            break;
        }
    }

    void progressive_hd(const std::string& width, const std::string& height)
    {
        if (format_class_ != FormatClass::free_to_switch)
            switch_check();
        accept_size(width, height, false);
    }

    void interlaced_hd(const std::string& width, const std::string& height)
    {
        if (format_class_ == FormatClass::set_to_4k)
            switch_check();
        if (format_class_ == FormatClass::fixed_2k)
            errors_ += switch_denied;
        accept_size(width, height, true);
    }

    void frame_rate(const std::string& rate, bool interlaced)
    {
        const std::set<std::string> progressive_rates = {"60", "60000/1001", "50"};
        const std::set<std::string> interlaced_rates = {"30", "30000/1001", "25"};
        if ((interlaced ? interlaced_rates : progressive_rates).contains(rate)) {
            out_.exactframerate = rate;
            out_.rate_interlaced = interlaced;
            found(sdp_found_exactframerate);
        } else {
            complain("exactframerate: %s is no support parameter.\n", rate);
        }
    }

    void one_of(const std::string& line, const char* key, const std::set<std::string>& accepted,
                const char* complaint, std::string* stored, std::uint32_t bit)
    {
        if (!has(line, key))
            return;
        const std::string value = value_of(line, key, ';');
        if (!accepted.contains(value)) {
            complain(complaint, value);
        } else if (stored != nullptr) {
            *stored = value;
            found(bit);
        }
    }

    const bool switch_capable_;
    const bool switch_allowed_;
    const FormatClass format_class_;
    std::string& errors_;
    sdp_str& out_;
    unsigned leg_ = 0;
    std::string primary_name_;
};

} // namespace

int analyze_sdp_file(const std::string& sdp, bool switch_capable, short current_format,
                     bool switch_allowed, std::string& errors, sdp_str& out)
{
    errors = "";
    out.found_flags = 0;
    Parser parser(switch_capable, current_format, switch_allowed, errors, out);
    for (const std::string& line : split_string(convert_crlf(sdp, "\n"), "\n", 100).entries)
        parser.examine(line);
    return errors.empty() ? 200 : 400;
}

} // namespace oracle
