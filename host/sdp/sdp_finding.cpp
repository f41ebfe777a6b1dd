// SPDX-License-Identifier: Apache-2.0

#include "sdp/sdp_finding.h"

#include <algorithm>
#include <utility>

#include "text/ascii.h"

namespace nmos_instrument::host {

const SdpRule& rule_of(SdpCode code)
{
    const std::span<const SdpRule> rules = sdp_rules();
    return *std::find_if(rules.begin(), rules.end(),
                         [code](const SdpRule& rule) { return rule.code == code; });
}

std::string code_text(SdpCode code)
{
    const std::string number = std::to_string(static_cast<int>(code));
    return "SDP" + std::string(3 - number.size(), '0') + number;
}

const SdpRule* find_sdp_rule(std::string_view code)
{
    std::string wanted(code);
    std::transform(wanted.begin(), wanted.end(), wanted.begin(), to_upper);
    for (const SdpRule& rule : sdp_rules()) {
        if (code_text(rule.code) == wanted)
            return &rule;
    }
    return nullptr;
}

std::string finding_text(const SdpFinding& finding)
{
    std::string text;
    if (finding.line != 0)
        text = "line " + std::to_string(finding.line) + ": ";
    text += code_text(finding.code) + ": " + finding.found;
    if (!finding.allowed.empty())
        text += ", allowed: " + finding.allowed;
    return text;
}

void SdpFindings::add(SdpCode code, std::size_t line, std::string found, std::string allowed)
{
    refuse_ = refuse_ || rule_of(code).refuses;
    if (shown_.size() == limit)
        ++left_out_;
    else
        shown_.push_back({code, line, std::move(found), std::move(allowed)});
}

bool SdpFindings::has(SdpCode code) const
{
    return std::any_of(shown_.begin(), shown_.end(),
                       [code](const SdpFinding& finding) { return finding.code == code; });
}

void SdpFindings::put_in_order()
{
    std::vector<SdpFinding> once;
    for (SdpFinding& finding : shown_) {
        if (std::find(once.begin(), once.end(), finding) == once.end())
            once.push_back(std::move(finding));
    }
    shown_ = std::move(once);
    std::stable_sort(shown_.begin(), shown_.end(),
                     [](const SdpFinding& a, const SdpFinding& b) { return a.line < b.line; });
}

} // namespace nmos_instrument::host
