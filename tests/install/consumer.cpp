// SPDX-License-Identifier: Apache-2.0
//
// A host as small as can be: one call of every class, with the installed headers and library.

#include <cstdio>
#include <memory>
#include <string>

#include "nmos_instrument/nmos_instrument.h"

static int failures = 0;

static void expect(const char* what, const std::string& found, const std::string& expected)
{
    if (found == expected)
        return;
    std::printf("%s\n  found    %s\n  expected %s\n", what, found.c_str(), expected.c_str());
    ++failures;
}

int main()
{
    std::unique_ptr<NMOS_IS04_ST> node(new NMOS_IS04_ST());
    node->version_seconds = 1541234567;
    node->version_nanoseconds = 25;

    RegistrationApi registration;
    registration.update_version(node.get());
    expect("update_version", node->version, "1541234567:25");

    NodeApi node_api;
    expect("make_sources", node_api.make_sources(node.get()), "[]");

    ConnectionApi connection_api;
    expect("convertCRLF", connection_api.convertCRLF("v=0\r\ns=-\r\n", "|"), "v=0|s=-|");

    Nmos nmos;
    expect("a node that is not advertised", nmos.make_node_service_text(0), "");
    NetworkControlApi network_control;
    static_cast<void>(network_control);

    if (nmos_instrument::check_record(*node).empty()) {
        std::printf("check_record finds nothing wrong with an empty record\n");
        ++failures;
    }

    std::printf("nmos-instrument %d.%d.%d: %d failures\n", NMOS_INSTRUMENT_VERSION_MAJOR,
                NMOS_INSTRUMENT_VERSION_MINOR, NMOS_INSTRUMENT_VERSION_PATCH, failures);
    return failures == 0 ? 0 : 1;
}
