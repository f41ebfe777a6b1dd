// SPDX-License-Identifier: Apache-2.0

#include "text/uuid.h"

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

TEST(Uuid, Form)
{
    EXPECT_TRUE(is_uuid("5709255c-c0ae-4e1e-99a0-e872e83e48e0"));
    for (const char* const text :
         {"", "5709255c-c0ae-4e1e-99a0-e872e83e48e", "5709255C-c0ae-4e1e-99a0-e872e83e48e0",
          "5709255c-c0ae-0e1e-99a0-e872e83e48e0", "5709255c-c0ae-6e1e-99a0-e872e83e48e0",
          "5709255c-c0ae-4e1e-79a0-e872e83e48e0", "5709255c-c0ae-4e1e-c9a0-e872e83e48e0",
          "5709255c_c0ae-4e1e-99a0-e872e83e48e0", "5709255c-c0ae-4e1e-99a0-e872e83e48e0x"})
        EXPECT_FALSE(is_uuid(text)) << text;
}

} // namespace
} // namespace nmos_instrument::host
