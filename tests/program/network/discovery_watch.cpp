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
#include <string_view>
#include <vector>

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

const char* name_of(LogLevel level)
{
    switch (level) {
    case LogLevel::debug:
        return "debug";
    case LogLevel::info:
        return "info";
    case LogLevel::warning:
        return "warning";
    case LogLevel::error:
        break;
    }
    return "error";
}

void write_line(LogLevel level, std::string_view line)
{
    std::cerr << '[' << name_of(level) << "] " << line << std::endl;
}

} // namespace

int main(int argc, char** argv)
{
    const Log log(LogLevel::debug, write_line);
    Discovery discovery(options_of(argc, argv), log, print);
    for (std::string line; std::getline(std::cin, line);)
        discovery.search();
    log.info("ending");
}
