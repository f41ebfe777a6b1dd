// SPDX-License-Identifier: Apache-2.0

#include "sdp/reading_report.h"

#include <cstddef>
#include <optional>

#include "sdp/format_values.h"
#include "text/json_output.h"
#include "text/utf8.h"

namespace nmos_instrument::host {
namespace {

/// `text` may be any bytes; null if there are none.
void add_text_or_null(JsonOutput& json, const std::string& text)
{
    if (text.empty())
        json.null();
    else
        json.text(with_valid_utf8(text));
}

void add_line_or_null(JsonOutput& json, std::size_t line)
{
    if (line == 0) // the file as a whole
        json.null();
    else
        json.number(line);
}

void add(JsonOutput& json, const SdpFinding& finding)
{
    const SdpRule& rule = rule_of(finding.code);
    json.begin_object();
    add_line_or_null(json.key("line"), finding.line);
    json.key("code").text(code_text(finding.code));
    json.key("title").text(rule.title);
    json.key("severity").text(rule.refuses ? "error" : "warning");
    json.key("text").text(with_valid_utf8(finding.found));
    add_text_or_null(json.key("allowed"), finding.allowed);
    json.end_object();
}

void add(JsonOutput& json, std::size_t number, const SdpLeg& leg, const MediaInterface& interface)
{
    json.begin_object();
    json.key("leg").number(number);
    json.key("address").text(leg.address);
    json.key("multicast").flag(leg.multicast);
    add_text_or_null(json.key("source"), leg.source);
    json.key("port").number(leg.port);
    json.key("line").number(leg.line);
    json.key("interface").begin_object();
    json.key("name").text(interface.name);
    json.key("address").text(interface.address);
    json.end_object();
    json.end_object();
}

void add(JsonOutput& json, const SdpLegs& legs,
         const std::array<MediaInterface, interface_count>& interfaces)
{
    json.begin_array();
    for (std::size_t i = 0; i < leg_count; ++i) {
        if (const std::optional<SdpLeg>& leg = legs[i])
            add(json.element(), i + 1, *leg, interfaces[i]);
    }
    json.end_array();
}

void add(JsonOutput& json, const std::vector<FormatValue>& format)
{
    json.begin_object();
    for (const FormatValue& found : format)
        add_text_or_null(json.key(found.key), found.value);
    json.end_object();
}

} // namespace

std::string reading_report(const ReportedReading& reported)
{
    const SdpReading& reading = reported.reading;
    JsonOutput json(JsonForm::indented);
    json.begin_object();
    json.key("verdict").text(reading.taken() ? "taken" : "refused");
    json.key("receiver").text(name_of(reported.receiver));
    json.key("findings").begin_array();
    for (const SdpFinding& finding : reading.findings.shown())
        add(json.element(), finding);
    json.end_array();
    json.key("more_findings").number(reading.findings.left_out());
    add(json.key("legs"), reading.legs, reported.interfaces);
    add_text_or_null(json.key("origin"), reading.origin);
    add(json.key("format"), format_values(reading.format));
    json.key("hints").begin_array();
    for (const std::string& hint : reported.hints)
        json.element().text(hint);
    json.end_array();
    json.end_object();
    return json.take();
}

} // namespace nmos_instrument::host
