// SPDX-License-Identifier: Apache-2.0

#include "sdp_test_files.h"

#include <algorithm>
#include <stdexcept>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

std::string mark_text(SdpCode code, std::size_t line)
{
    return "line " + std::to_string(line) + ": " + std::string(rule_of(code).title);
}

Lines texts_of(const std::vector<Mark>& marks)
{
    Lines texts;
    for (const Mark& mark : marks)
        texts.push_back(mark_text(mark.code, mark.line));
    std::sort(texts.begin(), texts.end());
    return texts;
}

Lines texts_of(const SdpFindings& findings)
{
    std::vector<Mark> marks;
    for (const SdpFinding& finding : findings.shown())
        marks.push_back({finding.code, finding.line});
    return texts_of(marks);
}

std::string long_texts_of(const SdpFindings& findings)
{
    std::string texts;
    for (const SdpFinding& finding : findings.shown())
        texts.append(finding_text(finding)).append("\n");
    return texts;
}

std::string leg_text(const SdpLeg& leg)
{
    std::string text = std::to_string(leg.line);
    text.append(leg.multicast ? ": " : ": unicast ").append(leg.address).append(":");
    text.append(std::to_string(leg.port));
    if (!leg.source.empty())
        text.append(" from ").append(leg.source);
    return text;
}

} // namespace

Lines edited(const Lines& file, std::initializer_list<Edit> edits)
{
    Lines lines;
    for (std::size_t i = 0; i < file.size(); ++i) {
        const auto* const edit = std::find_if(
            edits.begin(), edits.end(), [i](const Edit& change) { return change.line == i + 1; });
        if (edit == edits.end())
            lines.push_back(file[i]);
        else
            lines.insert(lines.end(), edit->lines.begin(), edit->lines.end());
    }
    for (const Edit& edit : edits) {
        if (edit.line == 0 || edit.line > file.size())
            throw std::invalid_argument("the file has no line " + std::to_string(edit.line));
    }
    return lines;
}

SdpReceiver receiver_of(const std::string& media_type)
{
    SdpReceiver receiver;
    receiver.media_types = {media_type};
    receiver.interface_addresses = {"192.0.2.10", "198.51.100.10"};
    return receiver;
}

Lines legs_of(const SdpReading& reading)
{
    if (!reading.taken())
        return {};
    Lines legs;
    for (const std::optional<SdpLeg>& leg : reading.legs)
        legs.push_back(leg ? leg_text(*leg) : off);
    return legs;
}

void expect_reading(const SdpCase& expected)
{
    const SdpReading reading = read_sdp(sdp_text(expected.file), expected.receiver);
    SCOPED_TRACE(expected.name + "\n" + sdp_text(expected.file, "\n") +
                 long_texts_of(reading.findings));
    EXPECT_EQ(legs_of(reading), expected.legs);
    EXPECT_EQ(texts_of(reading.findings), texts_of(expected.findings));
    EXPECT_EQ(reading.taken(), reading.legs[0] || reading.legs[1]);
}

void expect_readings(std::initializer_list<SdpCase> cases)
{
    for (const SdpCase& expected : cases)
        expect_reading(expected);
}

} // namespace nmos_instrument::host
