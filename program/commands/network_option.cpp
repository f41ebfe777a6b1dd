// SPDX-License-Identifier: Apache-2.0

#include "commands/network_option.h"

#include "commands/number_option.h"

namespace nmos_instrument::program {

void add_network_option(CLI::App& command, const std::string& name,
                        std::vector<host::Ipv4Network>& networks, const std::string& explanation)
{
    const auto refuse = [](const std::string& word) -> std::string {
        return host::parse_ipv4_network(word)
                   ? ""
                   : refusal_of(word, std::string(host::allowed_ipv4_network()));
    };
    const auto add = [&networks](const std::string& word) {
        networks.push_back(host::parse_ipv4_network(word).value());
    };
    command.add_option_function<std::string>(name, add, explanation + "; may be repeated")
        ->check(CLI::Validator(refuse, ""))
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->trigger_on_parse()
        ->type_name("CIDR");
}

} // namespace nmos_instrument::program
