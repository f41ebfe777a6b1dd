// SPDX-License-Identifier: Apache-2.0

#include "commands/rule_option.h"

#include <string>

#include <CLI/CLI.hpp>

#include "commands/number_option.h"

namespace nmos_instrument::program {

CLI::Validator obeys(const host::TextRule& rule)
{
    const auto refuse_or_rewrite = [rule](std::string& word) -> std::string {
        const std::string found = word;
        return rule.accept(word) ? "" : refusal_of(found, rule.allowed);
    };
    return {refuse_or_rewrite, ""};
}

} // namespace nmos_instrument::program
