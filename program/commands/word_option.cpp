// SPDX-License-Identifier: Apache-2.0

#include "commands/word_option.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "commands/number_option.h"
#include "text/word_list.h"

namespace nmos_instrument::program {

CLI::Validator one_of(const std::vector<std::string>& words)
{
    const auto refuse = [words](const std::string& word) -> std::string {
        const bool allowed = std::find(words.begin(), words.end(), word) != words.end();
        return allowed ? "" : refusal_of(word, host::word_list(words));
    };
    return {refuse, ""};
}

} // namespace nmos_instrument::program
