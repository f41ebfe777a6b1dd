// SPDX-License-Identifier: Apache-2.0

#include "commands/sdp_report.h"

#include <algorithm>
#include <string_view>

#include <nlohmann/json.hpp>

namespace virtual_instrument {
namespace {

using nlohmann::ordered_json;

/// A file's bytes as visible ASCII, others as \xHH.
std::string printable(std::string_view text)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string shown;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte > 0x7e) {
            shown += "\\x";
            shown += digits[byte >> 4];
            shown += digits[byte & 15];
        } else {
            shown += c;
        }
    }
    return shown;
}

/// One thing that an SDP file says about all legs together.
struct FormatValue
{
    const char* key;
    const char* title;
    std::string value; ///< empty when the file does not say it
};

std::string with_scan(const std::string& text, bool interlaced)
{
    return text.empty() || !interlaced ? text : text + " interlaced";
}

std::vector<FormatValue> format_values(const sdp_str& found)
{
    const bool has_size = !found.width.empty();
    return {
        {"payload_type", "payload type", leading_number(found.rtp_payload_type)},
        {"sampling", "sampling", found.sampling},
        {"depth", "depth", found.depth},
        {"size", "size",
         with_scan(has_size ? found.width + 'x' + found.height : "", found.size_interlaced != 0)},
        {"frame_rate", "frame rate", with_scan(found.exactframerate, found.rate_interlaced != 0)},
        {"colorimetry", "colorimetry", found.colorimetry},
        {"transfer_characteristic", "TCS", found.tcs},
        {"packing_mode", "packing mode", found.packing_mode},
    };
}

constexpr const char* leg_names[2] = {"primary", "secondary"};

/// "-" where nothing was found.
std::string cell(const std::string& value)
{
    return value.empty() ? "-" : printable(value);
}

/// Blanks up to the next column, at least one.
std::string padded(std::string text, std::size_t width)
{
    text.resize(std::max(width, text.size() + 1), ' ');
    return text;
}

void print_table(const sdp_str& found, std::ostream& out)
{
    const auto row = [&out](const std::string& leg, const std::string& source,
                            const std::string& address, const std::string& port) {
        out << "  " << padded(leg, 11) << padded(source, 17) << padded(address, 17) << port << '\n';
    };
    row("leg", "source", "address", "port");
    for (int leg = 0; leg < 2; ++leg)
        row(leg_names[leg], cell(found.source_ip[leg]), cell(found.multicast_ip[leg]),
            cell(found.destination_port[leg]));
    for (const FormatValue& value : format_values(found)) {
        if (!value.value.empty())
            out << "  " << padded(value.title, 15) << printable(value.value) << '\n';
    }
}

ordered_json or_null(const std::string& value)
{
    return value.empty() ? ordered_json() : ordered_json(value);
}

ordered_json as_json(const SdpVerdict& verdict)
{
    ordered_json object;
    object["verdict"] = verdict.taken ? "taken" : "refused";
    object["messages"] = ordered_json::array();
    for (const SdpMessage& message : verdict.messages)
        object["messages"].push_back(
            {{"line", message.line == 0 ? ordered_json() : ordered_json(message.line)},
             {"text", message.text}});
    object["cause"] = or_null(verdict.cause);
    object["hints"] = verdict.hints;
    object["legs"] = ordered_json::array();
    for (int leg = 0; leg < 2; ++leg)
        object["legs"].push_back({{"leg", leg_names[leg]},
                                  {"source", or_null(verdict.found.source_ip[leg])},
                                  {"address", or_null(verdict.found.multicast_ip[leg])},
                                  {"port", or_null(verdict.found.destination_port[leg])}});
    for (const FormatValue& value : format_values(verdict.found))
        object["format"][value.key] = or_null(value.value);
    return object;
}

} // namespace

void report_as_text(const CheckedFile& file, std::ostream& out, std::ostream& errors)
{
    const std::string name = file.name == "-" ? "standard input" : file.name;
    if (!file.verdict) {
        errors << name << ": not readable: " << file.read_error << '\n';
        return;
    }
    const SdpVerdict& verdict = *file.verdict;
    out << name << ": " << (verdict.taken ? "taken" : "refused") << '\n';
    for (const SdpMessage& message : verdict.messages) {
        out << "  ";
        if (message.line != 0)
            out << "line " << message.line << ": ";
        out << printable(message.text) << '\n';
    }
    if (!verdict.cause.empty())
        out << "  " << verdict.cause << '\n';
    print_table(verdict.found, out);
    for (const std::string& hint : verdict.hints)
        out << "  hint: " << hint << '\n';
}

void report_as_json(const std::vector<CheckedFile>& files, std::ostream& out)
{
    ordered_json report = ordered_json::array();
    for (const CheckedFile& file : files) {
        ordered_json entry = {{"file", file.name}};
        if (file.verdict)
            entry.update(as_json(*file.verdict));
        else
            entry.update({{"verdict", "not readable"}, {"cause", file.read_error}});
        report.push_back(entry);
    }
    out << report.dump(4, ' ', false, ordered_json::error_handler_t::replace) << '\n';
}

} // namespace virtual_instrument
