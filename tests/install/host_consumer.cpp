// SPDX-License-Identifier: Apache-2.0
//
// An instrument that is made, read and ended, with the installed headers and libraries.

#include <cstdio>
#include <exception>
#include <string>

#include "nmos_instrument/nmos_instrument.h"
#include "nmos_instrument_host/instrument.h"

int main()
{
    try {
        nmos_instrument_host::Instrument instrument(
            R"({"registration": {"enabled": false}, "server": {"port": 4711}})", {}, {});
        std::string node;
        instrument.records([&](nmos_instrument_host::Records& records) {
            node = NodeApi().make_self(&records.node);
        });
        std::printf("%s\n", node.c_str());
        return node.find("http://127.0.0.1:4711/") == std::string::npos ? 1 : 0;
    } catch (const std::exception& error) {
        std::printf("%s\n", error.what());
        return 1;
    }
}
