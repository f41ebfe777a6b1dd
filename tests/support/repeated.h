// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_REPEATED_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_REPEATED_H

#include <string>
#include <string_view>

inline std::string repeated(std::string_view text, int times, std::string_view separator = "")
{
    std::string all;
    for (int i = 0; i < times; ++i)
        all.append(i == 0 ? "" : separator).append(text);
    return all;
}

#endif
