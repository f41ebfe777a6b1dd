// SPDX-License-Identifier: Apache-2.0

#include "commands/sdp_verdict.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include <nmos_instrument/nmos_instrument.h>

namespace nmos_instrument::program {
namespace {

/// Above this size messages are not traced to their lines: tracing reads the file once a line.
constexpr std::size_t traceable_size = std::size_t{256} << 10;

/// What is wrong with the line at which the parser gives up.
constexpr std::string_view lacks_second_value =
    " lacks its second value: \"a=group:DUP\" takes two names, "
    "\"a=source-filter: incl IN IP4\" two addresses";

enum class Outcome
{
    taken,
    refused,
    gave_up
};

/// `errors` and `found` must be fresh.
Outcome analyze(const std::string& sdp, const ReceivingInstrument& instrument, std::string& errors,
                sdp_str& found)
{
    try {
        const int status = ConnectionApi().analyze_sdp_file(
            sdp, instrument.switch_capable, instrument.current_format, instrument.switch_allowed,
            &errors, &found);
        return status == 200 ? Outcome::taken : Outcome::refused;
    } catch (const std::out_of_range&) {
        return Outcome::gave_up;
    }
}

/// The lines as the parser cuts them.
class Lines
{
public:
    explicit Lines(const std::string& sdp) : text_(ConnectionApi::convertCRLF(sdp, "\n"))
    {
        for (std::size_t at = text_.find('\n'); at != std::string::npos;
             at = text_.find('\n', at + 1))
            ends_.push_back(at + 1);
    }

    /// How many lines end with a line break.
    std::size_t complete() const { return ends_.size(); }

    std::string first(std::size_t count) const
    {
        return text_.substr(0, count == 0 ? 0 : ends_[count - 1]);
    }

    /// The text after the last line break.
    std::string_view rest() const
    {
        return std::string_view(text_).substr(ends_.empty() ? 0 : ends_.back());
    }

    std::size_t size() const { return text_.size(); }

private:
    std::string text_;
    std::vector<std::size_t> ends_;
};

void add_messages(const std::string& errors, std::size_t line, std::vector<SdpMessage>& messages)
{
    for (std::size_t begin = 0; begin < errors.size();) {
        const std::size_t end = std::min(errors.find('\n', begin), errors.size());
        messages.push_back({line, errors.substr(begin, end - begin)});
        begin = end + 1;
    }
}

/// The parser reads line by line, so its messages about the first n lines are the beginning of
/// those about the first n + 1. Returns the line at which the parser gave up, or 0 if it did not.
std::size_t trace_messages(const Lines& lines, const ReceivingInstrument& instrument,
                           std::vector<SdpMessage>& messages)
{
    const std::size_t last = std::min(lines.complete(), sdp_examined_lines);
    std::size_t known = 0;
    for (std::size_t line = 1; line <= last; ++line) {
        std::string errors;
        sdp_str found = sdp_str();
        const Outcome outcome = analyze(lines.first(line), instrument, errors, found);
        add_messages(errors.substr(std::min(known, errors.size())), line, messages);
        known = errors.size();
        if (outcome == Outcome::gave_up)
            return line;
    }
    return 0;
}

/// The parser accepts port 0, which switches a medium off (RFC 3264 5.1).
bool is_usable(const FoundLeg& leg)
{
    return !leg.address.empty() && std::strtol(leg.port.c_str(), nullptr, 10) > 0;
}

void take_over(const sdp_str& found, SdpVerdict& verdict)
{
    for (std::size_t i = 0; i < verdict.legs.size(); ++i)
        verdict.legs[i] = {found.source_ip[i], found.multicast_ip[i], found.destination_port[i]};
    verdict.format = host::format_values(found);
}

/// The parser has nothing to say against such a file, since it complains about values only.
bool is_blank(const std::string& sdp)
{
    return sdp.find_first_not_of(" \t\r\n") == std::string::npos;
}

/// What the parser makes of a last line without a line break.
std::string number_of(std::string_view rest)
{
    std::string number;
    int count = 0;
    ConnectionApi::split_string(std::string(rest), "\n", &number, 1, &count);
    return number;
}

std::vector<std::string> hints_about(const std::string& sdp, const Lines& lines,
                                     const SdpVerdict& verdict)
{
    std::vector<std::string> hints;
    if (lines.complete() < sdp_examined_lines && !lines.rest().empty()) {
        hints.push_back("the file does not end with a line break: line " +
                        std::to_string(lines.complete() + 1) + " was read as the number " +
                        number_of(lines.rest()) + ", not as a line; end it with a line break");
    }
    if (lines.complete() + (lines.rest().empty() ? 0 : 1) > sdp_examined_lines)
        hints.push_back("only the first " + std::to_string(sdp_examined_lines) +
                        " lines were examined");
    if (const std::size_t nul = sdp.find('\0'); nul != std::string::npos)
        hints.push_back("byte " + std::to_string(nul + 1) +
                        " is NUL: the checks read a value only up to there");
    constexpr std::size_t room = sizeof CONNECTION_HALF_IS05_ST::transport_file_data - 1;
    if (sdp.size() > room)
        hints.push_back("the file has " + std::to_string(sdp.size()) +
                        " bytes; the connection state of a receiver holds " + std::to_string(room));
    if (verdict.taken && std::none_of(verdict.legs.begin(), verdict.legs.end(), is_usable))
        hints.emplace_back("no leg has both an address and a port from 1 to 65535: there is "
                           "nothing to receive");
    return hints;
}

} // namespace

SdpVerdict judge_sdp(const std::string& sdp, const ReceivingInstrument& instrument)
{
    if (is_blank(sdp)) {
        SdpVerdict nothing;
        take_over(sdp_str(), nothing);
        nothing.cause = "the file has no line but empty ones: it is no SDP file, which begins with "
                        "the line v=0";
        return nothing;
    }
    std::string errors;
    sdp_str found = sdp_str();
    const Outcome outcome = analyze(sdp, instrument, errors, found);
    const Lines lines(sdp);

    SdpVerdict verdict;
    verdict.taken = outcome == Outcome::taken;
    take_over(found, verdict);
    std::size_t last_line = 0;
    if (!verdict.taken) {
        if (lines.size() <= traceable_size)
            last_line = trace_messages(lines, instrument, verdict.messages);
        else
            add_messages(errors, 0, verdict.messages);
    }
    if (outcome == Outcome::gave_up) {
        verdict.cause = last_line == 0 ? "a line" : "line " + std::to_string(last_line);
        verdict.cause += lacks_second_value;
        verdict.cause += "; the lines after it were not examined";
    }
    verdict.hints = hints_about(sdp, lines, verdict);
    return verdict;
}

} // namespace nmos_instrument::program
