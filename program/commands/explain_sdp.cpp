// SPDX-License-Identifier: Apache-2.0

#include "commands/explain_sdp.h"

#include "commands/option_rules.h"
#include "sdp/sdp_finding.h"
#include "text/quoted_text.h"
#include "text/word_list.h"

namespace nmos_instrument::program {
namespace {

using host::SdpRule;

std::string code_of(const SdpRule& rule)
{
    return host::code_text(rule.code);
}

const char* severity_of(const SdpRule& rule)
{
    return rule.refuses ? "error" : "warning";
}

void print_table(std::ostream& out)
{
    out << "| Code | Severity | What | Why, and what to do |\n|---|---|---|---|\n";
    for (const SdpRule& rule : host::sdp_rules())
        out << "| " << code_of(rule) << " | " << severity_of(rule) << " | " << rule.title << " | "
            << rule.explanation << " |\n";
}

} // namespace

ExitStatus explain_sdp(const std::string& code, std::ostream& out, std::ostream& errors)
{
    if (code == "all") {
        print_table(out);
        return done;
    }
    const SdpRule* const rule = host::find_sdp_rule(code);
    if (rule == nullptr) {
        errors << "--explain: "
               << refusal_of(host::printable(code),
                             "all, " + host::word_list(host::sdp_rules(), code_of))
               << '\n';
        return wrong_use;
    }
    out << code_of(*rule) << " (" << severity_of(*rule) << "): " << rule->title << ".\n"
        << rule->explanation << '\n';
    return done;
}

} // namespace nmos_instrument::program
