// SPDX-License-Identifier: Apache-2.0
//
// Shows what Discovery finds. Each list of registries is a line on standard output, with a tab behind
// each registry and "|" between its members; a line on standard input asks for a search, and its end
// ends the program. The log is on standard error.
//
// Usage: discovery_watch [--domain DOMAIN] [--development]

#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include "discovery/discovery.h"

namespace {

using namespace nmos_instrument::host;

DiscoveryOptions options_of(int argc, char** argv)
{
    DiscoveryOptions options;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--development") == 0)
            options.development_registries = true;
        else if (std::strcmp(argv[i], "--domain") == 0 && i + 1 < argc)
            options.dns_domain = argv[++i];
    }
    return options;
}

void print(const std::vector<Registry>& registries)
{
    std::string line;
    for (const Registry& registry : registries)
        line += registry.url + '|' + registry.address + '|' + std::to_string(registry.priority) +
                '|' + registry.origin + '\t';
    std::cout << line << std::endl;
}

} // namespace

int main(int argc, char** argv)
{
    spdlog::set_default_logger(spdlog::stderr_logger_mt("watch"));
    spdlog::set_level(spdlog::level::debug);
    Discovery discovery(options_of(argc, argv), print);
    for (std::string line; std::getline(std::cin, line);)
        discovery.search();
    spdlog::info("ending");
}
