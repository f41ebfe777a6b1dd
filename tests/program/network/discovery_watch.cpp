// SPDX-License-Identifier: Apache-2.0
//
// Shows what Discovery finds. Each list of registries is a line of JSON on standard output; a line
// on standard input asks for a search, and its end ends the program. The log is on standard error.
//
// Usage: discovery_watch [--domain DOMAIN] [--development]

#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>
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
    nlohmann::json list = nlohmann::json::array();
    for (const Registry& registry : registries)
        list.push_back({{"url", registry.url},
                        {"address", registry.address},
                        {"priority", registry.priority},
                        {"origin", registry.origin}});
    std::cout << list.dump() << std::endl;
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
