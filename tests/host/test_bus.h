// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_HOST_TEST_BUS_H
#define NMOS_INSTRUMENT_TESTS_HOST_TEST_BUS_H

#include <cstdlib>
#include <filesystem>

#include "support/temporary_folder.h"

namespace nmos_instrument::host {

/// Takes the place of the system's D-Bus socket. Nothing is there until a test makes it. Call it
/// before libdbus, which looks for the path once in a process.
inline const std::filesystem::path& test_bus_path()
{
    static const TemporaryFolder folder;
    static const std::filesystem::path path = [] {
        std::filesystem::path bus = folder.path() / "bus";
        setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + bus.string()).c_str(), 1);
        return bus;
    }();
    return path;
}

} // namespace nmos_instrument::host

#endif
