// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/version.h"

#include <string>

#include <gmock/gmock.h>

TEST(Version, IsThatOfTheHeaders)
{
    EXPECT_EQ(nmos_instrument::version(), std::to_string(NMOS_INSTRUMENT_VERSION_MAJOR) + '.' +
                                              std::to_string(NMOS_INSTRUMENT_VERSION_MINOR) + '.' +
                                              std::to_string(NMOS_INSTRUMENT_VERSION_PATCH));
}
